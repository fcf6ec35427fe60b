// SPDX-License-Identifier: GPL-3.0-or-later
// The record writer: turns one scanned record into one row of a table. The
// table and the row are chosen only by the protocol's QueryString, a SELECT
// with the macros [1], [A1], ...; the first row it finds is updated, else a
// row is added. Every value is bound; macro values enter the query only as
// quoted string literals. A field the table lacks, or a value the table
// refuses, loses only that field. The writer never commits: the run does.
#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "core/store.h"
#include "update/protocol.h"
#include "update/scanner.h"

namespace lw::update {

// SQL as the rule files write it, made SQLite's (what BuildQuery does apart
// from the macros): Left( and Right( are called by their "$" names, a LIKE
// pattern's "*" and "?" become "%" and "_", a compared literal loses its
// trailing blanks ('123 ' finds "123", as text comparison ignores them), and
// a number written as text and compared with a function's value
// ("DateDiff(...) < '0'") is compared as a number.
QString JetSql(const QString& query);

// Macro replacement: "[i]" becomes item i and "[Ai]" ancillary item i
// (one-based, trimmed of blanks), each macro once, at its first occurrence
// in the query's own text, in the order [1], [2], ..., [A1], [A2], ....
// Unlike the plain text replacement this stands for, a value is put in as a
// quoted SQL string literal with its quotes doubled (inside a literal of the
// query: doubled only), and a value is never searched for later macros, so
// no scanned text can change the statement. The query is made SQLite's
// first, as JetSql does, and a double-quoted string that holds a macro
// becomes a single-quoted one.
QString BuildQuery(const QString& queryString, const QStringList& items,
                   const QStringList& ancillaryItems);
// The same query with each macro that BuildQuery fills made a parameter, so
// one prepared statement serves every record: sql holds a "?" for each, and
// sources says from where each takes its value (ancillary list or not, and
// the zero-based index). A macro inside a literal splits it: 'a[1]b' becomes
// ('a' || ? || 'b'). Bound with the trimmed values, it finds the rows that
// BuildQuery's text finds.
struct ParameterQuery {
    QString sql;
    std::vector<std::pair<bool, qsizetype>> sources;
};
ParameterQuery MakeParameterQuery(const QString& queryString, qsizetype itemCount,
                                  qsizetype ancillaryCount);

// QueryString of the main record with its macros replaced.
QString BuildQuery(const ProtocolRecord& protocol, const ScanLists& lists);
// The same for a given text (an ancillary QueryString or DeleteQuery).
QString BuildAncillaryQuery(const QString& query, const ScanLists& lists);

// The EndDate and StartDate conversions ("mm/dd/yy, hh:mm:ss PST", "mm/dd/yy").
QString MainEndDate(const QString& value);
QString MainStartDate(const QString& value);
QString AncillaryEndDate(const QString& value);
QString AncillaryStartDate(const QString& value);

class RecordWriter {
public:
    // userName: the value of UserName in every row written.
    RecordWriter(core::Database& db, QString userName);

    enum class Outcome {
        Written,
        LeavePage,  // the site time could not be read: nothing written, the page ends
    };
    // Writes a run protocol's record and clears the four lists. Throws
    // QueryError when the QueryString cannot be used, StoreError when the
    // database fails.
    Outcome WriteMain(const ProtocolRecord& protocol, ScanLists& lists);
    // Writes an ancillary record (lists.ancillaryItems with the main record's
    // items beside it). Throws as WriteMain.
    void WriteAncillary(const ProtocolRecord& protocol, const ScanLists& lists);
    // DeleteBeforeWrite: deletes every row that the DeleteQuery finds. The
    // query must choose its rows by the record's values (a macro that finds
    // nothing when given a value no record holds); one that would choose
    // rows whatever the record says is refused with a QueryError.
    void DeleteFoundRows(const ProtocolRecord& protocol, const ScanLists& lists);

    // The rows a built query finds: the table they belong to and their rowids
    // in the query's order, at most `limit` (0: all). key names the rule key
    // the query came from, for the message of a QueryError.
    struct FoundRows {
        QString table;
        std::vector<qint64> rowids;
    };
    FoundRows Find(const QString& sql, const QString& protocolName, const QString& key, int limit);
    // The rows the query finds with the macros of the record's lists: the
    // same rows as Find over BuildQuery's text, from a statement prepared
    // once per query and bound per record.
    FoundRows FindFor(const QString& query, const ScanLists& lists, const QString& protocolName,
                      const QString& key, int limit);

    // True once per protocol: whether its QueryError is still to be told.
    bool FirstErrorOf(const QString& protocolName);

private:
    // What a built query reads: the table written and the same query giving
    // that table's rowids.
    struct Target {
        QString table;
        QString rowSql;
    };
    Target Analyse(const QString& sql, const QString& protocolName, const QString& key);
    // A query of the rule files as one statement with parameters; literal:
    // the parameters could not stand where its macros are, so its values go
    // into the text as literals, record by record.
    struct Plan {
        ParameterQuery query;
        QString table;
        std::unique_ptr<core::Statement> rows;
        bool literal = false;
    };
    Plan& PlanFor(const QString& query, const ScanLists& lists, const QString& protocolName,
                  const QString& key);

    // The fields of a record's writes as a table takes them: for each write
    // the column it goes to, and the columns in the order first written. A
    // protocol writes the same fields record after record, so this is worked
    // out once, with the statements over its columns.
    struct Shape {
        std::vector<QString> fields;  // of the writes, in their order
        std::vector<int> slot;        // per write: its column; -1: the table lacks the field
        std::vector<QString> columns;
        std::vector<bool> numeric;  // per column: it holds numbers and flags
        // The insert, compare and update over some of the columns, by kind
        // and which columns; the writer's statements.
        std::map<std::pair<char16_t, std::vector<bool>>, core::Statement*> statements;
    };
    struct TableColumns {
        QString table;                    // as the schema spells it
        QHash<QString, QString> byLower;  // writable columns: lower-cased name -> name
        QHash<QString, QString> byField;  // a field as the rules spell it -> column, "" none
        QSet<QString> numeric;            // columns of number and flag values
        std::vector<std::shared_ptr<Shape>> shapes;
    };
    using Writes = std::vector<std::pair<QString, QString>>;

    TableColumns& ColumnsOf(const QString& table);
    Shape& ShapeOf(TableColumns& columns, const Writes& writes);
    // The statement of kind over the columns of shape that which marks;
    // makeSql gives its text from their names when it is first prepared.
    template <typename MakeSql>
    core::Statement& ShapeStatement(Shape& shape, const QString& table, char16_t kind,
                                    const std::vector<bool>& which, const MakeSql& makeSql);
    void Apply(const QString& table, const std::vector<qint64>& found, const Writes& writes);
    // A statement of a text the writer runs again and again (the insert and
    // update of a table's fields), prepared once per writer and reset for
    // each use: preparing a statement over a table with generated columns
    // costs far more than running it.
    core::Statement& Reused(const QString& sql);
    // The same under a key of its own; makeSql gives the text when the
    // statement is first prepared.
    template <typename MakeSql>
    core::Statement& Reused(const QString& key, const MakeSql& makeSql);

    core::Database& m_db;
    QString m_userName;
    QHash<QString, TableColumns> m_tables;  // by the table's name as the query spells it
    QSet<QString> m_told;
    // Queries found to be one reading SELECT, by their text with every string
    // literal emptied: macro values enter only as literals, so a protocol's
    // query is checked once, not once per record.
    QSet<QString> m_checkedShapes;
    QHash<QString, QString> m_tableTypes;  // lower-cased name -> "table", "view" or ""
    std::map<QString, std::unique_ptr<core::Statement>> m_statements;
    std::map<QString, Plan> m_plans;  // by query text and list lengths
};

}  // namespace lw::update
