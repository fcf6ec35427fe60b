// SPDX-License-Identifier: GPL-3.0-or-later
// Format: every pattern the program shows values with, for positive,
// negative and zero numbers, money texts, dates and texts no pattern takes.
#include <gtest/gtest.h>

#include <QDateTime>

#include <limits>
#include <ostream>

#include "core/text.h"

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace lw::core {
namespace {

QString F(const QVariant& value, const char* pattern) {
    return Format(value, QString::fromLatin1(pattern));
}

QVariant T(const char* text) {
    return QVariant(QString::fromUtf8(text));
}

const QDateTime kAfternoon(QDate(2000, 6, 7), QTime(13, 4, 5));  // a Wednesday
const QDateTime kMorning(QDate(2000, 6, 7), QTime(9, 4, 5));

TEST(FormatGeneralNumber, PlainNumberWithoutSeparators) {
    EXPECT_EQ(F(1234.5, "General Number"), QStringLiteral("1234.5"));
    EXPECT_EQ(F(-3, "General Number"), QStringLiteral("-3"));
    EXPECT_EQ(F(0, "General Number"), QStringLiteral("0"));
    EXPECT_EQ(F(0.1 + 0.2, "General Number"), QStringLiteral("0.3"));
    EXPECT_EQ(F(1234567.0, "general number"), QStringLiteral("1234567"));
    EXPECT_EQ(F(1e20, "General Number"), QStringLiteral("1E+20"));
    EXPECT_EQ(F(0.00001, "General Number"), QStringLiteral("1E-05"));
}

TEST(FormatGeneralNumber, MoneyTextLosesItsSignsAndOtherTextStays) {
    EXPECT_EQ(F(T("$1,234.50"), "General Number"), QStringLiteral("1234.5"));
    EXPECT_EQ(F(T("(5.00)"), "General Number"), QStringLiteral("-5"));
    EXPECT_EQ(F(T(" 12 "), "General Number"), QStringLiteral("12"));
    EXPECT_EQ(F(T("n/a"), "General Number"), QStringLiteral("n/a"));
    EXPECT_EQ(F(T("-"), "General Number"), QStringLiteral("-"));
    EXPECT_EQ(F(T(""), "General Number"), QString());
    EXPECT_EQ(F(QVariant(), "General Number"), QString());
    // Val of the result is the number rule for such texts.
    for (const char* money : {"$1,234.50", "(5.00)", "n/a", "-", "", "$0.99", "($12,000)"}) {
        EXPECT_EQ(Val(F(T(money), "General Number")), NumberRule(QString::fromUtf8(money)))
            << money;
    }
}

TEST(FormatCurrency, DollarsWithSeparatorsAndBracketsForNegatives) {
    EXPECT_EQ(F(1234.5, "Currency"), QStringLiteral("$1,234.50"));
    EXPECT_EQ(F(-5, "Currency"), QStringLiteral("($5.00)"));
    EXPECT_EQ(F(0, "Currency"), QStringLiteral("$0.00"));
    EXPECT_EQ(F(1234567.891, "Currency"), QStringLiteral("$1,234,567.89"));
    EXPECT_EQ(F(999.995, "Currency"), QStringLiteral("$1,000.00"));
    EXPECT_EQ(F(0.005, "Currency"), QStringLiteral("$0.01"));
    EXPECT_EQ(F(2.675, "Currency"), QStringLiteral("$2.68"));  // rounds as written
    EXPECT_EQ(F(T("$1,234.5"), "Currency"), QStringLiteral("$1,234.50"));
    EXPECT_EQ(F(T("7"), "Currency"), QStringLiteral("$7.00"));
    EXPECT_EQ(F(T("(3)"), "Currency"), QStringLiteral("($3.00)"));
    EXPECT_EQ(F(T("n/a"), "Currency"), QStringLiteral("n/a"));
    EXPECT_EQ(F(QVariant(qint64(12)), "Currency"), QStringLiteral("$12.00"));
}

TEST(FormatPicture, OptionalDigits) {
    EXPECT_EQ(F(0.5, "#.##"), QStringLiteral(".5"));
    EXPECT_EQ(F(3, "#.##"), QStringLiteral("3."));
    EXPECT_EQ(F(0, "#.##"), QStringLiteral("."));
    EXPECT_EQ(F(3.14159, "#.##"), QStringLiteral("3.14"));
    EXPECT_EQ(F(-0.5, "#.##"), QStringLiteral("-.5"));
    EXPECT_EQ(F(1234.5, "#.##"), QStringLiteral("1234.5"));
    EXPECT_EQ(F(8.25, "###.##"), QStringLiteral("8.25"));
    EXPECT_EQ(F(T("$12.10"), "#.##"), QStringLiteral("12.1"));
}

TEST(FormatPicture, FixedDecimals) {
    EXPECT_EQ(F(5, "#.00"), QStringLiteral("5.00"));
    EXPECT_EQ(F(0.5, "#.00"), QStringLiteral(".50"));
    EXPECT_EQ(F(-12.345, "#.00"), QStringLiteral("-12.35"));
    EXPECT_EQ(F(0, "0.00"), QStringLiteral("0.00"));
    EXPECT_EQ(F(-1.5, "0.00"), QStringLiteral("-1.50"));
    EXPECT_EQ(F(7.125, "0.00"), QStringLiteral("7.13"));
    // A value that rounds to nothing shows no minus sign.
    EXPECT_EQ(F(-0.001, "0.00"), QStringLiteral("0.00"));
    EXPECT_EQ(F(1.5, "0.0#"), QStringLiteral("1.5"));
    EXPECT_EQ(F(1.257, "0.0#"), QStringLiteral("1.26"));
}

TEST(FormatPicture, Percent) {
    EXPECT_EQ(F(0.1234, "0.0%"), QStringLiteral("12.3%"));
    EXPECT_EQ(F(1, "0.0%"), QStringLiteral("100.0%"));
    EXPECT_EQ(F(0, "0.0%"), QStringLiteral("0.0%"));
    EXPECT_EQ(F(-0.05, "0.0%"), QStringLiteral("-5.0%"));
    EXPECT_EQ(F(0.00049, "0.0%"), QStringLiteral("0.0%"));
    EXPECT_EQ(F(0.5, "Percent"), QStringLiteral("50.00%"));
}

TEST(FormatPicture, WholeNumbersAndPadding) {
    EXPECT_EQ(F(0, "###0"), QStringLiteral("0"));
    EXPECT_EQ(F(12345, "###0"), QStringLiteral("12345"));
    EXPECT_EQ(F(3.6, "###0"), QStringLiteral("4"));
    EXPECT_EQ(F(-2.5, "###0"), QStringLiteral("-3"));
    EXPECT_EQ(F(4, "00"), QStringLiteral("04"));
    EXPECT_EQ(F(0, "00"), QStringLiteral("00"));
    EXPECT_EQ(F(123, "00"), QStringLiteral("123"));
    EXPECT_EQ(F(7, "000"), QStringLiteral("007"));
}

TEST(FormatPicture, ThousandsSeparators) {
    EXPECT_EQ(F(1234.5, "#,###.##"), QStringLiteral("1,234.5"));
    EXPECT_EQ(F(1234567.891, "#,###.##"), QStringLiteral("1,234,567.89"));
    EXPECT_EQ(F(123, "#,###.##"), QStringLiteral("123."));
    EXPECT_EQ(F(0.25, "#,###.##"), QStringLiteral(".25"));
    EXPECT_EQ(F(999.999, "#,###.##"), QStringLiteral("1,000."));
    EXPECT_EQ(F(-1234, "#,##0.00"), QStringLiteral("-1,234.00"));
    EXPECT_EQ(F(1234, "Standard"), QStringLiteral("1,234.00"));
    // A comma just before the point divides by a thousand.
    EXPECT_EQ(F(1234567, "#,##0,"), QStringLiteral("1,235"));
}

TEST(FormatPicture, SectionsLiteralsAndScientific) {
    EXPECT_EQ(F(-2, "0.00;(0.00);\"nil\""), QStringLiteral("(2.00)"));
    EXPECT_EQ(F(0, "0.00;(0.00);\"nil\""), QStringLiteral("nil"));
    EXPECT_EQ(F(2, "0.00;(0.00);\"nil\""), QStringLiteral("2.00"));
    EXPECT_EQ(F(5, "\"Qty: \"0"), QStringLiteral("Qty: 5"));
    EXPECT_EQ(F(5, "0\\%"), QStringLiteral("5%"));
    EXPECT_EQ(F(1234.5, "0.00E+00"), QStringLiteral("1.23E+03"));
    EXPECT_EQ(F(0.00012, "Scientific"), QStringLiteral("1.20E-04"));
    EXPECT_EQ(F(9.999, "0.00E+00"), QStringLiteral("1.00E+01"));
    EXPECT_EQ(F(0, "Yes/No"), QStringLiteral("No"));
    EXPECT_EQ(F(-1, "Yes/No"), QStringLiteral("Yes"));
    EXPECT_EQ(F(true, "True/False"), QStringLiteral("True"));
    EXPECT_EQ(F(12.5, "Fixed"), QStringLiteral("12.50"));
}

TEST(FormatPicture, FifteenSignificantDigitsWhateverTheShortestForm) {
    // The digits past the fifteenth are rounded away and zeros shown in
    // their places, whether the shortest text that reads back as the number
    // is longer (a sum that reads 0.30000000000000004, a third) or the
    // number lies below the normal range, where that text is too short.
    const struct {
        double value;
        const char* pattern;
        const char* shown;
    } cases[] = {
        {0.1 + 0.2, "0.00000000000000000", "0.30000000000000000"},
        {1.0 / 3, "0.000000000000000000", "0.333333333333333000"},
        {123456789012.345678, "#,##0.0000", "123,456,789,012.3460"},
        {5e-324, "Scientific", "4.94E-324"},
        {2.2250738585072014e-308, "0.0000E+00", "2.2251E-308"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(F(c.value, c.pattern), QLatin1String(c.shown)) << c.pattern;
    }
}

TEST(NumberText, WritesWhatQtsFifteenDigitFormWrites) {
    // Where the shortest form ends and the long rounding takes over (17
    // digits, below the normal range, an exact tie at the 15th digit), at
    // the edges of the exponent form, with signs, zeros and no number.
    for (const double value :
         {7.25, -3.5, 10.0, 1.0 / 3, 0.1 + 0.2, 1e-4, 1.5e-5, 1e14, 1e15, 123456789012345.0,
          1000000000000005.0, -1e300, 5e-324, 2.2250738585072014e-308, 0.0, -0.0,
          std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(NumberText(value), QString::number(value, 'g', 15)) << value;
    }
}

TEST(FormatPicture, TextThatIsNoNumberStays) {
    EXPECT_EQ(F(T("abc"), "0.00"), QStringLiteral("abc"));
    EXPECT_EQ(F(T("n/a"), "#,###.##"), QStringLiteral("n/a"));
    EXPECT_EQ(F(T("06/07/00"), "0.00"), QStringLiteral("06/07/00"));
}

TEST(FormatDate, NumericDatePatterns) {
    EXPECT_EQ(F(kAfternoon, "mm/dd/yy"), QStringLiteral("06/07/00"));
    EXPECT_EQ(F(kAfternoon, "MM/DD/YY"), QStringLiteral("06/07/00"));
    EXPECT_EQ(F(kAfternoon, "mm/dd/yyyy"), QStringLiteral("06/07/2000"));
    EXPECT_EQ(F(kAfternoon, "m/d/yyyy"), QStringLiteral("6/7/2000"));
    EXPECT_EQ(F(QDateTime(QDate(1997, 12, 31), QTime()), "m/d/yyyy"), QStringLiteral("12/31/1997"));
    EXPECT_EQ(F(QDate(1997, 12, 31), "mm/dd/yy"), QStringLiteral("12/31/97"));
}

TEST(FormatDate, MinutesAfterHoursAndBeforeSeconds) {
    EXPECT_EQ(F(kAfternoon, "hh:mm:ss"), QStringLiteral("13:04:05"));
    EXPECT_EQ(F(kAfternoon, "hh:nn:ss"), QStringLiteral("13:04:05"));
    EXPECT_EQ(F(kAfternoon, "mm/dd/yy, hh:mm:ss"), QStringLiteral("06/07/00, 13:04:05"));
    EXPECT_EQ(F(kAfternoon, "mm/dd/yy hh:nn:ss"), QStringLiteral("06/07/00 13:04:05"));
    EXPECT_EQ(F(kAfternoon, "mm:ss"), QStringLiteral("04:05"));
    EXPECT_EQ(F(kAfternoon, "mm/dd/yyyy hh:mm:ss"), QStringLiteral("06/07/2000 13:04:05"));
}

TEST(FormatDate, NamesOfDaysAndMonths) {
    EXPECT_EQ(F(kAfternoon, "dddd, mm dd, yyyy hh:mm:ss"),
              QStringLiteral("Wednesday, 06 07, 2000 13:04:05"));
    EXPECT_EQ(F(kAfternoon, "MMMM d, yyyy"), QStringLiteral("June 7, 2000"));
    EXPECT_EQ(F(kAfternoon, "mmmm d, yyyy"), QStringLiteral("June 7, 2000"));
    EXPECT_EQ(F(kAfternoon, "ddd mmm"), QStringLiteral("Wed Jun"));
    EXPECT_EQ(F(QDate(2000, 6, 11), "dddd"), QStringLiteral("Sunday"));
    EXPECT_EQ(F(QDate(2000, 9, 30), "mmmm"), QStringLiteral("September"));
    EXPECT_EQ(F(kAfternoon, "Long Date"), QStringLiteral("Wednesday, June 7, 2000"));
    EXPECT_EQ(F(kAfternoon, "Short Date"), QStringLiteral("6/7/2000"));
    EXPECT_EQ(F(kAfternoon, "Medium Date"), QStringLiteral("07-Jun-00"));
    EXPECT_EQ(F(kAfternoon, "\"on\" dddd"), QStringLiteral("on Wednesday"));
    EXPECT_EQ(F(kAfternoon, "q w ww y"), QStringLiteral("2 4 24 159"));
}

TEST(FormatDate, TwelveHourClock) {
    EXPECT_EQ(F(kAfternoon, "Long Time"), QStringLiteral("1:04:05 PM"));
    EXPECT_EQ(F(kMorning, "Long Time"), QStringLiteral("9:04:05 AM"));
    EXPECT_EQ(F(QDateTime(QDate(2000, 6, 7), QTime(0, 0, 0)), "Long Time"),
              QStringLiteral("12:00:00 AM"));
    EXPECT_EQ(F(QDateTime(QDate(2000, 6, 7), QTime(12, 30, 0)), "Long Time"),
              QStringLiteral("12:30:00 PM"));
    EXPECT_EQ(F(QTime(13, 4, 5), "Long Time"), QStringLiteral("1:04:05 PM"));
    EXPECT_EQ(F(kAfternoon, "h:mm am/pm"), QStringLiteral("1:04 pm"));
    EXPECT_EQ(F(kMorning, "h:mm a/p"), QStringLiteral("9:04 a"));
    EXPECT_EQ(F(kAfternoon, "Short Time"), QStringLiteral("13:04"));
    EXPECT_EQ(F(kAfternoon, "Medium Time"), QStringLiteral("01:04 PM"));
}

TEST(FormatDate, GeneralDateShowsWhatTheValueHolds) {
    EXPECT_EQ(F(kAfternoon, "General Date"), QStringLiteral("6/7/2000 1:04:05 PM"));
    EXPECT_EQ(F(QDate(2000, 6, 7), "General Date"), QStringLiteral("6/7/2000"));
    EXPECT_EQ(F(QTime(9, 4, 5), "General Date"), QStringLiteral("9:04:05 AM"));
    EXPECT_EQ(F(kAfternoon, ""), QStringLiteral("6/7/2000 1:04:05 PM"));
}

TEST(FormatDate, TextsAndSerialsAreReadAsDates) {
    EXPECT_EQ(F(T("06/07/00"), "mm/dd/yyyy"), QStringLiteral("06/07/2000"));
    EXPECT_EQ(F(T("Jun 07, 2000 12:04:00 PST"), "mm/dd/yy, hh:mm:ss"),
              QStringLiteral("06/07/00, 12:04:00"));
    EXPECT_EQ(F(T("June 7, 2000"), "mm/dd/yy"), QStringLiteral("06/07/00"));
    EXPECT_EQ(F(T("12/31/97"), "mmmm d, yyyy"), QStringLiteral("December 31, 1997"));
    EXPECT_EQ(F(36684, "mm/dd/yy"), QStringLiteral("06/07/00"));
    EXPECT_EQ(F(36684.5, "hh:mm:ss"), QStringLiteral("12:00:00"));
    EXPECT_EQ(F(QDate(2000, 1, 1), "General Number"), QStringLiteral("36526"));
    EXPECT_EQ(F(QDate(2000, 6, 7), "hh:mm:ss"), QStringLiteral("00:00:00"));
}

TEST(FormatDate, TextThatIsNoDateStays) {
    EXPECT_EQ(F(T("n/a"), "mm/dd/yy"), QStringLiteral("n/a"));
    EXPECT_EQ(F(T("soon"), "Long Time"), QStringLiteral("soon"));
    EXPECT_EQ(F(T(""), "mm/dd/yy"), QString());
    EXPECT_EQ(F(QVariant(), "mm/dd/yy"), QString());
}

}  // namespace
}  // namespace lw::core
