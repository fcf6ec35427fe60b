// SPDX-License-Identifier: GPL-3.0-or-later
// Finding, reading and writing the task manager's selected record.
#include "tasks/selected_item.h"

#include <QStringList>

namespace lw::tasks {

namespace {

// The key clause and its values for the selected record.
QString KeyClause(const SelectedItem& item) {
    if (item.IsDutch()) {
        return QStringLiteral("ItemNumber = ? AND HighBidderName = ?");
    }
    return QStringLiteral("ItemNumber = ?");
}

void BindKey(core::Statement& statement, const SelectedItem& item, int first) {
    statement.Bind(first, item.itemNumber);
    if (item.IsDutch()) {
        statement.Bind(first + 1, item.dutchBidder);
    }
}

// The table's own spelling of a column, or "" when it has none.
QString ColumnName(core::Database& db, const QString& table, const QString& field) {
    auto statement = db.Prepare(
        QStringLiteral("SELECT name FROM pragma_table_info(?1) WHERE name = ?2 COLLATE NOCASE"));
    statement.BindAll(table, field.trimmed());
    return statement.Step() ? statement.Text(0) : QString();
}

QString QuotedName(const QString& name) {
    QString quoted = name;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

}  // namespace

QString SelectedDutchBidder(const QString& listText) {
    const qsizetype open = listText.lastIndexOf(QLatin1Char('('));
    if (open < 0) {
        return {};
    }
    return listText.mid(open + 1).chopped(listText.size() > open + 1 ? 1 : 0);
}

SelectedItem SelectionFromRow(Side side, const QString& rowText, const QString& itemData) {
    SelectedItem item;
    item.side = side;
    item.itemNumber = itemData;
    if (side == Side::Sales && rowText.startsWith(QLatin1Char('D'))) {
        item.dutchBidder = SelectedDutchBidder(rowText);
    }
    return item;
}

QString RecordTable(const SelectedItem& item) {
    if (item.side == Side::Bids) {
        return QStringLiteral("Bids");
    }
    return item.IsDutch() ? QStringLiteral("Dutch") : QStringLiteral("Auctions");
}

std::optional<QVariantMap> ReadSelectedRecord(core::Database& db, const SelectedItem& item) {
    auto statement = db.Prepare(QStringLiteral("SELECT * FROM ") + RecordTable(item) +
                                QStringLiteral(" WHERE ") + KeyClause(item) +
                                QStringLiteral(" LIMIT 1"));
    BindKey(statement, item, 1);
    if (!statement.Step()) {
        return std::nullopt;
    }
    QVariantMap record;
    for (int column = 0; column < statement.ColumnCount(); ++column) {
        record.insert(statement.ColumnName(column), statement.Value(column));
    }
    return record;
}

bool RecordHasField(core::Database& db, const SelectedItem& item, const QString& field) {
    return !ColumnName(db, RecordTable(item), field).isEmpty();
}

int WriteSelectedRecord(core::Database& db, const SelectedItem& item, const QVariantMap& fields) {
    if (fields.isEmpty()) {
        return 0;
    }
    const QString table = RecordTable(item);
    QStringList assignments;
    for (auto it = fields.cbegin(); it != fields.cend(); ++it) {
        const QString column = ColumnName(db, table, it.key());
        if (column.isEmpty()) {
            throw core::StoreError(
                QStringLiteral("The table %1 has no field \"%2\".").arg(table, it.key()), 0);
        }
        assignments << QuotedName(column) + QStringLiteral(" = ?");
    }
    // Plain "?" marks number themselves in order: the fields, then the key.
    const int keyFirst = static_cast<int>(fields.size()) + 1;
    auto statement = db.Prepare(QStringLiteral("UPDATE ") + table + QStringLiteral(" SET ") +
                                assignments.join(QStringLiteral(", ")) +
                                QStringLiteral(" WHERE ") + KeyClause(item));
    int index = 1;
    for (auto it = fields.cbegin(); it != fields.cend(); ++it) {
        statement.Bind(index++, it.value());
    }
    BindKey(statement, item, keyFirst);
    statement.Run();
    return db.Changes();
}

}  // namespace lw::tasks
