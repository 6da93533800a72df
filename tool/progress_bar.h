#pragma once

#include <string>

namespace zkmb {

struct Context;

/// A bar on standard error that shows how far one task has come. Silent when standard error is no terminal or the
/// command line asks for quiet. Removed from the screen at its end.
class ProgressBar {
public:
    ProgressBar(const Context& context, std::string label);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// Shows the fraction done, from 0 to 1.
    void show(double fraction);

private:
    bool visible_;
    std::string label_;
    int percent_ = -1;  // as last drawn
};

}  // namespace zkmb
