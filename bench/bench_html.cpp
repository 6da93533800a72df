// Time to write 100,000 rows of 5 columns as HTML against a peer that writes the same bytes through pugixml from texts
// in memory. Prints "html OWN PEER" in seconds.
#include <filesystem>
#include <iostream>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

#include "bench/Measure.h"
#include "export/HtmlCreator.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

namespace {

constexpr int kRows = 100'000;
constexpr int kRuns = 3;

using Texts = std::vector<std::vector<std::string>>;

const std::vector<std::string> kColumns = {"name", "phone", "date", "type", "duration"};

Texts makeTexts() {
    Texts rows;
    for (int i = 0; i < kRows; ++i) {
        const std::string number = std::to_string(i);
        rows.push_back({"Person " + number, "+1555010" + number, "2013-03-04 05:06",
                        i % 2 == 0 ? "Incoming" : "Outgoing", number + " Seconds"});
    }
    return rows;
}

Rows makeRows(const Texts& texts) {
    Rows rows;
    for (const auto& row : texts) {
        Dictionary dictionary;
        for (std::size_t column = 0; column < row.size(); ++column) dictionary.set(kColumns[column], row[column]);
        rows.append(std::move(dictionary));
    }
    return rows;
}

using Attribute = std::pair<const char*, std::string>;

void appendPeerCell(pugi::xml_node row, const char* name, const std::string& text, const Attribute& first,
                    const Attribute& second) {
    pugi::xml_node cell = row.append_child(name);
    cell.text().set(text.c_str());
    cell.append_attribute(first.first).set_value(first.second.c_str());
    cell.append_attribute(second.first).set_value(second.second.c_str());
}

void appendPeerHead(pugi::xml_node html) {
    pugi::xml_node head = html.append_child("head");
    pugi::xml_node meta = head.append_child("meta");
    meta.append_attribute("http-equiv").set_value("Content-Type");
    meta.append_attribute("content").set_value("text/html");
    meta.append_attribute("charset").set_value("utf-8");
    head.append_child("title").text().set("own");
}

void appendPeerTable(pugi::xml_node table, const Texts& texts) {
    const Attribute headerStyle{
        "style", "background-color:#6699cc;color:#ffffff;font-size:13px;text-align:left;padding:3px 5px 3px 5px;"};
    const Attribute cellStyle{"style", "background-color:#ffffff;font-size:12px;padding:3px 5px 3px 5px;"};
    table.append_attribute("cellspacing").set_value("0");
    table.append_attribute("border").set_value("1");
    pugi::xml_node header = table.append_child("tr");
    for (std::size_t column = kColumns.size(); column-- > 0;) {
        appendPeerCell(header, "th", kColumns[column], {"class", kColumns[column]}, headerStyle);
    }
    for (const auto& cells : texts) {
        pugi::xml_node row = table.append_child("tr");
        for (std::size_t column = kColumns.size(); column-- > 0;) {
            appendPeerCell(row, "td", cells[column], cellStyle, {"class", kColumns[column]});
        }
    }
}

void writePeer(const Texts& texts, const std::string& path) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version").set_value("1.0");
    declaration.append_attribute("encoding").set_value("utf-8");
    document.append_child(pugi::node_doctype)
        .set_value(
            "html PUBLIC \"-//W3C//DTD XHTML 1.0 Transitional//EN\" "
            "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd\"");
    pugi::xml_node html = document.append_child("html");
    html.append_attribute("xmlns").set_value("http://www.w3.org/1999/xhtml");
    appendPeerHead(html);
    pugi::xml_node body = html.append_child("body");
    body.append_attribute("bgcolor").set_value("#FFFFFF");
    appendPeerTable(body.append_child("table"), texts);
    document.save_file(path.c_str(), "\t", pugi::format_indent | pugi::format_no_empty_element_tags,
                       pugi::encoding_utf8);
}

}  // namespace

int main() {
    const Texts texts = makeTexts();
    const Rows rows = makeRows(texts);
    const TemporaryFolder folder;
    const std::string ownPath = folder.path("own.html");
    const std::string peerPath = folder.path("peer.html");
    const double own = leastSeconds(kRuns, [&] {
        std::filesystem::remove(ownPath);
        HtmlCreator::initWithDictionary(rows, folder.path("own"))->startConvert();
    });
    const double peer = leastSeconds(kRuns, [&] { writePeer(texts, peerPath); });
    if (readBytes(ownPath) != readBytes(peerPath)) {
        std::cerr << "bench_html: the peer wrote other bytes\n";
        return 1;
    }
    std::cout << "html " << own << ' ' << peer << '\n';
    return 0;
}
