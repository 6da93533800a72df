#include "tests/support/SampleDatabases.h"

#include <array>
#include <string>

#include "tests/support/DatabaseBuilder.h"

namespace ZkMobileBackup {
namespace {

// Times in most of the phone's databases count seconds from 2001-01-01; calls count from 1970.
constexpr std::int64_t kMarch2013 = 384'000'000;
constexpr std::int64_t kMarch2013FromUnixEpoch = kMarch2013 + 978'307'200;
constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kDay = 24 * kHour;

struct Person {
    std::string first, last, organization, note, mobile, home, email, address, image{};
};

std::vector<Person> people() {
    return {
        {"Amelia", "Hartley", "Northwind Bakery", "Prefers mornings", "+1-555-010-0123", "555-0199",
         "amelia@example.com", "12 Harbour Street, Springfield", "amelia.png"},
        {"Jürgen", "Größmann", "Müller & Söhne GmbH", "Schlüssel liegt beim Nachbarn", "+49-1555-0142", "030-555-0142",
         "juergen@example.de", "Straße der Brüder 7, Köln"},
        {"Élodie", "Lefèvre", "Café de l’Étoile", "Anniversaire le 3 août", "+33-555-0117", "01-555-0117",
         "elodie@example.fr", "4 rue du Marché, Orléans"},
        {"Наталья", "Соколова", "Институт языков", "Позвонить после шести", "+7-555-0164", "495-555-0164",
         "natalia@example.ru", "ул. Лесная, 5, Тверь"},
        {"さくら", "山本", "青空書店", "猫が二匹います", "90-5550-0175", "03-555-0175", "sakura@example.jp",
         "京都市左京区一丁目"},
        {"小明", "王", "晨光科技", "喜欢喝绿茶", "+86-555-0188", "010-555-0188", "xiaoming@example.cn",
         "杭州市西湖路8号"},
        {"ليلى", "حداد", "مكتبة النور", "تحب القهوة", "+962-555-0131", "06-555-0131", "layla@example.jo",
         "شارع الزهور، عمّان"},
        {"Νίκος", "Παπαδάκης", "Ταβέρνα Θάλασσα", "Γενέθλια τον Μάιο", "+30-555-0156", "210-555-0156",
         "nikos@example.gr", "Οδός Ερμού 9, Χανιά"},
        {"दीपा", "शर्मा", "नई दिशा", "शाम को मिलना", "+91-555-0148", "011-555-0148", "deepa@example.in",
         "गांधी मार्ग 3, जयपुर"},
        {"Rosa 🌹", "Delgado", "Estudio Luz", "Trae las llaves 🔑", "+34-555-0129", "91-555-0129", "rosa@example.es",
         "Calle Mayor 21, Ávila"},
    };
}

const std::array<std::string, 12> kPhrases = {
    "See you at the station at half past seven.",
    "Danke für die schönen Blumen! 🌷",
    "N’oublie pas d’acheter du pain et des œufs.",
    "Привет! Как прошла поездка?",
    "明日の会議は午後三時からです。",
    "晚上一起吃饭吗？我订了位子。",
    "هل وصلت إلى البيت؟",
    "Καλημέρα! Θα τα πούμε το βράδυ.",
    "नमस्ते, कल मिलते हैं।",
    "First line\nsecond line\nthird line",
    "Happy birthday 🎉🎂🥳 to you and the twins 👩‍👧‍👦",
    "¿Quedamos mañana a las nueve? Trae el paraguas ☔",
};

/// Whom the phone talked to, as the network calls them: numbers come with a country code, also where the address book
/// has them without one, and never with dashes.
const std::string kAmelia = "+15550100123", kJuergen = "+4915550142", kElodie = "elodie@example.fr",
                  kNatalia = "+75550164", kSakura = "+819055500175", kXiaoming = "+865550188", kNikos = "+305550156",
                  kDeepa = "+915550148", kRosa = "rosa@example.es", kStranger = "+442079460000";

std::string phrase(std::int64_t number) {
    return kPhrases[static_cast<std::size_t>(number) % kPhrases.size()] + " (" + std::to_string(number) + ")";
}

// ---- Contacts ----

/// The index of positions matters to every reader of this table: the note is column 9, the image column 32.
const std::string kPersonTable =
    "CREATE TABLE ABPerson (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, First TEXT, Last TEXT, Middle TEXT, "
    "FirstPhonetic TEXT, MiddlePhonetic TEXT, LastPhonetic TEXT, Organization TEXT, Department TEXT, Note TEXT, "
    "Kind INTEGER, Birthday TEXT, JobTitle TEXT, Nickname TEXT, Prefix TEXT, Suffix TEXT, FirstSort TEXT, "
    "LastSort TEXT, CreationDate INTEGER, ModificationDate INTEGER, CompositeNameFallback TEXT, ExternalIdentifier "
    "TEXT, ExternalModificationTag TEXT, ExternalUUID TEXT, StoreID INTEGER, DisplayName TEXT, ExternalRepresentation "
    "BLOB, FirstSortSection TEXT, LastSortSection TEXT, FirstSortLanguageIndex INTEGER, LastSortLanguageIndex INTEGER, "
    "PersonLink INTEGER, ImageURI TEXT, IsPreferredName INTEGER)";

std::vector<Cell> personRow(std::int64_t key, const Person& person) {
    const std::int64_t created = kMarch2013 + key * kDay;
    const Cell image = person.image.empty() ? Cell(nullptr) : Cell(person.image);
    return {
        key,     person.first,   person.last, nullptr, nullptr, nullptr,         nullptr,         person.organization,
        nullptr, person.note,    0,           nullptr, nullptr, nullptr,         nullptr,         nullptr,
        nullptr, nullptr,        created,     created, nullptr, nullptr,         nullptr,         nullptr,
        0,       person.first,   nullptr,     "A",     "A",     std::int64_t{1}, std::int64_t{1}, std::int64_t{1},
        image,   std::int64_t{1}};
}

/// What a multi-value row holds: its label column is one of these codes.
enum Label : std::int64_t { kMobileLabel = 1, kHomeLabel = 3, kAddressLabel = 7, kEmailLabel = 8 };

void addMultiValue(DatabaseBuilder& database, std::int64_t owner, std::int64_t property, Label label,
                   const std::string& value) {
    database.run("INSERT INTO ABMultiValue (record_id, property, identifier, label, value) VALUES (?, ?, ?, ?, ?)",
                 {owner, property, std::int64_t{0}, static_cast<std::int64_t>(label), value});
}

void addPerson(DatabaseBuilder& database, std::int64_t key, const Person& person) {
    database.insert("ABPerson", personRow(key, person));
    addMultiValue(database, key, 3, kMobileLabel, person.mobile);
    addMultiValue(database, key, 3, kHomeLabel, person.home);
    addMultiValue(database, key, 4, kEmailLabel, person.email);
    addMultiValue(database, key, 5, kAddressLabel, person.address);
    database.run(
        "INSERT INTO ABPersonFullTextSearch_content (docid, c0First, c1Last, c15Phone, c16Note) "
        "VALUES (?, ?, ?, ?, ?)",
        {key, person.first, person.last, person.mobile + " " + person.home, person.note});
}

// ---- Messages ----

const std::string kMessageTable =
    "CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT NOT NULL, text TEXT, replace "
    "INTEGER DEFAULT 0, service_center TEXT, handle_id INTEGER DEFAULT 0, subject TEXT, country TEXT, attributedBody "
    "BLOB, version INTEGER DEFAULT 0, type INTEGER DEFAULT 0, service TEXT, account TEXT, account_guid TEXT, error "
    "INTEGER DEFAULT 0, date INTEGER, date_read INTEGER, date_delivered INTEGER, is_delivered INTEGER DEFAULT 0, "
    "is_finished INTEGER DEFAULT 0, is_emote INTEGER DEFAULT 0, is_from_me INTEGER DEFAULT 0)";

/// The parties of each conversation; one with several of them has an identifier of its own.
const std::array<std::vector<std::string>, 8> kConversations = {{
    {kAmelia},
    {kJuergen},
    {kRosa},
    {kNatalia},
    {kSakura},
    {kXiaoming},
    {kStranger},
    {kNikos, kDeepa, kElodie},
}};
const std::string kGroupIdentifier = "chat580112047";

void addMessage(DatabaseBuilder& database, std::int64_t key) {
    const std::int64_t conversation = key % static_cast<std::int64_t>(kConversations.size()) + 1;
    const std::int64_t date = kMarch2013 + key * kHour;
    const std::int64_t sent = key % 3 == 0 ? 1 : 0;
    database.run(
        "INSERT INTO message (guid, text, handle_id, service, account, date, date_read, date_delivered, "
        "is_delivered, is_finished, is_from_me) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        {"message-" + std::to_string(key), phrase(key), conversation, "text", "owner@example.com", date, date, date,
         std::int64_t{1}, std::int64_t{1}, sent});
    database.insert("chat_message_join", {conversation, key});
}

void addConversation(DatabaseBuilder& database, std::int64_t key, const std::vector<std::string>& parties) {
    const std::string& identifier = parties.size() == 1 ? parties.front() : kGroupIdentifier;
    database.run(
        "INSERT INTO chat (ROWID, guid, style, state, account_id, chat_identifier, service_name) "
        "VALUES (?, ?, ?, ?, ?, ?, ?)",
        {key, "chat-" + std::to_string(key), std::int64_t{45}, std::int64_t{3}, "owner", identifier, "text"});
    for (const std::string& party : parties) {
        database.run("INSERT INTO handle (id, country, service) VALUES (?, ?, ?)", {party, "xx", "text"});
        database.run("INSERT INTO chat_handle_join VALUES (?, last_insert_rowid())", {key});
    }
}

// ---- Calendar ----

/// Values of the column entity_type.
enum EntityType : std::int64_t { kEvent = 2, kReminder = 3 };

void addEvent(DatabaseBuilder& database, std::int64_t key, const std::string& title, std::int64_t location) {
    const std::int64_t start = kMarch2013 + key * kDay;
    database.insert("CalendarItem", {key, title, location, "", start, "UTC", start + 2 * kHour, std::int64_t{0},
                                     std::int64_t{1}, static_cast<std::int64_t>(kEvent), nullptr});
}

void addReminder(DatabaseBuilder& database, std::int64_t key, const std::string& title, const Cell& completed) {
    const std::int64_t start = kMarch2013 + key * kDay;
    database.insert("CalendarItem", {key, title, std::int64_t{0}, "", start, "UTC", start, std::int64_t{0},
                                     std::int64_t{2}, static_cast<std::int64_t>(kReminder), completed});
}

// ---- Notes ----

void addNote(DatabaseBuilder& database, std::int64_t key, const std::string& title, const std::string& text) {
    const std::int64_t date = kMarch2013 + key * kDay;
    database.insert("ZNOTE", {key, std::int64_t{3}, std::int64_t{1}, key, date, date, "author", title});
    database.insert("ZNOTEBODY", {key, std::int64_t{4}, std::int64_t{1}, key, text});
}

// ---- Calls ----

struct Call {
    std::int64_t flags, duration;
};

constexpr Call kMissed{0, 0}, kFailed{5, 0};
constexpr std::array<Call, 7> kCalls = {{kMissed, {5, 75}, {0, 42}, kFailed, {0, 600}, {5, 9000}, {0, 1}}};

void addCall(DatabaseBuilder& database, const std::string& party, std::int64_t date, const Call& call) {
    database.run(
        "INSERT INTO call (address, date, duration, flags, id, name, country_code) VALUES (?, ?, ?, ?, ?, ?, ?)",
        {party, date, call.duration, call.flags, std::int64_t{1}, "", "001"});
}

// ---- Bookmarks ----

void addBookmark(DatabaseBuilder& database, const std::string& title, const std::string& url) {
    database.run(
        "INSERT INTO bookmarks (parent, type, title, url, num_children, editable, deletable, order_index, "
        "external_uuid) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)",
        {std::int64_t{1}, std::int64_t{0}, title, url, std::int64_t{0}, std::int64_t{1}, std::int64_t{1},
         std::int64_t{5}, "uuid-" + url});
}

}  // namespace

std::vector<std::uint8_t> sampleAddressBook() {
    DatabaseBuilder database;
    database.exec(kPersonTable);
    database.exec(
        "CREATE TABLE ABMultiValue (UID INTEGER PRIMARY KEY, record_id INTEGER, property INTEGER, identifier INTEGER, "
        "label INTEGER, value TEXT)");
    database.exec(
        "CREATE TABLE ABPersonFullTextSearch_content (docid INTEGER PRIMARY KEY, c0First TEXT, c1Last TEXT, c2Middle "
        "TEXT, c3FirstPhonetic TEXT, c4MiddlePhonetic TEXT, c5LastPhonetic TEXT, c6Organization TEXT, c7Department "
        "TEXT, c8JobTitle TEXT, c9Nickname TEXT, c10Prefix TEXT, c11Suffix TEXT, c12DisplayName TEXT, c13Email TEXT, "
        "c14Address TEXT, c15Phone TEXT, c16Note TEXT)");
    database.exec("BEGIN");
    std::int64_t key = 0;
    for (const Person& person : people()) addPerson(database, ++key, person);
    database.exec("COMMIT");
    database.exec("DELETE FROM ABPerson WHERE ROWID IN (3, 7); DELETE FROM ABMultiValue WHERE record_id IN (3, 7)");
    return database.bytes();
}

std::vector<std::uint8_t> sampleMessages() {
    DatabaseBuilder database;
    database.exec(kMessageTable);
    database.exec(
        "CREATE TABLE handle (ROWID INTEGER PRIMARY KEY AUTOINCREMENT UNIQUE, id TEXT NOT NULL, country TEXT, service "
        "TEXT NOT NULL, uncanonicalized_id TEXT)");
    database.exec(
        "CREATE TABLE chat (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT UNIQUE NOT NULL, style INTEGER, state "
        "INTEGER, account_id TEXT, properties BLOB, chat_identifier TEXT, service_name TEXT, room_name TEXT)");
    database.exec("CREATE TABLE chat_handle_join (chat_id INTEGER, handle_id INTEGER)");
    database.exec("CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER)");
    database.exec("BEGIN");
    std::int64_t conversation = 0;
    for (const auto& parties : kConversations) addConversation(database, ++conversation, parties);
    for (std::int64_t key = 1; key <= 400; ++key) addMessage(database, key);
    database.exec("COMMIT");
    // Single deletions leave holes in pages, the range empties whole pages; the joins of both stay behind.
    database.exec("DELETE FROM message WHERE ROWID % 23 = 5; DELETE FROM message WHERE ROWID BETWEEN 150 AND 230");
    return database.bytes();
}

std::vector<std::uint8_t> sampleCallHistory() {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE call (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, address TEXT, date INTEGER, duration INTEGER, "
        "flags INTEGER, id INTEGER DEFAULT -1, name TEXT, country_code TEXT)");
    database.exec("BEGIN");
    std::int64_t date = kMarch2013FromUnixEpoch;
    for (const std::string& party : {kAmelia, kJuergen, kRosa, kSakura, kStranger}) {
        for (const Call& call : kCalls) addCall(database, party, date += kHour, call);
    }
    database.exec("COMMIT");
    // A missed, an outgoing, a failed and an incoming one.
    database.exec("DELETE FROM call WHERE ROWID IN (1, 9, 18, 26)");
    return database.bytes();
}

std::vector<std::uint8_t> sampleCalendar() {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE CalendarItem (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, summary TEXT, location_id INTEGER, "
        "description TEXT, start_date INTEGER, start_tz TEXT, end_date INTEGER, all_day INTEGER, calendar_id INTEGER, "
        "entity_type INTEGER, completion_date INTEGER DEFAULT NULL)");
    database.exec(
        "CREATE TABLE Location (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, item_owner_id INTEGER, title TEXT, address "
        "TEXT)");
    database.exec("BEGIN");
    for (const char* place : {"Town hall", "Café am Fluß", "東京駅", "Большой зал"}) {
        database.run("INSERT INTO Location (item_owner_id, title, address) VALUES (?, ?, ?)",
                     {std::int64_t{1}, place, ""});
    }
    addEvent(database, 1, "Choir rehearsal 🎶", 1);
    addEvent(database, 2, "Frühstück mit Jürgen", 2);
    addEvent(database, 3, "Cancelled trip to the lake", 1);
    addEvent(database, 4, "花見の会 🌸", 3);
    addEvent(database, 5, "Дегустация чая", 4);
    addEvent(database, 6, "Dentist (moved away)", 2);
    addReminder(database, 7, "Water the plants 🌱", nullptr);
    addReminder(database, 8, "Acheter des timbres", kMarch2013 + 9 * kDay);
    addReminder(database, 9, "Deleted: return the library books", nullptr);
    addReminder(database, 10, "Τηλεφώνησε στον γιατρό", kMarch2013 + 11 * kDay);
    database.exec("COMMIT");
    database.exec("DELETE FROM CalendarItem WHERE ROWID IN (3, 6, 9)");
    return database.bytes();
}

std::vector<std::uint8_t> sampleNotes() {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE ZNOTE (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZBODY INTEGER, ZCREATIONDATE "
        "TIMESTAMP, ZMODIFICATIONDATE TIMESTAMP, ZAUTHOR TEXT, ZTITLE TEXT)");
    database.exec(
        "CREATE TABLE ZNOTEBODY (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZOWNER INTEGER, ZCONTENT "
        "TEXT)");
    database.exec("BEGIN");
    addNote(database, 1, "Shopping", "Milk, eggs, flour and a lemon");
    addNote(database, 2, "Rezept", "Apfelkuchen: 300 g Mehl, 4 Äpfel, Zimt.\nBei 180 °C backen.");
    addNote(database, 3, "Secret plan", "Deleted note: the surprise party is on Friday at eight 🎈");
    addNote(database, 4, "読書メモ", "雪国を読み終えた。次は何にしよう？");
    addNote(database, 5, "Poème", "Deleted verse: les sanglots longs des violons de l’automne");
    addNote(database, 6, "Ideas 💡", "A bird house with a camera 🐦📷");
    database.exec("COMMIT");
    database.exec("DELETE FROM ZNOTE WHERE Z_PK IN (3, 5); DELETE FROM ZNOTEBODY WHERE Z_PK IN (3, 5)");
    return database.bytes();
}

std::vector<std::uint8_t> sampleBookmarks() {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE bookmarks (id INTEGER PRIMARY KEY, special_id INTEGER DEFAULT 0, parent INTEGER, type INTEGER, "
        "title TEXT, url TEXT, num_children INTEGER DEFAULT 0, editable INTEGER DEFAULT 1, deletable INTEGER DEFAULT "
        "1, "
        "order_index INTEGER, external_uuid TEXT UNIQUE)");
    database.exec("BEGIN");
    addBookmark(database, "Weather", "https://weather.example.com/today?unit=c&lang=en");
    addBookmark(database, "Zeitung von gestern", "https://zeitung.example.de/archiv");
    addBookmark(database, "Deleted: flights to Lisbon ✈️", "https://flights.example.com/lisbon");
    addBookmark(database, "料理のレシピ", "https://recipes.example.jp/料理");
    addBookmark(database, "Deleted: карта города", "https://maps.example.ru/город");
    addBookmark(database, "Library", "https://library.example.org/");
    database.exec("COMMIT");
    database.exec("DELETE FROM bookmarks WHERE id IN (3, 5)");
    return database.bytes();
}

std::vector<std::uint8_t> sampleVoicemail() {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE voicemail (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, remote_uid INTEGER, date INTEGER, token "
        "TEXT, "
        "sender TEXT, callback_num TEXT, duration INTEGER, expiration INTEGER, trashed_date INTEGER, flags INTEGER)");
    for (std::int64_t key = 1; key <= 5; ++key) {
        database.insert("voicemail", {key, key, kMarch2013FromUnixEpoch + key * kDay, "complete", "+15550100123",
                                      "+15550100123", 10 * key, std::int64_t{0}, std::int64_t{0}, std::int64_t{2}});
    }
    database.exec("DELETE FROM voicemail WHERE ROWID = 3");
    return database.bytes();
}

std::vector<std::uint8_t> samplePhotoLibrary() {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE ZGENERICASSET (Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, ZKIND INTEGER, "
        "ZDATECREATED TIMESTAMP, ZDIRECTORY TEXT, ZFILENAME TEXT)");
    for (std::int64_t key = 1; key <= 4; ++key) {
        database.insert("ZGENERICASSET",
                        {key, std::int64_t{5}, std::int64_t{1}, std::int64_t{0}, kMarch2013 + key * kDay,
                         "DCIM/100MEDIA", "IMG_000" + std::to_string(key) + ".JPG"});
    }
    database.exec("DELETE FROM ZGENERICASSET WHERE Z_PK = 2");
    return database.bytes();
}

}  // namespace ZkMobileBackup
