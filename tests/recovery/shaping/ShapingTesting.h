#pragma once

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "recovery/TableKeys.h"
#include "recovery/shaping/result_table.h"
#include "tests/support/DictionaryKeys.h"

namespace ZkMobileBackup::testing {

using Cells = std::vector<std::string>;
using Entries = std::vector<std::pair<std::string, std::string>>;

/// One progress report, taken apart.
struct Report {
    double process;
    std::int64_t deleted;
    std::int64_t all;
    std::string table;
    bool operator==(const Report&) const = default;
};

inline void PrintTo(const Report& report, std::ostream* out) {
    *out << report.table << " at " << ::testing::PrintToString(report.process) << ": " << report.deleted << " of "
         << report.all << " deleted";
}

inline Report reportOf(const Dictionary& progress) {
    return {*progress.find(kBackupProcessKey)->floating(), *progress.find(kBackupDeletedDataKey)->integer(),
            *progress.find(kBackupAllDataKey)->integer(), *progress.text(kBackupIdentifyKey)};
}

/// A parsed database that is made up row by row, and a recorder of what a shaping reports.
struct Database {
    std::vector<std::shared_ptr<RawTableObject>> tables;
    std::atomic<bool> stop{false};
    std::int64_t tableCount = 1;
    std::int64_t dbIndex = 0;
    std::size_t stopAfterReports = static_cast<std::size_t>(-1);
    std::vector<Report> reports;

    void add(const std::string& name, const std::vector<std::string>& columns, const std::vector<Cells>& live,
             const std::vector<Cells>& carved = {}) {
        auto table = std::make_shared<RawTableObject>();
        table->setName(name);
        table->setFiledList(columns);
        for (const Cells& row : live) table->rowList().append(row);
        for (const Cells& row : carved) table->deletedRowList().append(row);
        tables.push_back(std::move(table));
    }

    shaping::Source source() {
        return {.tables = tables,
                .stop = stop,
                .tableCount = tableCount,
                .dbIndex = dbIndex,
                .report = [this](const Dictionary& progress) { record(progress); }};
    }

    template <typename Shape, typename... Arguments>
    std::shared_ptr<CustomTableObject> shaped(Shape shape, Arguments&&... arguments) {
        return shape(source(), std::forward<Arguments>(arguments)...);
    }

    void record(const Dictionary& progress) {
        reports.push_back(reportOf(progress));
        if (reports.size() == stopAfterReports) stop = true;
    }
};

/// Result rows without their identities.
inline std::vector<Dictionary> contentOf(const RowList& rows) {
    std::vector<Dictionary> content;
    for (const Row& row : rows) content.emplace_back(*row.dictionary()).remove(kRowIdentityKey);
    return content;
}

/// A result row of texts alone without its identity, in its own order.
inline Entries entriesOf(const Row& row) {
    Entries entries;
    const Dictionary& dictionary = *row.dictionary();
    for (std::size_t i = 0; i < dictionary.size(); ++i) {
        if (dictionary.keyAt(i) == kRowIdentityKey) continue;
        entries.emplace_back(dictionary.keyAt(i), *dictionary.valueAt(i).text());
    }
    return entries;
}

/// The same of a row that may not be there.
inline Entries entriesOf(const RowList& rows, std::size_t position) {
    return position < rows.size() ? entriesOf(rows[position]) : Entries{{"no such row", ""}};
}

inline std::vector<Entries> entriesOf(const RowList& rows) {
    std::vector<Entries> all;
    for (const Row& row : rows) all.push_back(entriesOf(row));
    return all;
}

/// One column of every row.
inline std::vector<std::string> columnOf(const RowList& rows, const std::string& column) {
    std::vector<std::string> texts;
    for (const Row& row : rows) {
        const std::string* text = row.dictionary()->text(column);
        texts.push_back(text != nullptr ? *text : "(missing)");
    }
    return texts;
}

}  // namespace ZkMobileBackup::testing
