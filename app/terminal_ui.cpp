// SPDX-License-Identifier: GPL-3.0-or-later
// The terminal's Ui port. The SIGINT handler only sets a flag that the
// long work reads at each record, and writes a byte to a pipe that a wait
// watches, so that a wait hears Ctrl-C at once; a second Ctrl-C ends the
// process at once.
#include "app/terminal_ui.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <QTextStream>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace lw::app {

namespace {

std::atomic<bool> g_cancel{false};
// Ctrl-C's pipe: the handler writes, a wait reads. -1 when there is none.
std::atomic<int> g_interruptWrite{-1};
int g_interruptRead = -1;

extern "C" void OnInterrupt(int) {
    if (g_cancel.exchange(true)) {
        std::_Exit(130);
    }
    const int saved = errno;
    const int pipe = g_interruptWrite.load();
    if (pipe >= 0) {
        const char byte = 1;
        [[maybe_unused]] const ssize_t written = write(pipe, &byte, 1);
    }
    errno = saved;
}

void Err(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

int TerminalWidth() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    return 80;
}

QString AnswerName(core::Answer answer) {
    switch (answer) {
        case core::Answer::Ok:
            return QStringLiteral("OK");
        case core::Answer::Cancel:
            return QStringLiteral("Cancel");
        case core::Answer::Yes:
            return QStringLiteral("Yes");
        case core::Answer::No:
            return QStringLiteral("No");
    }
    return {};
}

// The text with each run of digits as one "#", into key. A status is told
// for every page of an update: a plain pass, no pattern, and the key's room
// kept from one status to the next.
void FoldFigures(const QString& text, QString& key) {
    key.resize(text.size());
    QChar* out = key.data();
    bool inFigure = false;
    for (const QChar c : text) {
        const bool digit = c >= u'0' && c <= u'9';
        if (!digit) {
            *out++ = c;
        } else if (!inFigure) {
            *out++ = u'#';
        }
        inFigure = digit;
    }
    key.truncate(out - key.constData());
}

}  // namespace

TerminalUi::TerminalUi() : TerminalUi(Output{isatty(STDERR_FILENO) != 0, {}, {}}) {
    m_interactive = isatty(STDIN_FILENO) != 0 && m_output.tty;
}

TerminalUi::TerminalUi(Output output) : m_output(std::move(output)) {
    if (!m_output.now) {
        m_output.now = [] { return Clock::now(); };
    }
    m_drawn = m_output.now() - kRedrawEvery;
    g_cancel = false;
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0) {
        g_interruptRead = ends[0];
        g_interruptWrite = ends[1];
    }
    struct sigaction action {};
    action.sa_handler = OnInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
}

TerminalUi::~TerminalUi() {
    EndLine();
    std::signal(SIGINT, SIG_DFL);
    const int write = g_interruptWrite.exchange(-1);
    if (write >= 0) {
        close(write);
        close(g_interruptRead);
        g_interruptRead = -1;
    }
}

void TerminalUi::Write(const QString& text) const {
    if (m_output.write) {
        m_output.write(text);
    } else {
        Err(text);
    }
}

void TerminalUi::EndLine() {
    CatchUp(false);  // the line that stays shows where the work ended
    if (m_lineShown) {
        Write(QStringLiteral("\n"));
        m_lineShown = false;
    }
}

void TerminalUi::CatchUp(bool whenDue) {
    if (m_behind && (!whenDue || UntilDue().count() == 0)) {
        Redraw();
    }
}

std::chrono::milliseconds TerminalUi::UntilDue() const {
    if (!m_behind) {
        return std::chrono::milliseconds(0);
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(m_drawn + kRedrawEvery - m_output.now());
    return std::max(left, std::chrono::milliseconds(0));
}

void TerminalUi::Redraw() {
    constexpr int kBarWidth = 30;
    QString line;
    if (m_percent >= 0) {
        const int filled = m_percent * kBarWidth / 100;
        line = QStringLiteral("[") + QString(filled, u'#') + QString(kBarWidth - filled, u' ') +
               QStringLiteral("] %1% ").arg(m_percent, 3);
    }
    line += m_status;
    const int width = std::max(10, TerminalWidth() - 1);
    if (line.size() > width) {
        line.truncate(width);
    }
    // Carriage return, the line, and a clear to its end.
    Write(QStringLiteral("\r") + line + QStringLiteral("\x1b[K"));
    m_lineShown = true;
    m_behind = false;
    m_drawn = m_output.now();
}

void TerminalUi::Message(const QString& text, const QString& title, core::Icon) {
    EndLine();
    Write(title.isEmpty() ? QString(text + u'\n')
                          : QString(title + QStringLiteral(": ") + text + u'\n'));
    if (m_output.tty && (m_percent >= 0 || !m_status.isEmpty())) {
        Redraw();
    }
}

core::Answer TerminalUi::Ask(const QString& text, const QString& title, core::Buttons buttons,
                             core::Answer defaultAnswer) {
    EndLine();
    Write(title + QStringLiteral(": ") + text + u'\n');
    if (!m_interactive) {
        Write(
            QStringLiteral("(no terminal to ask: answering %1)\n").arg(AnswerName(defaultAnswer)));
        return defaultAnswer;
    }
    const bool yesNo = buttons == core::Buttons::YesNo || buttons == core::Buttons::YesNoCancel;
    Write(yesNo ? QStringLiteral("[y]es / [n]o%1? ")
                      .arg(buttons == core::Buttons::YesNoCancel ? QStringLiteral(" / [c]ancel")
                                                                 : QString())
                : QStringLiteral("[o]k / [c]ancel? "));
    QTextStream in(stdin);
    const QString line = in.readLine().trimmed().toLower();
    if (line.isEmpty()) {
        return defaultAnswer;
    }
    switch (line.at(0).unicode()) {
        case 'y':
            return core::Answer::Yes;
        case 'n':
            return core::Answer::No;
        case 'o':
            return core::Answer::Ok;
        case 'c':
            return core::Answer::Cancel;
        default:
            return defaultAnswer;
    }
}

std::optional<QString> TerminalUi::Prompt(const QString& text, const QString& title,
                                          const QString& initial) {
    EndLine();
    Write(title + QStringLiteral(": ") + text + u'\n');
    if (!m_interactive) {
        Write(QStringLiteral("(no terminal to ask: taking \"%1\")\n").arg(initial));
        return initial;
    }
    QTextStream in(stdin);
    const QString line = in.readLine();
    return line.isEmpty() ? initial : line;
}

void TerminalUi::Status(const QString& text) {
    if (text.isEmpty()) {
        // The long work is over: its line stays as it was last drawn, and
        // whatever comes next starts on a line of its own.
        EndLine();
        m_status.clear();
        m_percent = -1;
        m_written.clear();
        return;
    }
    if (text == m_status) {
        return;
    }
    m_status = text;
    if (m_output.tty) {
        // Drawn now when the interval is up, else later (CatchUp).
        m_behind = true;
        CatchUp(true);
    } else {
        // "Transferring Page: 2198 bytes" and "...: 2201 bytes" are one line.
        FoldFigures(text, m_folded);
        if (std::find(m_written.begin(), m_written.end(), m_folded) == m_written.end()) {
            m_written.push_back(m_folded);
            Write(text + u'\n');
        }
    }
}

void TerminalUi::Progress(qint64 value, qint64 maximum) {
    if (maximum <= 0) {
        return;
    }
    const int percent = static_cast<int>(std::clamp<qint64>(value, 0, maximum) * 100 / maximum);
    if (percent == m_percent) {
        return;
    }
    m_percent = percent;
    m_written.clear();
    if (m_output.tty) {
        Redraw();
    } else {
        Write(QStringLiteral("Progress: %1%\n").arg(percent));
    }
}

void TerminalUi::PumpEvents() {
    CatchUp(true);
}

void TerminalUi::WaitFor(core::Wakeup& wakeup) {
    if (g_cancel.load()) {
        return;
    }
    // A Ctrl-C after the look above still finds its byte in the pipe. A
    // status behind is drawn when its interval is up, the wait going on.
    pollfd watch[2] = {{wakeup.Descriptor(), POLLIN, 0}, {g_interruptRead, POLLIN, 0}};
    for (;;) {
        const auto due = UntilDue();
        const int got = poll(watch, 2, m_behind ? static_cast<int>(due.count()) : -1);
        if (got == 0) {
            CatchUp(false);  // its interval is up
        } else if (got > 0 || errno != EINTR || g_cancel.load()) {
            break;
        }
    }
    wakeup.Clear();
    char drained[16];
    while (g_interruptRead >= 0 && read(g_interruptRead, drained, sizeof drained) > 0) {
    }
}

bool TerminalUi::CancelRequested() {
    return g_cancel.load();
}

}  // namespace lw::app
