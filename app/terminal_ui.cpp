#include "app/terminal_ui.h"

#include <unistd.h>

#include <QTextStream>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <string>

namespace lw::app {

namespace {

std::atomic<bool> g_cancel{false};

extern "C" void OnInterrupt(int) {
    // A second Ctrl-C ends the process at once, as a user expects.
    if (g_cancel.exchange(true)) {
        std::_Exit(130);
    }
}

void Err(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
    std::fflush(stderr);
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

}  // namespace

TerminalUi::TerminalUi() : m_interactive(isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0) {
    g_cancel = false;
    std::signal(SIGINT, OnInterrupt);
}

TerminalUi::~TerminalUi() {
    EndBar();
    std::signal(SIGINT, SIG_DFL);
}

void TerminalUi::EndBar() {
    if (m_barShown) {
        Err(QStringLiteral("\n"));
        m_barShown = false;
    }
}

void TerminalUi::Message(const QString& text, const QString& title, core::Icon) {
    EndBar();
    Err(title.isEmpty() ? QString(text + u'\n')
                        : QString(title + QStringLiteral(": ") + text + u'\n'));
}

core::Answer TerminalUi::Ask(const QString& text, const QString& title, core::Buttons buttons,
                             core::Answer defaultAnswer) {
    EndBar();
    Err(title + QStringLiteral(": ") + text + u'\n');
    if (!m_interactive) {
        Err(QStringLiteral("(no terminal to ask: answering %1)\n").arg(AnswerName(defaultAnswer)));
        return defaultAnswer;
    }
    const bool yesNo = buttons == core::Buttons::YesNo || buttons == core::Buttons::YesNoCancel;
    Err(yesNo ? QStringLiteral("[y]es / [n]o%1? ")
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
    EndBar();
    Err(title + QStringLiteral(": ") + text + u'\n');
    if (!m_interactive) {
        Err(QStringLiteral("(no terminal to ask: taking \"%1\")\n").arg(initial));
        return initial;
    }
    QTextStream in(stdin);
    const QString line = in.readLine();
    return line.isEmpty() ? initial : line;
}

void TerminalUi::Status(const QString& text) {
    EndBar();
    Err(text + u'\n');
}

void TerminalUi::Progress(qint64 value, qint64 maximum) {
    if (isatty(STDERR_FILENO) == 0 || maximum <= 0) {
        return;
    }
    constexpr int kWidth = 40;
    const qint64 clamped = std::clamp<qint64>(value, 0, maximum);
    const int filled = static_cast<int>(clamped * kWidth / maximum);
    Err(QStringLiteral("\r[") + QString(filled, u'#') + QString(kWidth - filled, u' ') +
        QStringLiteral("] %1%").arg(clamped * 100 / maximum, 3));
    m_barShown = true;
}

void TerminalUi::PumpEvents() {}

bool TerminalUi::CancelRequested() {
    return g_cancel.load();
}

}  // namespace lw::app
