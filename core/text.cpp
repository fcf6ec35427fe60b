// SPDX-License-Identifier: GPL-3.0-or-later
// The small text helpers every part of the program shares: replacing,
// entity decoding, site time and time left, folders and files, cutting, and
// the number rule. They keep no state and never throw; a failure is one of the
// plain marks ("ERROR", "FALSE", "0") that callers compare against.
#include <locale.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "core/text.h"

namespace lw::core {

namespace {

// Whole seconds between two wall-clock values, the way the site's texts and
// the local clock are compared: no zone, no daylight saving.
qint64 WallSecsTo(const QDateTime& from, const QDateTime& to) {
    return from.date().daysTo(to.date()) * 86400 + to.time().msecsSinceStartOfDay() / 1000 -
           from.time().msecsSinceStartOfDay() / 1000;
}

// strtod in the "C" locale, whatever locale the program runs under.
double AsciiToDouble(const QByteArray& ascii) {
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    return strtod_l(ascii.constData(), nullptr, cLocale);
}

bool IsAsciiDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}

// Reads [sign] digits [. digits] [exponent] from text at i, the exponent only
// when digits follow it (with 'd'/'D' also as its letter when vbExponent is
// set). Appends what it read to out in strtod's syntax and returns the number
// of mantissa digits read; i is left behind the last character taken.
int ScanDecimal(QStringView text, qsizetype& i, bool vbExponent, QByteArray& out) {
    const qsizetype n = text.size();
    if (i < n && (text[i] == u'-' || text[i] == u'+')) {
        out += char(text[i].unicode());
        ++i;
    }
    int digits = 0;
    while (i < n && IsAsciiDigit(text[i])) {
        out += char(text[i].unicode());
        ++digits;
        ++i;
    }
    if (i < n && text[i] == u'.') {
        out += '.';
        ++i;
        while (i < n && IsAsciiDigit(text[i])) {
            out += char(text[i].unicode());
            ++digits;
            ++i;
        }
    }
    if (digits > 0 && i < n) {
        const QChar e = text[i];
        if (e == u'e' || e == u'E' || (vbExponent && (e == u'd' || e == u'D'))) {
            qsizetype j = i + 1;
            QByteArray exponent("e");
            if (j < n && (text[j] == u'-' || text[j] == u'+')) {
                exponent += char(text[j].unicode());
                ++j;
            }
            if (j < n && IsAsciiDigit(text[j])) {
                while (j < n && IsAsciiDigit(text[j])) {
                    exponent += char(text[j].unicode());
                    ++j;
                }
                out += exponent;
                i = j;
            }
        }
    }
    return digits;
}

// The leading number of a text exactly as SQLite's CAST(t AS REAL) reads it:
// leading white space, sign, digits, fraction, an exponent only when digits
// follow; 0 when there are no digits.
double LeadingNumber(QStringView text) {
    qsizetype i = 0;
    while (i < text.size() &&
           (text[i] == u' ' || (text[i] >= u'\t' && text[i] <= u'\r'))) {  // \t \n \v \f \r
        ++i;
    }
    QByteArray ascii;
    if (ScanDecimal(text, i, false, ascii) == 0) {
        return 0.0;
    }
    return AsciiToDouble(ascii);
}

int DigitValue(QChar c) {
    if (c >= u'0' && c <= u'9') {
        return c.unicode() - u'0';
    }
    if (c >= u'a' && c <= u'f') {
        return c.unicode() - u'a' + 10;
    }
    if (c >= u'A' && c <= u'F') {
        return c.unicode() - u'A' + 10;
    }
    return -1;
}

// "&H1F" and "&O17": the digits after the mark in base 16 or 8, taken as a
// plain non-negative number. With whole set every character must be a digit.
std::optional<double> RadixNumber(QStringView text, bool whole) {
    if (text.size() < 2 || text[0] != u'&') {
        return std::nullopt;
    }
    const QChar mark = text[1];
    const int base = (mark == u'H' || mark == u'h') ? 16 : ((mark == u'O' || mark == u'o') ? 8 : 0);
    if (base == 0) {
        return std::nullopt;
    }
    double value = 0;
    qsizetype i = 2;
    for (; i < text.size(); ++i) {
        const int digit = DigitValue(text[i]);
        if (digit < 0 || digit >= base) {
            break;
        }
        value = value * base + digit;
    }
    if (whole && (i == 2 || i != text.size())) {
        return std::nullopt;
    }
    return value;
}

}  // namespace

QString ReplaceFirst(const QString& text, const QString& find, const QString& replacement) {
    const qsizetype pos = find.isEmpty() ? -1 : text.indexOf(find);
    if (pos < 0) {
        return QStringLiteral("ERROR");
    }
    QString result = text;
    result.replace(pos, find.size(), replacement);
    return result;
}

QString ReplaceEvery(const QString& text, const QString& find, const QString& replacement) {
    if (find.isEmpty()) {
        return text;
    }
    QString result;
    result.reserve(text.size());
    qsizetype from = 0;
    for (qsizetype pos = text.indexOf(find); pos >= 0; pos = text.indexOf(find, from)) {
        result += QStringView(text).mid(from, pos - from);
        result += replacement;
        from = pos + find.size();
    }
    result += QStringView(text).mid(from);
    return result;
}

QString ReplaceRescan(const QString& text, const QString& find, const QString& replacement) {
    // Nothing to replace, nothing a replacement could join: most values of
    // a page hold none of what is looked for.
    if (find.isEmpty() || !text.contains(find)) {
        return text;
    }
    // Looking again from the start after every replacement can only find a new
    // occurrence where the replacement joins what stood before it, so the text
    // is fed through once and the replacement is pushed back in front of the
    // unread rest: the same result in one sweep.
    if (replacement.contains(find)) {
        return ReplaceEvery(text, find, replacement);
    }
    // A rewrite that never ends without holding find (one that keeps growing)
    // is cut off at a bound and returns what it has.
    const qsizetype sizeBound = 64 * (text.size() + 1024);
    std::vector<char16_t> unread(text.utf16(), text.utf16() + text.size());
    std::reverse(unread.begin(), unread.end());
    QString done;
    done.reserve(text.size());
    while (!unread.empty()) {
        done += QChar(unread.back());
        unread.pop_back();
        if (done.endsWith(find)) {
            done.chop(find.size());
            for (auto it = replacement.crbegin(); it != replacement.crend(); ++it) {
                unread.push_back(it->unicode());
            }
            if (done.size() + qsizetype(unread.size()) > sizeBound) {
                break;
            }
        }
    }
    for (auto it = unread.crbegin(); it != unread.crend(); ++it) {
        done += QChar(*it);
    }
    return done;
}

QString DecodeEntities(const QString& text) {
    if (!text.contains(u'&')) {
        return text;  // every entity starts with one
    }
    QString result = ReplaceRescan(text, QStringLiteral("&nbsp;"), QStringLiteral(" "));
    result = ReplaceRescan(result, QStringLiteral("&amp;"), QStringLiteral("&"));
    result = ReplaceRescan(result, QStringLiteral("&#38;"), QStringLiteral("&"));
    result = ReplaceRescan(result, QStringLiteral("&#39;"), QStringLiteral("'"));
    return ReplaceRescan(result, QStringLiteral("&#34;"), QStringLiteral("\""));
}

QString SiteTimeDifference(const QString& siteTime, const QDateTime& now) {
    const QString failed = QStringLiteral("0");
    qsizetype zone = siteTime.indexOf(QStringLiteral("PST"));
    if (zone < 0) {
        zone = siteTime.indexOf(QStringLiteral("PDT"));
    }
    if (zone < 0) {
        return failed;
    }
    QString stamp = siteTime.left(zone).trimmed();
    // "Wednesday, 06 07, 2000 12:04:00": the weekday goes with the first comma.
    if (const qsizetype comma = stamp.indexOf(u','); comma >= 0) {
        stamp = stamp.mid(comma + 1).trimmed();
    }
    const std::optional<QDateTime> site = ParseDateTime(stamp);
    if (!site) {
        return failed;
    }
    return QString::number(WallSecsTo(*site, now));
}

QString TimeLeftText(const QString& endDate, const QString& siteCorrection, const QDateTime& now) {
    // The stored form is "mm/dd/yy, hh:mm:ss PST" and the year digits are read
    // from their place counted from the end, as the display always has.
    if (endDate.size() < 18) {
        return QString();
    }
    const QString yearDigits = endDate.right(16).left(2);
    const QString head = endDate.left(18).trimmed();
    const QString joined = head.left(8) + head.right(9);  // "mm/dd/yy hh:mm:ss"
    const QString century = Val(yearDigits) < 97 ? QStringLiteral("20") : QStringLiteral("19");
    const QString full = joined.left(6) + century + joined.right(11);
    const std::optional<QDateTime> end = ParseDateTime(full);
    if (!end) {
        return QString();
    }
    const qint64 seconds =
        WallSecsTo(now, *end) + static_cast<qint64>(std::llround(Val(siteCorrection)));
    const qint64 days = seconds / 86400;
    const qint64 rest = seconds - days * 86400;
    const qint64 hours = rest / 3600;
    const qint64 minutes = (rest - hours * 3600) / 60;
    const qint64 secs = rest - hours * 3600 - minutes * 60;
    if (days > 0 || hours > 0 || minutes > 0 || secs > 0) {
        return Format(days, QStringLiteral("###0")) + QStringLiteral("d ") +
               Format(hours, QStringLiteral("00")) + QStringLiteral("h ") +
               Format(minutes, QStringLiteral("00")) + QStringLiteral("m");
    }
    return QStringLiteral("Ended");
}

bool EnsureDirectory(const QString& path) {
    if (path.isEmpty()) {
        return false;
    }
    const QFileInfo info(path);
    if (info.exists()) {
        return info.isDir();
    }
    return QDir().mkpath(path);
}

bool EnsureFile(const QString& path, bool create) {
    if (path.isEmpty()) {
        return false;
    }
    const QFileInfo info(path);
    if (info.exists()) {
        return info.isFile();
    }
    if (!create) {
        return false;
    }
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::NewOnly);
}

bool CopyIfMissing(const QString& source, const QString& target,
                   QFileDevice::Permissions permissions) {
    if (QFileInfo::exists(target)) {
        return true;
    }
    return QFile::copy(source, target) && QFile::setPermissions(target, permissions);
}

QString CutAt(const QString& text, const QString& delimiter, bool keepRight, bool after) {
    // after puts the cut behind the delimiter: the left part then ends with it
    // and the right part starts after it.
    if (delimiter.isEmpty()) {
        return QStringLiteral("ERROR");
    }
    const qsizetype pos = text.indexOf(delimiter);
    if (pos < 0) {
        return QStringLiteral("FALSE");
    }
    const qsizetype cut = after ? pos + delimiter.size() : pos;
    return keepRight ? text.mid(cut) : text.left(cut);
}

double Val(QStringView text) {
    QString squeezed;
    squeezed.reserve(text.size());
    for (const QChar c : text) {
        if (c != u' ' && c != u'\t' && c != u'\n') {
            squeezed += c;
        }
    }
    if (const auto radix = RadixNumber(squeezed, false)) {
        return *radix;
    }
    qsizetype i = 0;
    QByteArray ascii;
    if (ScanDecimal(squeezed, i, true, ascii) == 0) {
        return 0.0;
    }
    return AsciiToDouble(ascii) + 0.0;
}

std::optional<double> TextToNumber(QStringView text) {
    QStringView s = text.trimmed();
    if (s.isEmpty()) {
        return std::nullopt;
    }
    if (s[0] == u'&') {
        return RadixNumber(s, true);
    }
    bool parenthesised = false;
    if (s.size() >= 2 && s.front() == u'(' && s.back() == u')') {
        parenthesised = true;
        s = s.mid(1, s.size() - 2).trimmed();
    }
    bool dollar = false;
    bool sign = false;
    bool negative = false;
    qsizetype i = 0;
    const qsizetype n = s.size();
    auto skipBlanks = [&] {
        while (i < n && s[i].isSpace()) {
            ++i;
        }
    };
    // A currency sign and a sign, in either order, before the digits...
    for (;;) {
        skipBlanks();
        if (i < n && s[i] == u'$' && !dollar) {
            dollar = true;
            ++i;
        } else if (i < n && (s[i] == u'-' || s[i] == u'+') && !sign && !parenthesised) {
            sign = true;
            negative = s[i] == u'-';
            ++i;
        } else {
            break;
        }
    }
    // ...thousands separators anywhere among the whole digits...
    QByteArray ascii;
    int digits = 0;
    while (i < n && (IsAsciiDigit(s[i]) || (s[i] == u',' && digits > 0))) {
        if (s[i] != u',') {
            ascii += char(s[i].unicode());
            ++digits;
        }
        ++i;
    }
    if (i < n && s[i] == u'.') {
        ascii += '.';
        for (++i; i < n && IsAsciiDigit(s[i]); ++i) {
            ascii += char(s[i].unicode());
            ++digits;
        }
    }
    if (digits == 0) {
        return std::nullopt;
    }
    if (i < n && (s[i] == u'e' || s[i] == u'E' || s[i] == u'd' || s[i] == u'D')) {
        ascii += 'e';
        ++i;
        if (i < n && (s[i] == u'-' || s[i] == u'+')) {
            ascii += char(s[i].unicode());
            ++i;
        }
        if (i >= n || !IsAsciiDigit(s[i])) {
            return std::nullopt;  // an exponent mark with no digits
        }
        for (; i < n && IsAsciiDigit(s[i]); ++i) {
            ascii += char(s[i].unicode());
        }
    }
    // ...and the same two behind them.
    for (;;) {
        skipBlanks();
        if (i < n && s[i] == u'$' && !dollar) {
            dollar = true;
            ++i;
        } else if (i < n && (s[i] == u'-' || s[i] == u'+') && !sign && !parenthesised) {
            sign = true;
            negative = s[i] == u'-';
            ++i;
        } else {
            break;
        }
    }
    if (i != n) {
        return std::nullopt;
    }
    const double value = AsciiToDouble(ascii);
    return (negative || parenthesised) ? -value : value;
}

double NumberRule(QStringView text) {
    QString s;
    s.reserve(text.size());
    for (const QChar c : text) {
        if (c != u'$' && c != u',' && c != u' ' && c != u'\u00A3' && c != u'\u20AC' &&
            c != u'\u00A5') {
            s += c;
        }
    }
    const double value =
        s.startsWith(u'(') ? -LeadingNumber(QStringView(s).mid(1)) : LeadingNumber(s);
    return value + 0.0;  // no "-0" from "-" or "("
}

double NumberRule(const QString& text) {
    return NumberRule(QStringView(text));
}

double NumberRule(const QVariant& value) {
    if (value.isNull() || !value.isValid()) {
        return 0.0;
    }
    switch (value.typeId()) {
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Double:
        case QMetaType::Float:
            return value.toDouble() + 0.0;
        case QMetaType::QByteArray:
            return NumberRule(QStringView(QString::fromUtf8(value.toByteArray())));
        default:
            return NumberRule(QStringView(value.toString()));
    }
}

namespace {

// The six characters the number rule passes over, each taken out in turn.
QString WithoutMoneySigns(const QString& columnSql) {
    return QStringLiteral("replace(replace(replace(replace(replace(replace(") + columnSql +
           QStringLiteral(",'$',''),',',''),' ',''),'\u00A3',''),'\u20AC',''),'\u00A5','')");
}

}  // namespace

QString NumberRuleSql(const QString& columnSql) {
    const QString& x = columnSql;
    const QString s = WithoutMoneySigns(x);
    // Every write of a row computes its generated columns, so the common
    // cases are read cheaply, each to the value the full rule gives:
    // - Null is 0;
    // - "$" and a digit, with no sign but commas after it: the rest without
    //   its commas is the text the full rule would read;
    // - a "(" in front of the number, signs aside, makes it negative (the
    //   first character the full rule keeps is the first that ltrim keeps).
    // The last two branches are the full rule, with the six replaces once.
    return QStringLiteral("CASE WHEN ") + x + QStringLiteral(" IS NULL THEN 0 WHEN ") + x +
           QStringLiteral(" GLOB '$[0-9]*' AND ") + x +
           QStringLiteral(" NOT GLOB '?*[$ \u00A3\u20AC\u00A5]*' THEN CAST(replace(substr(") + x +
           QStringLiteral(",2),',','') AS REAL) WHEN ltrim(") + x +
           QStringLiteral(",'$, \u00A3\u20AC\u00A5') GLOB '(*' THEN -CAST(substr(") + s +
           QStringLiteral(",2) AS REAL) ELSE IFNULL(CAST(") + s +
           QStringLiteral(" AS REAL),0) END");
}

QString EarlierNumberRuleSql(const QString& columnSql) {
    const QString s = WithoutMoneySigns(columnSql);
    return QStringLiteral("CASE WHEN substr(") + s +
           QStringLiteral(",1,1)='(' THEN -CAST(substr(") + s +
           QStringLiteral(",2) AS REAL) ELSE IFNULL(CAST(") + s +
           QStringLiteral(" AS REAL),0) END");
}

}  // namespace lw::core
