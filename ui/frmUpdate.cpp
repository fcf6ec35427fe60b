// SPDX-License-Identifier: GPL-3.0-or-later
// The update window over update::UpdateRun. While the run goes, the session's
// Ui is a relay of this window's: the fetch's words land on lblConnectStatus,
// letting events run keeps the window and its Cancel alive, Cancel is what
// the run reads, and boxes open over this window. The relay is given back
// however the run ends, and no exception leaves a slot. The window holds the
// update lock of the program root for the length of its run.
#include "ui/frmUpdate.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QResizeEvent>
#include <QTime>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <exception>

#include "core/session.h"
#include "ui/qt_ui.h"
#include "update/rules.h"
#include "update/update_lock.h"

namespace lw::ui {

namespace {

constexpr int kStatusDots = 3;
constexpr int kStatusTickMs = 500;
constexpr int kElapsedTickMs = 1000;

// The session's Ui while the window runs an update.
class RunUi final : public core::Ui {
public:
    RunUi(core::Ui& inner, frmUpdate& window)
        : m_inner(inner),
          m_window(window),
          m_boxes(&window),
          m_desktop(dynamic_cast<QtUi*>(&inner) != nullptr) {}

    void Message(const QString& text, const QString& title, core::Icon icon) override {
        Boxes().Message(text, title, icon);
    }
    core::Answer Ask(const QString& text, const QString& title, core::Buttons buttons,
                     core::Answer defaultAnswer) override {
        return Boxes().Ask(text, title, buttons, defaultAnswer);
    }
    std::optional<QString> Prompt(const QString& text, const QString& title,
                                  const QString& initial) override {
        return Boxes().Prompt(text, title, initial);
    }
    void Status(const QString& text) override { m_window.ConnectStatus(text); }
    // Bar1 shows the run's own progress; a transfer's bytes are told in words.
    void Progress(qint64, qint64) override {}
    void PumpEvents() override {
        QCoreApplication::processEvents();
        if (!m_desktop) {
            m_inner.PumpEvents();
        }
    }
    bool CancelRequested() override { return m_window.Cancelled(); }

private:
    // On the desktop the boxes open over the update window; any other front
    // (a test's script) keeps answering for itself.
    core::Ui& Boxes() { return m_desktop ? static_cast<core::Ui&>(m_boxes) : m_inner; }

    core::Ui& m_inner;
    frmUpdate& m_window;
    QtUi m_boxes;
    bool m_desktop;
};

// Puts the session's Ui back when the run ends, however it ends.
class SessionUiSwap {
public:
    explicit SessionUiSwap(core::Ui* ui) : m_saved(core::CurrentSession().ui) {
        core::CurrentSession().ui = ui;
    }
    ~SessionUiSwap() { core::CurrentSession().ui = m_saved; }
    SessionUiSwap(const SessionUiSwap&) = delete;
    SessionUiSwap& operator=(const SessionUiSwap&) = delete;

private:
    core::Ui* m_saved;
};

QLabel* NamedLabel(const QString& name, QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    return label;
}

}  // namespace

frmUpdate::frmUpdate(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmUpdate"));
    setWindowTitle(QStringLiteral("Update"));
    setModal(true);
    setMinimumWidth(420);

    m_lblStatus = NamedLabel(QStringLiteral("lblStatus"), this);
    QFont bold = m_lblStatus->font();
    bold.setBold(true);
    m_lblStatus->setFont(bold);
    m_bar1 = new QProgressBar(this);
    m_bar1->setObjectName(QStringLiteral("Bar1"));
    m_bar1->setRange(0, 100);
    m_bar1->setValue(0);
    m_lblConnectStatus = NamedLabel(QStringLiteral("lblConnectStatus"), this);
    m_lblLastUrl = NamedLabel(QStringLiteral("lblLastUrl"), this);
    // One line, cut in the middle to the window's width; the whole address
    // is the label's tip. A long address never widens the window.
    m_lblLastUrl->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    m_fraDetails = new QFrame(this);
    m_fraDetails->setObjectName(QStringLiteral("fraDetails"));
    auto* details = new QGridLayout(m_fraDetails);
    details->setContentsMargins(0, 0, 0, 0);
    m_lblTimeElapsed = NamedLabel(QStringLiteral("lblTimeElapsed"), m_fraDetails);
    m_lblItem = NamedLabel(QStringLiteral("lblItem"), m_fraDetails);
    m_lblValue = NamedLabel(QStringLiteral("lblValue"), m_fraDetails);
    m_lblValue->setWordWrap(true);
    details->addWidget(new QLabel(QStringLiteral("Time elapsed:"), m_fraDetails), 0, 0);
    details->addWidget(m_lblTimeElapsed, 0, 1);
    details->addWidget(new QLabel(QStringLiteral("Item:"), m_fraDetails), 1, 0);
    details->addWidget(m_lblItem, 1, 1);
    details->addWidget(new QLabel(QStringLiteral("Value:"), m_fraDetails), 2, 0);
    details->addWidget(m_lblValue, 2, 1);
    details->setColumnStretch(1, 1);
    m_fraDetails->hide();

    m_cmdShowDetails = new QPushButton(QStringLiteral("&Show Details"), this);
    m_cmdShowDetails->setObjectName(QStringLiteral("cmdShowDetails"));
    m_cmdShowDetails->setAutoDefault(false);
    m_cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    m_cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    m_cmdCancel->setAutoDefault(false);
    connect(m_cmdShowDetails, &QPushButton::clicked, this, &frmUpdate::cmdShowDetails_Click);
    connect(m_cmdCancel, &QPushButton::clicked, this, &frmUpdate::cmdCancel_Click);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdShowDetails);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_lblStatus);
    layout->addWidget(m_bar1);
    layout->addWidget(m_lblConnectStatus);
    layout->addWidget(m_lblLastUrl);
    layout->addLayout(buttons);
    layout->addWidget(m_fraDetails);

    m_tmrStatus = new QTimer(this);
    m_tmrStatus->setObjectName(QStringLiteral("tmrStatus"));
    m_tmrStatus->setInterval(kStatusTickMs);
    connect(m_tmrStatus, &QTimer::timeout, this, &frmUpdate::tmrStatus_Timer);
    m_tmrStatus->start();
    m_timer1 = new QTimer(this);
    m_timer1->setObjectName(QStringLiteral("Timer1"));
    m_timer1->setInterval(kElapsedTickMs);
    connect(m_timer1, &QTimer::timeout, this, &frmUpdate::Timer1_Timer);

    // The start time is kept from the window's load.
    m_started.start();
    m_lblTimeElapsed->setText(QStringLiteral("0:00:00"));
}

frmUpdate::~frmUpdate() = default;

update::UpdateRun::Result frmUpdate::RunUpdate(core::Database& db, update::UpdateHooks hooks,
                                               const update::RuleStore* rules) {
    auto result = update::UpdateRun::Result::Aborted;
    if (m_running) {
        return result;
    }
    // One update at a time per program root, whichever window or command
    // line started it.
    update::UpdateLock lock;
    if (!lock.TryLock()) {
        core::CurrentUi().Message(lock.FailureMessage(), QStringLiteral("Update"),
                                  core::Icon::Warning);
        m_tmrStatus->stop();
        m_timer1->stop();
        return update::UpdateRun::Result::Busy;
    }
    m_running = true;
    m_cancelled = false;
    // Step 12: the window goes before the main window redraws.
    std::function<void()> redraw = std::move(hooks.redraw);
    hooks.redraw = [this, &redraw] {
        hide();
        if (redraw) {
            redraw();
        }
    };
    try {
        RunUi relay(core::CurrentUi(), *this);
        SessionUiSwap swap(&relay);
        update::UpdateRun run(db, *this, std::move(hooks), rules ? *rules : update::Rules());
        result = run.Activate();
    } catch (const std::exception&) {
        // The run ends its own failures; whatever escaped it ends the window too.
    }
    m_running = false;
    m_tmrStatus->stop();
    m_timer1->stop();
    return result;
}

void frmUpdate::Status(const QString& text) {
    m_statusBase = text;
    m_lblStatus->setText(text);
}

void frmUpdate::ConnectStatus(const QString& text) {
    m_lblConnectStatus->setText(text);
}

void frmUpdate::Progress(int percent) {
    m_bar1->setValue(std::clamp(percent, 0, 100));
}

void frmUpdate::LastUrl(const QString& url) {
    m_lastUrl = AddressForShow(url);
    m_lblLastUrl->setToolTip(m_lastUrl);
    ShowLastUrl();
}

void frmUpdate::ShowLastUrl() {
    const int width = std::max(m_lblLastUrl->width(), minimumWidth() - 24);
    m_lblLastUrl->setText(
        m_lblLastUrl->fontMetrics().elidedText(m_lastUrl, Qt::ElideMiddle, width));
}

void frmUpdate::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    ShowLastUrl();
}

QString frmUpdate::AddressForShow(const QString& url) {
    // Page addresses carry the encoded password; the screen never shows it.
    static const QRegularExpression password(QStringLiteral("([?&][^=&]*pass[^=&]*=)[^&]*"),
                                             QRegularExpression::CaseInsensitiveOption);
    QString shown = url;
    shown.replace(password, QStringLiteral("\\1****"));
    return shown;
}

void frmUpdate::CurrentItem(const QString& field, const QString& value) {
    m_lblItem->setText(field);
    m_lblValue->setText(value);
}

void frmUpdate::cmdCancel_Click() {
    // The run reads the flag after each fetch and each written record; a
    // transfer under way reads it too and aborts.
    m_cancelled = true;
}

void frmUpdate::cmdShowDetails_Click() {
    m_detailsShown = !m_detailsShown;
    m_fraDetails->setVisible(m_detailsShown);
    m_cmdShowDetails->setText(m_detailsShown ? QStringLiteral("&Hide Details")
                                             : QStringLiteral("&Show Details"));
    // The short form and the tall one.
    adjustSize();
    if (m_detailsShown) {
        Timer1_Timer();
        m_timer1->start();
    } else {
        m_timer1->stop();
    }
}

void frmUpdate::tmrStatus_Timer() {
    QString caption = m_lblStatus->text();
    if (caption.isEmpty()) {
        return;
    }
    caption += u'.';
    if (caption.size() > m_statusBase.size() + kStatusDots) {
        caption = m_statusBase;
    }
    m_lblStatus->setText(caption);
}

void frmUpdate::Timer1_Timer() {
    const qint64 seconds = m_started.elapsed() / 1000;
    m_lblTimeElapsed->setText(QStringLiteral("%1:%2:%3")
                                  .arg(seconds / 3600)
                                  .arg((seconds / 60) % 60, 2, 10, QLatin1Char('0'))
                                  .arg(seconds % 60, 2, 10, QLatin1Char('0')));
}

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
    // The window starts its run by itself once it is up.
    QTimer::singleShot(0, &window, [&] {
        result = window.RunUpdate(db, std::move(hooks), rules);
        window.accept();
    });
    window.exec();
    return result;
}

}  // namespace lw::ui
