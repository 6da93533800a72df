#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

constexpr ProgressShare kShare{0, 18.0};

void setUnlessNull(Dictionary& row, std::string_view column, const Row& bookmark, std::size_t index) {
    const auto text = cellOf(bookmark, index);
    if (text && *text != kNullCell) row.set(column, *text);
}

}  // namespace

std::shared_ptr<CustomTableObject> shapeBookmarks(const Source& source) {
    TableShaper shaper(source, "BookMark", {"title", "url"});
    const RawTableObject* bookmarks = shaper.rawTable("bookmarks");
    if (bookmarks == nullptr) return shaper.result();
    const std::size_t title = columnIndex(*bookmarks, "title");
    const std::size_t url = columnIndex(*bookmarks, "url");
    shaper.walk(*bookmarks, kShare, [&](const Row& bookmark, Origin origin) {
        Dictionary row = shaper.newRow();
        setUnlessNull(row, "title", bookmark, title);
        setUnlessNull(row, "url", bookmark, url);
        shaper.add(std::move(row), origin);
    });
    return shaper.result();
}

}  // namespace ZkMobileBackup::shaping
