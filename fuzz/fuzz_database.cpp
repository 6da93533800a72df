// The whole recovery of a database image.
#include <cstdint>
#include <span>
#include <string_view>

#include "base/Log.h"
#include "recovery/DlxSQLiteParser.h"

using namespace ZkMobileBackup;

namespace {

// Small enough for many runs a second, large enough for every kind of page to be met.
constexpr std::uint64_t kPageVisits = 300;

std::size_t cellBytes(const RowList& rows) {
    std::size_t count = 0;
    for (const Row& row : rows) {
        for (const std::string_view cell : row) count += cell.size();
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    setLogSink([](std::string_view /*line*/) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto parser = DlxSQLiteParser::initWithDBData(std::span(data, size));
    parser->sqliteDBHeader()->setMaxPageVisits(kPageVisits);
    parser->parser();
    volatile std::size_t read = 0;
    for (const auto& table : parser->tableList()) {
        read = read + cellBytes(table->rowList()) + cellBytes(table->deletedRowList());
    }
    return 0;
}
