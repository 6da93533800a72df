#pragma once

#include <stdexcept>
#include <string>

namespace zkmb {

/// Ends a command: its sentence goes to standard error and the exit status is 1.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace zkmb
