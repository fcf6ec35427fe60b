// SPDX-License-Identifier: GPL-3.0-or-later
// Small pure helpers over text shared by the whole program: replacing,
// entity decoding, site time, time left, the number rule and the date rules.
// None keeps state; failures are the plain text marks ("ERROR", "FALSE", "0")
// that callers compare against.
#pragma once

#include <QDate>
#include <QDateTime>
#include <QFileDevice>
#include <QString>
#include <QStringView>
#include <QVariant>
#include <optional>

namespace lw::core {

// The first occurrence replaced; "ERROR" when find is absent.
QString ReplaceFirst(const QString& text, const QString& find, const QString& replacement);
// One pass left to right; replaced text is not looked at again.
QString ReplaceEvery(const QString& text, const QString& find, const QString& replacement);
// Repeats from the start until find is gone. A replacement that itself holds
// find would never end: such a call makes one pass and stops.
QString ReplaceRescan(const QString& text, const QString& find, const QString& replacement);
// "&nbsp;", "&amp;", "&#38;", "&#39;", "&#34;" in that order, nothing else.
QString DecodeEntities(const QString& text);

// Local time minus site time in seconds, as text; "0" on any failure.
QString SiteTimeDifference(const QString& siteTime,
                           const QDateTime& now = QDateTime::currentDateTime());
// "3d 04h 05m" or "Ended" for an end date "mm/dd/yy, hh:mm:ss PST".
// A text that is no such end date gives an empty text.
QString TimeLeftText(const QString& endDate, const QString& siteCorrection,
                     const QDateTime& now = QDateTime::currentDateTime());

// Creates the directory (and parents) when missing; false when it cannot.
bool EnsureDirectory(const QString& path);
// True when the file exists; otherwise creates it empty when create is set.
bool EnsureFile(const QString& path, bool create);
// Copies a shipped file to the user's folder when the user has none there yet,
// and gives the copy the permissions (a shipped file may be read-only; the
// user's copy is there to edit). A file already at target is the user's and is
// never touched. False when the copy cannot be made.
bool CopyIfMissing(const QString& source, const QString& target,
                   QFileDevice::Permissions permissions);
// The part of text around the first delimiter; "FALSE" when it is absent.
// keepRight keeps what follows the cut, else what precedes it; after puts the
// cut behind the delimiter instead of before it. "ERROR" for an empty delimiter.
QString CutAt(const QString& text, const QString& delimiter, bool keepRight, bool after);

// Val(x): the number at the left of the text, blanks ignored; 0 when none.
double Val(QStringView text);
// The number rule, Val(Format(x,'General Number')): currency signs, blanks and
// thousands separators go, "(5.00)" is -5; "-", "n/a", "" and Null give 0.
// The generated number columns of the schema compute exactly this in SQL.
double NumberRule(QStringView text);
// A QString or a u"" literal would be ambiguous between the two above.
double NumberRule(const QString& text);
inline double NumberRule(const char16_t* text) {
    return NumberRule(QStringView(text));
}
double NumberRule(const QVariant& value);

// Two-digit years pivot at 97: 97..99 are 19xx, 00..96 are 20xx.
int ExpandYear(int twoDigitYear);
// The date rule Left$(x,8): the day of "mm/dd/yy..." as a date; nullopt when
// the first eight characters are no such date. Mirrored by the EndDay columns.
std::optional<QDate> LeftDate(QStringView text);
// The date rule CDate(text before the first comma), and the parser for the
// site's date forms: "06/07/00", "6/7/2000", "Jun-07-00", "June 7, 2000",
// "Jun 07, 2000 12:04:00 PST", ISO "2000-06-07". nullopt when no date.
std::optional<QDateTime> ParseDateTime(QStringView text);
std::optional<QDate> CDate(QStringView text);

// The number rule in plain SQL over a column expression, for generated columns
// and views: NumberRule is its C++ twin and the two must agree.
QString NumberRuleSql(const QString& columnSql);
// The number rule as the generated columns of databases before schema 6 spell
// it: the same values, at about three times the cost for a "$" amount.
QString EarlierNumberRuleSql(const QString& columnSql);
// The date rule Left$(x,8) in plain SQL: the ISO day text ("2000-06-07") of a
// text that starts "mm/dd/yy", else NULL. LeftDate is its C++ twin.
QString EndDaySql(const QString& columnSql);

// The conversion of a text to a number that Format applies before a numeric
// pattern (US conventions): "$1,234.50", "(5.00)", "-3", "1E3", "&H1F". The
// whole text must be such a number; nullopt otherwise.
std::optional<double> TextToNumber(QStringView text);

// A date and time as the program keeps them: wall-clock values of no zone
// (held as UTC, so no local summer-time gap can move them and no local zone
// look-up is paid). Only their date() and time() are read.
QDateTime WallClock(const QDate& date, const QTime& time);

// Date serials: days since 30 December 1899, the time of day as the fraction.
double DateToSerial(const QDateTime& value);
QDateTime SerialToDate(double serial);
// DateDiff(interval, from, to) on wall-clock values: "yyyy", "q", "m", "y",
// "d", "w", "ww", "h", "n", "s" count the boundaries crossed from from to to;
// nullopt for any other interval.
std::optional<qint64> DateDiff(QStringView interval, const QDateTime& from, const QDateTime& to);

// A number as QString::number(number, 'g', 15) writes it: "7.25", "10",
// "1e+20". Quicker where it has no more than 15 significant digits.
QString NumberText(double number);

// VB-style Format of a value by the named or picture patterns the program
// uses: "General Number", "Currency", "mm/dd/yy", "mm/dd/yyyy", "hh:mm:ss",
// "Long Time", "dddd, mm dd, yyyy hh:mm:ss", "MMMM d, yyyy", "m/d/yyyy",
// "#.##", "#.00", "0.00", "0.0%", "###0", "#,###.##", "00". A value that the
// pattern cannot take is returned as its text, as Format does.
QString Format(const QVariant& value, const QString& pattern);

}  // namespace lw::core
