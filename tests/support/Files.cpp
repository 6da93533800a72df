#include "tests/support/Files.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace ZkMobileBackup {

std::vector<std::uint8_t> readBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return {text.begin(), text.end()};
}

void writeText(const std::string& path, std::string_view text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

void writeBytes(const std::string& path, std::span<const std::uint8_t> bytes) {
    writeText(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::map<std::string, std::vector<std::uint8_t>> folderContent(const std::string& folder) {
    std::map<std::string, std::vector<std::uint8_t>> content;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        content[std::filesystem::relative(entry.path(), folder).string()] = readBytes(entry.path().string());
    }
    return content;
}

}  // namespace ZkMobileBackup
