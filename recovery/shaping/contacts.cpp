#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/TextCleaning.h"
#include "recovery/shaping/multi_values.h"
#include "recovery/shaping/party_name.h"
#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

constexpr double kShareDivisor = 18.0;

constexpr std::size_t kPersonKeyCell = 0;
constexpr std::size_t kFirstNameCell = 1;  // in the table of persons and in their search index
constexpr std::size_t kLastNameCell = 2;
constexpr std::size_t kNoteCell = 9;
constexpr std::size_t kImageCell = 32;
constexpr std::size_t kIndexedNumbersCell = 16;
constexpr std::size_t kIndexedNoteCell = 17;

const std::vector<std::string> kColumns{"name", "company", "mobilePhoneList", "emailList", "Note", "image"};
// A row has a list only once something is in it.
const std::vector<std::string> kPresetColumns{"name", "company", "Note", "image"};

/// First and last name as far as they are known, "NULL" when neither is; nothing for a row without the cells.
std::optional<std::string> personName(const Row& raw) {
    const auto first = cellOf(raw, kFirstNameCell);
    if (!first) return std::nullopt;
    const std::string_view last = cellOf(raw, kLastNameCell).value_or(kNullCell);
    if (*first == kNullCell) return std::string(last);
    return last != kNullCell ? std::string(*first).append(" ").append(last) : std::string(*first);
}

bool namesNobody(const std::optional<std::string>& name) {
    return !name || name->empty() || *name == " ";
}

// ---- Persons that only the search index remembers ----

bool isNull(const Row& raw, std::size_t index) {
    return cellOf(raw, index) == kNullCell;
}

Array splitAtSpaces(std::string_view text) {
    Array parts;
    for (std::size_t space = text.find(' '); space != std::string_view::npos; space = text.find(' ')) {
        parts.emplace_back(text.substr(0, space));
        text.remove_prefix(space + 1);
    }
    parts.emplace_back(text);
    return parts;
}

Dictionary indexedRow(Dictionary row, const Row& indexed) {
    const auto name = personName(indexed);
    row.set("name", namesNobody(name) || *name == kNullCell ? kUnknownPerson : std::string_view(*name));
    if (const auto numbers = cellOf(indexed, kIndexedNumbersCell)) row.set(kMobilePhoneList, splitAtSpaces(*numbers));
    if (const auto note = cellOf(indexed, kIndexedNoteCell)) row.set("Note", *note);
    return row;
}

/// Every entry of the search index is listed as a deleted contact, also when its person is still there.
void addIndexedPersons(TableShaper& shaper, const RowFactory& rows, const RawTableObject& index) {
    for (const Row& indexed : index.rowList()) {
        if (isNull(indexed, kIndexedNumbersCell) && isNull(indexed, kIndexedNoteCell)) continue;
        shaper.add(indexedRow(rows.newRow(), indexed), Origin::kCarved);
    }
}

// ---- The contacts map ----

/// The form in which numbers and addresses are looked up: without dashes and without a leading plus sign.
std::string lookUpKey(std::string text) {
    std::erase(text, '-');
    if (text.starts_with('+')) text.erase(0, 1);
    return text;
}

/// Which person names whose lists. Of several persons with one number the last one names it.
class Namings {
public:
    explicit Namings(const MultiValues& multiValues)
        : multiValues_(multiValues), lastNaming_(multiValues.ownerCount(), kNone) {}

    void add(std::size_t owner, std::string name) {
        lastNaming_[owner] = namings_.size();
        namings_.push_back({owner, std::move(name)});
    }

    /// Applies the namings in their order, but of each owner's own only the first, which gives its numbers their places
    /// in the map, and the last, which gives them their name: any number of persons may share one key.
    void applyTo(Dictionary& contactsMap) const {
        contactsMap.reserve(multiValues_.valueCount());
        std::vector<bool> placed(lastNaming_.size());
        for (std::size_t i = 0; i < namings_.size(); ++i) {
            const auto& [owner, name] = namings_[i];
            if (placed[owner] && lastNaming_[owner] != i) continue;
            placed[owner] = true;
            setNames(contactsMap, multiValues_.listsOf(owner), name);
        }
    }

private:
    static constexpr auto kNone = static_cast<std::size_t>(-1);
    struct Naming {
        std::size_t owner;
        std::string name;
    };

    static void setNames(Dictionary& contactsMap, const Dictionary& lists, const std::string& name) {
        for (const std::string_view list : {kMobilePhoneList, kHomePhoneList, kAddressList, kEmailList}) {
            const Value* values = lists.find(list);
            if (values == nullptr) continue;
            for (const Value& value : *values->array()) {
                if (!value.text()->empty()) contactsMap.set(lookUpKey(*value.text()), name);
            }
        }
    }

    const MultiValues& multiValues_;
    std::vector<Naming> namings_;
    std::vector<std::size_t> lastNaming_;  // by owner
};

// ---- Persons ----

class Persons {
public:
    Persons(const TableShaper& shaper, const RowFactory& rows, const RawTableObject& persons,
            const RawTableObject& multiValues)
        : rows_(rows),
          multiValues_(shaper, multiValues),
          organization_(columnIndex(persons, "Organization")),
          namings_(multiValues_) {}

    Dictionary rowOf(const Row& person) {
        const auto name = personName(person);
        const auto owner = multiValues_.find(integerCell(person, kPersonKeyCell));
        Dictionary row = owner ? rowWith(multiValues_.listsOf(*owner)) : rows_.newRow();
        if (owner && name) namings_.add(*owner, *name);
        row.set("name", namesNobody(name) ? std::string(kUnknownPerson) : withSpacesForInvisible(*name));
        setDetails(row, person);
        return row;
    }

    const Namings& namings() const { return namings_; }

private:
    /// Rows with the same lists share their keys.
    Dictionary rowWith(const Dictionary& lists) {
        std::string names;
        for (std::size_t i = 0; i < lists.size(); ++i) names.append(lists.keyAt(i)).append(" ");
        auto rows = rowsWithLists_.find(names);
        if (rows == rowsWithLists_.end()) rows = rowsWithLists_.emplace(names, RowFactory(columnsWith(lists))).first;
        Dictionary row = rows->second.newRow();
        for (std::size_t i = 0; i < lists.size(); ++i) row.setValueAt(row.size() - lists.size() + i, lists.valueAt(i));
        return row;
    }

    static std::vector<std::string> columnsWith(const Dictionary& lists) {
        std::vector<std::string> columns = kPresetColumns;
        for (std::size_t i = 0; i < lists.size(); ++i) columns.push_back(lists.keyAt(i));
        return columns;
    }

    void setDetails(Dictionary& row, const Row& person) const {
        if (const auto company = cellOf(person, organization_)) row.set("company", withSpacesForInvisible(*company));
        row.set("image", cellOf(person, kImageCell).value_or(kNullCell));
        const auto note = cellOf(person, kNoteCell);
        if (note && *note != kNullCell) row.set("Note", *note);
    }

    const RowFactory& rows_;
    std::unordered_map<std::string, RowFactory> rowsWithLists_;  // by the lists' names; few, as there are four lists
    MultiValues multiValues_;
    std::size_t organization_;
    Namings namings_;
};

/// How far the persons are, measured by the number of their values: beyond 1 when more persons than values are there.
double partDone(std::size_t personsDone, const RawTableObject& multiValues) {
    const std::size_t values = rowCount(multiValues);
    return values != 0 ? static_cast<double>(personsDone) / static_cast<double>(values) : 0;
}

void addPersons(TableShaper& shaper, Persons& persons, const RawTableObject& table, const RawTableObject& multiValues) {
    shaper.visit(table, [&](const Row& person, Origin origin, std::size_t position) {
        shaper.add(persons.rowOf(person), origin);
        shaper.reportValue(shaper.shapingStart() + partDone(position + 1, multiValues) / kShareDivisor);
    });
}

}  // namespace

std::shared_ptr<CustomTableObject> shapeContacts(const Source& source, std::optional<Dictionary>& contactsMap) {
    TableShaper shaper(source, "Contacts", kColumns);
    const RowFactory rows(kPresetColumns);
    if (const auto* index = shaper.rawTable("ABPersonFullTextSearch_content")) addIndexedPersons(shaper, rows, *index);
    const RawTableObject* table = shaper.rawTable("ABPerson");
    const RawTableObject* multiValues = shaper.rawTable("ABMultiValue");
    if (table == nullptr || multiValues == nullptr) return shaper.result();
    Persons persons(shaper, rows, *table, *multiValues);
    addPersons(shaper, persons, *table, *multiValues);
    persons.namings().applyTo(contactsMap.emplace());
    return shaper.result();
}

}  // namespace ZkMobileBackup::shaping
