// SPDX-License-Identifier: GPL-3.0-or-later
// Windows-1252 for pages that are not UTF-8. Only 0x80 to 0x9F differ from
// Latin-1, so one small table serves both ways.
#include "core/page_charset.h"

#include <array>

namespace lw::core {

namespace {

// 0x80..0x9F; the unassigned 0x81, 0x8D, 0x8F, 0x90 and 0x9D stay as they are.
constexpr std::array<char16_t, 32> kHigh = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

}  // namespace

QString FromWindows1252(QByteArrayView bytes) {
    QString text(bytes.size(), Qt::Uninitialized);
    QChar* out = text.data();
    for (const char byte : bytes) {
        const auto b = static_cast<unsigned char>(byte);
        *out++ = QChar(b >= 0x80 && b <= 0x9F ? kHigh[b - 0x80] : char16_t(b));
    }
    return text;
}

std::optional<QByteArray> ToWindows1252(const QString& text) {
    QByteArray bytes;
    bytes.reserve(text.size());
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u < 0x80 || (u >= 0xA0 && u <= 0xFF)) {
            bytes += static_cast<char>(u);
            continue;
        }
        bool found = false;
        for (size_t i = 0; i < kHigh.size(); ++i) {
            if (kHigh[i] == u) {
                bytes += static_cast<char>(0x80 + i);
                found = true;
                break;
            }
        }
        if (!found) {
            return std::nullopt;
        }
    }
    return bytes;
}

QString PageBytesToText(QByteArrayView bytes) {
    if (!bytes.isValidUtf8()) {
        return FromWindows1252(bytes);
    }
    // fromUtf8 would drop a leading byte-order mark; the page holds it.
    if (bytes.startsWith("\xEF\xBB\xBF")) {
        return QChar(0xFEFF) + QString::fromUtf8(bytes.sliced(3));
    }
    return QString::fromUtf8(bytes);
}

}  // namespace lw::core
