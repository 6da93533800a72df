#include "ZkMobileBackup/records/ZkMobileBackupAddressBookRecord.h"

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"
#include "base/Log.h"

namespace ZkMobileBackup {

namespace {

constexpr std::string_view kNullText = "NULL";
constexpr std::string_view kImageKey = "image";

bool isNullText(const Value& value) {
    return value.text() != nullptr && *value.text() == kNullText;
}

/// Rows of this kind hold texts, so an image value of another kind has no wording to log.
void logImage(const Value& image) {
    if (image.text() != nullptr && !isNullText(image)) writeLog(*image.text());
}

/// The stored value; empty where there is none.
Value storedOrEmpty(const ZkMobileBackupAppDomainRecord& record, std::string_view key) {
    const Value* stored = record.recordValueForKey(key);
    return stored != nullptr ? *stored : Value("");
}

/// Only these two columns read empty for the database's NULL; the note keeps the word.
bool isEmptyWhenNull(std::string_view key) {
    return key == kAddressBookRecordName || key == kAddressBookRecordCompany;
}

}  // namespace

ZkMobileBackupAddressBookRecord::ZkMobileBackupAddressBookRecord(std::optional<Dictionary> row, bool deleted)
    : ZkMobileBackupAppDomainRecord(std::move(row), deleted) {
    if (const Value* image = recordValueForKey(kImageKey)) logImage(*image);
}

std::shared_ptr<ZkMobileBackupAddressBookRecord> ZkMobileBackupAddressBookRecord::initWithDictionary(
    std::optional<Dictionary> row, bool deleted) {
    return makeRecord<ZkMobileBackupAddressBookRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupAddressBookRecord::recordKeys() {
    static const RecordKeys keys{
        kAddressBookRecordName,        kAddressBookRecordCompany,       kAddressBookRecordMobilePhoneList,
        kAddressBookRecordAddressList, kAddressBookRecordHomePhoneList, kAddressBookRecordEmailList,
        kAddressBookRecordNote};
    return &keys;
}

const RecordKeys* ZkMobileBackupAddressBookRecord::keysOfClass() const {
    return recordKeys();
}

std::optional<Dictionary> ZkMobileBackupAddressBookRecord::exportValue() const {
    Dictionary exported;
    for (const std::string& key : *recordKeys()) {
        const Value stored = storedOrEmpty(*this, key);
        exported.set(key, isEmptyWhenNull(key) && isNullText(stored) ? Value("") : stored);
    }
    return exported;
}

}  // namespace ZkMobileBackup
