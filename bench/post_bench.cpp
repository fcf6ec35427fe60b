// SPDX-License-Identifier: GPL-3.0-or-later
// Direct post figure: 200 listings of the creator posted one after another
// against the demo marketplace on loopback, each by PostAuction (its row
// read, its slots filled, the review post, the confirming post, the new
// item's Auctions row written). The floor is the same two posts made with
// bare libcurl over one kept connection: the same bodies, built beforehand,
// the confirming one from the review page's hidden fields. Every post lists
// a new item, so each round posts to a larger market.
// Options: --listings N (default 200), --rounds N (default 9).
#include <curl/curl.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "core/rule_text.h"
#include "core/session.h"
#include "core/store.h"
#include "core/ui_port.h"
#include "creator/category_directory.h"
#include "creator/direct_post.h"
#include "tests/support/site_process.h"
#include "update/rules.h"
#include "update/site_session.h"

namespace {

size_t Keep(char* data, size_t size, size_t count, void* answer) {
    static_cast<std::string*>(answer)->append(data, size * count);
    return size * count;
}

// One form post over the kept connection of curl; the answer.
std::string Post(CURL* curl, const std::string& url, const std::string& body) {
    std::string answer;
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, Keep);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer);
    return curl_easy_perform(curl) == CURLE_OK ? answer : std::string();
}

QString Rule(const lw::update::RuleStore& rules, const char* server, const char* path) {
    const QString section = QStringLiteral("Auction Post");
    return rules.LookupKey(section, QLatin1String(server), lw::update::kSiteStore).trimmed() +
           rules.LookupKey(section, QLatin1String(path), lw::update::kSiteStore).trimmed();
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    int listings = 200;
    int rounds = 9;
    const QStringList args = QCoreApplication::arguments();
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        if (args[i] == QLatin1String("--listings")) {
            listings = args[i + 1].toInt();
        } else if (args[i] == QLatin1String("--rounds")) {
            rounds = args[i + 1].toInt();
        }
    }
    qputenv("LOTWRIGHT_KEYRING", "off");

    lw::test::SiteProcess site({QStringLiteral("--seed"), QStringLiteral("5"),
                                QStringLiteral("--clock-factor"), QStringLiteral("0")});
    if (!site.Ok()) {
        std::fprintf(stderr, "post_bench: %s\n", site.Error().c_str());
        return 1;
    }

    QTemporaryDir dir;
    lw::core::SilentUi ui;
    lw::core::ResetSession(&ui);
    QString error;
    if (!lw::core::SetupDirectories(dir.path(), &error)) {
        std::fprintf(stderr, "post_bench: %s\n", qPrintable(error));
        return 1;
    }
    lw::core::CurrentSession().ShippedDir = QStringLiteral(LW_SOURCE_DIR);
    lw::core::Database db = lw::core::OpenStore();
    lw::core::AddUser(db, {QStringLiteral("Demo"), QStringLiteral("demo_seller"),
                           QStringLiteral("demo"), QString()});
    lw::core::SetCurrentUser(QStringLiteral("Demo"));
    lw::creator::PrepareCategoryDirectory(db, ui);

    lw::update::RuleStore rules;
    for (const auto& [store, file] : {std::pair{lw::update::kSiteStore, "site.pro"},
                                      std::pair{lw::update::kInfoStore, "info.pro"}}) {
        const std::optional<QString> text =
            lw::core::LoadRuleFile(QStringLiteral(LW_SOURCE_DIR "/rules/") + QLatin1String(file));
        if (!text) {
            std::fprintf(stderr, "post_bench: cannot read %s\n", file);
            return 1;
        }
        rules.SetText(store,
                      QString(*text).replace(QStringLiteral("http://127.0.0.1:8750"), site.Base()) +
                          QStringLiteral("\r\n\r\n"));
    }

    // The listings: old auctions of the creator, each its own title.
    std::vector<qint64> ids;
    lw::core::Statement insert = db.Prepare(QStringLiteral(
        "INSERT INTO AuctionCreator (UserName, ACType, AuctionName, AuctionHTML, "
        "eBayAuctionTitle, eBayCategory, ItemLocation, MinimumBid, Quantity, Shipping, "
        "eBayDuration, eBayOptionalSettings, eBayPaymentPrefs, eBayShipPrefs) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    const QString html =
        QStringLiteral("<P>A brass ship's lantern with its <B>original</B> red glass.</P>")
            .repeated(20);
    for (int n = 1; n <= listings; ++n) {
        insert.Reset();
        insert.BindAll(QStringLiteral("Demo"), QStringLiteral("Old Auction"),
                       QStringLiteral("Lantern %1").arg(n), html,
                       QStringLiteral("Brass ship's lantern no. %1").arg(n), QStringLiteral("401"),
                       QStringLiteral("Albany, NY"), 7.25, 1, 3.5, QStringLiteral("7"),
                       QStringLiteral("11~"), QStringLiteral("18~20~"), QStringLiteral("29~"));
        insert.Run();
        ids.push_back(db.LastInsertId());
    }

    // The floor's bodies, as the post builds them.
    std::vector<std::string> bodies;
    for (const qint64 id : ids) {
        const auto row = lw::creator::CreatorRecord::Read(db, QStringLiteral("Demo"), id);
        lw::creator::PostSlots slots = lw::creator::LoadPostTable(rules);
        lw::creator::FillPostSlots(slots, *row,
                                   lw::creator::ReadSiteLogin(db, QStringLiteral("Demo")),
                                   lw::creator::DescriptionWithFooter(*row, rules), {});
        bodies.push_back(lw::creator::PostBody(slots).toStdString());
    }
    const std::string review = Rule(rules, "Server", "url").toStdString();
    const std::string confirm = Rule(rules, "Server2", "url2").toStdString();
    const QString action = rules.LookupKey(QStringLiteral("Auction Post"), QStringLiteral("Action"),
                                           lw::update::kSiteStore);

    // The rounds of the two alternate, so that a busy moment of the machine
    // falls on both alike.
    bool failed = false;
    CURL* curl = curl_easy_init();
    // As the program's posts do: no wait for a "100 Continue".
    curl_slist* headers = curl_slist_append(nullptr, "Expect:");
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    double program = 1e300;
    double floor = 1e300;
    for (int round = 0; round < rounds; ++round) {
        program = std::min(program, lw::bench::BestOf(1, [&] {
                               // One poster for the run, as the outbox posts its queue.
                               lw::creator::AuctionPoster poster(db, rules, ui);
                               for (const qint64 id : ids) {
                                   const lw::creator::PostOutcome outcome =
                                       poster.Post(id, lw::creator::PostRoute::Direct);
                                   failed = failed || outcome.itemNumber.isEmpty();
                               }
                           }));
        floor = std::min(
            floor, lw::bench::BestOf(1, [&] {
                for (const std::string& body : bodies) {
                    const std::string page = Post(curl, review, body);
                    const std::string fields =
                        lw::update::ExtractHiddenFields(QString::fromStdString(page), action)
                            .toStdString();
                    failed =
                        failed || Post(curl, confirm, fields).find("Your new item number is") ==
                                      std::string::npos;
                }
            }));
    }
    curl_slist_free_all(headers);
    curl_easy_cleanup(curl);
    if (failed) {
        std::fprintf(stderr, "post_bench: a post did not list its item\n");
        return 1;
    }
    std::printf("%d listings, best of %d rounds\n", listings, rounds);
    return lw::bench::Report("direct post, " + std::to_string(listings) + " listings in a row",
                             program, floor, 1.3)
               ? 0
               : 1;
}
