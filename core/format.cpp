// SPDX-License-Identifier: GPL-3.0-or-later
// Format(value, pattern): numbers and dates shown the way the program's texts,
// mails and reports show them, with the named patterns ("General Number",
// "Currency", "Long Time", ...) and the picture patterns ("#,###.##",
// "mm/dd/yy", "dddd, mm dd, yyyy hh:mm:ss", ...). US English names and "$".
// It never fails: a value that a pattern cannot take comes back as its text.
#include <QList>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "core/text.h"

namespace lw::core {

namespace {

const QDate kSerialBase(1899, 12, 30);

constexpr const char16_t* kMonthNames[] = {u"January",   u"February", u"March",    u"April",
                                           u"May",       u"June",     u"July",     u"August",
                                           u"September", u"October",  u"November", u"December"};
constexpr const char16_t* kDayNames[] = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                         u"Thursday", u"Friday", u"Saturday"};

QString MonthName(int month, bool abbreviated) {
    const QString name = QString::fromUtf16(kMonthNames[month - 1]);
    return abbreviated ? name.left(3) : name;
}

// Sunday is day 0 here; Qt counts Monday as 1 and Sunday as 7.
int SundayBasedDay(const QDate& date) {
    return date.dayOfWeek() % 7;
}

QString DayName(const QDate& date, bool abbreviated) {
    const QString name = QString::fromUtf16(kDayNames[SundayBasedDay(date)]);
    return abbreviated ? name.left(3) : name;
}

QString Padded(qint64 number, int width) {
    return QString::number(number).rightJustified(width, u'0');
}

// ---------------------------------------------------------------- values

struct Value {
    enum class Kind { Empty, Number, Date, Text };
    Kind kind = Kind::Empty;
    double number = 0;
    QDateTime date;
    QString text;
};

Value Classify(const QVariant& variant) {
    Value value;
    if (!variant.isValid() || variant.isNull()) {
        return value;
    }
    switch (variant.typeId()) {
        case QMetaType::Bool:
            value.kind = Value::Kind::Number;
            value.number = variant.toBool() ? -1 : 0;  // True is -1, as the store has it
            break;
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Double:
        case QMetaType::Float:
            value.kind = Value::Kind::Number;
            value.number = variant.toDouble();
            break;
        case QMetaType::QDate:
            value.kind = Value::Kind::Date;
            value.date = WallClock(variant.toDate(), QTime(0, 0));
            break;
        case QMetaType::QTime:
            value.kind = Value::Kind::Date;
            value.date = WallClock(kSerialBase, variant.toTime());
            break;
        case QMetaType::QDateTime:
            value.kind = Value::Kind::Date;
            value.date = variant.toDateTime();
            break;
        case QMetaType::QByteArray:
            value.kind = Value::Kind::Text;
            value.text = QString::fromUtf8(variant.toByteArray());
            break;
        default:
            value.kind = Value::Kind::Text;
            value.text = variant.toString();
            break;
    }
    return value;
}

std::optional<double> AsNumber(const Value& value) {
    switch (value.kind) {
        case Value::Kind::Number:
            return value.number;
        case Value::Kind::Date:
            return DateToSerial(value.date);
        case Value::Kind::Text:
            return TextToNumber(value.text);
        case Value::Kind::Empty:
            break;
    }
    return std::nullopt;
}

std::optional<QDateTime> AsDate(const Value& value) {
    std::optional<QDateTime> date;
    switch (value.kind) {
        case Value::Kind::Number:
            date = SerialToDate(value.number);
            break;
        case Value::Kind::Date:
            date = value.date;
            break;
        case Value::Kind::Text:
            date = ParseDateTime(value.text);
            if (!date) {
                if (const auto serial = TextToNumber(value.text)) {
                    date = SerialToDate(*serial);
                }
            }
            break;
        case Value::Kind::Empty:
            break;
    }
    if (date && !date->isValid()) {
        return std::nullopt;
    }
    return date;
}

// The text a value shows when the pattern cannot take it.
QString PlainText(const Value& value);

// ---------------------------------------------------------------- numbers

QString GeneralNumber(double number) {
    if (number == 0) {
        return QStringLiteral("0");
    }
    return QString::number(number, 'G', 15);  // 15 significant digits, "1E+20", "1E-05"
}

// Adds one to a string of decimal digits, growing it on a carry out.
void Increment(QString& digits) {
    for (qsizetype i = digits.size() - 1; i >= 0; --i) {
        if (digits[i] != u'9') {
            digits[i] = QChar(digits[i].unicode() + 1);
            return;
        }
        digits[i] = u'0';
    }
    digits.prepend(u'1');
}

// The shortest scientific text that reads back as a number ("7.25e+00"),
// where it has at most 15 digits. Those digits lie within half a unit of the
// number's last binary place, far closer than half a unit of a 15th decimal
// digit: they are the number rounded to 15 digits, found without the long
// division that rounding to 15 digits takes otherwise. A subnormal number
// has too few binary places for that, and zero, infinities and NaN no digits.
struct ShortestForm {
    char text[32];
    int digits = 0;  // how many the text holds
    int mark = 0;    // where its 'e' stands
    int end = 0;
};

std::optional<ShortestForm> Shortest(double number) {
    const double magnitude = std::fabs(number);
    if (!(magnitude >= std::numeric_limits<double>::min()) || !std::isfinite(magnitude)) {
        return std::nullopt;
    }
    ShortestForm form;
    const std::to_chars_result written = std::to_chars(form.text, form.text + sizeof form.text,
                                                       magnitude, std::chars_format::scientific);
    if (written.ec != std::errc()) {
        return std::nullopt;
    }
    form.end = static_cast<int>(written.ptr - form.text);
    form.mark = static_cast<int>(std::find(form.text, written.ptr, 'e') - form.text);
    form.digits = form.mark > 1 ? form.mark - 1 : form.mark;
    if (form.mark == form.end || form.digits > 15) {
        return std::nullopt;
    }
    return form;
}

// The 15 significant digits of a positive finite number and the power of ten
// of the first: 1234.5 is "123450000000000" and 3. Rounding works on these
// decimal digits, so 2.675 rounds to 2.68 as it reads, not as it is stored.
void SignificantDigits(double number, QString& digits, int& exponent) {
    if (const std::optional<ShortestForm> form = Shortest(number)) {
        digits = QString(15, u'0');
        digits[0] = QLatin1Char(form->text[0]);
        for (int i = 1; i < form->digits; ++i) {
            digits[i] = QLatin1Char(form->text[i + 1]);
        }
        const char* power = form->text + form->mark + 1;
        std::from_chars(*power == '+' ? power + 1 : power, form->text + form->end, exponent);
        return;
    }
    const QString e = QString::number(number, 'e', 14);
    const qsizetype mark = e.indexOf(u'e');
    digits = e.left(1) + e.mid(2, mark - 2);
    exponent = e.mid(mark + 1).toInt();
}

// A non-negative number rounded half away from zero to fracCount decimals:
// whole digits without leading zeros ("" for none) and exactly fracCount
// fraction digits.
void FixedDigits(double number, int fracCount, QString& whole, QString& fraction) {
    QString kept;
    if (number > 0 && std::isfinite(number)) {
        QString digits;
        int exponent = 0;
        SignificantDigits(number, digits, exponent);
        const int keep = exponent + 1 + fracCount;
        if (keep >= digits.size()) {
            kept = digits + QString(keep - digits.size(), u'0');
        } else if (keep >= 0) {
            kept = digits.left(keep);
            if (digits[keep] >= u'5') {
                Increment(kept);
            }
        }
    }
    if (kept.size() < fracCount + 1) {
        kept = QString(fracCount + 1 - kept.size(), u'0') + kept;
    }
    whole = kept.left(kept.size() - fracCount);
    qsizetype firstNonZero = 0;
    while (firstNonZero < whole.size() && whole[firstNonZero] == u'0') {
        ++firstNonZero;
    }
    whole = whole.mid(firstNonZero);
    fraction = kept.right(fracCount);
}

// The same in scientific form: wholeCount digits before the point, the power
// of ten in exponent.
void ScientificDigits(double number, int wholeCount, int fracCount, QString& whole,
                      QString& fraction, int& exponent) {
    exponent = 0;
    if (!(number > 0) || !std::isfinite(number)) {
        whole = QString();
        fraction = QString(fracCount, u'0');
        return;
    }
    QString digits;
    int firstPower = 0;
    SignificantDigits(number, digits, firstPower);
    const int total = wholeCount + fracCount;
    QString kept = digits.left(total);
    if (total > digits.size()) {
        kept += QString(total - digits.size(), u'0');
    } else if (total < digits.size() && digits[total] >= u'5') {
        Increment(kept);
        if (kept.size() > total) {
            kept.chop(1);
            ++firstPower;
        }
    }
    exponent = firstPower - (wholeCount - 1);
    whole = kept.left(wholeCount);
    fraction = kept.mid(wholeCount);
}

struct NumberToken {
    enum class Kind { Literal, Whole, Point, Fraction, Exponent };
    Kind kind;
    QString text;  // the literal, or "E"/"e" of an exponent
};

struct NumberSection {
    bool given = false;  // the picture has text for it
    QList<NumberToken> tokens;
    int wholeCount = 0;
    int fracCount = 0;
    int firstWholeZero = -1;  // index of the first '0' among the whole placeholders
    int lastFracZero = -1;    // index of the last '0' among the fraction placeholders
    bool grouping = false;
    int thousandsScale = 0;  // commas left of the point with no digit behind them
    int percents = 0;
    bool scientific = false;
    bool exponentPlus = false;
    int exponentZeros = 0;
};

NumberSection ParseNumberSection(QStringView picture) {
    NumberSection section;
    section.given = !picture.isEmpty();
    bool seenPoint = false;
    auto literal = [&](const QString& text) {
        section.tokens.append({NumberToken::Kind::Literal, text});
    };
    const qsizetype n = picture.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = picture[i];
        if (c == u'"') {
            qsizetype close = picture.indexOf(u'"', i + 1);
            if (close < 0) {
                close = n;
            }
            literal(picture.mid(i + 1, close - i - 1).toString());
            i = close;
        } else if (c == u'\\' && i + 1 < n) {
            literal(QString(picture[++i]));
        } else if (c == u'0' || c == u'#') {
            if (section.scientific) {
                section.exponentZeros += c == u'0' ? 1 : 0;
            } else if (seenPoint) {
                if (c == u'0') {
                    section.lastFracZero = section.fracCount;
                }
                ++section.fracCount;
                section.tokens.append({NumberToken::Kind::Fraction, QString()});
            } else {
                if (c == u'0' && section.firstWholeZero < 0) {
                    section.firstWholeZero = section.wholeCount;
                }
                ++section.wholeCount;
                section.tokens.append({NumberToken::Kind::Whole, QString()});
            }
        } else if (c == u'.' && !seenPoint && !section.scientific) {
            seenPoint = true;
            section.tokens.append({NumberToken::Kind::Point, QString()});
        } else if (c == u',' && !seenPoint && !section.scientific) {
            // A comma with a digit placeholder behind it groups thousands; one
            // standing just before the point (or the end) divides by 1000.
            qsizetype next = i + 1;
            while (next < n && picture[next] != u'0' && picture[next] != u'#' &&
                   picture[next] != u'.') {
                ++next;
            }
            if (next < n && picture[next] != u'.') {
                section.grouping = true;
            } else {
                ++section.thousandsScale;
            }
        } else if (c == u'%') {
            ++section.percents;
            literal(QStringLiteral("%"));
        } else if ((c == u'E' || c == u'e') && i + 2 < n &&
                   (picture[i + 1] == u'+' || picture[i + 1] == u'-') &&
                   (picture[i + 2] == u'0' || picture[i + 2] == u'#') && !section.scientific) {
            section.scientific = true;
            section.exponentPlus = picture[i + 1] == u'+';
            section.tokens.append({NumberToken::Kind::Exponent, QString(c)});
            ++i;
        } else {
            literal(QString(c));
        }
    }
    return section;
}

QString RenderNumber(const NumberSection& section, double magnitude, bool minus) {
    // Most pictures scale by neither, and pow is no cheap way to multiply by one.
    const double scaled = section.percents == 0 && section.thousandsScale == 0
                              ? magnitude
                              : magnitude * std::pow(100.0, section.percents) /
                                    std::pow(1000.0, section.thousandsScale);
    QString whole;
    QString fraction;
    int exponent = 0;
    if (section.scientific) {
        ScientificDigits(scaled, std::max(section.wholeCount, 1), section.fracCount, whole,
                         fraction, exponent);
    } else {
        FixedDigits(scaled, section.fracCount, whole, fraction);
    }
    // '#' places show no trailing zeros of the fraction; '0' places do.
    qsizetype shown = fraction.size();
    while (shown > section.lastFracZero + 1 && fraction[shown - 1] == u'0') {
        --shown;
    }
    auto allZero = [](const QString& digits) {
        return std::all_of(digits.cbegin(), digits.cend(), [](QChar d) { return d == u'0'; });
    };
    const bool zero = allZero(whole) && allZero(fraction);
    const int minWhole =
        section.firstWholeZero < 0 ? 0 : section.wholeCount - section.firstWholeZero;
    if (whole.size() < minWhole) {
        whole = QString(minWhole - whole.size(), u'0') + whole;
    }
    const qsizetype length = whole.size();
    auto emitWhole = [&](QString& out, qsizetype from, qsizetype to) {
        for (qsizetype j = std::max<qsizetype>(from, 0); j < std::min(to, length); ++j) {
            if (section.grouping && j > 0 && (length - j) % 3 == 0) {
                out += u',';
            }
            out += whole[j];
        }
    };

    QString out;
    // A value that rounds to nothing shows no minus sign.
    if (minus && !zero) {
        out += u'-';
    }
    int wholeIndex = 0;
    int fracIndex = 0;
    for (const NumberToken& token : section.tokens) {
        switch (token.kind) {
            case NumberToken::Kind::Literal:
                out += token.text;
                break;
            case NumberToken::Kind::Whole: {
                // The leftmost placeholder takes every digit beyond the others.
                const int k = wholeIndex++;
                const qsizetype to = length - (section.wholeCount - 1 - k);
                emitWhole(out, k == 0 ? 0 : to - 1, to);
                break;
            }
            case NumberToken::Kind::Point:
                if (section.wholeCount == 0) {
                    emitWhole(out, 0, length);
                }
                out += u'.';
                break;
            case NumberToken::Kind::Fraction:
                if (fracIndex < shown) {
                    out += fraction[fracIndex];
                }
                ++fracIndex;
                break;
            case NumberToken::Kind::Exponent: {
                out += token.text;
                if (exponent < 0) {
                    out += u'-';
                } else if (section.exponentPlus) {
                    out += u'+';
                }
                out += Padded(std::abs(exponent), std::max(section.exponentZeros, 1));
                break;
            }
        }
    }
    return out;
}

// Splits a picture at the ';' that stand outside quotes.
QList<QStringView> Sections(QStringView picture) {
    QList<QStringView> sections;
    qsizetype start = 0;
    bool quoted = false;
    for (qsizetype i = 0; i < picture.size(); ++i) {
        if (picture[i] == u'"') {
            quoted = !quoted;
        } else if (picture[i] == u'\\') {
            ++i;
        } else if (picture[i] == u';' && !quoted) {
            sections.append(picture.mid(start, i - start));
            start = i + 1;
        }
    }
    sections.append(picture.mid(start));
    return sections;
}

// A picture of up to four sections: positive; negative; zero; (Null, unused).
using NumberPicture = QList<NumberSection>;

NumberPicture ParseNumberPicture(QStringView picture) {
    NumberPicture parsed;
    for (const QStringView section : Sections(picture)) {
        parsed.append(ParseNumberSection(section));
    }
    return parsed;
}

// The negative section shows the value without its sign.
QString FormatNumberPicture(double number, const NumberPicture& sections) {
    if (number < 0 && sections.size() >= 2 && sections[1].given) {
        return RenderNumber(sections[1], -number, false);
    }
    if (number == 0 && sections.size() >= 3 && sections[2].given) {
        return RenderNumber(sections[2], 0, false);
    }
    return RenderNumber(sections[0], std::fabs(number), number < 0);
}

// ---------------------------------------------------------------- dates

enum class DatePart {
    Literal,
    Day,
    Day2,
    DayAbbreviated,
    DayName,
    ShortDate,
    LongDate,
    WeekDay,
    WeekOfYear,
    Month,
    Month2,
    MonthAbbreviated,
    MonthName,
    Quarter,
    DayOfYear,
    Year2,
    Year4,
    Hour,
    Hour2,
    Minute,
    Minute2,
    Second,
    Second2,
    AmPm,
    GeneralDate,
};

struct DateToken {
    DatePart part;
    QString text;  // the literal, or the AM/PM marker as written
};

bool IsTimePart(DatePart part, bool hour) {
    return hour ? (part == DatePart::Hour || part == DatePart::Hour2)
                : (part == DatePart::Second || part == DatePart::Second2);
}

QList<DateToken> ParseDatePicture(QStringView picture) {
    QList<DateToken> tokens;
    const qsizetype n = picture.size();
    qsizetype i = 0;
    auto add = [&](DatePart part, qsizetype length) {
        tokens.append({part, picture.mid(i, length).toString()});
        i += length;
    };
    while (i < n) {
        const QChar c = picture[i];
        const QChar lower = c.toLower();
        qsizetype run = 1;
        while (i + run < n && picture[i + run].toLower() == lower) {
            ++run;
        }
        if (c == u'"') {
            qsizetype close = picture.indexOf(u'"', i + 1);
            if (close < 0) {
                close = n;
            }
            tokens.append({DatePart::Literal, picture.mid(i + 1, close - i - 1).toString()});
            i = close + 1;
        } else if (c == u'\\' && i + 1 < n) {
            tokens.append({DatePart::Literal, QString(picture[i + 1])});
            i += 2;
        } else if (picture.mid(i, 5).compare(u"am/pm", Qt::CaseInsensitive) == 0) {
            add(DatePart::AmPm, 5);
        } else if (picture.mid(i, 4).compare(u"ampm", Qt::CaseInsensitive) == 0) {
            add(DatePart::AmPm, 4);
        } else if (picture.mid(i, 3).compare(u"a/p", Qt::CaseInsensitive) == 0) {
            add(DatePart::AmPm, 3);
        } else if (lower == u'd') {
            static const DatePart byRun[] = {
                DatePart::Day,     DatePart::Day2,      DatePart::DayAbbreviated,
                DatePart::DayName, DatePart::ShortDate, DatePart::LongDate};
            const qsizetype take = std::min<qsizetype>(run, 6);
            add(byRun[take - 1], take);
        } else if (lower == u'm') {
            static const DatePart byRun[] = {DatePart::Month, DatePart::Month2,
                                             DatePart::MonthAbbreviated, DatePart::MonthName};
            const qsizetype take = std::min<qsizetype>(run, 4);
            add(byRun[take - 1], take);
        } else if (lower == u'y') {
            if (run >= 4) {
                add(DatePart::Year4, 4);
            } else if (run >= 2) {
                add(DatePart::Year2, 2);
            } else {
                add(DatePart::DayOfYear, 1);
            }
        } else if (lower == u'h') {
            run >= 2 ? add(DatePart::Hour2, 2) : add(DatePart::Hour, 1);
        } else if (lower == u'n') {
            run >= 2 ? add(DatePart::Minute2, 2) : add(DatePart::Minute, 1);
        } else if (lower == u's') {
            run >= 2 ? add(DatePart::Second2, 2) : add(DatePart::Second, 1);
        } else if (lower == u'w') {
            run >= 2 ? add(DatePart::WeekOfYear, 2) : add(DatePart::WeekDay, 1);
        } else if (lower == u'q') {
            add(DatePart::Quarter, 1);
        } else if (lower == u'c') {
            add(DatePart::GeneralDate, 1);
        } else {
            tokens.append({DatePart::Literal, QString(c)});
            ++i;
        }
    }
    // "m" and "mm" count minutes right after an hour or right before seconds.
    for (qsizetype t = 0; t < tokens.size(); ++t) {
        DatePart& part = tokens[t].part;
        if (part != DatePart::Month && part != DatePart::Month2) {
            continue;
        }
        qsizetype before = t - 1;
        while (before >= 0 && tokens[before].part == DatePart::Literal) {
            --before;
        }
        qsizetype after = t + 1;
        while (after < tokens.size() && tokens[after].part == DatePart::Literal) {
            ++after;
        }
        if ((before >= 0 && IsTimePart(tokens[before].part, true)) ||
            (after < tokens.size() && IsTimePart(tokens[after].part, false))) {
            part = part == DatePart::Month ? DatePart::Minute : DatePart::Minute2;
        }
    }
    return tokens;
}

QString FormatDatePicture(const QDateTime& value, QStringView picture);

QString GeneralDate(const QDateTime& value) {
    const bool hasDate = value.date() != kSerialBase;
    const bool hasTime = value.time() != QTime(0, 0);
    if (hasDate && hasTime) {
        return FormatDatePicture(value, u"m/d/yyyy h:mm:ss AM/PM");
    }
    if (hasTime) {
        return FormatDatePicture(value, u"h:mm:ss AM/PM");
    }
    return FormatDatePicture(value, u"m/d/yyyy");
}

QString FormatDatePicture(const QDateTime& value, QStringView picture) {
    const QList<DateToken> tokens = ParseDatePicture(picture);
    bool twelveHour = false;
    for (const DateToken& token : tokens) {
        twelveHour = twelveHour || token.part == DatePart::AmPm;
    }
    const QDate date = value.date();
    const QTime time = value.time();
    const int hour = twelveHour ? (time.hour() % 12 == 0 ? 12 : time.hour() % 12) : time.hour();
    QString out;
    for (const DateToken& token : tokens) {
        switch (token.part) {
            case DatePart::Literal:
                out += token.text;
                break;
            case DatePart::Day:
                out += QString::number(date.day());
                break;
            case DatePart::Day2:
                out += Padded(date.day(), 2);
                break;
            case DatePart::DayAbbreviated:
                out += DayName(date, true);
                break;
            case DatePart::DayName:
                out += DayName(date, false);
                break;
            case DatePart::ShortDate:
                out += FormatDatePicture(value, u"m/d/yyyy");
                break;
            case DatePart::LongDate:
                out += FormatDatePicture(value, u"dddd, mmmm d, yyyy");
                break;
            case DatePart::WeekDay:
                out += QString::number(SundayBasedDay(date) + 1);
                break;
            case DatePart::WeekOfYear: {
                // Week 1 holds 1 January; weeks start on Sunday.
                const int offset = SundayBasedDay(QDate(date.year(), 1, 1));
                out += QString::number((date.dayOfYear() - 1 + offset) / 7 + 1);
                break;
            }
            case DatePart::Month:
                out += QString::number(date.month());
                break;
            case DatePart::Month2:
                out += Padded(date.month(), 2);
                break;
            case DatePart::MonthAbbreviated:
                out += MonthName(date.month(), true);
                break;
            case DatePart::MonthName:
                out += MonthName(date.month(), false);
                break;
            case DatePart::Quarter:
                out += QString::number((date.month() - 1) / 3 + 1);
                break;
            case DatePart::DayOfYear:
                out += QString::number(date.dayOfYear());
                break;
            case DatePart::Year2:
                out += Padded(date.year() % 100, 2);
                break;
            case DatePart::Year4:
                out += Padded(date.year(), 4);
                break;
            case DatePart::Hour:
                out += QString::number(hour);
                break;
            case DatePart::Hour2:
                out += Padded(hour, 2);
                break;
            case DatePart::Minute:
                out += QString::number(time.minute());
                break;
            case DatePart::Minute2:
                out += Padded(time.minute(), 2);
                break;
            case DatePart::Second:
                out += QString::number(time.second());
                break;
            case DatePart::Second2:
                out += Padded(time.second(), 2);
                break;
            case DatePart::AmPm: {
                // The marker is written in the case of the pattern: AM/PM, am/pm, A/P, a/p.
                const bool pm = time.hour() >= 12;
                const QString& form = token.text;
                const bool shortForm = form.size() == 3;
                const QChar letter = shortForm ? form[pm ? 2 : 0] : form[pm ? 3 : 0];
                if (form.size() == 4) {  // AMPM
                    out += pm ? QStringLiteral("PM") : QStringLiteral("AM");
                } else if (shortForm) {
                    out += letter;
                } else {
                    const bool upper = letter.isUpper();
                    out += pm ? (upper ? QStringLiteral("PM") : QStringLiteral("pm"))
                              : (upper ? QStringLiteral("AM") : QStringLiteral("am"));
                }
                break;
            }
            case DatePart::GeneralDate:
                out += GeneralDate(value);
                break;
        }
    }
    return out;
}

bool IsDatePicture(QStringView picture) {
    for (qsizetype i = 0; i < picture.size(); ++i) {
        const QChar c = picture[i];
        if (c == u'"') {
            const qsizetype close = picture.indexOf(u'"', i + 1);
            if (close < 0) {
                return false;
            }
            i = close;
        } else if (c == u'\\') {
            ++i;
        } else if (QStringView(u"dmyhnswqcDMYHNSWQC").contains(c) ||
                   picture.mid(i, 3).compare(u"a/p", Qt::CaseInsensitive) == 0 ||
                   picture.mid(i, 4).compare(u"ampm", Qt::CaseInsensitive) == 0) {
            return true;
        }
    }
    return false;
}

QString PlainText(const Value& value) {
    switch (value.kind) {
        case Value::Kind::Number:
            return GeneralNumber(value.number);
        case Value::Kind::Date:
            return GeneralDate(value.date);
        case Value::Kind::Text:
            return value.text;
        case Value::Kind::Empty:
            break;
    }
    return QString();
}

struct NamedPattern {
    const char16_t* name;
    bool date;
    const char16_t* picture;
};

constexpr NamedPattern kNamedPatterns[] = {
    {u"currency", false, u"$#,##0.00;($#,##0.00)"},
    {u"fixed", false, u"0.00"},
    {u"standard", false, u"#,##0.00"},
    {u"percent", false, u"0.00%"},
    {u"scientific", false, u"0.00E+00"},
    {u"long date", true, u"dddd, mmmm d, yyyy"},
    {u"medium date", true, u"dd-mmm-yy"},
    {u"short date", true, u"m/d/yyyy"},
    {u"long time", true, u"h:mm:ss AM/PM"},
    {u"medium time", true, u"hh:mm AM/PM"},
    {u"short time", true, u"hh:mm"},
};

// The picture of the named pattern at index i, parsed once; none for a date.
const NumberPicture& NamedNumberPicture(qsizetype i) {
    static const std::vector<NumberPicture> parsed = [] {
        std::vector<NumberPicture> pictures;
        for (const NamedPattern& named : kNamedPatterns) {
            pictures.push_back(named.date ? NumberPicture()
                                          : ParseNumberPicture(QStringView(named.picture)));
        }
        return pictures;
    }();
    return parsed[static_cast<size_t>(i)];
}

}  // namespace

QString NumberText(double number) {
    if (Shortest(number)) {
        // Rounding to 15 digits keeps them as they are, and printf's "%.15g"
        // lays them out as Qt's 'g' does.
        char text[32];
        const std::to_chars_result written =
            std::to_chars(text, text + sizeof text, number, std::chars_format::general, 15);
        if (written.ec == std::errc()) {
            return QString::fromLatin1(text, written.ptr - text);
        }
    }
    return QString::number(number, 'g', 15);
}

QString Format(const QVariant& variant, const QString& pattern) {
    const Value value = Classify(variant);
    if (value.kind == Value::Kind::Empty) {
        return QString();
    }
    const QString name = pattern.trimmed().toLower();
    if (name.isEmpty()) {
        return PlainText(value);
    }
    if (name == u"general number") {
        const auto number = AsNumber(value);
        return number ? GeneralNumber(*number) : PlainText(value);
    }
    if (name == u"general date") {
        const auto date = AsDate(value);
        return date ? GeneralDate(*date) : PlainText(value);
    }
    if (name == u"yes/no" || name == u"true/false" || name == u"on/off") {
        const auto number = AsNumber(value);
        if (!number) {
            return PlainText(value);
        }
        const QStringList words = name.split(u'/');
        const QString word = words[*number != 0 ? 0 : 1];
        return word.left(1).toUpper() + word.mid(1);
    }
    QStringView picture = pattern;
    bool datePicture = IsDatePicture(picture);
    qsizetype named = -1;
    for (qsizetype i = 0; i < static_cast<qsizetype>(std::size(kNamedPatterns)); ++i) {
        if (name == QStringView(kNamedPatterns[i].name)) {
            picture = QStringView(kNamedPatterns[i].picture);
            datePicture = kNamedPatterns[i].date;
            named = i;
            break;
        }
    }
    if (datePicture) {
        const auto date = AsDate(value);
        return date ? FormatDatePicture(*date, picture) : PlainText(value);
    }
    const auto number = AsNumber(value);
    if (!number) {
        return PlainText(value);
    }
    return named >= 0 ? FormatNumberPicture(*number, NamedNumberPicture(named))
                      : FormatNumberPicture(*number, ParseNumberPicture(picture));
}

}  // namespace lw::core
