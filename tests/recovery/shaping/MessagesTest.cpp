#include <algorithm>
#include <gmock/gmock.h>
#include <map>
#include <random>

#include "base/Text.h"
#include "tests/recovery/shaping/ShapingTesting.h"
#include "tests/recovery/shaping/ZoneGuard.h"

namespace ZkMobileBackup::shaping {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::ZkMobileBackup::testing::Cells;
using ::ZkMobileBackup::testing::columnOf;
using ::ZkMobileBackup::testing::Database;
using ::ZkMobileBackup::testing::Report;
using ::ZkMobileBackup::testing::ZoneGuard;

using Texts = std::vector<std::string>;

constexpr double kBase = 0.3333333333333333 + 0.05555555555555555;  // of the first database
constexpr double kSecondHalf = 0.027777777777777776;

/// A conversation as a result row shows it, with the texts of its messages.
struct Shown {
    std::string name;
    std::string phone;
    Texts messages;
    bool operator==(const Shown&) const = default;
};

void PrintTo(const Shown& shown, std::ostream* out) {
    *out << shown.name << " <" << shown.phone << ">" << ::testing::PrintToString(shown.messages);
}

const Array& itemsOf(const Row& row) {
    return *row.dictionary()->find("textlist")->array();
}

Shown shownBy(const Row& row) {
    Shown shown{*row.dictionary()->text("name"), *row.dictionary()->text("phone"), {}};
    for (const Value& item : itemsOf(row)) shown.messages.push_back(*item.dictionary()->text("detail_text"));
    return shown;
}

std::vector<Shown> shownBy(const RowList& rows) {
    std::vector<Shown> all;
    for (const Row& row : rows) all.push_back(shownBy(row));
    return all;
}

Cells chat(const std::string& key, const std::string& identifier) {
    return {key, "guid", "45", "3", "account", "NULL", identifier};
}

Cells message(const std::string& key, const std::string& text) {
    return {key, text, "0", "0"};
}

class Messages : public ::testing::Test {
protected:
    void addMessages(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("message", {"ROWID", "text", "date", "is_from_me"}, live, carved);
    }
    /// Rows of conversation key and message key.
    void addJoins(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("chat_message_join", {"chat_id", "message_id"}, live, carved);
    }
    void addChats(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("chat", {"ROWID", "guid", "style", "state", "account_id", "properties", "chat_identifier"}, live,
                      carved);
    }
    std::shared_ptr<CustomTableObject> shaped(const Dictionary* contactsMap = nullptr) {
        return database_.shaped(shapeMessages, contactsMap);
    }
    ZoneGuard zone_{"UTC0"};
    Database database_;
};

// ---- Rows ----

TEST_F(Messages, OfAConversationAreListedUnderTheNameOfTheOtherParty) {
    const Dictionary map{{"49170123456", "Ada"}};
    addMessages({{"5", "hello", "86401", "1"}});
    addJoins({{"2", "5"}});
    addChats({chat("2", "+49170123456")});
    const auto table = shaped(&map);
    EXPECT_EQ(table->name(), "Message");
    EXPECT_THAT(table->filedList(), ElementsAre("name", "phone", "email"));
    EXPECT_TRUE(table->deletedRowList().empty());
    ASSERT_EQ(table->rowList().size(), 1U);
    Dictionary row = *table->rowList()[0].dictionary();
    row.remove("RowData_Identify_Key");
    const Dictionary item{{"detail_text", "hello"}, {"detail_date", "2001-01-02 00:00"}, {"detail_sent_flag", "1"}};
    EXPECT_TRUE(row ==
                (Dictionary{{"name", "Ada"}, {"phone", "+49170123456"}, {"email", ""}, {"textlist", Array{item}}}));
}

TEST_F(Messages, NameIsAlsoFoundWithoutTheCountryCode) {
    const Dictionary map{{"170123456", "Ada"}};
    addMessages({message("5", "hello")});
    addJoins({{"2", "5"}});
    addChats({chat("2", "+49170123456")});
    EXPECT_THAT(shownBy(shaped(&map)->rowList()), ElementsAre(Shown{"Ada", "+49170123456", {"hello"}}));
}

TEST_F(Messages, WithoutContactsMapEverybodyIsUnknown) {
    addMessages({message("5", "a"), message("6", "b")});
    addJoins({{"1", "5"}, {"2", "6"}});
    addChats({chat("1", "+49170123456"), chat("2", "ada@example.com")});
    EXPECT_THAT(columnOf(shaped()->rowList(), "name"), ElementsAre("Unknown", "Unknown"));
}

TEST_F(Messages, CarvedOnesAreNeverLookedUp) {
    const Dictionary map{{"123", "Ada"}};
    addMessages({message("5", "kept")}, {message("6", "deleted")});
    addJoins({{"2", "5"}, {"2", "6"}});
    addChats({chat("2", "123")});
    const auto table = shaped(&map);
    EXPECT_THAT(shownBy(table->rowList()), ElementsAre(Shown{"Ada", "123", {"kept"}}));
    EXPECT_THAT(shownBy(table->deletedRowList()), ElementsAre(Shown{"Unknown", "123", {"deleted"}}));
}

TEST_F(Messages, WithoutKeyAreDeletedRowsOfTheirOwn) {
    addMessages({}, {{"0", "lost", "NULL", "1"}});
    addJoins({{"2", "0"}});
    addChats({chat("2", "123")});
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_THAT(shownBy(table->deletedRowList()), ElementsAre(Shown{"Unknown", "", {"lost"}}));
    EXPECT_EQ(*itemsOf(table->deletedRowList()[0])[0].dictionary()->text("detail_date"), "2000-12-31 23:59");
}

TEST_F(Messages, WithoutKeyAreDeletedRowsAlsoWhenLive) {
    addMessages({message("0", "a"), message("NULL", "b"), message("-5", "c"), {}}, {message("-1", "d")});
    addJoins({{"2", "0"}, {"2", "-5"}});
    addChats({chat("2", "123")});
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_THAT(shownBy(table->deletedRowList()),
                ElementsAre(Shown{"Unknown", "", {"a"}}, Shown{"Unknown", "", {"b"}}, Shown{"Unknown", "", {"c"}},
                            Shown{"Unknown", "", {""}}, Shown{"Unknown", "", {"d"}}));
}

TEST_F(Messages, OfACarvedConversationFollowAllLooseRows) {
    addMessages({message("0", "loose 1")}, {message("7", "deleted"), message("0", "loose 2")});
    addJoins({{"2", "7"}});
    addChats({chat("2", "123")});
    EXPECT_THAT(shownBy(shaped()->deletedRowList()),
                ElementsAre(Shown{"Unknown", "", {"loose 1"}}, Shown{"Unknown", "", {"loose 2"}},
                            Shown{"Unknown", "123", {"deleted"}}));
}

TEST_F(Messages, WithoutALiveJoinRowAreInNoRow) {
    addMessages({message("5", "a"), message("6", "b")}, {message("7", "c")});
    addJoins({{"9", "6"}, {"2"}, {}}, {{"2", "5"}, {"2", "7"}});
    addChats({chat("2", "123")});
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_TRUE(table->deletedRowList().empty());
}

TEST_F(Messages, OfACarvedChatRowAreInNoRow) {
    addMessages({message("5", "a")}, {message("6", "b")});
    addJoins({{"2", "5"}, {"2", "6"}});
    addChats({}, {chat("2", "123")});
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_TRUE(table->deletedRowList().empty());
}

TEST_F(Messages, ChatRowWithoutIdentifierGivesItsRowsNonetheless) {
    const Dictionary map{{"", "Ada"}};
    addMessages({message("5", "a")}, {message("6", "b")});
    addJoins({{"2", "5"}, {"2", "6"}});
    addChats({{"2", "guid", "45", "3", "account", "NULL"}, {}});
    const auto table = shaped(&map);
    EXPECT_THAT(shownBy(table->rowList()), ElementsAre(Shown{"Unknown", "", {"a"}}));
    EXPECT_THAT(shownBy(table->deletedRowList()), ElementsAre(Shown{"Unknown", "", {"b"}}));
}

TEST_F(Messages, ChatRowWithoutCellsHasNoMessages) {
    addMessages({message("5", "a")});
    addJoins({{"", "5"}});
    addChats({chat("", "123"), {}});
    EXPECT_THAT(shownBy(shaped()->rowList()), ElementsAre(Shown{"Unknown", "123", {"a"}}));
}

TEST_F(Messages, NeedAllThreeTables) {
    for (const std::string missing : {"message", "chat_message_join", "chat"}) {
        Database database;
        database.add("message", {"ROWID", "text"}, {{"5", "a"}}, {{"0", "b"}});
        database.add("chat_message_join", {}, {{"2", "5"}});
        database.add("chat", {}, {chat("2", "123")});
        std::erase_if(database.tables, [&](const auto& table) { return table->name() == missing; });
        const auto table = database.shaped(shapeMessages, nullptr);
        EXPECT_EQ(table->name(), "Message");
        EXPECT_THAT(table->filedList(), ElementsAre("name", "phone", "email"));
        EXPECT_TRUE(table->rowList().empty());
        EXPECT_TRUE(table->deletedRowList().empty()) << missing;
        EXPECT_THAT(database.reports, IsEmpty());
    }
}

TEST_F(Messages, UseTheFirstOfTwoTablesOfOneName) {
    addMessages({message("5", "a")});
    addJoins({{"2", "5"}});
    addChats({chat("2", "123")});
    addMessages({message("5", "x"), message("0", "y")});
    addJoins({{"2", "5"}, {"2", "5"}});
    addChats({chat("2", "z")});
    const auto table = shaped();
    EXPECT_THAT(shownBy(table->rowList()), ElementsAre(Shown{"Unknown", "123", {"a"}}));
    EXPECT_TRUE(table->deletedRowList().empty());
}

TEST_F(Messages, ShapedTwiceGiveTwoEqualTables) {
    addMessages({message("5", "a")}, {message("6", "b")});
    addJoins({{"2", "5"}, {"2", "6"}});
    addChats({chat("2", "123")});
    const auto first = shaped();
    const auto second = shaped();
    EXPECT_EQ(shownBy(first->rowList()), shownBy(second->rowList()));
    EXPECT_THAT(first->rowList(), SizeIs(1));
    EXPECT_EQ(shownBy(first->deletedRowList()), shownBy(second->deletedRowList()));
}

TEST_F(Messages, NeedNobodyToReportTo) {
    addMessages({message("5", "a")});
    addJoins({{"2", "5"}});
    addChats({chat("2", "123")});
    const Source source{.tables = database_.tables, .stop = database_.stop, .report = nullptr};
    EXPECT_THAT(shapeMessages(source, nullptr)->rowList(), SizeIs(1));
}

// ---- Items ----

class MessageItems : public Messages {
protected:
    /// The items of all messages, as text, date and flag.
    std::vector<Texts> items() {
        std::vector<Texts> all;
        const auto table = shaped();
        for (const Row& row : table->deletedRowList()) {
            const Dictionary& item = *itemsOf(row)[0].dictionary();
            EXPECT_EQ(item.size(), 3U);
            all.push_back({*item.text("detail_text"), *item.text("detail_date"), *item.text("detail_sent_flag")});
        }
        return all;
    }
    void SetUp() override {
        addJoins({});
        addChats({});
    }
};

TEST_F(MessageItems, ReadColumnsWhereverTheyStand) {
    database_.add("message", {"ROWID", "IS_FROM_ME", "other", "Date", "TEXT"}, {{"0", "1", "?", "61", "hello"}});
    EXPECT_THAT(items(), ElementsAre(Texts{"hello", "2001-01-01 00:01", "1"}));
}

TEST_F(MessageItems, OfShortRowsHaveDefaults) {
    addMessages({{"0", "a", "0"}, {"0", "a"}, {"0"}});
    EXPECT_THAT(items(), ElementsAre(Texts{"a", "2000-12-31 23:59", "0"}, Texts{"a", "", "0"}, Texts{"", "", "0"}));
}

TEST_F(MessageItems, HaveDefaultsWithoutTheColumns) {
    database_.add("message", {"ROWID", "txt"}, {{"0", "a", "b", "c"}});
    EXPECT_THAT(items(), ElementsAre(Texts{"", "", "0"}));
}

TEST_F(MessageItems, TakeTextAndFlagAsTheyStand) {
    addMessages({{"0", "NULL", "NULL", "NULL"}, {"0", "two\nlines", "x", "7"}});
    EXPECT_THAT(items(),
                ElementsAre(Texts{"NULL", "2000-12-31 23:59", "NULL"}, Texts{"two\nlines", "2000-12-31 23:59", "7"}));
}

TEST_F(MessageItems, ReadTheFirstOfTwoColumnsOfOneName) {
    database_.add("message", {"ROWID", "text", "Text"}, {{"0", "first", "second"}});
    EXPECT_THAT(items(), ElementsAre(Texts{"first", "", "0"}));
}

// ---- Order and keys ----

TEST_F(Messages, AreListedInTheOrderOfTheirRowsNotOfTheJoin) {
    addMessages({message("9", "first"), message("3", "second"), message("6", "third")});
    addJoins({{"2", "3"}, {"2", "6"}, {"2", "9"}});
    addChats({chat("2", "123")});
    EXPECT_THAT(shownBy(shaped()->rowList()), ElementsAre(Shown{"Unknown", "123", {"first", "second", "third"}}));
}

TEST_F(Messages, OfSeveralConversationsAreInEach) {
    addMessages({message("5", "both"), message("6", "one")});
    addJoins({{"3", "5"}, {"2", "6"}, {"2", "5"}});
    addChats({chat("2", "two"), chat("3", "three")});
    EXPECT_THAT(shownBy(shaped()->rowList()),
                ElementsAre(Shown{"Unknown", "two", {"both", "one"}}, Shown{"Unknown", "three", {"both"}}));
}

TEST_F(Messages, JoinedTwiceAreListedTwice) {
    addMessages({message("5", "twice"), message("6", "once")});
    addJoins({{"2", "5"}, {"2", "6"}, {"2", "5"}});
    addChats({chat("2", "123")});
    EXPECT_THAT(shownBy(shaped()->rowList()), ElementsAre(Shown{"Unknown", "123", {"twice", "twice", "once"}}));
}

TEST_F(Messages, OfOneKeyAreAllListed) {
    addMessages({message("5", "a"), message("5", "b")}, {message("5", "c")});
    addJoins({{"2", "5"}});
    addChats({chat("2", "123")});
    const auto table = shaped();
    EXPECT_THAT(shownBy(table->rowList()), ElementsAre(Shown{"Unknown", "123", {"a", "b"}}));
    EXPECT_THAT(shownBy(table->deletedRowList()), ElementsAre(Shown{"Unknown", "123", {"c"}}));
}

TEST_F(Messages, RowsFollowTheChatRows) {
    addMessages({message("1", "a"), message("2", "b"), message("3", "c")}, {message("4", "d"), message("5", "e")});
    addJoins({{"7", "1"}, {"8", "2"}, {"9", "3"}, {"9", "4"}, {"7", "5"}});
    addChats({chat("9", "nine"), chat("8", "eight"), chat("7", "seven")});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "phone"), ElementsAre("nine", "eight", "seven"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "phone"), ElementsAre("nine", "seven"));
}

TEST_F(Messages, ConversationKeysAreComparedAsTexts) {
    addMessages({message("1", "a"), message("2", "b"), message("3", "c"), message("4", "d"), message("5", "e")});
    addJoins({{"2", "1"}, {"02", "2"}, {" 2", "3"}, {"x", "4"}, {"2 ", "5"}});
    addChats({chat("02", "zero two"), chat("2", "two"), chat("y", "why"), chat("x", "ex")});
    EXPECT_THAT(shownBy(shaped()->rowList()),
                ElementsAre(Shown{"Unknown", "zero two", {"b"}}, Shown{"Unknown", "two", {"a"}},
                            Shown{"Unknown", "ex", {"d"}}));
}

TEST_F(Messages, MessageKeysAreComparedAsIntegers) {
    addMessages({message("05", "a"), message("6.9", "b"), message("+7", "c")});
    addJoins({{"2", " 5"}, {"2", "6"}, {"2", "007 "}});
    addChats({chat("2", "123")});
    EXPECT_THAT(shownBy(shaped()->rowList()), ElementsAre(Shown{"Unknown", "123", {"a", "b", "c"}}));
}

TEST_F(Messages, ChatRowsThatShareAKeyGetTheSameListsAgain) {
    const Dictionary map{{"first", "Ada"}};
    addMessages({message("1", "a"), message("2", "b")}, {message("3", "c")});
    addJoins({{"7", "1"}, {"7", "2"}, {"7", "3"}});
    addChats({chat("7", "first"), chat("8", "other"), chat("7", "second")});
    const auto table = shaped(&map);
    EXPECT_THAT(shownBy(table->rowList()),
                ElementsAre(Shown{"Ada", "first", {"a", "b"}}, Shown{"Unknown", "second", {"a", "b"}}));
    EXPECT_THAT(shownBy(table->deletedRowList()),
                ElementsAre(Shown{"Unknown", "first", {"c"}}, Shown{"Unknown", "second", {"c"}}));
}

/// The same by looking at every join row for every message, and at every list for every chat row.
std::vector<Shown> shownByWalking(const std::vector<Cells>& messages, const std::vector<Cells>& joins,
                                  const std::vector<Cells>& chats) {
    std::map<std::string, Texts> lists;
    for (const Cells& row : messages) {
        if (integerValue(row[0]) <= 0) continue;
        for (const Cells& join : joins) {
            if (integerValue(join[1]) == integerValue(row[0])) lists[join[0]].push_back(row[1]);
        }
    }
    std::vector<Shown> shown;
    for (const Cells& row : chats) {
        if (!lists[row[0]].empty()) shown.push_back({"Unknown", row[6], lists[row[0]]});
    }
    return shown;
}

TEST_F(Messages, AreJoinedAsByLookingAtEveryRow) {
    std::mt19937 random(1);
    const auto oneOf = [&random](const Texts& texts) { return texts[random() % texts.size()]; };
    const Texts messageKeys{"1", "2", "3", "03", "9", "17", "18", "19", "40", "400", "0", "-2", "x", "NULL"};
    const Texts chatKeys{
        "1", "2", "3", "4", "04", "7", "-1", "", "x", "y", "9223372036854775807", "-9223372036854775808"};
    for (int round = 0; round < 200; ++round) {
        std::vector<Cells> messages;
        std::vector<Cells> joins;
        std::vector<Cells> chats;
        for (auto i = random() % 20; i > 0; --i) messages.push_back(message(oneOf(messageKeys), std::to_string(i)));
        for (auto i = random() % 20; i > 0; --i) joins.push_back({oneOf(chatKeys), oneOf(messageKeys)});
        for (auto i = random() % 8; i > 0; --i) chats.push_back(chat(oneOf(chatKeys), std::to_string(i)));
        database_.tables.clear();
        addMessages(messages);
        addJoins(joins);
        addChats(chats);
        ASSERT_EQ(shownBy(shaped()->rowList()), shownByWalking(messages, joins, chats)) << "round " << round;
    }
}

// ---- Progress and stop ----

TEST_F(Messages, ProgressIsExactly) {
    database_.dbIndex = 2;
    addMessages({message("1", "a"), message("0", "loose"), message("8", "in no row")}, {message("2", "b")});
    addJoins({{"7", "1"}, {"7", "2"}});
    addChats({chat("7", "123"), chat("8", "empty"), chat("7", "456")});
    shaped();
    const double base = 2 / 9.0 + 0.3333333333333333 + 0.05555555555555555;
    const double second = base + kSecondHalf;
    EXPECT_THAT(database_.reports, ElementsAre(Report{base + (0 / 4.0) / 36.0, 0, 0, "Message"},
                                               Report{base + (2 / 4.0) / 36.0, 0, 0, "Message"},
                                               Report{base + (3 / 4.0) / 36.0, 0, 0, "Message"},
                                               Report{second + (0 / 3.0) / 36.0, 2, 3, "Message"},
                                               Report{second + (1 / 3.0) / 36.0, 2, 3, "Message"},
                                               Report{second + (2 / 3.0) / 36.0, 3, 5, "Message"}));
}

TEST_F(Messages, ProgressOfConversationsEndsAtNineTenths) {
    database_.dbIndex = 6;
    addMessages({message("1", "a")});
    addJoins({{"7", "1"}});
    addChats({chat("7", "123")});
    shaped();
    const double base = 6 / 9.0 + 0.3333333333333333 + 0.05555555555555555;
    EXPECT_THAT(database_.reports, ElementsAre(Report{base, 0, 0, "Message"}, Report{0.9, 0, 1, "Message"}));
}

TEST_F(Messages, ProgressOfConversationsIsZeroInADatabaseWithoutTables) {
    database_.tableCount = 0;
    addMessages({message("1", "a")});
    addJoins({{"7", "1"}});
    addChats({chat("7", "123")});
    shaped();
    EXPECT_THAT(database_.reports, ElementsAre(Report{kBase, 0, 0, "Message"}, Report{0, 0, 1, "Message"}));
}

TEST_F(Messages, LooseRowsReportNothing) {
    addMessages({message("0", "a")}, {message("-1", "b")});
    addJoins({});
    addChats({});
    EXPECT_THAT(shaped()->deletedRowList(), SizeIs(2));
    EXPECT_THAT(database_.reports, IsEmpty());
}

TEST_F(Messages, StoppedBeforeShowOnlyLooseRowsAheadOfTheFirstJoin) {
    addMessages({message("0", "a"), message("NULL", "b"), message("1", "joined"), message("0", "c")},
                {message("0", "d")});
    addJoins({{"7", "1"}});
    addChats({chat("7", "123")});
    database_.stop = true;
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_THAT(shownBy(table->deletedRowList()),
                ElementsAre(Shown{"Unknown", "", {"a"}}, Shown{"Unknown", "", {"b"}}));
    EXPECT_THAT(database_.reports, IsEmpty());
}

TEST_F(Messages, StopIsSeenAfterAJoinThatFoundNothing) {
    addMessages({message("1", "in no row"), message("0", "late")});
    addJoins({});
    addChats({chat("7", "123")});
    database_.stop = true;
    EXPECT_TRUE(shaped()->deletedRowList().empty());
    EXPECT_THAT(database_.reports, IsEmpty());
}

TEST_F(Messages, StopWhileJoiningKeepsLooseRowsUntilTheNextJoin) {
    addMessages({message("1", "a"), message("0", "loose"), message("2", "b"), message("0", "late")});
    addJoins({{"7", "1"}, {"7", "2"}});
    addChats({chat("7", "123")});
    database_.stopAfterReports = 1;
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_THAT(shownBy(table->deletedRowList()), ElementsAre(Shown{"Unknown", "", {"loose"}}));
    EXPECT_THAT(database_.reports, SizeIs(1));
}

TEST_F(Messages, StopAmongLooseRowsAloneLeavesOutTheConversations) {
    addMessages({message("1", "a")}, {message("0", "loose")});
    addJoins({{"7", "1"}});
    addChats({chat("7", "123")});
    database_.stopAfterReports = 1;
    const auto table = shaped();
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_THAT(shownBy(table->deletedRowList()), ElementsAre(Shown{"Unknown", "", {"loose"}}));
}

TEST_F(Messages, StopAmongConversationsKeepsThoseMade) {
    addMessages({message("1", "a"), message("2", "b")}, {message("3", "c")});
    addJoins({{"7", "1"}, {"8", "2"}, {"8", "3"}});
    addChats({chat("7", "seven"), chat("8", "eight")});
    database_.stopAfterReports = 4;
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "phone"), ElementsAre("seven"));
    EXPECT_TRUE(table->deletedRowList().empty());
    EXPECT_THAT(database_.reports, SizeIs(4));
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
