// SPDX-License-Identifier: GPL-3.0-or-later
// Start-up steps of the desktop program that need no window. Each step that
// can fail tells why; a failed rule store or repair does not stop the start,
// as the program can still show what the database holds.
#include "admin/startup.h"

#include "admin/tips.h"
#include "core/settings.h"
#include "creator/category_directory.h"
#include "creator/listing_html.h"
#include "tasks/packing_list.h"
#include "update/repair.h"
#include "update/rules.h"
#include "update/run_lists.h"

namespace lw::admin {

bool PrepareStartup(const QString& appRoot, QString* error) {
    return core::SetupDirectories(appRoot, error) && PrepareSetUpRoot(error);
}

bool PrepareSetUpRoot(QString* error) {
    try {
        core::Database db = core::OpenStore();
        update::InstallRuleStore(update::Rules(), db);
        update::RepairNulls(db);
        creator::PrepareCategoryDirectory(db, core::CurrentUi());
    } catch (const core::StoreError& failure) {
        if (error != nullptr) {
            *error = failure.Message();
        }
        return false;
    }
    // The listing templates are the user's to edit: only missing ones come
    // from the shipped copy. Without them the creator still opens.
    QString templatesError;
    const core::Session& session = core::CurrentSession();
    if (!creator::InstallAuctionTemplates(session.ShippedDir, session.TemplatesDir,
                                          &templatesError)) {
        core::CurrentUi().Message(templatesError, QStringLiteral("Lotwright"), core::Icon::Warning);
    }
    const QString app = QStringLiteral("Tolvane");
    const QString section = QStringLiteral("Options");
    core::SaveSetting(app, section, QStringLiteral("AAViewStart"), 1);
    core::SaveSetting(app, section, QStringLiteral("CAViewStart"), 1);
    core::RemoveStaleNewUserCancel();
    // A template that could not be copied leaves its document empty, and the
    // panel says why when it is built; the next start tries again.
    tasks::InstallPackingTemplates(nullptr);
    return true;
}

QString WelcomeCaption(const QString& user) {
    return QStringLiteral("Tolvane Lotwright Pro: Welcome ") + user + u'!';
}

bool FirstRetrievalPending(core::Database& db, const QString& user) {
    core::Statement site = db.Prepare(QStringLiteral(
        "SELECT LastUpdate FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0"));
    site.Bind(1, user);
    return !site.Step() || site.IsNull(0);
}

FirstRetrieval RunFirstRetrievalTest(core::Database& db, const FirstRetrievalHooks& hooks) {
    if (!FirstRetrievalPending(db, core::CurrentSession().CurrentUser)) {
        return FirstRetrieval::NotNeeded;
    }
    if (!hooks.isConnected || !hooks.isConnected()) {
        return FirstRetrieval::NoConnection;
    }
    core::Ui& ui = core::CurrentUi();
    if (hooks.showMainWindow) {
        hooks.showMainWindow();
    }
    // No tip may open over the retrieval.
    SetShowTipsAtStartup(false);
    ui.PumpEvents();
    ui.Message(QStringLiteral("Tolvane is now going to retrieve information about your sales and "
                              "bids for the last 30 days from eBay.  Depending on the number of "
                              "sales or bids, this may take from 3 to 45 minutes."),
               QStringLiteral("Retrieving eBay Data"), core::Icon::Information);
    QString error;
    if (!update::WriteRunList(update::RunList(update::UpdateCommand::FirstRetrieval), &error)) {
        ui.Message(error, QStringLiteral("Retrieving eBay Data"), core::Icon::Critical);
        SetShowTipsAtStartup(true);
        return FirstRetrieval::NoRunList;
    }
    if (hooks.updateWindow) {
        hooks.updateWindow();
    }
    ui.PumpEvents();
    SetShowTipsAtStartup(true);
    return FirstRetrieval::Ran;
}

StartupChoice ChooseStartupUser(core::Database& db, const std::function<void()>& newUserWindow) {
    switch (core::ChooseUser(db, newUserWindow)) {
        case core::UserChoice::Chosen:
            return StartupChoice::Run;
        case core::UserChoice::Cancelled:
            return StartupChoice::EndProgram;
        case core::UserChoice::NoDefault:
            break;
    }
    // A database whose Users rows name no default user: the program cannot
    // tell whose sales to show.
    core::CurrentUi().Message(
        QStringLiteral("None of the users in %1 is marked as the default user, so Lotwright "
                       "cannot tell whose sales and bids to show. Mark one user as the default "
                       "(isDefault 1 in table Users) and start Lotwright again.")
            .arg(db.Path()),
        QStringLiteral("Lotwright"), core::Icon::Critical);
    return StartupChoice::NoDefaultUser;
}

}  // namespace lw::admin
