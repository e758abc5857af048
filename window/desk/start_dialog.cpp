// SPDX-License-Identifier: MIT
#include "window/desk/start_dialog.h"

#include "window/desk/start_line.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSpinBox>
#include <QVBoxLayout>

namespace plc
{

namespace
{

const int mostRemembered = 10;

} // namespace

StartDialog::StartDialog(const Done& done, QWidget* parent)
    : QDialog(parent), m_done(done), m_real(new QRadioButton(tr("A &controller on the network"))),
      m_simulated(new QRadioButton(tr("A &simulated bottle filler, to try it out"))), m_choices(new QWidget),
      m_controller(new QComboBox), m_list(new QLineEdit), m_variables(new QLineEdit), m_station(new QSpinBox),
      m_multiStation(new QCheckBox(tr("Several stations share the &link"))),
      m_remote(new QCheckBox(tr("&Remote frames instead of Modbus TCP"))), m_wrong(new QLabel)
{
    setWindowTitle(tr("Open a controller"));
    m_controller->setEditable(true);
    m_controller->lineEdit()->setPlaceholderText(tr("192.168.0.10 or plc.example:1502"));
    m_list->setPlaceholderText(tr("a CSV file, as examples/machine.csv"));
    m_variables->setPlaceholderText(tr("9:100x4 0:17 14:200"));
    m_station->setRange(0, lastStation);
    m_wrong->setWordWrap(true);
    m_wrong->setMinimumHeight(fontMetrics().height() * 2);
    m_wrong->setAlignment(Qt::AlignTop);
    auto* browse = new QPushButton(tr("&Browse…"));
    connect(browse, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, tr("Open a list of variables"),
                                                          m_list->text(), tr("Lists (*.csv);;All files (*)"));
        if (!path.isEmpty())
            m_list->setText(path);
    });
    auto* list = new QHBoxLayout;
    list->addWidget(m_list);
    list->addWidget(browse);
    auto* form = new QFormLayout(m_choices);
    form->setContentsMargins(24, 0, 0, 0);
    form->addRow(tr("Name or &address:"), m_controller);
    form->addRow(tr("List of &variables:"), list);
    form->addRow(tr("&More variables:"), m_variables);
    form->addRow(tr("S&tation:"), m_station);
    form->addRow(QString(), m_multiStation);
    form->addRow(QString(), m_remote);
    qobject_cast<QLabel*>(form->labelForField(list))->setBuddy(m_list);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_real);
    layout->addWidget(m_choices);
    layout->addWidget(m_simulated);
    layout->addWidget(m_wrong);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &StartDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &StartDialog::reject);
    connect(m_real, &QRadioButton::toggled, this, &StartDialog::showChoice);
    recall();
    setMinimumWidth(520);
}

void StartDialog::showChoice()
{
    m_choices->setEnabled(m_real->isChecked());
    m_wrong->clear();
}

void StartDialog::recall()
{
    const QSettings settings;
    m_controller->addItems(settings.value(QStringLiteral("start/controllers")).toStringList());
    m_list->setText(settings.value(QStringLiteral("start/list")).toString());
    m_variables->setText(settings.value(QStringLiteral("start/variables")).toString());
    m_station->setValue(settings.value(QStringLiteral("start/station"), Settings().station).toInt());
    m_multiStation->setChecked(settings.value(QStringLiteral("start/multiStation")).toBool());
    m_remote->setChecked(settings.value(QStringLiteral("start/remote")).toBool());
    const bool simulated =
        settings.value(QStringLiteral("start/simulated"), m_controller->count() == 0).toBool();
    (simulated ? m_simulated : m_real)->setChecked(true);
    showChoice();
}

void StartDialog::remember() const
{
    QSettings settings;
    settings.setValue(QStringLiteral("start/simulated"), m_simulated->isChecked());
    if (m_simulated->isChecked())
        return;
    QStringList controllers = settings.value(QStringLiteral("start/controllers")).toStringList();
    controllers.removeAll(m_controller->currentText());
    controllers.prepend(m_controller->currentText());
    settings.setValue(QStringLiteral("start/controllers"), QStringList(controllers.mid(0, mostRemembered)));
    settings.setValue(QStringLiteral("start/list"), m_list->text());
    settings.setValue(QStringLiteral("start/variables"), m_variables->text());
    settings.setValue(QStringLiteral("start/station"), m_station->value());
    settings.setValue(QStringLiteral("start/multiStation"), m_multiStation->isChecked());
    settings.setValue(QStringLiteral("start/remote"), m_remote->isChecked());
}

/// What was chosen, as it is typed: one place knows what is right.
QStringList StartDialog::arguments() const
{
    QStringList words = {QStringLiteral("plcwindow"), QStringLiteral("--controller"),
                         m_controller->currentText(), QStringLiteral("--station"),
                         QString::number(m_station->value())};
    if (!m_list->text().isEmpty())
        words << QStringLiteral("--vars") << m_list->text();
    if (m_multiStation->isChecked())
        words << QStringLiteral("--multi-station");
    if (m_remote->isChecked())
        words << QStringLiteral("--remote");
    return words + m_variables->text().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

void StartDialog::accept()
{
    std::optional<Watched> watched;
    if (m_real->isChecked()) {
        const StartLine line = parseStartLine(arguments());
        if (!line.watched) {
            m_wrong->setText(line.text.section(QLatin1Char('\n'), 0, 0));
            return;
        }
        watched = line.watched;
    }
    remember();
    QDialog::accept();
    m_done(watched);
}

} // namespace plc
