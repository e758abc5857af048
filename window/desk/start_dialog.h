// SPDX-License-Identifier: MIT
/// \file
/// \brief Asks which controller is to be shown, and remembers.
#ifndef WINDOW_DESK_START_DIALOG_H
#define WINDOW_DESK_START_DIALOG_H

#include "window/session/source.h"

#include <QDialog>

#include <functional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QSpinBox;

namespace plc
{

class StartDialog : public QDialog
{
    Q_OBJECT

public:
    /// \param watched what was chosen; nothing stands for the simulated machine
    using Done = std::function<void(const std::optional<Watched>& watched)>;

    StartDialog(const Done& done, QWidget* parent);

    void accept() override;

private:
    void recall();
    void remember() const;
    void showChoice();
    QStringList arguments() const;

    const Done m_done;
    QRadioButton* m_real;
    QRadioButton* m_simulated;
    QWidget* m_choices;
    QComboBox* m_controller;
    QLineEdit* m_list;
    QLineEdit* m_variables;
    QSpinBox* m_station;
    QCheckBox* m_multiStation;
    QCheckBox* m_remote;
    QLabel* m_wrong;
};

} // namespace plc

#endif
