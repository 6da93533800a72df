#include "export/row_height.h"

#include <algorithm>

namespace ZkMobileBackup {

namespace {

/// Breadth of the characters that UTF-8 starts with this byte: 0 for a byte within a character; characters of three
/// bytes and more, most of which are ideographs and pictures, are taken to be twice as broad as others.
std::size_t breadthAt(char byte) {
    const auto bits = static_cast<unsigned char>(byte);
    if ((bits & 0xC0) == 0x80) return 0;
    return bits >= 0xE0 ? 2 : 1;
}

/// Puts words into lines, one after the other.
class LineCounter {
public:
    explicit LineCounter(std::size_t width) : width_(width) {}

    std::size_t lines() const { return lines_ + overflowOf(lineBreadth_ + wordBreadth_); }
    void add(char byte) {
        if (byte == '\n') return breakLine();
        wordBreadth_ += breadthAt(byte);
        if (byte == ' ') endWord();
    }

private:
    std::size_t overflowOf(std::size_t breadth) const { return breadth == 0 ? 0 : (breadth - 1) / width_; }
    void breakLine() {
        lines_ = lines() + 1;
        lineBreadth_ = wordBreadth_ = 0;
    }
    /// The word goes to the line in hand, else to a new one, and to more of them when it is longer than a line.
    void endWord() {
        if (lineBreadth_ > 0 && lineBreadth_ + wordBreadth_ > width_) {
            ++lines_;
            lineBreadth_ = 0;
        }
        lineBreadth_ += wordBreadth_;
        wordBreadth_ = 0;
        const std::size_t overflow = overflowOf(lineBreadth_);
        lines_ += overflow;
        lineBreadth_ -= overflow * width_;
    }

    std::size_t width_;
    std::size_t lines_ = 1;  // with the one in hand
    std::size_t lineBreadth_ = 0;
    std::size_t wordBreadth_ = 0;  // of the word in hand
};

}  // namespace

std::size_t wrappedLineCount(std::string_view text, std::size_t width, std::size_t limit) {
    LineCounter counter(width);
    for (const char byte : text) {
        counter.add(byte);
        if (counter.lines() >= limit) return limit;
    }
    return counter.lines();
}

}  // namespace ZkMobileBackup
