// SPDX-License-Identifier: MIT
/// \file
/// \brief Asks what is to be written, and whether.
#ifndef WINDOW_TABLE_WRITE_DIALOG_H
#define WINDOW_TABLE_WRITE_DIALOG_H

#include "runtime/model/settings.h"
#include "runtime/model/variable_list.h"

#include <QDialog>

#include <functional>
#include <vector>

class QLabel;
class QPushButton;

namespace plc
{

class TableModel;

/// One value that a person wants to be written.
struct WantedWrite {
    int row = 0;
    std::vector<quint32> values;
    QString text; ///< for people, with its unit
};

/// A line for each variable; of several only those that were changed are written.
class WriteDialog : public QDialog
{
    Q_OBJECT

public:
    using Done = std::function<void(const std::vector<WantedWrite>& writes)>;

    /// \param rows       of the model, none of which is only read
    /// \param controller for the question, e.g. "192.168.0.10:502"
    /// \param done       called when it is accepted
    WriteDialog(const TableModel* model, const std::vector<int>& rows, const QString& controller,
                const Settings& settings, const Done& done, QWidget* parent);

    void accept() override;

private:
    struct Line {
        int row = 0;
        QWidget* field = nullptr;
        QLabel* now = nullptr;
        QLabel* wrong = nullptr;
        QString before; // what the field began with
        bool isWanted = false;
        WantedWrite wanted;
    };

    void addLine(int row, bool isOnly);
    QWidget* fieldOf(int row, bool isOnly);
    QString textOf(const Line& line) const;
    void showNow();
    void judge();
    void judge(Line* line);

    const TableModel* const m_model;
    const Settings m_settings;
    const Done m_done;
    std::vector<Line> m_lines;
    QPushButton* m_write = nullptr;
};

} // namespace plc

#endif
