#include "recovery/model/RowStore.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <system_error>
#include <utility>

#include "recovery/model/hex_digits.h"

namespace ZkMobileBackup {

namespace {

// In the order of RowStore::FrequentText.
constexpr std::array<std::string_view, 4> kFrequentTexts = {"NULL", "0", "1", "-1"};
constexpr std::size_t kLongestFrequentText = 4;

constexpr std::size_t kFirstBlockSize = std::size_t{4} << 10U;
constexpr std::size_t kLargestBlockSize = std::size_t{4} << 20U;
constexpr std::size_t kPageSize = std::size_t{4} << 10U;

std::unique_ptr<std::uint8_t[]> newBlock(std::size_t size) {
    return std::make_unique_for_overwrite<std::uint8_t[]>(size);
}

template <typename Number>
Number numberAt(const std::uint8_t* position) {
    Number number;
    std::memcpy(&number, position, sizeof number);
    return number;
}

template <typename Number>
std::uint8_t* writeNumber(std::uint8_t* position, Number number) {
    std::memcpy(position, &number, sizeof number);
    return position + sizeof number;
}

/// Position of a text among the frequent ones, their number for any other text.
std::size_t frequentTextIndex(std::string_view text) {
    if (text.empty() || text.size() > kLongestFrequentText) return kFrequentTexts.size();
    return static_cast<std::size_t>(std::ranges::find(kFrequentTexts, text) - kFrequentTexts.begin());
}

}  // namespace

std::string_view CellReader::read(const std::uint8_t* position, const std::uint8_t** next) {
    const std::uint8_t mark = *position++;
    if (mark >= RowStore::kFirstFrequentText) {
        *next = position;
        return kFrequentTexts[mark - RowStore::kFirstFrequentText];
    }
    std::size_t length = mark;
    if (mark == RowStore::kLength16Mark) {
        length = numberAt<std::uint16_t>(position);
        position += sizeof(std::uint16_t);
    } else if (mark == RowStore::kLength64Mark) {
        length = numberAt<std::uint64_t>(position);
        position += sizeof(std::uint64_t);
    }
    *next = position + length;
    return {reinterpret_cast<const char*>(position), length};
}

std::size_t CellReader::readCount(const std::uint8_t* row, const std::uint8_t** first) {
    *first = row + sizeof(RowStore::CellCount);
    return numberAt<RowStore::CellCount>(row);
}

RowStore::RowStore() : nextBlockSize_(kFirstBlockSize) {}
RowStore::~RowStore() = default;

RowWriter RowStore::beginRow() {
    Cursor cursor{row_, blockEnd_};
    if (static_cast<std::size_t>(blockEnd_ - row_) < sizeof(CellCount)) {
        cursor = moveToNewBlock(cursor, sizeof(CellCount));
    }
    cursor.at += sizeof(CellCount);
    return {*this, cursor};
}

RowStore::Cursor RowStore::writeText(Cursor cursor, std::string_view text) {
    if (const std::size_t frequent = frequentTextIndex(text); frequent < kFrequentTexts.size()) {
        if (cursor.at == cursor.end) cursor = moveToNewBlock(cursor, 1);
        *cursor.at++ = static_cast<std::uint8_t>(kFirstFrequentText + frequent);
        return cursor;
    }
    cursor = beginText(cursor, text.size());
    cursor.at = std::copy(text.begin(), text.end(), cursor.at);
    return cursor;
}

RowStore::Cursor RowStore::writeHexDigits(Cursor cursor, std::span<const std::uint8_t> bytes) {
    cursor = beginText(cursor, 2 * bytes.size());
    ZkMobileBackup::writeHexDigits(bytes, cursor.at);
    cursor.at += 2 * bytes.size();
    return cursor;
}

/// Writes what leads a text, and makes room for it.
RowStore::Cursor RowStore::beginText(Cursor cursor, std::size_t length) {
    constexpr std::size_t kLongestLead = 1 + sizeof(std::uint64_t);
    if (static_cast<std::size_t>(cursor.end - cursor.at) < kLongestLead + length) {
        cursor = moveToNewBlock(cursor, kLongestLead + length);
    }
    if (length <= kLongestShortText) {
        *cursor.at++ = static_cast<std::uint8_t>(length);
    } else if (length <= 0xFFFF) {
        *cursor.at++ = kLength16Mark;
        cursor.at = writeNumber(cursor.at, static_cast<std::uint16_t>(length));
    } else {
        *cursor.at++ = kLength64Mark;
        cursor.at = writeNumber(cursor.at, std::uint64_t{length});
    }
    return cursor;
}

Row RowStore::finishRow(Cursor cursor, CellCount cellCount) {
    writeNumber(row_, cellCount);
    const auto size = static_cast<std::size_t>(cursor.at - row_);
    if (size != lastRowSize_ || std::memcmp(row_, lastRow_, size) != 0) {
        lastRow_ = row_;
        lastRowSize_ = size;
        row_ = cursor.at;
        // Rows stand at even addresses, so that a row's handle has a bit to spare.
        if (size % 2 != 0) row_ = row_ < blockEnd_ ? row_ + 1 : blockEnd_ = nullptr;
    }
    return Row(reinterpret_cast<std::uintptr_t>(lastRow_));
}

Row RowStore::addDictionary(Dictionary dictionary) {
    dictionaries_.push_back(std::move(dictionary));
    return Row(reinterpret_cast<std::uintptr_t>(&dictionaries_.back()) + Row::kDictionaryMark);
}

/// The row in hand moves along; `size` more bytes fit behind it.
RowStore::Cursor RowStore::moveToNewBlock(Cursor cursor, std::size_t size) {
    const auto written = static_cast<std::size_t>(cursor.at - row_);
    const std::size_t blockSize = std::max(nextBlockSize_, 2 * (written + size));
    nextBlockSize_ = std::min(kLargestBlockSize, nextBlockSize_ * 2);
    std::uint8_t* const block = addBlock(blockSize);
    std::copy(row_, cursor.at, block);
    row_ = block;
    blockEnd_ = block + blockSize;
    return {block + written, blockEnd_};
}

/// The block that was prepared while the last one was being filled, where there is one of that size, or a new one.
std::uint8_t* RowStore::addBlock(std::size_t size) {
    if (size == kLargestBlockSize && prepared_.valid()) {
        blocks_.push_back(prepared_.get());
    } else {
        blocks_.push_back(newBlock(size));
    }
    if (nextBlockSize_ == kLargestBlockSize) prepareBlock();
    return blocks_.back().get();
}

void RowStore::prepareBlock() {
    try {
        prepared_ = std::async(std::launch::async, [] {
            Block block = newBlock(kLargestBlockSize);
            for (std::size_t page = 0; page < kLargestBlockSize; page += kPageSize) block[page] = 0;
            return block;
        });
    } catch (const std::system_error&) {
        // Without a thread the pages come as they are written.
    }
}

}  // namespace ZkMobileBackup
