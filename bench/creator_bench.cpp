// SPDX-License-Identifier: GPL-3.0-or-later
// Listing figures: BuildListing of the style that holds every token, for a
// document with every part on and a description of 100 KB of HTML, file read
// and block cut included. The floor is the least any listing needs: the same
// template text already in memory and one plain, case-sensitive replacement
// pass for each of its tokens, with the same texts, over the same buffer.
#include <QFile>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <cstdio>
#include <optional>

#include "bench/bench_support.h"
#include "core/rule_text.h"
#include "creator/creator_document.h"
#include "creator/listing_html.h"
#include "tests/support/creator_sample.h"
#include "update/rules.h"

using namespace lw::creator;

namespace {

constexpr int kRounds = 9;
constexpr int kBuildsPerRound = 20;
constexpr qsizetype kDescriptionSize = 100 * 1024;

QString Description() {
    QString text;
    for (int n = 0; text.size() < kDescriptionSize; ++n) {
        text += QStringLiteral(
                    "<P>Lot %1: a brass lantern with its <B>original</B> glass, "
                    "some dents &amp; a firm handle; <I>see the pictures</I>.</P>\r\n")
                    .arg(n);
    }
    return text;
}

}  // namespace

int main() {
    const QString source = QStringLiteral(LW_SOURCE_DIR);
    lw::update::RuleStore rules;
    for (const auto& [store, file] : {std::pair{lw::update::kSiteStore, "site.pro"},
                                      std::pair{lw::update::kInfoStore, "info.pro"}}) {
        const std::optional<QString> text =
            lw::core::LoadRuleFile(source + QStringLiteral("/rules/") + QLatin1String(file));
        if (!text) {
            std::fprintf(stderr, "cannot read rules/%s\n", file);
            return 1;
        }
        rules.SetText(store, *text + QStringLiteral("\r\n\r\n"));
    }
    CreatorLists lists;
    lists.colours = ColourNames();
    lists.cmbFontSize = QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")};
    lists.cmbFontType = FontList({});
    lists.cmbPayPalLogo = QStringList{QStringLiteral("none"), QStringLiteral("line")};
    CreatorDocument doc = lw::test::FullSampleDocument(lists);
    doc.txtDescription = Description();
    const QString style = QStringLiteral("Professional Complete");
    const QString templates = source + QStringLiteral("/data/templates/auctions");
    const ListingContext context{templates, &rules, QStringLiteral("darcy_sells")};

    qsizetype built = 0;
    const double seconds = lw::bench::BestOf(kRounds, [&] {
        for (int i = 0; i < kBuildsPerRound; ++i) {
            const ListingResult listing = BuildListing(style, doc, lists, context);
            built = listing.problem.isEmpty() ? listing.html.size() : -1;
        }
    });
    if (built < kDescriptionSize) {
        std::fprintf(stderr, "the listing was not built\n");
        return 1;
    }

    // The template's tokens in the order they first stand, each with a text of
    // its own size class: the description for its token, a short text else.
    QFile file(templates + QStringLiteral("/") + StyleFileName(style));
    file.open(QIODevice::ReadOnly);
    const QString templateText = QString::fromUtf8(file.readAll());
    QStringList tokens;
    const QRegularExpression token(QStringLiteral("\\[[A-Za-z]+(\\([0-9]\\))?[-+0-9]*\\]"));
    for (auto it = token.globalMatch(templateText); it.hasNext();) {
        const QString found = it.next().captured();
        if (!tokens.contains(found)) {
            tokens << found;
        }
    }
    qsizetype floorSize = 0;
    const double floorSeconds = lw::bench::BestOf(kRounds, [&] {
        for (int i = 0; i < kBuildsPerRound; ++i) {
            QString buffer = templateText;
            for (const QString& each : tokens) {
                buffer.replace(each, each == u"[txtDescription]" ? doc.txtDescription
                                                                 : QStringLiteral("text"));
            }
            floorSize = buffer.size();
        }
    });

    std::printf(
        "%s: %lld tokens, description %lld characters, listing %lld characters "
        "(floor %lld)\n",
        qPrintable(style), static_cast<long long>(tokens.size()),
        static_cast<long long>(doc.txtDescription.size()), static_cast<long long>(built),
        static_cast<long long>(floorSize));
    const bool ok =
        lw::bench::Report("BuildListing: 100 KB description, every token",
                          seconds / kBuildsPerRound, floorSeconds / kBuildsPerRound, 3.0);
    return ok ? 0 : 1;
}
