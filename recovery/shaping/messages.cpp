#include <algorithm>

#include "recovery/shaping/conversation_index.h"
#include "recovery/shaping/key_index.h"
#include "recovery/shaping/message_items.h"
#include "recovery/shaping/party_name.h"
#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

// Joining the messages takes one half of the table's share of progress, making the rows the other.
constexpr double kHalfDivisor = 36.0;
// The rest belongs to whoever uses the table.
constexpr double kMostProgress = 0.9;

constexpr std::size_t kMessageKeyCell = 0;
constexpr std::size_t kJoinConversationCell = 0;
constexpr std::size_t kJoinMessageCell = 1;
constexpr std::size_t kChatKeyCell = 0;
constexpr std::size_t kChatIdentifierCell = 6;

const std::vector<std::string> kColumns{"name", "phone", "email"};
// Every row has its messages besides the table's columns.
const std::vector<std::string> kColumnsAndItems{"name", "phone", "email", "textlist"};

/// The raw tables that the messages are spread over, null where one is missing.
struct Tables {
    const RawTableObject* messages;
    const RawTableObject* joins;
    const RawTableObject* chats;
};

/// Gathers the messages of each conversation, then makes the rows of those conversations that have any.
class MessageJoin {
public:
    MessageJoin(TableShaper& shaper, const Tables& tables)
        : shaper_(shaper),
          messages_(*tables.messages),
          joinsByMessage_(tables.joins->rowList(), kJoinMessageCell, rowCount(messages_)),
          conversations_(tables.chats->rowList(), kChatKeyCell),
          items_(messages_),
          rows_(kColumnsAndItems) {}

    /// Ends early on a stop request, which is looked at only where messages are joined: one without a key never ends
    /// it.
    void gather() {
        std::size_t position = 0;
        for (const RowList* messages : {&messages_.rowList(), &messages_.deletedRowList()}) {
            const Origin origin = messages == &messages_.rowList() ? Origin::kLive : Origin::kCarved;
            for (const Row& message : *messages) {
                if (!gatherMessage(message, origin, position++)) return;
            }
        }
    }

    /// The rows of messages whose key was lost, and with it their conversation. Their lists hold only themselves.
    void addLooseRows() {
        for (Dictionary& row : looseRows_) shaper_.add(std::move(row), Origin::kCarved);
    }

    void addRowsOf(const Row& chat, const Dictionary* contactsMap) {
        const auto key = cellOf(chat, kChatKeyCell);
        Conversation* conversation = key ? conversations_.find(*key) : nullptr;
        if (conversation == nullptr) return;
        const auto identifier = cellOf(chat, kChatIdentifierCell);
        const Value& live = conversation->live.shared();
        const Value& carved = conversation->carved.shared();
        if (!live.isNull()) shaper_.add(newRow(partyName(identifier, contactsMap), identifier, live), Origin::kLive);
        // Deleted messages are shown without a name, as they have always been.
        if (!carved.isNull()) shaper_.add(newRow(kUnknownPerson, identifier, carved), Origin::kCarved);
    }

private:
    /// False once a stop was asked for.
    bool gatherMessage(const Row& message, Origin origin, std::size_t position) {
        const std::int64_t key = integerCell(message, kMessageKeyCell);
        if (key <= 0) {
            looseRows_.push_back(newRow(kUnknownPerson, std::nullopt, Array{items_.itemOf(message)}));
            return true;
        }
        if (!join(key, message, origin)) return false;
        const double done = static_cast<double>(position) / static_cast<double>(rowCount(messages_));
        shaper_.reportValue(shaper_.shapingStart() + done / kHalfDivisor);
        return true;
    }

    /// Adds a message to every conversation that it belongs to, none being possible. False once a stop was asked for.
    bool join(std::int64_t key, const Row& message, Origin origin) {
        const auto matches = joinsByMessage_.find(key);
        const Dictionary item = matches.empty() ? Dictionary() : items_.itemOf(message);
        for (const KeyIndex::Entry& match : matches) {
            if (shaper_.stopped()) return false;
            Conversation* conversation = conversations_.find(match.row.cell(kJoinConversationCell));
            if (conversation == nullptr) continue;
            (origin == Origin::kLive ? conversation->live : conversation->carved).append(item);
        }
        return !shaper_.stopped();
    }

    Dictionary newRow(std::string_view name, std::optional<std::string_view> phone, Value items) const {
        Dictionary row = rows_.newRow();
        row.set("name", name);
        if (phone) row.set("phone", *phone);
        row.set("textlist", std::move(items));
        return row;
    }

    TableShaper& shaper_;
    const RawTableObject& messages_;
    KeyIndex joinsByMessage_;
    ConversationIndex conversations_;
    MessageItemFactory items_;
    RowFactory rows_;
    std::vector<Dictionary> looseRows_;
};

void addConversations(const RowList& chats, MessageJoin& join, TableShaper& shaper, const Source& source,
                      const Dictionary* contactsMap) {
    const double start = shaper.shapingStart() + kOneThirtySixth;
    std::size_t position = 0;
    for (const Row& chat : chats) {
        if (shaper.stopped()) return;
        join.addRowsOf(chat, contactsMap);
        const double done = static_cast<double>(position++) / static_cast<double>(chats.size());
        shaper.reportValue(source.tableCount == 0 ? 0 : std::min(kMostProgress, start + done / kHalfDivisor));
    }
}

}  // namespace

std::shared_ptr<CustomTableObject> shapeMessages(const Source& source, const Dictionary* contactsMap) {
    TableShaper shaper(source, "Message", kColumns);
    const Tables tables{shaper.rawTable("message"), shaper.rawTable("chat_message_join"), shaper.rawTable("chat")};
    if (tables.messages == nullptr || tables.joins == nullptr || tables.chats == nullptr) return shaper.result();
    MessageJoin join(shaper, tables);
    join.gather();
    // Also after a stop request: these rows are made already.
    join.addLooseRows();
    addConversations(tables.chats->rowList(), join, shaper, source, contactsMap);
    return shaper.result();
}

}  // namespace ZkMobileBackup::shaping
