// SPDX-License-Identifier: GPL-3.0-or-later
// The start of the desktop program, step by step in the order the program
// has always taken them; the logic of each step is in admin/startup.
#include "ui/desktop_start.h"

#include <QTimer>

#include "admin/startup.h"
#include "admin/tips.h"
#include "core/session.h"
#include "ui/frmAuction.h"
#include "ui/frmNewUser.h"
#include "ui/frmTip.h"
#include "ui/frmUpdate.h"
#include "ui/qt_ui.h"
#include "update/site_session.h"

namespace lw::ui {

namespace {

const QString kTitle = QStringLiteral("Lotwright");

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

}  // namespace

DesktopStart StartDesktop(const QString& appRoot) {
    DesktopStart start;
    core::Ui& ui = core::CurrentUi();
    QString error;
    if (!admin::PrepareStartup(appRoot, &error)) {
        ui.Message(error, kTitle, core::Icon::Critical);
        start.exitCode = 1;
        return start;
    }
    try {
        auto window = std::make_unique<frmAuction>();
        core::Database db = core::OpenStore();
        const admin::StartupChoice choice = admin::ChooseStartupUser(db, [] {
            frmNewUser newUser;
            newUser.exec();
        });
        if (choice == admin::StartupChoice::EndProgram) {
            return start;
        }
        if (choice == admin::StartupChoice::NoDefaultUser) {
            start.exitCode = 1;
            return start;
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
        ShowTipOnFirstActivation(window.get());
        start.window = std::move(window);
    } catch (const core::StoreError& failure) {
        ui.Message(failure.Message(), kTitle, core::Icon::Critical);
        start.exitCode = 1;
    } catch (const std::exception& failure) {
        ui.Message(QString::fromLocal8Bit(failure.what()), kTitle, core::Icon::Critical);
        start.exitCode = 1;
    }
    return start;
}

}  // namespace lw::ui
