#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <latch>
#include <thread>

#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"
#include "ZkMobileBackup/records/ZkMobileBackupAddressBookRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupCallHistoryRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupMessageRecord.h"
#include "recovery/TableKeys.h"
#include "tests/ZkMobileBackup/domains/DomainTesting.h"
#include "tests/support/DatabaseBuilder.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Domain = std::shared_ptr<ZkMobileBackupAppDomain>;
using Bytes = std::vector<std::uint8_t>;

constexpr int kPersons = 3;
constexpr int kIndexed = 2;
const std::vector<std::string> kNames{"Ann Lee", "Bob Ray", "Cid Oak"};

std::string numberOf(int person) {
    return "+1-555-010" + std::to_string(person);
}
/// As the network writes it.
std::string callNumberOf(int person) {
    return "+1555010" + std::to_string(person);
}

void addPersons(DatabaseBuilder& database) {
    // A type that no carved record matches: the page's free bytes give no rows.
    database.exec("CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY, First TEXT, Last TEXT, Organization OTHER)");
    database.exec("CREATE TABLE ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, label INTEGER, value TEXT)");
    for (int i = 0; i < kPersons; ++i) {
        const std::string name = kNames[static_cast<std::size_t>(i)];
        database.insert("ABPerson", {i + 1, name.substr(0, 3), name.substr(4), "Works"});
        database.insert("ABMultiValue", {nullptr, i + 1, 1, numberOf(i)});
    }
}

void addIndexEntries(DatabaseBuilder& database) {
    std::string columns = "docid INTEGER PRIMARY KEY";
    for (int i = 0; i < 17; ++i) columns += ", c" + std::to_string(i) + " TEXT";
    database.exec("CREATE TABLE ABPersonFullTextSearch_content (" + columns + ")");
    for (int i = 0; i < kIndexed; ++i) {
        database.run("INSERT INTO ABPersonFullTextSearch_content (c0, c1, c15, c16) VALUES (?, ?, ?, ?)",
                     {"Old", "Friend " + std::to_string(i), "1 2", "note"});
    }
}

Bytes addressBookDatabase() {
    DatabaseBuilder database;
    addPersons(database);
    addIndexEntries(database);
    return database.bytes();
}

Bytes messageDatabase() {
    DatabaseBuilder database;
    database.exec("CREATE TABLE message (ROWID INTEGER PRIMARY KEY, text TEXT, date INTEGER, is_from_me INTEGER)");
    database.exec("CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER)");
    database.exec(
        "CREATE TABLE chat (ROWID INTEGER PRIMARY KEY, guid TEXT, style INTEGER, state INTEGER, account TEXT, p TEXT,"
        " chat_identifier TEXT)");
    for (int i = 0; i < kPersons; ++i) {
        database.insert("chat", {i + 1, "g", 45, 3, "me", "p", callNumberOf(i)});
        database.insert("message", {i + 1, "hello", 1000, 0});
        database.insert("chat_message_join", {i + 1, i + 1});
    }
    return database.bytes();
}

Bytes callDatabase() {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE call (ROWID INTEGER PRIMARY KEY, address TEXT, date INTEGER, duration INTEGER, flags INTEGER)");
    for (int i = 0; i < kPersons; ++i) database.insert("call", {nullptr, callNumberOf(i), 1000, 60, 0});
    return database.bytes();
}

Domain domainOf(const std::string& name, Bytes bytes) {
    return domainsOf(databaseInfo(name, std::move(bytes))).front();
}

std::shared_ptr<ZkMobileBackupAddressBookDomain> contactsDomainOf(const Dictionary& info) {
    return std::dynamic_pointer_cast<ZkMobileBackupAddressBookDomain>(domainsOf(info).front());
}

std::vector<std::string> namesOf(const ZkMobileBackupAppDomain& domain) {
    std::vector<std::string> names;
    for (const auto& record : domain.records()) names.push_back(*record->recordValueForKey("name")->text());
    return names;
}

/// The records' values without their identities, and whether each was deleted.
std::vector<std::pair<Dictionary, bool>> contentOf(const ZkMobileBackupAppDomain& domain) {
    std::vector<std::pair<Dictionary, bool>> content;
    for (const auto& record : domain.records()) {
        content.emplace_back(*record->value(), record->isDeleted());
        content.back().first.remove(kRowIdentityKey);
    }
    return content;
}

template <typename Record>
bool allRecordsAre(const ZkMobileBackupAppDomain& domain) {
    return std::ranges::all_of(domain.records(),
                               [](const auto& record) { return dynamic_cast<const Record*>(record.get()) != nullptr; });
}

const Dictionary kMap{{"15550100", "Ann Lee"}, {"15550101", "Bob Ray"}, {"15550102", "Cid Oak"}};

class ContactNames : public testing::Test {
protected:
    ~ContactNames() override { ZkMobileBackupAppDomain::setAddressBookDomain(nullptr); }

    void setContacts(Bytes bytes) {
        contacts_ = contactsDomainOf(databaseInfo("AddressBook", std::move(bytes)));
        ZkMobileBackupAppDomain::setAddressBookDomain(contacts_);
    }

    std::shared_ptr<ZkMobileBackupAddressBookDomain> contacts_;
    Domain messages_ = domainOf("sms", messageDatabase());
    Domain calls_ = domainOf("call_history", callDatabase());
};

TEST_F(ContactNames, ContactsAreLiveRecordsThenDeletedOnes) {
    setContacts(addressBookDatabase());
    parse(*contacts_);
    EXPECT_THAT(namesOf(*contacts_), ElementsAre("Ann Lee", "Bob Ray", "Cid Oak", "Old Friend 0", "Old Friend 1"));
    std::vector<bool> deleted;
    for (const auto& record : contacts_->records()) deleted.push_back(record->isDeleted());
    EXPECT_THAT(deleted, ElementsAre(false, false, false, true, true));
    EXPECT_TRUE(allRecordsAre<ZkMobileBackupAddressBookRecord>(*contacts_));
}

TEST_F(ContactNames, MessagesAndCallsAreNamedByContactsParsedBefore) {
    setContacts(addressBookDatabase());
    for (const Domain& domain : {Domain(contacts_), messages_, calls_}) parse(*domain);
    EXPECT_EQ(namesOf(*messages_), kNames);
    EXPECT_EQ(namesOf(*calls_), kNames);
    EXPECT_TRUE(allRecordsAre<ZkMobileBackupMessageRecord>(*messages_));
    EXPECT_TRUE(allRecordsAre<ZkMobileBackupCallHistoryRecord>(*calls_));
}

TEST_F(ContactNames, MessagesParsedFirstBuildTheMapOnDemand) {
    setContacts(addressBookDatabase());
    parse(*messages_);
    EXPECT_EQ(namesOf(*messages_), kNames);
    EXPECT_EQ(contacts_->parser(), nullptr);
    EXPECT_THAT(contacts_->records(), IsEmpty());
    parse(*contacts_);
    EXPECT_EQ(contacts_->records().size(), static_cast<std::size_t>(kPersons + kIndexed));
}

TEST_F(ContactNames, CallsParsedFirstBuildTheMapOnDemand) {
    setContacts(addressBookDatabase());
    parse(*calls_);
    EXPECT_EQ(namesOf(*calls_), kNames);
    EXPECT_EQ(contacts_->contactsInfo(), kMap);
}

TEST_F(ContactNames, WithoutContactsEveryoneIsUnknown) {
    parse(*messages_);
    parse(*calls_);
    EXPECT_THAT(namesOf(*messages_), ElementsAre("Unknown", "Unknown", "Unknown"));
    EXPECT_THAT(namesOf(*calls_), ElementsAre("Unknown", "Unknown", "Unknown"));
}

TEST_F(ContactNames, UnreadableContactsLeaveEveryoneUnknown) {
    DatabaseBuilder other;
    other.exec("CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY, First TEXT)");
    for (const Bytes& bytes : {Bytes{}, Bytes(100, 7), other.bytes()}) {
        setContacts(bytes);
        EXPECT_EQ(contacts_->contactsInfo(), std::nullopt);
        const Domain calls = domainOf("call_history", callDatabase());
        parse(*calls);
        EXPECT_THAT(namesOf(*calls), ElementsAre("Unknown", "Unknown", "Unknown"));
    }
}

TEST_F(ContactNames, DomainWithoutBytesHasNoMap) {
    EXPECT_EQ(ZkMobileBackupAddressBookDomain::init()->contactsInfo(), std::nullopt);
}

TEST_F(ContactNames, MapThatCouldNotBeMadeIsTriedAgain) {
    const auto bytes = std::make_shared<Bytes>(100);
    const auto contacts = contactsDomainOf({{kRawDBNameKey, "AddressBook"}, {kRawDBdataKey, SharedBytes(bytes)}});
    EXPECT_EQ(contacts->contactsInfo(), std::nullopt);
    *bytes = addressBookDatabase();
    EXPECT_EQ(contacts->contactsInfo(), kMap);
    bytes->clear();
    EXPECT_EQ(contacts->contactsInfo(), kMap);  // made once, then kept
}

TEST_F(ContactNames, ParseOfTheContactsPublishesTheirMap) {
    const auto bytes = std::make_shared<Bytes>(addressBookDatabase());
    const auto contacts = contactsDomainOf({{kRawDBNameKey, "AddressBook"}, {kRawDBdataKey, SharedBytes(bytes)}});
    parse(*contacts);
    bytes->clear();
    EXPECT_EQ(contacts->contactsInfo(), kMap);
}

TEST_F(ContactNames, MapThatIsThereOutlivesTheParse) {
    DatabaseBuilder nobody;
    nobody.exec("CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY, First TEXT)");
    nobody.exec("CREATE TABLE ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, label INTEGER, value TEXT)");
    const auto bytes = std::make_shared<Bytes>(addressBookDatabase());
    const auto contacts = contactsDomainOf({{kRawDBNameKey, "AddressBook"}, {kRawDBdataKey, SharedBytes(bytes)}});
    contacts->contactsInfo();
    *bytes = nobody.bytes();
    parse(*contacts);
    EXPECT_THAT(contacts->records(), IsEmpty());
    EXPECT_EQ(contacts->contactsInfo(), kMap);
}

TEST_F(ContactNames, NewContactsDomainReplacesTheNames) {
    setContacts(Bytes{});
    setContacts(addressBookDatabase());
    parse(*calls_);
    EXPECT_EQ(namesOf(*calls_), kNames);
}

/// Parses the domains at the same time, each asked for by a thread of its own.
void parseTogether(const std::vector<Domain>& domains) {
    std::atomic<std::size_t> running = domains.size();
    std::vector<std::thread> threads;
    for (const Domain& domain : domains) {
        threads.emplace_back([&running, domain] {
            domain->parserWithCallbackBlock([&running](std::int64_t state, std::atomic<bool>*, double) {
                if (state == kFinishedState && --running == 0) MainQueue::stop();
            });
        });
    }
    MainQueue::run();
    for (std::thread& thread : threads) thread.join();
}

TEST_F(ContactNames, DomainsParsedTogetherGiveTheRecordsOfOneAfterTheOther) {
    setContacts(addressBookDatabase());
    for (const Domain& domain : {Domain(contacts_), messages_, calls_}) parse(*domain);
    for (int round = 0; round < 20; ++round) {
        const Domain messages = domainOf("sms", messageDatabase());
        const Domain calls = domainOf("call_history", callDatabase());
        const auto first = contacts_;
        setContacts(addressBookDatabase());
        parseTogether({messages, calls, contacts_});
        EXPECT_EQ(contentOf(*messages), contentOf(*messages_));
        EXPECT_EQ(contentOf(*calls), contentOf(*calls_));
        EXPECT_EQ(contentOf(*contacts_), contentOf(*first));
    }
}

/// The map as each of many threads gets it that ask while the contacts are parsed.
std::vector<std::optional<Dictionary>> mapsAskedForTogether(ZkMobileBackupAddressBookDomain& contacts) {
    std::vector<std::optional<Dictionary>> maps(8);
    std::latch start(static_cast<std::ptrdiff_t>(maps.size()));
    std::vector<std::thread> threads;
    for (auto& map : maps) {
        threads.emplace_back([&contacts, &start, &map] {
            start.arrive_and_wait();
            map = contacts.contactsInfo();
        });
    }
    parse(contacts);
    for (std::thread& thread : threads) thread.join();
    return maps;
}

TEST_F(ContactNames, MapIsMadeOnceForAllThreadsThatAskForIt) {
    const Bytes bytes = addressBookDatabase();
    const std::string number = kMap.keyAt(0);
    for (int round = 0; round < 20; ++round) {
        setContacts(bytes);
        const auto maps = mapsAskedForTogether(*contacts_);
        ASSERT_THAT(maps, testing::Each(testing::Eq(kMap)));
        // Copies share their content: one address in all of them means that they are copies of one map.
        const Dictionary kept = *contacts_->contactsInfo();
        for (const auto& map : maps) EXPECT_EQ(map->find(number), kept.find(number));
    }
}

}  // namespace
}  // namespace ZkMobileBackup
