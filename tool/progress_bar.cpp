#include "tool/progress_bar.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <fmt/format.h>
#include <unistd.h>
#include <utility>

#include "tool/command.h"
#include "tool/text.h"

namespace zkmb {
namespace {

constexpr std::size_t kBarWidth = 30;
constexpr std::size_t kMaxLabelCharacters = 30;
constexpr const char* kClearLine = "\r\x1B[K";

}  // namespace

ProgressBar::ProgressBar(const Context& context, std::string label)
    : visible_(!context.quiet && isatty(STDERR_FILENO) == 1), label_(oneLine(label, kMaxLabelCharacters)) {
    show(0);
}

ProgressBar::~ProgressBar() {
    if (visible_) std::fputs(kClearLine, stderr);
}

void ProgressBar::show(double fraction) {
    const int percent = static_cast<int>(std::clamp(fraction, 0.0, 1.0) * 100);
    if (!visible_ || percent == std::exchange(percent_, percent)) return;
    const std::size_t filled = static_cast<std::size_t>(percent) * kBarWidth / 100;
    const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
    std::fputs(fmt::format("{}{} [{}] {:3}%", kClearLine, label_, bar, percent).c_str(), stderr);
}

}  // namespace zkmb
