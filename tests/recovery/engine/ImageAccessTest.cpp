// The bytes of an image are reached through one class alone, and never written back.

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <regex>
#include <set>
#include <sys/stat.h>

#include "recovery/DlxSQLiteParser.h"
#include "tests/recovery/engine/HandMadeDatabase.h"
#include "tests/support/DatabaseBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;

/// Lines of the recovery folder's sources that match, as "file: line".
std::vector<std::string> linesThatMatch(const std::regex& pattern, const std::set<std::string>& exemptFiles) {
    std::vector<std::string> lines;
    for (const auto& entry : fs::recursive_directory_iterator(ZKMB_RECOVERY_SOURCES)) {
        const std::string name = entry.path().filename();
        if (!entry.is_regular_file() || exemptFiles.contains(name)) continue;
        std::ifstream source(entry.path());
        for (std::string line; std::getline(source, line);) {
            if (std::regex_search(line, pattern)) lines.push_back(name + ": " + line);
        }
    }
    return lines;
}

// The image itself, the functions that hosts hand addresses to, and the store of finished rows.
const std::set<std::string> kOwnersOfAddresses = {"byte_image.h", "byte_image.cpp", "byte_order.cpp", "ByteFunctions.h",
                                                  "Row.h",        "Row.cpp",        "RowStore.h",     "RowStore.cpp"};

TEST(ImageAccess, NoOtherSourceNamesTheAddressOfAByte) {
    EXPECT_THAT(
        linesThatMatch(std::regex(R"((uint8_t|unsigned char|char8_t|byte)\s*(const\s*)?\*)"), kOwnersOfAddresses),
        ::testing::IsEmpty());
}

TEST(ImageAccess, OnlyTheRendererTakesTheAddressOfARange) {
    std::set<std::string> exempt = kOwnersOfAddresses;
    exempt.insert("payload_renderer.cpp");  // a range becomes a text, or goes to a file
    EXPECT_THAT(linesThatMatch(std::regex(R"(bytes\w*(\([^)]*\))?\.data\(\)|reinterpret_cast)"), exempt),
                ::testing::IsEmpty());
}

DatabaseBuilder databaseWithOverflowAndDeletedRows() {
    DatabaseBuilder builder({.pageSize = 512});
    builder.exec("CREATE TABLE t (id INTEGER PRIMARY KEY, a TEXT, b BLOB)");
    for (std::int64_t i = 1; i <= 40; ++i) {
        builder.insert("t",
                       {i, std::string(static_cast<std::size_t>(i) * 50, 'x'), std::vector<std::uint8_t>(20, 0xAB)});
    }
    builder.exec("DELETE FROM t WHERE id % 3 = 0");
    return builder;
}

TEST(ImageAccess, ParsingChangesNoFile) {
    const TemporaryFolder folder;
    const auto before = databaseWithOverflowAndDeletedRows().bytes();
    writeBytes(folder.path("database"), before);
    const auto parser = DlxSQLiteParser::initWithDBPath(folder.path("database"));
    ASSERT_TRUE(parser->parser());
    EXPECT_FALSE(parser->tableList().at(1)->rowList().empty());
    EXPECT_EQ(readBytes(folder.path("database")), before);
    EXPECT_THAT(folderContent(folder.path()), ::testing::SizeIs(1));
}

TEST(ImageAccess, FileThatMayOnlyBeReadIsParsedLikeItsBytes) {
    const TemporaryFolder folder;
    const auto bytes = databaseWithOverflowAndDeletedRows().bytes();
    writeBytes(folder.path("database"), bytes);
    ASSERT_EQ(chmod(folder.path("database").c_str(), 0400), 0);
    const auto ofFile = DlxSQLiteParser::initWithDBPath(folder.path("database"));
    const auto ofBytes = DlxSQLiteParser::initWithDBData(bytes);
    ASSERT_TRUE(ofFile->parser());
    ASSERT_TRUE(ofBytes->parser());
    EXPECT_EQ(testing::liveRows(*ofFile, 1), testing::liveRows(*ofBytes, 1));
    EXPECT_EQ(testing::deletedRows(*ofFile, 1), testing::deletedRows(*ofBytes, 1));
}

}  // namespace
}  // namespace ZkMobileBackup
