// SPDX-License-Identifier: GPL-3.0-or-later
// Finding, reading and writing the task manager's selected record.
#include "tasks/selected_item.h"

#include <QStringList>

namespace lw::tasks {

namespace {

// The key clause of the selected record, its parameters numbered from first.
QString KeyClause(const SelectedItem& item, int first) {
    QString clause = QStringLiteral("ItemNumber = ?%1").arg(first);
    if (item.IsDutch()) {
        clause += QStringLiteral(" AND HighBidderName = ?%1").arg(++first);
    }
    if (!item.userName.isEmpty()) {
        clause += QStringLiteral(" AND UserName = ?%1").arg(++first);
    }
    return clause;
}

void BindKey(core::Statement& statement, const SelectedItem& item, int first) {
    statement.Bind(first, item.itemNumber);
    if (item.IsDutch()) {
        statement.Bind(++first, item.dutchBidder);
    }
    if (!item.userName.isEmpty()) {
        statement.Bind(++first, item.userName);
    }
}

// The table's own spelling of a column, or "" when it has none.
QString ColumnName(core::Database& db, const QString& table, const QString& field) {
    auto statement = db.Prepare(
        QStringLiteral("SELECT name FROM pragma_table_info(?1) WHERE name = ?2 COLLATE NOCASE"));
    statement.BindAll(table, field.trimmed());
    return statement.Step() ? statement.Text(0) : QString();
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

core::Statement PrepareSelectedRecord(core::Database& db, const SelectedItem& item) {
    auto statement =
        db.Prepare(QStringLiteral("SELECT * FROM ") + RecordTable(item) +
                   QStringLiteral(" WHERE ") + KeyClause(item, 1) + QStringLiteral(" LIMIT 1"));
    BindKey(statement, item, 1);
    return statement;
}

std::optional<QVariantMap> ReadSelectedRecord(core::Database& db, const SelectedItem& item) {
    auto statement = PrepareSelectedRecord(db, item);
    if (!statement.Step()) {
        return std::nullopt;
    }
    return RecordOf(statement);
}

QVariantMap RecordOf(const core::Statement& statement) {
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
        assignments << core::QuoteIdentifier(column) + QStringLiteral(" = ?");
    }
    const int keyFirst = static_cast<int>(fields.size()) + 1;
    auto statement = db.Prepare(QStringLiteral("UPDATE ") + table + QStringLiteral(" SET ") +
                                assignments.join(QStringLiteral(", ")) + QStringLiteral(" WHERE ") +
                                KeyClause(item, keyFirst));
    int index = 1;
    for (auto it = fields.cbegin(); it != fields.cend(); ++it) {
        statement.Bind(index++, it.value());
    }
    BindKey(statement, item, keyFirst);
    statement.Run();
    return db.Changes();
}

}  // namespace lw::tasks
