#include "recovery/engine/overflow_chain.h"

namespace ZkMobileBackup::engine {

namespace {

constexpr int kMostLinks = 10000;

bool isOverflowPage(const ParserState& state, std::uint32_t number) {
    return number >= 2 && number <= state.header->pageCount();
}

/// Tells as soon as it has been led into a circle: such a chain has no end, however many links are followed.
class CircleGuard {
public:
    bool sawCircle(std::uint32_t page) {
        if (page == landmark_) return true;
        if (--untilNextLandmark_ == 0) {
            landmark_ = page;
            stride_ *= 2;
            untilNextLandmark_ = stride_;
        }
        return false;
    }

private:
    std::uint32_t landmark_ = 0;
    int stride_ = 1;
    int untilNextLandmark_ = 1;
};

}  // namespace

bool followOverflowChain(const ParserState& state, std::vector<std::uint32_t>& pages) {
    const ByteImage& image = state.image();
    // The first number is taken from the end of the page, not of the record's local part: a record that spills is the
    // last one of its page.
    std::uint32_t page = image.big32(state.reader->dbCurPageLimit() - kPageNumberSize);
    if (!isOverflowPage(state, page)) return true;
    pages.push_back(page);
    CircleGuard guard;
    for (int link = 0; link < kMostLinks && !guard.sawCircle(page); ++link) {
        const std::int64_t start = state.pageStart(page);
        if (state.isBeyondEnd(start + kPageNumberSize)) return true;
        page = image.big32(start);
        if (!isOverflowPage(state, page)) return true;
        pages.push_back(page);
    }
    pages.clear();
    return false;
}

std::int64_t spliceOverflowPages(ParserState& state, const std::vector<std::uint32_t>& pages,
                                 std::int64_t destination) {
    const std::int64_t contentSize = std::int64_t{state.header->pageSize()} - kPageNumberSize;
    for (const std::uint32_t page : pages) {
        state.image().splice(destination, state.pageStart(page) + kPageNumberSize, contentSize);
        destination += contentSize;
    }
    return destination;
}

}  // namespace ZkMobileBackup::engine
