#include "tool/row_table.h"

#include <algorithm>
#include <cstddef>
#include <fmt/format.h>
#include <utility>

#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "recovery/TableKeys.h"
#include "tool/output.h"
#include "tool/text.h"
#include "tool/text_table.h"

namespace zkmb {

using ZkMobileBackup::Array;
using ZkMobileBackup::Dictionary;
using ZkMobileBackup::Value;

namespace {

constexpr std::size_t kShownBytes = 400;  // more than a cell has room for

const Dictionary* messageIn(const Value& value) {
    const Dictionary* item = value.dictionary();
    return item != nullptr && item->contains(ZkMobileBackup::kMessageRecordContentsItemText) ? item : nullptr;
}

std::string textIn(const Dictionary& message, const char* key) {
    const std::string* text = message.text(key);
    return text != nullptr ? *text : "";
}

/// "2014-02-04 13:49 sent: See you"
std::string messageText(const Dictionary& message) {
    const bool sent = textIn(message, ZkMobileBackup::kMessageRecordContentsItemSend) == "1";
    return fmt::format("{} {}: {}", textIn(message, ZkMobileBackup::kMessageRecordContentsItemData),
                       sent ? "sent" : "received", textIn(message, ZkMobileBackup::kMessageRecordContentsItemText));
}

std::string conversationText(const Array& messages) {
    std::string text = fmt::format("({} {})", messages.size(), messages.size() == 1 ? "message" : "messages");
    for (const Value& value : messages) {
        if (text.size() > kShownBytes) break;
        const Dictionary* message = messageIn(value);
        if (message != nullptr) text += (&value == &messages.front() ? " " : "; ") + messageText(*message);
    }
    return text;
}

std::string cellText(const Value* value) {
    if (value == nullptr) return "";
    const Array* array = value->array();
    const bool isConversation = array != nullptr && !array->empty() && messageIn(array->front()) != nullptr;
    return isConversation ? conversationText(*array) : readable(*value);
}

}  // namespace

Dictionary withoutIdentity(Dictionary row) {
    row.remove(ZkMobileBackup::kRowIdentityKey);
    return row;
}

void RowTable::add(Dictionary row, bool deleted) {
    entries_.push_back({std::move(row), deleted});
}

void RowTable::print(const std::string& heading) const {
    const auto deleted = std::ranges::count_if(entries_, &Entry::deleted);
    writeOutput(fmt::format("{}: {} rows, {} of them deleted\n", oneLine(heading, 80), entries_.size(), deleted));
    if (entries_.empty()) return;

    const std::vector<std::string> names = columns();
    std::vector<std::string> titles = names;
    titles.insert(titles.begin(), "");
    TextTable table(titles);
    for (const Entry& entry : entries_) {
        std::vector<std::string> cells{entry.deleted ? "deleted" : "live"};
        for (const std::string& name : names) cells.push_back(cellText(entry.row.find(name)));
        table.addRow(cells);
    }
    table.print();
}

std::vector<std::string> RowTable::columns() const {
    Dictionary seen;
    for (const Entry& entry : entries_) seen.merge(entry.row);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        if (hasContent(seen.keyAt(i))) names.push_back(seen.keyAt(i));
    }
    return names;
}

bool RowTable::hasContent(const std::string& column) const {
    return std::ranges::any_of(entries_, [&](const Entry& entry) {
        const Value* value = entry.row.find(column);
        return value != nullptr && (value->text() == nullptr || !value->text()->empty());
    });
}

}  // namespace zkmb
