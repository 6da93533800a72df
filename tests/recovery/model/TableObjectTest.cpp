#include <gmock/gmock.h>

#include "recovery/model/TableObject.h"

namespace ZkMobileBackup {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(TableObject, StartsWithoutANameAndWithEmptyLists) {
    const TableObject table;
    EXPECT_EQ(table.name(), std::nullopt);
    EXPECT_EQ(table.filedCount(), 0);
    EXPECT_THAT(table.filedList(), IsEmpty());
    EXPECT_THAT(table.filedTypeList(), IsEmpty());
    EXPECT_TRUE(table.rowList().empty());
    EXPECT_TRUE(table.deletedRowList().empty());
}

TEST(RawTableObject, IsAnOrdinaryTableWithoutARootPageAtFirst) {
    const RawTableObject table;
    EXPECT_EQ(table.tableType(), 1);
    EXPECT_EQ(table.pageNum(), -1);
    EXPECT_FALSE(table.hasIntergerPK());
}

TEST(RawTableObject, DescribesItselfWithTheNumberOfColumnNames) {
    RawTableObject table;
    table.setName("message");
    table.setPageNum(7);
    table.setFiledCount(99);  // counted elsewhere, not shown
    table.setFiledList({"a", "b"});
    EXPECT_EQ(table.description(), "---Table Info --- \n name: message , pageNum: 7 , filed Count: 2");
}

TEST(RawTableObject, DescribesAMissingNameAsNull) {
    EXPECT_EQ(RawTableObject().description(), "---Table Info --- \n name: (null) , pageNum: -1 , filed Count: 0");
}

TEST(CustomTableObject, StartsLikeAnyTable) {
    const CustomTableObject table;
    EXPECT_EQ(table.name(), std::nullopt);
    EXPECT_TRUE(table.rowList().empty());
}

/// A raw table with something in every property.
std::shared_ptr<RawTableObject> filledTable() {
    auto table = std::make_shared<RawTableObject>();
    table->setName("message");
    table->setTableType(RawTableObject::kFreePageTable);
    table->setPageNum(7);
    table->setHasIntergerPK(true);
    table->setFiledCount(3);
    table->setFiledList({"id", "text"});
    table->setFiledTypeList({{kColumnInteger, std::nullopt}, {kColumnText, "'x'"}});
    table->rowList().append({"1", "live"});
    table->rowList().append({"2", "live too"});
    table->deletedRowList().append({"-1", "gone"});
    return table;
}

TEST(TableCopy, OfARawTableIsAPlainTable) {
    const std::shared_ptr<TableObject> copy = filledTable()->copyWithZone();
    EXPECT_EQ(dynamic_cast<RawTableObject*>(copy.get()), nullptr);
    EXPECT_EQ(dynamic_cast<CustomTableObject*>(copy.get()), nullptr);
}

TEST(TableCopy, OfAResultTableIsAPlainTable) {
    EXPECT_EQ(dynamic_cast<CustomTableObject*>(CustomTableObject().copyWithZone().get()), nullptr);
}

TEST(TableCopy, HasTheSameNameCountColumnsAndRows) {
    const std::shared_ptr<TableObject> copy = filledTable()->copyWithZone();
    EXPECT_EQ(copy->name(), "message");
    EXPECT_EQ(copy->filedCount(), 3);
    EXPECT_THAT(copy->filedList(), ElementsAre("id", "text"));
    EXPECT_THAT(copy->filedTypeList(),
                ElementsAre(ColumnType{kColumnInteger, std::nullopt}, ColumnType{kColumnText, "'x'"}));
    ASSERT_EQ(copy->rowList().size(), 2U);
    EXPECT_THAT(copy->rowList()[0].texts(), ElementsAre("1", "live"));
    EXPECT_THAT(copy->rowList()[1].texts(), ElementsAre("2", "live too"));
    ASSERT_EQ(copy->deletedRowList().size(), 1U);
    EXPECT_THAT(copy->deletedRowList()[0].texts(), ElementsAre("-1", "gone"));
}

TEST(TableCopy, OfATableWithoutANameHasNone) {
    EXPECT_EQ(TableObject().copyWithZone()->name(), std::nullopt);
}

TEST(TableCopy, OutlivesTheTable) {
    std::shared_ptr<RawTableObject> table = filledTable();
    const std::shared_ptr<TableObject> copy = table->copyWithZone();
    table.reset();
    EXPECT_THAT(copy->rowList()[1].texts(), ElementsAre("2", "live too"));
    EXPECT_THAT(copy->deletedRowList()[0].texts(), ElementsAre("-1", "gone"));
}

TEST(TableCopy, DoesNotSeeLaterRows) {
    const std::shared_ptr<RawTableObject> table = filledTable();
    const std::shared_ptr<TableObject> copy = table->copyWithZone();
    table->rowList().append({"3", "later"});
    table->filedList().push_back("later");
    EXPECT_EQ(copy->rowList().size(), 2U);
    EXPECT_EQ(copy->filedList().size(), 2U);
}

TEST(TableCopy, HasResultRowsOfItsOwn) {
    CustomTableObject table;
    table.rowList().append(Dictionary{{"name", "before"}});
    const std::shared_ptr<TableObject> copy = table.copyWithZone();
    table.rowList()[0].dictionary()->set("name", "after");
    EXPECT_EQ(*copy->rowList()[0].dictionary()->text("name"), "before");
}

}  // namespace
}  // namespace ZkMobileBackup
