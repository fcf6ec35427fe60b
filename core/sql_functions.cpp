// SPDX-License-Identifier: GPL-3.0-or-later
// The expression functions that SQL of rule files and reports calls, bound to
// a connection: Val, Format (and Format$), Left (and Left$), Right$, Mid,
// UCase, LCase, Trim$ and their "$" kin, InStr, DateDiff, CDate, Now, Year,
// IsNull. Each is a thin adapter over text.h, so a number or
// a date reads the same in SQL as in C++. A NULL argument gives NULL (Val
// gives 0, as the number rule reads Null as 0); a text that holds no date
// gives NULL rather than failing the whole statement; a call that can never
// make sense (unknown interval, a length that is no number) is an SQL error.
#include "core/sql_functions.h"

#include <sqlite3.h>

#include <QDateTime>
#include <QList>
#include <QVariant>
#include <algorithm>
#include <cmath>

#include "core/text.h"

namespace lw::core {

namespace {

QString TextOf(sqlite3_value* value) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
    const int size = sqlite3_value_bytes(value);
    return bytes ? QString::fromUtf8(bytes, size) : QString();
}

bool IsNull(sqlite3_value* value) {
    return sqlite3_value_type(value) == SQLITE_NULL;
}

void ResultText(sqlite3_context* context, const QString& text) {
    const QByteArray utf8 = text.toUtf8();
    sqlite3_result_text64(context, utf8.constData(), static_cast<sqlite3_uint64>(utf8.size()),
                          SQLITE_TRANSIENT, SQLITE_UTF8);
}

void ResultError(sqlite3_context* context, const char* message) {
    sqlite3_result_error(context, message, -1);
}

// A whole number from an argument that must be one ("3", 3, 3.0); nullopt for
// text that is no number.
std::optional<qint64> WholeNumber(sqlite3_value* value) {
    switch (sqlite3_value_numeric_type(value)) {
        case SQLITE_INTEGER:
            return sqlite3_value_int64(value);
        case SQLITE_FLOAT:
            return static_cast<qint64>(std::floor(sqlite3_value_double(value)));
        default:
            return std::nullopt;
    }
}

// Numbers are date serials, texts are read by the site's date parser.
std::optional<QDateTime> DateOf(sqlite3_value* value) {
    switch (sqlite3_value_type(value)) {
        case SQLITE_INTEGER:
        case SQLITE_FLOAT: {
            const QDateTime date = SerialToDate(sqlite3_value_double(value));
            return date.isValid() ? std::optional<QDateTime>(date) : std::nullopt;
        }
        case SQLITE_TEXT:
        case SQLITE_BLOB:
            return ParseDateTime(TextOf(value));
        default:
            return std::nullopt;
    }
}

// The first count characters (code points, as SQLite's substr counts them).
QString LeftChars(const QString& text, qint64 count) {
    qsizetype i = 0;
    for (qint64 taken = 0; taken < count && i < text.size(); ++taken) {
        i +=
            (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
                ? 2
                : 1;
    }
    return text.left(i);
}

// Code points with ASCII letters folded, which is how the store's NOCASE
// columns compare text.
QList<uint> Folded(const QString& text) {
    QList<uint> points = text.toUcs4();
    for (uint& c : points) {
        if (c >= 'A' && c <= 'Z') {
            c += 'a' - 'A';
        }
    }
    return points;
}

void SqlVal(sqlite3_context* context, int, sqlite3_value** argv) {
    switch (sqlite3_value_type(argv[0])) {
        case SQLITE_NULL:
            sqlite3_result_int(context, 0);
            break;
        case SQLITE_INTEGER:
            sqlite3_result_int64(context, sqlite3_value_int64(argv[0]));
            break;
        case SQLITE_FLOAT:
            sqlite3_result_double(context, sqlite3_value_double(argv[0]));
            break;
        default:
            sqlite3_result_double(context, Val(TextOf(argv[0])));
            break;
    }
}

void SqlFormat(sqlite3_context* context, int, sqlite3_value** argv) {
    QVariant value;
    switch (sqlite3_value_type(argv[0])) {
        case SQLITE_NULL:
            sqlite3_result_null(context);
            return;
        case SQLITE_INTEGER:
            value = QVariant::fromValue(sqlite3_value_int64(argv[0]));
            break;
        case SQLITE_FLOAT:
            value = sqlite3_value_double(argv[0]);
            break;
        default:
            value = TextOf(argv[0]);
            break;
    }
    const QString pattern = IsNull(argv[1]) ? QString() : TextOf(argv[1]);
    ResultText(context, Format(value, pattern));
}

void SqlLeft(sqlite3_context* context, int, sqlite3_value** argv) {
    if (IsNull(argv[0]) || IsNull(argv[1])) {
        sqlite3_result_null(context);
        return;
    }
    const std::optional<qint64> count = WholeNumber(argv[1]);
    if (!count) {
        ResultError(context, "Left: the length is not a number");
        return;
    }
    // Left(x, InStr(x, ",") - 1) of a text without a comma asks for -1
    // characters: no value for that row, not a failed statement.
    if (*count < 0) {
        sqlite3_result_null(context);
        return;
    }
    ResultText(context, LeftChars(TextOf(argv[0]), *count));
}

// `take` code points from the zero-based position `from`.
QString CodePoints(const QList<uint>& points, qsizetype from, qsizetype take) {
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(points.constData()) + from, take);
}

// The last count characters.
void SqlRight(sqlite3_context* context, int, sqlite3_value** argv) {
    if (IsNull(argv[0]) || IsNull(argv[1])) {
        sqlite3_result_null(context);
        return;
    }
    const std::optional<qint64> count = WholeNumber(argv[1]);
    if (!count || *count < 0) {
        ResultError(context, "Right: the length is not a number of 0 or more");
        return;
    }
    const QList<uint> points = TextOf(argv[0]).toUcs4();
    const qsizetype keep = std::min<qsizetype>(points.size(), *count);
    ResultText(context, CodePoints(points, points.size() - keep, keep));
}

// Mid(text, start[, length]): from the one-based start, to the end or for length.
void SqlMid(sqlite3_context* context, int argc, sqlite3_value** argv) {
    for (int i = 0; i < argc; ++i) {
        if (IsNull(argv[i])) {
            sqlite3_result_null(context);
            return;
        }
    }
    const std::optional<qint64> start = WholeNumber(argv[1]);
    const std::optional<qint64> length = argc == 3 ? WholeNumber(argv[2]) : qint64{-1};
    if (!start || *start < 1 || !length || (argc == 3 && *length < 0)) {
        ResultError(context, "Mid: the start or the length is not a number");
        return;
    }
    const QList<uint> points = TextOf(argv[0]).toUcs4();
    const qsizetype from = std::min<qsizetype>(points.size(), *start - 1);
    const qsizetype rest = points.size() - from;
    const qsizetype take = *length < 0 ? rest : std::min<qsizetype>(rest, *length);
    ResultText(context, CodePoints(points, from, take));
}

template <bool Upper>
void SqlCase(sqlite3_context* context, int, sqlite3_value** argv) {
    if (IsNull(argv[0])) {
        sqlite3_result_null(context);
        return;
    }
    const QString text = TextOf(argv[0]);
    ResultText(context, Upper ? text.toUpper() : text.toLower());
}

// Trim, LTrim, RTrim: blanks only, as the rule files' language trims.
template <bool Front, bool Back>
void SqlTrim(sqlite3_context* context, int, sqlite3_value** argv) {
    if (IsNull(argv[0])) {
        sqlite3_result_null(context);
        return;
    }
    const QString text = TextOf(argv[0]);
    qsizetype first = 0;
    qsizetype last = text.size();
    while (Front && first < last && text.at(first) == u' ') {
        ++first;
    }
    while (Back && last > first && text.at(last - 1) == u' ') {
        --last;
    }
    ResultText(context, text.mid(first, last - first));
}

void SqlInStr(sqlite3_context* context, int argc, sqlite3_value** argv) {
    for (int i = 0; i < argc; ++i) {
        if (IsNull(argv[i])) {
            sqlite3_result_null(context);
            return;
        }
    }
    qint64 start = 1;
    if (argc == 3) {
        const std::optional<qint64> given = WholeNumber(argv[0]);
        if (!given || *given < 1) {
            ResultError(context, "InStr: the start is not a position (1 or more)");
            return;
        }
        start = *given;
    }
    const QList<uint> haystack = Folded(TextOf(argv[argc - 2]));
    const QList<uint> needle = Folded(TextOf(argv[argc - 1]));
    if (start > haystack.size() || haystack.isEmpty()) {
        sqlite3_result_int(context, 0);
        return;
    }
    if (needle.isEmpty()) {
        sqlite3_result_int64(context, start);
        return;
    }
    const auto found = std::search(haystack.cbegin() + (start - 1), haystack.cend(),
                                   needle.cbegin(), needle.cend());
    sqlite3_result_int64(context, found == haystack.cend() ? 0 : (found - haystack.cbegin()) + 1);
}

void SqlDateDiff(sqlite3_context* context, int, sqlite3_value** argv) {
    if (IsNull(argv[0]) || IsNull(argv[1]) || IsNull(argv[2])) {
        sqlite3_result_null(context);
        return;
    }
    const QString interval = TextOf(argv[0]);
    const std::optional<QDateTime> from = DateOf(argv[1]);
    const std::optional<QDateTime> to = DateOf(argv[2]);
    // The interval is checked first: a wrong one is wrong for every row.
    const std::optional<qint64> probe = DateDiff(interval, QDateTime(), QDateTime());
    if (!probe) {
        ResultError(context, "DateDiff: unknown interval");
        return;
    }
    if (!from || !to) {
        sqlite3_result_null(context);
        return;
    }
    sqlite3_result_int64(context, *DateDiff(interval, *from, *to));
}

QString IsoText(const QDateTime& value) {
    if (value.time() == QTime(0, 0)) {
        return value.date().toString(Qt::ISODate);
    }
    return value.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
}

void SqlCDate(sqlite3_context* context, int, sqlite3_value** argv) {
    const std::optional<QDateTime> date = DateOf(argv[0]);
    if (!date) {
        sqlite3_result_null(context);
        return;
    }
    ResultText(context, IsoText(*date));
}

void SqlNow(sqlite3_context* context, int, sqlite3_value**) {
    ResultText(context,
               QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
}

void SqlYear(sqlite3_context* context, int, sqlite3_value** argv) {
    const std::optional<QDateTime> date = DateOf(argv[0]);
    if (!date) {
        sqlite3_result_null(context);
        return;
    }
    sqlite3_result_int(context, date->date().year());
}

void SqlIsNull(sqlite3_context* context, int, sqlite3_value** argv) {
    sqlite3_result_int(context, IsNull(argv[0]) ? 1 : 0);
}

using SqlFunction = void (*)(sqlite3_context*, int, sqlite3_value**);

struct Registration {
    const char* name;
    int argc;
    bool pure;
    SqlFunction function;
};

constexpr Registration kFunctions[] = {
    {"Val", 1, true, SqlVal},
    {"Format", 2, true, SqlFormat},
    {"Format$", 2, true, SqlFormat},
    {"Left", 2, true, SqlLeft},
    {"Left$", 2, true, SqlLeft},
    {"InStr", 2, true, SqlInStr},
    {"InStr", 3, true, SqlInStr},
    {"DateDiff", 3, true, SqlDateDiff},
    {"CDate", 1, true, SqlCDate},
    {"Now", 0, false, SqlNow},
    {"Year", 1, true, SqlYear},
    {"IsNull", 1, true, SqlIsNull},
    // The "$" spellings return text; Left and Right are join words to SQLite
    // and are called by these names only.
    {"Right$", 2, true, SqlRight},
    {"Mid", 2, true, SqlMid},
    {"Mid", 3, true, SqlMid},
    {"Mid$", 2, true, SqlMid},
    {"Mid$", 3, true, SqlMid},
    {"UCase", 1, true, SqlCase<true>},
    {"UCase$", 1, true, SqlCase<true>},
    {"LCase", 1, true, SqlCase<false>},
    {"LCase$", 1, true, SqlCase<false>},
    {"Trim$", 1, true, SqlTrim<true, true>},
    {"LTrim$", 1, true, SqlTrim<true, false>},
    {"RTrim$", 1, true, SqlTrim<false, true>},
};

}  // namespace

void RegisterSqlFunctions(sqlite3* db) {
    for (const Registration& f : kFunctions) {
        // Pure functions may serve in indexes, generated columns and views.
        const int flags = SQLITE_UTF8 | (f.pure ? SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS : 0);
        sqlite3_create_function_v2(db, f.name, f.argc, flags, nullptr, f.function, nullptr, nullptr,
                                   nullptr);
    }
}

}  // namespace lw::core
