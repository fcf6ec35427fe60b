// SPDX-License-Identifier: GPL-3.0-or-later
// The echo of the terminal is turned off only while the line is read. The
// signals that end a program are caught for that time alone: their handler
// puts the saved settings back (tcsetattr is safe in a handler) and raises
// the signal again with its default action.
#include "app/password_input.h"

#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>

namespace lw::app {

namespace {

constexpr std::array<int, 4> kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

termios g_saved{};
volatile sig_atomic_t g_terminal = -1;  // the descriptor whose settings are saved

extern "C" void RestoreAndDie(int signal) {
    if (g_terminal >= 0) {
        tcsetattr(g_terminal, TCSANOW, &g_saved);
        const char newline = '\n';
        [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, &newline, 1);
    }
    struct sigaction fallback {};
    fallback.sa_handler = SIG_DFL;
    sigemptyset(&fallback.sa_mask);
    sigaction(signal, &fallback, nullptr);
    raise(signal);
}

// Echo off from construction to destruction, the ending signals caught
// meanwhile.
class EchoOff {
public:
    explicit EchoOff(int fd) {
        if (tcgetattr(fd, &g_saved) != 0) {
            return;
        }
        struct sigaction catcher {};
        catcher.sa_handler = RestoreAndDie;
        sigemptyset(&catcher.sa_mask);
        for (size_t i = 0; i < kEndingSignals.size(); ++i) {
            sigaction(kEndingSignals[i], &catcher, &m_previous[i]);
        }
        g_terminal = fd;
        termios quiet = g_saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHOE | ECHOK | ECHONL);
        // TCSAFLUSH: what was typed before the prompt is not taken as the password.
        m_on = tcsetattr(fd, TCSAFLUSH, &quiet) == 0;
        if (!m_on) {
            Restore();
        }
    }
    ~EchoOff() {
        if (m_on) {
            Restore();
        }
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

    bool On() const { return m_on; }

private:
    void Restore() {
        tcsetattr(g_terminal, TCSANOW, &g_saved);
        g_terminal = -1;
        for (size_t i = 0; i < kEndingSignals.size(); ++i) {
            sigaction(kEndingSignals[i], &m_previous[i], nullptr);
        }
    }

    std::array<struct sigaction, kEndingSignals.size()> m_previous{};
    bool m_on = false;
};

}  // namespace

std::optional<QString> ReadOneLine(int fd, qsizetype maxBytes) {
    QByteArray line;
    bool any = false;
    for (;;) {
        char byte = 0;
        const ssize_t got = read(fd, &byte, 1);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return std::nullopt;
        }
        if (got == 0) {
            if (!any) {
                return std::nullopt;
            }
            break;
        }
        any = true;
        if (byte == '\n') {
            break;
        }
        if (line.size() >= maxBytes) {
            return std::nullopt;
        }
        line.append(byte);
    }
    if (line.endsWith('\r')) {
        line.chop(1);
    }
    return QString::fromLocal8Bit(line);
}

std::optional<QString> ReadHiddenLine(const QString& prompt) {
    std::optional<QString> line;
    {
        EchoOff echoOff(STDIN_FILENO);
        if (!echoOff.On()) {
            return std::nullopt;
        }
        // The prompt comes once the echo is off, so that nothing typed after
        // it is ever shown.
        const QByteArray bytes = prompt.toLocal8Bit();
        std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
        std::fflush(stderr);
        line = ReadOneLine(STDIN_FILENO);
    }
    // The Enter key was not echoed either.
    std::fputc('\n', stderr);
    std::fflush(stderr);
    return line;
}

}  // namespace lw::app
