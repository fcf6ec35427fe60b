// SPDX-License-Identifier: GPL-3.0-or-later
// The start of the desktop program, step by step in the order the program
// has always taken them; the logic of each step is in admin/startup.
#include "ui/desktop_start.h"

#include <QDir>
#include <QTimer>

#include "admin/startup.h"
#include "admin/tips.h"
#include "core/session.h"
#include "core/tracking.h"
#include "ui/frmAuction.h"
#include "ui/frmNewUser.h"
#include "ui/frmTip.h"
#include "ui/frmUpdate.h"
#include "ui/qt_ui.h"
#include "update/site_session.h"

namespace lw::ui {

namespace {

const QString kTitle = QStringLiteral("Lotwright");
const QString kWindowLock = QStringLiteral("window.lock");
const QString kUsageReportTitle = QStringLiteral("Usage Report");

QString WindowLockMessage(const core::RootLock& lock, const QString& appRoot) {
    const QString root = QDir::toNativeSeparators(QDir(appRoot).absolutePath());
    if (lock.Busy()) {
        return QStringLiteral(
                   "Lotwright is already open on %1 (process %2). Only one window at a time may "
                   "work on its database: switch to that window, or close it and start again.")
            .arg(root)
            .arg(lock.HolderPid());
    }
    return QStringLiteral(
               "The lock %1 could not be made, so Lotwright cannot tell whether it is "
               "already open on %2.")
        .arg(QDir::toNativeSeparators(lock.Path()), root);
}

// The tip of the day over the main window once it shows, unless the setting
// turned it off.
void ShowTipOnFirstActivation(frmAuction* window) {
    if (!admin::ShowTipsAtStartup()) {
        return;
    }
    QTimer::singleShot(0, window, [window] {
        auto* tip = new frmTip(window);
        tip->setAttribute(Qt::WA_DeleteOnClose);
        tip->setModal(true);
        tip->show();
    });
}

// The start once the root's window lock is held: every step up to the main
// window shown.
void StartUnderLock(DesktopStart& start) {
    core::Ui& ui = core::CurrentUi();
    QString error;
    if (!admin::PrepareSetUpRoot(&error)) {
        ui.Message(error, kTitle, core::Icon::Critical);
        start.exitCode = 1;
        return;
    }
    try {
        auto window = std::make_unique<frmAuction>();
        core::Database db = core::OpenStore();
        const admin::StartupChoice choice = admin::ChooseStartupUser(db, [] {
            frmNewUser newUser;
            // The window says what the usage report would send.
            core::TakeUsageReportFirstNotice();
            newUser.exec();
        });
        if (choice == admin::StartupChoice::EndProgram) {
            return;
        }
        if (choice == admin::StartupChoice::NoDefaultUser) {
            start.exitCode = 1;
            return;
        }
        // From here on the boxes open over the main window.
        if (auto* qtUi = dynamic_cast<QtUi*>(&ui)) {
            qtUi->SetDialogParent(window.get());
        }
        window->setWindowTitle(admin::WelcomeCaption(core::CurrentSession().CurrentUser));

        admin::FirstRetrievalHooks hooks;
        hooks.isConnected = [&db] { return update::IsConnected(db, QString(), false); };
        hooks.showMainWindow = [&window] { window->show(); };
        // The lists are filled by the load that follows, so the run has
        // nothing to redraw yet.
        hooks.updateWindow = [&db, &window] {
            ShowUpdateWindow(db, window.get(), std::function<void()>());
        };
        admin::RunFirstRetrievalTest(db, hooks);

        window->Form_Load();
        window->show();
        // A user made elsewhere (the command line's init) has not been told
        // what the usage report would send; it stays off until switched on.
        if (core::TakeUsageReportFirstNotice()) {
            ui.Message(core::UsageReportSummary(), kUsageReportTitle, core::Icon::Information);
        }
        ShowTipOnFirstActivation(window.get());
        start.window = std::move(window);
    } catch (const core::StoreError& failure) {
        ui.Message(failure.Message(), kTitle, core::Icon::Critical);
        start.exitCode = 1;
    } catch (const std::exception& failure) {
        ui.Message(QString::fromLocal8Bit(failure.what()), kTitle, core::Icon::Critical);
        start.exitCode = 1;
    }
}

}  // namespace

DesktopStart StartDesktop(const QString& appRoot) {
    DesktopStart start;
    QString error;
    if (!core::SetupDirectories(appRoot, &error)) {
        core::CurrentUi().Message(error, kTitle, core::Icon::Critical);
        start.exitCode = 1;
        return start;
    }
    // Before the start touches the database: a second window on the same
    // root would update it beside the first.
    start.lock = std::make_unique<core::RootLock>(core::CurrentSession().DataDir, kWindowLock);
    if (!start.lock->TryLock()) {
        core::CurrentUi().Message(WindowLockMessage(*start.lock, appRoot), kTitle,
                                  core::Icon::Warning);
        start.lock.reset();
        start.exitCode = 1;
        return start;
    }
    StartUnderLock(start);
    if (!start.window) {
        start.lock.reset();
    }
    return start;
}

}  // namespace lw::ui
