#include "tests/recovery/engine/PlainReading.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <set>
#include <tuple>

#include "base/Text.h"

namespace ZkMobileBackup::testing {

namespace {

struct Number {
    std::uint64_t value = 0;
    std::int64_t bytes = 0;
    std::int64_t next = 0;
};

struct PlainCell {
    std::int64_t type = 0;
    std::int64_t offset = 0;
    std::int64_t size = 0;
};

struct Record {
    std::int64_t base = 0;
    std::uint64_t length = 0;
    std::uint64_t rowid = 1;
    std::vector<PlainCell> cells;
    int counted = 0;
    std::vector<std::uint32_t> overflow;
};

std::int32_t int32(std::uint64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

class PlainReader {
public:
    explicit PlainReader(Bytes image) : image_(std::move(image)) {
        pageSize_ = headerField(16, 2);
        pageCount_ = headerField(28, 4) & 0xFFFF;
    }

    std::vector<PlainTable> read() {
        readSchema();
        const std::vector<Texts> rows = tables_[0].live;
        for (Texts row : rows) {
            row.resize(std::max<std::size_t>(row.size(), 5));
            if (row[0] == "table") readTable(row);
        }
        readFreelist();
        return tables_;
    }

private:
    // ---- Bytes ----

    std::int64_t size() const { return static_cast<std::int64_t>(image_.size()); }
    std::int64_t last() const { return size() - 1; }
    std::uint8_t byte(std::int64_t at) const {
        return at >= 0 && at < size() ? image_[static_cast<std::size_t>(at)] : std::uint8_t{0};
    }
    std::uint32_t big(std::int64_t at, int width) const {
        std::uint32_t value = 0;
        for (int i = 0; i < width; ++i) value = value << 8U | byte(at + i);
        return value;
    }
    std::uint32_t headerField(std::int64_t at, int width) const { return at + width > size() ? 0 : big(at, width); }
    std::uint32_t pageField(std::int64_t header, std::int64_t at, int width) const {
        return at + width > pageSize_ ? 0 : big(header + at, width);
    }
    std::int64_t pageStart(std::uint32_t number) const {
        return static_cast<std::uint32_t>(static_cast<std::uint32_t>(pageSize_) * (number - 1));
    }

    Number number(std::int64_t at) const {
        if (last() - at <= 0) return {0, 0, at + 1};
        std::uint64_t value = 0;
        std::int64_t i = 0;
        for (; at + i < last(); ++i) {
            const std::uint64_t shift = 7 * static_cast<std::uint64_t>(i);
            value = (shift > 63 ? 0 : value << shift) | (byte(at + i) & 0x7FU);
            if (byte(at + i) < 0x80) return {value, i + 1, at + i + 1};
        }
        return {value, i, at + i + 1};
    }

    // ---- Records ----

    bool lengthFits(std::uint64_t length) const { return length >= 2 && length <= image_.size(); }

    std::optional<Record> liveRecord(std::int64_t page, std::int64_t limit, std::int64_t base) const {
        Record record;
        record.base = base;
        const Number length = number(base);
        record.length = length.value;
        if (length.bytes > 8 || !lengthFits(length.value)) return std::nullopt;
        const Number rowid = number(length.next);
        record.rowid = rowid.value;
        if (rowid.bytes > 8 || rowid.value == 0) return std::nullopt;
        const Number header = number(rowid.next);
        if (header.bytes > 8 || header.value < 2 || header.value > static_cast<std::uint64_t>(pageSize_)) {
            return std::nullopt;
        }
        followOverflow(record, page, limit);
        const std::int64_t body = readHeader(record, header.next, rowid.next + static_cast<std::int64_t>(header.value));
        if (record.counted < 2) return std::nullopt;
        if (header.value + static_cast<std::uint64_t>(body) != record.length) return std::nullopt;
        return record;
    }

    std::optional<Record> carvedRecord(std::int64_t page, std::int64_t limit, std::int64_t base, std::uint16_t length,
                                       std::size_t columns) const {
        Record record;
        record.base = base;
        record.length = length;
        if (!lengthFits(length)) return std::nullopt;
        std::int64_t headerEnd = base;
        for (std::size_t i = 1; i < columns; ++i) headerEnd = number(headerEnd).next;
        if (headerEnd - base > pageSize_ || headerEnd - base < 2) return std::nullopt;
        followOverflow(record, page, limit);
        const std::int64_t body = readHeader(record, base, headerEnd);
        if (record.counted < 2) return std::nullopt;
        if (static_cast<std::uint64_t>(body) > record.length) return std::nullopt;
        return record;
    }

    std::int64_t readHeader(Record& record, std::int64_t from, std::int64_t to) const {
        if (from >= to) return 0;
        std::int32_t sum = 0;
        for (std::int64_t at = from;;) {
            const Number stored = number(at);
            if (stored.bytes > 8) return sum;
            at = stored.next;
            const std::int32_t type = int32(stored.value);
            if (type < 0 || type == 10 || type == 11) {
                record.cells.push_back({-1, 0, 0});
                return 0;
            }
            const std::int64_t size = contentSize(type);
            const std::int64_t shown = type < 12 ? type : (type % 2 == 0 ? 12 : 13);
            record.cells.push_back({shown, int32(static_cast<std::uint64_t>(to - record.base + sum)), size});
            sum = int32(static_cast<std::uint64_t>(sum + size));
            ++record.counted;
            if (static_cast<std::uint64_t>(sum) > record.length || at >= to || record.counted > 1000) return sum;
        }
    }

    static std::int64_t contentSize(std::int32_t type) {
        constexpr int kSizes[] = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0, 0, 0};
        return type < 12 ? kSizes[type] : (type - 12) / 2;
    }

    void followOverflow(Record& record, std::int64_t page, std::int64_t limit) const {
        const std::uint64_t offset = static_cast<std::uint64_t>(record.base - page) & 0xFFFF;
        if (record.length + offset <= static_cast<std::uint64_t>(pageSize_)) return;
        std::uint32_t next = big(limit - 4, 4);
        if (next < 2 || next > pageCount_) return;
        record.overflow.push_back(next);
        for (int link = 0; link < 10000; ++link) {
            const std::int64_t start = pageStart(next);
            if (start > last() - 4) return;
            next = big(start, 4);
            if (next < 2 || next > pageCount_) return;
            record.overflow.push_back(next);
        }
        record.overflow.clear();
    }

    void splice(const Record& record, std::int64_t limit) {
        std::int64_t target = limit - 4;
        for (const std::uint32_t page : record.overflow) {
            Bytes content;
            for (std::int64_t i = 4; i < pageSize_; ++i) content.push_back(byte(pageStart(page) + i));
            for (std::size_t i = 0; i < content.size(); ++i) {
                const std::int64_t at = target + static_cast<std::int64_t>(i);
                if (at >= 0 && at < size()) image_[static_cast<std::size_t>(at)] = content[i];
            }
            target += pageSize_ - 4;
        }
    }

    /// The texts of the cells from `first` on after `lead`; nothing with a cell of no valid type.
    std::optional<Texts> rendered(const Record& record, std::int64_t limit, Texts lead, std::size_t first) {
        splice(record, limit);
        for (std::size_t i = first; i < record.cells.size(); ++i) {
            const PlainCell& cell = record.cells[i];
            const std::int64_t at = record.base + cell.offset;
            if (cell.type < 0) return std::nullopt;
            lead.push_back(at > last() ? std::string() : shown(cell, at));
        }
        return lead;
    }

    std::string shown(const PlainCell& cell, std::int64_t at) const {
        const auto signedByte = [this](std::int64_t i) { return static_cast<std::int8_t>(byte(i)); };
        const auto signedText = [](std::uint64_t value) { return std::to_string(int32(value)); };
        switch (cell.type) {
            case 0:
                return "NULL";
            case 1:
                return std::to_string(signedByte(at));
            case 2:
                return std::to_string(big(at, 2));
            case 3:
                return std::to_string(static_cast<int>(big(at, 2) * 16) + signedByte(at + 2));
            case 4:
                return signedText(big(at, 4));
            case 5:
                return signedText((std::uint64_t{big(at, 4)} << 4U) + static_cast<std::uint64_t>(signedByte(at + 4)));
            case 6:
                return signedText((std::uint64_t{big(at, 4)} << 8U) + big(at + 4, 2));
            case 7:
                return std::to_string(byte(at) * 16777216.0);
            case 8:
                return "0";
            case 9:
                return "1";
            case 12:
                return blobText(at, cell.size & 0xFFFF);
            default:
                return textAt(at, cell.size);
        }
    }

    std::string blobText(std::int64_t at, std::int64_t size) const {
        std::string digits;
        for (std::int64_t i = 0; i < size && at + i < this->size(); ++i) {
            constexpr char kDigits[] = "0123456789ABCDEF";
            digits += kDigits[byte(at + i) / 16];
            digits += kDigits[byte(at + i) % 16];
        }
        return digits;
    }

    std::string textAt(std::int64_t at, std::int64_t remaining) const {
        std::string result;
        std::int64_t consumed = 0;
        while (remaining >= 1) {
            const std::int64_t chunk = std::min<std::int64_t>(remaining, 4096);
            const std::int64_t from = std::min(last() - at, consumed);
            std::string piece;
            for (std::int64_t i = 0; i < chunk && byte(at + from + i) != 0; ++i) {
                piece += static_cast<char>(byte(at + from + i));
            }
            if (isValidUtf8(piece)) result += piece;
            consumed = from + chunk;
            remaining -= chunk;
        }
        return result;
    }

    // ---- Pages ----

    void enter(std::int64_t start) {
        page_ = start;
        limit_ = start + pageSize_;
    }

    void readSchema() {
        PlainTable schema;
        schema.name = "sqlite_master";
        schema.type = RawTableObject::kSchemaTable;
        schema.columns = {"type", "name", "tbl_name", "rootpage", "SQL"};
        tables_.push_back(schema);
        enter(0);
        walk(tables_[0], 100);
    }

    void readTable(const Texts& row) {
        tables_.emplace_back();
        PlainTable& table = tables_.back();
        table.name = row[1];
        table.rootPage = integerValue(row[3]);
        readColumns(table, row[4]);
        if (table.rootPage <= 0) return;
        enter(pageStart(static_cast<std::uint32_t>(table.rootPage)));
        walk(table, page_);
    }

    /// Walks the page whose type byte is at `header`.
    void walk(PlainTable& table, std::int64_t header) {
        if (byte(header) == 13) walkLeaf(table, header);
        if (byte(header) == 5) walkInterior(table);
    }

    void walkInterior(PlainTable& table) {
        const std::int64_t start = page_;
        const std::int64_t shift = table.type == RawTableObject::kSchemaTable ? 100 : 0;
        const std::int64_t header = start + shift;
        const std::int64_t count = pageField(header, 3, 2);
        ancestors_.insert(start);
        for (std::int64_t i = 0; i <= count; ++i) {
            const std::int64_t position = i < count ? std::int64_t{pageField(header, 12 + 2 * i, 2)} - shift : 8;
            const std::int64_t child = pageStart(pageField(header, position, 4));
            enter(child);
            if (child < last() && !(byte(child) == 5 && ancestors_.contains(child))) walk(table, child);
        }
        ancestors_.erase(start);
    }

    void walkLeaf(PlainTable& table, std::int64_t header) {
        const std::int64_t count = pageField(header, 3, 2);
        std::set<std::int64_t> live;
        for (std::int64_t i = 0; i < count; ++i) {
            const std::int64_t pointer = pageField(header, 8 + 2 * i, 2);
            if (pointer == 0) break;
            if (readCell(table, pointer)) live.insert(pointer);
        }
        carve(table, header + 8 + 2 * count, live);
    }

    bool readCell(PlainTable& table, std::int64_t pointer) {
        const std::optional<Record> record = liveRecord(page_, limit_, page_ + pointer);
        if (!record) return false;
        const bool freed = table.type == RawTableObject::kFreePageTable;
        const bool leads = table.hasKey || (freed && int32(record->rowid) > 0);
        const Texts lead = leads ? Texts{std::to_string(static_cast<std::int64_t>(record->rowid))} : Texts{};
        if (const auto row = rendered(*record, limit_, lead, leads ? 1 : 0)) {
            (freed ? table.deleted : table.live).push_back(*row);
            if (freed && table.fieldCount == 0) table.fieldCount = static_cast<std::int64_t>(row->size());
        }
        return true;
    }

    // ---- Deleted records ----

    void carve(PlainTable& table, std::int64_t from, const std::set<std::int64_t>& live) {
        const std::int64_t end = page_ + pageSize_ - 2;
        std::int64_t at = from;
        do {
            if (live.contains((at - page_) & 0xFFFF)) {
                at += std::clamp<std::int64_t>(static_cast<std::int64_t>(number(at).value), 0, size() + pageSize_);
            }
            if (const auto length = signatureLength(table, at)) {
                if (const auto record = carvedRecord(page_, limit_, at, *length, table.columns.size())) {
                    if (const auto row = rendered(*record, limit_, {"-1"}, 0)) table.deleted.push_back(*row);
                }
            }
            ++at;
        } while (at < end);
    }

    std::optional<std::uint16_t> signatureLength(const PlainTable& table, std::int64_t at) const {
        if (table.columnTypes.empty()) return std::nullopt;
        std::uint64_t sum = 0;
        for (std::size_t k = table.hasKey ? 1 : 0; k < table.columnTypes.size() && at < last(); ++k) {
            const Number stored = number(at);
            if (stored.bytes > 8 || !fits(table.columnTypes[k], int32(stored.value))) return std::nullopt;
            at = stored.next;
            sum += static_cast<std::uint64_t>(stored.bytes) + stored.value;
        }
        return static_cast<std::uint16_t>(sum);
    }

    static bool fits(const ColumnType& column, std::int32_t type) {
        const auto& preset = column.defaultText;
        if (column.code == 8) return (preset && integerValue(*preset) == type) || (type >= 1 && type <= 11);
        if (column.code == 2) return preset || type == 0 || (type >= 13 && type % 2 == 1);
        if (column.code == 4) return type == 0 || (type >= 12 && type % 2 == 0);
        return false;
    }

    void readFreelist() {
        const std::uint32_t first = headerField(32, 4);
        if (first < 2 || headerField(36, 4) == 0) return;
        std::set<std::int64_t> seen;
        for (std::int64_t trunk = pageStart(first); seen.insert(trunk).second;) {
            if (trunk + 4 > last()) return;
            const std::uint32_t next = big(trunk, 4);
            const std::int64_t leaves = big(trunk + 4, 4);
            for (std::int64_t j = 0; j < leaves && trunk + 4 * j + 12 <= last(); ++j) {
                readFreePage(big(trunk + 8 + 4 * j, 4));
            }
            if (next == 0) return;
            trunk = pageStart(next);
        }
    }

    void readFreePage(std::uint32_t number) {
        page_ = pageStart(number);  // and the limit stays
        if (byte(page_) >= byte(last())) return;
        PlainTable freed;
        freed.type = RawTableObject::kFreePageTable;
        walk(freed, page_);
        PlainTable* target = nullptr;
        for (PlainTable& table : tables_) {
            if (freed.fieldCount > 0 && table.fieldCount == freed.fieldCount) target = &table;
        }
        if (target != nullptr)
            target->deleted.insert(target->deleted.end(), freed.deleted.begin(), freed.deleted.end());
    }

    // ---- Schema texts ----

    static std::string word(const std::string& sql, std::size_t& at) {
        while (at < sql.size() && sql[at] == ' ') ++at;
        std::string word;
        for (; at < sql.size() && sql[at] != ' ' && sql[at] != ')' && sql[at] != ','; ++at) word += sql[at];
        return word.substr(0, 1023);
    }

    static std::int64_t classOf(const std::string& word) {
        if (word == "INTEGER" || word == "TIMESTAMP") return 8;
        if (word == "VARCHAR" || word == "TEXT") return 2;
        return word == "BLOB" ? 4 : 0;
    }

    static void readColumns(PlainTable& table, const std::string& sql) {
        std::size_t at = 13 + table.name.size();
        const auto current = [&] { return at < sql.size() ? sql[at] : '\0'; };
        for (int level = 0; at < sql.size() && current() != ')';) {
            const bool opens = current() == '(' && level == 0;
            const bool column = opens || (current() == ',' && level == 1);
            ++at;
            if (column) {
                table.columns.push_back(word(sql, at));
                ++table.fieldCount;
                ColumnType type{classOf(word(sql, at)), std::nullopt};
                const std::string third = word(sql, at);
                if (third == "PRIMARY" && table.columns.size() == 1) table.hasKey = true;
                if (third == "DEFAULT") type.defaultText = word(sql, at);
                table.columnTypes.push_back(type);
                if (opens) level = 1;
            } else {
                if (level == 1 && current() == '(') level = 2;
                if (level >= 2 && current() == ')') {
                    ++at;
                    --level;
                }
            }
        }
    }

    Bytes image_;
    std::int64_t pageSize_ = 0;
    std::uint32_t pageCount_ = 0;
    std::int64_t page_ = 0;
    std::int64_t limit_ = 0;
    std::set<std::int64_t> ancestors_;
    std::vector<PlainTable> tables_;
};

auto content(const PlainTable& table) {
    return std::tie(table.name, table.type, table.rootPage, table.hasKey, table.columns, table.columnTypes,
                    table.fieldCount, table.live, table.deleted);
}

void print(std::ostream& out, const char* title, const std::vector<Texts>& rows) {
    out << "\n  " << title << ":";
    for (const Texts& row : rows) {
        out << "\n   ";
        for (const std::string& cell : row) out << " [" << cell << "]";
    }
}

}  // namespace

std::vector<PlainTable> readPlainly(Bytes image) {
    return PlainReader(std::move(image)).read();
}

std::vector<PlainTable> tablesOf(const DlxSQLiteParser& parser) {
    std::vector<PlainTable> tables;
    for (const auto& table : parser.tableList()) {
        tables.push_back({table->name().value_or(""), table->tableType(), table->pageNum(), table->hasIntergerPK(),
                          table->filedList(), table->filedTypeList(), table->filedCount(), rowsOf(table->rowList()),
                          rowsOf(table->deletedRowList())});
    }
    return tables;
}

bool operator==(const PlainTable& a, const PlainTable& b) {
    return content(a) == content(b);
}

std::ostream& operator<<(std::ostream& out, const PlainTable& table) {
    out << "\n table " << table.name << " at " << table.rootPage << ", " << table.fieldCount << " columns";
    print(out, "live", table.live);
    print(out, "deleted", table.deleted);
    return out;
}

}  // namespace ZkMobileBackup::testing
