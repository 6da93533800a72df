#include "recovery/shaping/message_items.h"

#include <algorithm>
#include <iterator>

#include "base/Text.h"
#include "recovery/Converter.h"
#include "recovery/shaping/table_shaper.h"

namespace ZkMobileBackup::shaping {

namespace {

std::string dateText(std::string_view seconds) {
    const auto number = static_cast<double>(integerValue(seconds));
    return Converter::formatedStringFromDate(Converter::dateWithSqliteTimeStamp(number));
}

}  // namespace

MessageItemFactory::MessageItemFactory(const RawTableObject& messages)
    : columns_{{{columnIndex(messages, "text"), kText},
                {columnIndex(messages, "date"), kDate},
                {columnIndex(messages, "is_from_me"), kSentFlag}}},
      defaultItem_{{"detail_text", ""}, {"detail_date", ""}, {"detail_sent_flag", "0"}} {
    std::ranges::sort(columns_, {}, &Column::index);
}

Dictionary MessageItemFactory::itemOf(const Row& message) const {
    const auto [text, date, sentFlag] = cellsOf(message);
    Dictionary item = defaultItem_;
    if (text) item.setValueAt(kText, *text);
    if (date) item.setValueAt(kDate, dateText(*date));
    if (sentFlag) item.setValueAt(kSentFlag, *sentFlag);
    return item;
}

/// All of them in one walk along the row, which is long.
MessageItemFactory::Cells MessageItemFactory::cellsOf(const Row& message) const {
    Cells cells;
    const std::size_t count = message.count();
    auto cell = message.begin();
    std::size_t position = 0;
    for (const Column& column : columns_) {
        if (column.index >= count) break;
        for (; position < column.index; ++position) ++cell;
        cells[column.field] = *cell;
    }
    return cells;
}

const Value& MessageItemList::shared() {
    if (!collected_.empty()) {
        shared_ = Array(std::move_iterator(collected_.begin()), std::move_iterator(collected_.end()));
        collected_ = {};
    }
    return shared_;
}

}  // namespace ZkMobileBackup::shaping
