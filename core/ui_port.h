// SPDX-License-Identifier: GPL-3.0-or-later
// The one door through which the program speaks to the person at the screen:
// messages, questions, prompts, the status line, progress, and letting events
// run during long work and while it waits for other threads. The window layer implements it with
// dialogs, tests with a script of answers, the command line on the terminal. Nothing below ui/ may
// show anything any other way.
#pragma once

#include <QString>
#include <optional>

#include "core/wakeup.h"

namespace lw::core {

enum class Answer { Ok, Cancel, Yes, No };
enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
enum class Icon { Information, Warning, Critical, Question };

class Ui {
public:
    virtual ~Ui() = default;

    // A message box with the system's text and title.
    virtual void Message(const QString& text, const QString& title,
                         Icon icon = Icon::Information) = 0;
    // A question; a front that cannot ask returns defaultAnswer and says so.
    virtual Answer Ask(const QString& text, const QString& title, Buttons buttons,
                       Answer defaultAnswer) = 0;
    // A line of text from the user; nullopt when cancelled.
    virtual std::optional<QString> Prompt(const QString& text, const QString& title,
                                          const QString& initial) = 0;
    // The status line of long work ("Checking version", "Fetching ...").
    virtual void Status(const QString& text) = 0;
    // value of maximum; maximum 0 means unknown.
    virtual void Progress(qint64 value, qint64 maximum) = 0;
    // Lets the event loop run so that Cancel and the display stay alive.
    virtual void PumpEvents() = 0;
    // True once the user asked to stop the long work under way.
    virtual bool CancelRequested() = 0;
    // Waits until wakeup is called or the user asks to cancel, letting events
    // run meanwhile, and costs no processor time while nothing happens. Once
    // a cancel has been asked for it returns at once. A front whose cancel can
    // only come from its own events needs no more than this: run them, then
    // sleep until woken.
    virtual void WaitFor(Wakeup& wakeup) {
        PumpEvents();
        if (!CancelRequested()) {
            wakeup.Wait();
        }
    }
};

// Says nothing and answers every question with its default: for work that runs
// before any front has attached itself.
class SilentUi final : public Ui {
public:
    void Message(const QString&, const QString&, Icon) override {}
    Answer Ask(const QString&, const QString&, Buttons, Answer defaultAnswer) override {
        return defaultAnswer;
    }
    std::optional<QString> Prompt(const QString&, const QString&, const QString&) override {
        return std::nullopt;
    }
    void Status(const QString&) override {}
    void Progress(qint64, qint64) override {}
    void PumpEvents() override {}
    bool CancelRequested() override { return false; }
};

}  // namespace lw::core
