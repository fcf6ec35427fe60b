// SPDX-License-Identifier: GPL-3.0-or-later
// The creator's document and its AuctionCreator row. A save is one INSERT or
// one UPDATE of the whole row, inside one transaction with the Default row's
// delete; a load that finds no row leaves the document as it was. Every value
// is bound; column names come from this file only.
#include "creator/creator_document.h"

#include <QDateTime>
#include <algorithm>

#include "core/session.h"
#include "core/settings.h"
#include "core/text.h"
#include "creator/listing_html.h"

namespace lw::creator {

namespace {

const QString kSettingsApp = QStringLiteral("Tolvane Auction Creator");
const QString kSettingsSection = QStringLiteral("Settings");
const QString kTaxStates = QStringLiteral("Billpoint Tax States");
constexpr int kCreditCardCode = 49;

// The nine region columns, in the order of the rows of lstEbayShiptoCountries;
// UserSites names them without the "eBay".
constexpr const char* kRegions[9] = {"northamerica", "europe",       "oceania",
                                     "asia",         "southamerica", "africa",
                                     "latinamerica", "middleeast",   "caribbean"};

QString RegionColumn(int i) {
    return QStringLiteral("eBay") + QLatin1String(kRegions[i]);
}

// Every text box that maps to one text column, as column and field; one walk
// serves the load (fields written) and the save (fields read).
template <class Doc, class Visit>
void ForEachTextField(Doc& doc, Visit visit) {
    visit("ItemTitleLong", doc.txtItemTitle);
    visit("ItemDescription", doc.txtDescription);
    visit("ShippingMethod", doc.cmbShippingMethod);
    visit("GalleryLink", doc.cmbEbayGallery);
    visit("ItemLocation", doc.txtItemLocationEbay);
    visit("eBayAuctionTitle", doc.txtEbayTitle);
    visit("eBayDuration", doc.cmbEbayDuration);
    visit("PDCaption0", doc.txtProductDetails[0]);
    visit("PDCaption1", doc.txtProductDetails[1]);
    visit("PDMessage0", doc.cmbProductDetails[0]);
    visit("PDMessage1", doc.cmbProductDetails[1]);
    for (int i = 0; i < 5; ++i) {
        static constexpr const char* kMessages[5] = {"TDMessage0", "TDMessage1", "TDMessage2",
                                                     "TDMessage3", "TDMessage4"};
        visit(kMessages[i], doc.cmbTransaction[size_t(i)]);
    }
    visit("TDCaption0", doc.txtTransaction[0]);
    visit("TDCaption1", doc.txtTransaction[1]);
    visit("TDCaption2", doc.txtTransaction[2]);
    visit("OCaption0", doc.txtOtherCaption[0]);
    visit("OCaption1", doc.txtOtherCaption[1]);
    visit("OCaption2", doc.txtOtherCaption[2]);
    visit("LinkEmailCaption", doc.txtEmailLinkCaption);
    visit("LinkEmailAddress", doc.txtEmailLinkText);
    visit("LinkCaption0", doc.txtLinkCaption[0]);
    visit("LinkCaption1", doc.txtLinkCaption[1]);
    visit("LinkLink0", doc.txtLinkLink[0]);
    visit("LinkLink1", doc.txtLinkLink[1]);
    visit("eBayLinktoAuctions", doc.txtEbayAuctionLink);
    visit("PayPalemail", doc.txtPayPalAddress);
    visit("AuctionTiledBGLink", doc.cmbBGImageLink);
}

// Every check box that maps to one flag column.
template <class Doc, class Visit>
void ForEachCheckField(Doc& doc, Visit visit) {
    visit("PictureReturn", doc.chkPictureReturn);
    visit("PictureSize", doc.chkPictureSize);
    visit("TileBGImage", doc.chkBGImage);
    visit("IncludeLongTitle", doc.chkItemTitle);
    visit("IncludeGallery", doc.chkEbayGallery);
    visit("PDInclude0", doc.chkProductDetails[0]);
    visit("PDInclude1", doc.chkProductDetails[1]);
    visit("PDQuantityInclude", doc.chkProductDetails[2]);
    for (int i = 0; i < 5; ++i) {
        static constexpr const char* kIncludes[5] = {"TDInclude0", "TDInclude1", "TDInclude2",
                                                     "TDInclude3", "TDInclude4"};
        visit(kIncludes[i], doc.chkTransaction[size_t(i)]);
    }
    visit("OCInclude0", doc.chkOtherCaption[0]);
    visit("OCInclude1", doc.chkOtherCaption[1]);
    visit("OCInclude2", doc.chkOtherCaption[2]);
    visit("LinkIncludeSE", doc.chkEmailLink);
    visit("LinkInclude0", doc.chkLink[0]);
    visit("LinkInclude1", doc.chkLink[1]);
    visit("eBayIncludeLTA", doc.chkEbayAuctionLink);
    visit("billpointcreditcard", doc.chkbillpointCCAccepted);
    visit("billpointechecks", doc.chkbillpointECAccepted);
    visit("billpointinstantpurchase", doc.chkbillpointIPAccepted);
    visit("billpointaddicon", doc.chkAddbillpointicon);
}

// The money boxes and their columns; Quantity is shown without a format.
template <class Doc, class Visit>
void ForEachMoneyField(Doc& doc, Visit visit) {
    visit("MinimumBid", doc.txtMinimumBid);
    visit("Quantity", doc.txtQuantity);
    visit("Shipping", doc.txtShipping);
    visit("Insurance", doc.txtInsurance);
    visit("YourItemCost", doc.txtItemCost);
    visit("Reserve", doc.txtReserve);
    visit("SellPrice", doc.txtSellPrice);
}

// The lists coded as item data each followed by "~".
template <class Doc, class Lists, class Visit>
void ForEachCodedList(Doc& doc, Lists& lists, Visit visit) {
    visit("eBayOptionalSettings", doc.lstEbayOptions, lists.lstEbayOptions);
    visit("eBayPaymentPrefs", doc.lstEbayAcceptedPayment, lists.lstEbayAcceptedPayment);
    visit("eBayShipPrefs", doc.lstEbayShippingPref, lists.lstEbayShippingPref);
}

QString Col(const char* name) {
    return QString::fromLatin1(name);
}

bool EmptyColumn(const core::Statement& row, const QString& column) {
    return row.IsNull(column) || row.Text(column).trimmed().isEmpty();
}

// The number a money box stores: Format(box, "General Number"); nothing for an
// empty box or one that holds no number.
std::optional<double> BoxNumber(const QString& box) {
    if (box.trimmed().isEmpty()) {
        return std::nullopt;
    }
    return core::TextToNumber(QStringView(box).trimmed());
}

QString CodedList(const QList<int>& selected, const ListRows& rows) {
    QString text;
    for (int row = 0; row < int(rows.size()); ++row) {
        if (selected.contains(row)) {
            text += QString::number(rows[size_t(row)].data) + u'~';
        }
    }
    return text;
}

// The rows whose item data a "~" list names; numbers with no row select none.
QList<int> SelectCoded(const QString& coded, const ListRows& rows) {
    QList<int> selected;
    for (const QString& piece : coded.split(u'~', Qt::SkipEmptyParts)) {
        const int row = FindItemData(rows, int(core::Val(piece)));
        if (row >= 0 && !piece.trimmed().isEmpty() && !selected.contains(row)) {
            selected << row;
        }
    }
    std::sort(selected.begin(), selected.end());
    return selected;
}

bool CodedHas(const QString& coded, int code) {
    const QStringList pieces = coded.split(u'~', Qt::SkipEmptyParts);
    return std::any_of(pieces.begin(), pieces.end(), [code](const QString& piece) {
        return !piece.trimmed().isEmpty() && int(core::Val(piece)) == code;
    });
}

// "~~~" after every entry; an empty list stores empty text.
QString JoinPictureLinks(const QStringList& links) {
    QString text;
    for (const QString& link : links) {
        text += link + QStringLiteral("~~~");
    }
    return text;
}

QStringList SplitPictureLinks(QString text) {
    QStringList links;
    if (text.isEmpty()) {
        return links;
    }
    if (!text.endsWith(QStringLiteral("~~~"))) {
        text += QStringLiteral("~~~");
    }
    qsizetype from = 0;
    for (qsizetype at = text.indexOf(QStringLiteral("~~~")); at >= 0;
         at = text.indexOf(QStringLiteral("~~~"), from)) {
        links << text.mid(from, at - from);
        from = at + 3;
    }
    return links;
}

int RowByText(const ListRows& rows, const QString& text) {
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].text.compare(text, Qt::CaseInsensitive) == 0) {
            return int(i);
        }
    }
    return -1;
}

QVariant RowData(const ListRows& rows, int row) {
    if (row < 0 || row >= int(rows.size())) {
        return QVariant();
    }
    return rows[size_t(row)].data;
}

QString Currency(const QVariant& value) {
    return core::Format(value, QStringLiteral("Currency"));
}

void Tell(core::Ui& ui, const QString& text) {
    ui.Message(text, CreatorCaption(), core::Icon::Information);
}

// The payment block of a row whose instant purchase is on, and its reset when off.
void LoadPaymentBlock(const core::Statement& row, const CreatorLists& lists,
                      const update::RuleStore& rules, CreatorDocument& doc) {
    if (!doc.chkbillpointIPAccepted) {
        doc.txtipShippingFee = QStringLiteral("$0.00");
        doc.txtipShippingXFee = QStringLiteral("$0.00");
        doc.txtipTax = QStringLiteral("0");
        doc.lstipTaxState = lists.lstipTaxState.empty() ? -1 : 0;
        doc.lblFullPolicy.clear();
        return;
    }
    doc.txtipShippingFee = Currency(row.Value(Col("billpointshipping")));
    doc.txtipShippingXFee = Currency(row.Value(Col("billpointadditionalshipping")));
    doc.txtipTax = row.Text(Col("billpointsalestax"));
    const QString code = row.Text(Col("billpointsalestaxstate"));
    const QString name = rules.LookupName(kTaxStates, code, update::kInfoStore);
    const int byName = RowByText(lists.lstipTaxState, name);
    doc.lstipTaxState = byName >= 0 ? byName : RowByText(lists.lstipTaxState, code);
    if (doc.lstipTaxState < 0) {
        doc.lstipTaxState = lists.lstipTaxState.empty() ? -1 : 0;
    }
    doc.lblFullPolicy = row.Text(Col("billpointreturnpolicy"));
}

void LoadCategory(core::Database& db, const QString& number, CreatorDocument& doc) {
    doc.lbleBayCat = number;
    doc.cmbEbayCategory = {};
    core::Statement find = db.Prepare(QStringLiteral(
        "SELECT MetaCategoryName, CategoryName FROM eBayCategories WHERE CategoryNumber = ?"));
    find.Bind(1, number);
    if (!number.isEmpty() && find.Step()) {
        doc.cmbEbayCategory.text = find.Text(0) + QStringLiteral(": ") + find.Text(1) +
                                   QStringLiteral(" (") + number + u')';
        doc.cmbEbayCategory.number = number;
    }
}

QStringList ChooserNames(core::Database& db, const QString& type, const QString& user) {
    QStringList names;
    for (const ChooserRow& row : ChooserRows(db, type, user)) {
        names << row.text;
    }
    return names;
}

}  // namespace

QString CreatorCaption() {
    return QStringLiteral("Lotwright Auction Creator");
}

// ------------------------------------------------------------------ lists

QString FontSeparator() {
    return QStringLiteral("_____________________");
}

QStringList FontList(const QStringList& screenFonts) {
    static const QStringList kSymbolFonts = {
        QStringLiteral("Almanac MT"),    QStringLiteral("Bon Appetit MT"),
        QStringLiteral("Directions MT"), QStringLiteral("Holidays MT"),
        QStringLiteral("Keystrokes MT"), QStringLiteral("Map Symbols"),
        QStringLiteral("Marlett"),       QStringLiteral("Monotype Sorts"),
        QStringLiteral("MS Outlook"),    QStringLiteral("MT Extra"),
        QStringLiteral("Parties MT"),    QStringLiteral("Quick Type Pi"),
        QStringLiteral("Signs MT"),      QStringLiteral("Sports Three MT"),
        QStringLiteral("Sports Two MT"), QStringLiteral("Symbol"),
        QStringLiteral("Transport MT"),  QStringLiteral("Vacation MT"),
        QStringLiteral("Webdings"),      QStringLiteral("Wingdings"),
        QStringLiteral("Wingdings 2"),   QStringLiteral("Wingdings 3")};
    QStringList rest;
    for (const QString& font : screenFonts) {
        if (!kSymbolFonts.contains(font, Qt::CaseInsensitive) &&
            !font.startsWith(QStringLiteral("Mini Pics"), Qt::CaseInsensitive)) {
            rest << font;
        }
    }
    rest.sort(Qt::CaseInsensitive);
    return QStringList{QStringLiteral("Arial"), QStringLiteral("Comic Sans MS"),
                       QStringLiteral("Times New Roman"), QStringLiteral("Verdana"),
                       FontSeparator()} +
           rest;
}

int FindItemData(const ListRows& rows, int data) {
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].data == data) {
            return int(i);
        }
    }
    return -1;
}

QString RowText(const ListRows& rows, int row) {
    return row < 0 || row >= int(rows.size()) ? QString() : rows[size_t(row)].text;
}

CreatorLists LoadCreatorLists(core::Database& db, const update::RuleStore& rules,
                              const QString& user, const QString& templatesDir,
                              const QStringList& screenFonts) {
    CreatorLists lists;
    const auto fill = [&rules](const char* section) {
        return rules.FillList(update::kInfoStore, QString::fromLatin1(section));
    };
    lists.lstEbayOptions = fill("Auction Options");
    lists.lstEbayGiftIcon = fill("Gift Icons");
    lists.lstEbayAcceptedPayment = fill("Payment");
    lists.lstEbayShippingPref = fill("Shipping");
    lists.cmbEbayCountry = fill("Countries");
    lists.lstEbayShiptoCountries = fill("Shipping Regions");
    lists.cmbEbayRegion = fill("Regions");
    lists.cmbShippingMethod = fill("Shipping Method");
    lists.cmbShippingMethod.insert(lists.cmbShippingMethod.begin(),
                                   ListRow{QStringLiteral("Choose Shipping Method"), 0});
    lists.lstipTaxState = fill("Billpoint Tax States");
    const auto options = [&rules](const QString& section) {
        QStringList texts;
        const QString count = rules.LookupKey(section, QStringLiteral("Options"), 1);
        // The count comes from a file: at most a list's worth of rows.
        const int n = std::clamp(int(core::Val(count)), 0, 100);
        for (int i = 1; i <= n; ++i) {
            texts << rules.LookupKey(section, QStringLiteral("Option") + QString::number(i),
                                     update::kInfoStore);
        }
        return texts;
    };
    lists.cmbCounterStyle = options(QStringLiteral("RubyLane"));
    lists.cmbPayPalLogo = options(QStringLiteral("PayPal"));
    lists.cmbFontType = FontList(screenFonts);
    for (int size = 1; size <= 7; ++size) {
        lists.cmbFontSize << QString::number(size);
    }
    lists.cmbEbayDuration = QStringList{QStringLiteral("3"), QStringLiteral("5"),
                                        QStringLiteral("7"), QStringLiteral("10")};
    lists.colours = ColourNames();
    lists.lstTemplateStyle = ListAuctionStyles(templatesDir);

    for (int type : {0, 2}) {
        for (const QString& url : LoadFavorites(db, user, type)) {
            lists.cmbPictureLink.push_back({url, type});
        }
    }
    lists.cmbBGImageLink = LoadFavorites(db, user, 1);
    for (int i = 0; i < 2; ++i) {
        lists.cmbProductDetails[size_t(i)] = LoadFavorites(db, user, 3 + i);
    }
    for (int i = 0; i < 5; ++i) {
        lists.cmbTransaction[size_t(i)] = LoadFavorites(db, user, 5 + i);
    }
    core::Statement categories = db.Prepare(QStringLiteral(
        "SELECT CategoryName, CategoryNumber FROM FavoriteCategories WHERE UserName = ? "
        "ORDER BY rowid"));
    categories.Bind(1, user);
    while (categories.Step()) {
        lists.cmbEbayCategory.push_back({categories.Text(0), categories.Text(1)});
    }
    return lists;
}

CreatorDocument NewCreatorDocument(const CreatorLists& lists) {
    CreatorDocument doc;
    doc.cmbTableBGColor = lists.colours.value(1);
    doc.cmbThemeColor = lists.colours.value(0);
    doc.cmbFontColor = lists.colours.value(0);
    doc.cmbFontType = lists.cmbFontType.value(0);
    doc.cmbEbayDuration = lists.cmbEbayDuration.value(2);
    doc.cmbFontSize = lists.cmbFontSize.size() > 1 ? 1 : -1;
    doc.lstTemplateStyle =
        lists.lstTemplateStyle.empty() ? QString() : lists.lstTemplateStyle.front().name;
    doc.cmbShippingMethod = RowText(lists.cmbShippingMethod, 0);
    doc.lstipTaxState = lists.lstipTaxState.empty() ? -1 : 0;
    return doc;
}

// ------------------------------------------------------------------ load

bool LoadCreatorRecord(core::Database& db, qint64 id, const CreatorLists& lists,
                       const update::RuleStore& rules, CreatorDocument& doc) {
    core::Statement row = db.Prepare(QStringLiteral("SELECT * FROM AuctionCreator WHERE ID = ?"));
    row.Bind(1, id);
    if (!row.Step()) {
        return false;
    }
    doc.txtInventoryID = row.IsNull(Col("InventoryID")) ? QString() : row.Text(Col("InventoryID"));
    doc.caption = QStringLiteral("Lotwright AC: ") + row.Text(Col("AuctionName"));

    ForEachTextField(doc,
                     [&row](const char* column, QString& field) { field = row.Text(Col(column)); });
    ForEachCheckField(doc,
                      [&row](const char* column, bool& field) { field = row.Flag(Col(column)); });
    ForEachMoneyField(doc, [&row](const char* column, QString& field) {
        const QString name = Col(column);
        field = EmptyColumn(row, name) ? QString()
                : name == u"Quantity"  ? row.Text(name)
                                       : Currency(row.Value(name));
    });
    if (core::Val(doc.txtQuantity) < 1) {
        doc.txtQuantity = QStringLiteral("1");
    }
    doc.lstPictureLink = SplitPictureLinks(row.Text(Col("PictureLinks")));

    doc.cmbEbayPicIconActivate = row.Text(Col("PictureIconActivate"));
    if (doc.cmbEbayPicIconActivate.isEmpty()) {
        doc.cmbEbayPicIconActivate = QStringLiteral("http://");
    }
    const auto choose = [&row](const ListRows& rows, const char* column) {
        const int found = FindItemData(rows, int(row.Int(Col(column))));
        return !row.IsNull(Col(column)) && found >= 0 ? found : rows.empty() ? -1 : 0;
    };
    doc.cmbEbayCountry = choose(lists.cmbEbayCountry, "Country");
    doc.cmbEbayRegion = choose(lists.cmbEbayRegion, "eBayRegion");
    doc.lstEbayGiftIcon =
        row.IsNull(Col("eBayGiftIcon"))
            ? -1
            : FindItemData(lists.lstEbayGiftIcon, int(row.Int(Col("eBayGiftIcon"))));

    ForEachCodedList(doc, lists,
                     [&row](const char* column, QList<int>& selected, const ListRows& rows) {
                         selected = SelectCoded(row.Text(Col(column)), rows);
                     });
    // Older rows keep the credit card choice among the options, as code 49.
    doc.chkbillpointCCAccepted = doc.chkbillpointCCAccepted ||
                                 CodedHas(row.Text(Col("eBayOptionalSettings")), kCreditCardCode);

    doc.optEbayWorldShipping = row.Flag(Col("eBayShipAbroadPref")) ? 1
                               : row.Flag(Col("eBayShipUSPlus"))   ? 2
                                                                   : 0;
    for (int i = 0; i < 9; ++i) {
        doc.lstEbayShiptoCountries[size_t(i)] = row.Flag(RegionColumn(i));
    }

    doc.cmbPayPalLogo = int(row.Int(Col("PayPalLogo")));
    doc.cmbCounterStyle = int(row.Int(Col("CounterChoice")));
    const QString style = row.Text(Col("AuctionStyle"));
    const auto styleRow = std::find_if(lists.lstTemplateStyle.begin(), lists.lstTemplateStyle.end(),
                                       [&style](const AuctionStyle& s) {
                                           return s.name.compare(style, Qt::CaseInsensitive) == 0;
                                       });
    doc.lstTemplateStyle = styleRow != lists.lstTemplateStyle.end() ? styleRow->name
                           : lists.lstTemplateStyle.empty()         ? QString()
                                                            : lists.lstTemplateStyle.front().name;
    // A colour or font the row does not name leaves the box as it was.
    const auto colour = [&row, &lists](const char* column, QString& box) {
        const QString name = row.Text(Col(column)).trimmed();
        for (const QString& known : lists.colours) {
            if (known.compare(name, Qt::CaseInsensitive) == 0) {
                box = known;
            }
        }
    };
    colour("AuctionBGColor", doc.cmbTableBGColor);
    colour("AuctionThemeColor", doc.cmbThemeColor);
    colour("AuctionFontColor", doc.cmbFontColor);
    if (!row.Text(Col("AuctionFontType")).trimmed().isEmpty()) {
        doc.cmbFontType = row.Text(Col("AuctionFontType"));
    }
    LoadPaymentBlock(row, lists, rules, doc);
    doc.cmbFontSize = row.IsNull(Col("DefaultFontSize")) ? 1 : int(row.Int(Col("DefaultFontSize")));
    LoadCategory(db, row.Text(Col("eBayCategory")).trimmed(), doc);
    doc.dirty = false;
    return true;
}

// ------------------------------------------------------------------ save

Columns DocumentColumns(const CreatorDocument& doc, const CreatorLists& lists,
                        const update::RuleStore& rules) {
    Columns columns;
    const auto put = [&columns](const char* column, QVariant value) {
        columns.emplace_back(Col(column), std::move(value));
    };
    ForEachCheckField(doc, [&](const char* column, const bool& field) {
        const QString name = Col(column);
        if (!name.startsWith(QStringLiteral("billpoint"))) {
            put(column, int(field));
        }
    });
    put("DefaultFontSize", doc.cmbFontSize);
    ForEachTextField(doc, [&](const char* column, const QString& field) { put(column, field); });
    ForEachMoneyField(doc, [&](const char* column, const QString& field) {
        if (const std::optional<double> number = BoxNumber(field)) {
            put(column, *number);
        }
    });
    put("PictureLinks", JoinPictureLinks(doc.lstPictureLink));
    put("PictureIconActivate", doc.cmbEbayPicIconActivate);
    put("Country", RowData(lists.cmbEbayCountry, doc.cmbEbayCountry));
    put("eBayRegion", RowData(lists.cmbEbayRegion, doc.cmbEbayRegion));
    put("eBayCategory",
        doc.cmbEbayCategory.text.isEmpty() ? QString() : doc.cmbEbayCategory.number);
    ForEachCodedList(doc, lists,
                     [&](const char* column, const QList<int>& selected, const ListRows& rows) {
                         put(column, CodedList(selected, rows));
                     });
    put("eBayGiftIcon", RowData(lists.lstEbayGiftIcon, doc.lstEbayGiftIcon));
    put("eBayShipAbroadPref", int(doc.optEbayWorldShipping == 1));
    put("eBayShipUSPlus", int(doc.optEbayWorldShipping == 2));
    for (int i = 0; i < 9; ++i) {
        columns.emplace_back(RegionColumn(i), int(doc.lstEbayShiptoCountries[size_t(i)]));
    }
    put("PDQuantity", qint64(core::Val(doc.txtQuantity)));
    put("PayPalLogo", doc.cmbPayPalLogo);
    put("CounterChoice", doc.cmbCounterStyle);
    put("AuctionStyle", doc.lstTemplateStyle);
    put("AuctionBGColor", doc.cmbTableBGColor);
    put("AuctionThemeColor", doc.cmbThemeColor);
    put("AuctionFontColor", doc.cmbFontColor);
    put("AuctionFontType", doc.cmbFontType);
    put("billpointcreditcard", int(doc.chkbillpointCCAccepted));
    put("billpointechecks", int(doc.chkbillpointECAccepted));
    put("billpointinstantpurchase", int(doc.chkbillpointIPAccepted));
    put("billpointaddicon", int(doc.chkAddbillpointicon));
    if (doc.chkbillpointIPAccepted) {
        const auto number = [](const QString& box) {
            return QVariant(
                BoxNumber(box.trimmed().isEmpty() ? QStringLiteral("0") : box).value_or(0));
        };
        put("billpointshipping", number(doc.txtipShippingFee));
        put("billpointadditionalshipping", number(doc.txtipShippingXFee));
        put("billpointsalestax", number(doc.txtipTax));
        QString code = rules.LookupKey(kTaxStates, RowText(lists.lstipTaxState, doc.lstipTaxState),
                                       update::kInfoStore);
        put("billpointsalestaxstate", code == update::RuleError() ? QStringLiteral("none") : code);
        put("billpointreturnpolicy", doc.lblFullPolicy);
    }
    return columns;
}

qint64 SaveCreatorRecord(core::Database& db, const SaveRequest& request, CreatorDocument& doc,
                         const CreatorLists& lists, const update::RuleStore& rules) {
    core::Ui& ui = core::CurrentUi();
    const QString user = core::CurrentSession().CurrentUser;
    const bool oldAuction = request.type == kOldAuction;
    QString status = oldAuction ? (request.toOutbox ? QStringLiteral("Saving Auction to Outbox.")
                                                    : QStringLiteral("Saving Auction."))
                                : QStringLiteral("Saving ") + request.type;
    ui.Status(status);
    if (doc.chkbillpointIPAccepted) {
        for (QString* box : {&doc.txtipShippingFee, &doc.txtipShippingXFee, &doc.txtipTax}) {
            if (box->trimmed().isEmpty()) {
                *box = QStringLiteral("0");
            }
        }
    }

    core::Transaction tx(db);
    if (request.type == kDefault) {
        db.Prepare(QStringLiteral("DELETE FROM AuctionCreator WHERE ACType = ?"))
            .Bind(1, QString(kDefault))
            .Run();
    }
    bool exists = false;
    if (request.existingId > 0) {
        core::Statement find =
            db.Prepare(QStringLiteral("SELECT 1 FROM AuctionCreator WHERE ID = ?"));
        find.Bind(1, request.existingId);
        exists = find.Step();
    }
    QString name = request.name;
    if (request.existingId <= 0 && !request.overwrite) {
        name = MakeUniqueName(db, name, request.type, user);
    }

    Columns columns;
    columns.emplace_back(QStringLiteral("UserName"), user);
    if (request.toOutbox) {
        columns.emplace_back(QStringLiteral("Outbox"), 1);
    }
    columns.emplace_back(QStringLiteral("InventoryID"), qint64(core::Val(doc.txtInventoryID)));
    columns.emplace_back(
        QStringLiteral("CreationDate"),
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
    columns.emplace_back(QStringLiteral("ACType"), request.type);
    columns.emplace_back(QStringLiteral("AuctionName"), name);
    columns.emplace_back(QStringLiteral("AuctionHTML"),
                         request.auctionHtml.isEmpty() ? doc.txtDescription : request.auctionHtml);
    for (auto& column : DocumentColumns(doc, lists, rules)) {
        columns.push_back(std::move(column));
    }
    // A dot for each field, as the save goes; a long line starts again.
    for (size_t i = 0; i < columns.size(); ++i) {
        status += u'.';
        if (status.size() > 50) {
            status = status.left(status.indexOf(u'.') + 1);
        }
        ui.Status(status);
    }

    QStringList names;
    for (const auto& column : columns) {
        names << column.first;
    }
    QString sql;
    if (exists) {
        sql = QStringLiteral("UPDATE AuctionCreator SET ") + names.join(QStringLiteral(" = ?, ")) +
              QStringLiteral(" = ? WHERE ID = ?");
    } else {
        if (request.existingId > 0) {
            names << QStringLiteral("ID");
        }
        sql = QStringLiteral("INSERT INTO AuctionCreator (") + names.join(QStringLiteral(", ")) +
              QStringLiteral(") VALUES (") +
              QStringList(names.size(), QStringLiteral("?")).join(QStringLiteral(", ")) + u')';
    }
    core::Statement write = db.Prepare(sql);
    int index = 1;
    for (const auto& column : columns) {
        write.Bind(index++, column.second);
    }
    if (request.existingId > 0) {
        write.Bind(index, request.existingId);
    }
    write.Run();
    const qint64 id = exists || request.existingId > 0 ? request.existingId : db.LastInsertId();
    tx.Commit();

    core::SaveSetting(kSettingsApp, kSettingsSection, QStringLiteral("LastAuctionName"), name);
    core::SaveSetting(kSettingsApp, kSettingsSection, QStringLiteral("LastAuctionID"), id);
    core::SaveSetting(kSettingsApp, kSettingsSection, QStringLiteral("LastAuctionType"),
                      request.type);
    ui.Status(QString());
    doc.dirty = false;
    return id;
}

QString MakeUniqueName(const QString& name, const QStringList& taken) {
    const auto used = [&taken](const QString& candidate) {
        return taken.contains(candidate, Qt::CaseInsensitive);
    };
    if (!used(name)) {
        return name;
    }
    // taken holds finitely many names: one of the next taken.size() + 1 is free.
    for (qsizetype n = 2; n <= taken.size() + 2; ++n) {
        const QString candidate = name + QStringLiteral(" (") + QString::number(n) + u')';
        if (!used(candidate)) {
            return candidate;
        }
    }
    return name;
}

QString MakeUniqueName(core::Database& db, const QString& name, const QString& type,
                       const QString& user) {
    if (type != kOldAuction && type != kDraft && type != kTemplate) {
        return name;
    }
    return MakeUniqueName(name, ChooserNames(db, type, user));
}

void ApplyUserSitesPreferences(core::Database& db, const QString& user, const CreatorLists& lists,
                               CreatorDocument& doc) {
    core::Statement prefs = db.Prepare(
        QStringLiteral("SELECT * FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0 "
                       "ORDER BY rowid"));
    prefs.Bind(1, user);
    if (!prefs.Step()) {
        return;
    }
    core::Statement count = db.Prepare(QStringLiteral(
        "SELECT COUNT(*) FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0"));
    count.Bind(1, user);
    if (count.Step() && count.Value(0).toLongLong() > 1) {
        Tell(core::CurrentUi(),
             QStringLiteral("Multiple User records found, proceeding with default user"));
    }
    const QString location = prefs.Text(QStringLiteral("LocationPref"));
    if (!location.isEmpty()) {
        doc.txtItemLocationEbay = location;
    }
    // The country goes in only when the box already shows one.
    if (doc.cmbEbayCountry >= 0) {
        const int row =
            RowByText(lists.cmbEbayCountry, prefs.Text(QStringLiteral("ShipFromCountryPref")));
        if (row >= 0) {
            doc.cmbEbayCountry = row;
        }
    }
    const int region = RowByText(lists.cmbEbayRegion, prefs.Text(QStringLiteral("ZIPCodePref")));
    if (region >= 0) {
        doc.cmbEbayRegion = region;
    }
    for (const QString& text : prefs.Text(QStringLiteral("PaymentTypePref"))
                                   .split(QStringLiteral("~~~"), Qt::SkipEmptyParts)) {
        for (size_t i = 0; i < lists.lstEbayAcceptedPayment.size(); ++i) {
            if (lists.lstEbayAcceptedPayment[i].text == text &&
                !doc.lstEbayAcceptedPayment.contains(int(i))) {
                doc.lstEbayAcceptedPayment << int(i);
            }
        }
    }
    std::sort(doc.lstEbayAcceptedPayment.begin(), doc.lstEbayAcceptedPayment.end());
    for (const QString& text : prefs.Text(QStringLiteral("ShipPayPref"))
                                   .split(QStringLiteral("~~~"), Qt::SkipEmptyParts)) {
        for (size_t i = 0; i < lists.lstEbayShippingPref.size(); ++i) {
            if (lists.lstEbayShippingPref[i].text == text) {
                ClickShippingPref(doc, int(i));
            }
        }
    }
    if (prefs.Flag(QStringLiteral("ShipAbroadPref"))) {
        doc.optEbayWorldShipping = 1;
    } else if (prefs.Flag(QStringLiteral("ShipUSPlus"))) {
        doc.optEbayWorldShipping = 2;
    }
    for (int i = 0; i < 9; ++i) {
        if (prefs.Flag(QLatin1String(kRegions[i]))) {
            doc.lstEbayShiptoCountries[size_t(i)] = true;
        }
    }
}

// ------------------------------------------------------------------ chooser

std::vector<ChooserRow> ChooserRows(core::Database& db, const QString& type, const QString& user,
                                    ChooserSort sort) {
    std::vector<ChooserRow> rows;
    const auto read = [&rows](core::Statement& query, bool defaultRow) {
        while (query.Step()) {
            ChooserRow row;
            row.id = query.Int(QStringLiteral("ID"));
            row.type = query.Text(QStringLiteral("ACType"));
            row.text = defaultRow ? row.type : query.Text(QStringLiteral("AuctionName"));
            row.created = query.Text(QStringLiteral("CreationDate"));
            rows.push_back(row);
        }
    };
    const QString columns =
        QStringLiteral("SELECT ID, ACType, AuctionName, CreationDate FROM AuctionCreator ");
    if (type == kTemplate) {
        core::Statement defaults =
            db.Prepare(columns + QStringLiteral("WHERE ACType = ? ORDER BY ID"));
        defaults.Bind(1, QString(kDefault));
        read(defaults, true);
        core::Statement templates = db.Prepare(
            columns + QStringLiteral(
                          "WHERE ACType = ? AND UserName = ? ORDER BY CreationDate DESC, ID DESC"));
        templates.BindAll(QString(kTemplate), user);
        read(templates, false);
        return rows;
    }
    core::Statement query = db.Prepare(
        columns + (sort == ChooserSort::Name
                       ? QStringLiteral("WHERE ACType = ? ORDER BY AuctionName, ID")
                       : QStringLiteral("WHERE ACType = ? ORDER BY CreationDate DESC, ID DESC")));
    query.Bind(1, type);
    read(query, false);
    return rows;
}

QStringList ChooserDetails(core::Database& db, qint64 id) {
    core::Statement row = db.Prepare(QStringLiteral(
        "SELECT CreationDate, ItemDescription, MinimumBid, Quantity, eBayCategory FROM "
        "AuctionCreator WHERE ID = ?"));
    row.Bind(1, id);
    if (!row.Step()) {
        return {};
    }
    const QString description = row.Text(1);
    const QString number = row.Text(4).trimmed();
    QStringList details{
        QStringLiteral("Created: ") + row.Text(0),
        QStringLiteral("Description: ") + (description.isEmpty()
                                               ? QStringLiteral("Not available")
                                               : description.left(20) + QStringLiteral("...")),
        QStringLiteral("Minimum Bid: ") + Currency(row.Value(2)),
        QStringLiteral("Quantity: ") + row.Text(3),
        QStringLiteral("eBay Category: ") +
            (number.isEmpty() ? QStringLiteral("No eBay Category selected") : number)};
    CreatorDocument named;
    LoadCategory(db, number, named);
    if (!named.cmbEbayCategory.text.isEmpty()) {
        details << named.cmbEbayCategory.text;
    }
    return details;
}

QString SameAsLastCaption() {
    const QString last =
        core::GetSetting(kSettingsApp, kSettingsSection, QStringLiteral("LastAuctionName"));
    return last.isEmpty() ? QStringLiteral("Same As Last Auction (Not Available)")
                          : QStringLiteral("Same As Last Auction (") + last + u')';
}

// ------------------------------------------------------------------ validity

bool RequiredFields::AllGreen() const {
    return RedLabels().isEmpty();
}

namespace {

// The words of the labels, as the creator's tabs show them (without their
// access keys, and the title without its count).
constexpr std::array<const char*, 3> kRequiredCaptions = {"Description", "Minimum bid", "Quantity"};
constexpr std::array<const char*, 9> kRequiredSiteCaptions = {
    "Category", "Title",           "Duration (days)",   "Item location",      "Region",
    "Country",  "Payment methods", "Who pays shipping", "Where will you ship"};

// What name(i) makes of each red label of a row.
template <size_t N, typename Name>
void AddRed(QStringList& red, const std::array<int, N>& colours, const Name& name) {
    for (size_t i = 0; i < N; ++i) {
        if (colours[i] != kGreen) {
            red << name(i);
        }
    }
}

}  // namespace

QStringList RequiredFields::RedLabels() const {
    QStringList red;
    AddRed(red, lblRequired, [](size_t i) { return QStringLiteral("lblRequired(%1)").arg(i); });
    AddRed(red, lblRequiredeBay,
           [](size_t i) { return QStringLiteral("lblRequiredeBay(%1)").arg(i); });
    return red;
}

QStringList RequiredFields::RedCaptions() const {
    QStringList red;
    AddRed(red, lblRequired, [](size_t i) { return QString::fromLatin1(kRequiredCaptions[i]); });
    AddRed(red, lblRequiredeBay,
           [](size_t i) { return QString::fromLatin1(kRequiredSiteCaptions[i]); });
    return red;
}

RequiredFields CheckRequiredFields(const CreatorDocument& doc, const CreatorLists& lists) {
    const auto colour = [](bool green) { return green ? kGreen : kRed; };
    RequiredFields fields;
    fields.lblRequired[0] = colour(!doc.txtDescription.isEmpty());
    static const QStringList kNoBid = {QString(), QStringLiteral("."), QStringLiteral("$"),
                                       QStringLiteral("$.")};
    fields.lblRequired[1] =
        colour(!kNoBid.contains(doc.txtMinimumBid) && core::NumberRule(doc.txtMinimumBid) > 0);
    fields.lblRequired[2] = colour(core::Val(doc.txtQuantity) > 0);
    fields.lblRequiredeBay[0] = colour(!doc.cmbEbayCategory.text.isEmpty());
    fields.lblRequiredeBay[1] = colour(!doc.txtEbayTitle.isEmpty());
    fields.titleCaption =
        QStringLiteral("Title (") + QString::number(doc.txtEbayTitle.size()) + u')';
    fields.lblRequiredeBay[2] =
        colour(!doc.cmbEbayDuration.isEmpty() &&
               core::TextToNumber(QStringView(doc.cmbEbayDuration).trimmed()).has_value());
    fields.lblRequiredeBay[3] = colour(!doc.txtItemLocationEbay.isEmpty());
    fields.lblRequiredeBay[4] = colour(!RowText(lists.cmbEbayRegion, doc.cmbEbayRegion).isEmpty());
    fields.lblRequiredeBay[5] =
        colour(!RowText(lists.cmbEbayCountry, doc.cmbEbayCountry).isEmpty());
    fields.lblRequiredeBay[6] = colour(!doc.lstEbayAcceptedPayment.isEmpty());
    fields.lblRequiredeBay[7] = colour(!doc.lstEbayShippingPref.isEmpty());
    fields.lblRequiredeBay[8] =
        colour(doc.optEbayWorldShipping >= 0 && doc.optEbayWorldShipping <= 2);
    return fields;
}

bool ValidateCreator(const CreatorDocument& doc, const CreatorLists& lists, core::Ui& ui) {
    if (!CheckRequiredFields(doc, lists).AllGreen()) {
        return false;
    }
    // The plain leading number: a box that already shows "$" reads as 0 here.
    const double reserve = core::Val(doc.txtReserve);
    const double minimum = core::Val(doc.txtMinimumBid);
    if (!(reserve > minimum) && reserve > 0) {
        ui.Message(QStringLiteral("Your reserve price must be greater than your minimum bid."),
                   QStringLiteral("Minimum Bid Error"), core::Icon::Warning);
        return false;
    }
    return true;
}

bool ValidateForSending(const CreatorDocument& doc, const CreatorLists& lists, core::Ui& ui) {
    if (ValidateCreator(doc, lists, ui)) {
        return true;
    }
    ui.Message(QStringLiteral("Please complete 'Red' fields in the Auction Creator to finish your "
                              "auction or save as Draft"),
               QStringLiteral("Finish Auction"), core::Icon::Warning);
    return false;
}

void ClickShippingPref(CreatorDocument& doc, int row) {
    doc.lstEbayShippingPref = QList<int>{row};
    doc.dirty = true;
}

QString EbayTitleFor(const QString& itemTitle) {
    return itemTitle.left(45);
}

QString ReturnPolicySummary(const QString& policy) {
    return policy.isEmpty() ? QStringLiteral("Click on the Edit button to enter return policy..")
                            : policy.left(40) + QStringLiteral("...");
}

void PresetInstantPurchase(core::Database& db, const CreatorLists& lists,
                           const update::RuleStore& rules, CreatorDocument& doc) {
    core::Statement user = db.Prepare(QStringLiteral(
        "SELECT State, SalesTaxRate FROM Users ORDER BY (UserName = ?) DESC, rowid LIMIT 1"));
    user.Bind(1, core::CurrentSession().CurrentUser);
    if (user.Step()) {
        const QString name =
            rules.LookupName(kTaxStates, user.Text(0).trimmed().toUpper(), update::kInfoStore);
        if (name != update::RuleError()) {
            const int row = RowByText(lists.lstipTaxState, name);
            if (row >= 0) {
                doc.lstipTaxState = row;
            }
        }
        const double rate = core::NumberRule(user.Value(1));
        if (rate > 0) {
            doc.txtipTax = core::Format(rate * 100, QStringLiteral("###.##"));
        }
    }
    if (doc.txtipShippingFee == u"$0.00") {
        doc.txtipShippingFee = doc.txtShipping;
    }
    if (doc.lstipTaxState == 0) {
        doc.txtipTax = QStringLiteral("0");
    }
}

// ------------------------------------------------------------------ dirty flag

SaveAnswer PromptSaveChanges(CreatorDocument& doc, bool visible, core::Ui& ui) {
    if (!visible || !doc.dirty) {
        return SaveAnswer::NotAsked;
    }
    const QString kind = doc.lblAuctionType.compare(QString(kOldAuction), Qt::CaseInsensitive) == 0
                             ? QStringLiteral("auction")
                             : doc.lblAuctionType;
    QString text = QStringLiteral("You have not saved your changes to this ") + kind;
    if (!doc.txtItemTitle.isEmpty()) {
        text += QStringLiteral(" (") + doc.txtItemTitle + u')';
    }
    text += QStringLiteral(".  Would you like to save your work as a draft?");
    switch (ui.Ask(text, QStringLiteral("Save Changes?"), core::Buttons::YesNoCancel,
                   core::Answer::Cancel)) {
        case core::Answer::Yes:
            return SaveAnswer::Yes;
        case core::Answer::No:
            doc.dirty = false;
            return SaveAnswer::No;
        default:
            return SaveAnswer::Cancel;
    }
}

// ------------------------------------------------------------------ settings

CreatorSettings LoadCreatorSettings() {
    const auto get = [](const char* key) {
        return core::GetSetting(kSettingsApp, kSettingsSection, QString::fromLatin1(key));
    };
    const auto number = [&get](const char* key, int fallback) {
        bool ok = false;
        const int value = get(key).toInt(&ok);
        return ok ? value : fallback;
    };
    CreatorSettings settings;
    settings.PostOption = number("PostOption", 1);
    if (settings.PostOption < 1 || settings.PostOption > 3) {
        settings.PostOption = 1;
    }
    settings.UpdateAfter = number("UpdateAfter", 0);
    settings.ACType = number("ACType", 0);
    settings.TemplateChoice = number("TemplateChoice", 0);
    settings.DraftChoice = number("DraftChoice", 0);
    settings.OldAuctionChoice = number("OldAuctionChoice", 0);
    settings.JustGo = number("JustGo", 0) != 0;
    settings.LastAuctionName = get("LastAuctionName");
    settings.LastAuctionID = get("LastAuctionID");
    settings.LastAuctionType = get("LastAuctionType");
    return settings;
}

void SaveLeavingSettings(const CreatorSettings& settings) {
    const auto put = [](const char* key, int value) {
        core::SaveSetting(kSettingsApp, kSettingsSection, QString::fromLatin1(key), value);
    };
    put("PostOption", settings.PostOption);
    put("UpdateAfter", settings.UpdateAfter);
    put("ACType", settings.ACType);
    put("TemplateChoice", settings.TemplateChoice);
    put("DraftChoice", settings.DraftChoice);
    put("OldAuctionChoice", settings.OldAuctionChoice);
    put("JustGo", settings.JustGo ? -1 : 0);
}

void SavePostOption(int option) {
    core::SaveSetting(kSettingsApp, kSettingsSection, QStringLiteral("PostOption"), option);
}

void SavePostMark(const QString& user, const QDate& date) {
    const QString app = QStringLiteral("Auction Creator");
    core::SaveSetting(app, user, QStringLiteral("eBayPost"), -1);
    core::SaveSetting(app, user, QStringLiteral("eBayPostDate"),
                      date.toString(QStringLiteral("MM/dd/yyyy")));
}

// ------------------------------------------------------------------ favourites

QStringList LoadFavorites(core::Database& db, const QString& user, int urlType) {
    core::Statement query = db.Prepare(
        QStringLiteral("SELECT Url FROM Urls WHERE UserName = ? AND UrlType = ? ORDER BY rowid"));
    query.BindAll(user, urlType);
    QStringList texts;
    while (query.Step()) {
        texts << query.Text(0);
    }
    return texts;
}

bool AddFavorite(core::Database& db, const QString& user, int urlType, const QString& text,
                 core::Ui& ui) {
    if (text.trimmed().isEmpty()) {
        Tell(ui, QStringLiteral("Blank statements can not be added"));
        return false;
    }
    if (!LoadFavorites(db, user, urlType).contains(core::StoreText(text), Qt::CaseInsensitive)) {
        db.Prepare(QStringLiteral("INSERT INTO Urls (UserName, UrlType, Url) VALUES (?, ?, ?)"))
            .BindAll(user, urlType, text)
            .Run();
    }
    return true;
}

bool RemoveFavorite(core::Database& db, const QString& user, int urlType, const QString& text,
                    core::Ui& ui) {
    if (text.trimmed().isEmpty()) {
        Tell(ui, QStringLiteral("Blank statements can not be removed"));
        return false;
    }
    db.Prepare(QStringLiteral("DELETE FROM Urls WHERE UserName = ? AND UrlType = ? AND Url = ?"))
        .BindAll(user, urlType, text)
        .Run();
    if (db.Changes() == 0) {
        Tell(ui, QStringLiteral("No record found to delete, please check your selection"));
        return false;
    }
    return true;
}

bool AddPictureToList(core::Database& db, const QString& user, CreatorDocument& doc,
                      CreatorLists& lists, core::Ui& ui) {
    const std::optional<QString> link =
        ui.Prompt(QStringLiteral("Enter an image link below:"),
                  QStringLiteral("Add Item to Picture List"), QStringLiteral("http://"));
    if (!link || link->trimmed().isEmpty() || doc.lstPictureLink.contains(*link)) {
        return false;
    }
    doc.lstPictureLink << *link;
    doc.dirty = true;
    db.Prepare(QStringLiteral("INSERT INTO Urls (UserName, UrlType, Url) VALUES (?, 2, ?)"))
        .BindAll(user, *link)
        .Run();
    lists.cmbPictureLink.push_back({*link, 2});
    return true;
}

void KeepPictureFavorites(core::Database& db, const QString& user, const CreatorDocument& doc,
                          CreatorLists& lists) {
    ListRows kept;
    QStringList rewrite;
    for (const ListRow& row : lists.cmbPictureLink) {
        const bool used = row.data != 2 || doc.lstPictureLink.contains(row.text) ||
                          row.text == doc.cmbEbayGallery || row.text == doc.cmbEbayPicIconActivate;
        if (used) {
            kept.push_back(row);
            if (row.data == 2) {
                rewrite << row.text;
            }
        }
    }
    core::Transaction tx(db);
    db.Prepare(QStringLiteral("DELETE FROM Urls WHERE UserName = ? AND UrlType = 2"))
        .Bind(1, user)
        .Run();
    core::Statement insert =
        db.Prepare(QStringLiteral("INSERT INTO Urls (UserName, UrlType, Url) VALUES (?, 2, ?)"));
    for (const QString& text : rewrite) {
        insert.BindAll(user, text).Run();
        insert.Reset();
    }
    tx.Commit();
    lists.cmbPictureLink = kept;
}

// ------------------------------------------------------------------ deleting

void DeleteCreatorRecord(core::Database& db, qint64 id) {
    db.Prepare(QStringLiteral("DELETE FROM AuctionCreator WHERE ID = ?")).Bind(1, id).Run();
}

bool DeleteTemplate(core::Database& db, int listRow, const ChooserRow& row, core::Ui& ui) {
    if (listRow == 0) {
        ui.Message(QStringLiteral("Default template cannot be deleted."),
                   QStringLiteral("Cannot Delete System Template"), core::Icon::Warning);
        return false;
    }
    if (ui.Ask(QStringLiteral("Are you sure you want to delete this template: ") + row.text + u'?',
               QStringLiteral("Delete Template?"), core::Buttons::YesNo,
               core::Answer::No) != core::Answer::Yes) {
        return false;
    }
    DeleteCreatorRecord(db, row.id);
    return true;
}

}  // namespace lw::creator
