#include <gtest/gtest.h>
#include <string>

#include "export/FileCreator.h"
#include "tests/export/ExportTesting.h"

namespace ZkMobileBackup {
namespace {

constexpr const char* kLatin = "\xC3\xA9";          // U+00E9, no legal character
constexpr const char* kIdeograph = "\xE4\xB8\xAD";  // U+4E2D

std::string cellText(const Value& value) {
    return FileCreator::init()->stringValueFromObject(value);
}

TEST(FileCreator, StartsUnstoppedAndAlone) {
    const auto creator = FileCreator::init();
    EXPECT_FALSE(creator->isStop());
    EXPECT_EQ(creator->fileCreatorDelegate(), nullptr);
}

TEST(FileCreator, AccessorsGiveBackWhatWasSet) {
    const auto creator = FileCreator::init();
    RecordingWriterDelegate delegate;
    creator->setFileCreatorDelegate(&delegate);
    creator->setIndex(2);
    creator->setCount(5);
    creator->setIsStop(true);
    EXPECT_EQ(creator->fileCreatorDelegate(), &delegate);
    EXPECT_EQ(creator->index(), 2);
    EXPECT_EQ(creator->count(), 5);
    EXPECT_TRUE(creator->isStop());
}

TEST(FileCreator, PassesItsCallsToTheDelegate) {
    const auto creator = FileCreator::init();
    RecordingWriterDelegate delegate;
    creator->setFileCreatorDelegate(&delegate);
    creator->extportStart();
    creator->extportProcess(0.25);
    creator->extportComplete(true);
    EXPECT_EQ(delegate.starts, 1);
    EXPECT_EQ(delegate.progress, std::vector<double>{0.25});
    EXPECT_EQ(delegate.completions, std::vector<bool>{true});
}

TEST(FileCreator, CallsNobodyWithoutADelegate) {
    const auto creator = FileCreator::init();
    creator->extportStart();
    creator->extportProcess(0.25);
    creator->extportComplete(true);
    EXPECT_EQ(creator->fileCreatorDelegate(), nullptr);
}

TEST(FileCreator, BaseConvertsNothing) {
    const auto creator = FileCreator::init();
    RecordingWriterDelegate delegate;
    creator->setFileCreatorDelegate(&delegate);
    creator->startConvert();
    EXPECT_TRUE(delegate.progress.empty());
    EXPECT_TRUE(creator->writtenPath().empty());
}

TEST(StringValueFromObject, TextIsReturnedUnchanged) {
    EXPECT_EQ(cellText("a\x01 <b> "), "a\x01 <b> ");
    EXPECT_EQ(cellText(""), "");
}

TEST(StringValueFromObject, PlainTextIsNeverCheckedForIllegalCharacters) {
    EXPECT_EQ(cellText(kLatin), kLatin);
}

TEST(StringValueFromObject, AnythingElseIsEmpty) {
    EXPECT_EQ(cellText(7), "");
    EXPECT_EQ(cellText(7.5), "");
    EXPECT_EQ(cellText(Value()), "");
    EXPECT_EQ(cellText(Date{1}), "");
    EXPECT_EQ(cellText(Size{1, 2}), "");
    EXPECT_EQ(cellText(SharedBytes()), "");
    EXPECT_EQ(cellText(Dictionary{{"k", "v"}}), "");
}

TEST(StringValueFromObject, EveryTextOfAnArrayFollowsASeparator) {
    EXPECT_EQ(cellText(Array{"a", "b"}), "  \r\na  \r\nb");
    EXPECT_EQ(cellText(Array{""}), "  \r\n");
}

TEST(StringValueFromObject, EmptyArrayIsEmpty) {
    EXPECT_EQ(cellText(Array{}), "");
}

TEST(StringValueFromObject, ArrayTextWithAnIllegalCharacterIsSkipped) {
    EXPECT_EQ(cellText(Array{kLatin}), "");
    EXPECT_EQ(cellText(Array{kIdeograph}), std::string("  \r\n") + kIdeograph);
    EXPECT_EQ(cellText(Array{"a", kLatin, "b"}), "  \r\na  \r\nb");
}

TEST(StringValueFromObject, OtherElementsAreSkipped) {
    EXPECT_EQ(cellText(Array{1, Value(), Array{"x"}, "a", 2.5}), "  \r\na");
}

TEST(StringValueFromObject, DictionaryRepeatsTheCellAndNeverShowsItsOwnTexts) {
    EXPECT_EQ(cellText(Array{Dictionary{{"k", "v"}}}), "  \r\n");
    EXPECT_EQ(cellText(Array{Dictionary{{"k", "v"}, {"l", "w"}}}), "  \r\n ");
    EXPECT_EQ(cellText(Array{"a", Dictionary{{"k", "v"}}}), "  \r\na  \r\n  \r\na");
    EXPECT_EQ(cellText(Array{"a", Dictionary{{"k", "v"}, {"l", "w"}, {"m", "x"}}}),
              "  \r\na  \r\n  \r\na   \r\na   \r\na");
}

TEST(StringValueFromObject, DictionaryCountsOnlyLegalTexts) {
    EXPECT_EQ(cellText(Array{Dictionary{}}), "");
    EXPECT_EQ(cellText(Array{Dictionary{{"k", 1}, {"l", kLatin}, {"m", Array{"x"}}}}), "");
    EXPECT_EQ(cellText(Array{Dictionary{{"k", 1}, {"l", "v"}, {"m", kLatin}}}), "  \r\n");
}

TEST(StringValueFromObject, ManyDictionariesDoNotGrowTheCellWithoutEnd) {
    Array array;
    for (int i = 0; i < 100; ++i) array.push_back(Dictionary{{"a", "1"}, {"b", "2"}, {"c", "3"}, {"d", "4"}});
    EXPECT_LT(cellText(array).size(), std::size_t{1} << 26);
}

TEST(StringValueFromObject, RepetitionOfMoreThan16MebibytesIsLeftOut) {
    constexpr std::size_t kLongest = std::size_t{16} << 20U;
    constexpr std::size_t kSeparator = 4;
    const Dictionary twoTexts{{"k", "v"}, {"l", "w"}};
    // The cell so far is this text behind a separator; two of it with a space between them and one more are compared.
    const std::string fits(kLongest / 2 - kSeparator - 1, 'x');
    EXPECT_EQ(cellText(Array{fits, twoTexts}).size(), kSeparator + fits.size() + kSeparator + kLongest - 1);
    EXPECT_EQ(cellText(Array{fits + "x", twoTexts, "a"}), "  \r\n" + fits + "x  \r\na");
}

TEST(GetOutPutFile, FreePathIsReturnedUnchanged) {
    const ExportFolder folder;
    EXPECT_EQ(FileCreator::init()->GetOutPutFile(folder.path("Notes.html")), folder.path("Notes.html"));
}

TEST(GetOutPutFile, TakenNamesAreNumberedFrom0) {
    const ExportFolder folder;
    folder.addFile("Notes.html");
    EXPECT_EQ(FileCreator::init()->GetOutPutFile(folder.path("Notes.html")), folder.path("Notes(0).html"));
    folder.addFile("Notes(0).html");
    EXPECT_EQ(FileCreator::init()->GetOutPutFile(folder.path("Notes.html")), folder.path("Notes(1).html"));
}

TEST(GetOutPutFile, PathWithoutExtensionGetsNoDot) {
    const ExportFolder folder;
    folder.addFile("Notes");
    EXPECT_EQ(FileCreator::init()->GetOutPutFile(folder.path("Notes")), folder.path("Notes(0)"));
}

TEST(GetOutPutFile, NameThatEndsInANumberLosesItOnlyWhenItsTurnComes) {
    const ExportFolder folder;
    for (const char* name : {"a(1).html", "a(1)(0).html"}) folder.addFile(name);
    // The turn of 1 would give a(1).html again, which is taken.
    EXPECT_EQ(FileCreator::init()->GetOutPutFile(folder.path("a(1).html")), folder.path("a(1)(2).html"));
}

TEST(ExportFormats, EveryTypeHasItsExtension) {
    EXPECT_STREQ(fileExtension(static_cast<DlxExportType>(0)), "html");
    EXPECT_STREQ(fileExtension(static_cast<DlxExportType>(1)), "docx");
    EXPECT_STREQ(fileExtension(static_cast<DlxExportType>(2)), "xlsx");
    EXPECT_STREQ(fileExtension(static_cast<DlxExportType>(3)), "numbers");
    EXPECT_STREQ(fileExtension(static_cast<DlxExportType>(4)), "pages");
    EXPECT_STREQ(fileExtension(static_cast<DlxExportType>(7)), "");
}

}  // namespace
}  // namespace ZkMobileBackup
