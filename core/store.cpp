// SPDX-License-Identifier: GPL-3.0-or-later
// The SQLite wrapper. Text goes in as UTF-8 without a copy by SQLite (the
// statement keeps the bytes alive until the next bind or reset), trailing
// blanks trimmed; column look-up by name is case-blind, as every reader of
// the tables expects.
#include "core/store.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>
#include <QFile>

#include "core/sql_functions.h"

namespace lw::core {

namespace {

QString ErrorText(sqlite3* db, int rc) {
    if (db != nullptr) {
        return QString::fromUtf8(sqlite3_errmsg(db));
    }
    return QString::fromUtf8(sqlite3_errstr(rc));
}

}  // namespace

StoreError::StoreError(const QString& message, int code)
    : std::runtime_error(message.toStdString()), m_message(message), m_code(code) {}

QString QuoteIdentifier(const QString& name) {
    return u'"' + QString(name).replace(u'"', QStringLiteral("\"\"")) + u'"';
}

bool FlagValue(const QVariant& value) {
    if (value.isNull()) {
        return false;
    }
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString().trimmed();
        return text.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0 ||
               text.compare(QLatin1String("Yes"), Qt::CaseInsensitive) == 0 || text.toDouble() != 0;
    }
    return value.toDouble() != 0;
}

QString StoreText(const QString& text) {
    qsizetype end = text.size();
    while (end > 0 && text.at(end - 1) == u' ') {
        --end;
    }
    return end == text.size() ? text : text.left(end);
}

bool HasNumericAffinity(const QString& declaredType) {
    const QString type = declaredType.toUpper();
    if (type.contains(QLatin1String("INT"))) {
        return true;
    }
    if (type.isEmpty() || type.contains(QLatin1String("CHAR")) ||
        type.contains(QLatin1String("CLOB")) || type.contains(QLatin1String("TEXT")) ||
        type.contains(QLatin1String("BLOB"))) {
        return false;
    }
    return true;  // REAL, FLOAT, DOUBLE, NUMERIC, BOOLEAN, DATE, ...
}

bool IsPlainNumber(const QString& text) {
    // Blanks, a sign, digits with one point and at least one digit, an
    // exponent with digits of its own, blanks: read by hand, as every value
    // an update writes to a number column passes here.
    const auto isBlank = [](char16_t c) {
        return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\v' || c == u'\f';
    };
    const auto isDigit = [](char16_t c) { return c >= u'0' && c <= u'9'; };
    const qsizetype n = text.size();
    qsizetype i = 0;
    const auto at = [&text, n](qsizetype k) { return k < n ? text.at(k).unicode() : u'\0'; };
    while (i < n && isBlank(at(i))) {
        ++i;
    }
    if (at(i) == u'+' || at(i) == u'-') {
        ++i;
    }
    qsizetype digits = 0;
    for (; isDigit(at(i)); ++i) {
        ++digits;
    }
    if (at(i) == u'.') {
        for (++i; isDigit(at(i)); ++i) {
            ++digits;
        }
    }
    if (digits == 0) {
        return false;
    }
    if (at(i) == u'e' || at(i) == u'E') {
        ++i;
        if (at(i) == u'+' || at(i) == u'-') {
            ++i;
        }
        if (!isDigit(at(i))) {
            return false;
        }
        while (isDigit(at(i))) {
            ++i;
        }
    }
    while (i < n && isBlank(at(i))) {
        ++i;
    }
    return i == n;
}

std::optional<QString> NumberColumnText(const QString& text) {
    if (text.isNull()) {
        return text;
    }
    const QString value = text.trimmed();
    for (const char* yes : {"True", "Yes"}) {
        if (value.compare(QLatin1String(yes), Qt::CaseInsensitive) == 0) {
            return QStringLiteral("1");
        }
    }
    for (const char* no : {"False", "No"}) {
        if (value.compare(QLatin1String(no), Qt::CaseInsensitive) == 0) {
            return QStringLiteral("0");
        }
    }
    if (IsPlainNumber(value)) {
        return value;
    }
    return std::nullopt;
}

// ---------------------------------------------------------------- Database

Database::Database(sqlite3* db, QString path, bool readOnly)
    : m_db(db), m_path(std::move(path)), m_readOnly(readOnly) {}

Database::Database(Database&& other) noexcept
    : m_db(std::exchange(other.m_db, nullptr)),
      m_path(std::move(other.m_path)),
      m_readOnly(other.m_readOnly) {}

Database& Database::operator=(Database&& other) noexcept {
    if (this != &other) {
        if (m_db != nullptr) {
            sqlite3_close_v2(m_db);
        }
        m_db = std::exchange(other.m_db, nullptr);
        m_path = std::move(other.m_path);
        m_readOnly = other.m_readOnly;
    }
    return *this;
}

Database::~Database() {
    if (m_db != nullptr) {
        sqlite3_close_v2(m_db);
    }
}

Database Database::Open(const QString& path, Mode mode) {
    int flags = SQLITE_OPEN_NOMUTEX;
    switch (mode) {
        case Mode::ReadOnly:
            flags |= SQLITE_OPEN_READONLY;
            break;
        case Mode::ReadWrite:
            flags |= SQLITE_OPEN_READWRITE;
            break;
        case Mode::Create:
            flags |= SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
            break;
    }
    if (mode != Mode::Create && path != QLatin1String(":memory:") && !QFile::exists(path)) {
        throw StoreError(QStringLiteral("The database %1 does not exist.").arg(path),
                         SQLITE_CANTOPEN);
    }
    // SQLite counts every allocation it makes under a global lock unless told
    // not to, before its first use; the program never reads the counts, and
    // each row an update writes makes dozens of allocations.
    static const bool unCounted = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) == SQLITE_OK;
    static_cast<void>(unCounted);
    sqlite3* db = nullptr;
    const QByteArray name =
        path == QLatin1String(":memory:") ? QByteArray(":memory:") : QFile::encodeName(path);
    const int rc = sqlite3_open_v2(name.constData(), &db, flags, nullptr);
    if (rc != SQLITE_OK) {
        const QString why = ErrorText(db, rc);
        sqlite3_close_v2(db);
        throw StoreError(QStringLiteral("Cannot open the database %1: %2").arg(path, why), rc);
    }
    sqlite3_extended_result_codes(db, 1);
    sqlite3_busy_timeout(db, 5000);
    Database database(db, path, mode == Mode::ReadOnly);
    RegisterSqlFunctions(db);
    try {
        // Reading the schema is the first thing that touches the file: a file
        // that is no database at all fails here, with its name in the message.
        // Nothing here writes to the file: whose file it is, is yet to be
        // seen (the journal mode is the caller's to set).
        database.Exec(QStringLiteral("PRAGMA foreign_keys = OFF"));
        database.ScalarInt(QStringLiteral("PRAGMA schema_version"));
    } catch (const StoreError& error) {
        throw StoreError(QStringLiteral("The database %1 is damaged or is not a database: %2")
                             .arg(path, error.Message()),
                         error.Code());
    }
    return database;
}

void Database::Exec(const QString& sql) {
    char* message = nullptr;
    const int rc = sqlite3_exec(m_db, sql.toUtf8().constData(), nullptr, nullptr, &message);
    if (rc != SQLITE_OK) {
        const QString why = message != nullptr ? QString::fromUtf8(message) : ErrorText(m_db, rc);
        sqlite3_free(message);
        throw StoreError(why, rc);
    }
}

Statement Database::Prepare(const QString& sql) {
    sqlite3_stmt* stmt = nullptr;
    const QByteArray text = sql.toUtf8();
    const char* tail = nullptr;
    const int rc = sqlite3_prepare_v3(m_db, text.constData(), static_cast<int>(text.size()),
                                      SQLITE_PREPARE_PERSISTENT, &stmt, &tail);
    if (rc != SQLITE_OK) {
        throw StoreError(ErrorText(m_db, rc) + QStringLiteral(" in: ") + sql, rc);
    }
    if (stmt == nullptr) {
        throw StoreError(QStringLiteral("No statement in: ") + sql, SQLITE_MISUSE);
    }
    return Statement(stmt, m_db);
}

Statement Database::PrepareSingle(const QString& sql) {
    const QByteArray text = sql.toUtf8();
    sqlite3_stmt* stmt = nullptr;
    const char* tail = nullptr;
    const int rc =
        sqlite3_prepare_v3(m_db, text.constData(), static_cast<int>(text.size()), 0, &stmt, &tail);
    if (rc != SQLITE_OK) {
        throw StoreError(ErrorText(m_db, rc) + QStringLiteral(" in: ") + sql, rc);
    }
    Statement statement(stmt, m_db);
    if (stmt == nullptr) {
        throw StoreError(QStringLiteral("No statement in: ") + sql, SQLITE_MISUSE);
    }
    // What follows the first statement may only be blanks and semicolons.
    for (const char* p = tail; p != nullptr && *p != 0; ++p) {
        if (*p != ';' && *p != ' ' && *p != '\t' && *p != '\r' && *p != '\n') {
            throw StoreError(QStringLiteral("Only one statement is allowed in: ") + sql,
                             SQLITE_MISUSE);
        }
    }
    return statement;
}

qint64 Database::LastInsertId() const {
    return sqlite3_last_insert_rowid(m_db);
}

int Database::Changes() const {
    return sqlite3_changes(m_db);
}

qint64 Database::ScalarInt(const QString& sql) {
    Statement statement = Prepare(sql);
    if (!statement.Step()) {
        return 0;
    }
    return statement.Value(0).toLongLong();
}

// ------------------------------------------------------------- Transaction

namespace {

bool WalMode(Database& db) {
    Statement mode = db.Prepare(QStringLiteral("PRAGMA journal_mode"));
    return mode.Step() && mode.Text(0).compare(u"wal", Qt::CaseInsensitive) == 0;
}

}  // namespace

CommitsWithoutFlush::CommitsWithoutFlush(Database& db) : m_db(db) {
    try {
        Statement sync = m_db.Prepare(QStringLiteral("PRAGMA synchronous"));
        if (WalMode(m_db) && sync.Step() && sync.Value(0).toInt() > 1) {
            m_kept = sync.Value(0).toInt();
            m_db.Exec(QStringLiteral("PRAGMA synchronous = NORMAL"));
        }
    } catch (const StoreError&) {
        m_kept = -1;  // the work goes on as the store is set
    }
}

CommitsWithoutFlush::~CommitsWithoutFlush() {
    if (m_kept > 1) {
        try {
            m_db.Exec(QStringLiteral("PRAGMA synchronous = %1").arg(m_kept));
        } catch (const StoreError&) {
            // The next opening of the store sets it again.
        }
    }
}

DeferredCheckpoint::DeferredCheckpoint(Database& db) : m_db(db) {
    try {
        m_wal = WalMode(m_db);
        const qint64 mark = m_wal ? m_db.ScalarInt(QStringLiteral("PRAGMA wal_autocheckpoint")) : 0;
        if (mark > 0 && mark < kDeferredCheckpointPages) {
            m_db.Exec(
                QStringLiteral("PRAGMA wal_autocheckpoint = %1").arg(kDeferredCheckpointPages));
            m_kept = static_cast<int>(mark);
        }
    } catch (const StoreError&) {
        // The commits checkpoint as the store is set.
    }
}

DeferredCheckpoint::~DeferredCheckpoint() {
    try {
        if (m_kept > 0) {
            m_db.Exec(QStringLiteral("PRAGMA wal_autocheckpoint = %1").arg(m_kept));
        }
        if (m_wal) {
            // What a reader still holds stays in the log for the next one.
            m_db.Exec(QStringLiteral("PRAGMA wal_checkpoint(PASSIVE)"));
        }
    } catch (const StoreError&) {
        // The next commit past the mark checkpoints.
    }
}

Transaction::Transaction(Database& db) : m_db(db) {
    m_db.Exec(QStringLiteral("BEGIN"));
}

Transaction::~Transaction() {
    if (m_open) {
        try {
            m_db.Exec(QStringLiteral("ROLLBACK"));
        } catch (const StoreError&) {
            // A rollback that fails leaves SQLite's own automatic rollback.
        }
    }
}

void Transaction::Commit() {
    m_db.Exec(QStringLiteral("COMMIT"));
    m_open = false;
}

BatchedCommits::BatchedCommits(Database& db, std::chrono::milliseconds every, Clock clock)
    : m_db(db),
      m_every(every),
      m_clock(clock ? std::move(clock) : Clock([] { return std::chrono::steady_clock::now(); })) {}

BatchedCommits::~BatchedCommits() {
    Commit();
    if (m_log >= 0) {
        close(m_log);
    }
}

void BatchedCommits::StartWriteback() {
#ifdef __linux__
    if (m_log == kLogNotOpened) {
        m_log = kLogNone;
        sqlite3* handle = m_db.Handle();
        const char* name = handle ? sqlite3_db_filename(handle, "main") : nullptr;
        // Only a store in WAL mode has a log to write: in any other mode
        // each commit has flushed already.
        if (name != nullptr && *name != '\0' && WalMode(m_db)) {
            m_log = open(sqlite3_filename_wal(name), O_RDONLY | O_CLOEXEC);
        }
    }
    if (m_log >= 0) {
        sync_file_range(m_log, 0, 0, SYNC_FILE_RANGE_WRITE);
    }
#endif
}

void BatchedCommits::Begin() {
    if (!m_open) {
        m_open.emplace(m_db);
        m_begun = m_clock();
    }
}

int BatchedCommits::CommitIfDue() {
    return m_open && m_clock() - m_begun >= m_every ? Commit() : 0;
}

int BatchedCommits::Commit() {
    if (!m_open) {
        return 0;
    }
    int code = 0;
    try {
        m_open->Commit();
    } catch (const StoreError& e) {
        code = e.Code() != 0 ? e.Code() : SQLITE_ERROR;
    }
    m_open.reset();  // rolls back what a failed commit left
    if (code == 0) {
        StartWriteback();
    }
    return code;
}

// --------------------------------------------------------------- Statement

Statement::Statement(sqlite3_stmt* stmt, sqlite3* db)
    : m_stmt(stmt), m_db(db), m_buffers(static_cast<size_t>(sqlite3_bind_parameter_count(stmt))) {}

Statement::Statement(Statement&& other) noexcept
    : m_stmt(std::exchange(other.m_stmt, nullptr)),
      m_db(other.m_db),
      m_buffers(std::move(other.m_buffers)),
      m_lowerNames(std::move(other.m_lowerNames)) {}

Statement& Statement::operator=(Statement&& other) noexcept {
    if (this != &other) {
        if (m_stmt != nullptr) {
            sqlite3_finalize(m_stmt);
        }
        m_stmt = std::exchange(other.m_stmt, nullptr);
        m_db = other.m_db;
        m_buffers = std::move(other.m_buffers);
        m_lowerNames = std::move(other.m_lowerNames);
    }
    return *this;
}

Statement::~Statement() {
    if (m_stmt != nullptr) {
        sqlite3_finalize(m_stmt);
    }
}

void Statement::Fail(int rc, const char* what) const {
    throw StoreError(ErrorText(m_db, rc) + QStringLiteral(" (") + QString::fromUtf8(what) +
                         QStringLiteral(") in: ") + Sql(),
                     rc);
}

QString Statement::Sql() const {
    return m_stmt != nullptr ? QString::fromUtf8(sqlite3_sql(m_stmt)) : QString();
}

bool Statement::IsReadOnly() const {
    return sqlite3_stmt_readonly(m_stmt) != 0;
}

int Statement::ParameterCount() const {
    return sqlite3_bind_parameter_count(m_stmt);
}

Statement& Statement::Bind(int index, const QString& value) {
    if (value.isNull()) {
        return BindNull(index);
    }
    if (index < 1 || index > static_cast<int>(m_buffers.size())) {
        Fail(SQLITE_RANGE, "bind");
    }
    QByteArray& buffer = m_buffers[static_cast<size_t>(index - 1)];
    qsizetype end = value.size();
    while (end > 0 && value.at(end - 1) == u' ') {
        --end;
    }
    // Most values are ASCII: copied into the parameter's own buffer, which
    // keeps its room from one row to the next.
    const QStringView text = QStringView(value).left(end);
    buffer.resize(end);
    char* out = buffer.data();
    qsizetype i = 0;
    for (; i < end && text[i].unicode() < 0x80; ++i) {
        out[i] = static_cast<char>(text[i].unicode());
    }
    if (i < end) {
        buffer = text.toUtf8();
    }
    const int rc = sqlite3_bind_text(m_stmt, index, buffer.constData(),
                                     static_cast<int>(buffer.size()), SQLITE_STATIC);
    if (rc != SQLITE_OK) {
        Fail(rc, "bind");
    }
    return *this;
}

Statement& Statement::Bind(int index, double value) {
    const int rc = sqlite3_bind_double(m_stmt, index, value);
    if (rc != SQLITE_OK) {
        Fail(rc, "bind");
    }
    return *this;
}

Statement& Statement::Bind(int index, qint64 value) {
    const int rc = sqlite3_bind_int64(m_stmt, index, value);
    if (rc != SQLITE_OK) {
        Fail(rc, "bind");
    }
    return *this;
}

Statement& Statement::BindNull(int index) {
    const int rc = sqlite3_bind_null(m_stmt, index);
    if (rc != SQLITE_OK) {
        Fail(rc, "bind");
    }
    return *this;
}

Statement& Statement::Bind(int index, const QVariant& value) {
    if (value.isNull() || !value.isValid()) {
        return BindNull(index);
    }
    switch (value.typeId()) {
        case QMetaType::Bool:
            return Bind(index, static_cast<qint64>(value.toBool() ? 1 : 0));
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::LongLong:
        case QMetaType::Short:
        case QMetaType::UShort:
            return Bind(index, value.toLongLong());
        case QMetaType::ULongLong:
        case QMetaType::ULong:
            return Bind(index, static_cast<qint64>(value.toULongLong()));
        case QMetaType::Double:
        case QMetaType::Float:
            return Bind(index, value.toDouble());
        case QMetaType::QByteArray: {
            const QByteArray bytes = value.toByteArray();
            if (index < 1 || index > static_cast<int>(m_buffers.size())) {
                Fail(SQLITE_RANGE, "bind");
            }
            m_buffers[static_cast<size_t>(index - 1)] = bytes;
            const int rc =
                sqlite3_bind_blob(m_stmt, index, m_buffers[size_t(index - 1)].constData(),
                                  static_cast<int>(bytes.size()), SQLITE_STATIC);
            if (rc != SQLITE_OK) {
                Fail(rc, "bind");
            }
            return *this;
        }
        default:
            return Bind(index, value.toString());
    }
}

Statement& Statement::Bind(const char* name, const QVariant& value) {
    const int index = sqlite3_bind_parameter_index(m_stmt, name);
    if (index == 0) {
        throw StoreError(
            QStringLiteral("No parameter %1 in: %2").arg(QString::fromUtf8(name), Sql()),
            SQLITE_RANGE);
    }
    return Bind(index, value);
}

bool Statement::Step() {
    const int rc = sqlite3_step(m_stmt);
    if (rc == SQLITE_ROW) {
        return true;
    }
    if (rc == SQLITE_DONE) {
        return false;
    }
    Fail(rc, "step");
}

void Statement::Run() {
    while (Step()) {
    }
}

void Statement::Reset() {
    sqlite3_reset(m_stmt);
    sqlite3_clear_bindings(m_stmt);
}

int Statement::ColumnCount() const {
    return sqlite3_column_count(m_stmt);
}

QString Statement::ColumnName(int column) const {
    return QString::fromUtf8(sqlite3_column_name(m_stmt, column));
}

int Statement::ColumnIndex(const QString& name) const {
    if (m_lowerNames.empty()) {
        const int count = ColumnCount();
        m_lowerNames.reserve(static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) {
            m_lowerNames.push_back(ColumnName(i).toLower());
        }
    }
    // A qualified name ("Auctions.ItemNumber") also finds its bare column, as
    // the saved queries expose their table's columns under the table's name.
    const QString wanted = name.toLower();
    for (size_t i = 0; i < m_lowerNames.size(); ++i) {
        if (m_lowerNames[i] == wanted) {
            return static_cast<int>(i);
        }
    }
    const qsizetype dot = wanted.lastIndexOf(u'.');
    if (dot >= 0) {
        const QString bare = wanted.mid(dot + 1);
        for (size_t i = 0; i < m_lowerNames.size(); ++i) {
            if (m_lowerNames[i] == bare) {
                return static_cast<int>(i);
            }
        }
    }
    return -1;
}

int Statement::RequireColumn(const QString& name) const {
    const int index = ColumnIndex(name);
    if (index < 0) {
        throw StoreError(QStringLiteral("No column %1 in: %2").arg(name, Sql()), SQLITE_RANGE);
    }
    return index;
}

QVariant Statement::Value(int column) const {
    switch (sqlite3_column_type(m_stmt, column)) {
        case SQLITE_INTEGER:
            return QVariant(static_cast<qlonglong>(sqlite3_column_int64(m_stmt, column)));
        case SQLITE_FLOAT:
            return QVariant(sqlite3_column_double(m_stmt, column));
        case SQLITE_TEXT:
            return QVariant(Text(column));
        case SQLITE_BLOB: {
            const auto* data = static_cast<const char*>(sqlite3_column_blob(m_stmt, column));
            return QVariant(QByteArray(data, sqlite3_column_bytes(m_stmt, column)));
        }
        default:
            return QVariant();
    }
}

QVariant Statement::Value(const QString& name) const {
    return Value(RequireColumn(name));
}

bool Statement::IsNull(int column) const {
    return sqlite3_column_type(m_stmt, column) == SQLITE_NULL;
}

bool Statement::IsNull(const QString& name) const {
    return IsNull(RequireColumn(name));
}

QString Statement::Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_stmt, column));
    if (text == nullptr) {
        return QString();
    }
    return QString::fromUtf8(text, sqlite3_column_bytes(m_stmt, column));
}

QString Statement::Text(const QString& name) const {
    return Text(RequireColumn(name));
}

qint64 Statement::Int(const QString& name) const {
    return sqlite3_column_int64(m_stmt, RequireColumn(name));
}

double Statement::Real(const QString& name) const {
    return sqlite3_column_double(m_stmt, RequireColumn(name));
}

bool Statement::Flag(const QString& name) const {
    const int column = RequireColumn(name);
    switch (sqlite3_column_type(m_stmt, column)) {
        case SQLITE_INTEGER:
        case SQLITE_FLOAT:
            return sqlite3_column_double(m_stmt, column) != 0;
        case SQLITE_TEXT:
            return FlagValue(Text(column));
        default:
            return false;
    }
}

}  // namespace lw::core
