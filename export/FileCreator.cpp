#include "export/FileCreator.h"

#include <optional>
#include <utility>

#include "base/Log.h"
#include "base/Text.h"
#include "export/IllegalCharacters.h"
#include "platform/Files.h"

namespace ZkMobileBackup {

namespace {

/// Leads every part of a multi-valued cell, the first one too.
constexpr std::string_view kPartSeparator = "  \r\n";

/// Each dictionary of a cell multiplies the cell's text; a piece that would be longer than this is left out.
constexpr std::size_t kLongestPiece = std::size_t{16} << 20;

const std::string* shownText(const Value& value) {
    const std::string* text = value.text();
    return text != nullptr && !isContainInlegalCharacter(toUtf16(*text)) ? text : nullptr;
}

std::size_t shownTextCount(const Dictionary& dictionary) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < dictionary.size(); ++i) {
        if (shownText(dictionary.valueAt(i)) != nullptr) ++count;
    }
    return count;
}

/// What a dictionary adds to a cell that reads `cell` so far: the cell's own text, once for each of the dictionary's
/// texts. The dictionary's texts themselves never show; documents of earlier releases read the same.
std::optional<std::string> pieceOfDictionary(const Dictionary& dictionary, const std::string& cell) {
    const std::size_t repeats = shownTextCount(dictionary);
    if (repeats == 0 || repeats > kLongestPiece / (cell.size() + 1)) return std::nullopt;
    std::string piece = cell;
    for (std::size_t i = 1; i < repeats; ++i) piece.append(" ").append(cell);
    return piece;
}

void appendPart(std::string& cell, std::string_view part) {
    cell.append(kPartSeparator).append(part);
}

std::string cellOfArray(const Array& array) {
    std::string cell;
    for (const Value& element : array) {
        if (const std::string* text = shownText(element)) {
            appendPart(cell, *text);
        } else if (const Dictionary* dictionary = element.dictionary()) {
            if (const auto piece = pieceOfDictionary(*dictionary, cell)) appendPart(cell, *piece);
        }
    }
    return cell;
}

/// A trailing "/" does not become part of the name.
std::string withExtension(std::string_view path, std::string_view extension) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    return std::string(path).append(".").append(extension);
}

}  // namespace

FileCreatorDelegate::~FileCreatorDelegate() = default;

std::shared_ptr<FileCreator> FileCreator::init() {
    return std::shared_ptr<FileCreator>(new FileCreator);
}

FileCreator::FileCreator() = default;
FileCreator::~FileCreator() = default;

void FileCreator::startConvert() {}

void FileCreator::extportStart() {
    if (delegate_ != nullptr) delegate_->extportStart();
}

void FileCreator::extportProcess(double process) {
    if (delegate_ != nullptr) delegate_->extportProcess(process);
}

void FileCreator::extportComplete(bool complete) {
    if (delegate_ != nullptr) delegate_->extportComplete(complete);
}

std::string FileCreator::stringValueFromObject(const Value& object) const {
    if (const std::string* text = object.text()) return *text;
    if (const Array* array = object.array()) return cellOfArray(*array);
    return {};
}

std::string FileCreator::GetOutPutFile(std::string_view path) const {
    return freeOutputPath(std::string(path));
}

void FileCreator::reportFraction(double fraction) {
    extportProcess(fractionOfBatch(fraction));
}

double FileCreator::fractionOfBatch(double fraction) const {
    if (count_ < 1) return fraction;
    const auto files = static_cast<double>(count_);
    return fraction / files + static_cast<double>(index_) / files;
}

std::string FileCreator::documentPath(const std::string& savePath, DlxExportType type) {
    return withExtension(savePath, fileExtension(type));
}

void FileCreator::writeDocument(const std::string& savePath, DlxExportType type, std::string_view bytes) {
    // The free name is claimed while writing; asked for beforehand, another job could take it meanwhile.
    noteWritten(writeNewFile(documentPath(savePath, type), bytes));
}

void FileCreator::claimDocument(const std::string& temporaryPath, const std::string& path) {
    noteWritten(moveToFreeName(temporaryPath, path));
}

void FileCreator::noteWritten(WrittenFile file) {
    writtenPath_ = std::move(file.path);
    noteFailure(file.failure);
}

void FileCreator::noteFailure(const std::string& failure) {
    if (failure.empty()) return;
    writeLog(failure);
    if (failure_.empty()) failure_ = failure;
}

void FileCreator::takeFailure(const FileCreator& writer) {
    if (failure_.empty()) failure_ = writer.failure_;
}

}  // namespace ZkMobileBackup
