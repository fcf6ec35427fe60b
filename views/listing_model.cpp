// SPDX-License-Identifier: GPL-3.0-or-later
// The list model: cell texts, colours, heads and the head-click sorts of the
// sales and bids lists. Sorting reorders the rows in memory only: the query
// order and the stored page bounds stay as they are.
#include "views/listing_model.h"

#include <algorithm>
#include <numeric>
#include <optional>

#include "core/text.h"

namespace lw::views {

namespace {

const QString& NaText() {
    static const QString text = QStringLiteral("n/a");
    return text;
}

// Case-blind as the grid's text compare is; equal texts fall back to the
// case-sensitive order so that a sort is the same on every run.
int CompareNoCase(const QString& a, const QString& b) {
    const int blind = QString::compare(a, b, Qt::CaseInsensitive);
    return blind != 0 ? blind : QString::compare(a, b, Qt::CaseSensitive);
}

// Column 0's generic rule: two numbers compare as numbers, a number comes
// before a text, two texts compare as texts.
int CompareGeneric(const std::optional<double>& an, const QString& a,
                   const std::optional<double>& bn, const QString& b) {
    if (an && bn) {
        if (*an != *bn) {
            return *an < *bn ? -1 : 1;
        }
        return 0;
    }
    if (an || bn) {
        return an ? -1 : 1;
    }
    return QString::compare(a, b, Qt::CaseSensitive);
}

template <class T>
int CompareValues(const T& a, const T& b) {
    if (a < b) {
        return -1;
    }
    return b < a ? 1 : 0;
}

}  // namespace

QColor ColourOf(CellColour colour) {
    switch (colour) {
        case CellColour::Green:
            return QColor(0, 128, 0);
        case CellColour::Red:
            return QColor(128, 0, 0);
        case CellColour::None:
            break;
    }
    return QColor();
}

QString NotAvailable() {
    return NaText();
}

QString DutchMark() {
    return QStringLiteral("*D*");
}

ListingModel::ListingModel(QObject* parent) : QAbstractTableModel(parent) {}

int ListingModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ListingModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant ListingModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= kColumnCount) {
        return QVariant();
    }
    switch (role) {
        case Qt::DisplayRole:
            return Text(index.row(), index.column());
        case Qt::ForegroundRole: {
            if (index.column() != kHighBid) {
                return QVariant();
            }
            const CellColour colour = m_rows[static_cast<size_t>(index.row())].colour;
            return colour == CellColour::None ? QVariant() : QVariant(ColourOf(colour));
        }
        default:
            return QVariant();
    }
}

QVariant ListingModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    if (role == Qt::DisplayRole) {
        return Heading(section, m_timeLeft);
    }
    if (role == Qt::TextAlignmentRole) {
        return QVariant(Qt::AlignCenter);
    }
    return QVariant();
}

QString ListingModel::Heading(int column, bool timeLeft) {
    switch (column) {
        case kItem:
            return QStringLiteral("Item #");
        case kDescription:
            return QStringLiteral("Description");
        case kBids:
            return QStringLiteral("Bids");
        case kHighBid:
            return QStringLiteral("High Bid");
        case kEnd:
            return timeLeft ? QStringLiteral("Time Left") : QStringLiteral("Ended");
        default:
            return QString();
    }
}

int ListingModel::ColumnWidthTwips(int column) {
    switch (column) {
        case kDescription:
            return 4400;
        case kBids:
            return 600;
        case kHighBid:
            return 1100;
        default:
            return 0;
    }
}

QString ListingModel::EndHeading() const {
    return Heading(kEnd, m_timeLeft);
}

QString ListingModel::EndLabel() const {
    return m_timeLeft ? QStringLiteral("Ends:") : QStringLiteral("Ended:");
}

QString ListingModel::Text(int row, int column) const {
    if (row < 0 || row >= rowCount()) {
        return QString();
    }
    const ListingRow& r = m_rows[static_cast<size_t>(row)];
    switch (column) {
        case kItem:
            return r.item;
        case kDescription:
            return r.title;
        case kBids:
            return r.bids;
        case kHighBid:
            return r.highBid;
        case kEnd:
            return EndText(row);
        default:
            return QString();
    }
}

QString ListingModel::EndText(int row) const {
    const auto at = static_cast<size_t>(row);
    const ListingRow& r = m_rows[at];
    if (r.endNull) {
        return NaText();
    }
    if (!m_timeLeft) {
        const qsizetype comma = r.endDate.indexOf(u',');
        return comma < 0 ? r.endDate : r.endDate.left(comma);
    }
    if (!m_timeLeftDone[at]) {
        m_timeLeftCache[at] = core::TimeLeftText(r.endDate, m_siteCorrection, m_now);
        m_timeLeftDone[at] = true;
    }
    return m_timeLeftCache[at];
}

int ListingModel::FindRow(const QString& text, int from) const {
    const QString wanted = text.trimmed();
    const int count = rowCount();
    if (wanted.isEmpty() || count == 0) {
        return -1;
    }
    const int start = (from >= 0 && from < count) ? from : 0;
    for (int step = 0; step < count; ++step) {
        const int row = (start + step) % count;
        const ListingRow& r = m_rows[static_cast<size_t>(row)];
        if (r.item.trimmed().compare(wanted, Qt::CaseInsensitive) == 0 ||
            r.title.contains(wanted, Qt::CaseInsensitive)) {
            return row;
        }
    }
    return -1;
}

bool ListingModel::IsDutchRow(int row) const {
    return row >= 0 && row < rowCount() && m_rows[static_cast<size_t>(row)].bids == DutchMark();
}

CellColour ListingModel::HighBidColour(int row) const {
    return row >= 0 && row < rowCount() ? m_rows[static_cast<size_t>(row)].colour
                                        : CellColour::None;
}

double ListingModel::HighBidValue(int row) const {
    return row >= 0 && row < rowCount() ? m_rows[static_cast<size_t>(row)].highBidValue : 0;
}

void ListingModel::SetRows(std::vector<ListingRow> rows, bool timeLeft, const QDateTime& now,
                           const QString& siteCorrection) {
    beginResetModel();
    m_rows = std::move(rows);
    m_timeLeft = timeLeft;
    m_now = now;
    m_siteCorrection = siteCorrection;
    m_timeLeftCache.assign(m_rows.size(), QString());
    m_timeLeftDone.assign(m_rows.size(), false);
    endResetModel();
    // The head of column 4 follows the group.
    Q_EMIT headerDataChanged(Qt::Horizontal, kEnd, kEnd);
}

void ListingModel::Clear(bool timeLeft) {
    SetRows({}, timeLeft, m_now, m_siteCorrection);
}

void ListingModel::RefreshTimeLeft(const QHash<QString, End>& ends, const QDateTime& now,
                                   const QString& siteCorrection) {
    m_now = now;
    m_siteCorrection = siteCorrection;
    for (ListingRow& row : m_rows) {
        const auto found = ends.constFind(row.item);
        if (found == ends.cend()) {
            continue;
        }
        row.endDate = found->endDate;
        row.endNull = found->endNull;
    }
    std::fill(m_timeLeftDone.begin(), m_timeLeftDone.end(), false);
    if (!m_rows.empty()) {
        Q_EMIT dataChanged(index(0, kEnd), index(rowCount() - 1, kEnd), {Qt::DisplayRole});
    }
}

int ListingModel::SortDirection(int column) const {
    return column >= 0 && column < kColumnCount ? m_directions[static_cast<size_t>(column)] : 0;
}

void ListingModel::SetSortState(int column, int direction) {
    if (column < 0 || column >= kColumnCount) {
        return;
    }
    m_directions[static_cast<size_t>(column)] = direction;
    m_sortColumn = column;
}

void ListingModel::HeadClick(int column) {
    if (column < 0 || column >= kColumnCount) {
        return;
    }
    const int next = SortDirection(column) == 2 ? 1 : 2;
    SetSortState(column, next);
    Sort(column, next);
}

int ListingModel::ColumnAtHeadX(int xTwips, int gridWidthTwips) {
    if (xTwips >= 0 && xTwips <= 960) {
        return kItem;
    }
    if (xTwips >= 1000 && xTwips <= 5190) {
        return kDescription;
    }
    if (xTwips >= 5400 && xTwips <= 5925) {
        return kBids;
    }
    if (xTwips >= 6000 && xTwips <= 6870) {
        return kHighBid;
    }
    if (xTwips >= 6871 && xTwips <= gridWidthTwips) {
        return kEnd;
    }
    return -1;
}

void ListingModel::Sort(int column, int direction) {
    if (column < 0 || column >= kColumnCount || (direction != 1 && direction != 2)) {
        return;
    }
    const size_t n = m_rows.size();
    std::vector<int> order(n);
    std::iota(order.begin(), order.end(), 0);
    // Keys are worked out once per row; cmp(a, b) < 0 puts row a first.
    auto sortBy = [&order](auto cmp) {
        std::stable_sort(order.begin(), order.end(), [&cmp](int a, int b) {
            return cmp(static_cast<size_t>(a), static_cast<size_t>(b)) < 0;
        });
    };
    switch (column) {
        case kItem: {
            std::vector<std::optional<double>> numbers;
            numbers.reserve(n);
            for (const ListingRow& r : m_rows) {
                numbers.push_back(core::TextToNumber(r.item));
            }
            const int sign = direction == 1 ? 1 : -1;
            sortBy([&](size_t a, size_t b) {
                return sign *
                       CompareGeneric(numbers[a], m_rows[a].item, numbers[b], m_rows[b].item);
            });
            break;
        }
        case kDescription: {
            std::vector<QString> folded;
            folded.reserve(n);
            for (const ListingRow& r : m_rows) {
                folded.push_back(r.title.toCaseFolded());
            }
            const int sign = direction == 2 ? 1 : -1;
            sortBy([&](size_t a, size_t b) {
                const int blind = QString::compare(folded[a], folded[b], Qt::CaseSensitive);
                return sign *
                       (blind != 0 ? blind : CompareNoCase(m_rows[a].title, m_rows[b].title));
            });
            break;
        }
        case kBids:
        case kHighBid: {
            std::vector<double> values;
            values.reserve(n);
            for (const ListingRow& r : m_rows) {
                values.push_back(column == kBids ? core::Val(r.bids) : r.highBidValue);
            }
            const int sign = direction == 2 ? -1 : 1;
            sortBy([&](size_t a, size_t b) { return sign * CompareValues(values[a], values[b]); });
            break;
        }
        case kEnd: {
            // The texts as the column shows them: "2d 03h 10m" comes before
            // "9h 05m", and "12/30/99" after "01/05/00".
            std::vector<QString> texts;
            std::vector<QString> folded;
            texts.reserve(n);
            folded.reserve(n);
            for (size_t row = 0; row < n; ++row) {
                texts.push_back(EndText(static_cast<int>(row)));
                folded.push_back(texts.back().toCaseFolded());
            }
            const int sign = direction == 1 ? 1 : -1;
            sortBy([&](size_t a, size_t b) {
                const int blind = QString::compare(folded[a], folded[b], Qt::CaseSensitive);
                return sign * (blind != 0 ? blind : CompareNoCase(texts[a], texts[b]));
            });
            break;
        }
        default:
            return;
    }

    Q_EMIT layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    std::vector<int> newRowOf(n);
    for (size_t i = 0; i < n; ++i) {
        newRowOf[static_cast<size_t>(order[i])] = static_cast<int>(i);
    }
    std::vector<ListingRow> rows;
    rows.reserve(n);
    std::vector<QString> cache;
    cache.reserve(n);
    std::vector<bool> done;
    done.reserve(n);
    for (const int from : order) {
        const auto at = static_cast<size_t>(from);
        rows.push_back(std::move(m_rows[at]));
        cache.push_back(std::move(m_timeLeftCache[at]));
        done.push_back(m_timeLeftDone[at]);
    }
    m_rows = std::move(rows);
    m_timeLeftCache = std::move(cache);
    m_timeLeftDone = std::move(done);
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& old : before) {
        after.push_back(index(newRowOf[static_cast<size_t>(old.row())], old.column()));
    }
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

}  // namespace lw::views
