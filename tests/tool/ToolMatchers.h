#pragma once

#include <algorithm>
#include <gmock/gmock.h>
#include <string>

#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {

/// Status 1 and exactly one sentence on standard error, which names `subject`.
MATCHER_P(FailsWithOneSentenceNaming, subject, "") {
    *result_listener << "status " << arg.status << ", errors: " << arg.errors;
    return arg.status == 1 && arg.errors.starts_with("zkmb: ") && arg.errors.ends_with(".\n") &&
           std::ranges::count(arg.errors, '\n') == 1 && arg.errors.find(subject) != std::string::npos;
}

/// Status 0 and nothing on standard error.
MATCHER(SucceedsSilently, "") {
    *result_listener << "status " << arg.status << ", errors: " << arg.errors;
    return arg.status == 0 && arg.errors.empty();
}

}  // namespace ZkMobileBackup
