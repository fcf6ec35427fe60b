// SPDX-License-Identifier: GPL-3.0-or-later
// The user preferences: load, field checks, password change and the write on
// Update. The write binds every value; the only names that enter SQL text are
// region columns looked up in the rule store, and those are used only when
// UserSites really has such a column.
#include "admin/preferences.h"

#include <QSet>
#include <algorithm>

#include "core/secrets.h"
#include "core/settings.h"
#include "core/text.h"
#include "core/tracking.h"

namespace lw::admin {

namespace {

const QString& SettingsApp() {
    static const QString app = QStringLiteral("Tolvane");
    return app;
}
const QString& SettingsSection() {
    static const QString section = QStringLiteral("Options");
    return section;
}

QString ReadOption(const QString& key, const QString& defaultValue) {
    return core::GetSetting(SettingsApp(), SettingsSection(), key, defaultValue);
}
void WriteOption(const QString& key, const QString& value) {
    core::SaveSetting(SettingsApp(), SettingsSection(), key, value);
}

const QString& ListSeparator() {
    static const QString separator = QStringLiteral("~~~");
    return separator;
}

const QString& NoUserMessage() {
    static const QString message = QStringLiteral("No Valid Current User Set");
    return message;
}

// An empty text is stored as Null.
QVariant TextOrNull(const QString& text) {
    const QString stored = core::StoreText(text);
    if (stored.isEmpty()) {
        return QVariant();
    }
    return stored;
}

QStringList Keys(const update::RuleStore& rules, const QString& section) {
    QStringList keys;
    for (const auto& row : rules.FillList(kPreferenceListStore, section)) {
        keys << row.text;
    }
    return keys;
}

QStringList SplitList(const QString& joined) {
    QStringList out;
    for (const QString& part : joined.split(ListSeparator())) {
        if (!part.isEmpty()) {
            out << part;
        }
    }
    return out;
}

bool HasEmailShape(const QString& text) {
    return text.contains(u'@') && text.contains(u'.');
}

// Column names of a table, lower case, for checking names from the rule store.
QSet<QString> ColumnsOf(core::Database& db, const QString& table) {
    QSet<QString> columns;
    core::Statement info = db.Prepare(QStringLiteral("SELECT name FROM pragma_table_info(?)"));
    info.Bind(1, table);
    while (info.Step()) {
        columns.insert(info.Text(0).toLower());
    }
    return columns;
}

// The UserSites column of each lstShippingRegions row, when the rule store
// names one that exists; empty otherwise.
QStringList RegionColumns(core::Database& db, const PreferenceLists& lists,
                          const update::RuleStore& rules) {
    const QSet<QString> columns = ColumnsOf(db, QStringLiteral("UserSites"));
    QStringList out;
    for (const QString& region : lists.shippingRegions) {
        const QString column = rules
                                   .LookupKey(QStringLiteral("Shipping Regions Reversecode"),
                                              region, kPreferenceListStore)
                                   .trimmed();
        out << (column != update::RuleError() && columns.contains(column.toLower()) ? column
                                                                                    : QString());
    }
    return out;
}

QString MakerMailServer(const update::RuleStore& rules) {
    const QString server = rules.LookupKey(QStringLiteral("Mail Server"), QStringLiteral("Server"),
                                           update::kInfoStore);
    return server == update::RuleError() ? QString() : server.trimmed();
}

ViewGroup LoadViewGroup(const QString& prefix, bool currentView) {
    ViewGroup group;
    group.interval = ReadOption(prefix + QStringLiteral("ViewInterval"), QStringLiteral("0"));
    const QString order =
        ReadOption(prefix + QStringLiteral("ViewOrder"), QStringLiteral("EndDate"));
    group.order = std::max(0, static_cast<int>(ViewOrderFields().indexOf(order)));
    group.descending =
        ReadOption(prefix + QStringLiteral("ViewOrder2"), QString()) == QLatin1String("DESC");
    group.enabled = group.interval != QLatin1String("0") || group.order != 0;
    if (!group.enabled) {
        group = ViewGroupReset(currentView);
    }
    return group;
}

}  // namespace

QString UserPrefColumn(int index) {
    static const QStringList columns = {
        QStringLiteral("SFirstName"),      QStringLiteral("SMiddleName"),
        QStringLiteral("SLastName"),       QStringLiteral("STitle"),
        QStringLiteral("SCompanyName"),    QStringLiteral("AddressStreet1"),
        QStringLiteral("AddressStreet2"),  QStringLiteral("City"),
        QStringLiteral("State"),           QStringLiteral("zipcode"),
        QStringLiteral("PFirstName"),      QStringLiteral("PMiddleName"),
        QStringLiteral("PLastName"),       QStringLiteral("PTitle"),
        QStringLiteral("PCompanyName"),    QStringLiteral("PAddressStreet1"),
        QStringLiteral("PAddressStreet2"), QStringLiteral("PCity"),
        QStringLiteral("PState"),          QStringLiteral("PZIPCode"),
    };
    return index >= 0 && index < columns.size() ? columns.at(index) : QString();
}

PreferenceLists LoadPreferenceLists(const update::RuleStore& rules) {
    PreferenceLists lists;
    lists.regions = Keys(rules, QStringLiteral("Regions"));
    lists.countries = Keys(rules, QStringLiteral("Countries"));
    lists.shipping = Keys(rules, QStringLiteral("Shipping"));
    lists.payment = Keys(rules, QStringLiteral("Payment"));
    lists.shippingRegions = Keys(rules, QStringLiteral("Shipping Regions"));
    return lists;
}

PreferenceLists LoadPreferenceLists() {
    return LoadPreferenceLists(update::Rules());
}

const QStringList& ConnectionCaptions() {
    static const QStringList captions = {
        QStringLiteral("Dial-Up Connection"),
        QStringLiteral("Network (Including external DSL modem connected to a network card)"),
        QStringLiteral("AOL Dial-Up"),
        QStringLiteral("Proxy Server"),
        QStringLiteral("AOL on a Proxy Server"),
    };
    return captions;
}

QString ConnectionsNote() {
    return QStringLiteral(
        "Some sites limit or block many connections from one address: choose fewer if updates "
        "fail there.");
}

const QStringList& SaleOverEntries() {
    static const QStringList entries = {
        QStringLiteral("After I've shipped the item"),
        QStringLiteral("Once I've sent email that item has shipped"),
        QStringLiteral("When I get email that buyer received item"),
        QStringLiteral("After I've left feedback for buyer"),
        QStringLiteral("Once I've received feedback from buyer"),
    };
    return entries;
}

const QStringList& SaleOverTags() {
    static const QStringList tags = {QStringLiteral("SHS"), QStringLiteral("SHE"),
                                     QStringLiteral("SHR"), QStringLiteral("FBL"),
                                     QStringLiteral("FBR")};
    return tags;
}

const QStringList& WinningBidOverEntries() {
    static const QStringList entries = {
        QStringLiteral("After I've received the item"),
        QStringLiteral("Once I've sent email that item was received"),
        QStringLiteral("After I've left feedback for seller"),
        QStringLiteral("Once I've received feedback from seller"),
    };
    return entries;
}

const QStringList& WinningBidOverTags() {
    static const QStringList tags = {QStringLiteral("IRR"), QStringLiteral("IRE"),
                                     QStringLiteral("FBL"), QStringLiteral("FBR")};
    return tags;
}

const QStringList& ViewOrderFields() {
    static const QStringList fields = {QStringLiteral("EndDate"), QStringLiteral("HighBid"),
                                       QStringLiteral("ItemNumber"), QStringLiteral("ItemTitle"),
                                       QStringLiteral("NumberBids")};
    return fields;
}

const QStringList& ViewOrderCaptions() {
    static const QStringList captions = {QStringLiteral("End Date"), QStringLiteral("High Bid"),
                                         QStringLiteral("Item Number"), QStringLiteral("Title"),
                                         QStringLiteral("Number of Bids")};
    return captions;
}

const QStringList& TimeLeftCaptions() {
    static const QStringList captions = {
        QStringLiteral("30 seconds"), QStringLiteral("minute"),     QStringLiteral("5 minutes"),
        QStringLiteral("10 minutes"), QStringLiteral("15 minutes"), QStringLiteral("30 minutes"),
        QStringLiteral("45 minutes"), QStringLiteral("hour"),
    };
    return captions;
}

const QList<int>& TimeLeftData() {
    // 30000 and above are milliseconds; smaller values count ticks of 65535 ms.
    static const QList<int> data = {30000, 65535, 5, 10, 15, 30, 60, 0};
    return data;
}

const QStringList& DurationEntries() {
    static const QStringList entries = {QStringLiteral("1 day"), QStringLiteral("3 days"),
                                        QStringLiteral("5 days"), QStringLiteral("7 days"),
                                        QStringLiteral("10 days")};
    return entries;
}

qint64 DurationDays(const QString& entry) {
    return static_cast<qint64>(core::Val(entry));
}

int TagIndex(const QStringList& tags, const QString& tag) {
    const QString wanted = tag.trimmed();
    for (int i = 0; i < tags.size(); ++i) {
        if (tags.at(i).compare(wanted, Qt::CaseInsensitive) == 0) {
            return i;
        }
    }
    return -1;
}

int TimeLeftIndexFor(qint64 interval) {
    for (int i = 0; i < TimeLeftData().size(); ++i) {
        if (TimeLeftData().at(i) == interval) {
            return i;
        }
    }
    return -1;
}

int DurationIndexFor(qint64 days) {
    for (int i = 0; i < DurationEntries().size(); ++i) {
        if (DurationDays(DurationEntries().at(i)) == days) {
            return i;
        }
    }
    return -1;
}

QString TolvaneMailServer() {
    return QStringLiteral("Use Tolvane Mail Server");
}

ViewGroup ViewGroupReset(bool currentView) {
    ViewGroup group;
    group.enabled = false;
    group.interval = QStringLiteral("0");
    group.order = 0;
    group.descending = currentView;
    return group;
}

bool OrderMeansDescending(int order) {
    return order == 1;
}

// ------------------------------------------------------------------ loading

Preferences LoadPreferences(core::Database& db, const QString& userName,
                            const PreferenceLists& lists, const update::RuleStore& rules) {
    Preferences prefs;
    {
        core::Statement user = db.Prepare(QStringLiteral("SELECT * FROM Users WHERE UserName = ?"));
        user.Bind(1, userName);
        if (!user.Step()) {
            throw core::StoreError(NoUserMessage(), 0);
        }
        for (int i = 0; i < 20; ++i) {
            prefs.field[static_cast<size_t>(i)] = user.Text(UserPrefColumn(i));
        }
        prefs.field[kPrefUserName] = user.Text(QStringLiteral("UserName"));
        prefs.field[kPrefReplyEmail] = user.Text(QStringLiteral("ReplyEmailAddress"));
        if (!user.IsNull(QStringLiteral("SalesTaxRate"))) {
            prefs.field[kPrefSalesTax] = core::Format(
                user.Real(QStringLiteral("SalesTaxRate")) * 100, QStringLiteral("0.00"));
        }
        QString mailServer = user.Text(QStringLiteral("MailServer"));
        const QString maker = MakerMailServer(rules);
        if (!maker.isEmpty() && mailServer.trimmed().compare(maker, Qt::CaseInsensitive) == 0) {
            mailServer = TolvaneMailServer();
        }
        prefs.field[kPrefMailServer] = mailServer;
        prefs.connection =
            std::clamp(static_cast<int>(user.Int(QStringLiteral("InternetConnection"))), 0, 4);
        prefs.proxyServer = user.Text(QStringLiteral("ProxyServer"));
        prefs.proxyPort = user.Text(QStringLiteral("ProxyPort"));
        prefs.countryShipping = user.Text(QStringLiteral("country"));
        prefs.countryPayment = user.Text(QStringLiteral("PCountry"));
        prefs.saleOverPref =
            TagIndex(SaleOverTags(), user.Text(QStringLiteral("AuctionRemoveTag")));
        prefs.winningBidOver =
            TagIndex(WinningBidOverTags(), user.Text(QStringLiteral("BidRemoveTag")));
    }
    {
        core::Statement site = db.Prepare(
            QStringLiteral("SELECT * FROM UserSites WHERE UserName = ? ORDER BY rowid LIMIT 1"));
        site.Bind(1, userName);
        if (site.Step()) {
            prefs.field[kPrefUserId] = site.Text(QStringLiteral("UserID"));
            prefs.field[kPrefSiteEmail] = site.Text(QStringLiteral("SiteEmailAddress"));
            prefs.field[kPrefLocation] = site.Text(QStringLiteral("LocationPref"));
            prefs.field[kPrefPassword] = core::SitePassword(
                db, userName, static_cast<int>(site.Int(QStringLiteral("AuctionSiteFlag"))));
            prefs.region = site.Text(QStringLiteral("ZIPCodePref"));
            prefs.shipFromCountry = site.Text(QStringLiteral("ShipFromCountryPref"));
            prefs.duration = site.Int(QStringLiteral("duration"));
            prefs.shippingPref = SplitList(site.Text(QStringLiteral("ShipPayPref")));
            prefs.paymentPref = SplitList(site.Text(QStringLiteral("PaymentTypePref")));
            prefs.billpoint = site.Flag(QStringLiteral("billpoint"));
            if (site.Flag(QStringLiteral("shipUSPlus"))) {
                prefs.shipScope = ShipScope::USPlus;
            } else if (site.Flag(QStringLiteral("ShipAbroadPref"))) {
                prefs.shipScope = ShipScope::International;
            } else {
                prefs.shipScope = ShipScope::DomesticOnly;
            }
            const QStringList columns = RegionColumns(db, lists, rules);
            for (int i = 0; i < lists.shippingRegions.size(); ++i) {
                if (!columns.at(i).isEmpty() && site.Flag(columns.at(i))) {
                    prefs.shippingRegions << lists.shippingRegions.at(i);
                }
            }
        }
    }
    {
        core::Statement global = db.Prepare(
            QStringLiteral("SELECT AutoUpdateTimeLeft, TimeLeftInterval FROM Global LIMIT 1"));
        if (global.Step()) {
            prefs.autoUpdateTimeLeft = global.Flag(QStringLiteral("AutoUpdateTimeLeft"));
            prefs.timeLeftOption =
                global.IsNull(QStringLiteral("TimeLeftInterval"))
                    ? -1
                    : TimeLeftIndexFor(global.Int(QStringLiteral("TimeLeftInterval")));
        }
    }
    prefs.archiveView = LoadViewGroup(QStringLiteral("AA"), false);
    prefs.currentView = LoadViewGroup(QStringLiteral("CA"), true);
    prefs.tracking = core::UsageReportOn();
    prefs.connections = update::ConnectionsSetting();
    return prefs;
}

bool ResetPreferences(core::Database& db, const QString& userName, const PreferenceLists& lists,
                      const update::RuleStore& rules, Preferences& out, core::Ui& ui) {
    try {
        out = LoadPreferences(db, userName, lists, rules);
        return true;
    } catch (const core::StoreError& error) {
        ui.Message(error.Message(), QStringLiteral("User Preferences"), core::Icon::Warning);
        return false;
    }
}

// ------------------------------------------------------------ while editing

bool AcceptsCharacter(int index, QChar c, int countryShippingIndex, int countryPaymentIndex) {
    if (c == u'\b') {
        return true;
    }
    if (index == kPrefSalesTax) {
        return c.isDigit() || c == u'.';
    }
    if ((index == 9 && countryShippingIndex == 0) || (index == 19 && countryPaymentIndex == 0)) {
        return c.isDigit() || c == u'-';
    }
    return true;
}

FieldCheck LeaveField(int index, const QString& text, core::Ui& ui) {
    FieldCheck check{text, false};
    const QString invalidEmail = QStringLiteral("Your email Address Is Not Valid, Please Reenter");
    const QString invalidEmailTitle = QStringLiteral("Invalid email Address");

    if (index == kPrefReplyEmail) {
        if (!text.isEmpty() && !HasEmailShape(text)) {
            ui.Message(invalidEmail, invalidEmailTitle, core::Icon::Warning);
            check.focusBack = true;
        }
    } else if (index == kPrefSalesTax) {
        const double value = core::Val(text);
        const QString title = QStringLiteral("Sales Tax Rate");
        if (value > 0 && value < 1) {
            const QString question =
                text + QStringLiteral(" Is Less Than One Percent, Do You Mean ") +
                core::Format(value * 100, QStringLiteral("0.00")) + QStringLiteral("%?");
            if (ui.Ask(question, title, core::Buttons::YesNo, core::Answer::Yes) ==
                core::Answer::Yes) {
                check.text = QString::number(value * 100, 'g', 15);
                check.focusBack = true;
            }
        } else if (value > 100) {
            const QString question =
                text + QStringLiteral(" Is Greater Than 100 Percent, Is This Correct?");
            if (ui.Ask(question, title, core::Buttons::YesNo, core::Answer::Yes) ==
                core::Answer::No) {
                check.focusBack = true;
            }
        }
    } else if (index == kPrefMailServer) {
        // Any host, or the maker's literal.
    } else if (index == kPrefSiteEmail) {
        if (!HasEmailShape(text)) {
            ui.Message(invalidEmail, invalidEmailTitle, core::Icon::Warning);
            check.focusBack = true;
        }
    } else if (index == kPrefFtpZip) {
        if (text.size() > 5) {
            ui.Message(QStringLiteral("Trimming ZIP Code to 5 Digits"),
                       QStringLiteral("5 Digit ZIP Code"), core::Icon::Information);
            check.text = text.left(5);
            check.focusBack = true;
        }
    } else if (index == 0 || index == 2 || index == 5 || index == 7 || index == 8 || index == 9 ||
               index == 10 || index == 12 || index == 15 || index == 17 || index == 18 ||
               index == 19) {
        if (text.trimmed().isEmpty()) {
            ui.Message(QStringLiteral("Required Information Missing"),
                       QStringLiteral("Missing Data"), core::Icon::Warning);
            check.focusBack = true;
        }
    } else if (index == kPrefFtpHost) {
        if (!text.isEmpty() && !text.contains(u'.')) {
            ui.Message(QStringLiteral("FTP Host Entry Is Not Valid"),
                       QStringLiteral("invalid FTP Host"), core::Icon::Warning);
            check.focusBack = true;
        }
    } else if (index == kPrefFtpDirectory) {
        if (text.isEmpty()) {
            return check;
        }
        const qsizetype www = text.indexOf(QLatin1String("www."), 0, Qt::CaseInsensitive);
        if (www < 0) {
            ui.Message(QStringLiteral("FTP Upload Directory Is Not Valid"),
                       QStringLiteral("invalid FTP Directory"), core::Icon::Warning);
            check.focusBack = true;
            return check;
        }
        QString fixed = text;
        if (!text.startsWith(QLatin1String("http://"), Qt::CaseInsensitive)) {
            fixed = QStringLiteral("http://") + text.mid(www);
        }
        if (!fixed.endsWith(u'/')) {
            fixed += u'/';
        }
        // Back into the field only when it was corrected, so that a valid
        // address can be left again.
        check.focusBack = fixed != text;
        check.text = fixed;
    }
    return check;
}

ProxyControls ConnectionChosen(int option, const QString& port) {
    ProxyControls controls;
    controls.visible = option > 2;
    controls.port = controls.visible && port.isEmpty() ? QStringLiteral("80") : port;
    return controls;
}

QList<int> ShippingSelection(const QList<int>& selectedRows) {
    if (selectedRows.contains(0)) {
        return {0};
    }
    return selectedRows;
}

PasswordChange UpdatePassword(QString& storedPassword, const QString& oldPassword,
                              const QString& newPassword, const QString& repeatPassword,
                              core::Ui& ui) {
    if (newPassword.trimmed().isEmpty() || repeatPassword.trimmed().isEmpty()) {
        ui.Message(QStringLiteral("You need to enter and confirm a new password."),
                   QStringLiteral("Password Not Entered"), core::Icon::Warning);
        return PasswordChange::NotEntered;
    }
    if (oldPassword != storedPassword) {
        ui.Message(QStringLiteral("Old Password Is Not Correct"),
                   QStringLiteral("Incorrect Old Password"), core::Icon::Warning);
        return PasswordChange::WrongOld;
    }
    if (newPassword != repeatPassword) {
        ui.Message(QStringLiteral("New Passwords Do Not Match"),
                   QStringLiteral("Mismatched New Password"), core::Icon::Warning);
        return PasswordChange::Mismatch;
    }
    storedPassword = newPassword;
    return PasswordChange::Changed;
}

void SaveTracking(bool on) {
    WriteOption(QStringLiteral("Track"), on ? QStringLiteral("ON") : QStringLiteral("OFF"));
}

// ------------------------------------------------------------------ cmdUpdate

core::TimeLeftTimer SavePreferences(core::Database& db, const QString& userName,
                                    const Preferences& prefs, const PreferenceLists& lists,
                                    const update::RuleStore& rules) {
    const QString orderDefault = ViewOrderFields().at(0);
    auto orderField = [&](int order) {
        return order >= 0 && order < ViewOrderFields().size() ? ViewOrderFields().at(order)
                                                              : orderDefault;
    };
    const ViewGroup& archive = prefs.archiveView;
    if (archive.enabled) {
        WriteOption(QStringLiteral("AAViewInterval"), archive.interval);
        WriteOption(QStringLiteral("AAViewOrder2"),
                    archive.descending ? QStringLiteral("DESC") : QString());
        WriteOption(QStringLiteral("AAViewOrder"), orderField(archive.order));
    } else {
        WriteOption(QStringLiteral("AAViewInterval"), QStringLiteral("0"));
        WriteOption(QStringLiteral("AAViewOrder"), orderDefault);
    }
    if (prefs.currentView.enabled) {
        // The current view's interval and order are read from the archive
        // controls; only its direction is its own. Users' saved views rely on
        // this, so it stays.
        WriteOption(QStringLiteral("CAViewInterval"), archive.interval);
        WriteOption(QStringLiteral("CAViewOrder2"),
                    prefs.currentView.descending ? QStringLiteral("DESC") : QString());
        WriteOption(QStringLiteral("CAViewOrder"), orderField(archive.order));
    } else {
        WriteOption(QStringLiteral("CAViewInterval"), QStringLiteral("0"));
        WriteOption(QStringLiteral("CAViewOrder"), orderDefault);
    }
    update::SaveConnectionsSetting(prefs.connections);

    core::Transaction tx(db);
    {
        core::Statement exists =
            db.Prepare(QStringLiteral("SELECT 1 FROM Users WHERE UserName = ?"));
        exists.Bind(1, userName);
        if (!exists.Step()) {
            throw core::StoreError(NoUserMessage(), 0);
        }
    }
    {
        const bool proxy = (prefs.connection == 3 || prefs.connection == 4) &&
                           !prefs.proxyServer.trimmed().isEmpty() &&
                           !prefs.proxyPort.trimmed().isEmpty();
        QString sql = QStringLiteral(
            "UPDATE Users SET InternetConnection = ?, ProxyPort = ?, ProxyServer = ?, "
            "ReplyEmailAddress = ?, SalesTaxRate = ?, MailServer = ?");
        for (int i = 0; i < 20; ++i) {
            sql += QStringLiteral(", ") + UserPrefColumn(i) + QStringLiteral(" = ?");
        }
        sql += QStringLiteral(
            ", country = ?, PCountry = ?, AuctionRemoveTag = ?, BidRemoveTag = ? "
            "WHERE UserName = ?");
        core::Statement update = db.Prepare(sql);
        int n = 1;
        update.Bind(n++, prefs.connection);
        update.Bind(n++, proxy ? TextOrNull(prefs.proxyPort.trimmed()) : QVariant());
        update.Bind(n++, proxy ? TextOrNull(prefs.proxyServer.trimmed()) : QVariant());
        update.Bind(n++, TextOrNull(prefs.field[kPrefReplyEmail]));
        const QString tax = prefs.field[kPrefSalesTax];
        update.Bind(n++, tax.trimmed().isEmpty() ? QVariant() : QVariant(core::Val(tax) / 100));
        update.Bind(n++, TextOrNull(prefs.field[kPrefMailServer]));
        for (int i = 0; i < 20; ++i) {
            update.Bind(n++, TextOrNull(prefs.field[static_cast<size_t>(i)]));
        }
        update.Bind(n++, TextOrNull(prefs.countryShipping));
        update.Bind(n++, TextOrNull(prefs.countryPayment));
        update.Bind(n++, prefs.saleOverPref >= 0 && prefs.saleOverPref < SaleOverTags().size()
                             ? QVariant(SaleOverTags().at(prefs.saleOverPref))
                             : QVariant());
        update.Bind(n++,
                    prefs.winningBidOver >= 0 && prefs.winningBidOver < WinningBidOverTags().size()
                        ? QVariant(WinningBidOverTags().at(prefs.winningBidOver))
                        : QVariant());
        update.Bind(n++, userName);
        update.Run();
    }
    int siteNumber = 0;  // of the row the password belongs to
    {
        qint64 rowid = -1;
        {
            core::Statement first = db.Prepare(
                QStringLiteral("SELECT rowid, AuctionSiteFlag FROM UserSites WHERE UserName = ? "
                               "ORDER BY rowid LIMIT 1"));
            first.Bind(1, userName);
            if (first.Step()) {
                rowid = first.Value(0).toLongLong();
                siteNumber = static_cast<int>(first.Int(QStringLiteral("AuctionSiteFlag")));
            }
        }
        if (rowid < 0) {
            core::Statement add = db.Prepare(
                QStringLiteral("INSERT INTO UserSites (UserName, AuctionSiteFlag) VALUES (?, 0)"));
            add.Bind(1, userName).Run();
            rowid = db.LastInsertId();
        }
        const bool usPlus = prefs.shipScope == ShipScope::USPlus;
        QString sql = QStringLiteral("UPDATE UserSites SET shipUSPlus = ?");
        QList<bool> regionValues;
        const QStringList columns = RegionColumns(db, lists, rules);
        QSet<QString> seen;
        for (int i = 0; i < columns.size(); ++i) {
            const QString& column = columns.at(i);
            if (column.isEmpty() || seen.contains(column.toLower())) {
                continue;
            }
            seen.insert(column.toLower());
            sql += QStringLiteral(", ") + core::QuoteIdentifier(column) + QStringLiteral(" = ?");
            regionValues << (usPlus && prefs.shippingRegions.contains(lists.shippingRegions.at(i)));
        }
        sql += QStringLiteral(
            ", UserID = ?, SiteEmailAddress = ?, LocationPref = ?, ZIPCodePref = ?, "
            "ShipAbroadPref = ?, ShipFromCountryPref = ?, PaymentTypePref = ?, "
            "ShipPayPref = ?, billpoint = ?, duration = ? WHERE rowid = ?");
        core::Statement update = db.Prepare(sql);
        int n = 1;
        update.Bind(n++, usPlus);
        for (bool value : regionValues) {
            update.Bind(n++, value);
        }
        update.Bind(n++, TextOrNull(prefs.field[kPrefUserId]));
        update.Bind(n++, TextOrNull(prefs.field[kPrefSiteEmail]));
        update.Bind(n++, TextOrNull(prefs.field[kPrefLocation]));
        update.Bind(n++, TextOrNull(prefs.region));
        // Anything but domestic only ships abroad: international shipping and
        // the U.S. with the regions ticked.
        update.Bind(n++, prefs.shipScope != ShipScope::DomesticOnly);
        update.Bind(n++, TextOrNull(prefs.shipFromCountry));
        update.Bind(n++, TextOrNull(prefs.paymentPref.join(ListSeparator())));
        update.Bind(n++, TextOrNull(prefs.shippingPref.join(ListSeparator())));
        update.Bind(n++, prefs.billpoint);
        update.Bind(n++, prefs.duration > 0 ? QVariant(prefs.duration) : QVariant());
        update.Bind(n++, rowid);
        update.Run();
    }
    const bool autoUpdate = prefs.autoUpdateTimeLeft && prefs.timeLeftOption >= 0 &&
                            prefs.timeLeftOption < TimeLeftData().size();
    qint64 interval = 0;
    {
        if (db.ScalarInt(QStringLiteral("SELECT COUNT(*) FROM Global")) == 0) {
            db.Exec(QStringLiteral("INSERT INTO Global (AutoUpdateTimeLeft) VALUES (0)"));
        }
        if (autoUpdate) {
            interval = TimeLeftData().at(prefs.timeLeftOption);
            core::Statement update = db.Prepare(
                QStringLiteral("UPDATE Global SET AutoUpdateTimeLeft = 1, TimeLeftInterval = ?"));
            update.Bind(1, interval).Run();
        } else {
            db.Exec(QStringLiteral("UPDATE Global SET AutoUpdateTimeLeft = 0"));
        }
    }
    tx.Commit();
    // After the commit, so that a keyring's unlock prompt never holds the
    // database locked.
    core::SaveSitePassword(db, userName, siteNumber, prefs.field[kPrefPassword]);
    return core::TimeLeftTimerFor(autoUpdate, interval);
}

}  // namespace lw::admin
