// bench_shaping DATABASE: time of every join at several sizes, and of the engine's parse of DATABASE, which holds as
// many messages as the largest messages table here. Prints "NAME ROWS SECONDS" for each. Messages, contacts and calls
// are shaped from tables built in memory: the keys that come out of a file end at 16,383.
//
// Then prints "memory RAW RECORDS": the bytes of the raw messages, and those of the records made of them.
#include <algorithm>
#include <atomic>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ZkMobileBackup/records/ZkMobileBackupMessageRecord.h"
#include "bench/Measure.h"
#include "recovery/DlxSQLiteParser.h"
#include "recovery/shaping/result_table.h"
#include "tests/support/DatabaseBuilder.h"

using namespace ZkMobileBackup;

namespace {

constexpr int kRuns = 3;
constexpr int kLargestKey = 16'383;
constexpr int kConversations = 5'000;
constexpr int kMillion = 1'000'000;

void print(const std::string& name, int rows, double seconds) {
    std::cout << name << ' ' << rows << ' ' << seconds << '\n';
}

// ---- From database files ----

std::string numbersUpTo(int count) {
    return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) + ") ";
}

std::shared_ptr<DlxSQLiteParser> parsed(const std::string& path) {
    auto parser = DlxSQLiteParser::initWithDBPath(path);
    parser->parser();
    return parser;
}

std::shared_ptr<DlxSQLiteParser> notes(int count) {
    DatabaseBuilder database;
    database.exec("CREATE TABLE ZNOTE (Z_PK INTEGER PRIMARY KEY, ZMODIFICATIONDATE TIMESTAMP, ZTITLE TEXT)");
    database.exec("CREATE TABLE ZNOTEBODY (Z_PK INTEGER PRIMARY KEY, ZOWNER INTEGER, ZCONTENT TEXT)");
    database.exec(numbersUpTo(count) + "INSERT INTO ZNOTE SELECT i, 384000000 + i, 'Title ' || i FROM n");
    database.exec(numbersUpTo(count) + "INSERT INTO ZNOTEBODY SELECT i, i, 'Text of note ' || i FROM n");
    return parsed(database.path());
}

std::shared_ptr<DlxSQLiteParser> calendar(int count) {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE CalendarItem (ROWID INTEGER PRIMARY KEY, summary TEXT, location_id INTEGER, start_date INTEGER, "
        "end_date INTEGER, entity_type INTEGER)");
    database.exec("CREATE TABLE Location (ROWID INTEGER PRIMARY KEY, owner INTEGER, title TEXT)");
    // Events name their locations in no order. Keys above kLargestKey do not come out of the file as they went in.
    database.exec(numbersUpTo(count) + "INSERT INTO CalendarItem SELECT i, 'Event ' || i, 1 + i * 7919 % " +
                  std::to_string(std::min(count, kLargestKey)) + ", 384000000 + i, 384003600 + i, 2 FROM n");
    database.exec(numbersUpTo(count) + "INSERT INTO Location SELECT i, i, 'Place ' || i FROM n");
    return parsed(database.path());
}

void measureNotesAndCalendar(int count) {
    const auto noteParser = notes(count);
    const auto calendarParser = calendar(count);
    print("notes", count, leastSeconds(kRuns, [&] { noteParser->customTableForNotesDB(); }));
    print("calendar", count, leastSeconds(kRuns, [&] { calendarParser->customTableForCalendarDB(); }));
}

// ---- From tables in memory ----

using Cells = std::vector<std::string>;
using Tables = std::vector<std::shared_ptr<RawTableObject>>;

/// A table with a live row for each number from 1 up to `count`.
std::shared_ptr<RawTableObject> table(const std::string& name, const Cells& columns, int count,
                                      const std::function<Cells(int number)>& row) {
    auto table = std::make_shared<RawTableObject>();
    table->setName(name);
    table->setFiledList(columns);
    for (int i = 1; i <= count; ++i) table->rowList().append(row(i));
    return table;
}

/// In no order, and each of the first `count` numbers as often as every other.
std::string scattered(int number, int count) {
    return std::to_string(1 + static_cast<std::int64_t>(number) * 7919 % count);
}

std::string phoneNumber(int number) {
    return std::to_string(4'930'000'000 + number);
}

Cells messageRow(int i) {
    const std::string number = std::to_string(i);
    std::string text = "Message number " + number + ": ";
    text.append("Ueber den Wolken ist es hell. The quick brown fox jumps over the lazy dog, said nobody at all today.",
                static_cast<std::size_t>(i % 23), static_cast<std::size_t>(60 + i % 41));
    return {number,
            "guid-" + std::to_string(10'000'000 + i) + "-" + scattered(i, 99'991),
            text,
            "0",
            "NULL",
            std::to_string(1 + i % 97),
            "NULL",
            "de",
            "0102030405060708",
            "10",
            "0",
            "text message",
            "owner@example.com",
            "account-guid",
            "0",
            std::to_string(384'000'000 + i * 60),
            std::to_string(384'000'030 + i * 60),
            std::to_string(384'000'020 + i * 60),
            "1",
            "1",
            "0",
            std::to_string(i % 2)};
}

std::shared_ptr<RawTableObject> messageTable(int count) {
    return table("message",
                 {"ROWID",        "guid",         "text",           "replace",   "service_center", "handle_id",
                  "subject",      "country",      "attributedBody", "version",   "type",           "service",
                  "account",      "account_guid", "error",          "date",      "date_read",      "date_delivered",
                  "is_delivered", "is_finished",  "is_emote",       "is_from_me"},
                 count, messageRow);
}

std::shared_ptr<RawTableObject> messageJoinTable(int count) {
    return table("chat_message_join", {"chat_id", "message_id"}, count, [](int i) {
        return Cells{scattered(i, kConversations), std::to_string(i)};
    });
}

std::shared_ptr<RawTableObject> chatTable() {
    return table(
        "chat", {"ROWID", "guid", "style", "state", "account_id", "properties", "chat_identifier"}, kConversations,
        [](int i) { return Cells{std::to_string(i), "chat", "45", "3", "account", "NULL", "+" + phoneNumber(i)}; });
}

std::shared_ptr<RawTableObject> personTable(int count) {
    Cells columns{"ROWID",         "First",          "Last",         "Middle",
                  "FirstPhonetic", "MiddlePhonetic", "LastPhonetic", "Organization"};
    constexpr std::size_t kColumns = 33;
    while (columns.size() < kColumns) columns.push_back("column" + std::to_string(columns.size()));
    return table("ABPerson", columns, count, [](int i) {
        Cells row(kColumns, "NULL");
        row[0] = std::to_string(i);
        row[1] = "Given" + row[0];
        row[2] = "Family" + row[0];
        return row;
    });
}

constexpr int kValuesOfPerson = 4;

/// As a phone writes them: those of a person one after the other.
std::shared_ptr<RawTableObject> valueTable(int persons) {
    return table("ABMultiValue", {"UID", "record_id", "property", "identifier", "label", "value"},
                 persons * kValuesOfPerson, [](int i) {
                     static constexpr const char* kLabels[kValuesOfPerson] = {"1", "3", "7", "8"};
                     const std::string person = std::to_string(1 + (i - 1) / kValuesOfPerson);
                     return Cells{std::to_string(i),   person, "3", "0", kLabels[i % kValuesOfPerson],
                                  "+" + phoneNumber(i)};
                 });
}

std::shared_ptr<RawTableObject> callTable(int count) {
    return table("call", {"ROWID", "address", "date", "duration", "flags"}, count, [](int i) {
        return Cells{std::to_string(i), "+" + phoneNumber(i % kConversations), std::to_string(1'362'000'000 + i * 600),
                     std::to_string(i % 4'000), std::to_string(i % 2 * 5)};
    });
}

Dictionary contactsMap() {
    Dictionary map;
    for (int i = 0; i < kConversations; ++i) map.set(phoneNumber(i), "Given Family");
    return map;
}

/// Every row is reported, as by a parser.
struct Shaping {
    Tables tables;
    std::atomic<bool> stop{false};
    double progress = 0;
    shaping::Source source() {
        return {.tables = tables, .stop = stop, .tableCount = 1, .report = [this](const Dictionary& report) {
                    progress = report.valueAt(0).numberOr0();
                }};
    }
};

void measureContacts(int persons) {
    Shaping shaping{.tables = {personTable(persons), valueTable(persons)}};
    const double seconds = leastSecondsToMake(kRuns, [&] {
        std::optional<Dictionary> map;
        auto contacts = shapeContacts(shaping.source(), map);
        return std::pair(std::move(contacts), std::move(map));
    });
    print("contacts", persons, seconds);
}

void measureCalls(int count, const Dictionary& map) {
    Shaping shaping{.tables = {callTable(count)}};
    print("calls", count, leastSecondsToMake(kRuns, [&] { return shapeCallHistory(shaping.source(), &map); }));
}

void measureMessages(int count, const Dictionary& map) {
    Shaping shaping{.tables = {messageTable(count), messageJoinTable(count), chatTable()}};
    print("messages", count, leastSecondsToMake(kRuns, [&] { return shapeMessages(shaping.source(), &map); }));
}

/// Takes turns with the engine, which is what it is compared with.
void measureMessagesAndParse(const std::string& database, const Dictionary& map) {
    Shaping shaping{.tables = {messageTable(kMillion), messageJoinTable(kMillion), chatTable()}};
    double shapingTime = std::numeric_limits<double>::infinity();
    double parseTime = shapingTime;
    for (int i = 0; i < kRuns; ++i) {
        shapingTime =
            std::min(shapingTime, leastSecondsToMake(1, [&] { return shapeMessages(shaping.source(), &map); }));
        parseTime = std::min(parseTime, leastSecondsToMake(1, [&] { return parsed(database); }));
    }
    print("messages", kMillion, shapingTime);
    print("parse", kMillion, parseTime);
}

std::vector<std::shared_ptr<ZkMobileBackupMessageRecord>> records(const RowList& rows) {
    std::vector<std::shared_ptr<ZkMobileBackupMessageRecord>> made;
    for (const Row& row : rows) {
        made.push_back(ZkMobileBackupMessageRecord::initWithDictionary(*row.dictionary(), false));
    }
    return made;
}

void measureMemory(const Dictionary& map) {
    const std::size_t before = heapBytes();
    Shaping shaping{.tables = {messageTable(kMillion)}};
    const std::size_t raw = heapBytes() - before;
    shaping.tables.push_back(messageJoinTable(kMillion));
    shaping.tables.push_back(chatTable());
    const std::size_t beforeRecords = heapBytes();
    const auto made = records(shapeMessages(shaping.source(), &map)->rowList());
    std::cout << "memory " << raw << ' ' << heapBytes() - beforeRecords << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: bench_shaping DATABASE\n";
        return 2;
    }
    for (const int count : {1'000, 10'000, 100'000}) measureNotesAndCalendar(count);
    const Dictionary map = contactsMap();
    for (const int count : {25'000, 50'000}) measureContacts(count);
    for (const int count : {20'000, 200'000}) measureCalls(count, map);
    for (const int count : {10'000, 100'000}) measureMessages(count, map);
    measureMessagesAndParse(argv[1], map);
    measureMemory(map);
    return 0;
}
