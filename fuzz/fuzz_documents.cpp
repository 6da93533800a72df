// Every packaged document in both profiles over an arbitrary table, up to the packing. The input is text, one line a
// row; a row's cells are separated by tabs, each "<column>=<value>". In a value "|" stands for a line feed, and it is
//   [<value>,<value>...   an array
//   {<text>;<text>...     a dictionary of texts
//   #...                  a number, which documents show as an empty cell
//   anything else         a text
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Log.h"
#include "export/DocxCreator.h"
#include "export/NumbersCreator.h"
#include "export/PagesCreator.h"
#include "export/XlsxCreater.h"
#include "platform/Xml.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

namespace {

// A document may rightly have as many cells as the product of these.
constexpr std::size_t kRowLimit = 60;
constexpr std::size_t kCellLimit = 900;

std::vector<std::string_view> split(std::string_view text, char separator, std::size_t most) {
    std::vector<std::string_view> parts;
    for (std::size_t start = 0; start <= text.size() && parts.size() < most;) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string textOf(std::string_view input) {
    std::string text(input);
    std::ranges::replace(text, '|', '\n');
    return text;
}

Value dictionaryOf(std::string_view input) {
    Dictionary dictionary;
    for (const std::string_view text : split(input, ';', kCellLimit)) {
        dictionary.set(std::to_string(dictionary.size()), textOf(text));
    }
    return dictionary;
}

Value entryOf(std::string_view input) {
    if (input.starts_with('{')) return dictionaryOf(input.substr(1));
    if (input.starts_with('#')) return static_cast<std::int64_t>(input.size());
    return textOf(input);
}

Value valueOf(std::string_view input) {
    if (!input.starts_with('[')) return entryOf(input);
    Array array;
    for (const std::string_view entry : split(input.substr(1), ',', kCellLimit)) array.push_back(entryOf(entry));
    return array;
}

Dictionary rowOf(std::string_view line) {
    Dictionary row;
    if (line.empty()) return row;
    for (const std::string_view cell : split(line, '\t', kCellLimit / kRowLimit)) {
        const std::size_t separator = std::min(cell.find('='), cell.size());
        const std::size_t value = std::min(separator + 1, cell.size());
        row.set(textOf(cell.substr(0, separator)), valueOf(cell.substr(value)));
    }
    return row;
}

Rows rowsOf(std::string_view input) {
    Rows rows;
    for (const std::string_view line : split(input, '\n', kRowLimit)) rows.append(rowOf(line));
    return rows;
}

[[noreturn]] void fail(std::string_view what, std::string_view about) {
    std::cerr << what << ": " << about << '\n';
    std::abort();
}

void checkPart(const std::string& name, const std::vector<std::uint8_t>& bytes) {
    pugi::xml_document document;
    const pugi::xml_parse_result result = document.load_buffer(bytes.data(), bytes.size());
    if (!result || document.document_element().empty()) fail(name, result.description());
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!isXmlText(text)) fail(name, "a character that XML cannot carry");
}

/// A writer that looks at the parts where others pack them.
template <typename Creator>
class Unpacked : public Creator {
public:
    Unpacked(Rows rows, std::string savePath) : Creator(std::move(rows), std::move(savePath)) {}

protected:
    std::string pack(const std::string& stageFolder, const std::string&) override {
        if (!this->failure().empty()) fail(stageFolder, this->failure());
        for (const auto& [name, bytes] : folderContent(stageFolder)) {
            if (name.ends_with(".xml") || name.ends_with(".rels")) checkPart(name, bytes);
        }
        return {};
    }
};

const TemporaryFolder& folder() {
    static const TemporaryFolder instance;
    return instance;
}

template <typename Creator>
void write(const Rows& rows) {
    for (const Profile profile : {Profile::kLegacy, Profile::kStandard}) {
        Unpacked<Creator> creator(rows, folder().path("document"));
        creator.setProfile(profile);
        creator.startConvert();
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Waiting for a disk would take most of the time.
    constexpr const char* kFilesInMemory = "/dev/shm";
    if (std::filesystem::is_directory(kFilesInMemory)) setenv("TMPDIR", kFilesInMemory, 1);
    setenv("XDG_DATA_HOME", folder().path().c_str(), 1);
    setLogSink([](std::string_view) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Rows rows = rowsOf({reinterpret_cast<const char*>(data), size});
    write<DocxCreator>(rows);
    write<XlsxCreater>(rows);
    write<NumbersCreator>(rows);
    write<PagesCreator>(rows);
    return 0;
}
