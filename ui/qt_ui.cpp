// SPDX-License-Identifier: GPL-3.0-or-later
// Dialog boxes for the Ui port. Texts and titles pass through untouched.
#include "ui/qt_ui.h"

#include <QAbstractButton>
#include <QApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <QSocketNotifier>

#include "core/session.h"
#include "core/store.h"

namespace lw::ui {

namespace {

QMessageBox::Icon BoxIcon(core::Icon icon) {
    switch (icon) {
        case core::Icon::Warning:
            return QMessageBox::Warning;
        case core::Icon::Critical:
            return QMessageBox::Critical;
        case core::Icon::Question:
            return QMessageBox::Question;
        case core::Icon::Information:
            break;
    }
    return QMessageBox::Information;
}

QMessageBox::StandardButtons BoxButtons(core::Buttons buttons) {
    switch (buttons) {
        case core::Buttons::OkCancel:
            return QMessageBox::Ok | QMessageBox::Cancel;
        case core::Buttons::YesNo:
            return QMessageBox::Yes | QMessageBox::No;
        case core::Buttons::YesNoCancel:
            return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
        case core::Buttons::Ok:
            break;
    }
    return QMessageBox::Ok;
}

QMessageBox::StandardButton BoxButton(core::Answer answer) {
    switch (answer) {
        case core::Answer::Cancel:
            return QMessageBox::Cancel;
        case core::Answer::Yes:
            return QMessageBox::Yes;
        case core::Answer::No:
            return QMessageBox::No;
        case core::Answer::Ok:
            break;
    }
    return QMessageBox::Ok;
}

}  // namespace

bool RunReported(const QString& title, const std::function<void()>& work) {
    QString problem;
    try {
        work();
        return true;
    } catch (const core::StoreError& error) {
        problem = error.Message();
    } catch (const std::exception& error) {
        problem = QString::fromLocal8Bit(error.what());
    } catch (...) {
        problem = QStringLiteral("An unknown error occurred.");
    }
    core::CurrentUi().Message(QStringLiteral("This command could not be completed.\n\n") + problem,
                              title, core::Icon::Warning);
    return false;
}

QtUi::QtUi(QWidget* dialogParent, QObject* parent)
    : QObject(parent), m_dialogParent(dialogParent) {}

QWidget* QtUi::DialogParent() const {
    if (m_dialogParent) {
        return m_dialogParent;
    }
    return QApplication::activeWindow();
}

void QtUi::Message(const QString& text, const QString& title, core::Icon icon) {
    QMessageBox box(BoxIcon(icon), title, text, QMessageBox::Ok, DialogParent());
    box.setObjectName(QStringLiteral("MsgBox"));
    box.exec();
}

core::Answer QtUi::Ask(const QString& text, const QString& title, core::Buttons buttons,
                       core::Answer defaultAnswer) {
    QMessageBox box(QMessageBox::Question, title, text, BoxButtons(buttons), DialogParent());
    box.setObjectName(QStringLiteral("MsgBox"));
    const QMessageBox::StandardButton preferred = BoxButton(defaultAnswer);
    if (box.standardButtons().testFlag(preferred)) {
        box.setDefaultButton(preferred);
    }
    box.exec();
    switch (box.standardButton(box.clickedButton())) {
        case QMessageBox::Ok:
            return core::Answer::Ok;
        case QMessageBox::Yes:
            return core::Answer::Yes;
        case QMessageBox::No:
            return core::Answer::No;
        case QMessageBox::Cancel:
            return core::Answer::Cancel;
        default:
            break;
    }
    // Closed without a button: the answer that stops least.
    if (buttons == core::Buttons::YesNo) {
        return core::Answer::No;
    }
    return buttons == core::Buttons::Ok ? core::Answer::Ok : core::Answer::Cancel;
}

std::optional<QString> QtUi::Prompt(const QString& text, const QString& title,
                                    const QString& initial) {
    bool ok = false;
    const QString answer =
        QInputDialog::getText(DialogParent(), title, text, QLineEdit::Normal, initial, &ok);
    if (!ok) {
        return std::nullopt;
    }
    return answer;
}

void QtUi::Status(const QString& text) {
    Q_EMIT StatusChanged(text);
}

void QtUi::Progress(qint64 value, qint64 maximum) {
    Q_EMIT ProgressChanged(value, maximum);
}

void QtUi::PumpEvents() {
    QCoreApplication::processEvents();
}

void WaitWithEvents(core::Wakeup& wakeup, const std::function<bool()>& cancelled) {
    if (cancelled()) {
        return;
    }
    QSocketNotifier notifier(static_cast<qintptr>(wakeup.Descriptor()), QSocketNotifier::Read);
    bool woken = false;
    QObject::connect(&notifier, &QSocketNotifier::activated, &notifier, [&woken, &notifier] {
        woken = true;
        notifier.setEnabled(false);
    });
    while (!woken && !cancelled()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    wakeup.Clear();
}

void QtUi::WaitFor(core::Wakeup& wakeup) {
    WaitWithEvents(wakeup, [this] { return m_cancel; });
}

void QtUi::AttachCancelButton(QAbstractButton* button) {
    connect(button, &QAbstractButton::clicked, this, &QtUi::RequestCancel);
}

void QtUi::RequestCancel() {
    m_cancel = true;
}

void QtUi::ClearCancel() {
    m_cancel = false;
}

}  // namespace lw::ui
