#pragma once

#include <string>

namespace zkmb {

// Each throws a Failure that names the path and the cause.

/// Checks that a file is there and can be read.
void requireReadableFile(const std::string& path);
/// Checks that a folder is there and can be listed.
void requireReadableFolder(const std::string& path);
/// Makes a folder, and those above it, where it is missing.
void makeFolder(const std::string& path);
/// The whole content of a file.
std::string contentOf(const std::string& path);

/// Whether a file begins with `start`.
bool beginsWith(const std::string& path, const std::string& start);

/// Whether `path`, which need not exist, is `folder` or lies below it, symbolic links resolved.
bool liesWithin(const std::string& path, const std::string& folder);

}  // namespace zkmb
