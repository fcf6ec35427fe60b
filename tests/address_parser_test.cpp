// SPDX-License-Identifier: GPL-3.0-or-later
// The address parser of the address panel: each row of its two name tables,
// each row of its table of line counts, the city line, the cleaning of the
// lines, its one message, and pastes that it must survive unchanged.
#include <gtest/gtest.h>

#include <ostream>

#include "tasks/address_panel.h"

using lw::tasks::AddressBoxes;
using lw::tasks::PasteAddressFromClipboard;

void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace {

// Boxes that were filled before the paste, so that a box the paste leaves
// alone shows it.
AddressBoxes Before() {
    AddressBoxes b;
    b.txtAddressMr = QStringLiteral("old-mr");
    b.txtAddressFirst = QStringLiteral("old-first");
    b.txtAddressMiddle = QStringLiteral("old-middle");
    b.txtAddressLast = QStringLiteral("old-last");
    b.txtAddressTitle = QStringLiteral("old-title");
    b.txtAddressCompany = QStringLiteral("old-company");
    b.txtAddressStreet1 = QStringLiteral("old-street1");
    b.txtAddressStreet2 = QStringLiteral("old-street2");
    b.txtAddressCity = QStringLiteral("old-city");
    b.txtAddressState = QStringLiteral("old-state");
    b.txtAddressZip = QStringLiteral("old-zip");
    b.txtAddressCountry = QStringLiteral("old-country");
    b.txtAddressPhone = QStringLiteral("old-phone");
    b.txtAddressFax = QStringLiteral("old-fax");
    b.txtAddressEmail = QStringLiteral("old-email");
    return b;
}

using Box = QString AddressBoxes::*;

struct Case {
    const char* name;
    QString clipboard;
    std::vector<std::pair<Box, const char*>> changed;  // every other box keeps Before()
};

void ExpectPaste(const Case& c) {
    SCOPED_TRACE(c.name);
    const auto pasted = PasteAddressFromClipboard(c.clipboard, Before());
    EXPECT_FALSE(pasted.failed);
    AddressBoxes expected = Before();
    for (const auto& [box, value] : c.changed) {
        expected.*box = QString::fromUtf8(value);
    }
    for (Box box : {&AddressBoxes::txtAddressMr, &AddressBoxes::txtAddressFirst,
                    &AddressBoxes::txtAddressMiddle, &AddressBoxes::txtAddressLast,
                    &AddressBoxes::txtAddressTitle, &AddressBoxes::txtAddressCompany,
                    &AddressBoxes::txtAddressStreet1, &AddressBoxes::txtAddressStreet2,
                    &AddressBoxes::txtAddressCity, &AddressBoxes::txtAddressState,
                    &AddressBoxes::txtAddressZip}) {
        EXPECT_EQ(pasted.boxes.*box, expected.*box);
    }
    EXPECT_TRUE(pasted.boxes == expected);
}

constexpr Box kMr = &AddressBoxes::txtAddressMr;
constexpr Box kFirst = &AddressBoxes::txtAddressFirst;
constexpr Box kMiddle = &AddressBoxes::txtAddressMiddle;
constexpr Box kLast = &AddressBoxes::txtAddressLast;
constexpr Box kTitle = &AddressBoxes::txtAddressTitle;
constexpr Box kCompany = &AddressBoxes::txtAddressCompany;
constexpr Box kStreet1 = &AddressBoxes::txtAddressStreet1;
constexpr Box kStreet2 = &AddressBoxes::txtAddressStreet2;
constexpr Box kCity = &AddressBoxes::txtAddressCity;
constexpr Box kState = &AddressBoxes::txtAddressState;
constexpr Box kZip = &AddressBoxes::txtAddressZip;

QString Crlf(const char* text) {
    return QString::fromUtf8(text).replace(QStringLiteral("\n"), QStringLiteral("\r\n"));
}

TEST(AddressParser, NameLineByWordCountAndSalutation) {
    // One line: only the name boxes take part, and every one of them is set.
    const std::vector<Case> cases = {
        {"salutation alone",
         QStringLiteral("Dr."),
         {{kMr, "Dr."}, {kFirst, ""}, {kMiddle, ""}, {kLast, ""}}},
        {"salutation, last",
         QStringLiteral("Dr. Who"),
         {{kMr, "Dr."}, {kFirst, ""}, {kMiddle, ""}, {kLast, "Who"}}},
        {"salutation, first, last",
         QStringLiteral("Ms. Ada Byron"),
         {{kMr, "Ms."}, {kFirst, "Ada"}, {kMiddle, ""}, {kLast, "Byron"}}},
        {"salutation, three names",
         QStringLiteral("Mr. John Q Public"),
         {{kMr, "Mr."}, {kFirst, "John"}, {kMiddle, "Q"}, {kLast, "Public"}}},
        {"last alone",
         QStringLiteral("Cher"),
         {{kMr, ""}, {kFirst, ""}, {kMiddle, ""}, {kLast, "Cher"}}},
        {"first, last",
         QStringLiteral("Ada Byron"),
         {{kMr, ""}, {kFirst, "Ada"}, {kMiddle, ""}, {kLast, "Byron"}}},
        {"first, middle, last",
         QStringLiteral("John Q Public"),
         {{kMr, ""}, {kFirst, "John"}, {kMiddle, "Q"}, {kLast, "Public"}}},
        {"four words without a stop",
         QStringLiteral("Sir John Q Public"),
         {{kMr, "Sir"}, {kFirst, "John"}, {kMiddle, "Q"}, {kLast, "Public"}}},
        {"a fifth word is dropped",
         QStringLiteral("Mr. John Q Public Jr."),
         {{kMr, "Mr."}, {kFirst, "John"}, {kMiddle, "Q"}, {kLast, "Public"}}},
        {"blanks between words",
         QStringLiteral("  Ada    Byron  "),
         {{kMr, ""}, {kFirst, "Ada"}, {kMiddle, ""}, {kLast, "Byron"}}},
        {"a stop inside the first word is no salutation",
         QStringLiteral("J.R Tolkien"),
         {{kMr, ""}, {kFirst, "J.R"}, {kMiddle, ""}, {kLast, "Tolkien"}}},
        {"a quote in a name",
         QStringLiteral("Mrs. Mary O'Brien"),
         {{kMr, "Mrs."}, {kFirst, "Mary"}, {kMiddle, ""}, {kLast, "O'Brien"}}},
        {"no word keeps the name", QStringLiteral("   "), {}},
    };
    for (const Case& c : cases) {
        ExpectPaste(c);
    }
}

TEST(AddressParser, LinesByTheirCount) {
    const std::vector<Case> cases = {
        {"two lines change only the name",
         Crlf("Ada Byron\n12 Elm St"),
         {{kMr, ""}, {kFirst, "Ada"}, {kMiddle, ""}, {kLast, "Byron"}}},
        {"three lines",
         Crlf("Mr. John Q Public\n12 Elm St\nDayton, OH 45402"),
         {{kMr, "Mr."},
          {kFirst, "John"},
          {kMiddle, "Q"},
          {kLast, "Public"},
          {kStreet1, "12 Elm St"},
          {kCity, "Dayton"},
          {kState, "OH"},
          {kZip, "45402"}}},
        {"four lines",
         Crlf("Ada Byron\nANALYTICAL ENGINES\n1 Loom Rd\nLondon, LN 10101"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kCompany, "ANALYTICAL ENGINES"},
          {kStreet1, "1 Loom Rd"},
          {kCity, "London"},
          {kState, "LN"},
          {kZip, "10101"}}},
        {"five lines, line 2 in capitals is the company",
         Crlf("Ada Byron\nACME LTD\n1 Loom Rd\nSuite 2\nDayton, OH 45402"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kCompany, "ACME LTD"},
          {kStreet1, "1 Loom Rd"},
          {kStreet2, "Suite 2"},
          {kCity, "Dayton"},
          {kState, "OH"},
          {kZip, "45402"}}},
        {"five lines, line 2 with lower case is the title",
         Crlf("Ada Byron\nAcme Ltd\nWIDGETS INC\n1 Loom Rd\nDayton, OH 45402"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kTitle, "Acme Ltd"},
          {kCompany, "WIDGETS INC"},
          {kStreet1, "1 Loom Rd"},
          {kCity, "Dayton"},
          {kState, "OH"},
          {kZip, "45402"}}},
        {"a z alone bears no lower case",
         Crlf("Ada Byron\nzZZ\n1 Loom Rd\nSuite 2\nDayton, OH 45402"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kCompany, "zZZ"},
          {kStreet1, "1 Loom Rd"},
          {kStreet2, "Suite 2"},
          {kCity, "Dayton"},
          {kState, "OH"},
          {kZip, "45402"}}},
        {"six lines",
         Crlf("Ada Byron\nChief Engineer\nACME\n1 Loom Rd\nSuite 2\nDayton, OH 45402"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kTitle, "Chief Engineer"},
          {kCompany, "ACME"},
          {kStreet1, "1 Loom Rd"},
          {kStreet2, "Suite 2"},
          {kCity, "Dayton"},
          {kState, "OH"},
          {kZip, "45402"}}},
        {"seven lines change only the name",
         Crlf("Ada Byron\na\nb\nc\nd\ne\nDayton, OH 45402"),
         {{kMr, ""}, {kFirst, "Ada"}, {kMiddle, ""}, {kLast, "Byron"}}},
    };
    for (const Case& c : cases) {
        ExpectPaste(c);
    }
}

TEST(AddressParser, CityLineAndTheCleaningOfLines) {
    const std::vector<Case> cases = {
        {"a city of two words",
         Crlf("Ada Byron\n1 Broadway\nNew York, NY 10001"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kStreet1, "1 Broadway"},
          {kCity, "New"},
          {kState, "York,"},
          {kZip, "NY 10001"}}},
        {"a city line of one word sets nothing",
         Crlf("Ada Byron\n1 Broadway\nDayton"),
         {{kMr, ""}, {kFirst, "Ada"}, {kMiddle, ""}, {kLast, "Byron"}, {kStreet1, "1 Broadway"}}},
        {"a city line of two words sets only the city",
         Crlf("Ada Byron\n1 Broadway\nDayton,   OH"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kStreet1, "1 Broadway"},
          {kCity, "Dayton"}}},
        {"bare line feeds break lines as well",
         QStringLiteral("Ada Byron\n1 Broadway\nDayton, OH 45402"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kStreet1, "1 Broadway"},
          {kCity, "Dayton"},
          {kState, "OH"},
          {kZip, "45402"}}},
        {"blanks and backspaces in front are cut",
         QStringLiteral("\b \bAda Byron  \r\n  \b 1 Broadway \r\n Dayton, OH 45402 "),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kStreet1, "1 Broadway"},
          {kCity, "Dayton"},
          {kState, "OH"},
          {kZip, "45402"}}},
        // Only lines that end in a bare carriage return are dropped from the
        // end; a final line break leaves an empty line that is counted.
        {"empty lines at the end by carriage returns",
         QStringLiteral("Ada Byron\r1 Broadway\rDayton, OH 45402\r\r"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kStreet1, "1 Broadway"},
          {kCity, "Dayton"},
          {kState, "OH"},
          {kZip, "45402"}}},
        {"a final line break is a fourth, empty city line",
         Crlf("Ada Byron\n1 Broadway\nDayton, OH 45402\n"),
         {{kMr, ""},
          {kFirst, "Ada"},
          {kMiddle, ""},
          {kLast, "Byron"},
          {kCompany, "1 Broadway"},
          {kStreet1, "Dayton, OH 45402"}}},
    };
    for (const Case& c : cases) {
        ExpectPaste(c);
    }
}

TEST(AddressParser, PastesThatChangeNothingButTheName) {
    QString fiveHundred;
    for (int line = 1; line <= 500; ++line) {
        fiveHundred += QStringLiteral("Line %1 of many\r\n").arg(line);
    }
    QString controls;
    for (char16_t c = 1; c < 32; ++c) {
        controls += QChar(c);
    }
    const std::vector<Case> cases = {
        {"500 lines",
         fiveHundred,
         {{kMr, "Line"}, {kFirst, "1"}, {kMiddle, "of"}, {kLast, "many"}}},
        // Every control character lands in the one name word, except the line
        // breaks, which make three lines whose city line has no blank.
        {"control characters",
         controls,
         {{kMr, ""},
          {kFirst, ""},
          {kMiddle, ""},
          {kLast, "\x01\x02\x03\x04\x05\x06\x07\x08\x09"},
          {kStreet1, "\x0b\x0c"}}},
        {"backspaces only", QStringLiteral("\b\b \b"), {}},
    };
    for (const Case& c : cases) {
        ExpectPaste(c);
    }
}

TEST(AddressParser, NoLineAtAllIsTheMessageAndChangesNothing) {
    for (const QString& clipboard : {QString(), QStringLiteral("\r\r\r")}) {
        const auto pasted = PasteAddressFromClipboard(clipboard, Before());
        EXPECT_TRUE(pasted.failed);
        EXPECT_EQ(
            pasted.message,
            QStringLiteral("Error retrieving address from clipboard.  Unrecognized name format."));
        EXPECT_EQ(pasted.title, QStringLiteral("Unable to Retrieve Name"));
        EXPECT_TRUE(pasted.boxes == Before());
    }
}

}  // namespace
