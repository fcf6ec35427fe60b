// SPDX-License-Identifier: GPL-3.0-or-later
// The new user: checks, the two rows, or the cancel marker.
#include "admin/new_user.h"

#include <QFile>

#include "core/text.h"

namespace lw::admin {

namespace {

const QString& Title() {
    static const QString title = QStringLiteral("New User");
    return title;
}

}  // namespace

NewUserCheck CheckNewUser(const core::NewUser& user, const QString& repeatPassword) {
    if (user.userName.trimmed().isEmpty()) {
        return {NewUserEntry::UserName, QStringLiteral("Please enter a name for the new user.")};
    }
    if (user.siteUserId.trimmed().isEmpty()) {
        return {NewUserEntry::SiteUserId,
                QStringLiteral("Please enter your User ID on the auction site.")};
    }
    if (user.password.isEmpty()) {
        return {NewUserEntry::Password,
                QStringLiteral("Please enter your password on the auction site.")};
    }
    if (user.password != repeatPassword) {
        return {NewUserEntry::RepeatPassword,
                QStringLiteral(
                    "The two passwords do not match. Please enter the same password twice.")};
    }
    const QString email = user.email.trimmed();
    if (!email.contains(u'@') || !email.contains(u'.')) {
        return {NewUserEntry::Email,
                QStringLiteral("Your email Address Is Not Valid, Please Reenter")};
    }
    return {};
}

bool CreateNewUser(core::Database& db, const core::NewUser& user, const QString& repeatPassword,
                   core::Ui& ui, NewUserEntry* fieldAtFault) {
    const NewUserCheck check = CheckNewUser(user, repeatPassword);
    if (fieldAtFault != nullptr) {
        *fieldAtFault = check.entry;
    }
    if (check.entry != NewUserEntry::None) {
        ui.Message(check.message, Title(), core::Icon::Warning);
        return false;
    }
    try {
        core::AddUser(db, user, true);
    } catch (const core::StoreError& error) {
        if (fieldAtFault != nullptr) {
            *fieldAtFault = NewUserEntry::UserName;
        }
        ui.Message(error.Message(), Title(), core::Icon::Warning);
        return false;
    }
    return true;
}

bool CancelNewUser() {
    core::EnsureDirectory(core::CurrentSession().ScratchDir);
    QFile marker(core::NewUserCancelMarker());
    if (!marker.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    marker.write("cancelled\r\n");
    return true;
}

}  // namespace lw::admin
