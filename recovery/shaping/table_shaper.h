#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "recovery/shaping/result_table.h"
#include "recovery/shaping/row_factory.h"

namespace ZkMobileBackup::shaping {

/// The text that a raw row holds for SQL's NULL.
inline constexpr std::string_view kNullCell = "NULL";

/// Which list of its raw table a row comes from.
enum class Origin { kLive, kCarved };

/// The part of a database's progress that one table takes.
struct ProgressShare {
    double start;    ///< where it begins, counted from where the shaping of all tables begins
    double divisor;  ///< one over its length
};

// Summands of progress as they are printed and compared: never computed, so that every build adds the same numbers.
inline constexpr double kOneThird = 0.3333333333333333;
inline constexpr double kOneEighteenth = 0.05555555555555555;
inline constexpr double kOneThirtySixth = 0.027777777777777776;

/// The scheme that all result tables share: finds the raw tables and their columns, walks the live rows and then the
/// carved ones, looks at the stop flag before each row and reports progress after it. What is made of a row is the
/// table's own rule.
class TableShaper {
public:
    using ShapeRow = std::function<void(const Row& raw, Origin origin)>;
    using VisitRow = std::function<void(const Row& raw, Origin origin, std::size_t position)>;

    /// `source` must outlive the shaper.
    TableShaper(const Source& source, std::string name, const std::vector<std::string>& columns);

    /// The first raw table of exactly this name, null for none.
    const RawTableObject* rawTable(std::string_view name) const;

    /// Calls `shapeRow` for every row of `driving`. A stop request ends the walk with what was made so far.
    void walk(const RawTableObject& driving, ProgressShare share, const ShapeRow& shapeRow);

    Dictionary newRow() const { return rows_.newRow(); }
    /// Adds a result row to the live or to the deleted rows.
    void add(Dictionary row, Origin origin);

    const std::shared_ptr<CustomTableObject>& result() const { return result_; }

    // For tables that walk or count in a way of their own.

    /// The walk without its reports. `position` counts live and carved rows on.
    void visit(const RawTableObject& driving, const VisitRow& visitRow) const;
    bool stopped() const { return source_.stop.load(std::memory_order_relaxed); }
    /// Where the shaping of all tables begins, as progress of the whole run.
    double shapingStart() const;
    /// Reports `process`, the progress of the whole run, with the counts of both lists as they stand.
    void reportValue(double process);

private:
    void report(ProgressShare share, double done);

    const Source& source_;
    RowFactory rows_;
    Dictionary progress_;  // filled anew for each report; a copy that the receiver keeps stays as it is
    std::shared_ptr<CustomTableObject> result_;
};

/// Index of a column by its name, letter case ignored. A column that is not there gets the largest index of all: no row
/// is that long, so its cells are missing everywhere and it needs no test of its own.
std::size_t columnIndex(const RawTableObject& table, std::string_view name);
inline constexpr auto kMissingColumn = static_cast<std::size_t>(-1);

/// Number of a table's rows, live and carved.
std::size_t rowCount(const RawTableObject& table);

/// A cell, nothing where the row is shorter: carved rows often are.
std::optional<std::string_view> cellOf(const Row& raw, std::size_t index);
/// The whole number that a cell begins with; 0 without one and without the cell.
std::int64_t integerCell(const Row& raw, std::size_t index);

}  // namespace ZkMobileBackup::shaping
