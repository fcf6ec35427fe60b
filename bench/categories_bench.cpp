// SPDX-License-Identifier: GPL-3.0-or-later
// Category search figures: a directory of 20,000 categories under 40
// top-level names, loaded from a category file into a fresh database, then a
// round of searches with any and all of their words. The floor is the least a
// search must do: a case-blind substring scan of the same names, already in
// memory, for the same words with the same rule (all words in one name or the
// other, or any word in either). Words of plain ASCII are what a user types
// nearly always; words with other letters take the directory's slower road
// and have their own line.
#include <QByteArray>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <cstdio>
#include <utility>
#include <vector>

#include "bench/bench_support.h"
#include "core/session.h"
#include "core/store.h"
#include "creator/category_directory.h"

namespace {

constexpr int kTopLevel = 40;
constexpr int kPerTopLevel = 500;
constexpr int kRounds = 5;

const char* const kStyles[] = {"Vintage",     "Antique", "Modern",    "Art Deco",   "Victorian",
                               "Mid-Century", "Folk",    "Primitive", "Industrial", "Rustic"};
const char* const kMaterials[] = {"Brass",     "Glass",     "Oak", "Silver",   "Pewter",
                                  "Porcelain", "Cast Iron", "Tin", "Bakelite", "Walnut"};
const char* const kThings[] = {"Lamps", "Clocks", "Boxes",   "Figurines", "Signs",
                               "Toys",  "Frames", "Mirrors", "Jewelry",   "Tools"};
const char* const kTopNames[] = {"Antiques", "Collectibles", "Home",  "Garden", "Sports",
                                 "Toys",     "Music",        "Books", "Art",    "Crafts"};

struct Query {
    const char* text;
    bool allTerms;
};

const Query kAsciiQueries[] = {
    {"lamps", false},           {"brass lamps", true}, {"brass lamps", false},
    {"victorian oak", true},    {"mirrors 7", false},  {"cast iron toys", true},
    {"nothing-like-it", false}, {"deco", false},       {"collectibles 3", true},
    {"SILVER frames", true},
};
const Query kOtherQueries[] = {
    {"caf\u00e9", false},
    {"CAF\u00c9 lamps", true},
};

QByteArray CategoryFile() {
    QByteArray file;
    int number = 100000;
    for (int t = 0; t < kTopLevel; ++t) {
        file +=
            "[" + QByteArray(kTopNames[t % 10]) + " " + QByteArray::number(t / 10 + 1) + "]\r\n";
        for (int i = 0; i < kPerTopLevel; ++i) {
            const int k = t * kPerTopLevel + i;
            // One name in fifty has a letter beyond ASCII.
            file += QByteArray(kStyles[k % 10]) + " " + kMaterials[(k / 10) % 10] + " " +
                    kThings[(k / 100) % 10] + (k % 50 == 0 ? " Caf\xc3\xa9" : "") + " " +
                    QByteArray::number(i % 37) + "=" + QByteArray::number(++number) + "\r\n";
        }
        file += "\r\n";
    }
    return file;
}

bool Holds(const QString& column, const QStringList& terms, bool allTerms) {
    for (const QString& term : terms) {
        if (column.contains(term, Qt::CaseInsensitive) != allTerms) {
            return !allTerms;
        }
    }
    return allTerms;
}

template <size_t N>
std::pair<double, double> Time(lw::core::Database& db,
                               const std::vector<std::pair<QString, QString>>& names,
                               const Query (&queries)[N], qint64* found, qint64* floorFound) {
    const double seconds = lw::bench::BestOf(kRounds, [&] {
        *found = 0;
        for (const Query& query : queries) {
            *found += static_cast<qint64>(
                lw::creator::SearchCategories(db, QString::fromUtf8(query.text), query.allTerms)
                    .matches.size());
        }
    });
    const double floorSeconds = lw::bench::BestOf(kRounds, [&] {
        *floorFound = 0;
        for (const Query& query : queries) {
            const QStringList terms = QString::fromUtf8(query.text).split(u' ');
            for (const auto& [meta, name] : names) {
                *floorFound +=
                    Holds(meta, terms, query.allTerms) || Holds(name, terms, query.allTerms);
            }
        }
    });
    return {seconds, floorSeconds};
}

}  // namespace

int main() {
    QTemporaryDir dir;
    const QString storePath = dir.filePath(QStringLiteral("categories.db"));
    lw::core::Database db = lw::core::OpenOrCreateStore(storePath, QStringLiteral(LW_SOURCE_DIR));
    const QString filePath = dir.filePath(QStringLiteral("category.pro"));
    QFile file(filePath);
    if (!file.open(QIODevice::WriteOnly) || file.write(CategoryFile()) < 0) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(filePath));
        return 1;
    }
    file.close();
    const lw::creator::CategoryFileLoad load = lw::creator::ReadCategoryFile(db, filePath);
    if (load.rows != kTopLevel * kPerTopLevel) {
        std::fprintf(stderr, "the directory holds %lld categories, not %d\n",
                     static_cast<long long>(load.rows), kTopLevel * kPerTopLevel);
        return 1;
    }

    std::vector<std::pair<QString, QString>> names;
    for (const QString& meta : lw::creator::TopLevelNames(db)) {
        for (const lw::creator::CategoryEntry& entry : lw::creator::CategoriesUnder(db, meta)) {
            names.emplace_back(entry.metaName, entry.name);
        }
    }

    qint64 found = 0;
    qint64 floorFound = 0;
    const auto [ascii, asciiFloor] = Time(db, names, kAsciiQueries, &found, &floorFound);
    std::printf("%lld categories; %zu searches of ASCII words found %lld (floor %lld)\n",
                static_cast<long long>(names.size()), std::size(kAsciiQueries),
                static_cast<long long>(found), static_cast<long long>(floorFound));
    bool ok = found == floorFound;
    ok = lw::bench::Report("categories: 20,000 x 10 searches, ASCII words", ascii, asciiFloor,
                           2.0) &&
         ok;
    const auto [other, otherFloor] = Time(db, names, kOtherQueries, &found, &floorFound);
    std::printf("%zu searches of words beyond ASCII found %lld (floor %lld)\n",
                std::size(kOtherQueries), static_cast<long long>(found),
                static_cast<long long>(floorFound));
    ok = found == floorFound && ok;
    ok = lw::bench::Report("categories: 20,000 x 2 searches, other letters", other, otherFloor,
                           2.0) &&
         ok;
    return ok ? 0 : 1;
}
