// SPDX-License-Identifier: GPL-3.0-or-later
// The page scanner over a 5 MB selling page shaped like the demo site's list
// (one table row of ten cells per sale), with the shipped rules' own sales
// protocol. The floor is a single case-blind pass over the same text that
// finds the same markers in the same sequence and does nothing with them:
// the lower-case copy and the byte searches that no scanner can do without.
#include <QByteArray>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "core/rule_text.h"
#include "update/protocol.h"
#include "update/rules.h"
#include "update/scanner.h"

namespace {

using lw::update::PageScanner;
using lw::update::PageText;
using lw::update::ProtocolRecord;

const qsizetype kPageSize = 5 * 1024 * 1024;
const char* const kProtocol = "Current Auctions eBay";

QByteArray SellingPage() {
    const char* const titles[] = {"Early record album, restored", "Large quilt, near mint",
                                  "Vintage atlas, 1920s",         "Painted lantern, working",
                                  "Tin toy robot &amp; box",      "Silver thimble set"};
    const char* const bidders[] = {"o&#39;malley_antiques", "birch_finds", "kestrel_coins",
                                   "maple_attic", "-"};
    QByteArray page =
        "<html><head><title>My Selling</title></head><body>\r\n"
        "<!-- BEGIN SELLING -->\r\n<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\r\n"
        "<tr bgcolor=\"#CCCCFF\"><th>Item</th><th>Title</th><th>High bidder</th><th>Start</th>"
        "<th>Current</th><th>Reserve</th><th>Qty</th><th>Bids</th><th>Time left</th>"
        "<th>Ends</th></tr>\r\n";
    page.reserve(kPageSize + 1024);
    for (int n = 0; page.size() < kPageSize; ++n) {
        const QByteArray item = QByteArray::number(1000000 + n);
        const QByteArray link = "<a href=\"/aw-cgi/eBayISAPI.dll?ViewItem&item=" + item + "\">";
        const QByteArray price =
            "$" + QByteArray::number(1 + n % 97) + "." + QByteArray::number(10 + n % 90);
        page += "<tr>\r\n<td class=\"item\">" + link + item + "</a></td>\r\n<td class=\"title\">" +
                link + titles[n % std::size(titles)] + " #" + QByteArray::number(n) +
                "</a></td>\r\n<td class=\"bidder\">" + bidders[n % std::size(bidders)] +
                "</td>\r\n<td class=\"start\">$1.00</td>\r\n<td class=\"price\"><b>" + price +
                "</b></td>\r\n<td class=\"reserve\">-</td>\r\n<td class=\"qty\">1</td>\r\n"
                "<td class=\"bids\">" +
                QByteArray::number(n % 7) + "</td>\r\n<td class=\"left\">" +
                QByteArray::number(n % 9) + "d " + QByteArray::number(n % 24) +
                "h 05m</td>\r\n<td class=\"ends\">12/0" + QByteArray::number(1 + n % 9) +
                "/26 13:30:21 PST</td>\r\n</tr>\r\n";
    }
    return page + "</table>\r\n<!-- END SELLING -->\r\n</body></html>\r\n";
}

QByteArray LowerNeedle(const QString& marker) {
    return marker.toUtf8().toLower();
}

}  // namespace

int main() {
    const auto text =
        lw::core::LoadRuleFile(QStringLiteral(LW_SOURCE_DIR) + QStringLiteral("/rules/site.pro"));
    if (!text) {
        std::fprintf(stderr, "cannot read rules/site.pro\n");
        return 1;
    }
    lw::update::RuleStore rules;
    rules.SetText(lw::update::kSiteStore, *text + QStringLiteral("\r\n\r\n"));
    const ProtocolRecord protocol =
        lw::update::LoadRunProtocol(rules, QString::fromUtf8(kProtocol));
    if (protocol.items.empty()) {
        std::fprintf(stderr, "rules/site.pro holds no [%s]\n", kProtocol);
        return 1;
    }
    const QByteArray bytes = SellingPage();

    size_t records = 0;
    const double scan = lw::bench::BestOf(5, [&] {
        const PageText page(bytes);
        PageScanner scanner(protocol);
        lw::update::ScanState state;
        lw::update::ScanLists lists;
        lw::update::ScanHooks hooks;
        hooks.pumpEvents = [] {};
        records = 0;
        if (scanner.SetUp(page)) {
            while (scanner.ScanRecord(state, lists, hooks) == PageScanner::RecordEnd::Complete) {
                ++records;
                lists.ClearRecord();
            }
        }
    });

    // The floor: the same markers found in sequence, case-blind, nothing more.
    std::vector<QByteArray> markers;
    for (const lw::update::ItemRule& item : protocol.items) {
        markers.push_back(LowerNeedle(item.start));
    }
    const QByteArray gStart = LowerNeedle(protocol.gStart);
    const QByteArray gEnd = LowerNeedle(protocol.gEnd);
    size_t found = 0;
    const double floor = lw::bench::BestOf(5, [&] {
        const QByteArray lower = bytes.toLower();
        const char* data = lower.constData();
        const auto find = [&](const QByteArray& needle, qsizetype from, qsizetype end) {
            const void* hit = memmem(data + from, static_cast<size_t>(end - from),
                                     needle.constData(), static_cast<size_t>(needle.size()));
            return hit == nullptr ? qsizetype(-1) : static_cast<const char*>(hit) - data;
        };
        found = 0;
        const qsizetype begin = find(gStart, 0, lower.size());
        const qsizetype end = begin < 0 ? -1 : find(gEnd, begin, lower.size());
        if (end < 0) {
            return;
        }
        qsizetype at = begin;
        for (;;) {
            size_t item = 0;
            for (; item < markers.size(); ++item) {
                const qsizetype pos = find(markers[item], at, end);
                if (pos < 0) {
                    break;
                }
                at = pos + markers[item].size();
            }
            if (item < markers.size()) {
                break;
            }
            ++found;
        }
    });

    if (found != records) {
        std::fprintf(stderr, "the floor found %zu records, the scanner %zu\n", found, records);
        return 1;
    }
    const bool ok = lw::bench::Report("scanner, 5 MB selling page", scan, floor, 3.0);
    std::printf("%-44s %10.0f records/s  (%zu records, %.1f MB)\n", "scanner throughput",
                static_cast<double>(records) / scan, records,
                static_cast<double>(bytes.size()) / (1024.0 * 1024.0));
    return ok ? 0 : 1;
}
