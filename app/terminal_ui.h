// The Ui port on a terminal: messages and status lines on standard error, a
// progress bar when standard error is a terminal, questions answered from
// standard input when it is a terminal and by their default (said aloud)
// otherwise, and Ctrl-C as the Cancel button.
#pragma once

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

private:
    void EndBar();
    bool m_interactive = false;
    bool m_barShown = false;
};

}  // namespace lw::app
