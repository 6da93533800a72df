#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <vector>

#include "export/HtmlCreator.h"
#include "tests/export/ExportTesting.h"
#include "tests/support/Browser.h"

namespace ZkMobileBackup {
namespace {

/// Texts of the header and data cells inside the first table.
std::vector<std::string> cellTexts(const std::string& dom) {
    const std::size_t start = dom.find("<table cellspacing=\"0\" border=\"1\">");
    const std::size_t end = dom.find("</table>");
    EXPECT_LT(start, end) << dom;
    if (start >= end) return {};
    const std::string table = dom.substr(start, end - start);
    const std::regex cell("<t([hd]) [^>]*>([^<]*)</t[hd]>");
    std::vector<std::string> texts;
    for (std::sregex_iterator i(table.begin(), table.end(), cell), none; i != none; ++i) {
        texts.push_back((*i)[1].str() + ":" + (*i)[2].str());
    }
    return texts;
}

TEST(Browser, ShowsTheRowsInTheirTable) {
    const ExportFolder folder;
    const auto creator = HtmlCreator::initWithDictionary(
        Rows({Dictionary{{"Name", "Ann & <Bo>"}, {"Phone Number", Array{"12", "34"}}},
              Dictionary{{"Name", "\xE4\xB8\xAD\xE6\x96\x87 \xC3\xA9 \xF0\x9F\x98\x80"}}}),
        folder.path("Contacts"));
    creator->startConvert();
    const std::string dom = domOf(creator->writtenPath());
    EXPECT_NE(dom.find("<title>Contacts</title>"), std::string::npos) << dom;
    EXPECT_EQ(cellTexts(dom),
              (std::vector<std::string>{"h:Phone Number", "h:Name", "d:  \n12  \n34", "d:Ann &amp; &lt;Bo&gt;",
                                        "d:", "d:\xE4\xB8\xAD\xE6\x96\x87 \xC3\xA9 \xF0\x9F\x98\x80"}));
}

TEST(Browser, ShowsTextsOfRecordsAsTextsOnly) {
    const ExportFolder folder;
    const auto creator = HtmlCreator::initWithDictionary(
        Rows({Dictionary{{"<b>", "<script>document.title='run'</script></table>"}}}), folder.path("Notes"));
    creator->startConvert();
    const std::string dom = domOf(creator->writtenPath());
    EXPECT_NE(dom.find("<title>Notes</title>"), std::string::npos) << dom;
    EXPECT_EQ(cellTexts(dom), (std::vector<std::string>{
                                  "h:&lt;b&gt;", "d:&lt;script&gt;document.title='run'&lt;/script&gt;&lt;/table&gt;"}));
}

}  // namespace
}  // namespace ZkMobileBackup
