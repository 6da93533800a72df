#include "tests/support/DatabaseBuilder.h"

#include <sqlite3.h>
#include <stdexcept>

#include "tests/support/Files.h"

namespace ZkMobileBackup {
namespace {

[[noreturn]] void fail(sqlite3* database, const std::string& sql) {
    throw std::runtime_error(std::string(sqlite3_errmsg(database)) + " in: " + sql);
}

struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

Statement prepare(sqlite3* database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) fail(database, sql);
    return Statement(statement);
}

/// Gives one value to a "?" of a statement; the value must outlive the statement's run.
struct Binder {
    sqlite3_stmt* statement;
    int position;

    int operator()(std::nullptr_t) const { return sqlite3_bind_null(statement, position); }
    int operator()(std::int64_t number) const { return sqlite3_bind_int64(statement, position, number); }
    int operator()(double number) const { return sqlite3_bind_double(statement, position, number); }
    int operator()(const std::string& text) const {
        return sqlite3_bind_text64(statement, position, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
    }
    int operator()(const std::vector<std::uint8_t>& bytes) const {
        if (bytes.empty()) return sqlite3_bind_zeroblob(statement, position, 0);
        return sqlite3_bind_blob64(statement, position, bytes.data(), bytes.size(), SQLITE_STATIC);
    }
};

std::vector<std::optional<std::string>> currentRow(sqlite3_stmt* statement) {
    std::vector<std::optional<std::string>> row;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
        const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
        row.push_back(text ? std::optional(std::string(text, length)) : std::nullopt);
    }
    return row;
}

std::string placeholders(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += i == 0 ? "?" : ", ?";
    return text;
}

}  // namespace

void DatabaseBuilder::Close::operator()(sqlite3* database) const {
    sqlite3_close(database);
}

DatabaseBuilder::DatabaseBuilder(DatabaseOptions options) {
    sqlite3* database = nullptr;
    const int status = sqlite3_open(path().c_str(), &database);
    database_.reset(database);
    if (status != SQLITE_OK) fail(database, "open");
    exec("PRAGMA page_size = " + std::to_string(options.pageSize));
    exec("PRAGMA auto_vacuum = " + std::to_string(static_cast<int>(options.autoVacuum)));
    exec("PRAGMA secure_delete = OFF; PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY");
}

DatabaseBuilder& DatabaseBuilder::exec(const std::string& sql) {
    if (sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail(database_.get(), sql);
    return *this;
}

DatabaseBuilder& DatabaseBuilder::run(const std::string& sql, std::initializer_list<Cell> cells) {
    return run(sql, std::vector<Cell>(cells));
}

DatabaseBuilder& DatabaseBuilder::run(const std::string& sql, const std::vector<Cell>& cells) {
    const Statement statement = prepare(database_.get(), sql);
    int position = 0;
    for (const Cell& cell : cells) {
        if (std::visit(Binder{statement.get(), ++position}, cell) != SQLITE_OK) fail(database_.get(), sql);
    }
    if (sqlite3_step(statement.get()) != SQLITE_DONE) fail(database_.get(), sql);
    return *this;
}

DatabaseBuilder& DatabaseBuilder::insert(const std::string& table, std::initializer_list<Cell> row) {
    return insert(table, std::vector<Cell>(row));
}

DatabaseBuilder& DatabaseBuilder::insert(const std::string& table, const std::vector<Cell>& row) {
    return run("INSERT INTO " + table + " VALUES (" + placeholders(row.size()) + ")", row);
}

std::vector<std::vector<std::optional<std::string>>> DatabaseBuilder::query(const std::string& sql) const {
    const Statement statement = prepare(database_.get(), sql);
    std::vector<std::vector<std::optional<std::string>>> rows;
    int status = SQLITE_ROW;
    while ((status = sqlite3_step(statement.get())) == SQLITE_ROW) rows.push_back(currentRow(statement.get()));
    if (status != SQLITE_DONE) fail(database_.get(), sql);
    return rows;
}

std::vector<std::uint8_t> DatabaseBuilder::bytes() const {
    return readBytes(path());
}

}  // namespace ZkMobileBackup
