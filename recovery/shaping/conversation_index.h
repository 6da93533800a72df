#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "recovery/model/Row.h"
#include "recovery/shaping/message_items.h"

namespace ZkMobileBackup::shaping {

/// The messages of one conversation.
struct Conversation {
    MessageItemList live;
    MessageItemList carved;
};

/// The conversations that a chat row stands for, one for each key. Keys are texts: "2" and "02" are two conversations.
///
/// Sorted rather than hashed: the keys come from a file that may be hostile, and no choice of keys slows this down.
class ConversationIndex {
public:
    /// The keys belong to the rows, which must outlive this.
    ConversationIndex(const RowList& chats, std::size_t keyColumn);

    /// Null where no chat row has this key.
    Conversation* find(std::string_view key);

private:
    struct Key {
        std::int64_t number;  // that the text begins with
        std::string_view text;
        bool operator==(const Key&) const = default;
        bool operator<(const Key& other) const {
            return number != other.number ? number < other.number : text < other.text;
        }
    };

    std::size_t likelyPosition(std::int64_t number) const;

    std::vector<Key> keys_;  // ascending
    std::vector<Conversation> conversations_;
};

}  // namespace ZkMobileBackup::shaping
