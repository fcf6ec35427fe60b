// SPDX-License-Identifier: GPL-3.0-or-later
// The terminal's status line: what reaches the terminal, and when, for a run
// of statuses, percentages, messages and waits, on a clock the test moves.
#include <gtest/gtest.h>

#include <QString>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "app/terminal_ui.h"
#include "core/wakeup.h"

namespace {

using lw::app::TerminalUi;
using namespace std::chrono_literals;

// What one step does to the port, at a time after the start.
struct Step {
    std::chrono::milliseconds at;
    enum Kind { Status, Percent, Pump, Message } kind;
    QString text;
    int percent = 0;
};

// The port on a terminal or a log, writing to out, its clock set by the steps.
struct Terminal {
    explicit Terminal(bool tty) {
        TerminalUi::Output output;
        output.tty = tty;
        output.write = [this](const QString& text) { out += text; };
        output.now = [this] { return start + at; };
        ui = std::make_unique<TerminalUi>(std::move(output));
    }
    void Run(const std::vector<Step>& steps) {
        for (const Step& step : steps) {
            at = step.at;
            switch (step.kind) {
                case Step::Status:
                    ui->Status(step.text);
                    break;
                case Step::Percent:
                    ui->Progress(step.percent, 100);
                    break;
                case Step::Pump:
                    ui->PumpEvents();
                    break;
                case Step::Message:
                    ui->Message(step.text, QStringLiteral("Note"), lw::core::Icon::Information);
                    break;
            }
        }
    }

    TerminalUi::Clock::time_point start = TerminalUi::Clock::now();
    std::chrono::milliseconds at{0};
    QString out;
    std::unique_ptr<TerminalUi> ui;
};

// The line as a terminal draws it: a carriage return, the text, a clear.
QString Drawn(const QString& text) {
    return u'\r' + text + QStringLiteral("\x1b[K");
}

struct Case {
    const char* name;
    bool tty;
    std::vector<Step> steps;
    QString expected;
};

TEST(TerminalUi, WritesWhatTheStepsCallFor) {
    const std::vector<Case> cases = {
        {"the first status is drawn at once, the next within the interval only when it is up",
         true,
         {{0ms, Step::Status, "one"},
          {10ms, Step::Status, "two"},
          {20ms, Step::Status, "three"},
          {50ms, Step::Status, "four"}},
         Drawn("one") + Drawn("four")},
        {"a status told once its interval is up is drawn at once",
         true,
         {{0ms, Step::Status, "one"}, {60ms, Step::Status, "two"}, {200ms, Step::Status, "three"}},
         Drawn("one") + Drawn("two") + Drawn("three")},
        {"the line that ends shows the last status told",
         true,
         {{0ms, Step::Status, "one"}, {10ms, Step::Status, "two"}, {20ms, Step::Status, ""}},
         Drawn("one") + Drawn("two") + u'\n'},
        {"a new percentage is drawn at once with the newest status",
         true,
         {{0ms, Step::Status, "one"}, {10ms, Step::Status, "two"}, {20ms, Step::Percent, {}, 40}},
         Drawn("one") + Drawn("[############                  ]  40% two")},
        {"the same percentage again draws nothing",
         true,
         {{0ms, Step::Percent, {}, 7}, {100ms, Step::Percent, {}, 7}},
         Drawn("[##                            ]   7% ")},
        {"a pump draws a status behind only once its interval is up",
         true,
         {{0ms, Step::Status, "one"},
          {10ms, Step::Status, "two"},
          {30ms, Step::Pump, {}},
          {50ms, Step::Pump, {}},
          {70ms, Step::Pump, {}}},
         Drawn("one") + Drawn("two")},
        {"a message ends the line as last told, and the line comes back below it",
         true,
         {{0ms, Step::Status, "one"}, {10ms, Step::Status, "two"}, {20ms, Step::Message, "saved"}},
         Drawn("one") + Drawn("two") + QStringLiteral("\nNote: saved\n") + Drawn("two")},
        {"a log takes each status once per percentage, figures folded",
         false,
         {{0ms, Step::Status, "Transferring Page: 0 bytes"},
          {1ms, Step::Status, "Transferring Page: 2198 bytes"},
          {2ms, Step::Status, "Connecting to Server"},
          {3ms, Step::Status, "Transferring Page: 12 bytes"},
          {4ms, Step::Percent, {}, 3},
          {5ms, Step::Status, "Transferring Page: 40 bytes"},
          {6ms, Step::Status, "Transferring Page 2: 40 bytes"}},
         "Transferring Page: 0 bytes\nConnecting to Server\nProgress: 3%\n"
         "Transferring Page: 40 bytes\nTransferring Page 2: 40 bytes\n"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        Terminal terminal(test.tty);
        terminal.Run(test.steps);
        EXPECT_EQ(terminal.out.toStdString(), test.expected.toStdString());
    }
}

// A status behind while the work waits is drawn during the wait, once its
// interval is up: the terminal's output wakes the wait as soon as it shows
// the newest status, so the wait ends only when it has been drawn (or after
// the watchdog's ten seconds, which fails).
TEST(TerminalUi, AWaitDrawsTheStatusBehind) {
    lw::core::Wakeup wakeup;
    std::mutex lock;
    QString out;
    TerminalUi::Output output;
    output.tty = true;
    output.write = [&](const QString& text) {
        const std::lock_guard guard(lock);
        out += text;
        if (text.contains(u"two")) {
            wakeup.Notify();
        }
    };
    TerminalUi ui(std::move(output));
    ui.Status(QStringLiteral("one"));
    ui.Status(QStringLiteral("two"));
    {
        const std::lock_guard guard(lock);
        ASSERT_EQ(out.toStdString(), Drawn("one").toStdString());
    }
    std::atomic<bool> done{false};
    std::thread watchdog([&] {
        for (int i = 0; i < 1000 && !done; ++i) {
            std::this_thread::sleep_for(10ms);
        }
        wakeup.Notify();
    });
    ui.WaitFor(wakeup);
    done = true;
    watchdog.join();
    const std::lock_guard guard(lock);
    EXPECT_EQ(out.toStdString(), QString(Drawn("one") + Drawn("two")).toStdString());
}

}  // namespace
