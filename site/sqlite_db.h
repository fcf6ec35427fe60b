// SPDX-License-Identifier: GPL-3.0-or-later
// The demo marketplace's own SQLite access: a connection and prepared
// statements that bind every value. It keeps statements for reuse so a page
// costs no SQL compilation; it never holds market rules.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace lw::site {

class DbError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Stmt {
public:
    Stmt(sqlite3* db, sqlite3_stmt* stmt) : m_db(db), m_stmt(stmt) {}
    Stmt(const Stmt&) = delete;
    Stmt& operator=(const Stmt&) = delete;
    ~Stmt();

    // 1-based, as SQLite counts parameters.
    Stmt& Bind(int index, std::int64_t value);
    Stmt& Bind(int index, int value) { return Bind(index, static_cast<std::int64_t>(value)); }
    Stmt& Bind(int index, double value);
    Stmt& Bind(int index, const std::string& value);
    Stmt& Bind(int index, const char* value) { return Bind(index, std::string(value)); }
    Stmt& BindNull(int index);
    Stmt& Bind(int index, const std::optional<std::int64_t>& value) {
        return value ? Bind(index, *value) : BindNull(index);
    }

    template <class... Args>
    Stmt& BindAll(const Args&... args) {
        int index = 1;
        (Bind(index++, args), ...);
        return *this;
    }

    // True while a row is ready.
    bool Step();
    // Steps to the end; for statements that write.
    void Run();
    // Ready for new bindings; also called before each reuse from the cache.
    void Reset();

    std::int64_t Int(int column) const;
    double Real(int column) const;
    std::string Text(int column) const;
    bool IsNull(int column) const;

private:
    [[noreturn]] void Fail(const char* what) const;
    sqlite3* m_db;
    sqlite3_stmt* m_stmt;
};

class Db {
public:
    explicit Db(const std::string& path);
    Db(const Db&) = delete;
    Db& operator=(const Db&) = delete;
    ~Db();

    void Exec(const std::string& sql);
    // A cached statement, reset and cleared of old bindings.
    Stmt& Prepare(const std::string& sql);
    std::int64_t LastInsertId() const;
    int Changes() const;
    // Rows written through this connection since it opened.
    std::int64_t TotalChanges() const;

private:
    sqlite3* m_db = nullptr;
    std::unordered_map<std::string, std::unique_ptr<Stmt>> m_cache;
};

// BEGIN on construction; ROLLBACK unless Commit() was called.
class DbTransaction {
public:
    explicit DbTransaction(Db& db);
    ~DbTransaction();
    void Commit();
    DbTransaction(const DbTransaction&) = delete;
    DbTransaction& operator=(const DbTransaction&) = delete;

private:
    Db& m_db;
    bool m_open = true;
};

}  // namespace lw::site
