// SPDX-License-Identifier: GPL-3.0-or-later
// What the RTF reader and writer must agree on: lengths in twips against the
// document's pixels, and the paper width a table without fixed widths is
// spread over. Internal to the rich-text library; it must never grow state.
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

inline double TwipsToPixels(int twips) {
    return twips / kTwipsPerPixel;
}
inline int PixelsToTwips(double pixels) {
    return qRound(pixels * kTwipsPerPixel);
}

}  // namespace lw::richtext
