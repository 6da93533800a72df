#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>

#include "tests/recovery/engine/PlainReading.h"
#include "tests/support/DatabaseBuilder.h"

namespace ZkMobileBackup {
namespace {

using testing::PlainTable;
using testing::readPlainly;
using testing::tablesOf;
using testing::Texts;

constexpr std::int64_t kLargestRowid = 16383;
// Serial types from 16384 on take three bytes.
constexpr std::size_t kLongestText = (16384 - 13) / 2;
constexpr int kDatabasesOfAKind = 10;

/// A database of values that the engine shows as they were stored; see the tests of excluded values for the others.
class RandomDatabase {
public:
    RandomDatabase(unsigned seed, DatabaseOptions options)
        : random_(seed), pageSize_(static_cast<std::size_t>(options.pageSize)), builder_(options) {
        const bool spills = options.pageSize <= 4096 && below(3) == 0;
        const std::size_t count = 1 + below(3);
        for (std::size_t i = 0; i < count; ++i) createTable("t" + std::to_string(i));
        if (spills) createTable("spilled");
        builder_.exec("BEGIN");
        for (std::size_t i = 0; i < count; ++i) fill(tables_[i]);
        builder_.exec("COMMIT");
        // A spilled record is spliced over the pages behind its own: these must be its chain, and walked before.
        if (spills) {
            insertSpilledRow(tables_.back());
        } else {
            for (const Table& table : tables_) changeRows(table);
        }
    }

    std::vector<std::uint8_t> bytes() const { return builder_.bytes(); }
    std::size_t tableCount() const { return tables_.size(); }

    /// What SQLite itself returns, in the engine's form.
    std::vector<Texts> storedRows(std::size_t position) const {
        const Table& table = tables_[position];
        std::string columns;
        for (const std::string& name : table.names) {
            columns += (columns.empty() ? "" : ", ") + ("CASE typeof(" + name + ") WHEN 'null' THEN 'NULL' ") +
                       "WHEN 'blob' THEN hex(" + name + ") ELSE " + name + " END";
        }
        std::vector<Texts> rows;
        for (const auto& row : builder_.query("SELECT " + columns + " FROM " + table.name + " ORDER BY rowid")) {
            Texts& texts = rows.emplace_back();
            for (const auto& cell : row) texts.push_back(cell.value());
        }
        return rows;
    }

private:
    enum class Kind { Key, Integer, Text, Blob };
    struct Table {
        std::string name;
        Texts names;
        std::vector<Kind> kinds;
    };

    std::size_t below(std::size_t bound) { return random_() % bound; }

    void createTable(const std::string& name) {
        Table table{name, {}, {}};
        const bool hasKey = below(2) == 0;
        std::string sql = hasKey ? "id INTEGER PRIMARY KEY" : "id INTEGER";
        table.names = {"id"};
        table.kinds = {hasKey ? Kind::Key : Kind::Integer};
        const std::size_t middle = below(6);
        for (std::size_t i = 0; i < middle; ++i) {
            static constexpr std::pair<const char*, Kind> kTypes[] = {{"INTEGER", Kind::Integer},
                                                                      {"TIMESTAMP", Kind::Integer},
                                                                      {"TEXT", Kind::Text},
                                                                      {"VARCHAR", Kind::Text},
                                                                      {"BLOB", Kind::Blob}};
            const auto& [word, kind] = kTypes[below(std::size(kTypes))];
            table.names.push_back("c" + std::to_string(i));
            table.kinds.push_back(kind);
            sql += ", " + table.names.back() + " " + word + (below(4) == 0 ? " DEFAULT 5" : "");
        }
        // A text ends every record: no value of no bytes ends the image, and no page ends like a page number.
        table.names.push_back("z");
        table.kinds.push_back(Kind::Text);
        builder_.exec("CREATE TABLE " + name + " (" + sql + ", z TEXT)");
        tables_.push_back(std::move(table));
    }

    void fill(const Table& table) {
        std::set<std::int64_t> rowids;
        const std::size_t count = below(pageSize_ <= 1024 ? 120 : 40);
        while (rowids.size() < count) rowids.insert(static_cast<std::int64_t>(1 + below(kLargestRowid)));
        std::vector<std::int64_t> order(rowids.begin(), rowids.end());
        if (below(2) == 0) std::shuffle(order.begin(), order.end(), random_);
        for (const std::int64_t rowid : order) insert(table, rowid, randomRow(table, rowid));
    }

    void insert(const Table& table, std::int64_t rowid, std::vector<Cell> row) {
        std::string names;
        std::string marks;
        for (const std::string& name : table.names) {
            names += ", " + name;
            marks += ", ?";
        }
        row.insert(row.begin(), rowid);
        builder_.run("INSERT INTO " + table.name + " (rowid" + names + ") VALUES (?" + marks + ")", row);
    }

    std::vector<Cell> randomRow(const Table& table, std::int64_t rowid) {
        std::size_t room = std::min<std::size_t>(pageSize_, 16384) - 100;
        std::vector<Cell> row;
        for (const Kind kind : table.kinds) {
            row.push_back(kind == Kind::Key ? Cell(rowid) : randomCell(kind, room));
        }
        row.back() = "tail" + asciiText(below(20));
        return row;
    }

    Cell randomCell(Kind kind, std::size_t& room) {
        if (below(8) == 0) return nullptr;
        if (kind == Kind::Integer) return randomInteger();
        const std::size_t limit = below(12) == 0 ? room / 2 : std::min<std::size_t>(room / 2, 60);
        const std::size_t length = below(limit + 1);
        room -= length;
        if (kind == Kind::Blob) return randomBlob(length);
        return length < 3000 && below(3) == 0 ? wideText(length) : asciiText(length);
    }

    Cell randomInteger() {
        switch (below(4)) {
            case 0:
                return static_cast<std::int64_t>(below(2));
            case 1:
                return static_cast<std::int64_t>(below(256)) - 128;
            default:
                return static_cast<std::int64_t>(below(32768 + 128)) - 128;
        }
    }

    std::vector<std::uint8_t> randomBlob(std::size_t length) {
        std::vector<std::uint8_t> blob(length);
        for (std::uint8_t& byte : blob) byte = static_cast<std::uint8_t>(below(256));
        return blob;
    }

    std::string asciiText(std::size_t length) {
        std::string text;
        for (std::size_t i = 0; i < length; ++i) text += static_cast<char>('a' + below(26));
        return text;
    }

    /// Text of at most `length` bytes with characters of one to four bytes.
    std::string wideText(std::size_t length) {
        static const std::string kCharacters[] = {"x", "\u00e9", "\u20ac", "\U0001f600"};
        std::string text = "w";
        while (text.size() + 4 <= length) text += kCharacters[below(std::size(kCharacters))];
        return text.substr(0, length == 0 ? 0 : text.size());
    }

    void insertSpilledRow(const Table& table) {
        std::size_t room = 0;
        std::vector<Cell> row;
        for (const Kind kind : table.kinds)
            row.push_back(kind == Kind::Key ? Cell(std::int64_t{1}) : randomCell(kind, room));
        row.back() = asciiText(pageSize_ + below(std::min(3 * pageSize_, kLongestText - pageSize_)));
        insert(table, 1, row);
    }

    void changeRows(const Table& table) {
        const auto number = [this](std::size_t bound) { return std::to_string(below(bound)); };
        const auto from = static_cast<std::int64_t>(below(kLargestRowid));
        builder_.exec("DELETE FROM " + table.name + " WHERE rowid % 7 = " + number(7));
        builder_.exec("UPDATE " + table.name + " SET z = 'changed' WHERE rowid % 11 = " + number(11));
        builder_.exec("DELETE FROM " + table.name + " WHERE rowid BETWEEN " + std::to_string(from) + " AND " +
                      std::to_string(from + static_cast<std::int64_t>(below(8000))));
    }

    std::mt19937 random_;
    std::size_t pageSize_;
    DatabaseBuilder builder_;
    std::vector<Table> tables_;
};

class RandomDatabases : public ::testing::TestWithParam<std::tuple<int, AutoVacuum>> {
protected:
    DatabaseOptions options() const {
        return {.pageSize = std::get<0>(GetParam()), .autoVacuum = std::get<1>(GetParam())};
    }
    RandomDatabase database(int number) const {
        const auto kind = static_cast<unsigned>(options().pageSize + static_cast<int>(options().autoVacuum));
        return RandomDatabase(kind * 100 + static_cast<unsigned>(number), options());
    }
};

TEST_P(RandomDatabases, LiveRowsAreThoseOfSqliteAndAllRowsThoseOfAPlainReading) {
    for (int number = 0; number < kDatabasesOfAKind; ++number) {
        SCOPED_TRACE("database " + std::to_string(number));
        const RandomDatabase made = database(number);
        const auto parser = DlxSQLiteParser::initWithDBData(made.bytes());
        ASSERT_TRUE(parser->parser());
        const std::vector<PlainTable> found = tablesOf(*parser);
        ASSERT_EQ(found.size(), 1 + made.tableCount());
        for (std::size_t table = 0; table < made.tableCount(); ++table) {
            ASSERT_EQ(found[table + 1].live, made.storedRows(table)) << "table " << table;
        }
        const std::vector<PlainTable> expected = readPlainly(made.bytes());
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t table = 0; table < found.size(); ++table) ASSERT_EQ(found[table], expected[table]);
    }
}

std::string kindName(const ::testing::TestParamInfo<std::tuple<int, AutoVacuum>>& info) {
    constexpr const char* kModes[] = {"NoVacuum", "FullVacuum", "IncrementalVacuum"};
    const auto [pageSize, autoVacuum] = info.param;
    return "Pages" + std::to_string(pageSize) + kModes[static_cast<std::size_t>(autoVacuum)];
}

INSTANTIATE_TEST_SUITE_P(EveryKind, RandomDatabases,
                         ::testing::Combine(::testing::Values(512, 1024, 2048, 4096, 8192, 16384, 32768),
                                            ::testing::Values(AutoVacuum::None, AutoVacuum::Full,
                                                              AutoVacuum::Incremental)),
                         kindName);

TEST(RandomDatabasesAsASet, HaveInteriorPagesSpilledRecordsAndFreePages) {
    int interiorRoots = 0;
    int spilled = 0;
    int freePages = 0;
    for (int number = 0; number < kDatabasesOfAKind; ++number) {
        const RandomDatabase made(51200 + static_cast<unsigned>(number), {.pageSize = 512});
        const auto parser = testing::parsedCopy(made.bytes());
        for (std::size_t table = 1; table < parser->tableList().size(); ++table) {
            const auto root = static_cast<std::size_t>(parser->tableList()[table]->pageNum());
            interiorRoots += made.bytes()[512 * (root - 1)] == 5 ? 1 : 0;
            spilled += parser->tableList()[table]->name() == "spilled" ? 1 : 0;
        }
        freePages += parser->sqliteDBHeader()->freePagePageCount() > 0 ? 1 : 0;
    }
    EXPECT_GT(interiorRoots, 5);
    EXPECT_GT(spilled, 1);
    EXPECT_GT(freePages, 1);
}

}  // namespace
}  // namespace ZkMobileBackup
