#include "tool/profile.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <iterator>

namespace zkmb {
namespace {

using ZkMobileBackup::Profile;

struct NamedProfile {
    const char* name;
    Profile profile;
};

constexpr NamedProfile kProfiles[] = {{"legacy", Profile::kLegacy}, {"standard", Profile::kStandard}};

const NamedProfile* profileNamed(const std::string& name) {
    const auto* found = std::ranges::find_if(kProfiles, [&](const NamedProfile& entry) { return entry.name == name; });
    return found == std::end(kProfiles) ? nullptr : found;
}

std::string complaintAbout(const std::string& name) {
    return profileNamed(name) != nullptr ? "" : fmt::format("'{}' is neither legacy nor standard", name);
}

}  // namespace

void addProfileOption(CLI::App& app, const std::string& group, Profile& profile) {
    const auto choose = [&profile](const std::string& name) { profile = profileNamed(name)->profile; };
    app.add_option_function<std::string>("--profile", choose,
                                         "Documents for every reader, or exactly as earlier releases wrote them")
        ->type_name("standard|legacy")
        ->default_str("standard")
        ->envname("ZKMB_PROFILE")
        ->check(complaintAbout)
        ->group(group);
}

}  // namespace zkmb
