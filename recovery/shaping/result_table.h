#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "base/Value.h"
#include "recovery/model/TableObject.h"

namespace ZkMobileBackup::shaping {

/// What a shaping works on: the tables of one parsed database, where its progress goes, and when it must stop.
struct Source {
    const std::vector<std::shared_ptr<RawTableObject>>& tables;
    const std::atomic<bool>& stop;
    std::int64_t tableCount = 0;                             ///< schema rows and free pages of the database
    std::int64_t dbIndex = 0;                                ///< ordinal of the database in a larger run
    std::function<void(const Dictionary& progress)> report;  ///< may be empty
};

// One function an application table; each returns a new table, empty but named when a needed raw table is missing.
std::shared_ptr<CustomTableObject> shapeReminders(const Source& source);
std::shared_ptr<CustomTableObject> shapeCalendar(const Source& source);
std::shared_ptr<CustomTableObject> shapeBookmarks(const Source& source);
std::shared_ptr<CustomTableObject> shapeNotes(const Source& source);

/// The contacts. `contactsMap` receives number or address -> name of the person; what it held before is dropped. It
/// stays as it is when a raw table that it needs is missing.
std::shared_ptr<CustomTableObject> shapeContacts(const Source& source, std::optional<Dictionary>& contactsMap);

// These look up names in the contacts map, null for none.
std::shared_ptr<CustomTableObject> shapeMessages(const Source& source, const Dictionary* contactsMap);
std::shared_ptr<CustomTableObject> shapeCallHistory(const Source& source, const Dictionary* contactsMap);

/// Position of a column by its name, letter case ignored; -1 for none. As an unsigned index -1 is beyond every row.
std::int64_t indexOfColumn(const std::vector<std::string>& names, std::string_view name);

/// A result row: "RowData_Identify_Key" with a text unique among live rows, then every name mapped to the empty text.
Dictionary newResultRow(const std::vector<std::string>& names);

}  // namespace ZkMobileBackup::shaping
