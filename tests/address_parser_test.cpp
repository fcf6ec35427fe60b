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

using Box = QString AddressBoxes::*;

// The boxes the parser may fill, in the order of the expected texts below.
constexpr Box kBoxes[] = {
    &AddressBoxes::txtAddressMr,      &AddressBoxes::txtAddressFirst,
    &AddressBoxes::txtAddressMiddle,  &AddressBoxes::txtAddressLast,
    &AddressBoxes::txtAddressTitle,   &AddressBoxes::txtAddressCompany,
    &AddressBoxes::txtAddressStreet1, &AddressBoxes::txtAddressStreet2,
    &AddressBoxes::txtAddressCity,    &AddressBoxes::txtAddressState,
    &AddressBoxes::txtAddressZip,
};

// Boxes that were filled before the paste ("old" in every one), so that a box
// the paste leaves alone shows it.
AddressBoxes Before() {
    AddressBoxes boxes;
    for (Box box : kBoxes) {
        boxes.*box = QStringLiteral("old");
    }
    boxes.txtAddressCountry = boxes.txtAddressPhone = boxes.txtAddressFax = boxes.txtAddressEmail =
        QStringLiteral("kept");
    return boxes;
}

struct Case {
    const char* name;
    QString clipboard;
    // The boxes after the paste, "|" between them, in the order of kBoxes:
    // salutation, first, middle, last | title, company, street 1, street 2 |
    // city, state, zip.
    const char* after;
};

void ExpectPastes(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto pasted = PasteAddressFromClipboard(c.clipboard, Before());
        EXPECT_FALSE(pasted.failed);
        const QStringList after = QString::fromUtf8(c.after).split(u'|');
        ASSERT_EQ(after.size(), static_cast<qsizetype>(std::size(kBoxes)));
        AddressBoxes expected = Before();
        for (qsizetype i = 0; i < after.size(); ++i) {
            expected.*kBoxes[i] = after[i];
            EXPECT_EQ(pasted.boxes.*kBoxes[i], after[i]) << "box " << i;
        }
        EXPECT_TRUE(pasted.boxes == expected);
    }
}

QString Crlf(const char* text) {
    return QString::fromUtf8(text).replace(QStringLiteral("\n"), QStringLiteral("\r\n"));
}

TEST(AddressParser, NameLineByWordCountAndSalutation) {
    // One line: every name box is set, the other boxes stay.
    ExpectPastes({
        {"salutation alone", QStringLiteral("Dr."), "Dr.||||old|old|old|old|old|old|old"},
        {"salutation, last", QStringLiteral("Dr. Who"), "Dr.|||Who|old|old|old|old|old|old|old"},
        {"salutation, first, last", QStringLiteral("Ms. Ada Byron"),
         "Ms.|Ada||Byron|old|old|old|old|old|old|old"},
        {"salutation, three names", QStringLiteral("Mr. John Q Public"),
         "Mr.|John|Q|Public|old|old|old|old|old|old|old"},
        {"last alone", QStringLiteral("Cher"), "|||Cher|old|old|old|old|old|old|old"},
        {"first, last", QStringLiteral("Ada Byron"), "|Ada||Byron|old|old|old|old|old|old|old"},
        {"first, middle, last", QStringLiteral("John Q Public"),
         "|John|Q|Public|old|old|old|old|old|old|old"},
        {"four words without a stop", QStringLiteral("Sir John Q Public"),
         "Sir|John|Q|Public|old|old|old|old|old|old|old"},
        {"a fifth word is dropped", QStringLiteral("Mr. John Q Public Jr."),
         "Mr.|John|Q|Public|old|old|old|old|old|old|old"},
        {"blanks between words", QStringLiteral("  Ada    Byron  "),
         "|Ada||Byron|old|old|old|old|old|old|old"},
        {"a stop inside the first word is no salutation", QStringLiteral("J.R Tolkien"),
         "|J.R||Tolkien|old|old|old|old|old|old|old"},
        {"a quote in a name", QStringLiteral("Mrs. Mary O'Brien"),
         "Mrs.|Mary||O'Brien|old|old|old|old|old|old|old"},
        {"no word keeps the name", QStringLiteral("   "),
         "old|old|old|old|old|old|old|old|old|old|old"},
    });
}

TEST(AddressParser, LinesByTheirCount) {
    ExpectPastes({
        {"two lines change only the name", Crlf("Ada Byron\n12 Elm St"),
         "|Ada||Byron|old|old|old|old|old|old|old"},
        {"three lines", Crlf("Mr. John Q Public\n12 Elm St\nDayton, OH 45402"),
         "Mr.|John|Q|Public|old|old|12 Elm St|old|Dayton|OH|45402"},
        {"four lines", Crlf("Ada Byron\nANALYTICAL ENGINES\n1 Loom Rd\nLondon, LN 10101"),
         "|Ada||Byron|old|ANALYTICAL ENGINES|1 Loom Rd|old|London|LN|10101"},
        {"five lines, line 2 in capitals is the company",
         Crlf("Ada Byron\nACME LTD\n1 Loom Rd\nSuite 2\nDayton, OH 45402"),
         "|Ada||Byron|old|ACME LTD|1 Loom Rd|Suite 2|Dayton|OH|45402"},
        {"five lines, line 2 with lower case is the title",
         Crlf("Ada Byron\nAcme Ltd\nWIDGETS INC\n1 Loom Rd\nDayton, OH 45402"),
         "|Ada||Byron|Acme Ltd|WIDGETS INC|1 Loom Rd|old|Dayton|OH|45402"},
        {"a z alone bears no lower case",
         Crlf("Ada Byron\nzZZ\n1 Loom Rd\nSuite 2\nDayton, OH 45402"),
         "|Ada||Byron|old|zZZ|1 Loom Rd|Suite 2|Dayton|OH|45402"},
        {"six lines", Crlf("Ada Byron\nChief Engineer\nACME\n1 Loom Rd\nSuite 2\nDayton, OH 45402"),
         "|Ada||Byron|Chief Engineer|ACME|1 Loom Rd|Suite 2|Dayton|OH|45402"},
        {"seven lines change only the name", Crlf("Ada Byron\na\nb\nc\nd\ne\nDayton, OH 45402"),
         "|Ada||Byron|old|old|old|old|old|old|old"},
    });
}

TEST(AddressParser, CityLineAndTheCleaningOfLines) {
    ExpectPastes({
        {"a city of two words", Crlf("Ada Byron\n1 Broadway\nNew York, NY 10001"),
         "|Ada||Byron|old|old|1 Broadway|old|New|York,|NY 10001"},
        {"a city line of one word sets nothing", Crlf("Ada Byron\n1 Broadway\nDayton"),
         "|Ada||Byron|old|old|1 Broadway|old|old|old|old"},
        {"a city line of two words sets only the city", Crlf("Ada Byron\n1 Broadway\nDayton,   OH"),
         "|Ada||Byron|old|old|1 Broadway|old|Dayton|old|old"},
        {"bare line feeds break lines as well",
         QStringLiteral("Ada Byron\n1 Broadway\nDayton, OH 45402"),
         "|Ada||Byron|old|old|1 Broadway|old|Dayton|OH|45402"},
        {"blanks and backspaces in front are cut",
         QStringLiteral("\b \bAda Byron  \r\n  \b 1 Broadway \r\n Dayton, OH 45402 "),
         "|Ada||Byron|old|old|1 Broadway|old|Dayton|OH|45402"},
        // Only lines that end in a bare carriage return are dropped from the
        // end; a final line break leaves an empty line that is counted.
        {"empty lines at the end by carriage returns",
         QStringLiteral("Ada Byron\r1 Broadway\rDayton, OH 45402\r\r"),
         "|Ada||Byron|old|old|1 Broadway|old|Dayton|OH|45402"},
        {"a final line break is a fourth, empty city line",
         Crlf("Ada Byron\n1 Broadway\nDayton, OH 45402\n"),
         "|Ada||Byron|old|1 Broadway|Dayton, OH 45402|old|old|old|old"},
    });
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
    ExpectPastes({
        {"500 lines", fiveHundred, "Line|1|of|many|old|old|old|old|old|old|old"},
        // Every control character lands in the one name word, except the line
        // breaks, which make three lines whose city line has no blank.
        {"control characters", controls,
         "|||\x01\x02\x03\x04\x05\x06\x07\x08\x09"
         "|old|old|\x0b\x0c|old"
         "|old|old|old"},
        {"backspaces only", QStringLiteral("\b\b \b"),
         "old|old|old|old|old|old|old|old|old|old|old"},
    });
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
