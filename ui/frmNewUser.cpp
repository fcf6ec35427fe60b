// SPDX-License-Identifier: GPL-3.0-or-later
// The new-user window: layout and the two handlers over admin/new_user.
#include "ui/frmNewUser.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "admin/new_user.h"
#include "core/session.h"
#include "core/tracking.h"

namespace lw::ui {

frmNewUser::frmNewUser(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmNewUser"));
    setWindowTitle(QStringLiteral("New User"));
    setModal(true);

    auto* intro = new QLabel(
        QStringLiteral("<b>Welcome to Lotwright.</b><br>Tell Lotwright who you are and how you "
                       "sign in at the auction site. You can change all of this later under "
                       "User Preferences."),
        this);
    intro->setObjectName(QStringLiteral("lblIntro"));
    intro->setWordWrap(true);

    auto makeEdit = [this](const QString& name, QLineEdit::EchoMode mode) {
        auto* edit = new QLineEdit(this);
        edit->setObjectName(name);
        edit->setEchoMode(mode);
        edit->setMinimumWidth(240);
        return edit;
    };
    m_txtUserName = makeEdit(QStringLiteral("txtUserName"), QLineEdit::Normal);
    m_txtUserID = makeEdit(QStringLiteral("txtUserID"), QLineEdit::Normal);
    m_txtPassword = makeEdit(QStringLiteral("txtPassword"), QLineEdit::Password);
    m_txtConfirmPassword = makeEdit(QStringLiteral("txtConfirmPassword"), QLineEdit::Password);
    m_txtEmail = makeEdit(QStringLiteral("txtEmail"), QLineEdit::Normal);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Your &name in Lotwright:"), m_txtUserName);
    form->addRow(QStringLiteral("&User ID at the auction site:"), m_txtUserID);
    form->addRow(QStringLiteral("&Password at the auction site:"), m_txtPassword);
    form->addRow(QStringLiteral("Password &again:"), m_txtConfirmPassword);
    form->addRow(QStringLiteral("&E-mail address:"), m_txtEmail);

    auto* ok = new QPushButton(QStringLiteral("&OK"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    cancel->setAutoDefault(false);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    // The first start says what the usage report would send: it is off
    // until switched on in the preferences.
    auto* tracking = new QLabel(core::UsageReportSummary(), this);
    tracking->setObjectName(QStringLiteral("lblTracking"));
    tracking->setWordWrap(true);
    tracking->setForegroundRole(QPalette::PlaceholderText);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addSpacing(8);
    layout->addLayout(form);
    layout->addSpacing(8);
    layout->addWidget(tracking);
    layout->addLayout(buttons);

    connect(ok, &QPushButton::clicked, this, &frmNewUser::cmdOK_Click);
    connect(cancel, &QPushButton::clicked, this, &frmNewUser::cmdCancel_Click);
}

void frmNewUser::cmdOK_Click() {
    const core::NewUser user{m_txtUserName->text().trimmed(), m_txtUserID->text().trimmed(),
                             m_txtPassword->text(), m_txtEmail->text().trimmed()};
    admin::NewUserEntry atFault = admin::NewUserEntry::None;
    bool added = false;
    try {
        core::Database db = core::OpenStore();
        added = admin::CreateNewUser(db, user, m_txtConfirmPassword->text(), core::CurrentUi(),
                                     &atFault);
    } catch (const core::StoreError& error) {
        core::CurrentUi().Message(error.Message(), windowTitle(), core::Icon::Critical);
        return;
    }
    if (added) {
        accept();
        return;
    }
    switch (atFault) {
        case admin::NewUserEntry::UserName:
            m_txtUserName->setFocus();
            break;
        case admin::NewUserEntry::SiteUserId:
            m_txtUserID->setFocus();
            break;
        case admin::NewUserEntry::Password:
            m_txtPassword->setFocus();
            break;
        case admin::NewUserEntry::RepeatPassword:
            m_txtConfirmPassword->clear();
            m_txtConfirmPassword->setFocus();
            break;
        case admin::NewUserEntry::Email:
            m_txtEmail->setFocus();
            break;
        case admin::NewUserEntry::None:
            break;
    }
}

void frmNewUser::cmdCancel_Click() {
    reject();
}

void frmNewUser::reject() {
    // Without a user there is nothing to run: start-up ends on the marker.
    if (!admin::CancelNewUser()) {
        core::CurrentUi().Message(
            QStringLiteral("Cannot write %1.").arg(core::NewUserCancelMarker()), windowTitle(),
            core::Icon::Critical);
    }
    QDialog::reject();
}

}  // namespace lw::ui
