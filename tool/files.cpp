#include "tool/files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iterator>
#include <system_error>

#include "tool/failure.h"

namespace zkmb {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void failToRead(const std::string& path, const std::string& cause) {
    throw Failure(fmt::format("Cannot read '{}': {}.", path, cause));
}

fs::file_type typeOf(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (error) failToRead(path, error.message());
    return status.type();
}

// "/backup/" and "/backup" name one folder.
fs::path resolved(const std::string& path) {
    std::error_code error;
    const fs::path whole = fs::weakly_canonical(fs::absolute(path, error), error);
    return whole.has_filename() ? whole : whole.parent_path();
}

}  // namespace

void requireReadableFile(const std::string& path) {
    const fs::file_type type = typeOf(path);
    if (type == fs::file_type::directory) failToRead(path, "It is a directory");
    // A pipe or a device could be read for ever.
    if (type != fs::file_type::regular) failToRead(path, "It is no regular file");
    std::ifstream file(path, std::ios::binary);
    if (file.is_open()) file.peek();
    if (!file.is_open() || file.bad()) failToRead(path, std::strerror(errno));
}

void requireReadableFolder(const std::string& path) {
    if (typeOf(path) != fs::file_type::directory) failToRead(path, "It is no directory");
    std::error_code error;
    const fs::directory_iterator entries(path, error);
    if (error) failToRead(path, error.message());
}

void makeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directories(path, error);
    if (!error && !fs::is_directory(path, error)) error = std::make_error_code(std::errc::not_a_directory);
    if (error) throw Failure(fmt::format("Cannot make the folder '{}': {}.", path, error.message()));
}

std::string contentOf(const std::string& path) {
    requireReadableFile(path);
    std::ifstream file(path, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    if (file.bad()) failToRead(path, std::strerror(errno));
    return content;
}

bool beginsWith(const std::string& path, const std::string& start) {
    std::ifstream file(path, std::ios::binary);
    std::string head(start.size(), '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    return file.gcount() == static_cast<std::streamsize>(start.size()) && head == start;
}

bool liesWithin(const std::string& path, const std::string& folder) {
    const fs::path inner = resolved(path);
    const fs::path outer = resolved(folder);
    return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

}  // namespace zkmb
