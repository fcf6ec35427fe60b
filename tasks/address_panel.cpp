// SPDX-License-Identifier: GPL-3.0-or-later
// The partner's address rows and the clipboard's address parser. A save
// writes the partner's row alone; the parser never touches the database.
#include "tasks/address_panel.h"

#include <QStringList>
#include <array>

namespace lw::tasks {

namespace {

// The boxes and the columns of Buyers and Sellers behind them.
struct AddressColumn {
    QString AddressBoxes::*box;
    const char* column;
};
const std::array<AddressColumn, 15> kAddressColumns = {{
    {&AddressBoxes::txtAddressMr, "Salutation"},
    {&AddressBoxes::txtAddressFirst, "FirstName"},
    {&AddressBoxes::txtAddressMiddle, "MiddleName"},
    {&AddressBoxes::txtAddressLast, "LastName"},
    {&AddressBoxes::txtAddressTitle, "Title"},
    {&AddressBoxes::txtAddressCompany, "Company"},
    {&AddressBoxes::txtAddressStreet1, "StreetAddress1"},
    {&AddressBoxes::txtAddressStreet2, "StreetAddress2"},
    {&AddressBoxes::txtAddressCity, "City"},
    {&AddressBoxes::txtAddressState, "State"},
    {&AddressBoxes::txtAddressZip, "ZipCode"},
    {&AddressBoxes::txtAddressCountry, "CountryInfo"},
    {&AddressBoxes::txtAddressPhone, "PhoneNumber"},
    {&AddressBoxes::txtAddressFax, "FaxNumber"},
    {&AddressBoxes::txtAddressEmail, "Email"},
}};

// Whose address a side keeps, and where.
struct PartnerTable {
    const char* table;         // "Buyers" or "Sellers"
    const char* keyColumn;     // "BuyerID" or "SellerID"
    const char* partnerField;  // the record's field that names the partner
};
const PartnerTable kBuyers = {"Buyers", "BuyerID", "HighBidderName"};
const PartnerTable kSellers = {"Sellers", "SellerID", "SellerName"};

QString Latin(const char* text) {
    return QString::fromLatin1(text);
}

// The partner's key: the site and the name; nullopt when the record is gone.
struct PartnerKey {
    qint64 site = 0;
    QString name;
};
std::optional<PartnerKey> ReadPartnerKey(core::Database& db, const SelectedItem& item,
                                         const PartnerTable& partner) {
    const auto record = ReadSelectedRecord(db, item);
    if (!record) {
        return std::nullopt;
    }
    return PartnerKey{FieldText(*record, QStringLiteral("AuctionSiteFlag")).toLongLong(),
                      FieldText(*record, Latin(partner.partnerField))};
}

std::optional<AddressPanel> ShowAddress(core::Database& db, const SelectedItem& item,
                                        const PartnerTable& partner) {
    const auto key = ReadPartnerKey(db, item, partner);
    if (!key) {
        return std::nullopt;
    }
    AddressPanel panel;
    panel.frameTitle = Caption(QStringLiteral("Address for ") + key->name);
    auto statement = db.Prepare(QStringLiteral("SELECT * FROM ") + Latin(partner.table) +
                                QStringLiteral(" WHERE AuctionSiteFlag = ?1 AND ") +
                                Latin(partner.keyColumn) + QStringLiteral(" = ?2 LIMIT 1"));
    statement.BindAll(key->site, key->name);
    if (statement.Step()) {
        for (const AddressColumn& column : kAddressColumns) {
            panel.boxes.*column.box = statement.Text(Latin(column.column));
        }
    }
    return panel;
}

SaveOutcome SaveAddress(core::Database& db, const SelectedItem& item, const AddressBoxes& boxes,
                        const PartnerTable& partner) {
    SaveOutcome outcome = StepOver([&] {
        const auto key = ReadPartnerKey(db, item, partner);
        if (!key || key->name.trimmed().isEmpty()) {
            return 0;
        }
        const QString table = Latin(partner.table);
        auto find = db.Prepare(QStringLiteral("SELECT rowid FROM ") + table +
                               QStringLiteral(" WHERE AuctionSiteFlag = ?1 AND ") +
                               Latin(partner.keyColumn) + QStringLiteral(" = ?2 LIMIT 1"));
        find.BindAll(key->site, key->name);
        const bool stands = find.Step();
        const qint64 rowid = stands ? find.Value(0).toLongLong() : 0;
        QStringList columns;
        for (const AddressColumn& column : kAddressColumns) {
            columns << Latin(column.column);
        }
        // The boxes are ?1 to ?15; then the row, or the key.
        const int next = static_cast<int>(kAddressColumns.size()) + 1;
        QString sql;
        if (stands) {
            sql = QStringLiteral("UPDATE ") + table + QStringLiteral(" SET ") +
                  columns.join(QStringLiteral(" = ?, ")) + QStringLiteral(" = ? WHERE rowid = ?");
        } else {
            sql = QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") +
                  columns.join(QStringLiteral(", ")) + QStringLiteral(", AuctionSiteFlag, ") +
                  Latin(partner.keyColumn) + QStringLiteral(") VALUES (") +
                  QStringLiteral("?, ").repeated(next) + QStringLiteral("?)");
        }
        auto write = db.Prepare(sql);
        int index = 1;
        for (const AddressColumn& column : kAddressColumns) {
            write.Bind(index++, BoxValue(boxes.*column.box));
        }
        if (stands) {
            write.Bind(next, rowid);
        } else {
            write.Bind(next, key->site);
            write.Bind(next + 1, key->name);
        }
        write.Run();
        return db.Changes();
    });
    outcome.selectNode = QStringLiteral("PRA");
    return outcome;
}

// ------------------------------------------------------------ the parser

// The blanks that Trim takes off: spaces, nothing else.
QString TrimBlanks(const QString& text) {
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && text.at(start) == u' ') {
        ++start;
    }
    while (end > start && text.at(end - 1) == u' ') {
        --end;
    }
    return text.mid(start, end - start);
}

// Step 3: a leading line feed, the blanks, and the backspaces in front.
QString CleanLine(QString line) {
    if (line.startsWith(u'\n')) {
        line.remove(0, 1);
    }
    line = TrimBlanks(line);
    while (line.startsWith(u'\b')) {
        line = TrimBlanks(line.mid(1));
    }
    return line;
}

// The line breaks of this platform's clipboard are bare line feeds; each is
// taken as the carriage return and line feed that the parser splits on.
QString WithCarriageReturns(const QString& text) {
    QString out;
    out.reserve(text.size() + text.size() / 16);
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) == u'\n' && (i == 0 || text.at(i - 1) != u'\r')) {
            out += u'\r';
        }
        out += text.at(i);
    }
    return out;
}

// Step 4: the name line's words between blanks, at most four.
QStringList NameWords(const QString& line) {
    QStringList words;
    const QString text = line + u' ';
    qsizetype start = 0;
    for (qsizetype blank = text.indexOf(u' '); blank >= 0 && words.size() < 4;
         blank = text.indexOf(u' ', start)) {
        if (blank > start) {
            words << text.mid(start, blank - start);
        }
        start = blank + 1;
    }
    return words;
}

// Steps 5 and 6.
void SetName(AddressBoxes& boxes, const QStringList& w) {
    const qsizetype n = w.size();
    if (n == 0) {
        return;
    }
    const bool salutation = w[0].endsWith(u'.');
    QString mr;
    QString first;
    QString middle;
    QString last;
    if (n == 4) {
        mr = w[0];
        first = w[1];
        middle = w[2];
        last = w[3];
    } else if (salutation) {
        mr = w[0];
        first = n == 3 ? w[1] : QString();
        last = n >= 2 ? w[n - 1] : QString();
    } else {
        first = n >= 2 ? w[0] : QString();
        middle = n == 3 ? w[1] : QString();
        last = w[n - 1];
    }
    boxes.txtAddressMr = mr;
    boxes.txtAddressFirst = first;
    boxes.txtAddressMiddle = middle;
    boxes.txtAddressLast = last;
}

// Step 7: a code above 96 and below 122, so that "z" does not count.
bool BearsLowerCase(const QString& line) {
    for (const QChar c : line) {
        if (c.unicode() > 96 && c.unicode() < 122) {
            return true;
        }
    }
    return false;
}

// Step 9.
void SetCityLine(AddressBoxes& boxes, const QString& line) {
    const qsizetype blank = line.indexOf(u' ');
    if (blank < 0) {
        return;
    }
    QString city = line.left(blank);
    if (city.endsWith(u',')) {
        city.chop(1);
    }
    if (city.startsWith(u'\n')) {
        city.remove(0, 1);
    }
    boxes.txtAddressCity = city;
    const QString rest = TrimBlanks(line.mid(blank + 1));
    const qsizetype second = rest.indexOf(u' ');
    if (second < 0) {
        return;
    }
    boxes.txtAddressState = rest.left(second);
    boxes.txtAddressZip = TrimBlanks(rest.mid(second + 1));
}

using Box = QString AddressBoxes::*;
// Step 8: the boxes of lines 2 to 5 by the count of lines; a null box is the
// city line, which stands behind the last of them.
const std::array<Box, 5>* LineBoxes(qsizetype count, bool lowerCaseLine2) {
    using B = AddressBoxes;
    static const std::array<Box, 5> three = {&B::txtAddressStreet1, nullptr};
    static const std::array<Box, 5> four = {&B::txtAddressCompany, &B::txtAddressStreet1, nullptr};
    static const std::array<Box, 5> fiveTitled = {&B::txtAddressTitle, &B::txtAddressCompany,
                                                  &B::txtAddressStreet1, nullptr};
    static const std::array<Box, 5> five = {&B::txtAddressCompany, &B::txtAddressStreet1,
                                            &B::txtAddressStreet2, nullptr};
    static const std::array<Box, 5> six = {&B::txtAddressTitle, &B::txtAddressCompany,
                                           &B::txtAddressStreet1, &B::txtAddressStreet2, nullptr};
    switch (count) {
        case 3:
            return &three;
        case 4:
            return &four;
        case 5:
            return lowerCaseLine2 ? &fiveTitled : &five;
        case 6:
            return &six;
        default:
            return nullptr;
    }
}

}  // namespace

std::optional<AddressPanel> ShowBuyerAddress(core::Database& db, const SelectedItem& item) {
    return ShowAddress(db, item, kBuyers);
}

std::optional<AddressPanel> ShowSellerAddress(core::Database& db, const SelectedItem& item) {
    return ShowAddress(db, item, kSellers);
}

SaveOutcome SaveBuyerAddress(core::Database& db, const SelectedItem& item,
                             const AddressBoxes& boxes) {
    return SaveAddress(db, item, boxes, kBuyers);
}

SaveOutcome SaveSellerAddress(core::Database& db, const SelectedItem& item,
                              const AddressBoxes& boxes) {
    return SaveAddress(db, item, boxes, kSellers);
}

QString AddressStateText(const QString& text) {
    return text.toUpper();
}

PastedAddress PasteAddressFromClipboard(const QString& clipboardText, const AddressBoxes& current) {
    PastedAddress pasted;
    pasted.boxes = current;
    // Step 1: lines split on carriage returns; a line feed stays at the head
    // of the line after it.
    const QStringList lines = WithCarriageReturns(clipboardText).split(u'\r');
    // Step 2.
    qsizetype count = lines.size();
    while (count > 0 && lines.at(count - 1).isEmpty()) {
        --count;
    }
    if (count == 0) {
        pasted.failed = true;
        pasted.message =
            QStringLiteral("Error retrieving address from clipboard.  Unrecognized name format.");
        pasted.title = QStringLiteral("Unable to Retrieve Name");
        return pasted;
    }
    SetName(pasted.boxes, NameWords(CleanLine(lines.at(0))));
    const bool lowerCaseLine2 = count >= 2 && BearsLowerCase(CleanLine(lines.at(1)));
    const auto* boxes = LineBoxes(count, lowerCaseLine2);
    if (boxes == nullptr) {
        return pasted;
    }
    for (qsizetype line = 1; line < count; ++line) {
        const Box box = (*boxes)[static_cast<size_t>(line - 1)];
        if (box == nullptr) {
            SetCityLine(pasted.boxes, CleanLine(lines.at(line)));
            break;
        }
        pasted.boxes.*box = CleanLine(lines.at(line));
    }
    return pasted;
}

}  // namespace lw::tasks
