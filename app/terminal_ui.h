// SPDX-License-Identifier: GPL-3.0-or-later
// The Ui port on a terminal: messages and status lines on standard error,
// questions answered from standard input when it is a terminal and by their
// default (said aloud) otherwise, and Ctrl-C as the Cancel button. On a
// terminal the status and the progress bar share one line that is redrawn in
// place; elsewhere (a pipe, a log file) each new percentage is a plain line
// of its own, and so is each status not yet written at that percentage
// (statuses that differ only in their figures count as one), so that the
// log of a run of thousands of pages stays readable; an empty status ends
// the redrawn line. The redrawn line follows the statuses at most
// kRedrawEvery apart: an update tells three for each of thousands of pages,
// and a terminal that drew each would cost the run more than its pages. A
// status not yet drawn is drawn when the interval is up, before the line
// ends, and while the work waits. It never writes to standard output, which
// belongs to the command's results.
#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <vector>

#include "core/ui_port.h"

namespace lw::app {

class TerminalUi final : public core::Ui {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds kRedrawEvery{50};

    // Where the port writes and how it tells time: by default standard
    // error, which it asks whether it is a terminal, and the steady clock.
    struct Output {
        bool tty = false;
        std::function<void(const QString&)> write;
        std::function<Clock::time_point()> now;
    };

    TerminalUi();
    explicit TerminalUi(Output output);
    ~TerminalUi() override;

    void Message(const QString& text, const QString& title, core::Icon icon) override;
    core::Answer Ask(const QString& text, const QString& title, core::Buttons buttons,
                     core::Answer defaultAnswer) override;
    std::optional<QString> Prompt(const QString& text, const QString& title,
                                  const QString& initial) override;
    void Status(const QString& text) override;
    void Progress(qint64 value, qint64 maximum) override;
    void PumpEvents() override;
    bool CancelRequested() override;
    // Sleeps until woken or Ctrl-C.
    void WaitFor(core::Wakeup& wakeup) override;

private:
    // Ends the redrawn line so that the next text starts on a line of its own.
    void EndLine();
    void Redraw();
    // Draws a status still behind when its interval is up, or at once.
    void CatchUp(bool whenDue);
    // How long until a status behind may be drawn; zero when none is behind.
    std::chrono::milliseconds UntilDue() const;
    void Write(const QString& text) const;

    Output m_output;
    bool m_interactive = false;  // questions can be asked
    bool m_lineShown = false;    // the redrawn line stands unfinished
    bool m_behind = false;       // the redrawn line shows an older status than m_status
    Clock::time_point m_drawn;   // when the line was last drawn
    QString m_status;
    int m_percent = -1;  // -1: no progress shown yet
    // Statuses written as lines at this percentage, figures folded: a few
    // lines, each told over and over.
    std::vector<QString> m_written;
    QString m_folded;  // the status being looked up in m_written
};

}  // namespace lw::app
