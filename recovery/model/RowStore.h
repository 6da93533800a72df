#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <future>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

#include "base/Value.h"
#include "recovery/model/Row.h"
#include "recovery/model/decimal_digits.h"

namespace ZkMobileBackup {

/// Texts that most cells of a database have.
enum class FrequentText : std::uint8_t { kNull, kZero, kOne, kMinusOne };

class RowWriter;

/// Owns the content of rows. The cells of a raw row lie one after the other in few large blocks, short and frequent
/// texts in a single byte, and a row equal to the one before it is the same row again: carving free space full of zeros
/// finds thousands of equal rows a page.
class RowStore {
public:
    RowStore();
    ~RowStore();
    RowStore(const RowStore&) = delete;
    RowStore& operator=(const RowStore&) = delete;

    /// Begins a raw row. One row is written at a time; one that is never finished leaves nothing.
    RowWriter beginRow();
    Row addDictionary(Dictionary dictionary);

private:
    friend class RowWriter;
    friend struct CellReader;

    // A cell is a byte that is its length or one of these marks, then the text's bytes.
    static constexpr std::uint8_t kLongestShortText = 249;
    static constexpr std::uint8_t kLength16Mark = 250;
    static constexpr std::uint8_t kLength64Mark = 251;
    static constexpr std::uint8_t kFirstFrequentText = 252;
    using Block = std::unique_ptr<std::uint8_t[]>;

    // A row leads with the number of its cells.
    using CellCount = std::uint32_t;

    /// Where the row in hand goes on, and where the room for it ends.
    struct Cursor {
        std::uint8_t* at;
        std::uint8_t* end;
    };

    // What is too long for every cell's loop. Cursors go in and out by value, so that a writer may stay in registers.
    Cursor moveToNewBlock(Cursor cursor, std::size_t size);
    Cursor writeText(Cursor cursor, std::string_view text);
    Cursor writeHexDigits(Cursor cursor, std::span<const std::uint8_t> bytes);
    Cursor beginText(Cursor cursor, std::size_t length);
    Row finishRow(Cursor cursor, CellCount cellCount);

    std::uint8_t* addBlock(std::size_t size);
    void prepareBlock();

    // The free part of the last block, where the row that is being written begins.
    std::uint8_t* row_ = nullptr;
    std::uint8_t* blockEnd_ = nullptr;
    // The row that was finished last.
    const std::uint8_t* lastRow_ = nullptr;
    std::size_t lastRowSize_ = 0;

    std::vector<Block> blocks_;
    // Fetching fresh pages from the system takes as long as filling them: another thread does it ahead.
    std::future<Block> prepared_;
    std::size_t nextBlockSize_;
    std::deque<Dictionary> dictionaries_;
};

/// Writes the cells of one raw row. What it changes for each cell are its own few members, which a loop over cells
/// keeps in registers.
class RowWriter {
public:
    void append(std::string_view text) {
        cursor_ = store_.writeText(cursor_, text);
        ++cellCount_;
    }
    void append(FrequentText text) {
        growBy(1);
        *cursor_.at++ = static_cast<std::uint8_t>(RowStore::kFirstFrequentText + static_cast<std::uint8_t>(text));
        ++cellCount_;
    }
    /// Appends a short text of plain ASCII without NUL; appends nothing and returns false when it is any other.
    bool appendPlain(std::span<const std::uint8_t> text) {
        if (text.size() > RowStore::kLongestShortText) return false;
        growBy(1 + text.size());
        if (!copyPlain(text, cursor_.at + 1)) return false;
        *cursor_.at = static_cast<std::uint8_t>(text.size());
        cursor_.at += 1 + text.size();
        ++cellCount_;
        return true;
    }
    /// Appends a number in decimal.
    template <typename Integer>
    void appendInteger(Integer number) {
        if (number >= -1 && number <= 1) {
            append(number == 0 ? FrequentText::kZero : number == 1 ? FrequentText::kOne : FrequentText::kMinusOne);
            return;
        }
        growBy(1 + kMostDecimalDigits);
        std::uint8_t* const digits = cursor_.at + 1;
        std::uint8_t* const digitsEnd = writeDecimalDigits(number, digits);
        *cursor_.at = static_cast<std::uint8_t>(digitsEnd - digits);
        cursor_.at = digitsEnd;
        ++cellCount_;
    }
    /// Appends the upper-case hexadecimal digits of the bytes.
    void appendHexDigits(std::span<const std::uint8_t> bytes) {
        cursor_ = store_.writeHexDigits(cursor_, bytes);
        ++cellCount_;
    }
    /// The row; the writer is used up.
    Row finish() { return store_.finishRow(cursor_, cellCount_); }

private:
    friend class RowStore;

    RowWriter(RowStore& store, RowStore::Cursor cursor) : store_(store), cursor_(cursor) {}

    /// Makes room for `size` more bytes.
    void growBy(std::size_t size) {
        if (static_cast<std::size_t>(cursor_.end - cursor_.at) < size) cursor_ = store_.moveToNewBlock(cursor_, size);
    }

    // Sixteen bytes that are worked on at once.
    using Vector [[gnu::vector_size(16)]] = std::uint8_t;

    /// Copies a text, and tells whether none of its bytes is NUL or above 0x7F.
    static bool copyPlain(std::span<const std::uint8_t> text, std::uint8_t* target) {
        if (text.size() >= sizeof(Vector)) {
            const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(copyWords<Vector>(text, target));
            return ((halves[0] | halves[1]) & kHighBits) == 0;
        }
        std::uint64_t marks = 0;
        if (text.size() >= sizeof(std::uint64_t)) {
            marks = copyWords<std::uint64_t>(text, target);
        } else if (text.size() >= sizeof(std::uint32_t)) {
            marks = copyWords<std::uint32_t>(text, target);
        } else if (!text.empty()) {
            marks = copyWords<std::uint8_t>(text, target);
        }
        return (marks & kHighBits) == 0;
    }
    /// Copies a text of at least a word. The high bits of the result show a byte that is NUL or above 0x7F.
    template <typename Word>
    static Word copyWords(std::span<const std::uint8_t> text, std::uint8_t* target) {
        const auto copy = [text, target](std::size_t at) {
            Word word;
            std::memcpy(&word, text.data() + at, sizeof word);
            std::memcpy(target + at, &word, sizeof word);
            return static_cast<Word>(word | static_cast<Word>(word - onesOf<Word>()));
        };
        const std::size_t last = text.size() - sizeof(Word);
        Word marks = copy(last);
        for (std::size_t at = 0; at < last; at += sizeof(Word)) marks = static_cast<Word>(marks | copy(at));
        return marks;
    }
    /// Every byte 1.
    template <typename Word>
    static constexpr Word onesOf() {
        if constexpr (std::is_same_v<Word, Vector>) {
            return Vector{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
        } else {
            return static_cast<Word>(0x0101010101010101U);
        }
    }
    static constexpr std::uint64_t kHighBits = 0x8080808080808080U;

    RowStore& store_;
    RowStore::Cursor cursor_;
    RowStore::CellCount cellCount_ = 0;
};

/// Reads what a row store wrote.
struct CellReader {
    /// One cell, and the position after it.
    static std::string_view read(const std::uint8_t* position, const std::uint8_t** next);
    /// The number of cells of a row, and the position of the first one.
    static std::size_t readCount(const std::uint8_t* row, const std::uint8_t** first);
};

}  // namespace ZkMobileBackup
