// SPDX-License-Identifier: GPL-3.0-or-later
// The direct post of a listing: slot table, the two posts, the new auction.
#include "creator/direct_post.h"

#include <QDir>
#include <utility>
#include <vector>

#include "core/page_charset.h"
#include "core/secrets.h"
#include "core/session.h"
#include "core/settings.h"
#include "core/text.h"
#include "creator/category_directory.h"
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

QString NewItemNumber(const QString& answer, const update::RuleStore& rules) {
    const QString section = QStringLiteral("eBay New Auction Number");
    const QString marker =
        rules.LookupKey(section, QStringLiteral("Item1 Start"), update::kSiteStore);
    QString split = rules.LookupKey(section, QStringLiteral("Split"), update::kSiteStore);
    if (split == update::RuleError()) {
        split.clear();
    }
    if (marker.isEmpty() || marker == update::RuleError()) {
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

void WriteAuctionsRow(core::Database& db, const CreatorRecord& row, qint64 creatorId,
                      const QString& itemNumber, const QString& category, const QString& user,
                      const QDateTime& now) {
    const QString currency = QStringLiteral("Currency");
    const auto money = [&](const char* column) {
        return core::Format(row.Value(QLatin1String(column)), currency);
    };
    const qint64 days = static_cast<qint64>(core::Val(row.Text(QStringLiteral("eBayDuration"))));
    const QString endDate = now.date().addDays(days).toString(QStringLiteral("MM/dd/yy")) +
                            QStringLiteral(", ") + now.time().toString(QStringLiteral("hh:mm:ss")) +
                            QStringLiteral(" PST");
    std::vector<std::pair<QString, QVariant>> columns = {
        {QStringLiteral("AuctionCreatorID"), creatorId},
        {QStringLiteral("ItemNumber"), itemNumber},
        {QStringLiteral("UserName"), user},
        {QStringLiteral("InventoryID"), row.IsNull(QStringLiteral("InventoryID"))
                                            ? QVariant(0)
                                            : row.Value(QStringLiteral("InventoryID"))},
        {QStringLiteral("AuctionSiteFlag"), 0},
        {QStringLiteral("ItemTitle"), row.Text(QStringLiteral("eBayAuctionTitle"))},
        {QStringLiteral("ItemCategory"),
         CategoryFullName(db, static_cast<qint64>(core::Val(category)))},
        {QStringLiteral("Quantity"), row.Text(QStringLiteral("Quantity"))},
        {QStringLiteral("NumberBids"), QStringLiteral("-")},
        {QStringLiteral("ShippingMethod"), row.Value(QStringLiteral("ShippingMethod"))},
        {QStringLiteral("HighBid"), QStringLiteral("-")},
        {QStringLiteral("HighBidderName"), QStringLiteral("--")},
        {QStringLiteral("HighBidderFeedback"), QStringLiteral("--")},
        {QStringLiteral("StartDate"), now.date().toString(QStringLiteral("MM/dd/yy"))},
        {QStringLiteral("EndDate"), endDate},
    };
    // Amounts the row does not hold are left as they are.
    for (const auto& [column, source] :
         {std::pair{"MinimumBid", "MinimumBid"}, std::pair{"ReserveBid", "Reserve"},
          std::pair{"ShippingCost", "Shipping"}, std::pair{"OrderShipping", "Shipping"},
          std::pair{"InsuranceCost", "Insurance"}, std::pair{"ItemCost", "YourItemCost"}}) {
        if (!row.IsNull(QLatin1String(source))) {
            columns.emplace_back(QLatin1String(column), money(source));
        }
    }

    core::Statement find = db.Prepare(QStringLiteral(
        "SELECT rowid FROM Auctions WHERE ItemNumber = ? AND UserName = ? ORDER BY rowid LIMIT 1"));
    find.BindAll(itemNumber, user);
    QStringList names;
    for (const auto& column : columns) {
        names << column.first;
    }
    core::Statement write = [&] {
        if (find.Step()) {
            const qint64 rowid = find.Value(0).toLongLong();
            core::Statement update = db.Prepare(QStringLiteral("UPDATE Auctions SET ") +
                                                names.join(QStringLiteral(" = ?, ")) +
                                                QStringLiteral(" = ? WHERE rowid = ?"));
            update.Bind(static_cast<int>(columns.size()) + 1, rowid);
            return update;
        }
        return db.Prepare(
            QStringLiteral("INSERT INTO Auctions (") + names.join(QStringLiteral(", ")) +
            QStringLiteral(") VALUES (") +
            QStringList(names.size(), QStringLiteral("?")).join(QStringLiteral(", ")) + u')');
    }();
    for (size_t i = 0; i < columns.size(); ++i) {
        write.Bind(static_cast<int>(i) + 1, columns[i].second);
    }
    write.Run();
}

PostOutcome PostAuction(core::Database& db, const update::RuleStore& rules, qint64 id,
                        PostRoute route, core::Ui& ui, const PostOptions& options) {
    PostOutcome outcome;
    const core::NetOptions net = options.net.value_or(update::NetOptionsForUser(db));
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

    PostSlots slots = LoadPostTable(rules);
    const QString user = core::CurrentSession().CurrentUser;
    const std::optional<CreatorRecord> row = CreatorRecord::Read(db, user, id);
    if (!row) {
        ui.Status(QString());
        outcome.problem = QStringLiteral("There is no listing document with the ID %1.").arg(id);
        return outcome;
    }
    SiteLogin login = ReadSiteLogin(db, user);
    const std::optional<PostRefusal> refusal = FillPostSlots(
        slots, *row, login, DescriptionWithFooter(*row, rules), DirectoryResolver(db, ui));
    core::Scrub(login.password);
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
    const Answer first = PostForm(PostAddress(rules, "Server", "url"), body, net, ui);
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
    const QString action =
        rules.LookupKey(PostSection(), QStringLiteral("Action"), update::kSiteStore);
    const QString confirm =
        action == update::RuleError() ? QString() : update::ExtractHiddenFields(first.text, action);
    if (confirm.isEmpty()) {
        return fallBack(directFailed,
                        signInRefused ? refusedWords
                                      : QStringLiteral("The site's answer held no form to confirm "
                                                       "the listing: \"%1\".")
                                            .arg(PageTitle(first.text)));
    }
    const Answer second = PostForm(PostAddress(rules, "Server2", "url2"), confirm, net, ui);
    if (!second.ok) {
        return unanswered(second);
    }
    ui.Status(QStringLiteral("Auction posted successfully..."));
    ui.PumpEvents();

    outcome.posted = true;
    outcome.itemNumber = NewItemNumber(second.text, rules);
    if (!outcome.itemNumber.isEmpty()) {
        try {
            WriteAuctionsRow(db, *row, id, outcome.itemNumber, category, user,
                             QDateTime::currentDateTime());
        } catch (const core::StoreError& failure) {
            outcome.problem = QStringLiteral(
                                  "The auction went out as item %1, but its Auctions row "
                                  "could not be written: %2")
                                  .arg(outcome.itemNumber, failure.Message());
        }
    }
    ui.Status(QStringLiteral("Auction posted successfully"));
    outcome.confirm =
        !options.fromQueue &&
        core::Val(core::GetSetting(QStringLiteral("Tolvane"), QStringLiteral("Options"),
                                   QStringLiteral("AuctionConfirmOff"))) <= 0;
    return outcome;
}

}  // namespace lw::creator
