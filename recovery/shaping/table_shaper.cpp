#include "recovery/shaping/table_shaper.h"

#include "base/Text.h"
#include "recovery/TableKeys.h"

namespace ZkMobileBackup::shaping {

namespace {

// How many databases a run is taken to parse; progress goes beyond 1 when there are more, which is left to its reader.
constexpr double kDatabasesInRun = 9.0;

/// Where the shaping of a database's tables begins.
double shapingStart(const Source& source) {
    return static_cast<double>(source.dbIndex) / kDatabasesInRun + kOneThird + kOneEighteenth;
}

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
    const RowList& live = driving.rowList();
    const RowList& carved = driving.deletedRowList();
    const std::size_t total = live.size() + carved.size();
    for (std::size_t i = 0; i < total; ++i) {
        if (stopped()) return;
        if (i < live.size()) {
            shapeRow(live[i], Origin::kLive);
        } else {
            shapeRow(carved[i - live.size()], Origin::kCarved);
        }
        report(share, static_cast<double>(i) / static_cast<double>(total));
    }
}

void TableShaper::add(Dictionary row, Origin origin) {
    RowList& rows = origin == Origin::kLive ? result_->rowList() : result_->deletedRowList();
    rows.append(std::move(row));
}

void TableShaper::report(ProgressShare share, double done) {
    if (!source_.report) return;
    const std::size_t deleted = result_->deletedRowList().size();
    progress_.set(kBackupProcessKey, shapingStart(source_) + share.start + done / share.divisor);
    progress_.set(kBackupDeletedDataKey, deleted);
    progress_.set(kBackupAllDataKey, result_->rowList().size() + deleted);
    source_.report(progress_);
}

std::size_t columnIndex(const RawTableObject& table, std::string_view name) {
    return static_cast<std::size_t>(indexOfColumn(table.filedList(), name));
}

std::optional<std::string_view> cellOf(const Row& raw, std::size_t index) {
    if (raw.count() <= index) return std::nullopt;
    return raw.cell(index);
}

std::int64_t integerCell(const Row& raw, std::size_t index) {
    return integerValue(raw.cell(index));
}

}  // namespace ZkMobileBackup::shaping
