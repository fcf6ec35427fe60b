// SPDX-License-Identifier: GPL-3.0-or-later
// The one place where page bytes that are not UTF-8 become text and back:
// such pages are read as Windows-1252, as browsers read pages that call
// themselves Latin-1, so that curly quotes, dashes and the euro sign of an
// older site arrive as themselves and not as control characters. Pure
// functions; they never fail.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <optional>

namespace lw::core {

// Bytes as Windows-1252; the five bytes that code page leaves unassigned keep
// their Latin-1 meaning, so every byte gives one character and none is lost.
QString FromWindows1252(QByteArrayView bytes);

// The inverse; nullopt when the text holds a character the code page lacks.
std::optional<QByteArray> ToWindows1252(const QString& text);

// A page value or page text: UTF-8 when the bytes are valid UTF-8 (a leading
// byte-order mark is kept as U+FEFF, as it stands in the page), else
// Windows-1252.
QString PageBytesToText(QByteArrayView bytes);

}  // namespace lw::core
