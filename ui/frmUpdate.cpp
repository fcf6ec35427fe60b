// The update window over update::UpdateRun.
#include "ui/frmUpdate.h"

#include <QCloseEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include "update/rules.h"

namespace lw::ui {

frmUpdate::frmUpdate(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmUpdate"));
}

frmUpdate::~frmUpdate() = default;

update::UpdateRun::Result frmUpdate::RunUpdate(core::Database& db, update::UpdateHooks hooks,
                                               const update::RuleStore* rules) {
    m_running = true;
    update::UpdateRun run(db, *this, std::move(hooks), rules ? *rules : update::Rules());
    const auto result = run.Activate();
    m_running = false;
    return result;
}

void frmUpdate::Status(const QString& text) {
    m_statusBase = text;
}
void frmUpdate::ConnectStatus(const QString&) {}
void frmUpdate::Progress(int) {}
void frmUpdate::LastUrl(const QString&) {}
void frmUpdate::CurrentItem(const QString&, const QString&) {}
void frmUpdate::cmdCancel_Click() {
    m_cancelled = true;
}
void frmUpdate::cmdShowDetails_Click() {
    m_detailsShown = !m_detailsShown;
}
void frmUpdate::tmrStatus_Timer() {}
void frmUpdate::Timer1_Timer() {}
void frmUpdate::reject() {
    if (m_running) {
        cmdCancel_Click();
        return;
    }
    QDialog::reject();
}
void frmUpdate::closeEvent(QCloseEvent* event) {
    if (m_running) {
        event->ignore();
        cmdCancel_Click();
        return;
    }
    QDialog::closeEvent(event);
}

update::UpdateRun::Result ShowUpdateWindow(core::Database& db, QWidget* parent,
                                           std::function<void()> redraw) {
    update::UpdateHooks hooks = update::DefaultUpdateHooks(db);
    hooks.redraw = std::move(redraw);
    return ShowUpdateWindow(db, parent, std::move(hooks), nullptr);
}

update::UpdateRun::Result ShowUpdateWindow(core::Database& db, QWidget* parent,
                                           update::UpdateHooks hooks,
                                           const update::RuleStore* rules) {
    frmUpdate window(parent);
    auto result = update::UpdateRun::Result::Aborted;
    QTimer::singleShot(0, &window, [&] {
        result = window.RunUpdate(db, std::move(hooks), rules);
        window.accept();
    });
    window.exec();
    return result;
}

}  // namespace lw::ui
