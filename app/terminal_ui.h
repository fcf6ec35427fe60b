// SPDX-License-Identifier: GPL-3.0-or-later
// The Ui port on a terminal: messages and status lines on standard error,
// questions answered from standard input when it is a terminal and by their
// default (said aloud) otherwise, and Ctrl-C as the Cancel button. On a
// terminal the status and the progress bar share one line that is redrawn in
// place; elsewhere (a pipe, a log file) each new percentage is a plain line
// of its own, and so is each status not yet written at that percentage
// (statuses that differ only in their figures count as one), so that the
// log of a run of thousands of pages stays readable; an empty status ends
// the redrawn line. It
// never writes to standard output, which belongs to the command's results.
#pragma once

#include <QSet>
#include <QString>

#include "core/ui_port.h"

namespace lw::app {

class TerminalUi final : public core::Ui {
public:
    TerminalUi();
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

    bool m_interactive = false;  // questions can be asked
    bool m_tty = false;          // standard error is a terminal
    bool m_lineShown = false;    // the redrawn line stands unfinished
    QString m_status;
    int m_percent = -1;       // -1: no progress shown yet
    QSet<QString> m_written;  // statuses written as lines at this percentage, figures folded
};

}  // namespace lw::app
