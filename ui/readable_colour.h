// SPDX-License-Identifier: GPL-3.0-or-later
// Colours that stay readable whatever the palette: the green and red of the
// lists and panels were chosen for black text on white, and on a dark
// palette they would all but vanish. The contrast is the WCAG one (relative
// luminance, 1:1 to 21:1); a colour below the wanted contrast is made lighter
// or darker, keeping its hue, until it reads.
#pragma once

#include <QColor>
#include <QPalette>

namespace lw::ui {

// Normal text needs 4.5:1 against its background to read comfortably.
inline constexpr double kReadableContrast = 4.5;

// The relative luminance of an sRGB colour, 0 (black) to 1 (white).
double RelativeLuminance(const QColor& colour);
// The contrast ratio of two colours, 1 to 21, whichever is the lighter.
double ContrastRatio(const QColor& a, const QColor& b);
// wanted itself when it reads on background with at least minimum contrast;
// otherwise the nearest colour of the same hue, lighter on a dark background
// and darker on a light one, that does.
QColor ReadableOn(const QColor& wanted, const QColor& background,
                  double minimum = kReadableContrast);
// The colour of an item's state (the green and red of the lists and panels)
// on a ground: the system's own on a light ground, for which it was chosen;
// on a dark ground, lightened until it reads.
QColor StateColourOn(const QColor& system, const QColor& ground);

// True when light text reads better than dark text on background.
bool IsDarkBackground(const QColor& background);

// A dark palette for the Fusion style, as a dark desktop gives one: the
// windows are looked at and checked under it.
QPalette DarkPalette();

}  // namespace lw::ui
