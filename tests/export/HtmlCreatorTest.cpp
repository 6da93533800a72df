#include <csignal>
#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <set>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "base/Text.h"
#include "export/HtmlCreator.h"
#include "platform/Xml.h"
#include "tests/export/ExportTesting.h"

namespace ZkMobileBackup {
namespace {

constexpr const char* kThStyle =
    "background-color:#6699cc;color:#ffffff;font-size:13px;text-align:left;padding:3px 5px 3px 5px;";
constexpr const char* kTdStyle = "background-color:#ffffff;font-size:12px;padding:3px 5px 3px 5px;";

Rows twoRows() {
    return Rows({Dictionary{{"A", "a1"}, {"B", "b1"}}, Dictionary{{"A", "a2"}, {"B", "b2"}}});
}

/// A page as read back, line ends kept as they were written.
class Page {
public:
    explicit Page(const std::string& path) {
        constexpr unsigned kAsWritten = (pugi::parse_full | pugi::parse_ws_pcdata_single) & ~pugi::parse_eol;
        EXPECT_TRUE(document_.load_file(path.c_str(), kAsWritten)) << path;
    }
    pugi::xml_node html() const { return document_.child("html"); }
    pugi::xml_node table() const { return html().child("body").child("table"); }
    std::vector<pugi::xml_node> tableRows() const {
        const auto rows = table().children("tr");
        return {rows.begin(), rows.end()};
    }
    /// Texts of the cells of one row, counted from the header row.
    std::vector<std::string> texts(std::size_t row) const {
        std::vector<std::string> texts;
        for (const pugi::xml_node cell : tableRows().at(row).children()) texts.emplace_back(cell.text().get());
        return texts;
    }

private:
    pugi::xml_document document_;
};

class HtmlCreatorTest : public testing::Test {
protected:
    std::string notesPath() const { return folder.path("Notes"); }

    std::shared_ptr<HtmlCreator> creatorOf(Rows rows) {
        auto creator = HtmlCreator::initWithDictionary(std::move(rows), notesPath());
        creator->setFileCreatorDelegate(&delegate);
        return creator;
    }
    Page pageOf(Rows rows) {
        const auto creator = creatorOf(std::move(rows));
        creator->startConvert();
        return Page(creator->writtenPath());
    }

    ExportFolder folder;
    RecordingWriterDelegate delegate;
};

using Texts = std::vector<std::string>;

TEST_F(HtmlCreatorTest, WritesTheWholePage) {
    creatorOf(Rows({Dictionary{{"Name", "Ann & <Bo>"}, {"Phone Number", Array{"12", "34"}}}}))->startConvert();
    const std::string th = std::string(" style=\"") + kThStyle + "\">";
    const std::string td = std::string("<td style=\"") + kTdStyle + "\"";
    EXPECT_EQ(fileText(folder.path("Notes.html")),
              "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
              "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" "
              "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\">\n"
              "<html xmlns=\"http://www.w3.org/1999/xhtml\">\n"
              "\t<head>\n"
              "\t\t<meta http-equiv=\"Content-Type\" content=\"text/html\" charset=\"utf-8\"></meta>\n"
              "\t\t<title>Notes</title>\n"
              "\t</head>\n"
              "\t<body bgcolor=\"#FFFFFF\">\n"
              "\t\t<table cellspacing=\"0\" border=\"1\">\n"
              "\t\t\t<tr>\n"
              "\t\t\t\t<th class=\"phone number\"" +
                  th +
                  "Phone Number</th>\n"
                  "\t\t\t\t<th class=\"name\"" +
                  th +
                  "Name</th>\n"
                  "\t\t\t</tr>\n"
                  "\t\t\t<tr>\n"
                  "\t\t\t\t" +
                  td +
                  " class=\"phone number\">  \r\n12  \r\n34</td>\n"
                  "\t\t\t\t" +
                  td +
                  " class=\"name\">Ann &amp; &lt;Bo&gt;</td>\n"
                  "\t\t\t</tr>\n"
                  "\t\t</table>\n"
                  "\t</body>\n"
                  "</html>\n");
}

TEST_F(HtmlCreatorTest, ColumnsStandInReverseOrderOfTheKeys) {
    const Page page = pageOf(twoRows());
    ASSERT_EQ(page.tableRows().size(), 3U);
    EXPECT_EQ(page.texts(0), (Texts{"B", "A"}));
    EXPECT_EQ(page.texts(1), (Texts{"b1", "a1"}));
    EXPECT_EQ(page.texts(2), (Texts{"b2", "a2"}));
}

TEST_F(HtmlCreatorTest, RowsInAnotherKeyOrderFollowTheFirstRow) {
    const Page page = pageOf(Rows({Dictionary{{"A", "a1"}, {"B", "b1"}}, Dictionary{{"B", "b2"}, {"A", "a2"}}}));
    EXPECT_EQ(page.texts(2), (Texts{"b2", "a2"}));
}

TEST_F(HtmlCreatorTest, KeysOfLaterRowsMakeNoColumns) {
    const Page page = pageOf(Rows({Dictionary{{"A", "a1"}}, Dictionary{{"A", "a2"}, {"C", "c2"}}}));
    EXPECT_EQ(page.texts(0), Texts{"A"});
    EXPECT_EQ(page.texts(2), Texts{"a2"});
}

TEST_F(HtmlCreatorTest, MissingKeyMakesAnEmptyCellWithStyleAndClass) {
    creatorOf(Rows({Dictionary{{"A", "a1"}, {"B", "b1"}}, Dictionary{{"B", "b2"}}}))->startConvert();
    const std::string cell = std::string("<td style=\"") + kTdStyle + "\" class=\"a\"></td>";
    EXPECT_NE(fileText(folder.path("Notes.html")).find(cell), std::string::npos);
}

TEST_F(HtmlCreatorTest, NumberMakesAnEmptyCell) {
    creatorOf(Rows({Dictionary{{"A", 7}}}))->startConvert();
    const std::string cell = std::string("<td style=\"") + kTdStyle + "\" class=\"a\"></td>";
    EXPECT_NE(fileText(folder.path("Notes.html")).find(cell), std::string::npos);
}

TEST_F(HtmlCreatorTest, NullInTheFirstRowStillMakesAColumn) {
    const Page page = pageOf(Rows({Dictionary{{"A", Value()}, {"B", "b1"}}, Dictionary{{"A", "a2"}, {"B", "b2"}}}));
    EXPECT_EQ(page.texts(0), (Texts{"B", "A"}));
    EXPECT_EQ(page.texts(1), (Texts{"b1", ""}));
    EXPECT_EQ(page.texts(2), (Texts{"b2", "a2"}));
}

TEST_F(HtmlCreatorTest, ClassIsTheKeyInLowerCaseWithItsSpaces) {
    const Page page = pageOf(Rows({Dictionary{{"Phone Number", "1"}, {"\xC3\x89T\xC3\x89", "2"}}}));
    const pugi::xml_node header = page.tableRows()[0].first_child();
    EXPECT_STREQ(header.attribute("class").value(), "\xC3\xA9t\xC3\xA9");
    EXPECT_STREQ(header.next_sibling().attribute("class").value(), "phone number");
    EXPECT_STREQ(page.tableRows()[1].last_child().attribute("class").value(), "phone number");
}

TEST_F(HtmlCreatorTest, FirstRowWithoutKeysMakesRowsWithoutCells) {
    const Page page = pageOf(Rows({Dictionary{}, Dictionary{{"A", "a"}}}));
    ASSERT_EQ(page.tableRows().size(), 3U);
    EXPECT_TRUE(page.texts(2).empty());
}

TEST_F(HtmlCreatorTest, WithoutRowsTheBodyIsEmpty) {
    const Page page = pageOf(Rows());
    EXPECT_STREQ(page.html().child("body").attribute("bgcolor").value(), "#FFFFFF");
    EXPECT_FALSE(page.html().child("body").first_child());
}

TEST_F(HtmlCreatorTest, TitleIsTheFileNameWithoutExtension) {
    const auto creator = HtmlCreator::initWithDictionary(twoRows(), folder.path("My Notes.v1"));
    creator->startConvert();
    EXPECT_EQ(creator->writtenPath(), folder.path("My Notes.v1.html"));
    EXPECT_STREQ(Page(creator->writtenPath()).html().child("head").child_value("title"), "My Notes");
}

TEST_F(HtmlCreatorTest, EveryCharacterThatXmlCarriesReadsBack) {
    std::u16string units;
    for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
        if (unit < 0xD800 || unit > 0xDFFF) units.push_back(static_cast<char16_t>(unit));
    }
    const std::string text = toUtf8(units + u"\U0001F600");
    const Page page = pageOf(Rows({Dictionary{{"A", text}}}));
    EXPECT_EQ(page.texts(1), Texts{xmlText(text)});
}

TEST_F(HtmlCreatorTest, OddTextsReadBack) {
    for (const std::string text : {" ", "\n", "]]>", "&#13;", "<td>", "\"'", "a\r\nb", "\t"}) {
        EXPECT_EQ(pageOf(Rows({Dictionary{{"A", text}, {text, "b"}}})).texts(1), (Texts{"b", text}));
        EXPECT_EQ(pageOf(Rows({Dictionary{{"A", text}, {text, "b"}}})).texts(0), (Texts{text, "A"}));
    }
}

TEST_F(HtmlCreatorTest, TextThatIsNoUtf8StillMakesAPageThatOpens) {
    EXPECT_EQ(pageOf(Rows({Dictionary{{"A\xFF", std::string("\0a\xFF\x01z", 5)}}})).texts(1), Texts{"az"});
}

TEST_F(HtmlCreatorTest, ReportsProgressAfterTheSkeletonEveryRowAndTheFile) {
    creatorOf(twoRows())->startConvert();
    ASSERT_EQ(delegate.progress.size(), 5U);
    const double expected[] = {0.2, 0.2, 0.5, 0.8, 1.0};
    for (std::size_t i = 0; i < 5; ++i) EXPECT_DOUBLE_EQ(delegate.progress[i], expected[i]);
}

TEST_F(HtmlCreatorTest, ProgressFillsTheSliceOfTheFileInItsBatch) {
    const auto creator = creatorOf(twoRows());
    creator->setIndex(1);
    creator->setCount(4);
    creator->startConvert();
    EXPECT_DOUBLE_EQ(delegate.progress.front(), 0.2 / 4 + 0.25);
    EXPECT_DOUBLE_EQ(delegate.progress.back(), 0.5);
}

TEST_F(HtmlCreatorTest, NeverReportsCompletionOfAWrittenFile) {
    creatorOf(twoRows())->startConvert();
    EXPECT_TRUE(delegate.completions.empty());
    EXPECT_EQ(delegate.starts, 0);
}

TEST_F(HtmlCreatorTest, StoppedBeforeTheRowsLeavesNoFile) {
    const auto creator = creatorOf(twoRows());
    creator->setIsStop(true);
    creator->startConvert();
    EXPECT_TRUE(folder.names().empty());
    EXPECT_EQ(delegate.completions, std::vector<bool>{false});
    EXPECT_TRUE(creator->DicKeyArr().empty());
    EXPECT_DOUBLE_EQ(delegate.progress.back(), 0.2);
}

TEST_F(HtmlCreatorTest, StoppedWhileRowsAreAddedLeavesNoFile) {
    const auto creator = creatorOf(twoRows());
    delegate.onProgress = [&creator](double process) { creator->setIsStop(process > 0.4); };
    creator->startConvert();
    EXPECT_TRUE(folder.names().empty());
    EXPECT_TRUE(creator->writtenPath().empty());
    EXPECT_EQ(delegate.completions, std::vector<bool>{false});
    EXPECT_EQ(delegate.progress.size(), 3U);  // the second row was not begun
}

TEST_F(HtmlCreatorTest, StoppedAfterTheLastRowLeavesNoFile) {
    const auto creator = creatorOf(twoRows());
    delegate.onProgress = [&creator](double process) { creator->setIsStop(process > 0.7); };
    creator->startConvert();
    EXPECT_TRUE(folder.names().empty());
    EXPECT_EQ(delegate.completions, std::vector<bool>{false});
}

TEST_F(HtmlCreatorTest, SecondFileOfOneNameIsNumbered) {
    creatorOf(twoRows())->startConvert();
    const std::string first = fileText(folder.path("Notes.html"));
    creatorOf(Rows())->startConvert();
    EXPECT_EQ(folder.names(), (Texts{"Notes(0).html", "Notes.html"}));
    EXPECT_EQ(fileText(folder.path("Notes.html")), first);
}

TEST_F(HtmlCreatorTest, ThirdFileOfOneNameIsNumberedOn) {
    folder.addFile("Notes.html");
    folder.addFile("Notes(0).html");
    const auto creator = creatorOf(twoRows());
    creator->startConvert();
    EXPECT_EQ(creator->writtenPath(), folder.path("Notes(1).html"));
    EXPECT_EQ(fileText(folder.path("Notes.html")), "there before");
    EXPECT_EQ(fileText(folder.path("Notes(0).html")), "there before");
}

TEST_F(HtmlCreatorTest, ManyWritersOfOneNameLoseNoFile) {
    constexpr std::size_t kWriters = 8;
    std::vector<std::shared_ptr<HtmlCreator>> creators;
    for (std::size_t i = 0; i < kWriters; ++i) {
        creators.push_back(HtmlCreator::initWithDictionary(Rows({Dictionary{{"A", std::to_string(i)}}}), notesPath()));
    }
    std::vector<std::thread> threads;
    for (const auto& creator : creators) threads.emplace_back([&creator] { creator->startConvert(); });
    for (std::thread& thread : threads) thread.join();
    std::set<std::string> texts;
    for (const std::string& name : folder.names()) texts.insert(Page(folder.path(name)).texts(1).at(0));
    EXPECT_EQ(texts.size(), kWriters);
    EXPECT_EQ(folder.names().size(), kWriters);
}

TEST_F(HtmlCreatorTest, FileThatCannotBeWrittenIsAFailureAndProgressStillEnds) {
    folder.addFile("blocked");
    const auto creator = HtmlCreator::initWithDictionary(twoRows(), folder.path("blocked/Notes"));
    creator->setFileCreatorDelegate(&delegate);
    creator->startConvert();
    EXPECT_FALSE(creator->failure().empty());
    EXPECT_TRUE(creator->writtenPath().empty());
    EXPECT_DOUBLE_EQ(delegate.progress.back(), 1.0);
    EXPECT_TRUE(delegate.completions.empty());
}

/// Writes where the file system takes 100 bytes a file, and ends the process: 0 when that is a failure with a text.
[[noreturn]] void writeUnderASmallLimit(const std::string& savePath) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{100, 100};
    setrlimit(RLIMIT_FSIZE, &limit);
    const auto creator = HtmlCreator::initWithDictionary(twoRows(), savePath);
    creator->startConvert();
    _exit(!creator->failure().empty() && creator->writtenPath().empty() ? 0 : 1);
}

TEST_F(HtmlCreatorTest, FullDiskIsAFailureAndLeavesNothingBehind) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // other tests have left threads behind
    EXPECT_EXIT(writeUnderASmallLimit(notesPath()), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(HtmlCreatorTest, KeepsWhatItWasMadeWith) {
    const auto creator = creatorOf(twoRows());
    EXPECT_EQ(creator->DictionArr().size(), 2U);
    EXPECT_EQ(creator->SavePath(), notesPath());
    EXPECT_TRUE(creator->DicKeyArr().empty());
    EXPECT_EQ(creator->getAllKey(), (Texts{"A", "B"}));
}

TEST_F(HtmlCreatorTest, ColumnKeysAreFilledWithTheHeaderRow) {
    const auto creator = creatorOf(twoRows());
    creator->startConvert();
    EXPECT_EQ(creator->DicKeyArr(), (Texts{"A", "B"}));
}

TEST_F(HtmlCreatorTest, ThereAreNoKeysAndNoTableWithoutRows) {
    const auto creator = creatorOf(Rows());
    EXPECT_TRUE(creator->getAllKey().empty());
    EXPECT_FALSE(creator->getTableNode());
}

TEST_F(HtmlCreatorTest, TableTakesNoMoreRowsThanThereAre) {
    for (const std::int32_t count : {-1, 0, 1, 2, 3}) {
        pugi::xml_document document;
        creatorOf(twoRows())->SetTable(appendElement(document, "table"), count);
        const auto rows = document.child("table").children("tr");
        EXPECT_EQ(std::distance(rows.begin(), rows.end()), std::min(std::max(count, 0), 2) + 1) << count;
    }
}

TEST_F(HtmlCreatorTest, CopyOfTheRowsIsNotNeeded) {
    Rows rows = twoRows();
    const auto creator = creatorOf(rows);
    rows.append(Dictionary{{"A", "late"}});
    creator->startConvert();
    EXPECT_EQ(Page(creator->writtenPath()).tableRows().size(), 3U);
}

}  // namespace
}  // namespace ZkMobileBackup
