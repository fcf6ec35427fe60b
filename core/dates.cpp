// SPDX-License-Identifier: GPL-3.0-or-later
// Dates as the site writes them and as the database rules read them: the
// parser for the site's date forms, the two-digit-year pivot, the Left$(x,8)
// day rule, date serials and DateDiff. Everything here works on wall-clock
// values, as the site's texts are wall-clock texts; nothing here reads the
// clock.
#include <QRegularExpression>
#include <cmath>
#include <utility>
#include <vector>

#include "core/text.h"

namespace lw::core {

namespace {

const QDate kSerialBase(1899, 12, 30);

// Full month and weekday names in the site's language; a word matches a name
// when it is the name or its first three letters ("Sept" too).
constexpr const char16_t* kMonthNames[] = {u"january",   u"february", u"march",    u"april",
                                           u"may",       u"june",     u"july",     u"august",
                                           u"september", u"october",  u"november", u"december"};
constexpr const char16_t* kDayNames[] = {u"sunday",   u"monday", u"tuesday", u"wednesday",
                                         u"thursday", u"friday", u"saturday"};
// Zone marks the site puts behind a time; the time is taken as written.
constexpr const char16_t* kZones[] = {u"pst", u"pdt", u"mst", u"mdt", u"cst", u"cdt",
                                      u"est", u"edt", u"gmt", u"utc", u"t",   u"z"};

bool MatchesName(const QString& word, QStringView name) {
    if (word.size() < 3 || word.size() > name.size()) {
        return false;
    }
    if (word == name) {
        return true;
    }
    return word.size() == 3 ? name.startsWith(word) : (word == u"sept" && name == u"september");
}

int MonthFromWord(const QString& lowerWord) {
    for (int i = 0; i < 12; ++i) {
        if (MatchesName(lowerWord, QStringView(kMonthNames[i]))) {
            return i + 1;
        }
    }
    return 0;
}

bool IsIgnoredWord(const QString& lowerWord) {
    for (const char16_t* day : kDayNames) {
        if (MatchesName(lowerWord, QStringView(day))) {
            return true;
        }
    }
    for (const char16_t* zone : kZones) {
        if (lowerWord == QStringView(zone)) {
            return true;
        }
    }
    return false;
}

struct NumberToken {
    int value = 0;
    qsizetype digits = 0;
};

int YearOf(const NumberToken& token) {
    return token.digits <= 2 ? ExpandYear(token.value) : token.value;
}

bool IsYearLike(const NumberToken& token) {
    return token.digits >= 3 || token.value > 31;
}

// "hh:mm", "hh:mm:ss", "hh:mm:ss.fff", each optionally followed by AM/PM.
std::optional<QTime> TakeTime(QString& text) {
    static const QRegularExpression timeRe(
        QStringLiteral("(?<![0-9])([0-9]{1,2}):([0-9]{1,2})(?::([0-9]{1,2})(?:\\.[0-9]+)?)?(?:\\s*("
                       "[AaPp])[Mm]?(?![A-Za-z]))?"));
    const QRegularExpressionMatch match = timeRe.match(text);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    int hour = match.captured(1).toInt();
    const int minute = match.captured(2).toInt();
    const int second = match.capturedLength(3) > 0 ? match.captured(3).toInt() : 0;
    const QString meridiem = match.captured(4).toLower();
    if (!meridiem.isEmpty()) {
        if (hour < 1 || hour > 12) {
            return QTime();
        }
        if (meridiem == u"a" && hour == 12) {
            hour = 0;
        } else if (meridiem == u"p" && hour < 12) {
            hour += 12;
        }
    }
    text.replace(match.capturedStart(0), match.capturedLength(0), QStringLiteral(" "));
    return QTime(hour, minute, second);  // invalid when out of range
}

}  // namespace

int ExpandYear(int twoDigitYear) {
    if (twoDigitYear < 0 || twoDigitYear > 99) {
        return twoDigitYear;
    }
    return twoDigitYear < 97 ? 2000 + twoDigitYear : 1900 + twoDigitYear;
}

std::optional<QDate> LeftDate(QStringView text) {
    // Same test as the GLOB of EndDaySql. The SQL gives text even for an
    // impossible day such as "13/45/00" ("2000-13-45"); here that is nullopt,
    // and for every possible day both give the same day.
    if (text.size() < 8) {
        return std::nullopt;
    }
    auto digit = [&](qsizetype i) { return text[i] >= u'0' && text[i] <= u'9'; };
    if (!digit(0) || !digit(1) || text[2] != u'/' || !digit(3) || !digit(4) || text[5] != u'/' ||
        !digit(6) || !digit(7)) {
        return std::nullopt;
    }
    auto two = [&](qsizetype i) {
        return (text[i].unicode() - u'0') * 10 + (text[i + 1].unicode() - u'0');
    };
    const QDate date(ExpandYear(two(6)), two(0), two(3));
    if (!date.isValid()) {
        return std::nullopt;
    }
    return date;
}

std::optional<QDateTime> ParseDateTime(QStringView text) {
    QString rest = text.trimmed().toString();
    if (rest.isEmpty()) {
        return std::nullopt;
    }
    const std::optional<QTime> time = TakeTime(rest);
    if (time && !time->isValid()) {
        return std::nullopt;
    }

    std::vector<NumberToken> numbers;
    int month = 0;
    qsizetype i = 0;
    while (i < rest.size()) {
        const QChar c = rest.at(i);
        if (c >= u'0' && c <= u'9') {
            NumberToken token;
            while (i < rest.size() && rest.at(i) >= u'0' && rest.at(i) <= u'9') {
                if (token.digits >= 4) {
                    return std::nullopt;
                }
                token.value = token.value * 10 + (rest.at(i).unicode() - u'0');
                ++token.digits;
                ++i;
            }
            numbers.push_back(token);
        } else if ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z')) {
            const qsizetype start = i;
            while (i < rest.size() && ((rest.at(i) >= u'a' && rest.at(i) <= u'z') ||
                                       (rest.at(i) >= u'A' && rest.at(i) <= u'Z'))) {
                ++i;
            }
            const QString word = rest.mid(start, i - start).toLower();
            if (const int m = MonthFromWord(word); m > 0 && month == 0) {
                month = m;
            } else if (!IsIgnoredWord(word)) {
                return std::nullopt;
            }
        } else if (c.isSpace() || c == u'/' || c == u'-' || c == u'.' || c == u',') {
            ++i;
        } else {
            return std::nullopt;
        }
    }

    int year = 0;
    int day = 0;
    if (month > 0) {
        if (numbers.size() != 2) {
            return std::nullopt;
        }
        const bool yearFirst = IsYearLike(numbers[0]);
        day = numbers[yearFirst ? 1 : 0].value;
        year = YearOf(numbers[yearFirst ? 0 : 1]);
    } else {
        if (numbers.size() != 3) {
            return std::nullopt;
        }
        if (IsYearLike(numbers[0])) {
            year = YearOf(numbers[0]);
            month = numbers[1].value;
            day = numbers[2].value;
        } else {
            month = numbers[0].value;
            day = numbers[1].value;
            year = YearOf(numbers[2]);
            if (month > 12 && day <= 12) {
                std::swap(month, day);  // a day written first, as the date parser allows
            }
        }
    }
    const QDate date(year, month, day);
    if (!date.isValid()) {
        return std::nullopt;
    }
    return WallClock(date, time.value_or(QTime(0, 0)));
}

std::optional<QDate> CDate(QStringView text) {
    // The rule cuts at the first comma ("06/07/00, 12:04:00 PST"); where the
    // part before it holds no date ("June 7, 2000", "Wednesday, 06 07, 2000")
    // the whole text is read.
    if (const qsizetype comma = text.indexOf(u','); comma >= 0) {
        if (const auto head = ParseDateTime(text.left(comma))) {
            return head->date();
        }
    }
    if (const auto whole = ParseDateTime(text)) {
        return whole->date();
    }
    return std::nullopt;
}

QDateTime WallClock(const QDate& date, const QTime& time) {
    return QDateTime(date, time, Qt::UTC);
}

double DateToSerial(const QDateTime& value) {
    const qint64 days = kSerialBase.daysTo(value.date());
    const double fraction = value.time().msecsSinceStartOfDay() / 86400000.0;
    // Before the base day the fraction still counts forward from midnight,
    // so -1.25 is 29 December 1899, 06:00.
    return days >= 0 ? days + fraction : days - fraction;
}

QDateTime SerialToDate(double serial) {
    const double whole = std::trunc(serial);
    const qint64 msecs = std::llround(std::fabs(serial - whole) * 86400000.0 / 1000.0) * 1000;
    QDate date = kSerialBase.addDays(static_cast<qint64>(whole));
    if (msecs >= 86400000) {
        return WallClock(date.addDays(1), QTime(0, 0));
    }
    return WallClock(date, QTime::fromMSecsSinceStartOfDay(static_cast<int>(msecs)));
}

std::optional<qint64> DateDiff(QStringView interval, const QDateTime& from, const QDateTime& to) {
    const QString unit = interval.trimmed().toString().toLower();
    const QDate a = from.date();
    const QDate b = to.date();
    const qint64 days = a.daysTo(b);
    auto instant = [](const QDateTime& v, qint64 perDay, int unitSecs) {
        return kSerialBase.daysTo(v.date()) * perDay +
               v.time().msecsSinceStartOfDay() / 1000 / unitSecs;
    };
    if (unit == u"yyyy") {
        return b.year() - a.year();
    }
    if (unit == u"q") {
        return (b.year() * 4 + (b.month() - 1) / 3) - (a.year() * 4 + (a.month() - 1) / 3);
    }
    if (unit == u"m") {
        return (b.year() * 12 + b.month()) - (a.year() * 12 + a.month());
    }
    if (unit == u"d" || unit == u"y") {
        return days;
    }
    if (unit == u"w") {
        return days / 7;
    }
    if (unit == u"ww") {
        // Weeks start on Sunday; Qt counts Monday as 1 and Sunday as 7.
        const QDate weekA = a.addDays(-(a.dayOfWeek() % 7));
        const QDate weekB = b.addDays(-(b.dayOfWeek() % 7));
        return weekA.daysTo(weekB) / 7;
    }
    if (unit == u"h") {
        return instant(to, 24, 3600) - instant(from, 24, 3600);
    }
    if (unit == u"n") {
        return instant(to, 1440, 60) - instant(from, 1440, 60);
    }
    if (unit == u"s") {
        return instant(to, 86400, 1) - instant(from, 86400, 1);
    }
    return std::nullopt;
}

QString EndDaySql(const QString& columnSql) {
    const QString x = columnSql;
    return QStringLiteral("CASE WHEN ") + x +
           QStringLiteral(" GLOB '[0-9][0-9]/[0-9][0-9]/[0-9][0-9]*' THEN (CASE WHEN substr(") + x +
           QStringLiteral(",7,2) < '97' THEN '20' ELSE '19' END) || substr(") + x +
           QStringLiteral(",7,2) || '-' || substr(") + x +
           QStringLiteral(",1,2) || '-' || substr(") + x + QStringLiteral(",4,2) END");
}

}  // namespace lw::core
