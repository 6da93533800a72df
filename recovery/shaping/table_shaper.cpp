#include "recovery/shaping/table_shaper.h"

#include "base/Text.h"
#include "recovery/TableKeys.h"

namespace ZkMobileBackup::shaping {

namespace {

// How many databases a run is taken to parse; progress goes beyond 1 when there are more, which is left to its reader.
constexpr double kDatabasesInRun = 9.0;

/// Entries of the progress dictionary by their places: a report is made for every row, and looks up no keys.
enum ProgressPosition : std::size_t { kProcess, kDeletedData, kAllData };

}  // namespace

TableShaper::TableShaper(const Source& source, std::string name, const std::vector<std::string>& columns)
    : source_(source),
      rows_(columns),
      progress_{
          {kBackupProcessKey, 0.0}, {kBackupDeletedDataKey, 0}, {kBackupAllDataKey, 0}, {kBackupIdentifyKey, name}},
      result_(std::make_shared<CustomTableObject>()) {
    result_->setName(std::move(name));
    result_->setFiledList(columns);
}

const RawTableObject* TableShaper::rawTable(std::string_view name) const {
    for (const std::shared_ptr<RawTableObject>& table : source_.tables) {
        if (table->name() == name) return table.get();
    }
    return nullptr;
}

void TableShaper::walk(const RawTableObject& driving, ProgressShare share, const ShapeRow& shapeRow) {
    const auto total = static_cast<double>(rowCount(driving));
    visit(driving, [&](const Row& raw, Origin origin, std::size_t position) {
        shapeRow(raw, origin);
        report(share, static_cast<double>(position) / total);
    });
}

void TableShaper::visit(const RawTableObject& driving, const VisitRow& visitRow) const {
    std::size_t position = 0;
    for (const Origin origin : {Origin::kLive, Origin::kCarved}) {
        for (const Row& raw : origin == Origin::kLive ? driving.rowList() : driving.deletedRowList()) {
            if (stopped()) return;
            visitRow(raw, origin, position++);
        }
    }
}

void TableShaper::add(Dictionary row, Origin origin) {
    RowList& rows = origin == Origin::kLive ? result_->rowList() : result_->deletedRowList();
    rows.append(std::move(row));
}

double TableShaper::shapingStart() const {
    return static_cast<double>(source_.dbIndex) / kDatabasesInRun + kOneThird + kOneEighteenth;
}

void TableShaper::report(ProgressShare share, double done) {
    reportValue(shapingStart() + share.start + done / share.divisor);
}

void TableShaper::reportValue(double process) {
    if (!source_.report) return;
    const std::size_t deleted = result_->deletedRowList().size();
    progress_.setValueAt(kProcess, process);
    progress_.setValueAt(kDeletedData, deleted);
    progress_.setValueAt(kAllData, result_->rowList().size() + deleted);
    source_.report(progress_);
}

std::size_t columnIndex(const RawTableObject& table, std::string_view name) {
    return static_cast<std::size_t>(indexOfColumn(table.filedList(), name));
}

std::size_t rowCount(const RawTableObject& table) {
    return table.rowList().size() + table.deletedRowList().size();
}

std::optional<std::string_view> cellOf(const Row& raw, std::size_t index) {
    if (raw.count() <= index) return std::nullopt;
    return raw.cell(index);
}

std::int64_t integerCell(const Row& raw, std::size_t index) {
    return integerValue(raw.cell(index));
}

}  // namespace ZkMobileBackup::shaping
