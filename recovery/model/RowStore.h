#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <future>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "base/Value.h"
#include "recovery/model/Row.h"

namespace ZkMobileBackup {

/// Owns the content of rows. The cells of a raw row lie one after the other in few large blocks, short and frequent
/// texts in a single byte, and a row equal to the one before it is the same row again: carving free space full of zeros
/// finds thousands of equal rows a page.
///
/// A raw row is written between beginRow and finishRow; beginRow alone starts over.
class RowStore {
public:
    /// Texts that most cells of a database have.
    enum class FrequentText : std::uint8_t { kNull, kZero, kOne, kMinusOne };

    RowStore();
    ~RowStore();
    RowStore(const RowStore&) = delete;
    RowStore& operator=(const RowStore&) = delete;

    void beginRow();
    void appendCell(std::string_view text);
    /// Appends a short text of plain ASCII without NUL; appends nothing and returns false when it is any other.
    bool appendPlainCell(std::span<const std::uint8_t> text) {
        if (text.size() > kLongestShortText) return false;
        growBy(1 + text.size());
        if (!copyPlain(text, end_ + 1)) return false;
        *end_ = static_cast<std::uint8_t>(text.size());
        end_ += 1 + text.size();
        ++cellCount_;
        return true;
    }
    void appendCell(FrequentText text) {
        if (end_ == blockEnd_) growBy(1);
        *end_++ = static_cast<std::uint8_t>(kFirstFrequentText + static_cast<std::uint8_t>(text));
        ++cellCount_;
    }
    void appendInteger(std::int32_t number);
    void appendInteger(std::int64_t number);
    /// Appends the upper-case hexadecimal digits of the bytes.
    void appendHexDigits(std::span<const std::uint8_t> bytes);
    Row finishRow();

    Row addDictionary(Dictionary dictionary);

private:
    // A cell is a byte that is its length or one of these marks, then the text's bytes.
    static constexpr std::uint8_t kLongestShortText = 249;
    static constexpr std::uint8_t kLength16Mark = 250;
    static constexpr std::uint8_t kLength64Mark = 251;
    static constexpr std::uint8_t kFirstFrequentText = 252;
    using Block = std::unique_ptr<std::uint8_t[]>;

    // A row leads with the number of its cells.
    using CellCount = std::uint32_t;

    friend struct CellReader;

    /// Copies a text, and tells whether none of its bytes is NUL or above 0x7F.
    static bool copyPlain(std::span<const std::uint8_t> text, std::uint8_t* target) {
        constexpr std::uint64_t kHighBits = 0x8080808080808080U;
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
    static std::uint64_t copyWords(std::span<const std::uint8_t> text, std::uint8_t* target) {
        constexpr auto kLowBits = static_cast<Word>(0x0101010101010101U);
        const auto copy = [text, target](std::size_t at) {
            Word word;
            std::memcpy(&word, text.data() + at, sizeof word);
            std::memcpy(target + at, &word, sizeof word);
            return static_cast<Word>(word | static_cast<Word>(word - kLowBits));
        };
        const std::size_t last = text.size() - sizeof(Word);
        Word marks = copy(last);
        for (std::size_t at = 0; at < last; at += sizeof(Word)) marks = static_cast<Word>(marks | copy(at));
        return marks;
    }
    /// Makes room for `size` more bytes of the row in hand.
    void growBy(std::size_t size) {
        if (static_cast<std::size_t>(blockEnd_ - end_) < size) moveToNewBlock(size);
    }
    void moveToNewBlock(std::size_t size);
    std::uint8_t* addBlock(std::size_t size);
    void prepareBlock();
    /// Where the text of the next cell goes, which is `length` bytes long.
    std::uint8_t* beginCell(std::size_t length);
    template <typename Integer>
    void appendDigits(Integer number);

    // The row that is being written, in the free part of the last block.
    std::uint8_t* row_ = nullptr;
    std::uint8_t* end_ = nullptr;
    std::uint8_t* blockEnd_ = nullptr;
    CellCount cellCount_ = 0;
    // The row that was finished last.
    const std::uint8_t* lastRow_ = nullptr;
    std::size_t lastRowSize_ = 0;

    std::vector<Block> blocks_;
    // Fetching fresh pages from the system takes as long as filling them: another thread does it ahead.
    std::future<Block> prepared_;
    std::size_t nextBlockSize_;
    std::deque<Dictionary> dictionaries_;
};

/// Reads what a row store wrote.
struct CellReader {
    /// One cell, and the position after it.
    static std::string_view read(const std::uint8_t* position, const std::uint8_t** next);
    /// The number of cells of a row, and the position of the first one.
    static std::size_t readCount(const std::uint8_t* row, const std::uint8_t** first);
};

}  // namespace ZkMobileBackup
