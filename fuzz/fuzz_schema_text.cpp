// Column discovery in a CREATE TABLE text. The first line of the input is the table's name.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "recovery/DlxSQLiteParser.h"

using namespace ZkMobileBackup;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t nameEnd = std::min(input.find('\n'), size);
    RawTableObject table;
    table.setName(std::string(input.substr(0, nameEnd)));
    DlxSQLiteParser::searchFiledsOfTable(&table, input.substr(std::min(nameEnd + 1, size)));
    if (table.filedList().size() != table.filedTypeList().size()) std::abort();
    return 0;
}
