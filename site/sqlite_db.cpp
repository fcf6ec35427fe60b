// SPDX-License-Identifier: GPL-3.0-or-later
// SQLite connection and cached statements for the demo marketplace.
#include "site/sqlite_db.h"

#include <sqlite3.h>

namespace lw::site {

Stmt::~Stmt() {
    sqlite3_finalize(m_stmt);
}

void Stmt::Fail(const char* what) const {
    throw DbError(std::string(what) + ": " + sqlite3_errmsg(m_db) + " in " +
                  (sqlite3_sql(m_stmt) ? sqlite3_sql(m_stmt) : "?"));
}

Stmt& Stmt::Bind(int index, std::int64_t value) {
    if (sqlite3_bind_int64(m_stmt, index, value) != SQLITE_OK) {
        Fail("bind");
    }
    return *this;
}

Stmt& Stmt::Bind(int index, double value) {
    if (sqlite3_bind_double(m_stmt, index, value) != SQLITE_OK) {
        Fail("bind");
    }
    return *this;
}

Stmt& Stmt::Bind(int index, const std::string& value) {
    if (sqlite3_bind_text(m_stmt, index, value.data(), static_cast<int>(value.size()),
                          SQLITE_TRANSIENT) != SQLITE_OK) {
        Fail("bind");
    }
    return *this;
}

Stmt& Stmt::BindNull(int index) {
    if (sqlite3_bind_null(m_stmt, index) != SQLITE_OK) {
        Fail("bind");
    }
    return *this;
}

bool Stmt::Step() {
    const int rc = sqlite3_step(m_stmt);
    if (rc == SQLITE_ROW) {
        return true;
    }
    if (rc == SQLITE_DONE) {
        return false;
    }
    Fail("step");
}

void Stmt::Run() {
    while (Step()) {
    }
}

void Stmt::Reset() {
    sqlite3_reset(m_stmt);
    sqlite3_clear_bindings(m_stmt);
}

std::int64_t Stmt::Int(int column) const {
    return sqlite3_column_int64(m_stmt, column);
}

double Stmt::Real(int column) const {
    return sqlite3_column_double(m_stmt, column);
}

std::string Stmt::Text(int column) const {
    const auto* text = sqlite3_column_text(m_stmt, column);
    if (!text) {
        return {};
    }
    return std::string(reinterpret_cast<const char*>(text),
                       static_cast<size_t>(sqlite3_column_bytes(m_stmt, column)));
}

bool Stmt::IsNull(int column) const {
    return sqlite3_column_type(m_stmt, column) == SQLITE_NULL;
}

Db::Db(const std::string& path) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(path.c_str(), &m_db, flags, nullptr) != SQLITE_OK) {
        const std::string message = m_db ? sqlite3_errmsg(m_db) : "out of memory";
        sqlite3_close(m_db);
        m_db = nullptr;
        throw DbError("cannot open " + path + ": " + message);
    }
    sqlite3_busy_timeout(m_db, 5000);
}

Db::~Db() {
    m_cache.clear();  // statements first: the connection refuses to close under them
    sqlite3_close(m_db);
}

void Db::Exec(const std::string& sql) {
    char* error = nullptr;
    if (sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
        const std::string message = error ? error : sqlite3_errmsg(m_db);
        sqlite3_free(error);
        throw DbError(message + " in " + sql.substr(0, 120));
    }
}

Stmt& Db::Prepare(const std::string& sql) {
    auto found = m_cache.find(sql);
    if (found != m_cache.end()) {
        found->second->Reset();
        return *found->second;
    }
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(m_db, sql.c_str(), static_cast<int>(sql.size()), &stmt, nullptr) !=
        SQLITE_OK) {
        throw DbError(std::string("prepare: ") + sqlite3_errmsg(m_db) + " in " + sql);
    }
    auto owned = std::make_unique<Stmt>(m_db, stmt);
    Stmt& result = *owned;
    m_cache.emplace(sql, std::move(owned));
    return result;
}

std::int64_t Db::LastInsertId() const {
    return sqlite3_last_insert_rowid(m_db);
}

int Db::Changes() const {
    return sqlite3_changes(m_db);
}

std::int64_t Db::TotalChanges() const {
    return sqlite3_total_changes64(m_db);
}

DbTransaction::DbTransaction(Db& db) : m_db(db) {
    m_db.Exec("BEGIN");
}

DbTransaction::~DbTransaction() {
    if (m_open) {
        try {
            m_db.Exec("ROLLBACK");
        } catch (const DbError&) {
            // Nothing left to undo when the statement that failed ended the transaction.
        }
    }
}

void DbTransaction::Commit() {
    m_db.Exec("COMMIT");
    m_open = false;
}

}  // namespace lw::site
