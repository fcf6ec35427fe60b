// SPDX-License-Identifier: GPL-3.0-or-later
// The sell page: seller.pro's editing commands over the site's sell form.
// Nothing here knows the form's fields: the rules name them; no loop runs
// beyond the bounds of the rules and the page.
#include "creator/sell_page.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>

#include "core/page_charset.h"
#include "core/rule_text.h"
#include "core/session.h"
#include "core/text.h"

namespace lw::creator {

namespace {

const QString& ItemSection() {
    static const QString section = QStringLiteral("eBay Sell Item Page");
    return section;
}

QString PostFailureTitle() {
    return QStringLiteral("Post Failure");
}

QString FetchFailedText() {
    return QStringLiteral("Could not retrieve eBay Sell Page.  Post failed.");
}

// "" (two double quotes) is how seller.pro writes an empty value.
QString CommandValue(const QString& value) {
    return value == QLatin1String("\"\"") ? QString() : value;
}

struct Match {
    qsizetype at = -1;
    qsizetype length = 0;
    bool found() const { return at >= 0; }
};

// A command's text found without regard to case from from; failing that, the
// text less its double quotes, for pages that leave attribute values bare.
Match FindCommand(const QString& text, const QString& what, qsizetype from) {
    if (what.isEmpty()) {
        return {};
    }
    qsizetype at = text.indexOf(what, from, Qt::CaseInsensitive);
    if (at >= 0) {
        return {at, what.size()};
    }
    QString bare = what;
    bare.remove(u'"');
    if (bare.isEmpty() || bare.size() == what.size()) {
        return {};
    }
    at = text.indexOf(bare, from, Qt::CaseInsensitive);
    return at >= 0 ? Match{at, bare.size()} : Match{};
}

// The first character at or after from that is one of set; -1 when none.
qsizetype NextOf(const QString& text, const QString& set, qsizetype from) {
    for (qsizetype i = std::max<qsizetype>(from, 0); i < text.size(); ++i) {
        if (set.contains(text.at(i))) {
            return i;
        }
    }
    return -1;
}

// A value that goes into an attribute of the page.
QString AttributeText(QString value) {
    return value.replace(u'"', QStringLiteral("&#34;"));
}

QString Checked(bool on) {
    return on ? QStringLiteral("checked") : QString();
}

struct OptionCode {
    const char* token;
    const char* code;
    const char* list;
};
constexpr OptionCode kOptionCodes[] = {
    {"[Bold]", "11~", "eBayOptionalSettings"},
    {"[HighLight]", "58~", "eBayOptionalSettings"},
    {"[SuperFeatured]", "12~", "eBayOptionalSettings"},
    {"[Featured]", "13~", "eBayOptionalSettings"},
    {"[Private]", "37~", "eBayOptionalSettings"},
    {"[MoneyOrderAccepted]", "18~", "eBayPaymentPrefs"},
    {"[PersonalChecksAccepted]", "19~", "eBayPaymentPrefs"},
    {"[VisaMasterCardAccepted]", "20~", "eBayPaymentPrefs"},
    {"[PaymentCOD]", "21~", "eBayPaymentPrefs"},
    {"[AmExAccepted]", "23~", "eBayPaymentPrefs"},
    {"[PaymentSeeDescription]", "24~", "eBayPaymentPrefs"},
    {"[OtherAccepted]", "25~", "eBayPaymentPrefs"},
    {"[DiscoverAccepted]", "26~", "eBayPaymentPrefs"},
    {"[ShippingSeeDescription]", "31~", "eBayShipPrefs"},
};

// The tokens of a flag column: "checked" when it is on.
constexpr std::array<std::pair<const char*, const char*>, 4> kFlagTokens{{
    {"[BillPointCCAccepted]", "billpointcreditcard"},
    {"[BillPointECAccepted]", "billpointechecks"},
    {"[BillPointIPAccepted]", "billpointinstantpurchase"},
    {"[BillPointAddIcon]", "billpointaddicon"},
}};

// The tokens that put a column as it stands.
constexpr std::array<std::pair<const char*, const char*>, 7> kColumnTokens{{
    {"[PictureURL]", "PictureIconActivate"},
    {"[Location]", "ItemLocation"},
    {"[Zip]", "eBayRegion"},
    {"[CountryID]", "Country"},
    {"[BillPointShipping]", "billpointshipping"},
    {"[BillPointXShipping]", "billpointadditionalshipping"},
    {"[BillPointTax]", "billpointsalestax"},
}};

// The region tokens, in the order of kRegionColumns.
constexpr const char* kRegionTokens[] = {"[NorthAmerica]", "[Europe]",       "[Oceania]",
                                         "[Asia]",         "[SouthAmerica]", "[Africa]",
                                         "[LatinAmerica]", "[MiddleEast]",   "[Caribbean]"};
static_assert(std::size(kRegionTokens) == std::size(kRegionColumns));

QString PositiveOrEmpty(const CreatorRecord& row, const char* column) {
    return row.Number(QLatin1String(column)) > 0 ? row.Text(QLatin1String(column)).trimmed()
                                                 : QString();
}

std::optional<QString> ValueToken(const QString& token, const CreatorRecord& row,
                                  const SiteLogin& login) {
    const auto is = [&token](const char* name) { return token == QLatin1String(name); };
    if (is("[UserID]")) {
        return login.userId;
    }
    if (is("[PassWord]")) {
        return login.password;
    }
    if (is("[Title]")) {
        return PostTitle(row);
    }
    const bool gallery = row.Flag(QStringLiteral("IncludeGallery"));
    if (is("[Gallery]")) {
        return gallery ? QStringLiteral("1") : QString();
    }
    if (is("[GalleryURL]")) {
        return gallery ? row.Text(QStringLiteral("GalleryLink")) : QString();
    }
    for (const auto& [name, column] : kColumnTokens) {
        if (is(name)) {
            return row.Text(QLatin1String(column));
        }
    }
    for (const auto& [name, column] : kFlagTokens) {
        if (is(name)) {
            return Checked(row.Flag(QLatin1String(column)));
        }
    }
    if (is("[OnLineEscrow]")) {
        return CodeList(row, QStringLiteral("eBayPaymentPrefs")).contains(QLatin1String("22~"))
                   ? QStringLiteral("1")
                   : QStringLiteral("0");
    }
    if (is("[BillPointTaxState]")) {
        const QString state = row.Text(QStringLiteral("billpointsalestaxstate"));
        return state.isEmpty() ? QStringLiteral("none") : state;
    }
    if (is("[BillPointReturnPolicy]")) {
        return row.Text(QStringLiteral("billpointreturnpolicy")).trimmed();
    }
    if (is("[ShippingInternationally]")) {
        return ShipToChoice(row);
    }
    const bool plusRegions = row.Flag(QStringLiteral("eBayShipUSPlus"));
    for (size_t i = 0; i < std::size(kRegionTokens); ++i) {
        if (is(kRegionTokens[i])) {
            return Checked(plusRegions && row.Flag(QLatin1String(kRegionColumns[i])));
        }
    }
    if (is("[OtherShippingOption]")) {
        const QString shipping = CodeList(row, QStringLiteral("eBayShipPrefs"));
        for (const auto& [code, choice] :
             {std::pair{"28~", "sellerPaysShipping"}, std::pair{"29~", "buyerPaysShippingFixed"},
              std::pair{"30~", "buyerPaysShippingActual"}}) {
            if (shipping.contains(QLatin1String(code))) {
                return QString::fromLatin1(choice);
            }
        }
        return QString();
    }
    if (is("[Quantity]")) {
        return row.Number(QStringLiteral("Quantity")) > 0 ? row.Text(QStringLiteral("Quantity"))
                                                          : QStringLiteral("1");
    }
    if (is("[StartPrice]")) {
        return PositiveOrEmpty(row, "MinimumBid");
    }
    if (is("[Duration]")) {
        return row.Text(QStringLiteral("eBayDuration"));
    }
    if (is("[Reserve]")) {
        return PositiveOrEmpty(row, "Reserve");
    }
    return std::nullopt;
}

}  // namespace

bool LoadSellerRules(update::RuleStore& seller, QString* error) {
    const core::Session& session = core::CurrentSession();
    QString path = session.ConfigsDir + QStringLiteral("seller.pro");
    if (!QFileInfo::exists(path)) {
        path = session.ShippedDir + QStringLiteral("/rules/seller.pro");
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error != nullptr) {
            *error = QStringLiteral("The sell page's rules could not be read from ") + path +
                     QStringLiteral(": ") + file.errorString();
        }
        return false;
    }
    const QByteArray bytes = file.read(kMaxSellerRulesBytes);
    seller.SetText(update::kSellerStore,
                   core::RuleTextFromBytes(bytes) + QStringLiteral("\r\n\r\n"));
    return true;
}

PageEdit ParsePageEdit(const QString& line) {
    static const std::array<QString, 6> keywords = {
        QStringLiteral("FindIt="), QStringLiteral(" StartIt="),  QStringLiteral(" StopIt="),
        QStringLiteral(" PutIt="), QStringLiteral(" DeleteIt="), QStringLiteral(" FindIt2=")};
    std::array<qsizetype, 6> at{};
    qsizetype from = 0;
    for (size_t k = 0; k < keywords.size(); ++k) {
        at[k] = line.indexOf(keywords[k], from);
        if (at[k] >= 0) {
            from = at[k] + keywords[k].size();
        }
    }
    std::array<QString, 6> values;
    for (size_t k = 0; k < keywords.size(); ++k) {
        if (at[k] < 0) {
            continue;
        }
        const qsizetype start = at[k] + keywords[k].size();
        qsizetype end = line.size();
        for (size_t next = k + 1; next < keywords.size(); ++next) {
            if (at[next] >= 0) {
                end = at[next];
                break;
            }
        }
        values[k] = CommandValue(line.mid(start, end - start));
    }
    return {values[0], values[1], values[2], values[3], values[4], values[5]};
}

QString LineToken(const QString& line) {
    const qsizetype open = line.indexOf(u'[');
    const qsizetype close = open < 0 ? -1 : line.indexOf(u']', open);
    return close < 0 ? QString() : line.mid(open, close - open + 1);
}

void ApplyPageEdit(PageText& page, const PageEdit& edit) {
    QString& text = page.text;
    const bool description = edit.findIt.contains(QLatin1String("desc"), Qt::CaseInsensitive);
    QString putIt = edit.putIt;
    if (description) {
        if (putIt.endsWith(u'"')) {
            putIt.chop(1);
        }
        if (putIt.startsWith(u'"')) {
            putIt.remove(0, 1);
        }
    }
    const Match found = FindCommand(text, edit.findIt, 0);
    if (found.found()) {
        page.selStart = found.at;
        page.selLength = found.length;
    }
    const qsizetype from = found.found() ? found.at : 0;
    if (const Match cut = FindCommand(text, edit.deleteIt, from); cut.found()) {
        text.remove(cut.at, cut.length);
        page.selStart = cut.at;
        page.selLength = 0;
    }
    if (const Match second = FindCommand(text, edit.findIt2, from); second.found()) {
        page.selStart = second.at;
        page.selLength = second.length;
    }
    if (!edit.startIt.isEmpty()) {
        if (const qsizetype caret = NextOf(text, edit.startIt, page.selStart + page.selLength);
            caret >= 0) {
            page.selStart = caret;
            page.selLength = 0;
        }
    }
    if (!edit.stopIt.isEmpty()) {
        if (const qsizetype stop = NextOf(text, edit.stopIt, page.selStart + page.selLength);
            stop >= 0) {
            page.selLength = stop - page.selStart;
        }
    }
    if (putIt.isEmpty() || !found.found()) {
        return;
    }
    const QString put = description ? QStringLiteral(" ") + putIt : putIt;
    text.insert(page.selStart + page.selLength, put);
    page.selStart += page.selLength + put.size();
    page.selLength = 0;
}

std::optional<QString> OptionCodeToken(const QString& token, const CreatorRecord& row) {
    for (const OptionCode& option : kOptionCodes) {
        if (token == QLatin1String(option.token)) {
            return Checked(
                CodeList(row, QLatin1String(option.list)).contains(QLatin1String(option.code)));
        }
    }
    return std::nullopt;
}

std::optional<QString> SellPageToken(const QString& token, const CreatorRecord& row,
                                     const SiteLogin& login, const QString& description) {
    if (token == QLatin1String("[Description]")) {
        if (row.IsNull(QStringLiteral("AuctionHTML"))) {
            return QString();
        }
        QString text = description;
        text.remove(u'\n');
        // A closing tag of its own would end the text area early; the browser
        // gives "&lt;" back as "<" when the form is sent.
        const QString closing = QStringLiteral("</textarea");
        for (qsizetype at = text.indexOf(closing, 0, Qt::CaseInsensitive); at >= 0;
             at = text.indexOf(closing, at + 4, Qt::CaseInsensitive)) {
            text.replace(at, 1, QStringLiteral("&lt;"));
        }
        return text;
    }
    if (std::optional<QString> option = OptionCodeToken(token, row)) {
        return option;
    }
    if (std::optional<QString> value = ValueToken(token, row, login)) {
        return AttributeText(*value);
    }
    return std::nullopt;
}

QString SellYourItemUrl(const update::RuleStore& seller, const QString& category) {
    const QString& text = seller.Text(update::kSellerStore);
    const qsizetype section =
        text.indexOf(QStringLiteral("[SellYourItemURL]"), 0, Qt::CaseInsensitive);
    if (section < 0) {
        return {};
    }
    qsizetype start = text.indexOf(QStringLiteral("http://"), section, Qt::CaseInsensitive);
    const qsizetype secure = text.indexOf(QStringLiteral("https://"), section, Qt::CaseInsensitive);
    if (secure >= 0 && (start < 0 || secure < start)) {
        start = secure;
    }
    if (start < 0) {
        return {};
    }
    QString url = text.mid(start);
    const QString macro = QStringLiteral("[CATEGORY]");
    if (const qsizetype at = url.indexOf(macro); at >= 0) {
        url.replace(at, macro.size(), category);
    }
    // The address runs to the next "[" (the next section's header), less the
    // blanks and line ends before it.
    qsizetype end = url.indexOf(u'[', 1);
    if (end < 0) {
        end = url.size();
    }
    while (end > 0 && url.at(end - 1).unicode() < 33) {
        --end;
    }
    return url.left(end);
}

int EditSellPage(PageText& page, const update::RuleStore& seller, const CreatorRecord& row,
                 const SiteLogin& login, const QString& description) {
    const int items = static_cast<int>(std::min<double>(
        core::Val(seller.LookupKey(ItemSection(), QStringLiteral("Items"), update::kSellerStore)),
        kMaxSellPageItems));
    int applied = 0;
    for (int n = 1; n <= items; ++n) {
        const QString line =
            seller.LookupKey(ItemSection(), QStringLiteral("Item%1").arg(n), update::kSellerStore);
        if (line == update::RuleError()) {
            continue;
        }
        PageEdit edit = ParsePageEdit(line);
        const QString token = LineToken(line);
        if (!token.isEmpty()) {
            if (const std::optional<QString> value =
                    SellPageToken(token, row, login, description)) {
                for (QString* command : {&edit.findIt, &edit.startIt, &edit.stopIt, &edit.putIt,
                                         &edit.deleteIt, &edit.findIt2}) {
                    command->replace(token, *value);
                }
            }
        }
        ApplyPageEdit(page, edit);
        ++applied;
    }
    return applied;
}

SellPageResult PostViaSellPage(core::Database& db, const update::RuleStore& rules, qint64 id,
                               core::Ui& ui, const core::NetOptions& net) {
    SellPageResult result;
    update::RuleStore seller;
    if (!LoadSellerRules(seller, &result.problem)) {
        ui.Message(FetchFailedText(), PostFailureTitle(), core::Icon::Critical);
        return result;
    }
    const QString user = core::CurrentSession().CurrentUser;
    const std::optional<CreatorRecord> row = CreatorRecord::Read(db, user, id);
    if (!row) {
        result.problem = QStringLiteral("There is no listing document with the ID %1.").arg(id);
        return result;
    }
    const std::optional<QString> category = PostCategory(*row, DirectoryResolver(db, ui));
    if (!category) {
        const PostRefusal refusal = NoCategoryRefusal();
        ui.Message(refusal.text, refusal.title, core::Icon::Warning);
        result.problem = refusal.text;
        return result;
    }
    const QString url = SellYourItemUrl(seller, *category);
    core::NetResult page;
    if (!url.isEmpty()) {
        page = core::HttpGet(url, net, [&ui](qint64 received, qint64) {
            ui.PumpEvents();
            return received <= kMaxSellPageBytes && !ui.CancelRequested();
        });
    }
    if (!page.ok() || page.httpCode >= 400) {
        ui.Message(FetchFailedText(), PostFailureTitle(), core::Icon::Critical);
        result.problem =
            url.isEmpty() ? QStringLiteral("seller.pro names no address in [SellYourItemURL].")
            : page.ok()
                ? QStringLiteral("The site answered %1 with HTTP %2.").arg(url).arg(page.httpCode)
                : QStringLiteral("%1 could not be fetched: %2").arg(url, page.error);
        return result;
    }
    const int items = static_cast<int>(
        core::Val(seller.LookupKey(ItemSection(), QStringLiteral("Items"), update::kSellerStore)));
    if (items <= 0) {
        result.problem = QStringLiteral("seller.pro holds no editing commands (Items of [") +
                         ItemSection() + QStringLiteral("]); no sell page was written.");
        return result;
    }
    const SiteLogin login = ReadSiteLogin(db, user);
    ui.Status(QStringLiteral("Sending Auction to Sell Item Page..."));
    ui.PumpEvents();

    PageText edited;
    edited.text = QByteArrayView(page.body).isValidUtf8() ? QString::fromUtf8(page.body)
                                                          : core::FromWindows1252(page.body);
    EditSellPage(edited, seller, *row, login, DescriptionWithFooter(*row, rules));

    const QDir configs(core::CurrentSession().ConfigsDir);
    const QString path = configs.filePath(QStringLiteral("ebaysell.html"));
    if (WriteBrowserPage(path, configs.filePath(QStringLiteral("ebaysellx.html")), edited.text,
                         &result.problem)) {
        result.path = path;
    }
    ui.Status(QString());
    return result;
}

}  // namespace lw::creator
