// The boxes of a movie file. Numbers that are found stand in a file with a movie header.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/ByteSources.h"
#include "platform/movie_header.h"

using namespace ZkMobileBackup;

namespace {

void require(bool condition) {
    if (!condition) std::abort();
}

bool holds(const std::vector<std::uint8_t>& bytes, std::string_view name) {
    return std::search(bytes.begin(), bytes.end(), name.begin(), name.end()) != bytes.end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto bytes = std::make_shared<const std::vector<std::uint8_t>>(data, data + size);
    const auto header = readMovieHeader(HeldBytes(bytes));
    if (!header) return 0;
    require(header->duration >= 0 && header->timeScale >= 0);
    require(holds(*bytes, "moov") && holds(*bytes, "mvhd"));
    return 0;
}
