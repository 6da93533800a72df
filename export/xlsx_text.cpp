#include "export/xlsx_text.h"

#include <algorithm>
#include <cstddef>

namespace ZkMobileBackup {

namespace {

bool isHexadecimalDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

/// Whether a mark such as "_x0041_" starts at `start`, at which "_x" stands.
bool isMarkAt(std::string_view text, std::size_t start) {
    const std::string_view mark = text.substr(start, std::string_view("_x0041_").size());
    return mark.size() == 7 && mark[6] == '_' && std::ranges::all_of(mark.substr(2, 4), isHexadecimalDigit);
}

}  // namespace

std::string escapedCellText(std::string_view text) {
    std::string escaped;
    std::size_t copied = 0;
    for (std::size_t found = text.find("_x"); found != std::string_view::npos; found = text.find("_x", found + 1)) {
        if (!isMarkAt(text, found)) continue;
        escaped.append(text, copied, found - copied).append("_x005F");
        copied = found;
    }
    return escaped.append(text, copied);
}

}  // namespace ZkMobileBackup
