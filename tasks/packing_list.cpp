// SPDX-License-Identifier: GPL-3.0-or-later
// Building the packing list and the remittance advice from their templates.
// Every value read from the database is bound, never put into SQL text; the
// tokens are replaced in the document so that each keeps the template's
// formatting, and the template file itself is never written.
#include "tasks/packing_list.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QTextDocument>
#include <QVariantMap>
#include <optional>

#include "core/richtext/rich_text.h"
#include "core/session.h"
#include "core/text.h"
#include "core/ui_port.h"
#include "tasks/task_lists.h"

namespace lw::tasks {

namespace {

using Row = std::optional<QVariantMap>;

const QString kMissingAddressTitle = QStringLiteral("Missing Address");
const QString kOtherItemsTitle = QStringLiteral("Include all items in Packing List?");
const QString kSiteName = QStringLiteral("eBay");

// A field of a row by name, whatever its case; Null and a missing field read as "".
QString Text(const Row& row, const QString& name) {
    if (!row) {
        return {};
    }
    auto it = row->constFind(name);
    if (it == row->cend()) {
        for (it = row->cbegin(); it != row->cend(); ++it) {
            if (it.key().compare(name, Qt::CaseInsensitive) == 0) {
                break;
            }
        }
    }
    return it == row->cend() || it->isNull() ? QString() : it->toString().trimmed();
}

// The first row of a statement whose values are already bound.
Row FirstRow(core::Statement& statement) {
    if (!statement.Step()) {
        return std::nullopt;
    }
    QVariantMap row;
    for (int column = 0; column < statement.ColumnCount(); ++column) {
        row.insert(statement.ColumnName(column), statement.Value(column));
    }
    return row;
}

// The non-empty parts, joined by separator.
QString JoinPresent(const QStringList& parts, const QString& separator) {
    QStringList present;
    for (const QString& part : parts) {
        if (!part.isEmpty()) {
            present << part;
        }
    }
    return present.join(separator);
}

QString Fields(const Row& row, std::initializer_list<const char*> names, const QString& separator) {
    QStringList parts;
    for (const char* name : names) {
        parts << Text(row, QString::fromLatin1(name));
    }
    return JoinPresent(parts, separator);
}

const QString kBlank = QStringLiteral(" ");
const QString kLineBreak = QStringLiteral("\n");

// The selected sale: a multi-winner sale's winner through "Dutch Details", which
// brings the item's title along; else the Auctions row.
Row ReadSale(core::Database& db, const SelectedItem& item) {
    if (!item.IsDutch()) {
        return ReadSelectedRecord(db, item);
    }
    auto statement = db.Prepare(QStringLiteral(
        "SELECT * FROM \"Dutch Details\" WHERE ItemNumber = ?1 AND HighBidderName = ?2 LIMIT 1"));
    statement.BindAll(item.itemNumber, item.dutchBidder);
    return FirstRow(statement);
}

// The session's user: the Users row and the site row of the record's site.
struct Owner {
    Row user;
    Row site;

    QString Name() const {
        return Fields(user, {"SFirstName", "SMiddleName", "SLastName"}, kBlank);
    }
    // The name, then company and streets on lines of their own, then the town line.
    QString Address() const {
        const QString lines =
            Fields(user, {"SCompanyName", "AddressStreet1", "AddressStreet2"}, kLineBreak);
        return JoinPresent({Name(), lines, Fields(user, {"City", "State", "zipcode"}, kBlank)},
                           kLineBreak);
    }
};

Owner ReadOwner(core::Database& db, const Row& record) {
    const QString user = core::CurrentSession().CurrentUser;
    Owner owner;
    auto users = db.Prepare(QStringLiteral("SELECT * FROM Users WHERE UserName = ?1 LIMIT 1"));
    users.Bind(1, user);
    owner.user = FirstRow(users);
    auto sites = db.Prepare(QStringLiteral(
        "SELECT * FROM UserSites WHERE UserName = ?1 AND AuctionSiteFlag = ?2 LIMIT 1"));
    sites.BindAll(user, Text(record, QStringLiteral("AuctionSiteFlag")).toLongLong());
    owner.site = FirstRow(sites);
    return owner;
}

// Salutation and names, then title, company and streets on lines of their own,
// the town line, and the country on a line of its own.
QString PartnerAddress(const Row& partner) {
    return JoinPresent(
        {Fields(partner, {"Salutation", "FirstName", "LastName"}, kBlank),
         Fields(partner, {"Title", "Company", "StreetAddress1", "StreetAddress2"}, kLineBreak),
         Fields(partner, {"City", "State", "ZipCode"}, kBlank),
         Text(partner, QStringLiteral("CountryInfo"))},
        kLineBreak);
}

PackingOutcome StopForAddress(PackingOutcome outcome, const QString& partner) {
    core::CurrentUi().Message(QStringLiteral("Please enter an address for ") + partner +
                                  QStringLiteral(" before creating a packing list"),
                              kMissingAddressTitle, core::Icon::Information);
    outcome.status = PackingStatus::MissingAddress;
    outcome.node = QStringLiteral("PRA");
    outcome.panel = PackingPanel::Address;
    return outcome;
}

// The token's first occurrence gets first, the next one after it second, so
// that a template may hold a plain and a capitalised copy.
void ReplaceTwice(QTextDocument& document, const QString& token, const QString& first,
                  const QString& second) {
    const int end = richtext::ReplaceToken(document, token, first);
    if (end >= 0) {
        richtext::ReplaceToken(document, token, second, end);
    }
}

void Replace(QTextDocument& document, const QString& token, const QString& text) {
    richtext::ReplaceToken(document, token, text);
}

// Where a partner's address is kept and the token it fills; the advice takes
// the plain text the second time too.
struct PartnerKind {
    const char* table;
    const char* keyColumn;
    const char* token;
    bool capitalSecond;
};
constexpr PartnerKind kBuyerKind{"Buyers", "BuyerID", "{BuyerAddress}", true};
constexpr PartnerKind kSellerKind{"Sellers", "SellerID", "{SellerAddress}", false};

// The partner's address row, on the record's site as the address task reads
// it, put in for its token. Nothing, and the document left as it is, when the
// partner has no row or no first street.
Row PutPartnerAddress(core::Database& db, QTextDocument& document, const PartnerKind& kind,
                      const QString& partner, const Row& record) {
    auto statement = db.Prepare(QStringLiteral("SELECT * FROM ") + QLatin1String(kind.table) +
                                QStringLiteral(" WHERE ") + QLatin1String(kind.keyColumn) +
                                QStringLiteral(" = ?1 AND AuctionSiteFlag = ?2 LIMIT 1"));
    statement.BindAll(partner, Text(record, QStringLiteral("AuctionSiteFlag")).toLongLong());
    const Row row = FirstRow(statement);
    if (!row || Text(row, QStringLiteral("StreetAddress1")).isEmpty()) {
        return std::nullopt;
    }
    const QString address = PartnerAddress(row);
    ReplaceTwice(document, QLatin1String(kind.token), address,
                 kind.capitalSecond ? address.toUpper() : address);
    return row;
}

QString Today() {
    return core::Format(QDate::currentDate(), QStringLiteral("MMMM d, yyyy"));
}

// One line of the item list.
QString ItemLine(const Row& row) {
    return QStringLiteral("  ") + Text(row, QStringLiteral("ItemTitle")) + QStringLiteral(" (") +
           Text(row, QStringLiteral("HighBid")) + u')';
}

// The other pending items of the partner, in item number order.
std::vector<QVariantMap> OtherItems(core::Database& db, const QString& view,
                                    const QString& partnerColumn, const QString& itemNumber,
                                    const QString& partner) {
    auto statement = db.Prepare(QStringLiteral("SELECT * FROM \"") + view +
                                QStringLiteral("\" WHERE ItemNumber <> ?1 AND ") + partnerColumn +
                                QStringLiteral(" = ?2 ORDER BY ItemNumber"));
    statement.BindAll(itemNumber, partner);
    std::vector<QVariantMap> rows;
    while (Row row = FirstRow(statement)) {
        rows.push_back(*row);
    }
    return rows;
}

// Whether the other items go into the list: asked only when there are any.
bool IncludeOthers(const std::vector<QVariantMap>& others, const QString& question) {
    return !others.empty() &&
           core::CurrentUi().Ask(question, kOtherItemsTitle, core::Buttons::YesNo,
                                 core::Answer::Yes) == core::Answer::Yes;
}

QString Money(double amount) {
    return core::Format(amount, QStringLiteral("Currency"));
}

// The sentence about the enclosed payment, by the method's name.
QString PaymentSentence(const QString& method, double bids, double tax, double shipping) {
    QString amount = Money(bids + tax + shipping);
    if (tax > 0 || shipping > 0) {
        amount += QStringLiteral(" (") + Money(bids);
        if (tax != 0) {
            amount += QStringLiteral(" + ") + Money(tax) + QStringLiteral(" sales tax");
        }
        if (shipping != 0) {
            amount += QStringLiteral(" + ") + Money(shipping) + QStringLiteral(" shipping");
        }
        amount += u')';
    }
    if (method == u"Check" || method == u"Money Order") {
        return QStringLiteral("Enclosed is a ") + method.toLower() +
               QStringLiteral(" in the amount of ") + amount + u'.';
    }
    if (method == u"Cash") {
        return QStringLiteral("Enclosed is ") + amount + QStringLiteral(" cash.");
    }
    return {};
}

// Loads the side's template (the outcome keeps why it could not be read) and
// names the frame after the record's item. Without a record the document is
// emptied and the outcome is final.
PackingOutcome Begin(Side side, const Row& record, QTextDocument& document) {
    PackingOutcome outcome;
    const richtext::LoadResult loaded = richtext::LoadRtfFile(PackingTemplatePath(side), document);
    if (!loaded.ok) {
        outcome.templateProblem = loaded.message;
    }
    if (!record) {
        document.clear();
        outcome.status = PackingStatus::NoRecord;
        return outcome;
    }
    outcome.frameTitle = (IsSalesSide(side) ? QStringLiteral("Packing List for #")
                                            : QStringLiteral("Remittance Advice for #")) +
                         Text(record, QStringLiteral("ItemNumber"));
    return outcome;
}

PackingOutcome BuildSale(core::Database& db, const SelectedItem& item, QTextDocument& document) {
    const Row record = ReadSale(db, item);
    PackingOutcome outcome = Begin(Side::Sales, record, document);
    if (!record) {
        return outcome;
    }

    const Owner owner = ReadOwner(db, record);
    const QString myAddress = owner.Address();
    ReplaceTwice(document, QStringLiteral("{MyAddress}"), myAddress, myAddress.toUpper());
    Replace(document, QStringLiteral("{CurrentDate}"), Today());
    Replace(document, QStringLiteral("{MyName}"),
            owner.Name() + QStringLiteral(" (") + Text(owner.site, QStringLiteral("UserID")) +
                QStringLiteral(" on ") + kSiteName + u')');
    Replace(document, QStringLiteral("{MyEmailAddress}"),
            Text(owner.site, QStringLiteral("SiteEmailAddress")));

    const QString buyer = Text(record, QStringLiteral("HighBidderName"));
    if (!PutPartnerAddress(db, document, kBuyerKind, buyer, record)) {
        return StopForAddress(outcome, buyer);
    }
    Replace(document, QStringLiteral("{AuctionSite}"), kSiteName);

    QString items = ItemLine(record);
    const auto others = OtherItems(db, QStringLiteral("All Auctions with Pending Tasks"),
                                   QStringLiteral("HighBidderName"), item.itemNumber, buyer);
    if (IncludeOthers(others, buyer + QStringLiteral(" has won ") + QString::number(others.size()) +
                                  QStringLiteral(" other auction(s).  Would you like to include "
                                                 "those items in your packing list?"))) {
        for (const QVariantMap& other : others) {
            items += kLineBreak + ItemLine(other);
        }
    }
    Replace(document, QStringLiteral("{AuctionItems}"), items);
    outcome.status = PackingStatus::Built;
    return outcome;
}

PackingOutcome BuildBid(core::Database& db, const SelectedItem& item, QTextDocument& document) {
    const Row record = ReadSelectedRecord(db, item);
    PackingOutcome outcome = Begin(Side::Bids, record, document);
    if (!record) {
        return outcome;
    }
    const QVariant method = record->value(QStringLiteral("OrderPaymentMethod"));
    if (!PaymentMethodSet(method)) {
        core::CurrentUi().Message(QStringLiteral("Please enter payment info for this item before "
                                                 "printing the remittance advice."),
                                  QStringLiteral("Missing Payment Info"), core::Icon::Information);
        outcome.status = PackingStatus::MissingPaymentInfo;
        outcome.node = QStringLiteral("PRP");
        outcome.panel = PackingPanel::Payment;
        return outcome;
    }

    const Owner owner = ReadOwner(db, record);
    const QString myAddress = owner.Address();
    Replace(document, QStringLiteral("{MyName}"), owner.Name());
    ReplaceTwice(document, QStringLiteral("{MyAddress}"), myAddress, myAddress);
    Replace(document, QStringLiteral("{CurrentDate}"), Today());
    Replace(document, QStringLiteral("{MyEmailAddress}"),
            Text(owner.user, QStringLiteral("ReplyEmailAddress")));

    const QString seller = Text(record, QStringLiteral("SellerName"));
    const Row address = PutPartnerAddress(db, document, kSellerKind, seller, record);
    if (!address) {
        return StopForAddress(outcome, seller);
    }
    const QString firstName = Text(address, QStringLiteral("FirstName"));
    Replace(document, QStringLiteral("{SellerFirstName}"),
            firstName.isEmpty() ? QStringLiteral("???") : firstName);
    Replace(document, QStringLiteral("{AuctionSite}"), kSiteName);

    double bids = core::NumberRule(record->value(QStringLiteral("HighBid")));
    double tax = core::NumberRule(record->value(QStringLiteral("OrderTax")));
    double shipping = core::NumberRule(record->value(QStringLiteral("OrderShipping")));
    QString items = ItemLine(record);
    const auto others = OtherItems(db, QStringLiteral("All Bids with Pending Tasks"),
                                   QStringLiteral("SellerName"), item.itemNumber, seller);
    if (IncludeOthers(others, QStringLiteral("You have won ") + QString::number(others.size()) +
                                  QStringLiteral(" other auction(s) from ") + seller +
                                  QStringLiteral(".  Would you like to include those items in "
                                                 "your remittance advice?"))) {
        for (const QVariantMap& other : others) {
            items += kLineBreak + ItemLine(other);
            bids += core::NumberRule(other.value(QStringLiteral("HighBid")));
            tax += core::NumberRule(other.value(QStringLiteral("OrderTax")));
            shipping += core::NumberRule(other.value(QStringLiteral("OrderShipping")));
        }
    }
    Replace(document, QStringLiteral("{AuctionItems}"), items);
    Replace(document, QStringLiteral("{PaymentInfo}"),
            PaymentSentence(PaymentMethodName(method), bids, tax, shipping));
    outcome.status = PackingStatus::Built;
    return outcome;
}

// A store failure ends the build with an empty document and a box, never an exception.
template <class Build>
PackingOutcome Guarded(Build&& build, core::Database& db, const SelectedItem& item,
                       QTextDocument& document) {
    try {
        return build(db, item, document);
    } catch (const core::StoreError& failure) {
        core::CurrentUi().Message(failure.Message(), QStringLiteral("Database Error"),
                                  core::Icon::Critical);
    }
    document.clear();
    PackingOutcome outcome;
    outcome.status = PackingStatus::Failed;
    return outcome;
}

}  // namespace

QString PackingTemplateName(Side side) {
    return IsSalesSide(side) ? QStringLiteral("aucpack.rtf") : QStringLiteral("bidpack.rtf");
}

QString PackingTemplatePath(Side side) {
    return core::CurrentSession().ConfigsDir + PackingTemplateName(side);
}

bool InstallPackingTemplates(QString* error) {
    const QString shipped = core::CurrentSession().ShippedDir + QStringLiteral("/data/");
    for (const Side side : {Side::Sales, Side::Bids}) {
        const QString target = PackingTemplatePath(side);
        const QString source = shipped + PackingTemplateName(side);
        if (!core::CopyIfMissing(source, target, QFile::ReadOwner | QFile::WriteOwner)) {
            if (error != nullptr) {
                *error =
                    QStringLiteral("The template %1 could not be copied to %2.")
                        .arg(QDir::toNativeSeparators(source), QDir::toNativeSeparators(target));
            }
            return false;
        }
    }
    return true;
}

PackingOutcome BuildPackingList(core::Database& db, const SelectedItem& item,
                                QTextDocument& document) {
    return Guarded(BuildSale, db, item, document);
}

PackingOutcome BuildRemittanceAdvice(core::Database& db, const SelectedItem& item,
                                     QTextDocument& document) {
    return Guarded(BuildBid, db, item, document);
}

PackingOutcome BuildPackingDocument(core::Database& db, const SelectedItem& item,
                                    QTextDocument& document) {
    return IsSalesSide(item.side) ? BuildPackingList(db, item, document)
                                  : BuildRemittanceAdvice(db, item, document);
}

bool MarkPackingPrinted(core::Database& db, const SelectedItem& item) {
    try {
        return WriteSelectedRecord(db, item, {{QStringLiteral("PackingListPrinted"), true}}) > 0;
    } catch (const core::StoreError& failure) {
        core::CurrentUi().Message(failure.Message(), QStringLiteral("Database Error"),
                                  core::Icon::Critical);
    }
    return false;
}

QString NextPackingEditPath(const QString& folder) {
    const QDir dir(folder);
    QString path;
    for (qint64 n = 1; path.isEmpty() || QFileInfo::exists(path); ++n) {
        path = dir.filePath(QStringLiteral("pack") + QString::number(n) + QStringLiteral(".rtf"));
    }
    return path;
}

QString SavePackingForEdit(const QTextDocument& document, QString* error, const QString& folder) {
    const QString dir = folder.isEmpty() ? QDir::tempPath() : folder;
    if (!core::EnsureDirectory(dir)) {
        if (error != nullptr) {
            *error =
                QStringLiteral("Cannot make the folder %1.").arg(QDir::toNativeSeparators(dir));
        }
        return {};
    }
    const QString path = NextPackingEditPath(dir);
    return richtext::SaveRtfFile(document, path, error) ? path : QString();
}

BoxText WordProcessorFallback() {
    return {QStringLiteral("Unable to open program associated with .rtf files on your machine.  "
                           "Please install Wordpad.  Your packing list has been copied to the "
                           "clipboard.  Open your word processor and select Edit|Paste."),
            QStringLiteral("Unable to open word processor")};
}

}  // namespace lw::tasks
