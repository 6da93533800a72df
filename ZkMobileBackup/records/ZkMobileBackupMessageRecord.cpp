#include "ZkMobileBackup/records/ZkMobileBackupMessageRecord.h"

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/make_record.h"
#include "base/TextCleaning.h"

namespace ZkMobileBackup {

namespace {

constexpr std::string_view kSentFlag = "1";
constexpr std::string_view kMissingText = "(null)";

std::string_view textOr(const Dictionary& item, std::string_view key, std::string_view otherwise) {
    const std::string* text = item.text(key);
    return text != nullptr ? std::string_view(*text) : otherwise;
}

/// One line a message; what is no message item reads like one that lacks everything.
std::string itemLine(const Value& value) {
    static const Dictionary kNoItem;
    const Dictionary& item = value.dictionary() != nullptr ? *value.dictionary() : kNoItem;
    const bool sent = textOr(item, kMessageRecordContentsItemSend, "") == kSentFlag;
    std::string line = sent ? "Send:" : "Received:";
    line += textOr(item, kMessageRecordContentsItemData, kMissingText);
    line += ' ';
    line += textOr(item, kMessageRecordContentsItemText, kMissingText);
    return withSpacesForInvisible(line);
}

Array itemLines(const Value& items) {
    Array lines;
    if (items.array() == nullptr) return lines;
    lines.reserve(items.array()->size());
    for (const Value& item : *items.array()) lines.emplace_back(itemLine(item));
    return lines;
}

}  // namespace

std::shared_ptr<ZkMobileBackupMessageRecord> ZkMobileBackupMessageRecord::initWithDictionary(
    std::optional<Dictionary> row, bool deleted) {
    return makeRecord<ZkMobileBackupMessageRecord>(std::move(row), deleted);
}

const RecordKeys* ZkMobileBackupMessageRecord::recordKeys() {
    static const RecordKeys keys{kMessageRecordName, kMessageRecordPhone, kMessageRecordEmail, kMessageRecordContents};
    return &keys;
}

const RecordKeys* ZkMobileBackupMessageRecord::keysOfClass() const {
    return recordKeys();
}

std::optional<Dictionary> ZkMobileBackupMessageRecord::exportValue() const {
    const Value* items = recordValueForKey(kMessageRecordContents);
    if (items == nullptr) return std::nullopt;
    std::optional<Dictionary> exported = valueWithoutIdentity();
    exported->set(kMessageRecordContents, itemLines(*items));
    return exported;
}

}  // namespace ZkMobileBackup
