#include "tool/output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fmt/format.h>

#include "tool/failure.h"
#include "tool/text.h"

namespace zkmb {
namespace {

// A sentence holds at most a path, whose length the system limits, and a few words.
constexpr std::size_t kMaxCharacters = 8192;

}  // namespace

void writeOutput(std::string_view bytes) {
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() && std::fflush(stdout) == 0;
    if (!written) throw Failure(fmt::format("Cannot write to standard output: {}.", std::strerror(errno)));
}

void writeDiagnostic(std::string_view sentence) {
    std::fputs(fmt::format("zkmb: {}\n", oneLine(sentence, kMaxCharacters)).c_str(), stderr);
}

}  // namespace zkmb
