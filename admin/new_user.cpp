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

QString NewUserProblem(const core::NewUser& user, const QString& repeatPassword) {
    if (user.userName.trimmed().isEmpty()) {
        return QStringLiteral("Please enter a name for the new user.");
    }
    if (user.siteUserId.trimmed().isEmpty()) {
        return QStringLiteral("Please enter your User ID on the auction site.");
    }
    if (user.password.isEmpty()) {
        return QStringLiteral("Please enter your password on the auction site.");
    }
    if (user.password != repeatPassword) {
        return QStringLiteral(
            "The two passwords do not match. Please enter the same password twice.");
    }
    const QString email = user.email.trimmed();
    if (!email.contains(u'@') || !email.contains(u'.')) {
        return QStringLiteral("Your email Address Is Not Valid, Please Reenter");
    }
    return QString();
}

bool CreateNewUser(core::Database& db, const core::NewUser& user, const QString& repeatPassword,
                   core::Ui& ui) {
    const QString problem = NewUserProblem(user, repeatPassword);
    if (!problem.isEmpty()) {
        ui.Message(problem, Title(), core::Icon::Warning);
        return false;
    }
    try {
        core::AddUser(db, user, true);
    } catch (const core::StoreError& error) {
        ui.Message(error.Message(), Title(), core::Icon::Warning);
        return false;
    }
    return true;
}

bool CancelNewUser() {
    core::EnsureDirectory(core::CurrentSession().ConfigsDir);
    QFile marker(core::NewUserCancelMarker());
    if (!marker.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return false;
    }
    marker.write("cancelled\r\n");
    return true;
}

}  // namespace lw::admin
