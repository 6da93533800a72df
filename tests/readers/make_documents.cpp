// Writes documents of every packaged format into a folder, for other programs to read:
//   make_documents FOLDER [FORMAT]
// makes FOLDER/<profile>/<table>.<format> of one format or all, and FOLDER/tables.json with what each table holds.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "export/DlxExporter.h"
#include "export/ExportRows.h"

namespace ZkMobileBackup {
namespace {

using Json = nlohmann::ordered_json;

struct NamedProfile {
    Profile profile;
    const char* name;
};
constexpr NamedProfile kProfiles[] = {{Profile::kLegacy, "legacy"}, {Profile::kStandard, "standard"}};

struct Format {
    const char* name;
    std::shared_ptr<FileCreator> (DlxExporter::*makeWriter)(Rows, std::string) const;
};
constexpr Format kFormats[] = {{"docx", &DlxExporter::docxExporterWithData},
                               {"xlsx", &DlxExporter::xlsxExporterWithData},
                               {"numbers", &DlxExporter::numbersExporterWithData},
                               {"pages", &DlxExporter::pagesExporterWithData}};

Rows plainTable(std::size_t rowCount, std::size_t columnCount) {
    std::vector<Dictionary> rows(rowCount);
    for (std::size_t r = 0; r < rowCount; ++r) {
        for (std::size_t c = 0; c < columnCount; ++c) {
            rows[r].set(fmt::format("Column{}", c), fmt::format("cell{}x{}", r, c));
        }
    }
    return Rows(std::move(rows));
}

Rows everyKindOfText() {
    const std::vector<std::string> texts = {
        "plain",
        "  blanks at  both ends  ",
        "<tag attribute=\"value\"> & &amp; 'quoted' ]]> <![CDATA[",
        "r\u00E9sum\u00E9 \u00DF \u0130 \u03A9",
        "\u4E2D\u6587\u65E5\u672C\u8A9E\uD55C\uAD6D\uC5B4",
        "\u05E9\u05DC\u05D5\u05DD \u0645\u0631\u062D\u0628\u0627",
        "\U0001F600 \U0001F468\u200D\U0001F469\u200D\U0001F467 \U0001F1EB\U0001F1F7",
        "e\u0301 combining, \u00A0no-break, \uFEFFmark, \U0010FFFD last",
        "first line\nsecond line\n\nfourth line",
        "tab\tbetween",
        "=1+2",
        "007",
        "12345678901234567890",
        "2012-12-21 10:11:12",
        "http://example.org/?a=1&b=2",
        "averyveryverylongwordwithoutanyblankinit.someone@some.example.org",
        "",
    };
    std::vector<Dictionary> rows;
    for (const std::string& text : texts) rows.push_back(Dictionary{{"Number", "7"}, {"Text", text}});
    rows.push_back(Dictionary{{"Text", Array{"12", "34"}}, {"Only here", "x"}});
    rows.push_back(Dictionary{{"Number", 8}, {"Text", Value()}});
    return Rows(std::move(rows));
}

Rows longCell() {
    std::string text;
    while (text.size() < (std::size_t{1} << 20)) text += fmt::format("word{} ", text.size());
    return Rows({Dictionary{{"Name", "short"}, {"Text", text}}});
}

Tables tables() {
    return Tables({{"texts", everyKindOfText()},
                   {"long", longCell()},
                   {"1x3", plainTable(1, 3)},
                   {"49x3", plainTable(49, 3)},
                   {"50x3", plainTable(50, 3)},
                   {"500x3", plainTable(500, 3)},
                   {"1x30", plainTable(1, 30)},
                   {"50x30", plainTable(50, 30)}});
}

Json cellTexts(const Rows& rows) {
    const auto base = FileCreator::init();
    Json list = Json::array();
    for (const Dictionary& row : rows) {
        Json texts = Json::object();
        for (std::size_t i = 0; i < row.size(); ++i) {
            texts[row.keyAt(i)] = base->stringValueFromObject(row.valueAt(i));
        }
        list.push_back(std::move(texts));
    }
    return list;
}

bool writeDocument(const Format& format, const Tables::Table& table, const std::string& folder, Profile profile) {
    const auto writer = (*DlxExporter::init().*format.makeWriter)(table.rows, folder + "/" + table.name);
    writer->setProfile(profile);
    writer->startConvert();
    if (!writer->failure().empty()) std::fprintf(stderr, "%s\n", writer->failure().c_str());
    return writer->failure().empty();
}

/// `only` names a format; all of them are written where it is empty.
int makeDocuments(const std::string& folder, const std::string& only) {
    setenv("XDG_DATA_HOME", (folder + "/data").c_str(), 1);
    bool written = true;
    Json contents = Json::object();
    for (const Tables::Table& table : tables()) {
        contents[table.name] = cellTexts(table.rows);
        for (const NamedProfile& profile : kProfiles) {
            const std::string target = folder + "/" + profile.name;
            std::filesystem::create_directories(target);
            for (const Format& format : kFormats) {
                if (!only.empty() && only != format.name) continue;
                written &= writeDocument(format, table, target, profile.profile);
            }
        }
    }
    std::ofstream(folder + "/tables.json") << contents.dump(1) << '\n';
    return written ? 0 : 1;
}

}  // namespace
}  // namespace ZkMobileBackup

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: make_documents FOLDER [FORMAT]\n");
        return 2;
    }
    try {
        return ZkMobileBackup::makeDocuments(std::filesystem::absolute(argv[1]), argc == 3 ? argv[2] : "");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_documents: %s\n", error.what());
        return 1;
    }
}
