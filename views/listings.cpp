// SPDX-License-Identifier: GPL-3.0-or-later
// The sales and bids lists: their queries, pages, captions, totals and the
// time-left refresh. Every value is bound; the only words that enter the SQL
// text are the sort column and direction of the view settings, and those
// only after they were found among the columns of Auctions.
#include "views/listings.h"

#include <QStringList>

#include "core/settings.h"
#include "core/text.h"

namespace lw::views {

namespace {

using core::Database;
using core::Statement;

const QString kApp = QStringLiteral("Tolvane");
const QString kSection = QStringLiteral("Options");

QString Option(const QString& key, const QString& defaultValue) {
    return core::GetSetting(kApp, kSection, key, defaultValue);
}

qint64 OptionNumber(const QString& key, qint64 defaultValue) {
    return static_cast<qint64>(core::Val(Option(key, QString::number(defaultValue))));
}

// The settings of one group of sales.
struct SalesKeys {
    QString interval;
    QString start;
    QString end;
    QString order;
    QString order2;
    QString orderDefault;
    QString order2Default;
};

const SalesKeys& KeysOf(Group group) {
    static const SalesKeys current{QStringLiteral("CAViewInterval"),
                                   QStringLiteral("ACViewStart"),
                                   QStringLiteral("ACViewEnd"),
                                   QStringLiteral("CAViewOrder"),
                                   QStringLiteral("CAViewOrder2"),
                                   QStringLiteral("EndDate"),
                                   QStringLiteral("DESC")};
    static const SalesKeys archived{QStringLiteral("AAViewInterval"),
                                    QStringLiteral("AAViewStart"),
                                    QStringLiteral("AAViewEnd"),
                                    QStringLiteral("AAViewOrder"),
                                    QStringLiteral("AAViewOrder2"),
                                    QStringLiteral("EndDate"),
                                    QString()};
    return group == Group::Current ? current : archived;
}

QString SalesSource(Group group) {
    return group == Group::Current ? QStringLiteral("CurrentAuctions")
                                   : QStringLiteral("ArchivedAuctions");
}

QString BidsSource(Group group) {
    return group == Group::Current ? QStringLiteral("CurrentBids") : QStringLiteral("ArchivedBids");
}

QString DutchBidsSource(Group group) {
    return group == Group::Current ? QStringLiteral("CurrentDutchBids")
                                   : QStringLiteral("ArchivedDutchBids");
}

QString SalesFilter(bool successfulOnly) {
    return successfulOnly ? QStringLiteral(" AND NumberBids <> '-'") : QString();
}

// The sort term of the view settings ("EndDate DESC"): the column, checked
// against the columns of Auctions, becomes its stored number or day column
// where it has one, so that money sorts by value and dates by time.
QString OrderTerm(Database& db, Group group) {
    const SalesKeys& keys = KeysOf(group);
    const QString joined =
        Option(keys.order, keys.orderDefault) + u' ' + Option(keys.order2, keys.order2Default);
    const QString text = joined.trimmed();
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    QString column = words.value(0);
    const QString direction = words.value(1).toUpper();

    Statement names = db.Prepare(QStringLiteral("SELECT name FROM pragma_table_xinfo('Auctions')"));
    QHash<QString, QString> columns;  // lower-case name -> name
    while (names.Step()) {
        const QString name = names.Text(0);
        columns.insert(name.toLower(), name);
    }
    const QString wanted = column.toLower();
    QString term;
    if (wanted == u"enddate") {
        term = QStringLiteral("EndStamp");
    } else if (wanted == u"startdate") {
        term = QStringLiteral("StartDay");
    } else if (columns.contains(wanted + QStringLiteral("num"))) {
        term = columns.value(wanted + QStringLiteral("num"));
    } else if (columns.contains(wanted)) {
        term = u'"' + columns.value(wanted) + u'"';
    } else {
        term = QStringLiteral("EndStamp");
    }
    if (direction == u"ASC" || direction == u"DESC") {
        term += u' ' + direction;
    }
    return term;
}

qint64 CountOf(Statement statement) {
    return statement.Step() ? statement.Value(0).toLongLong() : 0;
}

QString SiteUserId(Database& db) {
    Statement s = db.Prepare(
        QStringLiteral("SELECT UserID FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0"));
    s.Bind(1, core::CurrentSession().CurrentUser);
    return s.Step() ? s.Text(0) : QString();
}

QString Trimmed(const Statement& s, int column) {
    return s.IsNull(column) ? NotAvailable() : s.Text(column).trimmed();
}

QString Currency(double value) {
    return core::Format(value, QStringLiteral("Currency"));
}

double SumOfHighBids(const ListingModel& model) {
    double sum = 0;
    for (const ListingRow& row : model.Rows()) {
        sum += row.highBidValue;
    }
    return sum;
}

// The columns every list reads, in this order.
enum ListColumn : int {
    cItem,
    cTitle,
    cNumberBids,
    cHighBid,
    cEndDate,
    cHighBidderName,
    cHighBidNum,
    cExtra  // per list: reserve met and age of a sale, winning state of a bid
};

const QString kDutchAuction = QStringLiteral("Dutch Auction");

// Columns 0, 1, 3 and 4 of a row; column 2 and the colour are the list's.
ListingRow CommonRow(const Statement& s) {
    ListingRow row;
    row.item = Trimmed(s, cItem);
    if (s.IsNull(cTitle)) {
        row.title = NotAvailable();
    } else {
        // Every entity starts with "&": a title without one is its own decoding.
        row.title = s.Text(cTitle);
        if (row.title.contains(u'&')) {
            row.title = core::DecodeEntities(row.title);
        }
    }
    row.highBid = Trimmed(s, cHighBid);
    row.endNull = s.IsNull(cEndDate);
    row.endDate = s.Text(cEndDate);
    row.highBidValue = s.Value(cHighBidNum).toDouble();
    return row;
}

QString SelectedColumns(const QString& source) {
    return source + QStringLiteral(".ItemNumber, ") + source + QStringLiteral(".ItemTitle, ") +
           source + QStringLiteral(".NumberBids, ") + source + QStringLiteral(".HighBid, ") +
           source + QStringLiteral(".EndDate, ") + source + QStringLiteral(".HighBidderName, ") +
           source + QStringLiteral(".HighBidNum");
}

// The ends of the listed items, read again by item number: one keyed look-up
// per row for a short page, one pass over the user's rows for a long one.
QHash<QString, ListingModel::End> ReadEnds(Database& db, const QString& table,
                                           const ListingModel& model) {
    QHash<QString, ListingModel::End> ends;
    const QString& user = core::CurrentSession().CurrentUser;
    auto take = [&ends](const QString& item, const Statement& s, int first) {
        if (ends.contains(item)) {
            return;
        }
        ListingModel::End end;
        end.endNull = s.IsNull(first);
        end.endDate = s.Text(first);
        ends.insert(item, end);
    };
    constexpr size_t kKeyedLimit = 200;
    if (model.Rows().size() <= kKeyedLimit) {
        Statement s = db.Prepare(QStringLiteral("SELECT EndDate FROM ") + table +
                                 QStringLiteral(" WHERE ItemNumber = ? AND UserName = ? LIMIT 1"));
        for (const ListingRow& row : model.Rows()) {
            if (ends.contains(row.item)) {
                continue;
            }
            s.Reset();
            s.BindAll(row.item, user);
            if (s.Step()) {
                take(row.item, s, 0);
            }
        }
        return ends;
    }
    Statement s = db.Prepare(QStringLiteral("SELECT ItemNumber, EndDate FROM ") + table +
                             QStringLiteral(" WHERE UserName = ?"));
    s.Bind(1, user);
    while (s.Step()) {
        take(s.Text(0).trimmed(), s, 1);
    }
    return ends;
}

}  // namespace

// ------------------------------------------------------------------ pages

MoveButtons UpdateMoveButtons(qint64 start, qint64 end, qint64 count) {
    MoveButtons buttons;
    buttons.enabled[0] = buttons.enabled[2] = start != 1;
    buttons.enabled[1] = buttons.enabled[3] = end < count;
    return buttons;
}

SalesPage PlanSalesPage(qint64 count, qint64 interval, std::optional<qint64> storedStart,
                        std::optional<qint64> storedEnd, bool moveBack, bool goFirst, bool goLast) {
    SalesPage page;
    if (interval == 0) {
        interval = count;
    }
    qint64 end = 0;
    qint64 skip = 0;
    if (goFirst) {
        if (interval > count) {
            interval = count;
        }
        skip = 0;
        end = interval;
    } else {
        end = storedEnd.value_or(count);
        const qint64 start = storedStart.value_or(1);
        if (moveBack) {
            skip = start - interval - 1;
            const qint64 t = skip < 0 ? 1 : skip;
            end = interval + t - 1;
        } else if (goLast) {
            skip = count - interval - 1;
            end = count;
        } else {
            skip = end;
            end = interval + end;
        }
    }
    qint64 start = end - interval + 1;
    if (end > count) {
        end = count;
    }
    if (start < 1) {
        start = 1;
    }
    if (skip < 0) {
        skip = 0;
    }
    page.start = start;
    page.end = end;
    page.skip = skip;
    page.interval = interval;
    return page;
}

TimeLeftTicker::TimeLeftTicker(const core::TimeLeftTimer& timer)
    : m_wanted(timer.ticksWanted.isEmpty() ? QStringLiteral("0") : timer.ticksWanted),
      m_counted(timer.ticksCounted.isEmpty() ? QStringLiteral("0") : timer.ticksCounted) {}

bool TimeLeftTicker::Tick() {
    const double wanted = core::Val(m_wanted);
    if (wanted <= 0) {
        return true;
    }
    const double counted = core::Val(m_counted);
    if (counted >= wanted) {
        m_counted = QStringLiteral("0");
        return true;
    }
    m_counted = QString::number(static_cast<qint64>(counted) + 1);
    return false;
}

// ------------------------------------------------------------------ sales

SalesListing::SalesListing() = default;

void SalesListing::ShowGroup(Database& db, Group group) {
    Show(db, group, false, true, false);
}

void SalesListing::ShowCurrentSales(Database& db, bool moveBack, bool goFirst, bool goLast) {
    Show(db, Group::Current, moveBack, goFirst, goLast);
}

void SalesListing::ShowArchivedSales(Database& db, bool moveBack, bool goFirst, bool goLast) {
    Show(db, Group::Archived, moveBack, goFirst, goLast);
}

void SalesListing::Move(Database& db, int index) {
    switch (index) {
        case 0:
            Show(db, m_group, true, false, false);
            break;
        case 1:
            Show(db, m_group, false, false, false);
            break;
        case 2:
            Show(db, m_group, false, true, false);
            break;
        case 3:
            Show(db, m_group, false, false, true);
            break;
        default:
            break;
    }
}

QString SalesListing::ViewLabel() const {
    return m_group == Group::Current ? QStringLiteral("Current Sales")
                                     : QStringLiteral("Archived Sales");
}

qint64 SalesListing::Count(Database& db, Group group) const {
    Statement s = db.Prepare(QStringLiteral("SELECT COUNT(*) FROM ") + SalesSource(group) +
                             QStringLiteral(" WHERE UserName = ?") + SalesFilter(m_successfulOnly));
    s.Bind(1, core::CurrentSession().CurrentUser);
    return CountOf(std::move(s));
}

QString SalesListing::Caption(Database& db, Group group, std::optional<qint64> knownCount) const {
    const qint64 count = knownCount ? *knownCount : Count(db, group);
    const QString name = group == Group::Current ? QStringLiteral("Current Sales")
                                                 : QStringLiteral("Archived Sales");
    const QString successful = m_successfulOnly ? QStringLiteral("Successful ") : QString();
    if (count == 0) {
        return QStringLiteral("No ") + successful + name;
    }
    const SalesKeys& keys = KeysOf(group);
    const qint64 start = OptionNumber(keys.start, 1);
    qint64 interval = OptionNumber(keys.interval, 0);
    if (interval == 0) {
        interval = count;
    }
    qint64 last = start + interval - 1;
    if (last > count) {
        last = count;
    }
    const QString total = QString::number(count);
    QString range = QStringLiteral("1 - ") + total + QStringLiteral(" of ") + total;
    if (last > 0 && start > 0) {
        range = QString::number(start) + QStringLiteral(" - ") + QString::number(last) +
                QStringLiteral(" of ") + total;
    }
    return successful + name + QStringLiteral(" (") + range + u')';
}

void SalesListing::WriteCaptions(Database& db) {
    for (const Group group : {Group::Current, Group::Archived}) {
        m_captions[static_cast<size_t>(group)] =
            Caption(db, group, group == m_group ? std::optional<qint64>(m_count) : std::nullopt);
    }
}

QString SalesListing::CurrentSalesCaption(Database& db) const {
    return Caption(db, Group::Current);
}

QString SalesListing::ArchivedSalesCaption(Database& db) const {
    return Caption(db, Group::Archived);
}

void SalesListing::Show(Database& db, Group group, bool moveBack, bool goFirst, bool goLast) {
    m_group = group;
    const bool timeLeft = group == Group::Current;
    const QString& user = core::CurrentSession().CurrentUser;
    const SalesKeys& keys = KeysOf(group);
    m_count = Count(db, group);

    if (m_count == 0) {
        m_model.Clear(timeLeft);
        m_empty = true;
        m_total = Currency(0);
        m_totalLabel = 1;
        m_buttons.enabled[0] = m_buttons.enabled[1] = false;
        WriteCaptions(db);
        return;
    }
    m_empty = false;

    const qint64 interval = OptionNumber(keys.interval, 0);
    std::optional<qint64> storedStart;
    std::optional<qint64> storedEnd;
    if (!goFirst) {
        storedStart = OptionNumber(keys.start, 1);
        storedEnd = OptionNumber(keys.end, m_count);
    }
    const SalesPage page =
        PlanSalesPage(m_count, interval, storedStart, storedEnd, moveBack, goFirst, goLast);
    core::SaveSetting(kApp, kSection, keys.start, page.start);
    core::SaveSetting(kApp, kSection, keys.end, page.end);

    // Current sales are ordered by their end first, the setting only breaks
    // ties; the archive is ordered by the setting alone.
    const QString source = SalesSource(group);
    const QString order = group == Group::Current
                              ? QStringLiteral("EndStamp, ") + OrderTerm(db, group)
                              : OrderTerm(db, group);
    Statement s =
        db.Prepare(QStringLiteral("SELECT ") + SelectedColumns(source) +
                   QStringLiteral(", ReserveBid, HighBidNum >= ReserveBidNum, "
                                  "EndDay <= date('now', 'localtime', '-3 days') FROM ") +
                   source + QStringLiteral(" WHERE UserName = ?") + SalesFilter(m_successfulOnly) +
                   QStringLiteral(" ORDER BY ") + order + QStringLiteral(" LIMIT ? OFFSET ?"));
    s.BindAll(user, page.interval, page.skip);

    const int reserveBid = cExtra;
    const int reserveMet = cExtra + 1;
    const int oldEnough = cExtra + 2;
    std::vector<ListingRow> rows;
    rows.reserve(static_cast<size_t>(std::min<qint64>(page.interval, 1 << 20)));
    while (s.Step()) {
        // The archive passes over sales that ended less than three days ago;
        // they still use up their place in the page.
        if (group == Group::Archived && s.Value(oldEnough).toLongLong() != 1) {
            continue;
        }
        ListingRow row = CommonRow(s);
        if (s.IsNull(cHighBidderName)) {
            row.bids = NotAvailable();
        } else if (s.Text(cHighBidderName) == kDutchAuction) {
            row.bids = DutchMark();
        } else {
            row.bids = Trimmed(s, cNumberBids);
        }
        if (!s.IsNull(cHighBid) && !s.IsNull(reserveBid)) {
            row.colour =
                s.Value(reserveMet).toLongLong() == 1 ? CellColour::Green : CellColour::Red;
        }
        rows.push_back(std::move(row));
    }
    m_model.SetRows(std::move(rows), timeLeft, QDateTime::currentDateTime(),
                    core::CurrentSession().SiteCorrection);

    m_total = Currency(SumOfHighBids(m_model));
    m_totalLabel = 2;
    m_buttons = UpdateMoveButtons(page.start, page.end, m_count);
    WriteCaptions(db);
    if (page.end >= m_count) {
        m_row1Data = page.end;
    }
}

bool SalesListing::RefreshTimeLeftSales(Database& db, const QDateTime& now) {
    if (m_group != Group::Current) {
        return false;
    }
    m_model.RefreshTimeLeft(ReadEnds(db, QStringLiteral("Auctions"), m_model), now,
                            core::CurrentSession().SiteCorrection);
    return true;
}

// ------------------------------------------------------------------ bids

BidsListing::BidsListing() {
    m_model.SetSortState(ListingModel::kEnd, 1);
}

void BidsListing::ApplyInitialSort() {
    m_model.SetSortState(ListingModel::kEnd, 1);
    m_model.Sort(ListingModel::kEnd, 1);
}

void BidsListing::ShowGroup(Database& db, Group group) {
    if (group == Group::Current) {
        ShowCurrentBids(db);
    } else {
        ShowArchivedBids(db);
    }
}

void BidsListing::ShowCurrentBids(Database& db) {
    Show(db, Group::Current, m_successfulOnly);
}

void BidsListing::ShowArchivedBids(Database& db) {
    Show(db, Group::Archived, m_successfulOnly);
}

void BidsListing::ShowSuccessfulCurrentBids(Database& db) {
    Show(db, Group::Current, true);
}

void BidsListing::ShowSuccessfulArchivedBids(Database& db) {
    Show(db, Group::Archived, true);
}

QString BidsListing::ViewLabel() const {
    return m_group == Group::Current ? QStringLiteral("Current Bids")
                                     : QStringLiteral("Archived Bids");
}

qint64 BidsListing::Count(Database& db, Group group, bool successful) const {
    const QString& user = core::CurrentSession().CurrentUser;
    if (!successful) {
        Statement s = db.Prepare(QStringLiteral("SELECT COUNT(*) FROM ") + BidsSource(group) +
                                 QStringLiteral(" WHERE UserName = ?"));
        s.Bind(1, user);
        return CountOf(std::move(s));
    }
    Statement s = db.Prepare(QStringLiteral("SELECT (SELECT COUNT(*) FROM ") + BidsSource(group) +
                             QStringLiteral(" WHERE UserName = ?1 AND Winning <> 0)"
                                            " + (SELECT COUNT(*) FROM ") +
                             DutchBidsSource(group) +
                             QStringLiteral(" WHERE UserName = ?1 AND HighBidderName = ?2)"));
    s.BindAll(user, SiteUserId(db));
    return CountOf(std::move(s));
}

QString BidsListing::Caption(Database& db, Group group, bool successful,
                             std::optional<qint64> knownCount) const {
    const qint64 count = knownCount ? *knownCount : Count(db, group, successful);
    QString name =
        group == Group::Current ? QStringLiteral("Current Bids") : QStringLiteral("Archived Bids");
    if (successful) {
        name = QStringLiteral("Successful ") + name;
    }
    if (count == 0) {
        return QStringLiteral("No ") + name;
    }
    return name + QStringLiteral(" (") + QString::number(count) + u')';
}

void BidsListing::WriteCaptions(Database& db, bool successful) {
    for (const Group group : {Group::Current, Group::Archived}) {
        m_captions[static_cast<size_t>(group)] =
            Caption(db, group, successful,
                    group == m_group ? std::optional<qint64>(m_count) : std::nullopt);
    }
}

QString BidsListing::CurrentBidsCaption(Database& db) const {
    return Caption(db, Group::Current, m_successfulOnly);
}

QString BidsListing::ArchivedBidsCaption(Database& db) const {
    return Caption(db, Group::Archived, m_successfulOnly);
}

void BidsListing::Show(Database& db, Group group, bool successful) {
    m_group = group;
    const bool timeLeft = group == Group::Current;
    const QString userId = SiteUserId(db);

    // The colour of a multi-winner item: green when one of its winners is the
    // user's site login.
    auto select = [](const QString& source, const QString& part) -> QString {
        return QStringLiteral("SELECT ") + SelectedColumns(source) + QStringLiteral(", ") + source +
               QStringLiteral(
                   ".Winning, CASE WHEN HighBidderName = 'Dutch Auction' COLLATE BINARY "
                   "THEN EXISTS (SELECT 1 FROM DutchBids AS Won WHERE Won.ItemNumber = ") +
               source + QStringLiteral(".ItemNumber AND Won.HighBidderName = ?2) ELSE 0 END") +
               part + QStringLiteral(" FROM ") + source;
    };
    QStringList queries;
    if (!successful) {
        queries << select(BidsSource(group), QString()) +
                       QStringLiteral(
                           " WHERE UserName = ?1 ORDER BY EndStamp DESC, ItemNumber DESC");
    } else {
        // Two sets, one after the other in one grid: the won bids by their
        // end, then the user's wins of multi-winner items as they are stored.
        queries << select(BidsSource(group), QString()) +
                       QStringLiteral(" WHERE UserName = ?1 AND Winning <> 0 ORDER BY EndStamp")
                << select(DutchBidsSource(group), QString()) +
                       QStringLiteral(" WHERE UserName = ?1 AND HighBidderName = ?2");
    }

    const int winning = cExtra;
    const int dutchWon = cExtra + 1;
    std::vector<ListingRow> rows;
    for (const QString& sql : queries) {
        Statement s = db.Prepare(sql);
        s.BindAll(core::CurrentSession().CurrentUser, userId);
        while (s.Step()) {
            ListingRow row = CommonRow(s);
            row.bids = Trimmed(s, cNumberBids);
            const QVariant flag = s.Value(winning);
            const bool isWinning = flag.typeId() == QMetaType::QString
                                       ? (flag.toString().trimmed().compare(
                                              QLatin1String("True"), Qt::CaseInsensitive) == 0 ||
                                          core::Val(flag.toString()) != 0)
                                       : flag.toDouble() != 0;
            if (isWinning) {
                row.colour = CellColour::Green;
            } else if (s.Text(cHighBidderName) == kDutchAuction) {
                row.colour =
                    s.Value(dutchWon).toLongLong() != 0 ? CellColour::Green : CellColour::Red;
            } else {
                row.colour = CellColour::Red;
            }
            rows.push_back(std::move(row));
        }
    }
    m_count = static_cast<qint64>(rows.size());
    m_model.SetRows(std::move(rows), timeLeft, QDateTime::currentDateTime(),
                    core::CurrentSession().SiteCorrection);
    m_empty = m_count == 0;
    m_total = Currency(SumOfHighBids(m_model));
    WriteCaptions(db, successful);
}

bool BidsListing::RefreshTimeLeftBids(Database& db, const QDateTime& now) {
    if (m_group != Group::Current) {
        return false;
    }
    m_model.RefreshTimeLeft(ReadEnds(db, QStringLiteral("Bids"), m_model), now,
                            core::CurrentSession().SiteCorrection);
    return true;
}

void RefreshTimeLeftOnTick(Database& db, SalesListing& sales, BidsListing& bids) {
    sales.RefreshTimeLeftSales(db);
    bids.RefreshTimeLeftBids(db);
}

}  // namespace lw::views
