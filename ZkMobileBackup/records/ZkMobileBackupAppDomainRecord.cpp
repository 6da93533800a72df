#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"

#include "ZkMobileBackup/records/make_record.h"
#include "base/TextCleaning.h"
#include "recovery/TableKeys.h"

namespace ZkMobileBackup {

namespace {

/// Cuts one text of a row before what cannot be shown. A value of another kind stays as it is.
void cutInvisible(Dictionary& row, std::size_t position) {
    const std::string* text = row.valueAt(position).text();
    if (text == nullptr) return;
    const std::string_view visible = visiblePrefix(*text);
    if (visible.size() != text->size()) row.setValueAt(position, visible);
}

}  // namespace

ZkMobileBackupAppDomainRecord::ZkMobileBackupAppDomainRecord(std::optional<Dictionary> row, bool deleted)
    : value_(std::move(row)), deleted_(value_.has_value() && deleted) {}

ZkMobileBackupAppDomainRecord::~ZkMobileBackupAppDomainRecord() = default;

std::shared_ptr<ZkMobileBackupAppDomainRecord> ZkMobileBackupAppDomainRecord::initWithDictionary(
    std::optional<Dictionary> row, bool deleted) {
    return makeRecord<ZkMobileBackupAppDomainRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupAppDomainRecord::recordKeys() {
    return nullptr;
}

const RecordKeys* ZkMobileBackupAppDomainRecord::keysOfClass() const {
    return recordKeys();
}

const Value* ZkMobileBackupAppDomainRecord::recordValueForKey(std::string_view key) const {
    return value_ ? value_->find(key) : nullptr;
}

std::optional<Dictionary> ZkMobileBackupAppDomainRecord::exportValue() const {
    std::optional<Dictionary> exported = valueWithoutIdentity();
    if (!exported) return std::nullopt;
    for (std::size_t i = 0; i < exported->size(); ++i) cutInvisible(*exported, i);
    return exported;
}

std::optional<Dictionary> ZkMobileBackupAppDomainRecord::valueWithoutIdentity() const {
    std::optional<Dictionary> row = value_;
    if (row) row->remove(kRowIdentityKey);
    return row;
}

}  // namespace ZkMobileBackup
