#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tests/support/TemporaryFolder.h"

struct sqlite3;

namespace ZkMobileBackup {

/// A value to be stored in a database.
using Cell = std::variant<std::nullptr_t, std::int64_t, double, std::string, std::vector<std::uint8_t>>;

/// How SQLite keeps its free pages.
enum class AutoVacuum { None = 0, Full = 1, Incremental = 2 };

struct DatabaseOptions {
    int pageSize = 4096;  ///< 512 to 65536, a power of two
    AutoVacuum autoVacuum = AutoVacuum::None;
};

/// A real database file, made by SQLite itself. Deleted bytes stay where they are (no secure delete).
/// Every failure throws std::runtime_error with SQLite's own text.
class DatabaseBuilder {
public:
    explicit DatabaseBuilder(DatabaseOptions options = {});

    /// Runs SQL statements.
    DatabaseBuilder& exec(const std::string& sql);
    /// Runs one statement whose "?" are the cells.
    DatabaseBuilder& run(const std::string& sql, std::initializer_list<Cell> cells);
    DatabaseBuilder& run(const std::string& sql, const std::vector<Cell>& cells);

    /// Adds a row that has a value for every column of the table.
    DatabaseBuilder& insert(const std::string& table, std::initializer_list<Cell> row);
    DatabaseBuilder& insert(const std::string& table, const std::vector<Cell>& row);

    /// The rows of a query, each cell as SQLite's text for it, nothing for NULL.
    std::vector<std::vector<std::optional<std::string>>> query(const std::string& sql) const;

    /// The file as it stands now; every transaction must be over.
    std::vector<std::uint8_t> bytes() const;
    std::string path() const { return folder_.path("database"); }

private:
    struct Close {
        void operator()(sqlite3* database) const;
    };

    TemporaryFolder folder_;
    std::unique_ptr<sqlite3, Close> database_;
};

}  // namespace ZkMobileBackup
