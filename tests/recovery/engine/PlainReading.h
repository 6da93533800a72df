#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recovery/model/TableObject.h"
#include "tests/recovery/engine/HandMadeDatabase.h"

namespace ZkMobileBackup::testing {

/// A table as the plain reading finds it.
struct PlainTable {
    std::string name;
    std::int64_t type = RawTableObject::kOrdinaryTable;
    std::int64_t rootPage = 0;
    bool hasKey = false;
    std::vector<std::string> columns;
    std::vector<ColumnType> columnTypes;
    std::int64_t fieldCount = 0;
    std::vector<Texts> live;
    std::vector<Texts> deleted;
};

/// Reads a database image byte after byte, with none of the engine's look-up tables, shortcuts and shared rows, so that
/// the engine's results can be compared with it on any input. Without page size limits on work: for small images.
std::vector<PlainTable> readPlainly(Bytes image);

/// What a parser's tables hold, in the same form.
std::vector<PlainTable> tablesOf(const DlxSQLiteParser& parser);

bool operator==(const PlainTable& a, const PlainTable& b);
std::ostream& operator<<(std::ostream& out, const PlainTable& table);

}  // namespace ZkMobileBackup::testing
