// SPDX-License-Identifier: GPL-3.0-or-later
// Format: every pattern the program shows values with, for positive,
// negative and zero numbers, money texts, dates and texts no pattern takes.
#include <gtest/gtest.h>

#include <QDateTime>

#include <limits>
#include <ostream>
#include <vector>

#include "core/text.h"

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace lw::core {
namespace {

QVariant T(const char* text) {
    return QVariant(QString::fromUtf8(text));
}

// One pattern, values shown with it, and what each value must show, in the
// same order.
struct Row {
    const char* pattern;
    QVariantList values;
    std::vector<const char*> shown;
};

void ExpectShown(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        SCOPED_TRACE(row.pattern);
        ASSERT_EQ(row.values.size(), static_cast<qsizetype>(row.shown.size()));
        for (qsizetype i = 0; i < row.values.size(); ++i) {
            const QVariant& value = row.values[i];
            EXPECT_EQ(Format(value, QString::fromLatin1(row.pattern)),
                      QString::fromUtf8(row.shown[i]))
                << "value " << i << ": " << value.toString().toStdString() << " ("
                << value.typeName() << ")";
        }
    }
}

const QDateTime kAfternoon(QDate(2000, 6, 7), QTime(13, 4, 5));  // a Wednesday
const QDateTime kMorning(QDate(2000, 6, 7), QTime(9, 4, 5));

TEST(FormatGeneralNumber, PlainNumberAndMoneyTextWithoutItsSigns) {
    ExpectShown({
        // Money texts lose their signs; other texts stay.
        {"General Number",
         {1234.5, -3, 0, 0.1 + 0.2, 1e20, 0.00001, T("$1,234.50"), T("(5.00)"), T(" 12 "), T("n/a"),
          T("-"), T(""), QVariant()},
         {"1234.5", "-3", "0", "0.3", "1E+20", "1E-05", "1234.5", "-5", "12", "n/a", "-", "", ""}},
        {"general number", {1234567.0}, {"1234567"}},
    });
    // Val of the result is the number rule for such texts.
    for (const char* money : {"$1,234.50", "(5.00)", "n/a", "-", "", "$0.99", "($12,000)"}) {
        EXPECT_EQ(Val(Format(T(money), QStringLiteral("General Number"))),
                  NumberRule(QString::fromUtf8(money)))
            << money;
    }
}

TEST(FormatCurrency, DollarsWithSeparatorsAndBracketsForNegatives) {
    ExpectShown({
        // 2.675 rounds as written, not as the nearest double lies.
        {"Currency",
         {1234.5, -5, 0, 1234567.891, 999.995, 0.005, 2.675, QVariant(qint64(12)), T("$1,234.5"),
          T("7"), T("(3)"), T("n/a")},
         {"$1,234.50", "($5.00)", "$0.00", "$1,234,567.89", "$1,000.00", "$0.01", "$2.68", "$12.00",
          "$1,234.50", "$7.00", "($3.00)", "n/a"}},
    });
}

TEST(FormatPicture, DigitPlaceholdersPaddingPercentAndThousandsSeparators) {
    ExpectShown({
        {"#.##",
         {0.5, 3, 0, 3.14159, -0.5, 1234.5, T("$12.10")},
         {".5", "3.", ".", "3.14", "-.5", "1234.5", "12.1"}},
        {"###.##", {8.25}, {"8.25"}},
        {"#.00", {5, 0.5, -12.345}, {"5.00", ".50", "-12.35"}},
        // A value that rounds to nothing shows no minus sign.
        {"0.00", {0, -1.5, 7.125, -0.001}, {"0.00", "-1.50", "7.13", "0.00"}},
        {"0.0#", {1.5, 1.257}, {"1.5", "1.26"}},
        {"###0", {0, 12345, 3.6, -2.5}, {"0", "12345", "4", "-3"}},
        {"00", {4, 0, 123}, {"04", "00", "123"}},
        {"000", {7}, {"007"}},
        {"0.0%", {0.1234, 1, 0, -0.05, 0.00049}, {"12.3%", "100.0%", "0.0%", "-5.0%", "0.0%"}},
        {"Percent", {0.5}, {"50.00%"}},
        // Thousands separators; one just before the point divides by a thousand.
        {"#,###.##",
         {1234.5, 1234567.891, 123, 0.25, 999.999},
         {"1,234.5", "1,234,567.89", "123.", ".25", "1,000."}},
        {"#,##0.00", {-1234}, {"-1,234.00"}},
        {"Standard", {1234}, {"1,234.00"}},
        {"#,##0,", {1234567}, {"1,235"}},
    });
}

TEST(FormatPicture, SectionsLiteralsScientificNamedPatternsAndTextThatStays) {
    ExpectShown({
        {"0.00;(0.00);\"nil\"", {-2, 0, 2}, {"(2.00)", "nil", "2.00"}},
        {"\"Qty: \"0", {5}, {"Qty: 5"}},
        {"0\\%", {5}, {"5%"}},
        {"0.00E+00", {1234.5, 9.999}, {"1.23E+03", "1.00E+01"}},
        {"Scientific", {0.00012}, {"1.20E-04"}},
        {"Yes/No", {0, -1}, {"No", "Yes"}},
        {"True/False", {true}, {"True"}},
        {"Fixed", {12.5}, {"12.50"}},
        // Text that is no number stays.
        {"0.00", {T("abc"), T("06/07/00")}, {"abc", "06/07/00"}},
        {"#,###.##", {T("n/a")}, {"n/a"}},
    });
}

TEST(FormatPicture, FifteenSignificantDigitsWhateverTheShortestForm) {
    // The digits past the fifteenth are rounded away and zeros shown in
    // their places, whether the shortest text that reads back as the number
    // is longer (a sum that reads 0.30000000000000004, a third) or the
    // number lies below the normal range, where that text is too short.
    ExpectShown({
        {"0.00000000000000000", {0.1 + 0.2}, {"0.30000000000000000"}},
        {"0.000000000000000000", {1.0 / 3}, {"0.333333333333333000"}},
        {"#,##0.0000", {123456789012.345678}, {"123,456,789,012.3460"}},
        {"Scientific", {5e-324}, {"4.94E-324"}},
        {"0.0000E+00", {2.2250738585072014e-308}, {"2.2251E-308"}},
    });
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

TEST(FormatDate, NumericPatternsWithMinutesAfterHoursAndBeforeSeconds) {
    const QDate endOf97(1997, 12, 31);
    ExpectShown({
        {"mm/dd/yy", {kAfternoon, endOf97}, {"06/07/00", "12/31/97"}},
        {"MM/DD/YY", {kAfternoon}, {"06/07/00"}},
        {"mm/dd/yyyy", {kAfternoon}, {"06/07/2000"}},
        {"m/d/yyyy", {kAfternoon, QDateTime(endOf97, QTime())}, {"6/7/2000", "12/31/1997"}},
        // "mm" after hours or before seconds is minutes, as "nn" always is.
        {"hh:mm:ss", {kAfternoon}, {"13:04:05"}},
        {"hh:nn:ss", {kAfternoon}, {"13:04:05"}},
        {"mm/dd/yy, hh:mm:ss", {kAfternoon}, {"06/07/00, 13:04:05"}},
        {"mm/dd/yy hh:nn:ss", {kAfternoon}, {"06/07/00 13:04:05"}},
        {"mm:ss", {kAfternoon}, {"04:05"}},
        {"mm/dd/yyyy hh:mm:ss", {kAfternoon}, {"06/07/2000 13:04:05"}},
    });
}

TEST(FormatDate, NamesOfDaysAndMonths) {
    ExpectShown({
        {"dddd, mm dd, yyyy hh:mm:ss", {kAfternoon}, {"Wednesday, 06 07, 2000 13:04:05"}},
        {"MMMM d, yyyy", {kAfternoon}, {"June 7, 2000"}},
        {"mmmm d, yyyy", {kAfternoon}, {"June 7, 2000"}},
        {"ddd mmm", {kAfternoon}, {"Wed Jun"}},
        {"dddd", {QDate(2000, 6, 11)}, {"Sunday"}},
        {"mmmm", {QDate(2000, 9, 30)}, {"September"}},
        {"Long Date", {kAfternoon}, {"Wednesday, June 7, 2000"}},
        {"Short Date", {kAfternoon}, {"6/7/2000"}},
        {"Medium Date", {kAfternoon}, {"07-Jun-00"}},
        {"\"on\" dddd", {kAfternoon}, {"on Wednesday"}},
        {"q w ww y", {kAfternoon}, {"2 4 24 159"}},
    });
}

TEST(FormatDate, TwelveHourClockAndGeneralDate) {
    const QDate day(2000, 6, 7);
    ExpectShown({
        {"Long Time",
         {kAfternoon, kMorning, QDateTime(day, QTime(0, 0)), QDateTime(day, QTime(12, 30)),
          QTime(13, 4, 5)},
         {"1:04:05 PM", "9:04:05 AM", "12:00:00 AM", "12:30:00 PM", "1:04:05 PM"}},
        {"h:mm am/pm", {kAfternoon}, {"1:04 pm"}},
        {"h:mm a/p", {kMorning}, {"9:04 a"}},
        {"Short Time", {kAfternoon}, {"13:04"}},
        {"Medium Time", {kAfternoon}, {"01:04 PM"}},
        // General Date, or no pattern, shows what the value holds.
        {"General Date",
         {kAfternoon, day, QTime(9, 4, 5)},
         {"6/7/2000 1:04:05 PM", "6/7/2000", "9:04:05 AM"}},
        {"", {kAfternoon}, {"6/7/2000 1:04:05 PM"}},
    });
}

TEST(FormatDate, TextsAndSerialsAreReadAsDatesAndOtherTextStays) {
    ExpectShown({
        {"mm/dd/yyyy", {T("06/07/00")}, {"06/07/2000"}},
        {"mm/dd/yy, hh:mm:ss", {T("Jun 07, 2000 12:04:00 PST")}, {"06/07/00, 12:04:00"}},
        {"mm/dd/yy", {T("June 7, 2000"), 36684}, {"06/07/00", "06/07/00"}},
        {"mmmm d, yyyy", {T("12/31/97")}, {"December 31, 1997"}},
        {"hh:mm:ss", {36684.5, QDate(2000, 6, 7)}, {"12:00:00", "00:00:00"}},
        {"General Number", {QDate(2000, 1, 1)}, {"36526"}},
        // Text that is no date stays.
        {"mm/dd/yy", {T("n/a"), T(""), QVariant()}, {"n/a", "", ""}},
        {"Long Time", {T("soon")}, {"soon"}},
    });
}

}  // namespace
}  // namespace lw::core
