#pragma once

#include <string>

#include "base/Api.h"

namespace ZkMobileBackup {

/// The folder with the document templates and the packaging scripts. By default the one that was installed with the
/// library; for a library in its build folder the one that was built with it. Any thread.
ZKMB_API std::string resourceFolder();

/// Replaces that folder; an empty path brings back the default. Files of the host's own stand in for the library's, but
/// all of them must be there. Any thread; files that are being written may still use the former one.
ZKMB_API void setResourceFolder(std::string path);

}  // namespace ZkMobileBackup
