#include <gmock/gmock.h>
#include <random>

#include "base/Text.h"
#include "tests/recovery/shaping/ShapingTesting.h"

namespace ZkMobileBackup::shaping {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::ZkMobileBackup::testing::Cells;
using ::ZkMobileBackup::testing::columnOf;
using ::ZkMobileBackup::testing::Database;
using ::ZkMobileBackup::testing::Entries;
using ::ZkMobileBackup::testing::Report;

constexpr std::size_t kCompanyCell = 5;
constexpr std::size_t kNoteCell = 9;
constexpr std::size_t kPersonCells = 33;

/// A person as the phone's database keeps one, everything else NULL.
Cells person(const std::string& key, const std::string& first, const std::string& last) {
    Cells cells(kPersonCells, "NULL");
    cells[0] = key;
    cells[1] = first;
    cells[2] = last;
    return cells;
}

Cells withCell(Cells cells, std::size_t index, const std::string& text) {
    cells[index] = text;
    return cells;
}

Cells shortened(Cells cells, std::size_t count) {
    cells.resize(count);
    return cells;
}

/// An entry of the search index.
Cells indexed(const std::string& first, const std::string& last, const std::string& numbers, const std::string& note) {
    Cells cells(18, "NULL");
    cells[1] = first;
    cells[2] = last;
    cells[16] = numbers;
    cells[17] = note;
    return cells;
}

/// A multi-value; columns UID, record_id, label, value.
Cells value(const std::string& owner, const std::string& label, const std::string& text) {
    return {"1", owner, label, text};
}

Array texts(const std::vector<std::string>& items) {
    return {items.begin(), items.end()};
}

Entries entriesOf(const Dictionary& dictionary) {
    Entries entries;
    for (std::size_t i = 0; i < dictionary.size(); ++i) {
        entries.emplace_back(dictionary.keyAt(i), *dictionary.valueAt(i).text());
    }
    return entries;
}

class Contacts : public ::testing::Test {
protected:
    void addPersons(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        std::vector<std::string> columns(kPersonCells);
        columns[kCompanyCell] = "Organization";
        database_.add("ABPerson", columns, live, carved);
    }
    void addValues(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("ABMultiValue", {"UID", "record_id", "label", "value"}, live, carved);
    }
    void addIndex(const std::vector<Cells>& live, const std::vector<Cells>& carved = {}) {
        database_.add("ABPersonFullTextSearch_content", {}, live, carved);
    }

    std::shared_ptr<CustomTableObject> shaped() {
        return shapeContacts({.tables = database_.tables,
                              .stop = database_.stop,
                              .dbIndex = database_.dbIndex,
                              .report = [this](const Dictionary& progress) { database_.record(progress); }},
                             contactsMap_);
    }
    /// The first live row.
    Dictionary shapedPerson() {
        const auto table = shaped();
        return table->rowList().empty() ? Dictionary{{"no such row", ""}} : *table->rowList()[0].dictionary();
    }
    std::string nameOf(const std::string& first, const std::string& last) {
        Contacts other;
        other.addPersons({person("1", first, last)});
        other.addValues({});
        return *other.shapedPerson().text("name");
    }
    Entries map() { return contactsMap_ ? entriesOf(*contactsMap_) : Entries{{"no map", ""}}; }

    void TestBody() override {}

    Database database_;
    std::optional<Dictionary> contactsMap_;
};

/// A list of a row, with one text in place of a list that is not there.
Value listOf(const Dictionary& row, std::string_view name) {
    const Value* list = row.find(name);
    return list != nullptr ? *list : Value("(missing)");
}

// ---- The table ----

TEST_F(Contacts, TableHasItsNameAndColumns) {
    const auto table = shaped();
    EXPECT_EQ(table->name(), "Contacts");
    EXPECT_THAT(table->filedList(), ElementsAre("name", "company", "mobilePhoneList", "emailList", "Note", "image"));
}

TEST_F(Contacts, PersonHasNameCompanyNoteImageAndLists) {
    Cells ann = person("1", "Ann", "Lee");
    ann[kCompanyCell] = "Works";
    ann[kNoteCell] = "likes tea";
    ann[32] = "FFD8";
    addPersons({ann});
    addValues({value("1", "1", "555"), value("1", "8", "ann@example.org")});
    Dictionary row = shapedPerson();
    EXPECT_TRUE(row.contains(kRowIdentityKey));
    row.remove(kRowIdentityKey);
    EXPECT_EQ(row, (Dictionary{{"name", "Ann Lee"},
                               {"company", "Works"},
                               {"Note", "likes tea"},
                               {"image", "FFD8"},
                               {"mobilePhoneList", texts({"555"})},
                               {"emailList", texts({"ann@example.org"})}}));
}

TEST_F(Contacts, PersonWithoutValuesHasNoListKeys) {
    addPersons({person("1", "Ann", "Lee")});
    addValues({value("2", "1", "555")});
    EXPECT_THAT(keysOf(shapedPerson()), ElementsAre("RowData_Identify_Key", "name", "company", "Note", "image"));
}

TEST_F(Contacts, LiveAndCarvedPersonsStayApart) {
    addPersons({person("1", "a", "NULL"), person("2", "b", "NULL")}, {person("3", "c", "NULL")});
    addValues({});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "name"), ElementsAre("a", "b"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "name"), ElementsAre("c"));
}

TEST_F(Contacts, TableNamesAreComparedExactly) {
    database_.add("abperson", {}, {person("1", "a", "NULL")});
    addValues({});
    EXPECT_TRUE(shaped()->rowList().empty());
}

TEST_F(Contacts, ColumnNamesAreComparedWithoutCase) {
    addPersons({person("1", "a", "NULL")});
    database_.tables[0]->filedList()[kCompanyCell] = "ORGANIZATION";
    database_.add("ABMultiValue", {"UID", "record_id", "Label", "VALUE"}, {value("1", "1", "555")});
    const Dictionary row = shapedPerson();
    EXPECT_EQ(*row.text("company"), "NULL");
    EXPECT_EQ(listOf(row, "mobilePhoneList"), Value(texts({"555"})));
}

// ---- Names ----

TEST_F(Contacts, NameIsFirstNameOneSpaceLastName) {
    EXPECT_EQ(nameOf("Ann", "Lee"), "Ann Lee");
    EXPECT_EQ(nameOf("Ann", "NULL"), "Ann");
    EXPECT_EQ(nameOf("NULL", "Lee"), "Lee");
    EXPECT_EQ(nameOf("", "Lee"), " Lee");
    EXPECT_EQ(nameOf("Ann", ""), "Ann ");
}

TEST_F(Contacts, EmptyNamesAreUnknown) {
    EXPECT_EQ(nameOf("", "NULL"), "Unknown");
    EXPECT_EQ(nameOf("NULL", ""), "Unknown");
    EXPECT_EQ(nameOf("", ""), "Unknown");
    EXPECT_EQ(nameOf(" ", "NULL"), "Unknown");
    EXPECT_EQ(nameOf("  ", "NULL"), "  ");
}

TEST_F(Contacts, NameNullStaysNull) {
    EXPECT_EQ(nameOf("NULL", "NULL"), "NULL");
}

TEST_F(Contacts, NamesAreCleaned) {
    EXPECT_EQ(nameOf("An\nn", "L\te\x7f"), "An n L e ");
    EXPECT_EQ(nameOf("\n", "NULL"), " ");  // judged before it is cleaned
}

TEST_F(Contacts, ShortPersonsLackWhatTheirRowsLack) {
    addPersons({{}, {"1"}, {"1", "Ann"}, {"1", "NULL"}, {"1", "Ann", "Lee"}});
    addValues({});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "name"), ElementsAre("Unknown", "Unknown", "Ann", "NULL", "Ann Lee"));
    EXPECT_THAT(columnOf(table->rowList(), "company"), ElementsAre("", "", "", "", ""));
    EXPECT_THAT(columnOf(table->rowList(), "Note"), ElementsAre("", "", "", "", ""));
    EXPECT_THAT(columnOf(table->rowList(), "image"), ElementsAre("NULL", "NULL", "NULL", "NULL", "NULL"));
}

// ---- Company, note, image ----

TEST_F(Contacts, CompanyIsCleanedAndNullStays) {
    addPersons({withCell(person("1", "a", "b"), kCompanyCell, "A\nB"), person("2", "a", "b")});
    addValues({});
    EXPECT_THAT(columnOf(shaped()->rowList(), "company"), ElementsAre("A B", "NULL"));
}

TEST_F(Contacts, MissingOrganizationColumnLeavesTheCompanyEmpty) {
    database_.add("ABPerson", {"ROWID", "First", "Last"}, {person("1", "a", "b")});
    addValues({});
    EXPECT_THAT(columnOf(shaped()->rowList(), "company"), ElementsAre(""));
}

TEST_F(Contacts, NoteIsTakenAsItStandsUnlessNull) {
    addPersons({withCell(person("1", "a", "b"), kNoteCell, "two\nlines"), person("2", "a", "b")});
    addValues({});
    EXPECT_THAT(columnOf(shaped()->rowList(), "Note"), ElementsAre("two\nlines", ""));
}

TEST_F(Contacts, ImageNeedsThirtyThreeCells) {
    addPersons({withCell(person("1", "a", "b"), 32, "FF\n"), shortened(person("2", "a", "b"), 32)});
    addValues({});
    EXPECT_THAT(columnOf(shaped()->rowList(), "image"), ElementsAre("FF\n", "NULL"));
}

// ---- Lists ----

TEST_F(Contacts, KindOfAValueChoosesItsList) {
    addPersons({person("1", "a", "b")});
    addValues({value("1", "1", "m1"), value("1", "2", "m2"), value("1", "7", "a7"), value("1", "8", "e8"),
               value("1", "9", "e9"), value("1", "5", "x"), value("1", "6", "x"), value("1", "0", "x"),
               value("1", "10", "x"), value("1", "-1", "x"), value("1", "NULL", "x"), value("1", " 1 mobile", "m3")});
    const Dictionary row = shapedPerson();
    EXPECT_EQ(listOf(row, "mobilePhoneList"), Value(texts({"m1", "m2", "m3"})));
    EXPECT_EQ(listOf(row, "addressList"), Value(texts({"a7"})));
    EXPECT_EQ(listOf(row, "emailList"), Value(texts({"e8", "e9"})));
    EXPECT_FALSE(row.contains("homePhoneList"));
}

TEST_F(Contacts, HomeValuesThatReadAsAPositiveNumberArePhones) {
    addPersons({person("1", "a", "b")});
    addValues({value("1", "3", "5 Elm St"), value("1", "4", "+49"), value("1", "3", "Elm St 5"), value("1", "4", "0"),
               value("1", "3", "-7"), value("1", "4", "(555)"), value("1", "3", "007")});
    const Dictionary row = shapedPerson();
    EXPECT_EQ(listOf(row, "homePhoneList"), Value(texts({"5 Elm St", "+49", "007"})));
    EXPECT_EQ(listOf(row, "addressList"), Value(texts({"Elm St 5", "0", "-7", "(555)"})));
}

TEST_F(Contacts, ValuesAreCleanedBeforeTheyAreJudged) {
    addPersons({person("1", "a", "b")});
    addValues({value("1", "1", "5\n5"), value("1", "3",
                                              "\x01"
                                              "7")});
    const Dictionary row = shapedPerson();
    EXPECT_EQ(listOf(row, "mobilePhoneList"), Value(texts({"5 5"})));
    EXPECT_EQ(listOf(row, "homePhoneList"), Value(texts({" 7"})));
}

TEST_F(Contacts, NullValuesBeginNoList) {
    addPersons({person("1", "a", "b")});
    addValues({value("1", "1", "NULL"), value("1", "8", "")});
    const Dictionary row = shapedPerson();
    EXPECT_FALSE(row.contains("mobilePhoneList"));
    EXPECT_EQ(listOf(row, "emailList"), Value(texts({""})));
}

TEST_F(Contacts, ListsStandInTheOrderInWhichTheyWereBegun) {
    addPersons({person("1", "a", "b")});
    addValues(
        {value("1", "8", "e"), value("1", "7", "a"), value("1", "1", "m"), value("1", "8", "f"), value("1", "3", "5")});
    EXPECT_THAT(keysOf(shapedPerson()), ElementsAre("RowData_Identify_Key", "name", "company", "Note", "image",
                                                    "emailList", "addressList", "mobilePhoneList", "homePhoneList"));
}

// ---- Whose values ----

TEST_F(Contacts, KeysAreComparedAsNumbers) {
    addPersons({person(" 07", "a", "b")});
    addValues({value("+7th", "1", "555")});
    EXPECT_EQ(listOf(shapedPerson(), "mobilePhoneList"), Value(texts({"555"})));
}

TEST_F(Contacts, OwnersWhoseKeysAreWrittenDifferentlyAreDifferent) {
    addPersons({person("5", "a", "b")});
    addValues(
        {value(" 5", "1", "first"), value("5", "1", "second"), value("05", "8", "third"), value(" 5", "8", "fourth")});
    const Dictionary row = shapedPerson();
    EXPECT_EQ(listOf(row, "mobilePhoneList"), Value(texts({"first"})));
    EXPECT_EQ(listOf(row, "emailList"), Value(texts({"fourth"})));
}

TEST_F(Contacts, LiveOwnerHidesTheCarvedOne) {
    addPersons({person("5", "a", "b")});
    addValues({value("5", "1", "live")}, {value("5", "1", "carved"), value("5", "8", "carved mail")});
    const Dictionary row = shapedPerson();
    EXPECT_EQ(listOf(row, "mobilePhoneList"), Value(texts({"live"})));
    EXPECT_FALSE(row.contains("emailList"));
}

TEST_F(Contacts, LaterLiveOwnerHidesAnExactlyWrittenCarvedOne) {
    addPersons({person("5", "a", "b")});
    addValues({value("1", "1", "other"), value("05", "1", "live")}, {value("5", "1", "carved")});
    EXPECT_EQ(listOf(shapedPerson(), "mobilePhoneList"), Value(texts({"live"})));
}

TEST_F(Contacts, CarvedOwnerIsTakenWithoutALiveOne) {
    addPersons({person("5", "a", "b")}, {person("5", "old", "b")});
    addValues({value("5", "5", "live, but of a kind that is not shown")}, {value("5", "1", "carved")});
    const auto table = shaped();
    EXPECT_EQ(listOf(*table->rowList()[0].dictionary(), "mobilePhoneList"), Value(texts({"carved"})));
    EXPECT_EQ(listOf(*table->deletedRowList()[0].dictionary(), "mobilePhoneList"), Value(texts({"carved"})));
}

TEST_F(Contacts, PersonsOfOneKeyShareTheirValues) {
    addPersons({person("5", "a", "NULL"), person("5", "b", "NULL")});
    addValues({value("5", "1", "555")});
    const auto table = shaped();
    for (const Row& row : table->rowList()) {
        EXPECT_EQ(listOf(*row.dictionary(), "mobilePhoneList"), Value(texts({"555"})));
    }
}

TEST_F(Contacts, KeysThatAreNoNumbersAreAllZero) {
    addPersons({person("NULL", "a", "b")});
    addValues({value("x", "1", "555")});
    EXPECT_EQ(listOf(shapedPerson(), "mobilePhoneList"), Value(texts({"555"})));
}

TEST_F(Contacts, SkippedShortRowsMakeCarvedValuesPassForLiveOnes) {
    // One short live row, so the first carved value counts as live and hides that of an owner who is carved.
    addPersons({person("5", "a", "b")});
    addValues({{"1", "5"}, value("1", "1", "other")}, {value("05", "1", "passes for live"), value("5", "1", "carved")});
    EXPECT_EQ(listOf(shapedPerson(), "mobilePhoneList"), Value(texts({"passes for live"})));

    // Carved values join a live owner by the same slip.
    database_.tables.clear();
    addPersons({person("5", "a", "b")});
    addValues({{"1", "5"}, value("5", "1", "live")}, {value("5", "1", "joined"), value("5", "1", "carved")});
    EXPECT_EQ(listOf(shapedPerson(), "mobilePhoneList"), Value(texts({"live", "joined"})));
}

TEST_F(Contacts, RowThatEndsBeforeItsValueCountsButHasNone) {
    addPersons({person("5", "a", "b")});
    addValues({{"1", "5", "1"}, value("5", "1", "live")}, {value("5", "1", "carved")});
    EXPECT_EQ(listOf(shapedPerson(), "mobilePhoneList"), Value(texts({"live"})));
}

TEST_F(Contacts, ValueOfARowTooShortForItsOwnerGoesNowhere) {
    addPersons({person("0", "a", "b"), {}});
    database_.add("ABMultiValue", {"value", "record_id", "label"}, {{}, {"555"}});
    const auto table = shaped();
    for (const Row& row : table->rowList()) EXPECT_FALSE(row.dictionary()->contains("mobilePhoneList"));
}

TEST_F(Contacts, MissingColumnsGiveNoLists) {
    addPersons({person("1", "a", "b")});
    database_.add("ABMultiValue", {"UID", "record_id", "label"}, {value("1", "1", "555")});
    EXPECT_FALSE(shapedPerson().contains("mobilePhoneList"));

    database_.tables[1]->setFiledList({"UID", "record_id", "kind", "value"});
    EXPECT_FALSE(shapedPerson().contains("mobilePhoneList"));
}

// ---- The contacts map ----

TEST_F(Contacts, MapLacksDashesAndTheLeadingPlus) {
    addPersons({person("1", "Ann", "Lee")});
    addValues({value("1", "1", "+1-555-01"), value("1", "1", "-+2"), value("1", "1", "++3"), value("1", "1", "(0) 4-4"),
               value("1", "1", "4+5")});
    shaped();
    EXPECT_EQ(
        map(),
        (Entries{
            {"155501", "Ann Lee"}, {"2", "Ann Lee"}, {"+3", "Ann Lee"}, {"(0) 44", "Ann Lee"}, {"4+5", "Ann Lee"}}));
}

TEST_F(Contacts, MapKeepsTheRowsTextsAsTheyAre) {
    addPersons({person("1", "Ann", "Lee")});
    addValues({value("1", "1", "+1-555")});
    EXPECT_EQ(listOf(shapedPerson(), "mobilePhoneList"), Value(texts({"+1-555"})));
}

TEST_F(Contacts, MapHasAnEntryForWhatIsNothingButDashesAndPlus) {
    addPersons({person("1", "Ann", "Lee")});
    addValues({value("1", "1", "--+")});
    shaped();
    EXPECT_EQ(map(), (Entries{{"", "Ann Lee"}}));
}

TEST_F(Contacts, MapLeavesEmptyTextsOut) {
    addPersons({person("1", "Ann", "Lee")});
    addValues({value("1", "1", ""), value("1", "1", "5")});
    shaped();
    EXPECT_EQ(map(), (Entries{{"5", "Ann Lee"}}));
}

TEST_F(Contacts, MapTakesTheListsInAnOrderOfItsOwn) {
    addPersons({person("1", "Ann", "Lee")});
    addValues({value("1", "8", "mail"), value("1", "7", "street"), value("1", "3", "2"), value("1", "1", "1"),
               value("1", "1", "3")});
    shaped();
    EXPECT_EQ(
        map(),
        (Entries{{"1", "Ann Lee"}, {"3", "Ann Lee"}, {"2", "Ann Lee"}, {"street", "Ann Lee"}, {"mail", "Ann Lee"}}));
}

TEST_F(Contacts, MapHoldsRawNames) {
    addPersons(
        {person("1", "A\nb", "NULL"), person("2", "NULL", "NULL"), person("3", "", "NULL"), person("4", "", "")});
    addValues({value("1", "1", "1"), value("2", "1", "2"), value("3", "1", "3"), value("4", "1", "4")});
    shaped();
    EXPECT_EQ(map(), (Entries{{"1", "A\nb"}, {"2", "NULL"}, {"3", ""}, {"4", " "}}));
}

TEST_F(Contacts, MapHasNoEntryWithoutARawName) {
    addPersons({{"1"}, {"2", "Bob"}});
    addValues({value("1", "1", "1"), value("2", "1", "2")});
    shaped();
    EXPECT_EQ(map(), (Entries{{"2", "Bob"}}));
}

TEST_F(Contacts, MapLacksPersonsWithoutValuesAndValuesWithoutPersons) {
    addPersons({person("1", "Ann", "Lee")});
    addValues({value("2", "1", "5")});
    shaped();
    EXPECT_EQ(map(), Entries{});
}

TEST_F(Contacts, LaterPersonNamesASharedNumberInItsFormerPlace) {
    addPersons({person("1", "Ann", "NULL"), person("2", "Bob", "NULL")}, {person("3", "Cid", "NULL")});
    addValues({value("1", "1", "5-5"), value("1", "1", "6"), value("2", "1", "7"), value("2", "1", "55"),
               value("3", "1", "7")});
    shaped();
    EXPECT_EQ(map(), (Entries{{"55", "Bob"}, {"6", "Ann"}, {"7", "Cid"}}));
}

TEST_F(Contacts, PersonsOfOneKeyNameItsNumbersInTurn) {
    // The third person renames what the second has taken from the first; the fourth renames its own part alone.
    addPersons({person("1", "Ann", "NULL"),
                person("2", "Bob", "NULL"),
                person("01", "Cid", "NULL"),
                person("2", "Dan", "NULL"),
                {"1"}});
    addValues({value("1", "1", "5"), value("1", "1", "shared"), value("2", "1", "6"), value("2", "1", "shared")});
    shaped();
    EXPECT_EQ(map(), (Entries{{"5", "Cid"}, {"shared", "Dan"}, {"6", "Dan"}}));
    database_.tables[0]->rowList().append(person("1", "Eve", "NULL"));
    shaped();
    EXPECT_EQ(map(), (Entries{{"5", "Eve"}, {"shared", "Eve"}, {"6", "Dan"}}));
}

TEST_F(Contacts, MapIsEmptiedFirst) {
    contactsMap_ = Dictionary{{"old", "entry"}};
    addPersons({person("1", "Ann", "Lee")});
    addValues({value("1", "1", "5")});
    shaped();
    EXPECT_EQ(map(), (Entries{{"5", "Ann Lee"}}));
}

TEST_F(Contacts, MapIsMadeEvenWithoutPersons) {
    addPersons({});
    addValues({});
    shaped();
    EXPECT_EQ(map(), Entries{});
}

TEST_F(Contacts, MissingTableLeavesTheMapAndListsTheIndexAlone) {
    for (const char* missing : {"ABPerson", "ABMultiValue"}) {
        database_.tables.clear();
        addIndex({indexed("Old", "Friend", "1", "NULL")});
        addPersons({person("1", "Ann", "Lee")});
        addValues({value("1", "1", "5")});
        std::erase_if(database_.tables, [&](const auto& table) { return table->name() == missing; });

        contactsMap_ = Dictionary{{"old", "entry"}};
        const auto table = shaped();
        EXPECT_EQ(map(), (Entries{{"old", "entry"}})) << missing;
        EXPECT_TRUE(table->rowList().empty()) << missing;
        EXPECT_THAT(columnOf(table->deletedRowList(), "name"), ElementsAre("Old Friend")) << missing;

        contactsMap_.reset();
        shaped();
        EXPECT_EQ(contactsMap_, std::nullopt) << missing;
    }
    EXPECT_THAT(database_.reports, IsEmpty());
}

// ---- The search index ----

TEST_F(Contacts, IndexEntryIsADeletedContactAlsoWhenItsPersonIsThere) {
    addIndex({indexed("Ann", "Lee", "555 5-5", "tea")});
    addPersons({person("1", "Ann", "Lee")}, {person("2", "Bob", "NULL")});
    addValues({});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->rowList(), "name"), ElementsAre("Ann Lee"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "name"), ElementsAre("Ann Lee", "Bob"));
    Dictionary row = *table->deletedRowList()[0].dictionary();
    row.remove(kRowIdentityKey);
    EXPECT_EQ(row, (Dictionary{{"name", "Ann Lee"},
                               {"company", ""},
                               {"Note", "tea"},
                               {"image", ""},
                               {"mobilePhoneList", texts({"555", "5-5"})}}));
    EXPECT_EQ(map(), Entries{});
}

TEST_F(Contacts, IndexEntryWithNeitherNumbersNorNoteIsSkipped) {
    addIndex({indexed("a", "NULL", "NULL", "NULL"), indexed("b", "NULL", "1", "NULL"),
              indexed("c", "NULL", "NULL", "note"), indexed("d", "NULL", "", "")});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->deletedRowList(), "name"), ElementsAre("b", "c", "d"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "Note"), ElementsAre("NULL", "note", ""));
    EXPECT_EQ(listOf(*table->deletedRowList()[1].dictionary(), "mobilePhoneList"), Value(texts({"NULL"})));
}

TEST_F(Contacts, IndexNumbersAreSplitAtEverySpace) {
    addIndex({indexed("a", "b", " 1  2 ", "NULL"), indexed("a", "b", "", "NULL")});
    const auto table = shaped();
    EXPECT_EQ(listOf(*table->deletedRowList()[0].dictionary(), "mobilePhoneList"),
              Value(texts({"", "1", "", "2", ""})));
    EXPECT_EQ(listOf(*table->deletedRowList()[1].dictionary(), "mobilePhoneList"), Value(texts({""})));
}

TEST_F(Contacts, IndexNamesAreUnknownWhenEmptyOrNullAndNeverCleaned) {
    addIndex({indexed("NULL", "NULL", "1", ""), indexed("", "NULL", "1", ""), indexed("", "", "1", ""),
              indexed("NULL", "Lee", "1", ""), indexed("A\nn", "NULL", "1", "")});
    EXPECT_THAT(columnOf(shaped()->deletedRowList(), "name"),
                ElementsAre("Unknown", "Unknown", "Unknown", "Lee", "A\nn"));
}

TEST_F(Contacts, ShortIndexEntriesAreListed) {
    addIndex({{}, {"1", "Ann"}, shortened(indexed("Bob", "NULL", "NULL", ""), 17)});
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->deletedRowList(), "name"), ElementsAre("Unknown", "Ann", "Bob"));
    EXPECT_THAT(columnOf(table->deletedRowList(), "Note"), ElementsAre("", "", ""));
    EXPECT_FALSE(table->deletedRowList()[1].dictionary()->contains("mobilePhoneList"));
    EXPECT_EQ(listOf(*table->deletedRowList()[2].dictionary(), "mobilePhoneList"), Value(texts({"NULL"})));
}

TEST_F(Contacts, CarvedIndexEntriesAreNotRead) {
    addIndex({}, {indexed("a", "b", "1", "note")});
    EXPECT_TRUE(shaped()->deletedRowList().empty());
}

// ---- Stop and progress ----

TEST_F(Contacts, StopLeavesTheIndexAlone) {
    addIndex({indexed("a", "NULL", "1", "")});
    addPersons({person("1", "Ann", "Lee")});
    addValues({value("1", "1", "5")});
    contactsMap_ = Dictionary{{"old", "entry"}};
    database_.stop = true;
    const auto table = shaped();
    EXPECT_THAT(columnOf(table->deletedRowList(), "name"), ElementsAre("a"));
    EXPECT_TRUE(table->rowList().empty());
    EXPECT_THAT(database_.reports, IsEmpty());
    EXPECT_EQ(map(), Entries{});
}

TEST_F(Contacts, StopBetweenPersonsKeepsWhatWasMade) {
    addPersons({person("1", "a", "NULL"), person("2", "b", "NULL"), person("3", "c", "NULL")});
    addValues({value("1", "1", "5"), value("2", "1", "6"), value("3", "1", "7")});
    database_.stopAfterReports = 2;
    EXPECT_THAT(columnOf(shaped()->rowList(), "name"), ElementsAre("a", "b"));
    EXPECT_EQ(map(), (Entries{{"5", "a"}, {"6", "b"}}));
}

TEST_F(Contacts, ProgressCountsPersonsAgainstAllValues) {
    addIndex({indexed("old", "NULL", "1", "")});
    addPersons({person("1", "a", "NULL"), person("2", "b", "NULL")}, {person("3", "c", "NULL")});
    addValues({value("1", "1", "5"), {"1"}, {"1"}}, {value("9", "1", "5")});
    database_.dbIndex = 2;
    shaped();
    const double start = 2 / 9.0 + 0.3333333333333333 + 0.05555555555555555;
    EXPECT_THAT(database_.reports,
                ElementsAre(Report{start + 0.25 / 18.0, 1, 2, "Contacts"}, Report{start + 0.5 / 18.0, 1, 3, "Contacts"},
                            Report{start + 0.75 / 18.0, 2, 4, "Contacts"}));
}

TEST_F(Contacts, ProgressStandsStillWithoutValues) {
    addPersons({person("1", "a", "NULL"), person("2", "b", "NULL")});
    addValues({});
    shaped();
    const double start = 0.3333333333333333 + 0.05555555555555555;
    EXPECT_THAT(database_.reports, ElementsAre(Report{start, 0, 1, "Contacts"}, Report{start, 0, 2, "Contacts"}));
}

// ---- Against a plain walk ----

/// Lists of owners in the order in which their keys were first seen.
struct PlainOwners {
    std::vector<std::pair<std::string, Dictionary>> owners;

    void append(const std::string& key, const std::string& list, const std::string& text) {
        auto found = owners.begin();
        while (found != owners.end() && found->first != key) ++found;
        if (found == owners.end()) found = owners.insert(found, {key, {}});
        const Value* stored = found->second.find(list);
        Array values = stored != nullptr ? *stored->array() : Array();
        values.emplace_back(text);
        found->second.set(list, std::move(values));
    }
};

/// Persons joined with their values in the plainest form: every key of both maps is tried for each person. The names
/// are first names alone, and every kind is 1 or 8.
std::pair<std::vector<Dictionary>, Dictionary> joinedByWalking(const RawTableObject& persons,
                                                               const RawTableObject& values) {
    PlainOwners live;
    PlainOwners carved;
    std::size_t counted = 0;
    for (const RowList* rows : {&values.rowList(), &values.deletedRowList()}) {
        for (const Row& row : *rows) {
            if (row.count() < 3) continue;
            PlainOwners& owners = counted++ < values.rowList().size() ? live : carved;
            if (row.count() == 3) continue;
            owners.append(std::string(row.cell(1)), row.cell(2) == "1" ? "mobilePhoneList" : "emailList",
                          std::string(row.cell(3)));
        }
    }
    std::vector<std::pair<std::string, Dictionary>> all = live.owners;
    all.insert(all.end(), carved.owners.begin(), carved.owners.end());
    std::pair<std::vector<Dictionary>, Dictionary> result;
    for (const Row& person : persons.rowList()) {
        Dictionary lists;
        for (const auto& [key, found] : all) {
            if (integerValue(key) != integerValue(person.cell(0))) continue;
            lists = found;
            break;
        }
        for (const char* name : {"mobilePhoneList", "emailList"}) {
            if (!lists.contains(name)) continue;
            for (const Value& text : *lists.find(name)->array()) result.second.set(*text.text(), person.cell(1));
        }
        result.first.push_back(lists);
    }
    return result;
}

std::string randomKey(std::mt19937& random) {
    static const std::vector<std::string> kSpellings{"", " ", "0", "+", "00"};
    return kSpellings[random() % kSpellings.size()] + std::to_string(random() % 40);
}

TEST_F(Contacts, JoinTheSameRowsAndMapAsAWalkOverAll) {
    std::mt19937 random(7);
    std::vector<Cells> persons;
    std::vector<std::vector<Cells>> values(2);
    for (int i = 0; i < 120; ++i) persons.push_back({randomKey(random), "person " + std::to_string(i), "NULL"});
    for (auto& rows : values) {
        for (int i = 0; i < 300; ++i) {
            rows.push_back({"1", randomKey(random), random() % 2 == 0 ? "1" : "8", std::to_string(random() % 150)});
            rows.back().resize(random() % 8 == 0 ? 2 + random() % 2 : 4);
        }
    }
    addPersons(persons);
    addValues(values[0], values[1]);
    const auto table = shaped();
    const auto [rows, expectedMap] = joinedByWalking(*database_.tables[0], *database_.tables[1]);
    ASSERT_EQ(table->rowList().size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Dictionary lists = *table->rowList()[i].dictionary();
        for (const char* key : {"RowData_Identify_Key", "name", "company", "Note", "image"}) lists.remove(key);
        EXPECT_EQ(lists, rows[i]) << i;
    }
    EXPECT_EQ(contactsMap_, expectedMap);
}

}  // namespace
}  // namespace ZkMobileBackup::shaping
