// SPDX-License-Identifier: GPL-3.0-or-later
// The update window: runs the list in RunProt.dat over the site while the
// person watches. lblStatus carries the run's words with moving dots,
// lblConnectStatus the fetch's words, Bar1 the progress and lblLastUrl the
// page asked for; Show Details adds the elapsed time and the item being read.
// cmdCancel stops the run at the next record and keeps what was written.
// The window only shows and relays: the run itself is update::UpdateRun, and
// nothing here writes a row.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QString>
#include <functional>

#include "update/update_run.h"

class QLabel;
class QProgressBar;
class QResizeEvent;
class QPushButton;
class QTimer;
class QWidget;

namespace lw::core {
class Database;
}
namespace lw::update {
class RuleStore;
}

namespace lw::ui {

class frmUpdate : public QDialog, public update::UpdateView {
    Q_OBJECT
public:
    explicit frmUpdate(QWidget* parent = nullptr);
    ~frmUpdate() override;

    // Runs the update in place: the session's Ui speaks through this window
    // while it runs (boxes over it, fetch words on lblConnectStatus, Cancel
    // reaching the run), and is given back afterwards. rules null: the
    // program's rule store. hooks.redraw runs once the window is hidden.
    update::UpdateRun::Result RunUpdate(core::Database& db, update::UpdateHooks hooks,
                                        const update::RuleStore* rules = nullptr);

    bool Running() const { return m_running; }
    bool Cancelled() const { return m_cancelled; }

    // update::UpdateView
    void Status(const QString& text) override;
    void ConnectStatus(const QString& text) override;
    void Progress(int percent) override;
    void LastUrl(const QString& url) override;
    void CurrentItem(const QString& field, const QString& value) override;
    bool DetailsShown() override { return m_detailsShown; }

public Q_SLOTS:
    void cmdCancel_Click();
    void cmdShowDetails_Click();
    // One tick of the status dots.
    void tmrStatus_Timer();
    // One tick of the elapsed time while the details show.
    void Timer1_Timer();
    // Escape and the close box ask the run to stop rather than leave it.
    void reject() override;

    // An address as the window shows it: the value of a password field is
    // replaced by stars.
    static QString AddressForShow(const QString& url);

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void ShowLastUrl();

    QString m_lastUrl;
    QLabel* m_lblStatus = nullptr;
    QLabel* m_lblConnectStatus = nullptr;
    QLabel* m_lblLastUrl = nullptr;
    QLabel* m_lblItem = nullptr;
    QLabel* m_lblValue = nullptr;
    QLabel* m_lblTimeElapsed = nullptr;
    QProgressBar* m_bar1 = nullptr;
    QPushButton* m_cmdCancel = nullptr;
    QPushButton* m_cmdShowDetails = nullptr;
    QWidget* m_fraDetails = nullptr;
    QTimer* m_tmrStatus = nullptr;
    QTimer* m_timer1 = nullptr;
    QElapsedTimer m_started;
    QString m_statusBase;  // lblStatus without its dots
    bool m_detailsShown = false;
    bool m_running = false;
    bool m_cancelled = false;
};

// Opens frmUpdate modally over parent, runs the list that the caller wrote to
// RunProt.dat with the program's hooks over db (redraw as their redraw),
// closes the window when the run has ended, and returns how it ended.
update::UpdateRun::Result ShowUpdateWindow(core::Database& db, QWidget* parent,
                                           std::function<void()> redraw);
// The same with hooks of the caller's and, when not null, another rule store.
update::UpdateRun::Result ShowUpdateWindow(core::Database& db, QWidget* parent,
                                           update::UpdateHooks hooks,
                                           const update::RuleStore* rules = nullptr);

}  // namespace lw::ui
