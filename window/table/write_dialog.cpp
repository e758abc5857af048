// SPDX-License-Identifier: MIT
#include "window/table/write_dialog.h"

#include "runtime/modbus/request_pieces.h"
#include "runtime/model/listed_value.h"
#include "window/table/table_model.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace plc
{

namespace
{

// Of the form, in pixels.
const int leastWidth = 520;
const int mostHeight = 480;
const int scrollBarRoom = 24;
const int frameRoom = 12;

bool isSwitch(const ListedVariable& variable)
{
    return variable.type == ValueType::Bit && variable.count == 1;
}

/// \return the value as it may be typed
QString typedText(const ListedVariable& variable, const std::vector<quint32>& values)
{
    if (values.empty())
        return QString();
    QString text = listedText(variable, values);
    if (variable.type == ValueType::Text)
        return text.mid(1, text.size() - 2);
    if (variable.count > 1)
        text.replace(QLatin1Char(' '), QLatin1String(", "));
    return text;
}

} // namespace

WriteDialog::WriteDialog(const TableModel* model, const std::vector<int>& rows, const QString& controller,
                         const Settings& settings, const Done& done, QWidget* parent)
    : QDialog(parent), m_model(model), m_settings(settings), m_done(done)
{
    const bool isOnly = rows.size() == 1;
    setWindowTitle(isOnly ? tr("Write %1").arg(model->variable(rows.front()).name)
                          : tr("Write several variables"));
    auto* form = new QWidget;
    form->setLayout(new QGridLayout);
    for (const int row : rows) {
        m_lines.emplace_back();
        addLine(row, isOnly);
        auto* grid = static_cast<QGridLayout*>(form->layout());
        const int at = grid->rowCount();
        const Line& line = m_lines.back();
        auto* name = new QLabel(model->variable(row).name);
        name->setBuddy(line.field);
        grid->addWidget(name, at, 0);
        grid->addWidget(line.now, at, 1);
        grid->addWidget(line.field, at, 2);
        grid->addWidget(new QLabel(model->variable(row).unit), at, 3);
        grid->addWidget(line.wrong, at + 1, 0, 1, 4);
    }
    static_cast<QGridLayout*>(form->layout())->setColumnStretch(2, 1);
    auto* scroll = new QScrollArea;
    scroll->setWidget(form);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setMinimumWidth(std::max(form->sizeHint().width() + scrollBarRoom, leastWidth));
    scroll->setMinimumHeight(std::min(form->sizeHint().height() + frameRoom, mostHeight));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    m_write = buttons->addButton(tr("&Write"), QDialogButtonBox::AcceptRole);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("To be written to the controller %1:").arg(controller)));
    layout->addWidget(scroll);
    layout->addWidget(buttons);
    m_write->setDefault(true);
    buttons->button(QDialogButtonBox::Cancel)->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::accepted, this, &WriteDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &WriteDialog::reject);
    connect(model, &QAbstractItemModel::dataChanged, this, [this] { showNow(); });
    connect(model, &QAbstractItemModel::modelReset, this, &WriteDialog::reject);
    m_lines.front().field->setFocus();
    showNow();
    judge();
}

void WriteDialog::addLine(int row, bool isOnly)
{
    Line& line = m_lines.back();
    line.row = row;
    line.field = fieldOf(row, isOnly);
    line.field->setAccessibleName(tr("new value of %1").arg(m_model->variable(row).name));
    line.now = new QLabel;
    line.wrong = new QLabel;
    line.wrong->setMinimumHeight(fontMetrics().height()); // the form does not jump
    line.wrong->setAlignment(Qt::AlignRight);
    line.before = isOnly ? QString() : textOf(line);
    QPalette palette = line.wrong->palette();
    palette.setColor(QPalette::WindowText, lookColour(Look::Failed, palette));
    line.wrong->setPalette(palette);
}

/// A single bit is offered as what it is not; of several rows each begins as it is.
QWidget* WriteDialog::fieldOf(int row, bool isOnly)
{
    const ListedVariable& variable = m_model->variable(row);
    const std::vector<quint32>& values = m_model->values(row);
    if (isSwitch(variable)) {
        auto* box = new QComboBox;
        box->addItems({tr("off"), tr("on")});
        const bool on = !values.empty() && values.front() != 0;
        box->setCurrentIndex(on != isOnly ? 1 : 0);
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] { judge(); });
        return box;
    }
    auto* edit = new QLineEdit(typedText(variable, values));
    edit->setMinimumWidth(160);
    edit->selectAll();
    connect(edit, &QLineEdit::textChanged, this, [this] { judge(); });
    return edit;
}

QString WriteDialog::textOf(const Line& line) const
{
    if (const auto* box = qobject_cast<QComboBox*>(line.field))
        return box->currentIndex() == 1 ? QStringLiteral("1") : QStringLiteral("0");
    return static_cast<QLineEdit*>(line.field)->text();
}

void WriteDialog::showNow()
{
    for (const Line& line : m_lines)
        line.now->setText(tr("now %1, to be").arg(m_model->valueWords(line.row)));
}

void WriteDialog::judge(Line* line)
{
    const ListedVariable& variable = m_model->variable(line->row);
    const QString text = textOf(*line);
    QString error;
    line->isWanted = text != line->before;
    line->wanted.row = line->row;
    if (line->isWanted) {
        const auto values = parseListed(variable, text, &error);
        if (values)
            error = writeRefusal(withStation(variable.elements, m_settings), *values, m_settings);
        if (values && error.isEmpty()) {
            line->wanted.values = *values;
            line->wanted.text = isSwitch(variable) ? (values->front() != 0 ? tr("on") : tr("off"))
                                                   : listedText(variable, *values) + unitText(variable);
        }
    }
    line->wrong->setText(error);
}

void WriteDialog::judge()
{
    int wanted = 0;
    bool isRight = true;
    for (Line& line : m_lines) {
        judge(&line);
        wanted += line.isWanted ? 1 : 0;
        isRight = isRight && line.wrong->text().isEmpty();
    }
    m_write->setEnabled(isRight && wanted > 0);
    m_write->setText(wanted > 1 ? tr("&Write %n values", nullptr, wanted) : tr("&Write"));
}

void WriteDialog::accept()
{
    if (!m_write->isEnabled())
        return;
    std::vector<WantedWrite> writes;
    for (const Line& line : m_lines) {
        if (line.isWanted)
            writes.push_back(line.wanted);
    }
    QDialog::accept();
    m_done(writes);
}

} // namespace plc
