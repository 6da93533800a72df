#include "recovery/engine/freelist.h"

#include <algorithm>
#include <unordered_set>

#include "recovery/TableKeys.h"
#include "recovery/engine/btree_walker.h"

namespace ZkMobileBackup::engine {

namespace {

// A trunk page: number of the next trunk, number of leaves, then the leaves' page numbers.
constexpr std::int64_t kLeafCountField = 4;
constexpr std::int64_t kLeafNumbers = 8;
constexpr std::int64_t kNumberSize = 4;

}  // namespace

bool Freelist::walk() {
    constexpr std::uint32_t kFirstPossibleTrunk = 2;
    const std::uint32_t first = state_.header->freePageFirstPageNum();
    if (first < kFirstPossibleTrunk || state_.header->freePagePageCount() == 0) {
        return state_.fail("No Free Page", "parserFreePageList");
    }
    std::int64_t trunksDone = state_.tableCount - state_.header->freePagePageCount();
    std::unordered_set<std::int64_t> visited;
    // A trunk that was visited before would lead round for ever.
    for (std::int64_t trunk = state_.pageStart(first); visited.insert(trunk).second;) {
        if (state_.shouldStop() || state_.isBeyondEnd(trunk + kNumberSize)) return true;
        const std::uint32_t next = state_.image().big32(trunk);
        walkTrunk(trunk);
        reportTrunk(++trunksDone);
        if (next == 0) return true;
        trunk = state_.pageStart(next);
    }
    return true;
}

void Freelist::walkTrunk(std::int64_t trunk) {
    const std::uint32_t leafCount = state_.image().big32(trunk + kLeafCountField);
    for (std::int64_t i = 0; i < leafCount && !state_.pageVisitsExhausted(); ++i) {
        const std::int64_t number = trunk + kLeafNumbers + kNumberSize * i;
        if (state_.isBeyondEnd(number + kNumberSize)) return;
        walkLeaf(state_.image().big32(number));
    }
}

void Freelist::walkLeaf(std::uint32_t page) {
    // The page limit stays that of the last page walked: these cells are decoded under it.
    state_.moveToPageStart(state_.pageStart(page));
    const std::uint8_t type = state_.visitPage();
    if (!worthProcessing()) return;
    const std::shared_ptr<RawTableObject> pageTable = tableOfPage(state_, page);
    BtreeWalker walker(state_, *pageTable);
    if (type == kLeafTablePage) walker.walkLeaf();
    if (type == kInteriorTablePage) walker.walkInterior();
    const auto target = tableWithFieldCount(state_, pageTable->filedCount());
    if (target != nullptr && target->tableType() != RawTableObject::kSchemaTable) {
        target->deletedRowList().append(pageTable->deletedRowList());
    }
}

/// The page's first byte must be less than the image's last one, whatever that is: a file that ends in 0 shows no free
/// page. Results are compared by this.
bool Freelist::worthProcessing() const {
    return state_.image().byte(state_.reader->dbCurOffset()) < state_.image().byte(state_.reader->dbEnd());
}

void Freelist::reportTrunk(std::int64_t trunksDone) const {
    constexpr double kShareOfRun = 18.0;
    constexpr double kDatabases = 9.0;
    double progress = 0;
    if (state_.tableCount != 0) {
        const double done = static_cast<double>(trunksDone) / static_cast<double>(state_.tableCount);
        progress = done / kShareOfRun + (static_cast<double>(state_.dbIndex) / kDatabases + 1.0 / 3.0);
    }
    report_(Dictionary{{kBackupProcessKey, progress}});
}

std::shared_ptr<RawTableObject> Freelist::tableOfPage(const ParserState& state, std::uint32_t page) {
    auto table = std::make_shared<RawTableObject>(state.rows);
    table->setName("Free Page " + std::to_string(signed32(page)));
    table->setPageNum(page);
    table->setTableType(RawTableObject::kFreePageTable);
    return table;
}

std::shared_ptr<RawTableObject> Freelist::tableWithFieldCount(const ParserState& state, std::int64_t fieldCount) {
    if (fieldCount <= 0) return nullptr;
    const auto matches = [fieldCount](const auto& table) { return table->filedCount() == fieldCount; };
    const auto last = std::find_if(state.tables.rbegin(), state.tables.rend(), matches);
    return last != state.tables.rend() ? *last : nullptr;
}

}  // namespace ZkMobileBackup::engine
