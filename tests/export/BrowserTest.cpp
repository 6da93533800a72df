#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <vector>

#include "export/HtmlCreator.h"
#include "tests/export/ExportTesting.h"

namespace ZkMobileBackup {
namespace {

constexpr const char* kBrowser =
    "/usr/bin/chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
    "--disable-background-networking --disable-component-update --disable-sync --disable-dev-shm-usage";

struct Run {
    int status = -1;
    std::string output;
};

Run run(const std::string& command) {
    Run run;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    std::array<char, 4096> buffer{};
    while (const std::size_t read = fread(buffer.data(), 1, buffer.size(), pipe))
        run.output.append(buffer.data(), read);
    run.status = pclose(pipe);
    return run;
}

/// The page as the browser understands it.
std::string domOf(const std::string& page, const ExportFolder& profile) {
    const Run browser = run(std::string(kBrowser) + " --user-data-dir='" + profile.path() + "' --dump-dom 'file://" +
                            page + "' 2>'" + profile.path("log") + "'");
    EXPECT_EQ(browser.status, 0) << fileText(profile.path("log"));
    return browser.output;
}

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
    const ExportFolder profile;
    const auto creator = HtmlCreator::initWithDictionary(
        Rows({Dictionary{{"Name", "Ann & <Bo>"}, {"Phone Number", Array{"12", "34"}}},
              Dictionary{{"Name", "\xE4\xB8\xAD\xE6\x96\x87 \xC3\xA9 \xF0\x9F\x98\x80"}}}),
        folder.path("Contacts"));
    creator->startConvert();
    const std::string dom = domOf(creator->writtenPath(), profile);
    EXPECT_NE(dom.find("<title>Contacts</title>"), std::string::npos) << dom;
    EXPECT_EQ(cellTexts(dom),
              (std::vector<std::string>{"h:Phone Number", "h:Name", "d:  \n12  \n34", "d:Ann &amp; &lt;Bo&gt;",
                                        "d:", "d:\xE4\xB8\xAD\xE6\x96\x87 \xC3\xA9 \xF0\x9F\x98\x80"}));
}

TEST(Browser, ShowsTextsOfRecordsAsTextsOnly) {
    const ExportFolder folder;
    const ExportFolder profile;
    const auto creator = HtmlCreator::initWithDictionary(
        Rows({Dictionary{{"<b>", "<script>document.title='run'</script></table>"}}}), folder.path("Notes"));
    creator->startConvert();
    const std::string dom = domOf(creator->writtenPath(), profile);
    EXPECT_NE(dom.find("<title>Notes</title>"), std::string::npos) << dom;
    EXPECT_EQ(cellTexts(dom), (std::vector<std::string>{
                                  "h:&lt;b&gt;", "d:&lt;script&gt;document.title='run'&lt;/script&gt;&lt;/table&gt;"}));
}

}  // namespace
}  // namespace ZkMobileBackup
