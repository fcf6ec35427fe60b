// SPDX-License-Identifier: GPL-3.0-or-later
// The creator row and the values both routes of posting derive from it;
// the row is only read, by bound values.
#include "creator/post_record.h"

#include <QFile>
#include <QStringList>

#include "core/secrets.h"
#include "core/text.h"
#include "creator/category_directory.h"
#include "creator/listing_html.h"

namespace lw::creator {

namespace {

// The columns a post reads of its row; the rest of the row's hundred-odd are
// the creator's layout and captions, which AuctionHTML already holds.
constexpr const char* kPostColumns[] = {"eBayAuctionTitle",
                                        "eBayCategory",
                                        "AuctionHTML",
                                        "PictureIconActivate",
                                        "IncludeGallery",
                                        "GalleryLink",
                                        "ItemLocation",
                                        "eBayRegion",
                                        "Country",
                                        "eBayGiftIcon",
                                        "eBayDuration",
                                        "Quantity",
                                        "MinimumBid",
                                        "Reserve",
                                        "Shipping",
                                        "Insurance",
                                        "YourItemCost",
                                        "ShippingMethod",
                                        "InventoryID",
                                        "eBayOptionalSettings",
                                        "eBayPaymentPrefs",
                                        "eBayShipPrefs",
                                        "eBayShipAbroadPref",
                                        "eBayShipUSPlus",
                                        "billpointcreditcard",
                                        "billpointechecks",
                                        "billpointinstantpurchase",
                                        "billpointaddicon",
                                        "billpointshipping",
                                        "billpointadditionalshipping",
                                        "billpointsalestax",
                                        "billpointsalestaxstate",
                                        "billpointreturnpolicy"};

// The names of the columns of PostRecordSql, as it names them.
const QStringList& PostRecordColumns() {
    static const QStringList columns = [] {
        QStringList names;
        for (const char* column : kPostColumns) {
            names << QLatin1String(column);
        }
        for (const char* column : kRegionColumns) {
            names << QLatin1String(column);
        }
        return names;
    }();
    return columns;
}

}  // namespace

const QString& PostRecordSql() {
    static const QString sql = QStringLiteral("SELECT ") +
                               PostRecordColumns().join(QStringLiteral(", ")) +
                               QStringLiteral(" FROM AuctionCreator WHERE UserName = ? AND ID = ?");
    return sql;
}

std::optional<CreatorRecord> CreatorRecord::Read(core::Database& db, const QString& user,
                                                 qint64 id) {
    core::Statement query = db.Prepare(PostRecordSql());
    return Read(query, user, id);
}

std::optional<CreatorRecord> CreatorRecord::Read(core::Statement& query, const QString& user,
                                                 qint64 id) {
    query.BindAll(user, id);
    if (!query.Step()) {
        query.Reset();
        return std::nullopt;
    }
    // The statement's columns are those of PostRecordSql, named as it names them.
    const QStringList& columns = PostRecordColumns();
    CreatorRecord row;
    row.m_values.reserve(columns.size());
    for (int column = 0; column < columns.size(); ++column) {
        row.Set(columns.at(column), query.Value(column));
    }
    query.Reset();
    return row;
}

void CreatorRecord::Set(const QString& column, const QVariant& value) {
    m_values.insert(column, value);
}

QVariant CreatorRecord::Value(const QString& column) const {
    // The program names columns as the schema spells them; another spelling
    // is looked for without regard to case.
    if (const auto found = m_values.constFind(column); found != m_values.constEnd()) {
        return *found;
    }
    for (auto it = m_values.constBegin(); it != m_values.constEnd(); ++it) {
        if (it.key().compare(column, Qt::CaseInsensitive) == 0) {
            return *it;
        }
    }
    return {};
}

bool CreatorRecord::IsNull(const QString& column) const {
    const QVariant value = Value(column);
    return !value.isValid() || value.isNull();
}

QString CreatorRecord::Text(const QString& column) const {
    const QVariant value = Value(column);
    if (!value.isValid() || value.isNull()) {
        return {};
    }
    if (value.typeId() == QMetaType::Double) {
        return core::NumberText(value.toDouble());
    }
    return value.toString();
}

bool CreatorRecord::Flag(const QString& column) const {
    return core::FlagValue(Value(column));
}

double CreatorRecord::Number(const QString& column) const {
    return core::NumberRule(Value(column));
}

SiteLogin ReadSiteLogin(core::Database& db, const QString& user) {
    SiteLogin login;
    core::Statement query = db.Prepare(
        QStringLiteral("SELECT UserID FROM UserSites WHERE UserName = ? AND AuctionSiteFlag = 0 "
                       "ORDER BY rowid LIMIT 1"));
    query.Bind(1, user);
    if (query.Step()) {
        login.userId = query.Text(0);
        login.password = core::SitePassword(db, user, 0);
    }
    return login;
}

QString PostTitle(const CreatorRecord& row) {
    // Cut first, so that an entity never stands half in the title.
    return row.Text(QStringLiteral("eBayAuctionTitle"))
        .left(45)
        .replace(u'"', QStringLiteral("&#34;"));
}

QString DescriptionWithFooter(const CreatorRecord& row, const update::RuleStore& rules) {
    return row.Text(QStringLiteral("AuctionHTML")) + ListingFooter(rules);
}

QString ShipToChoice(const CreatorRecord& row) {
    if (row.Flag(QStringLiteral("eBayShipAbroadPref"))) {
        return QStringLiteral("worldwide");
    }
    if (row.Flag(QStringLiteral("eBayShipUSPlus"))) {
        return QStringLiteral("siteplusregions");
    }
    return QStringLiteral("siteonly");
}

QString CodeList(const CreatorRecord& row, const QString& column) {
    QString list = row.Text(column);
    if (!list.isEmpty() && !list.endsWith(u'~')) {
        list += u'~';
    }
    return list;
}

bool WriteBrowserPage(const QString& path, const QString& work, const QString& text,
                      QString* error) {
    QFile::remove(path);
    QFile::remove(work);
    QFile file(work);
    if (!file.open(QIODevice::WriteOnly) ||
        !file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner) ||
        file.write(text.toUtf8()) < 0 || !file.flush()) {
        if (error != nullptr) {
            *error = QStringLiteral("The page could not be written to ") + work +
                     QStringLiteral(": ") + file.errorString();
        }
        return false;
    }
    file.close();
    if (!QFile::rename(work, path)) {
        if (error != nullptr) {
            *error = QStringLiteral("The page could not be renamed to ") + path;
        }
        return false;
    }
    return true;
}

QString RecordErrorTitle() {
    return QStringLiteral("Auction Creator record error");
}

PostRefusal NoCategoryRefusal() {
    return {QStringLiteral("No valid eBay auction Category found, post cancelled"),
            RecordErrorTitle()};
}

CategoryResolver DirectoryResolver(core::Database& db, core::Ui& ui) {
    return [&db, &ui](const QString& name) -> std::optional<QString> {
        const qint64 number = ResolveCategory(db, ui, name);
        if (number < 1) {
            return std::nullopt;
        }
        return QString::number(number);
    };
}

std::optional<QString> PostCategory(const CreatorRecord& row, const CategoryResolver& resolve,
                                    bool* unresolved) {
    const QString text = row.Text(QStringLiteral("eBayCategory")).trimmed();
    if (unresolved != nullptr) {
        *unresolved = false;
    }
    if (text.isEmpty()) {
        return std::nullopt;
    }
    const double number = core::Val(text);
    if (number >= 1) {
        return QString::number(static_cast<qint64>(number));
    }
    std::optional<QString> resolved = resolve ? resolve(text) : std::nullopt;
    if (!resolved && unresolved != nullptr) {
        *unresolved = true;
    }
    return resolved;
}

}  // namespace lw::creator
