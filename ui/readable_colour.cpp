// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/readable_colour.h"

#include <algorithm>
#include <cmath>

namespace lw::ui {

namespace {

double Linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

}  // namespace

double RelativeLuminance(const QColor& colour) {
    const QColor rgb = colour.toRgb();
    return 0.2126 * Linear(rgb.redF()) + 0.7152 * Linear(rgb.greenF()) +
           0.0722 * Linear(rgb.blueF());
}

double ContrastRatio(const QColor& a, const QColor& b) {
    const double la = RelativeLuminance(a);
    const double lb = RelativeLuminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

bool IsDarkBackground(const QColor& background) {
    // Where black and white text would read equally well: luminance 0.179.
    return ContrastRatio(background, Qt::white) > ContrastRatio(background, Qt::black);
}

QColor ReadableOn(const QColor& wanted, const QColor& background, double minimum) {
    if (!wanted.isValid() || !background.isValid() ||
        ContrastRatio(wanted, background) >= minimum) {
        return wanted;
    }
    const bool lighten = IsDarkBackground(background);
    const QColor hsl = wanted.toHsl();
    const float hue = hsl.hslHueF();
    const float saturation = hsl.hslSaturationF();
    float lightness = hsl.lightnessF();
    // Small steps, so the colour moves no further than it must; the ends
    // (white, black) always reach the contrast a background allows.
    for (int step = 0; step < 100; ++step) {
        lightness = std::clamp(lightness + (lighten ? 0.01F : -0.01F), 0.0F, 1.0F);
        QColor candidate = QColor::fromHslF(hue, saturation, lightness, wanted.alphaF());
        if (ContrastRatio(candidate, background) >= minimum || lightness <= 0.0F ||
            lightness >= 1.0F) {
            return candidate.toRgb();
        }
    }
    return (lighten ? QColor(Qt::white) : QColor(Qt::black));
}

QColor StateColourOn(const QColor& system, const QColor& ground) {
    return IsDarkBackground(ground) ? ReadableOn(system, ground) : system;
}

QPalette DarkPalette() {
    const QColor window(45, 45, 48);
    const QColor base(30, 30, 32);
    const QColor text(232, 232, 232);
    const QColor muted(160, 160, 160);
    const QColor highlight(42, 130, 218);
    QPalette palette(window);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::red);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, muted);
    palette.setColor(QPalette::Link, QColor(110, 170, 240));
    palette.setColor(QPalette::LinkVisited, QColor(170, 140, 230));
    palette.setColor(QPalette::Highlight, highlight);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Light, QColor(70, 70, 74));
    palette.setColor(QPalette::Midlight, QColor(58, 58, 62));
    palette.setColor(QPalette::Mid, QColor(38, 38, 40));
    palette.setColor(QPalette::Dark, QColor(24, 24, 26));
    palette.setColor(QPalette::Shadow, Qt::black);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(120, 120, 120));
    }
    return palette;
}

}  // namespace lw::ui
