// SPDX-License-Identifier: GPL-3.0-or-later
// lotwright-cli packing-list and remittance on a prepared database, run as a
// user runs them: the document as text with the question's default said
// aloud, a PDF that marks the task printed, an RTF a word processor opens,
// and clear failures that mark nothing.
#include <gtest/gtest.h>

#include <QFile>

#include "core/store.h"
#include "tests/support/test_support.h"

using lw::test::BinDir;
using lw::test::ReadAll;
using lw::test::TempRoot;

namespace {

// Run as a scheduled job runs it: no login session, so no runtime folder.
lw::test::ProgramRun Cli(const QString& root, const QStringList& args) {
    return lw::test::RunProgram(BinDir() + QStringLiteral("/lotwright-cli"),
                                QStringList{QStringLiteral("--root"), root} + args, {},
                                {QStringLiteral("XDG_RUNTIME_DIR")});
}

// A root with one user, two ended sales to one buyer, a multi-winner sale and
// a paid bid; the shipped templates reach Configs/ on the first command.
void Prepare(const TempRoot& root) {
    const auto init =
        Cli(root.Path(), {QStringLiteral("init"), QStringLiteral("--user"), QStringLiteral("Ann"),
                          QStringLiteral("--site-id"), QStringLiteral("ann_sells"),
                          QStringLiteral("--password"), QStringLiteral("pw")});
    ASSERT_EQ(init.code, 0) << init.err.toStdString();
    lw::core::Database db =
        lw::core::Database::Open(root.File(QStringLiteral("Data/Lotwright.db")));
    db.Exec(QStringLiteral(
        "UPDATE Users SET SFirstName = 'Ann', SLastName = 'Lee', AddressStreet1 = '1 Elm St', "
        "City = 'Dover', State = 'DE', zipcode = '19901';"
        "INSERT INTO Buyers (BuyerID, FirstName, LastName, StreetAddress1, City, State, ZipCode) "
        "VALUES ('bob', 'Bob', 'Hart', '9 Oak Rd', 'Troy', 'NY', '12180');"
        "INSERT INTO Sellers (SellerID, FirstName, StreetAddress1, City) "
        "VALUES ('carl', 'Carl', '5 Pine Ave', 'Ames');"
        "INSERT INTO Auctions (UserName, ItemNumber, ItemTitle, EndDate, HighBid, NumberBids, "
        "HighBidderName) VALUES "
        "('Ann', '100', 'Brass lamp', '01/15/24, 10:00:00 PST', '$10.00', '2', 'bob'),"
        "('Ann', '101', 'Oil lamp', '01/16/24, 10:00:00 PST', '$4.50', '1', 'bob'),"
        "('Ann', '102', 'Tin box', '01/16/24, 10:00:00 PST', '$2.00', '1', 'nobody'),"
        "('Ann', '500', 'Marbles', '01/16/24, 10:00:00 PST', '$1.00', '5', 'Dutch Auction');"
        "INSERT INTO Dutch (UserName, ItemNumber, HighBidderName, HighBid) VALUES "
        "('Ann', '500', 'bob', '$3.00'), ('Ann', '500', 'zed', '$2.00');"
        "INSERT INTO Bids (UserName, ItemNumber, ItemTitle, EndDate, HighBid, Winning, "
        "SellerName, OrderPaymentMethod, OrderShipping) VALUES "
        "('Ann', '200', 'Stamp', '01/15/24, 10:00:00 PST', '$10.00', 1, 'carl', 1, '$2.00');"));
}

QString Printed(const TempRoot& root, const QString& table, const QString& where) {
    const auto query = Cli(root.Path(), {QStringLiteral("query"),
                                         QStringLiteral("SELECT max(PackingListPrinted) FROM ") +
                                             table + QStringLiteral(" WHERE ") + where});
    return query.out.section(u'\n', 1, 1);
}

TEST(PackingCli, BuildsPrintsAndSavesAsThePanelDoes) {
    TempRoot root;
    Prepare(root);
    const QString pdf = root.File(QStringLiteral("out.pdf"));
    const QString rtf = root.File(QStringLiteral("advice.rtf"));
    struct Case {
        QStringList args;
        int code;
        QString out;  // in standard output
        QString err;  // in standard error
    };
    const Case cases[] = {
        {{QStringLiteral("--help")},
         0,
         QStringLiteral("remittance ITEM [--pdf FILE] [--rtf FILE]"),
         QString()},
        {{QStringLiteral("packing-list"), QStringLiteral("100")},
         0,
         QStringLiteral("  Brass lamp ($10.00)\n  Oil lamp ($4.50)"),
         QStringLiteral("(no terminal to ask: answering Yes)")},
        {{QStringLiteral("remittance"), QStringLiteral("200")},
         0,
         QStringLiteral("Enclosed is a check in the amount of $12.00 ($10.00 + $2.00 shipping)."),
         QString()},
        {{QStringLiteral("remittance"), QStringLiteral("200"), QStringLiteral("--rtf"), rtf},
         0,
         QStringLiteral("Wrote the remittance advice to ") + rtf,
         QString()},
        {{QStringLiteral("packing-list"), QStringLiteral("500")},
         2,
         QString(),
         QStringLiteral("name its winner with --bidder NAME (bob, zed)")},
        {{QStringLiteral("packing-list"), QStringLiteral("102"), QStringLiteral("--pdf"), pdf},
         1,
         QString(),
         QStringLiteral("Please enter an address for nobody before creating a packing "
                        "list")},
        {{QStringLiteral("packing-list"), QStringLiteral("999")},
         1,
         QString(),
         QStringLiteral("there is no sale with item number 999")},
        {{QStringLiteral("remittance"), QStringLiteral("200"), QStringLiteral("--bidder"),
          QStringLiteral("x")},
         2,
         QString(),
         QStringLiteral("remittance needs ITEM")},
        {{QStringLiteral("packing-list"), QStringLiteral("500"), QStringLiteral("--bidder"),
          QStringLiteral("bob"), QStringLiteral("--pdf"), pdf},
         0,
         QStringLiteral("Printed the packing list to ") + pdf,
         QString()},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(u' ').toStdString());
        const auto run = Cli(root.Path(), c.args);
        EXPECT_EQ(run.code, c.code) << run.err.toStdString();
        EXPECT_TRUE(run.out.contains(c.out)) << run.out.toStdString();
        EXPECT_TRUE(run.err.contains(c.err)) << run.err.toStdString();
        // Standard error holds the program's own words only.
        EXPECT_FALSE(run.err.contains(QStringLiteral("QStandardPaths"))) << run.err.toStdString();
    }
    EXPECT_TRUE(ReadAll(pdf).startsWith("%PDF"));
    EXPECT_TRUE(ReadAll(rtf).startsWith("{\\rtf"));
    EXPECT_TRUE(QFile::exists(root.File(QStringLiteral("Configs/aucpack.rtf"))));
    // Only the printed winner is marked; the failed and the text runs mark nothing.
    EXPECT_EQ(Printed(root, QStringLiteral("Dutch"), QStringLiteral("HighBidderName = 'bob'")),
              QStringLiteral("1"));
    EXPECT_EQ(Printed(root, QStringLiteral("Dutch"), QStringLiteral("HighBidderName = 'zed'")),
              QStringLiteral("0"));
    EXPECT_EQ(Printed(root, QStringLiteral("Auctions"), QStringLiteral("ItemNumber < '200'")),
              QStringLiteral("0"));
}

}  // namespace
