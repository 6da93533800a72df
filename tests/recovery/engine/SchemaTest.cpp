#include <gtest/gtest.h>

#include "tests/recovery/engine/HandMadeDatabase.h"

namespace ZkMobileBackup {
namespace {

using testing::HandMadeDatabase;
using testing::Texts;

constexpr std::size_t kLongestWord = 1023;

/// The table `name` with the columns of `sql`.
std::shared_ptr<RawTableObject> tableOf(const std::string& name, const std::string& sql) {
    auto table = std::make_shared<RawTableObject>();
    table->setName(name);
    EXPECT_TRUE(DlxSQLiteParser::searchFiledsOfTable(table.get(), sql));
    return table;
}

Texts columnsOf(const std::string& name, const std::string& sql) {
    return tableOf(name, sql)->filedList();
}

std::vector<std::int64_t> classesOf(const std::string& sql) {
    std::vector<std::int64_t> classes;
    const auto table = tableOf("t", sql);
    for (const ColumnType& type : table->filedTypeList()) classes.push_back(type.code);
    return classes;
}

struct Word {
    std::string text;
    std::uint16_t length;
    bool operator==(const Word&) const = default;
};

Word wordOf(std::string_view text) {
    std::uint16_t length = 0xFFFF;
    const auto word = DlxSQLiteParser::subStringUntilNextSpaceFromCurPos(text, &length);
    return {word.value_or("no word"), length};
}

// ---- Words ----

TEST(SchemaWord, EndsBeforeTheFirstSpaceParenthesisOrComma) {
    EXPECT_EQ(wordOf("name TEXT"), (Word{"name", 4}));
    EXPECT_EQ(wordOf("name)"), (Word{"name", 4}));
    EXPECT_EQ(wordOf("name,b"), (Word{"name", 4}));
}

TEST(SchemaWord, CountsSkippedSpacesInItsLength) {
    EXPECT_EQ(wordOf("   name rest"), (Word{"name", 7}));
}

TEST(SchemaWord, GoesOnOverAnOpeningParenthesis) {
    EXPECT_EQ(wordOf("VARCHAR(255)"), (Word{"VARCHAR(255", 11}));
}

TEST(SchemaWord, SkipsNothingButSpaces) {
    EXPECT_EQ(wordOf("\tname\n,"), (Word{"\tname\n", 6}));
}

TEST(SchemaWord, MayBeEmpty) {
    EXPECT_EQ(wordOf(")"), (Word{"", 0}));
    EXPECT_EQ(wordOf("  , b"), (Word{"", 2}));
    EXPECT_EQ(wordOf("   "), (Word{"", 3}));
    EXPECT_EQ(wordOf(""), (Word{"", 0}));
}

TEST(SchemaWord, EndsWithTheText) {
    EXPECT_EQ(wordOf(" last"), (Word{"last", 5}));
}

TEST(SchemaWord, OfANullTextIsNoneOfLength0) {
    EXPECT_EQ(wordOf(std::string_view()), (Word{"no word", 0}));
    EXPECT_FALSE(DlxSQLiteParser::subStringUntilNextSpaceFromCurPos({}, nullptr));
}

TEST(SchemaWord, IsCutButKeepsItsLengthToTheDelimiter) {
    EXPECT_EQ(wordOf(std::string(kLongestWord, 'x') + " "), (Word{std::string(kLongestWord, 'x'), kLongestWord}));
    EXPECT_EQ(wordOf(" " + std::string(kLongestWord + 1, 'x') + " "),
              (Word{std::string(kLongestWord, 'x'), kLongestWord + 2}));
}

TEST(SchemaWord, IsNotCutWithinACharacter) {
    const std::string head(kLongestWord - 1, 'x');
    EXPECT_EQ(wordOf(head + "\u00e9 "), (Word{head, kLongestWord + 1}));
}

// ---- Type classes ----

TEST(PayloadType, KnowsFiveWordsExactly) {
    EXPECT_EQ(DlxSQLiteParser::payloadType("INTEGER"), 8);
    EXPECT_EQ(DlxSQLiteParser::payloadType("TIMESTAMP"), 8);
    EXPECT_EQ(DlxSQLiteParser::payloadType("VARCHAR"), 2);
    EXPECT_EQ(DlxSQLiteParser::payloadType("TEXT"), 2);
    EXPECT_EQ(DlxSQLiteParser::payloadType("BLOB"), 4);
}

TEST(PayloadType, OfAnyOtherWordIsUnknown) {
    for (const char* word : {"REAL", "NUMERIC", "DATETIME", "INT", "integer", "Text", "TEXT ", "VARCHAR(20", ""}) {
        EXPECT_EQ(DlxSQLiteParser::payloadType(word), 0) << word;
    }
}

// ---- Columns ----

TEST(SearchFileds, ReadsNamesClassesDefaultsAndTheKey) {
    const auto table = tableOf("t", "CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT DEFAULT 'x', b BLOB)");
    EXPECT_EQ(table->filedList(), (Texts{"id", "a", "b"}));
    EXPECT_EQ(table->filedCount(), 3);
    EXPECT_TRUE(table->hasIntergerPK());
    EXPECT_EQ(table->filedTypeList(), (std::vector<ColumnType>{{8, std::nullopt}, {2, "'x'"}, {4, std::nullopt}}));
}

TEST(SearchFileds, TakesALengthForAPartOfTheTypeWord) {
    EXPECT_EQ(classesOf("CREATE TABLE t (a VARCHAR(20), b INTEGER)").front(), 0);
}

TEST(SearchFileds, EndsAtAParenthesisWhereAWordEnded) {
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a VARCHAR(20), b INTEGER)"), (Texts{"a"}));
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a TEXT, b VARCHAR(20) NOT NULL, c INTEGER)"), (Texts{"a", "b"}));
}

TEST(SearchFileds, GoesOnBehindAParenthesisThatIsSteppedOver) {
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a TEXT NOT NULL CHECK (a, 1), b INTEGER)"), (Texts{"a", "b"}));
}

TEST(SearchFileds, CountsNestedParenthesesOnce) {
    // The first ")" leads back to the list, the second one ends it.
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a TEXT NOT NULL CHECK (length(a) > (1)), b INTEGER)"), (Texts{"a"}));
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a TEXT NOT NULL CHECK ((a)x), b INTEGER)"), (Texts{"a"}));
}

TEST(SearchFileds, TakesATextKeyForAnIntegerKey) {
    EXPECT_TRUE(tableOf("t", "CREATE TABLE t (name TEXT PRIMARY KEY, n INTEGER)")->hasIntergerPK());
}

TEST(SearchFileds, TakesAKeyInTheFirstColumnAndTheThirdWordOnly) {
    EXPECT_FALSE(tableOf("t", "CREATE TABLE t (a TEXT, id INTEGER PRIMARY KEY)")->hasIntergerPK());
    EXPECT_FALSE(tableOf("t", "CREATE TABLE t (id INTEGER NOT NULL PRIMARY KEY, a TEXT)")->hasIntergerPK());
    EXPECT_FALSE(tableOf("t", "CREATE TABLE t (id INTEGER primary key, a TEXT)")->hasIntergerPK());
    EXPECT_FALSE(tableOf("t", "CREATE TABLE t (id INTEGER PRIMARYKEY, a TEXT)")->hasIntergerPK());
}

TEST(SearchFileds, TakesADefaultInTheThirdWordOnly) {
    const auto table =
        tableOf("t", "CREATE TABLE t (a INTEGER DEFAULT 5, b INTEGER NOT NULL DEFAULT 6, c INTEGER default 7)");
    EXPECT_EQ(table->filedTypeList(), (std::vector<ColumnType>{{8, "5"}, {8, std::nullopt}, {8, std::nullopt}}));
}

TEST(SearchFileds, TakesAnEmptyWordForADefault) {
    const auto table = tableOf("t", "CREATE TABLE t (a INTEGER DEFAULT , b TEXT)");
    EXPECT_EQ(table->filedTypeList(), (std::vector<ColumnType>{{8, ""}, {2, std::nullopt}}));
}

TEST(SearchFileds, TakesTableConstraintsForColumns) {
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a TEXT, b TEXT, UNIQUE (a), PRIMARY KEY (a, b))"),
              (Texts{"a", "b", "UNIQUE"}));
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a TEXT, FOREIGN KEY (a) REFERENCES u (b), c TEXT)"),
              (Texts{"a", "FOREIGN"}));
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a TEXT, CONSTRAINT k CHECK (a), c TEXT)"),
              (Texts{"a", "CONSTRAINT", "c"}));
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a TEXT, CHECK (a NOT NULL), c TEXT)"), (Texts{"a", "CHECK"}));
}

TEST(SearchFileds, CountsAKeyAsAConstraintForTheFirstColumnOnlyByItsThirdWord) {
    // The list item "PRIMARY KEY (a)" has "(a" for its third word.
    const auto table = tableOf("t", "CREATE TABLE t (PRIMARY KEY (a), a TEXT)");
    EXPECT_EQ(table->filedList(), (Texts{"PRIMARY"}));
    EXPECT_FALSE(table->hasIntergerPK());
}

TEST(SearchFileds, KeepsQuotesAndLineBreaksAsTheyStand) {
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (\"a\" TEXT,\n  [b] TEXT)"), (Texts{"\"a\"", "\n"}));
}

TEST(SearchFileds, FindsEmptyWordsWhereColumnsAreMissing) {
    const auto table = tableOf("t", "CREATE TABLE t (a,, b TEXT)");
    EXPECT_EQ(table->filedList(), (Texts{"a", "", "b"}));
    EXPECT_EQ(classesOf("CREATE TABLE t (a,, b TEXT)"), (std::vector<std::int64_t>{0, 0, 2}));
}

TEST(SearchFileds, BeginsBehindTheNameWhereItIsExpected) {
    // "CREATE TABLE " and a name of one byte: the scan begins at position 14.
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t(a TEXT)"), (Texts{"a"}));
    EXPECT_EQ(columnsOf("t", "CREATE TABLE (a TEXT, b TEXT)"), (Texts{}));
    EXPECT_EQ(columnsOf("name", "CREATE TABLE n(a TEXT, b (c TEXT)"), (Texts{"c"}));
}

TEST(SearchFileds, CountsTheNameInBytes) {
    // Four bytes of name put the start behind the "(".
    EXPECT_EQ(columnsOf("\u00e9\u00e9", "CREATE TABLE ab (x TEXT)"), (Texts{}));
    EXPECT_EQ(columnsOf("\u00e9\u00e9", "CREATE TABLE \u00e9\u00e9 (x TEXT)"), (Texts{"x"}));
}

TEST(SearchFileds, IsShiftedByAQuotedName) {
    EXPECT_EQ(columnsOf("t", "CREATE TABLE \"t\" (a TEXT, b TEXT)"), (Texts{"a", "b"}));
    EXPECT_EQ(columnsOf("a b", "CREATE TABLE [a b](x TEXT)"), (Texts{"x"}));
}

TEST(SearchFileds, OfAnImmediateClosingParenthesisHasNoColumns) {
    const auto table = tableOf("t", "CREATE TABLE t)(a TEXT)");
    EXPECT_EQ(table->filedCount(), 0);
    EXPECT_TRUE(table->filedTypeList().empty());
}

TEST(SearchFileds, StopsAtTheTextsEnd) {
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (a TEXT, b"), (Texts{"a", "b"}));
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t ("), (Texts{""}));
    EXPECT_EQ(columnsOf("t", "x"), (Texts{}));
    EXPECT_EQ(columnsOf(std::string(1000, 'n'), "CREATE TABLE t (a TEXT)"), (Texts{}));
}

TEST(SearchFileds, CutsALongNameAndGoesOnBehindIt) {
    const std::string name(kLongestWord + 500, 'n');
    EXPECT_EQ(columnsOf("t", "CREATE TABLE t (" + name + " TEXT, b TEXT)"), (Texts{name.substr(0, kLongestWord), "b"}));
}

TEST(SearchFileds, FailsWithoutATableOrAText) {
    RawTableObject table;
    table.setName("t");
    EXPECT_FALSE(DlxSQLiteParser::searchFiledsOfTable(&table, ""));
    EXPECT_FALSE(DlxSQLiteParser::searchFiledsOfTable(&table, {}));
    EXPECT_FALSE(DlxSQLiteParser::searchFiledsOfTable(nullptr, "CREATE TABLE t (a TEXT)"));
    EXPECT_EQ(table.filedCount(), 0);
}

// ---- The schema table ----

TEST(SchemaTable, HasFiveColumnsTheLastInCapitals) {
    const auto parser = HandMadeDatabase(512, 1).parser();
    const auto schema = parser->createSQLiteMasterTable();
    EXPECT_EQ(schema->name(), "sqlite_master");
    EXPECT_EQ(schema->pageNum(), 0);
    EXPECT_EQ(schema->tableType(), 0);
    EXPECT_EQ(schema->filedList(), (Texts{"type", "name", "tbl_name", "rootpage", "SQL"}));
    EXPECT_EQ(schema->filedCount(), 0);
    EXPECT_TRUE(schema->filedTypeList().empty());
    EXPECT_FALSE(schema->hasIntergerPK());
}

TEST(SchemaTable, GivesTablesInItsOrderAndNothingForOtherTypes) {
    HandMadeDatabase database(512, 2);
    database.schema({{"b", 2, "CREATE TABLE b (x TEXT)"},
                     {"i", 2, "CREATE INDEX i ON b (x)", "index"},
                     {"v", 0, "CREATE VIEW v AS SELECT 1", "view"},
                     {"a", 0, "CREATE TABLE a (y TEXT)"}});
    const auto parser = database.parsed();
    ASSERT_EQ(parser->tableList().size(), 3U);
    EXPECT_EQ(parser->tableList()[1]->name(), "b");
    EXPECT_EQ(parser->tableList()[2]->name(), "a");
    EXPECT_EQ(parser->tableList()[1]->tableType(), 1);
    EXPECT_EQ(testing::liveRows(*parser, 0).size(), 4U);
}

TEST(SchemaTable, ReadsAShortRowAsEmptyTextsAndZero) {
    HandMadeDatabase database(512, 1);
    database.leaf(1, {testing::cell(1, {testing::text("table"), testing::text("short")}),
                      testing::cell(2, {testing::text("table"), testing::null()})});
    const auto parser = database.parsed();
    ASSERT_EQ(parser->tableList().size(), 3U);
    EXPECT_EQ(parser->tableList()[1]->name(), "short");
    EXPECT_EQ(parser->tableList()[1]->pageNum(), 0);
    EXPECT_TRUE(parser->tableList()[1]->filedList().empty());
    EXPECT_EQ(parser->tableList()[2]->name(), "NULL");
}

TEST(SchemaTable, ATableWithoutARootHasColumnsAndNoRows) {
    for (const int root : {0, -1, -128}) {
        HandMadeDatabase database(512, 2);
        database.schema({{"t", root, "CREATE TABLE t (a TEXT, b TEXT)"}});
        database.leaf(2, {testing::cell(1, {testing::text("x"), testing::text("y")})});
        const auto parser = database.parsed();
        EXPECT_EQ(parser->tableList().at(1)->pageNum(), root);
        EXPECT_EQ(parser->tableList().at(1)->filedList(), (Texts{"a", "b"}));
        EXPECT_TRUE(testing::liveRows(*parser, 1).empty());
    }
}

}  // namespace
}  // namespace ZkMobileBackup
