// SPDX-License-Identifier: GPL-3.0-or-later
// The direct post of a listing: slot table, the two posts, the new auction.
// A post that does not go through never touches the creator row, and no
// answer of the site is confirmed unless it holds the review form.
#include "creator/direct_post.h"

#include <QDir>
#include <QHash>
#include <ctime>
#include <iterator>
#include <utility>
#include <vector>

#include "core/page_charset.h"
#include "core/secrets.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/text.h"
#include "creator/category_directory.h"
#include "creator/listing_html.h"
#include "creator/sell_page.h"
#include "update/site_session.h"

namespace lw::creator {

namespace {

// No "~" list of the row is read beyond this many entries.
constexpr int kMaxCodeEntries = 200;

const QString& PostSection() {
    static const QString section = QStringLiteral("Auction Post");
    return section;
}

QString PostErrorTitle() {
    return QStringLiteral("Post error");
}

void SetSlot(PostSlots& slots, int slot, const QString& value) {
    if (slot >= 1 && slot <= slots.count) {
        slots.values[slot] = value;
    }
}

// Each number above 0 of a "~" list names a slot that gets "on".
void SetCodeSlots(PostSlots& slots, const QString& list) {
    const QStringList entries = list.split(u'~');
    for (qsizetype i = 0; i < entries.size() && i < kMaxCodeEntries; ++i) {
        const double slot = core::Val(entries.at(i));
        if (slot >= 1 && slot <= slots.count) {
            SetSlot(slots, static_cast<int>(slot), QStringLiteral("on"));
        }
    }
}

// A column's trimmed text, or fallback when it is null.
QString TextOr(const CreatorRecord& row, const char* column, const QString& fallback) {
    const QString name = QLatin1String(column);
    return row.IsNull(name) ? fallback : row.Text(name).trimmed();
}

// A column's text, or "0" when it is null or empty.
QString TextOrZero(const CreatorRecord& row, const char* column) {
    const QString text = row.Text(QLatin1String(column));
    return text.isEmpty() ? QStringLiteral("0") : text;
}

// The address of a post from two keys of "Auction Post": the server and the
// path behind it. Empty when either is missing.
QString PostAddress(const update::RuleStore& rules, const char* serverKey, const char* pathKey) {
    QString server =
        rules.LookupKey(PostSection(), QLatin1String(serverKey), update::kSiteStore).trimmed();
    QString path =
        rules.LookupKey(PostSection(), QLatin1String(pathKey), update::kSiteStore).trimmed();
    if (server.isEmpty() || server == update::RuleError() || path == update::RuleError()) {
        return {};
    }
    if (!server.contains(QLatin1String("://"))) {
        server.prepend(QStringLiteral("http://"));
    }
    while (server.endsWith(u'/')) {
        server.chop(1);
    }
    if (!path.startsWith(u'/')) {
        path.prepend(u'/');
    }
    return server + path;
}

// The title of an answer page, for saying what the site answered.
QString PageTitle(const QString& page) {
    const qsizetype open = page.indexOf(QStringLiteral("<title>"), 0, Qt::CaseInsensitive);
    const qsizetype close =
        open < 0 ? -1 : page.indexOf(QStringLiteral("</title>"), open, Qt::CaseInsensitive);
    if (close < 0) {
        return QStringLiteral("a page without a title");
    }
    return page.mid(open + 7, std::min<qsizetype>(close - open - 7, 200)).simplified();
}

struct Answer {
    bool ok = false;
    bool cancelled = false;
    QString text;
    QString problem;
};

// One post; an answer with an error status, an empty answer, a transfer that
// failed or timed out are no answer.
Answer PostForm(const QString& url, const QString& body, const core::NetOptions& net,
                core::Ui& ui) {
    Answer answer;
    if (url.isEmpty()) {
        answer.problem = QStringLiteral("The rules name no address for the post in [") +
                         PostSection() + QStringLiteral("].");
        return answer;
    }
    const core::NetResult result =
        core::HttpPostForm(url, body.toLatin1(), net, [&ui](qint64, qint64) {
            ui.PumpEvents();
            return !ui.CancelRequested();
        });
    if (result.status == core::NetStatus::Cancelled) {
        answer.cancelled = true;
        answer.problem = QStringLiteral("The post was cancelled.");
    } else if (!result.ok()) {
        answer.problem =
            QStringLiteral("The site did not answer the post to %1: %2").arg(url, result.error);
    } else if (result.httpCode >= 400) {
        answer.problem = QStringLiteral("The site answered the post to %1 with HTTP %2 (%3).")
                             .arg(url)
                             .arg(result.httpCode)
                             .arg(PageTitle(QString::fromUtf8(result.body)));
    } else if (result.body.isEmpty()) {
        answer.problem = QStringLiteral("The site's answer to the post to %1 was empty.").arg(url);
    } else {
        answer.ok = true;
        answer.text = QByteArrayView(result.body).isValidUtf8()
                          ? QString::fromUtf8(result.body)
                          : core::FromWindows1252(result.body);
    }
    return answer;
}

}  // namespace

PostSlots LoadPostTable(const update::RuleStore& rules) {
    PostSlots slots;
    slots.count = update::LoadPostDefaults(rules, slots.names, slots.values);
    for (int n = 1; n <= slots.count; ++n) {
        for (QString* text : {&slots.names[n], &slots.values[n]}) {
            if (*text == update::RuleError()) {
                text->clear();
            }
        }
    }
    return slots;
}

std::optional<PostRefusal> FillPostSlots(PostSlots& slots, const CreatorRecord& row,
                                         const SiteLogin& login, const QString& description,
                                         const CategoryResolver& resolve) {
    if (row.Text(QStringLiteral("eBayAuctionTitle")).trimmed().isEmpty()) {
        return PostRefusal{QStringLiteral("No valid eBay Title found, post cancelled"),
                           RecordErrorTitle()};
    }
    SetSlot(slots, 1, PostTitle(row));

    bool unresolved = false;
    const std::optional<QString> category = PostCategory(row, resolve, &unresolved);
    if (!category) {
        return unresolved ? PostRefusal{QStringLiteral("Unable to resolve category.  Post "
                                                       "cancelled."),
                                        QStringLiteral("Post cancelled")}
                          : NoCategoryRefusal();
    }
    SetSlot(slots, 2, *category);
    for (int slot = 3; slot <= 6; ++slot) {
        SetSlot(slots, slot, QString());
    }

    SetSlot(slots, 9, QStringLiteral("0"));
    SetSlot(slots, 10, QStringLiteral("http://"));
    const QString gallery = row.Text(QStringLiteral("GalleryLink"));
    if (row.Flag(QStringLiteral("IncludeGallery")) && gallery.size() >= 7 &&
        gallery.startsWith(QLatin1String("http://"), Qt::CaseInsensitive)) {
        SetSlot(slots, 9, QStringLiteral("1"));
        SetSlot(slots, 10, gallery);
    }

    if (row.IsNull(QStringLiteral("AuctionHTML"))) {
        return PostRefusal{
            QStringLiteral("No valid eBay auction Description found, post cancelled"),
            RecordErrorTitle()};
    }
    SetSlot(slots, 7, description);

    if (!row.IsNull(QStringLiteral("PictureIconActivate"))) {
        const QString picture = row.Text(QStringLiteral("PictureIconActivate"));
        SetSlot(slots, 8,
                picture.trimmed().isEmpty() ||
                        !picture.startsWith(QLatin1String("http://"), Qt::CaseInsensitive)
                    ? QStringLiteral("http://")
                    : picture);
    }

    SetCodeSlots(slots, CodeList(row, QStringLiteral("eBayOptionalSettings")));

    const QString location = row.Text(QStringLiteral("ItemLocation"));
    if (location.trimmed().isEmpty()) {
        return PostRefusal{QStringLiteral("No valid Item Location found, post cancelled"),
                           RecordErrorTitle()};
    }
    SetSlot(slots, 15, location);
    SetSlot(slots, 16, TextOrZero(row, "eBayRegion"));
    SetSlot(slots, 17, TextOrZero(row, "Country"));

    SetCodeSlots(slots, CodeList(row, QStringLiteral("eBayPaymentPrefs")));

    // Without credit cards the whole online payment block stays as it
    // started, its dependent slots too.
    if (row.Flag(QStringLiteral("billpointcreditcard"))) {
        const QString on = QStringLiteral("on");
        SetSlot(slots, 49, on);
        if (row.Flag(QStringLiteral("billpointechecks"))) {
            SetSlot(slots, 50, on);
        }
        if (row.Flag(QStringLiteral("billpointaddicon"))) {
            SetSlot(slots, 57, on);
        }
        if (row.Flag(QStringLiteral("billpointinstantpurchase"))) {
            SetSlot(slots, 51, on);
            SetSlot(slots, 52, TextOr(row, "billpointshipping", QStringLiteral("0")));
            SetSlot(slots, 53, TextOr(row, "billpointadditionalshipping", QStringLiteral("0")));
            SetSlot(slots, 54, TextOr(row, "billpointsalestax", QStringLiteral("0")));
            SetSlot(slots, 55,
                    row.IsNull(QStringLiteral("billpointsalestaxstate"))
                        ? QStringLiteral("none")
                        : row.Text(QStringLiteral("billpointsalestaxstate")));
            SetSlot(slots, 56, row.Text(QStringLiteral("billpointreturnpolicy")));
        }
    }

    SetCodeSlots(slots, CodeList(row, QStringLiteral("eBayShipPrefs")));

    SetSlot(slots, 32,
            row.Number(QStringLiteral("Quantity")) > 0 ? row.Text(QStringLiteral("Quantity"))
                                                       : QStringLiteral("1"));
    if (row.Number(QStringLiteral("MinimumBid")) > 0) {
        SetSlot(slots, 33, row.Text(QStringLiteral("MinimumBid")).trimmed());
    }
    if (const QString duration = row.Text(QStringLiteral("eBayDuration")); !duration.isEmpty()) {
        SetSlot(slots, 34, duration);
    }
    SetSlot(slots, 36,
            row.Number(QStringLiteral("Reserve")) > 0
                ? row.Text(QStringLiteral("Reserve")).trimmed()
                : QString());
    SetSlot(slots, 14, TextOr(row, "eBayGiftIcon", QStringLiteral("0")));

    const QString shipTo = ShipToChoice(row);
    SetSlot(slots, 27, shipTo);
    if (shipTo == QLatin1String("siteplusregions")) {
        for (int i = 0; i < static_cast<int>(std::size(kRegionColumns)); ++i) {
            if (row.Flag(QLatin1String(kRegionColumns[i]))) {
                SetSlot(slots, 40 + i, QStringLiteral("on"));
            }
        }
    }

    // Last, so that no option code can take the sign-in's slots.
    SetSlot(slots, 38, login.userId);
    SetSlot(slots, 39, login.password);
    return std::nullopt;
}

QString PostBody(const PostSlots& slots) {
    QStringList values = slots.values;
    for (int n = 1; n <= slots.count && n < values.size(); ++n) {
        if (slots.names.value(n).isEmpty()) {
            values[n].clear();
        }
    }
    QString body = update::BuildPostBody(slots.names, values, slots.count);
    for (QString& value : values) {
        core::Scrub(value);
    }
    return body;
}

namespace {

// The two keys of "eBay New Auction Number" that find the new item number:
// the marker and the characters to drop at the number's left.
struct ItemNumberRule {
    QString marker;
    QString split;

    explicit ItemNumberRule(const update::RuleStore& rules) {
        const QString section = QStringLiteral("eBay New Auction Number");
        marker = rules.LookupKey(section, QStringLiteral("Item1 Start"), update::kSiteStore);
        split = rules.LookupKey(section, QStringLiteral("Split"), update::kSiteStore);
        if (split == update::RuleError()) {
            split.clear();
        }
        if (marker == update::RuleError()) {
            marker.clear();
        }
    }

    QString Find(const QString& answer) const {
        if (marker.isEmpty()) {
            return {};
        }
        const qsizetype at = answer.indexOf(marker, 0, Qt::CaseInsensitive);
        const qsizetype tagEnd = at < 0 ? -1 : answer.indexOf(u'>', at + marker.size());
        if (tagEnd < 0) {
            return {};
        }
        qsizetype end = answer.indexOf(u'<', tagEnd + 1);
        if (end < 0) {
            end = answer.size();
        }
        return answer.mid(tagEnd + 1, end - tagEnd - 1).mid(split.size()).trimmed();
    }
};

}  // namespace

QString NewItemNumber(const QString& answer, const update::RuleStore& rules) {
    return ItemNumberRule(rules).Find(answer);
}

namespace {

// The Auctions columns a post writes, in the order of the statements' values;
// the amounts (from MinimumBid on) only where the creator row holds one.
constexpr const char* kAuctionsColumns[] = {
    "AuctionCreatorID", "ItemNumber",     "UserName",           "InventoryID",   "AuctionSiteFlag",
    "ItemTitle",        "ItemCategory",   "Quantity",           "NumberBids",    "ShippingMethod",
    "HighBid",          "HighBidderName", "HighBidderFeedback", "StartDate",     "EndDate",
    "MinimumBid",       "ReserveBid",     "ShippingCost",       "OrderShipping", "InsuranceCost",
    "ItemCost"};
constexpr int kFirstAmount = 15;
// The creator row's column of each amount.
constexpr const char* kAmountSources[] = {"MinimumBid", "Reserve",   "Shipping",
                                          "Shipping",   "Insurance", "YourItemCost"};
static_assert(std::size(kAuctionsColumns) == kFirstAmount + std::size(kAmountSources));

const QString& InsertAuctionsSql() {
    static const QString sql = []() -> QString {
        QStringList names;
        for (const char* column : kAuctionsColumns) {
            names << QLatin1String(column);
        }
        return QStringLiteral("INSERT INTO Auctions (") + names.join(QStringLiteral(", ")) +
               QStringLiteral(") VALUES (") +
               QStringList(names.size(), QStringLiteral("?")).join(QStringLiteral(", ")) + u')';
    }();
    return sql;
}

// An amount the row does not hold leaves the one the Auctions row has.
const QString& UpdateAuctionsSql() {
    static const QString sql = []() -> QString {
        QStringList sets;
        for (int i = 0; i < static_cast<int>(std::size(kAuctionsColumns)); ++i) {
            const QString column = QLatin1String(kAuctionsColumns[i]);
            sets << (i < kFirstAmount
                         ? QString(column + QStringLiteral(" = ?%1").arg(i + 1))
                         : QString(column + QStringLiteral(" = COALESCE(?%1, ").arg(i + 1) +
                                   column + u')'));
        }
        return QStringLiteral("UPDATE Auctions SET ") + sets.join(QStringLiteral(", ")) +
               QStringLiteral(" WHERE rowid = ?%1").arg(std::size(kAuctionsColumns) + 1);
    }();
    return sql;
}

// The local date and time of a post, to the second.
struct PostTime {
    QDate date;
    QTime time;
};

// The clock as QDateTime::currentDateTime() reads it, in the zone the program
// last took, without asking the system for its zone again at every post.
PostTime LocalNow() {
    const std::time_t seconds = std::time(nullptr);
    std::tm local{};
    localtime_r(&seconds, &local);
    return {QDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday),
            QTime(local.tm_hour, local.tm_min, local.tm_sec)};
}

// "mm/dd/yy", the dates of the site's pages.
QString SiteDate(const QDate& date) {
    return date.toString(u"MM/dd/yy");
}

}  // namespace

struct AuctionPoster::Kept {
    core::Database& db;
    const update::RuleStore& rules;
    core::Ui& ui;
    PostOptions options;
    core::NetOptions net;
    PostSlots table;
    QString reviewUrl = PostAddress(rules, "Server", "url");
    QString confirmUrl = PostAddress(rules, "Server2", "url2");
    QString action = rules.LookupKey(PostSection(), QStringLiteral("Action"), update::kSiteStore);
    QString footer = ListingFooter(rules);
    ItemNumberRule itemNumber{rules};
    std::optional<SiteLogin> login;
    std::optional<bool> confirm;
    std::optional<core::Statement> record;
    std::optional<core::Statement> find;
    std::optional<core::Statement> insert;
    std::optional<core::Statement> update;
    QHash<QString, QString> categoryNames;
    // The sales a queue writes are small commits each, of the same few pages.
    std::unique_ptr<core::CommitsWithoutFlush> relaxed;
    // From the first sale on; it goes with the poster.
    std::unique_ptr<core::DeferredCheckpoint> checkpoint;

    core::Statement& Prepared(std::optional<core::Statement>& statement, const QString& sql) {
        if (!statement) {
            statement.emplace(db.Prepare(sql));
        }
        statement->Reset();
        return *statement;
    }

    void WriteAuctionsRow(const CreatorRecord& row, qint64 creatorId, const QString& itemNumber,
                          const QString& category, const QString& user, const PostTime& now);
};

// AddOrEdit of the Auctions row by ItemNumber and UserName, as the update's
// rules find it by ItemNumber.
void AuctionPoster::Kept::WriteAuctionsRow(const CreatorRecord& row, qint64 creatorId,
                                           const QString& itemNumber, const QString& category,
                                           const QString& user, const PostTime& now) {
    auto name = categoryNames.constFind(category);
    if (name == categoryNames.constEnd()) {
        name = categoryNames.insert(category,
                                    CategoryFullName(db, static_cast<qint64>(core::Val(category))));
    }
    const qint64 days = static_cast<qint64>(core::Val(row.Text(QStringLiteral("eBayDuration"))));
    const QString endDate = SiteDate(now.date.addDays(days)) + QStringLiteral(", ") +
                            now.time.toString(u"hh:mm:ss") + QStringLiteral(" PST");
    QVariantList values = {
        creatorId,
        itemNumber,
        user,
        row.IsNull(QStringLiteral("InventoryID")) ? QVariant(0)
                                                  : row.Value(QStringLiteral("InventoryID")),
        0,
        row.Text(QStringLiteral("eBayAuctionTitle")),
        *name,
        row.Text(QStringLiteral("Quantity")),
        QStringLiteral("-"),
        row.Value(QStringLiteral("ShippingMethod")),
        QStringLiteral("-"),
        QStringLiteral("--"),
        QStringLiteral("--"),
        SiteDate(now.date),
        endDate,
    };
    for (size_t i = 0; i < std::size(kAmountSources); ++i) {
        // Shipping stands for two columns: it is shown once.
        if (i > 0 && qstrcmp(kAmountSources[i], kAmountSources[i - 1]) == 0) {
            values << values.constLast();
            continue;
        }
        const QString column = QLatin1String(kAmountSources[i]);
        values << (row.IsNull(column)
                       ? QVariant()
                       : QVariant(core::Format(row.Value(column), QStringLiteral("Currency"))));
    }

    // The first such row, read from the key alone.
    core::Statement& lookup =
        Prepared(find, QStringLiteral("SELECT min(rowid) FROM Auctions WHERE ItemNumber = ? AND "
                                      "UserName = ?"));
    lookup.BindAll(itemNumber, user);
    const bool known = lookup.Step() && !lookup.IsNull(0);
    const qint64 rowid = known ? lookup.Value(0).toLongLong() : 0;
    lookup.Reset();
    core::Statement& write =
        known ? Prepared(update, UpdateAuctionsSql()) : Prepared(insert, InsertAuctionsSql());
    for (qsizetype i = 0; i < values.size(); ++i) {
        write.Bind(static_cast<int>(i) + 1, values.at(i));
    }
    if (known) {
        write.Bind(static_cast<int>(values.size()) + 1, rowid);
    }
    if (!checkpoint) {
        checkpoint = std::make_unique<core::DeferredCheckpoint>(db);
    }
    write.Run();
    write.Reset();
}

AuctionPoster::AuctionPoster(core::Database& db, const update::RuleStore& rules, core::Ui& ui,
                             const PostOptions& options)
    : m_kept(std::make_unique<Kept>(Kept{db, rules, ui, options,
                                         options.net.value_or(update::NetOptionsForUser(db)),
                                         LoadPostTable(rules)})) {
    m_kept->relaxed = std::make_unique<core::CommitsWithoutFlush>(db);
}

AuctionPoster::~AuctionPoster() {
    if (m_kept->login) {
        core::Scrub(m_kept->login->password);
    }
    m_kept->relaxed.reset();
    // The sales written meanwhile reach the disk now, all at once.
    m_kept->checkpoint.reset();
}

PostOutcome AuctionPoster::Post(qint64 id, PostRoute route) {
    Kept& kept = *m_kept;
    core::Database& db = kept.db;
    const update::RuleStore& rules = kept.rules;
    core::Ui& ui = kept.ui;
    const core::NetOptions& net = kept.net;
    PostOutcome outcome;
    ui.Status(QStringLiteral("Preparing new auction."));
    ui.PumpEvents();

    const auto sellPage = [&] {
        SellPageResult page = PostViaSellPage(db, rules, id, ui, net);
        outcome.browserPage = page.path;
        if (outcome.problem.isEmpty()) {
            outcome.problem = page.problem;
        } else if (!page.problem.isEmpty()) {
            outcome.problem += u' ' + page.problem;
        }
    };
    // The creator row is left as it is: what was typed waits for another try.
    const auto fallBack = [&](const QString& text, const QString& problem) {
        outcome.problem = problem;
        ui.Status(QString());
        ui.Message(text, PostErrorTitle(), core::Icon::Warning);
        outcome.fellBack = true;
        sellPage();
        return outcome;
    };
    const QString directFailed =
        QStringLiteral("Could not post directly to eBay. Opening auction in Sell Your Item Page.");

    // A cancelled post ends there; one the site did not answer falls back.
    const auto unanswered = [&](const Answer& answer) {
        if (answer.cancelled) {
            ui.Status(QString());
            outcome.problem = answer.problem;
            return outcome;
        }
        return fallBack(directFailed, answer.problem);
    };

    if (route == PostRoute::SellPage) {
        sellPage();
        outcome.posted = !outcome.browserPage.isEmpty();
        return outcome;
    }

    PostSlots slots = kept.table;
    const QString user = core::CurrentSession().CurrentUser;
    const std::optional<CreatorRecord> row =
        CreatorRecord::Read(kept.Prepared(kept.record, PostRecordSql()), user, id);
    if (!row) {
        ui.Status(QString());
        outcome.problem = QStringLiteral("There is no listing document with the ID %1.").arg(id);
        return outcome;
    }
    if (!kept.login) {
        kept.login = ReadSiteLogin(db, user);
    }
    const std::optional<PostRefusal> refusal = FillPostSlots(
        slots, *row, *kept.login, row->Text(QStringLiteral("AuctionHTML")) + kept.footer,
        DirectoryResolver(db, ui));
    if (refusal) {
        ui.Status(QString());
        ui.Message(refusal->text, refusal->title, core::Icon::Warning);
        outcome.problem = refusal->text;
        return outcome;
    }
    const QString category = slots.values.value(2);
    QString body = PostBody(slots);
    for (QString& value : slots.values) {
        core::Scrub(value);
    }

    ui.Status(QStringLiteral("Communicating with eBay...please wait..."));
    ui.PumpEvents();
    const Answer first = PostForm(kept.reviewUrl, body, net, ui);
    core::Scrub(body);
    if (!first.ok) {
        return unanswered(first);
    }
    ui.Status(QStringLiteral("Completing post..."));
    ui.PumpEvents();

    // The site's old server answered a refused sign-in with a redirect that
    // its page quotes.
    const bool signInRefused =
        first.text.contains(QLatin1String("HTTP/1.0 302 Object Moved Server"));
    const QString refusedWords =
        QStringLiteral("The site refused the sign-in of the post: check the user ID and password.");
    if (route == PostRoute::ReviewPage) {
        if (signInRefused) {
            return fallBack(QStringLiteral("Could not post to eBay review page. Opening auction "
                                           "in Sell Your Item Page."),
                            refusedWords);
        }
        const QDir configs(core::CurrentSession().ConfigsDir);
        const QString path = configs.filePath(QStringLiteral("ebaypost.html"));
        if (WriteBrowserPage(path, configs.filePath(QStringLiteral("ebaypostx.html")), first.text,
                             &outcome.problem)) {
            outcome.browserPage = path;
            outcome.posted = true;
        }
        ui.Status(QString());
        return outcome;
    }

    // The review page's form is confirmed as it stands. An answer without it
    // (the sign-in page, the site's list of problems with the listing) is no
    // review, and confirming nothing would list nothing.
    const QString confirm = kept.action == update::RuleError()
                                ? QString()
                                : update::ExtractHiddenFields(first.text, kept.action);
    if (confirm.isEmpty()) {
        return fallBack(directFailed,
                        signInRefused ? refusedWords
                                      : QStringLiteral("The site's answer held no form to confirm "
                                                       "the listing: \"%1\".")
                                            .arg(PageTitle(first.text)));
    }
    const Answer second = PostForm(kept.confirmUrl, confirm, net, ui);
    if (!second.ok) {
        return unanswered(second);
    }
    ui.Status(QStringLiteral("Auction posted successfully..."));
    ui.PumpEvents();

    outcome.posted = true;
    outcome.itemNumber = kept.itemNumber.Find(second.text);
    if (!outcome.itemNumber.isEmpty()) {
        try {
            kept.WriteAuctionsRow(*row, id, outcome.itemNumber, category, user, LocalNow());
        } catch (const core::StoreError& failure) {
            outcome.problem = QStringLiteral(
                                  "The auction went out as item %1, but its Auctions row "
                                  "could not be written: %2")
                                  .arg(outcome.itemNumber, failure.Message());
        }
    }
    ui.Status(QStringLiteral("Auction posted successfully"));
    if (!kept.confirm) {
        // The dialog's check writes -1 for "off"; a value above 0 is off too.
        kept.confirm =
            !kept.options.fromQueue &&
            core::Val(core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                                       QStringLiteral("AuctionConfirmOff"))) == 0;
    }
    outcome.confirm = *kept.confirm;
    return outcome;
}

PostOutcome PostAuction(core::Database& db, const update::RuleStore& rules, qint64 id,
                        PostRoute route, core::Ui& ui, const PostOptions& options) {
    return AuctionPoster(db, rules, ui, options).Post(id, route);
}

}  // namespace lw::creator
