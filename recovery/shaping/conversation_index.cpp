#include "recovery/shaping/conversation_index.h"

#include <algorithm>

#include "base/Text.h"
#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

ConversationIndex::ConversationIndex(const RowList& chats, std::size_t keyColumn) {
    for (const Row& chat : chats) {
        if (const auto key = cellOf(chat, keyColumn)) keys_.push_back({integerValue(*key), *key});
    }
    std::sort(keys_.begin(), keys_.end());
    keys_.erase(std::unique(keys_.begin(), keys_.end()), keys_.end());
    conversations_.resize(keys_.size());
}

Conversation* ConversationIndex::find(std::string_view key) {
    const Key wanted{integerValue(key), key};
    std::size_t position = likelyPosition(wanted.number);
    if (position >= keys_.size() || keys_[position] != wanted) {
        const auto found = std::lower_bound(keys_.begin(), keys_.end(), wanted);
        if (found == keys_.end() || *found != wanted) return nullptr;
        position = static_cast<std::size_t>(found - keys_.begin());
    }
    return &conversations_[position];
}

/// Where a key stands when all of them are numbers without a gap, as they most often are.
std::size_t ConversationIndex::likelyPosition(std::int64_t number) const {
    if (keys_.empty()) return 0;
    // Unsigned, so that nothing overflows and what is below the first number comes out behind the last position.
    return static_cast<std::uint64_t>(number) - static_cast<std::uint64_t>(keys_.front().number);
}

}  // namespace ZkMobileBackup::shaping
