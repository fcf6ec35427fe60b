// SPDX-License-Identifier: GPL-3.0-or-later
// Packing list figure: the whole build of a packing list from a 200 KB
// template (formatted paragraphs around the tokens) against loading the same
// template into a document alone, which every build must do anyway. It
// times nothing but those two, and never touches the user's folders.
#include <QByteArray>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTextDocument>
#include <cstdio>

#include "bench/bench_support.h"
#include "core/richtext/rich_text.h"
#include "core/session.h"
#include "core/store.h"
#include "tasks/packing_list.h"

namespace {

constexpr int kTemplateBytes = 200 * 1024;
constexpr int kRounds = 5;

// Paragraphs of mixed formatting until the template is kTemplateBytes long,
// half of them between the letterhead and the items, half after the items.
QByteArray MakeTemplate() {
    const QByteArray filler =
        "\\pard\\f0\\fs22 Every parcel is packed with care: \\b wrapped twice\\b0 , "
        "\\i padded on all sides\\i0 , and \\ul checked against this list\\ul0  before it "
        "leaves.\\par\n";
    const QByteArray head =
        "{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\fswiss Arial;}}"
        "{\\colortbl;\\red31\\green56\\blue100;}\n"
        "\\pard\\f0\\fs24\\b\\cf1 \\{MyAddress\\}\\b0\\cf0\\par\n"
        "\\pard\\fs20 \\{MyEmailAddress\\}\\par \\{CurrentDate\\}\\par\n";
    const QByteArray middle =
        "\\pard\\fs22\\b Ship to:\\b0\\par \\{BuyerAddress\\}\\par "
        "Bought on \\{AuctionSite\\}:\\par \\{AuctionItems\\}\\par \\{MyName\\}\\par\n";
    const QByteArray tail = "\\pard\\fs28\\b \\{MyAddress\\}\\par \\{BuyerAddress\\}\\par}\n";
    const int count =
        (kTemplateBytes - head.size() - middle.size() - tail.size()) / filler.size() + 1;
    return head + filler.repeated(count / 2) + middle + filler.repeated(count - count / 2) + tail;
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication app(argc, argv);
    QTemporaryDir root;
    lw::core::ResetSession();
    QString error;
    if (!root.isValid() || !lw::core::SetupDirectories(root.path(), &error)) {
        std::fprintf(stderr, "cannot make the program folder: %s\n", qPrintable(error));
        return 1;
    }
    lw::core::Database db =
        lw::core::OpenOrCreateStore(lw::core::StorePath(), QStringLiteral(LW_SOURCE_DIR));
    lw::core::AddUser(db, {QStringLiteral("Ann"), QStringLiteral("ann_sells"), QStringLiteral("pw"),
                           QStringLiteral("ann@example.com")});
    lw::core::SetCurrentUser(QStringLiteral("Ann"));
    db.Exec(QStringLiteral(
        "UPDATE Users SET SFirstName = 'Ann', SLastName = 'Lee', AddressStreet1 = '1 Elm St', "
        "City = 'Dover', State = 'DE', zipcode = '19901';"
        "INSERT INTO Buyers (BuyerID, FirstName, LastName, StreetAddress1, City, State, ZipCode) "
        "VALUES ('bob', 'Bob', 'Hart', '9 Oak Rd', 'Troy', 'NY', '12180');"
        "INSERT INTO Auctions (UserName, ItemNumber, ItemTitle, EndDate, HighBid, NumberBids, "
        "HighBidderName) VALUES "
        "('Ann', '100', 'Brass lamp', '01/15/24, 10:00:00 PST', '$10.00', '2', 'bob');"));

    const QByteArray rtf = MakeTemplate();
    const QString path = lw::tasks::PackingTemplatePath(lw::tasks::Side::Sales);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(rtf) != rtf.size()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return 1;
    }
    file.close();

    const lw::tasks::SelectedItem item{lw::tasks::Side::Sales, QStringLiteral("100"), QString()};
    bool built = true;
    const double build = lw::bench::BestOf(kRounds, [&] {
        QTextDocument document;
        built = built && lw::tasks::BuildPackingList(db, item, document).Built();
    });
    const double load = lw::bench::BestOf(kRounds, [&] {
        QTextDocument document;
        lw::richtext::LoadRtfFile(path, document);
    });
    if (!built) {
        std::fprintf(stderr, "the packing list was not built\n");
        return 1;
    }
    std::printf("template of %lld bytes\n", static_cast<long long>(rtf.size()));
    return lw::bench::Report("packing list from a 200 KB template", build, load, 3.0) ? 0 : 1;
}
