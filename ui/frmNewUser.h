// SPDX-License-Identifier: GPL-3.0-or-later
// The new-user window: shown by start-up when no user exists yet. OK adds the
// user (the default Users row and its UserSites row for site 0); Cancel, or
// closing the window, leaves the marker that ends the program. Controls:
// txtUserName, txtUserID, txtPassword, txtConfirmPassword, txtEmail, cmdOK,
// cmdCancel. Messages go through core::CurrentUi().
#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace lw::ui {

class frmNewUser : public QDialog {
    Q_OBJECT
public:
    explicit frmNewUser(QWidget* parent = nullptr);

public Q_SLOTS:
    void cmdOK_Click();
    void cmdCancel_Click();
    void reject() override;

private:
    QLineEdit* m_txtUserName = nullptr;
    QLineEdit* m_txtUserID = nullptr;
    QLineEdit* m_txtPassword = nullptr;
    QLineEdit* m_txtConfirmPassword = nullptr;
    QLineEdit* m_txtEmail = nullptr;
};

}  // namespace lw::ui
