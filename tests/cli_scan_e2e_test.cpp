// SPDX-License-Identifier: GPL-3.0-or-later
// `lotwright-cli scan` as a rule author uses it: pages saved from a running
// lotwright-site, scanned with the shipped rules/site.pro, the printed
// records compared with the rows of the saved pages; item pages found in a
// folder by their address, missing ones passed over with a note.
#include <gtest/gtest.h>

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/support/site_pages.h"
#include "tests/support/site_process.h"
#include "tests/support/test_support.h"

using lw::test::BinDir;
using lw::test::ParseRows;
using lw::test::Rows;
using lw::test::SiteProcess;
using lw::test::SourceDir;
using lw::test::TempRoot;

namespace {

constexpr const char* kCgi = "/aw-cgi/eBayISAPI.dll";
// The address the shipped rules give the site's pages.
constexpr const char* kShippedBase = "http://127.0.0.1:8750";

struct ScanRun {
    int code = -1;
    std::vector<QJsonObject> records;
    QString err;
};

ScanRun Scan(const QString& protocol, const QString& page, const QString& pages = QString()) {
    QStringList args{QStringLiteral("scan"),
                     QStringLiteral("--rules"),
                     SourceDir() + QStringLiteral("/rules/site.pro"),
                     QStringLiteral("--protocol"),
                     protocol,
                     QStringLiteral("--page"),
                     page};
    if (!pages.isEmpty()) {
        args << QStringLiteral("--pages") << pages;
    }
    QProcess process;
    process.start(BinDir() + QStringLiteral("/lotwright-cli"), args);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    ScanRun run{process.exitCode(), {}, QString::fromUtf8(process.readAllStandardError())};
    for (const QByteArray& line : process.readAllStandardOutput().split('\n')) {
        if (line.isEmpty()) {
            continue;
        }
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(line, &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << line.toStdString();
        run.records.push_back(document.object());
    }
    return run;
}

std::string Field(const QJsonObject& record, const char* name) {
    return record.value(QLatin1String(name)).toString().toStdString();
}

class ScanE2e : public ::testing::Test {
protected:
    void SetUp() override {
        m_site = std::make_unique<SiteProcess>(
            QStringList{QStringLiteral("--seed"), QStringLiteral("6"),
                        QStringLiteral("--clock-factor"), QStringLiteral("0")});
        ASSERT_TRUE(m_site->Ok()) << m_site->Error();
        const auto answer = m_site->Post(
            kCgi, "MfcISAPICommand=MyEbay&first=Y&userid=demo_seller&pass=demo&dayssince=1");
        const size_t at = answer.body.find("&pass=");
        ASSERT_NE(at, std::string::npos);
        m_token = answer.body.substr(at + 6, answer.body.find('&', at + 6) - at - 7);
    }

    // Saves a page of the site under the root and returns its path.
    QString Save(const std::string& target, const QString& name) {
        const auto page = m_site->Get(target);
        EXPECT_EQ(page.status, 200) << target;
        m_pages[name] = page.body;
        return m_root.Write(name, QByteArray::fromStdString(page.body));
    }

    std::string Selling() const {
        return std::string(kCgi) + "?MyEbaySelling&userid=demo_seller&pass=" + m_token +
               "&days=30&skip=0";
    }

    TempRoot m_root;
    std::unique_ptr<SiteProcess> m_site;
    std::string m_token;
    std::map<QString, std::string> m_pages;
};

}  // namespace

TEST_F(ScanE2e, ASavedListPageYieldsOneRecordPerRowWithThePagesValues) {
    const QString page = Save(Selling(), QStringLiteral("selling.html"));
    const Rows rows = ParseRows(m_pages[QStringLiteral("selling.html")], "<!-- BEGIN SELLING -->",
                                "<!-- END SELLING -->");
    ASSERT_GE(rows.size(), 3u);

    const ScanRun run = Scan(QStringLiteral("Current Auctions eBay"), page);
    ASSERT_EQ(run.code, 0) << run.err.toStdString();
    ASSERT_EQ(run.records.size(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        const QJsonObject& record = run.records[i];
        SCOPED_TRACE(rows[i].at("item"));
        EXPECT_EQ(Field(record, "ItemNumber"), rows[i].at("item"));
        EXPECT_EQ(Field(record, "ItemTitle"), rows[i].at("title"));
        EXPECT_EQ(Field(record, "HighBidderName"), rows[i].at("bidder"));
        EXPECT_EQ(Field(record, "HighBid"), rows[i].at("price"));
        EXPECT_EQ(Field(record, "Quantity"), rows[i].at("qty"));
        EXPECT_EQ(Field(record, "NumberBids"),
                  rows[i].at("bids") == "0" ? "-" : rows[i].at("bids"));
        // The scanner prints what the page says; dates are converted only
        // when a row is written.
        EXPECT_EQ(Field(record, "EndDate"),
                  rows[i].count("ends") ? rows[i].at("ends") : rows[i].at("ended"));
        // Item 9 has no field: it is printed under its number.
        EXPECT_TRUE(record.contains(QStringLiteral("[9]")));
    }
}

TEST_F(ScanE2e, AncillaryPagesComeFromTheFolderByAddressAndMissingOnesArePassedOver) {
    const QString page = Save(Selling(), QStringLiteral("selling.html"));
    const Rows rows = ParseRows(m_pages[QStringLiteral("selling.html")], "<!-- BEGIN SELLING -->",
                                "<!-- END SELLING -->");
    ASSERT_GE(rows.size(), 4u);

    // Every item page but the last is saved; the lot with several winners
    // among them brings its winner rows too.
    QByteArray index;
    std::map<std::string, std::string> categories;
    size_t winners = 0;
    for (size_t i = 0; i + 1 < rows.size(); ++i) {
        const std::string item = rows[i].at("item");
        const QString name = QStringLiteral("pages/item%1.html").arg(QString::fromStdString(item));
        Save(std::string(kCgi) + "?ViewItem&item=" + item, name);
        const std::string& body = m_pages[name];
        for (const auto& cells : ParseRows(body, "<!-- BEGIN ITEM -->", "<!-- END ITEM -->")) {
            if (cells.count("cat")) {
                categories[item] = cells.at("cat");
            }
        }
        if (rows[i].at("bidder") == "Dutch Auction") {
            winners += ParseRows(body, "<!-- BEGIN WINNERS -->", "<!-- END WINNERS -->").size();
        }
        index += QByteArray(kShippedBase) + kCgi + "?ViewItem&item=" + item.c_str() + '\t' +
                 name.mid(6).toUtf8() + '\n';
    }
    m_root.Write(QStringLiteral("pages/index.txt"), index);
    ASSERT_GT(winners, 0u) << "the seed has a lot with several winners among the saved pages";

    const ScanRun run =
        Scan(QStringLiteral("Auction Details eBay"), page, m_root.File(QStringLiteral("pages")));
    ASSERT_EQ(run.code, 0) << run.err.toStdString();

    // Each main record follows the ancillary records its items fired.
    std::vector<QJsonObject> pending;
    size_t mains = 0;
    size_t winnerRecords = 0;
    for (const QJsonObject& record : run.records) {
        if (record.contains(QStringLiteral("@protocol"))) {
            pending.push_back(record);
            continue;
        }
        ASSERT_LT(mains, rows.size());
        const std::string item = rows[mains].at("item");
        EXPECT_EQ(Field(record, "ItemNumber"), item);
        if (categories.count(item)) {
            ASSERT_FALSE(pending.empty()) << item;
            EXPECT_EQ(Field(pending.front(), "@protocol"), "Auction Item eBay");
            EXPECT_EQ(Field(pending.front(), "ItemCategory"), categories[item]);
            EXPECT_EQ(Field(pending.front(), "ItemNumber"), item);
            for (size_t i = 1; i < pending.size(); ++i) {
                EXPECT_EQ(Field(pending[i], "@protocol").rfind("Auction Winner ", 0), 0u);
                EXPECT_EQ(Field(pending[i], "ItemNumber"), item);
                ++winnerRecords;
            }
        } else {
            EXPECT_TRUE(pending.empty()) << "no page was saved for " << item;
        }
        pending.clear();
        ++mains;
    }
    EXPECT_EQ(mains, rows.size());
    EXPECT_EQ(winnerRecords, winners);
    EXPECT_TRUE(run.err.contains(
        QStringLiteral("No saved page for ") + QLatin1String(kShippedBase) + QLatin1String(kCgi) +
        QStringLiteral("?ViewItem&item=") + QString::fromStdString(rows.back().at("item"))))
        << run.err.toStdString();
}

TEST_F(ScanE2e, AChangedPageAndAnUnknownProtocolAreToldWithTheirExitCodes) {
    m_site->Admin("break", "count=1&page=selling");
    const QString broken = Save(Selling(), QStringLiteral("broken.html"));
    const ScanRun changed = Scan(QStringLiteral("Current Auctions eBay"), broken);
    EXPECT_EQ(changed.code, 1);
    EXPECT_TRUE(changed.records.empty());
    EXPECT_TRUE(changed.err.contains(QStringLiteral("<!-- BEGIN SELLING -->")))
        << changed.err.toStdString();

    const QString page = Save(Selling(), QStringLiteral("selling.html"));
    const ScanRun unknown = Scan(QStringLiteral("Current Lots eBay"), page);
    EXPECT_EQ(unknown.code, 3);
    EXPECT_TRUE(unknown.err.contains(QStringLiteral("Current Lots eBay")));
}
