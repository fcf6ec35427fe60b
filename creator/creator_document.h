// SPDX-License-Identifier: GPL-3.0-or-later
// The auction creator's document: the values of every control of the creator
// window as plain fields named after the controls, the lists those controls
// offer, and the rules that carry a document to and from its AuctionCreator
// row: load, save (one write of the row), unique names, the Default row, the
// required fields and their colours, the dirty flag and its save question, the
// creator's settings, the favourite texts of table Urls and deleting. Nothing
// here draws or includes a widget; questions go through the Ui port. It never
// puts a value into SQL text.
#pragma once

#include <QDate>
#include <QLatin1String>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "core/store.h"
#include "core/ui_port.h"
#include "update/rules.h"

namespace lw::creator {

// ACType of the four kinds of row.
inline constexpr QLatin1String kDraft("Draft");
inline constexpr QLatin1String kTemplate("Template");
inline constexpr QLatin1String kOldAuction("Old Auction");
inline constexpr QLatin1String kDefault("Default");

// The colours of the required labels.
inline constexpr int kGreen = 32768;
inline constexpr int kRed = 192;

// The window's caption and the title of its own messages.
QString CreatorCaption();

// One row of a list: its text and its item data.
using ListRow = update::RuleListRow;
using ListRows = std::vector<ListRow>;

// A row of cmbEbayCategory: the text shown and the category number it keeps.
struct CategoryRow {
    QString text;  // empty: no row selected
    QString number;
};

// A listing style: the text behind "=" on the first line of its .tem file.
struct AuctionStyle {
    QString name;      // lstTemplateStyle
    QString fileName;  // lstHidden
};

// What the lists of the window offer; filled once by LoadCreatorLists. The
// document's choices are row numbers into these lists.
struct CreatorLists {
    // Rule sections of store 1 (FillListFromSection).
    ListRows lstEbayOptions;          // "Auction Options"
    ListRows lstEbayGiftIcon;         // "Gift Icons"
    ListRows lstEbayAcceptedPayment;  // "Payment"
    ListRows lstEbayShippingPref;     // "Shipping"
    ListRows cmbEbayCountry;          // "Countries"
    ListRows lstEbayShiptoCountries;  // "Shipping Regions"
    ListRows cmbEbayRegion;           // "Regions"
    ListRows cmbShippingMethod;       // "Choose Shipping Method", then "Shipping Method"
    ListRows lstipTaxState;           // "Billpoint Tax States"
    QStringList cmbCounterStyle;      // "RubyLane": Option1..OptionN
    QStringList cmbPayPalLogo;        // "PayPal": Option1..OptionN
    // Fixed lists.
    QStringList cmbFontType;      // FontList
    QStringList cmbFontSize;      // "1" to "7"
    QStringList cmbEbayDuration;  // "3", "5", "7", "10"
    QStringList colours;          // names of the colour table, for the three colour boxes
    std::vector<AuctionStyle> lstTemplateStyle;
    // The user's favourites (Urls) and favourite categories.
    ListRows cmbPictureLink;     // UrlType 0 (data 0) and 2 (data 2); also the two picture boxes
    QStringList cmbBGImageLink;  // UrlType 1
    std::array<QStringList, 2> cmbProductDetails;  // UrlType 3, 4
    std::array<QStringList, 5> cmbTransaction;     // UrlType 5 to 9
    std::vector<CategoryRow> cmbEbayCategory;      // FavoriteCategories
};

// The document: every editable control of the creator. Choices in lists are
// row numbers of CreatorLists (-1: none), kept ascending for lists of many.
struct CreatorDocument {
    // Identity (hidden labels of the window).
    QString txtInventoryID;         // InventoryID; empty: none
    QString lblAuctionName;         // name of the row chosen in the chooser
    qint64 lblAuctionItemData = 0;  // its ID
    QString lblAuctionType;         // "template", "draft", "old auction"
    QString caption = CreatorCaption();

    // Description and product data.
    bool chkItemTitle = false;
    QString txtItemTitle;
    QString txtDescription;
    QString txtMinimumBid;
    QString txtQuantity;
    QString txtShipping;
    QString txtInsurance;
    QString txtItemCost;
    QString txtReserve;
    QString txtSellPrice;  // "Take-it Price"
    QString cmbShippingMethod;
    QStringList lstPictureLink;

    // eBay fields.
    QString cmbEbayPicIconActivate = QStringLiteral("http://");
    bool chkEbayGallery = false;
    QString cmbEbayGallery;
    QString txtItemLocationEbay;
    int cmbEbayCountry = -1;
    int cmbEbayRegion = -1;
    QString txtEbayTitle;
    CategoryRow cmbEbayCategory;
    QString lbleBayCat;  // the category number as loaded
    QString cmbEbayDuration;
    QList<int> lstEbayOptions;
    int lstEbayGiftIcon = -1;
    QList<int> lstEbayAcceptedPayment;
    QList<int> lstEbayShippingPref;
    int optEbayWorldShipping = -1;  // 0 domestic only, 1 international, 2 US and regions
    std::array<bool, 9> lstEbayShiptoCountries{};

    // Layout and captions.
    std::array<bool, 3> chkProductDetails{};  // (2): the quantity line
    std::array<QString, 2> txtProductDetails{QStringLiteral("Condition:"),
                                             QStringLiteral("Comments:")};
    std::array<QString, 2> cmbProductDetails;
    std::array<bool, 5> chkTransaction{};
    std::array<QString, 5> cmbTransaction;
    std::array<QString, 3> txtTransaction{QStringLiteral("Payment Options:"),
                                          QStringLiteral("Policies:"), QStringLiteral("Comments:")};
    std::array<bool, 3> chkOtherCaption{};
    std::array<QString, 3> txtOtherCaption{QStringLiteral("NO RESERVE"),
                                           QStringLiteral("Other Caption 2"), QString()};
    bool chkEmailLink = false;
    QString txtEmailLinkCaption = QStringLiteral("Send me email");
    QString txtEmailLinkText;
    std::array<bool, 2> chkLink{};
    std::array<QString, 2> txtLinkCaption{QStringLiteral("Visit My Website"),
                                          QStringLiteral("Other Link of Interest")};
    std::array<QString, 2> txtLinkLink{QStringLiteral("http://"), QStringLiteral("http://")};
    bool chkEbayAuctionLink = false;
    QString txtEbayAuctionLink = QStringLiteral("See my other eBay auctions");
    int cmbPayPalLogo = 0;
    QString txtPayPalAddress;
    int cmbCounterStyle = 0;
    QString lstTemplateStyle;
    QString cmbTableBGColor;
    QString cmbThemeColor;
    QString cmbFontColor;
    QString cmbFontType;
    QString cmbBGImageLink;
    bool chkBGImage = false;
    bool chkPictureSize = false;
    bool chkPictureReturn = false;
    int cmbFontSize = 1;

    // Online payment block.
    bool chkbillpointCCAccepted = false;
    bool chkbillpointECAccepted = false;
    bool chkbillpointIPAccepted = false;
    bool chkAddbillpointicon = false;
    QString txtipShippingFee = QStringLiteral("$0.00");
    QString txtipShippingXFee = QStringLiteral("$0.00");
    QString txtipTax = QStringLiteral("0");
    int lstipTaxState = 0;
    QString lblFullPolicy;

    // Set by every change of an editable field or list; cleared after a load,
    // a save and the answer No to the save question.
    bool dirty = false;
};

// ------------------------------------------------------------------ lists

// The fonts of cmbFontType: the four common ones, the separator row, then
// the given screen fonts sorted, less the symbol fonts.
QStringList FontList(const QStringList& screenFonts);
// The separator row of cmbFontType; choosing it resets the box to row 0.
QString FontSeparator();

// Every list of the window from the rule store (store 1), the user's Urls and
// FavoriteCategories rows, the styles in templatesDir and the given screen
// fonts.
CreatorLists LoadCreatorLists(core::Database& db, const update::RuleStore& rules,
                              const QString& user, const QString& templatesDir,
                              const QStringList& screenFonts = {});
// A document as the window starts: the defaults of every box, with
// cmbTableBGColor row 1, cmbThemeColor and cmbFontColor row 0, cmbFontType
// row 0, cmbEbayDuration row 2, cmbFontSize row 1 and the first style.
CreatorDocument NewCreatorDocument(const CreatorLists& lists);

// The row of a list whose item data is data; -1 when none.
int FindItemData(const ListRows& rows, int data);
// The text of a row, empty for -1 or a row out of range.
QString RowText(const ListRows& rows, int row);

// ------------------------------------------------------------------ load and save

// Loads row id into doc ("SELECT * From AuctionCreator WHERE [ID] = id").
// False, and doc as it was, when there is no such row. Clears the dirty flag.
bool LoadCreatorRecord(core::Database& db, qint64 id, const CreatorLists& lists,
                       const update::RuleStore& rules, CreatorDocument& doc);

// The columns a save writes for the document, in the order it writes them,
// without the housekeeping columns (Username, Outbox, InventoryID,
// CreationDate, ACType, AuctionName, AuctionHTML). Money boxes left empty are
// absent; the payment block's last five only while instant purchase is on.
using Columns = std::vector<std::pair<QString, QVariant>>;
Columns DocumentColumns(const CreatorDocument& doc, const CreatorLists& lists,
                        const update::RuleStore& rules);

struct SaveRequest {
    QString name;
    QString type;           // kDraft, kTemplate, kOldAuction or kDefault
    qint64 existingId = 0;  // above 0: that row is overwritten (added if gone)
    bool toOutbox = false;
    bool overwrite = false;  // chkOverwrite: the name is kept as it is
    QString auctionHtml;     // the listing HTML; empty: the description
};
// Writes the document as one row with a single INSERT or UPDATE (a "Default"
// save first deletes the Default rows), tells its progress on the status line,
// writes LastAuctionName, LastAuctionID and LastAuctionType, and clears the
// dirty flag. Empty payment fee and tax boxes become "0" first. Returns the
// row's ID. Throws core::StoreError when the database fails.
qint64 SaveCreatorRecord(core::Database& db, const SaveRequest& request, CreatorDocument& doc,
                         const CreatorLists& lists, const update::RuleStore& rules);

// name, or name " (2)", " (3)" ... : the first that no entry of taken matches,
// case-blind.
QString MakeUniqueName(const QString& name, const QStringList& taken);
// The same against the chooser's list of the kind (Old Auction, Draft or
// Template rows; others take the name as it is).
QString MakeUniqueName(core::Database& db, const QString& name, const QString& type,
                       const QString& user);

// The UserSites preferences (site 0) applied over a document loaded from the
// Default row. More than one row: says "Multiple User records found,
// proceeding with default user" and takes the first.
void ApplyUserSitesPreferences(core::Database& db, const QString& user, const CreatorLists& lists,
                               CreatorDocument& doc);

// ------------------------------------------------------------------ chooser

struct ChooserRow {
    qint64 id = 0;
    QString text;  // AuctionName, or "Default" for the Default row
    QString type;  // ACType
    QString created;
};
enum class ChooserSort { Newest, Name };
// lstUserTemp: the Default row, then the user's templates; lstDraft and
// lstOldAuction: every user's rows of that kind.
std::vector<ChooserRow> ChooserRows(core::Database& db, const QString& type, const QString& user,
                                    ChooserSort sort = ChooserSort::Newest);
// The details list of a chosen row; empty when the row is gone.
QStringList ChooserDetails(core::Database& db, qint64 id);
// Option 2 of optACChoice, by the LastAuctionName setting.
QString SameAsLastCaption();

// ------------------------------------------------------------------ validity

// The colours of lblRequired(0..2) and lblRequiredeBay(0..8).
struct RequiredFields {
    std::array<int, 3> lblRequired{};
    std::array<int, 9> lblRequiredeBay{};
    QString titleCaption;  // lblRequiredeBay(1): "Title (n)"
    bool AllGreen() const;
    // The names of the red labels, as "lblRequiredeBay(4)".
    QStringList RedLabels() const;
    // The same labels by what they say in the creator, as "Region".
    QStringList RedCaptions() const;
};
RequiredFields CheckRequiredFields(const CreatorDocument& doc, const CreatorLists& lists);
// True when the document may be sent: every label green and a reserve, when
// given, above the minimum bid ("Your reserve price must be greater than your
// minimum bid." otherwise).
bool ValidateCreator(const CreatorDocument& doc, const CreatorLists& lists, core::Ui& ui);
// ValidateCreator for Post Now and To Outbox, which add "Please complete 'Red'
// fields ..." when it fails.
bool ValidateForSending(const CreatorDocument& doc, const CreatorLists& lists, core::Ui& ui);

// A click on a row of lstEbayShippingPref: that row alone is selected.
void ClickShippingPref(CreatorDocument& doc, int row);
// The first 45 characters of the long title, for txtEbayTitle.
QString EbayTitleFor(const QString& itemTitle);
// lblipReturnPolicy for the full policy.
QString ReturnPolicySummary(const QString& policy);
// Checking chkbillpointIPAccepted: tax state, tax rate and shipping fee from
// the first Users row.
void PresetInstantPurchase(core::Database& db, const CreatorLists& lists,
                           const update::RuleStore& rules, CreatorDocument& doc);

// ------------------------------------------------------------------ dirty flag

enum class SaveAnswer { NotAsked, Yes, No, Cancel };
// The save question on Exit, New, Create, a template and leaving to tab 0:
// asked only when the window is visible and the document dirty. No clears the
// dirty flag; Cancel keeps the caller where it is; Yes opens the save dialog.
SaveAnswer PromptSaveChanges(CreatorDocument& doc, bool visible, core::Ui& ui);

// ------------------------------------------------------------------ settings

// Section "Settings" of "Tolvane Auction Creator".
struct CreatorSettings {
    int PostOption = 1;  // 1 direct, 2 sell page, 3 review page
    int UpdateAfter = 0;
    int ACType = 0;  // the checked optACChoice
    int TemplateChoice = 0;
    int DraftChoice = 0;
    int OldAuctionChoice = 0;
    bool JustGo = false;  // chkGo: the chooser is skipped at the next start
    QString LastAuctionName;
    QString LastAuctionID;
    QString LastAuctionType;
};
CreatorSettings LoadCreatorSettings();
// What the window writes on leaving (all but the Last... keys).
void SaveLeavingSettings(const CreatorSettings& settings);
void SavePostOption(int option);
// "Auction Creator", the user's section: eBayPost -1 and eBayPostDate, after a
// post through the sell page or the review page.
void SavePostMark(const QString& user, const QDate& date);

// ------------------------------------------------------------------ favourites

// The texts of the user's Urls rows of one type, in the order they were added.
QStringList LoadFavorites(core::Database& db, const QString& user, int urlType);
// Add to and Remove from favourites; false, with the system's message, for a
// blank text or (removing) no such row.
bool AddFavorite(core::Database& db, const QString& user, int urlType, const QString& text,
                 core::Ui& ui);
bool RemoveFavorite(core::Database& db, const QString& user, int urlType, const QString& text,
                    core::Ui& ui);
// cmdAddLinkToPictureList: asks for an image link, adds it to the picture list
// and as a favourite of type 2 (a link already in the list is ignored).
bool AddPictureToList(core::Database& db, const QString& user, CreatorDocument& doc,
                      CreatorLists& lists, core::Ui& ui);
// Before sending: the type 2 favourites that no longer stand in the picture
// list or either picture box are dropped.
void KeepPictureFavorites(core::Database& db, const QString& user, const CreatorDocument& doc,
                          CreatorLists& lists);

// ------------------------------------------------------------------ deleting

// Deletes a row by ID with no question (drafts and old auctions).
void DeleteCreatorRecord(core::Database& db, qint64 id);
// mnuDeleteTemplate_Click: row 0 (Default) is refused; others are deleted
// after the question. True when the row was deleted.
bool DeleteTemplate(core::Database& db, int listRow, const ChooserRow& row, core::Ui& ui);

}  // namespace lw::creator
