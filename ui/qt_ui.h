// SPDX-License-Identifier: GPL-3.0-or-later
// The Ui port on the desktop: message boxes and questions with the system's
// texts and titles word for word, a text prompt, the status line and progress
// passed on as signals for whichever window shows them, events let run during
// long work, and a cancel flag that a Cancel button sets. It keeps no window
// of its own and decides nothing.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <functional>

#include "core/ui_port.h"

class QAbstractButton;

namespace lw::ui {

// Lets the application's events run until wakeup is called or cancelled()
// holds, sleeping in the event loop meanwhile: a Cancel pressed, a timer or
// a repaint is handled at once, and nothing is polled.
void WaitWithEvents(core::Wakeup& wakeup, const std::function<bool()>& cancelled);

// Runs a command's work at a handler's edge: a failure is told through
// core::CurrentUi() under the title, and never reaches the event loop.
// False when the work failed.
bool RunReported(const QString& title, const std::function<void()>& work);

class QtUi : public QObject, public core::Ui {
    Q_OBJECT
public:
    // Boxes open over dialogParent, or over the active window when it is null.
    explicit QtUi(QWidget* dialogParent = nullptr, QObject* parent = nullptr);

    void SetDialogParent(QWidget* dialogParent) { m_dialogParent = dialogParent; }

    void Message(const QString& text, const QString& title, core::Icon icon) override;
    core::Answer Ask(const QString& text, const QString& title, core::Buttons buttons,
                     core::Answer defaultAnswer) override;
    std::optional<QString> Prompt(const QString& text, const QString& title,
                                  const QString& initial) override;
    void Status(const QString& text) override;
    void Progress(qint64 value, qint64 maximum) override;
    void PumpEvents() override;
    bool CancelRequested() override { return m_cancel; }
    void WaitFor(core::Wakeup& wakeup) override;

    // Pressing the button asks the long work under way to stop.
    void AttachCancelButton(QAbstractButton* button);

public Q_SLOTS:
    void RequestCancel();
    // Before the next long work starts.
    void ClearCancel();

Q_SIGNALS:
    void StatusChanged(const QString& text);
    void ProgressChanged(qint64 value, qint64 maximum);

private:
    QWidget* DialogParent() const;

    QPointer<QWidget> m_dialogParent;
    bool m_cancel = false;
};

}  // namespace lw::ui
