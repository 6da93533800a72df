#pragma once

#include <string_view>

namespace zkmb {

/// Writes to standard output; throws Failure when it cannot take the bytes.
void writeOutput(std::string_view bytes);

/// Writes one line to standard error, after the tool's name. Any thread.
void writeDiagnostic(std::string_view sentence);

}  // namespace zkmb
