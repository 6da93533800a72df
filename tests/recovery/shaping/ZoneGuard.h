#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace ZkMobileBackup::testing {

/// Sets the computer's time zone while it lives.
class ZoneGuard {
public:
    explicit ZoneGuard(const std::string& zone) {
        if (const char* zoneBefore = std::getenv("TZ")) before_ = zoneBefore;
        setenv("TZ", zone.c_str(), 1);
    }
    ~ZoneGuard() {
        if (before_) {
            setenv("TZ", before_->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }
    ZoneGuard(const ZoneGuard&) = delete;
    ZoneGuard& operator=(const ZoneGuard&) = delete;

private:
    std::optional<std::string> before_;
};

}  // namespace ZkMobileBackup::testing
