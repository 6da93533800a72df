#pragma once

#include <string>

#include "base/Profile.h"

namespace CLI {
class App;
}

namespace zkmb {

/// Declares what every command understands as --profile and ZKMB_PROFILE; `profile` receives the value.
void addProfileOption(CLI::App& app, const std::string& group, ZkMobileBackup::Profile& profile);

}  // namespace zkmb
