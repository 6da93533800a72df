#include "recovery/model/Row.h"

#include "recovery/model/RowStore.h"

namespace ZkMobileBackup {

const std::uint8_t* Row::content() const {
    return dictionary() == nullptr ? reinterpret_cast<const std::uint8_t*>(content_) : nullptr;
}

std::size_t Row::count() const {
    const std::uint8_t* first = nullptr;
    return content() != nullptr ? CellReader::readCount(content(), &first) : 0;
}

std::string_view Row::cell(std::size_t index) const {
    if (index >= count()) return {};
    Iterator position = begin();
    for (std::size_t i = 0; i < index; ++i) ++position;
    return *position;
}

Row::Iterator Row::begin() const {
    if (content() == nullptr) return {};
    const std::uint8_t* first = nullptr;
    const std::size_t count = CellReader::readCount(content(), &first);
    return {first, count};
}

Row::Iterator Row::end() const {
    return {};
}

std::vector<std::string> Row::texts() const {
    std::vector<std::string> texts;
    texts.reserve(count());
    for (const std::string_view text : *this) texts.emplace_back(text);
    return texts;
}

const Dictionary* Row::dictionary() const {
    return (content_ & kDictionaryMark) != 0 ? reinterpret_cast<const Dictionary*>(content_ - kDictionaryMark)
                                             : nullptr;
}

Dictionary* Row::dictionary() {
    return const_cast<Dictionary*>(std::as_const(*this).dictionary());
}

std::string_view Row::Iterator::operator*() const {
    const std::uint8_t* next = nullptr;
    return CellReader::read(position_, &next);
}

Row::Iterator& Row::Iterator::operator++() {
    CellReader::read(position_, &position_);
    --remaining_;
    return *this;
}

RowList::RowList() : RowList(std::make_shared<RowStore>()) {}

RowList::RowList(std::shared_ptr<RowStore> store) : store_(std::move(store)) {}

void RowList::append(const std::vector<std::string>& cells) {
    RowWriter row = store_->beginRow();
    for (const std::string& cell : cells) row.append(cell);
    rows_.push_back(row.finish());
}

void RowList::append(Dictionary dictionary) {
    rows_.push_back(store_->addDictionary(std::move(dictionary)));
}

void RowList::append(Row row, const std::shared_ptr<RowStore>& owner) {
    if (owner == store_) {
        rows_.push_back(row);
    } else {
        appendCopy(row);
    }
}

void RowList::appendRepeatedly(Row row, const std::shared_ptr<RowStore>& owner, std::size_t times) {
    if (owner == store_) {
        rows_.insert(rows_.end(), times, row);
    } else {
        for (std::size_t i = 0; i < times; ++i) appendCopy(row);
    }
}

void RowList::append(const RowList& other) {
    const std::size_t count = other.size();  // of a list appended to itself, too
    for (std::size_t i = 0; i < count; ++i) append(other[i], other.store_);
}

void RowList::appendCopy(const Row& row) {
    if (const Dictionary* dictionary = row.dictionary()) {
        append(*dictionary);
        return;
    }
    RowWriter copy = store_->beginRow();
    for (const std::string_view cell : row) copy.append(cell);
    rows_.push_back(copy.finish());
}

}  // namespace ZkMobileBackup
