// SPDX-License-Identifier: GPL-3.0-or-later
// What the RTF reader and writer must agree on: lengths in twips against the
// document's pixels, the paper width a table without fixed widths is spread
// over, and the characters that are no text. Internal to the rich-text library; it must never grow
// state.
#pragma once

#include <QtGlobal>

namespace lw::richtext {

// A QTextDocument measures margins, indents and picture sizes in pixels of
// 1/96 inch; RTF in twips of 1/1440 inch.
inline constexpr double kTwipsPerPixel = 15.0;
// The width between one-inch margins on Letter paper, in twips.
inline constexpr int kTextWidthTwips = 9360;
// The most cells in one table row, as word processors allow.
inline constexpr int kMaxTableColumns = 63;

// Characters a text document keeps for its own structure (paragraph breaks,
// frames, objects) or that no paragraph holds: never read into one as text,
// never written from one.
inline bool IsDocumentMark(char16_t c) {
    return (c < 0x20 && c != u'\t') || c == 0x2029 || c == 0xfffc || c == 0xfdd0 || c == 0xfdd1;
}

inline double TwipsToPixels(int twips) {
    return twips / kTwipsPerPixel;
}
inline int PixelsToTwips(double pixels) {
    return qRound(pixels * kTwipsPerPixel);
}

}  // namespace lw::richtext
