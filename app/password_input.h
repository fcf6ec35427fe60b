// SPDX-License-Identifier: GPL-3.0-or-later
// Reading a password without showing it: typed at a terminal with its echo
// off, or taken as one line of a pipe.
#pragma once

#include <QString>
#include <optional>

namespace lw::app {

// Writes prompt to standard error and reads one line from the terminal on
// standard input with its echo off. The terminal's settings are put back on
// every way out: the line ends, the input ends, or a signal (Ctrl-C) ends
// the program, which then dies of that signal as it would have. Nothing when
// the input ended before a line did or the terminal could not be set.
std::optional<QString> ReadHiddenLine(const QString& prompt);

// One line of the file descriptor, without its line end (LF or CR LF), read
// byte by byte so that nothing after it is taken. Nothing when the input
// ended before any byte, could not be read, or the line runs past maxBytes.
std::optional<QString> ReadOneLine(int fd, qsizetype maxBytes = 4096);

}  // namespace lw::app
