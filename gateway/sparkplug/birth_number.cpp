// SPDX-License-Identifier: MIT
#include "gateway/sparkplug/birth_number.h"

#include "gateway/journal/journal.h"

#include <QFile>
#include <QSaveFile>

namespace plc
{

namespace
{

const int numbers = 256;
const int longestText = 10;

} // namespace

BirthNumber::BirthNumber(const QString& path) : m_path(path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    bool isNumber = false;
    const int number = file.read(longestText).trimmed().toInt(&isNumber);
    if (isNumber && number >= 0 && number < numbers)
        m_number = number;
}

int BirthNumber::next()
{
    m_number = (m_number + 1) % numbers;
    QSaveFile file(m_path);
    const QByteArray text = QByteArray::number(m_number) + '\n';
    const bool isWritten =
        file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
    if (!isWritten && !m_isTold)
        tell(Weight::Warning,
             QStringLiteral("%1 cannot be written: %2; after a restart the number of births begins "
                            "with an old one")
                 .arg(m_path, file.errorString()));
    m_isTold = !isWritten;
    return m_number;
}

} // namespace plc
