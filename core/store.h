// SPDX-License-Identifier: GPL-3.0-or-later
// The program's one database: a thin owner of an SQLite connection and its
// prepared statements. It binds every value (no value ever enters SQL text),
// trims trailing blanks from the text it writes and compares with, and reads
// columns by name without regard to case. It never keeps a statement beyond
// the operation that made it, and it never decides what a row means.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace lw::core {

// A failed store call. The message names the file or the statement at fault.
class StoreError : public std::runtime_error {
public:
    StoreError(const QString& message, int code);
    QString Message() const { return m_message; }
    int Code() const { return m_code; }

private:
    QString m_message;
    int m_code;
};

// Text as the store writes it: trailing blanks removed, so that "123 " and
// "123" are the same key.
QString StoreText(const QString& text);

// A name as an SQL identifier: in double quotes, quotes inside doubled. Only
// for names that were first found in the database or a rule file (a table, a
// column, a view): values are bound, never quoted into the text.
QString QuoteIdentifier(const QString& name);

// A flag as every reader of the store takes it: a non-zero number, or the
// words True and Yes (any case); Null and any other text are False.
bool FlagValue(const QVariant& value);

// Whether a column of this declared type holds numbers (and flags, which
// are numbers 1/0): SQLite's INTEGER, REAL and NUMERIC affinities.
bool HasNumericAffinity(const QString& declaredType);

// A plain decimal number ("12", "-0.5", "1e3"), blanks around it allowed.
bool IsPlainNumber(const QString& text);

// The text to store into a number or flag column for a text as scraped or
// typed: "True" and "Yes" are 1, "False" and "No" are 0 (any case), a number
// stands as it is, a Null stays Null. Anything else is a value the column
// cannot take: nullopt, and the field is not written.
std::optional<QString> NumberColumnText(const QString& text);

class Statement;

class Database {
public:
    enum class Mode { ReadWrite, ReadOnly, Create };

    // Opens the file; Create makes it when missing. Throws StoreError naming
    // the file when it cannot be opened. The program's SQL functions are
    // registered on every connection. Opening reads the file and writes
    // nothing to it, not even the journal mode.
    static Database Open(const QString& path, Mode mode = Mode::ReadWrite);

    Database(Database&& other) noexcept;
    Database& operator=(Database&& other) noexcept;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    // Runs SQL that carries no values (schema, pragmas); may hold several statements.
    void Exec(const QString& sql);
    Statement Prepare(const QString& sql);
    // As Prepare, but refuses SQL that holds more than one statement.
    Statement PrepareSingle(const QString& sql);

    qint64 LastInsertId() const;
    int Changes() const;
    QString Path() const { return m_path; }
    bool ReadOnly() const { return m_readOnly; }
    sqlite3* Handle() const { return m_db; }

    // One integer from a query such as "PRAGMA user_version" or a COUNT.
    qint64 ScalarInt(const QString& sql);

private:
    Database(sqlite3* db, QString path, bool readOnly);
    sqlite3* m_db = nullptr;
    QString m_path;
    bool m_readOnly = false;
};

// Rolls back unless Commit() was called; an update run commits page by page.
class Transaction {
public:
    explicit Transaction(Database& db);
    ~Transaction();
    void Commit();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

private:
    Database& m_db;
    bool m_open = true;
};

// For its lifetime, commits of a database in WAL mode do not wait for the
// disk. A commit without a flush still leaves the file whole; a power cut can
// lose only the last commits, in order, and the first commit after the scope
// flushes again, and with it every commit before it. For long work of many
// small commits (an update's pages, a queue of posts). A store in another
// mode, or one that flushes less already, is left as it is.
class CommitsWithoutFlush {
public:
    explicit CommitsWithoutFlush(Database& db);
    ~CommitsWithoutFlush();
    CommitsWithoutFlush(const CommitsWithoutFlush&) = delete;
    CommitsWithoutFlush& operator=(const CommitsWithoutFlush&) = delete;

private:
    Database& m_db;
    int m_kept = -1;  // the setting to put back; -1: none
};

// For its lifetime, the commits of a database in WAL mode stay in the log
// instead of being copied into the database file whenever the log has grown
// past SQLite's mark of a thousand pages; one checkpoint at the end copies
// them, each page once however many commits wrote it, and flushes the file.
// For a run of small commits that each rewrite the same few pages (a queue
// of posts). The log grows meanwhile, up to kDeferredCheckpointPages, where a
// checkpoint is taken after all. A store in another mode is left as it is.
class DeferredCheckpoint {
public:
    static constexpr int kDeferredCheckpointPages = 10000;

    explicit DeferredCheckpoint(Database& db);
    ~DeferredCheckpoint();
    DeferredCheckpoint(const DeferredCheckpoint&) = delete;
    DeferredCheckpoint& operator=(const DeferredCheckpoint&) = delete;

private:
    Database& m_db;
    bool m_wal = false;
    int m_kept = 0;  // the mark to put back; 0: none
};

// The writes of a long run of small steps (an update's pages), committed a
// batch at a time: a commit rewrites every page of the file that its writes
// touched, and steps that come a millisecond apart would rewrite the same
// index pages again and again. Begin opens a transaction when none is open;
// CommitIfDue commits it once `every` has passed since it began, Commit at
// once. Each commit leaves the file whole, and a crash loses at most the
// steps of the last batch. The destructor commits what is still open. Where
// commits do not wait for the disk (CommitsWithoutFlush), each one sets the
// log's writes going to it, so that the flush at the end of the work finds
// little left to wait for.
class BatchedCommits {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    // clock: the time, for tests; none: the steady clock.
    BatchedCommits(Database& db, std::chrono::milliseconds every, Clock clock = {});
    ~BatchedCommits();
    BatchedCommits(const BatchedCommits&) = delete;
    BatchedCommits& operator=(const BatchedCommits&) = delete;

    void Begin();
    // 0 when committed, when nothing was open and when not yet due; else the
    // store's error code (the batch is rolled back).
    int CommitIfDue();
    int Commit();

private:
    // Sets the writes of the log going to the disk without waiting for them.
    void StartWriteback();

    static constexpr int kLogNotOpened = -2;
    static constexpr int kLogNone = -1;

    Database& m_db;
    int m_log = kLogNotOpened;  // the log, to start its writes; kLogNone: none
    const std::chrono::milliseconds m_every;
    Clock m_clock;
    std::optional<Transaction> m_open;
    std::chrono::steady_clock::time_point m_begun;
};

class Statement {
public:
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&& other) noexcept;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement();

    // 1-based parameter index. A null QVariant binds NULL; bool binds 1/0;
    // text is trimmed of trailing blanks.
    Statement& Bind(int index, const QVariant& value);
    Statement& Bind(int index, const QString& value);
    Statement& Bind(int index, double value);
    Statement& Bind(int index, qint64 value);
    Statement& Bind(int index, int value) { return Bind(index, static_cast<qint64>(value)); }
    Statement& Bind(int index, bool value) { return Bind(index, static_cast<qint64>(value)); }
    Statement& Bind(int index, const char* value) { return Bind(index, QString::fromUtf8(value)); }
    Statement& BindNull(int index);
    // Named parameter (":name", "@name" or "$name").
    Statement& Bind(const char* name, const QVariant& value);
    int ParameterCount() const;

    // Binds every argument in order from parameter 1.
    template <class... Args>
    Statement& BindAll(const Args&... args) {
        int index = 1;
        (Bind(index++, args), ...);
        return *this;
    }

    // Advances; true while a row is ready.
    bool Step();
    // Steps to the end (for statements that write).
    void Run();
    // Ready for another run with new bindings; the old bindings are cleared.
    void Reset();

    int ColumnCount() const;
    QString ColumnName(int column) const;
    // Case-blind; -1 when the statement has no such column.
    int ColumnIndex(const QString& name) const;
    bool HasColumn(const QString& name) const { return ColumnIndex(name) >= 0; }

    QVariant Value(int column) const;
    QVariant Value(const QString& name) const;
    bool IsNull(int column) const;
    bool IsNull(const QString& name) const;
    // Null reads as "".
    QString Text(int column) const;
    QString Text(const QString& name) const;
    qint64 Int(const QString& name) const;
    double Real(const QString& name) const;
    // A flag column: stored 1/0; also accepts "True"/"False" texts.
    bool Flag(const QString& name) const;

    QString Sql() const;
    // True when the statement cannot change the database.
    bool IsReadOnly() const;

private:
    friend class Database;
    Statement(sqlite3_stmt* stmt, sqlite3* db);
    int RequireColumn(const QString& name) const;
    [[noreturn]] void Fail(int rc, const char* what) const;

    sqlite3_stmt* m_stmt = nullptr;
    sqlite3* m_db = nullptr;
    std::vector<QByteArray> m_buffers;          // keeps bound text alive without copies
    mutable std::vector<QString> m_lowerNames;  // filled on first lookup by name
};

}  // namespace lw::core
