#include "recovery/model/TableObject.h"

#include "recovery/model/RowStore.h"

namespace ZkMobileBackup {

TableObject::TableObject() : TableObject(std::make_shared<RowStore>()) {}

TableObject::TableObject(std::shared_ptr<RowStore> store) : rowList_(store), deletedRowList_(std::move(store)) {}

TableObject::~TableObject() = default;

std::shared_ptr<TableObject> TableObject::copyWithZone() const {
    auto copy = std::make_shared<TableObject>();
    copy->name_ = name_;
    copy->filedCount_ = filedCount_;
    copy->filedList_ = filedList_;
    copy->filedTypeList_ = filedTypeList_;
    copy->rowList_.append(rowList_);
    copy->deletedRowList_.append(deletedRowList_);
    return copy;
}

RawTableObject::RawTableObject() = default;
RawTableObject::RawTableObject(std::shared_ptr<RowStore> store) : TableObject(std::move(store)) {}
RawTableObject::~RawTableObject() = default;

std::string RawTableObject::description() const {
    return "---Table Info --- \n name: " + name().value_or("(null)") + " , pageNum: " + std::to_string(pageNum_) +
           " , filed Count: " + std::to_string(filedList().size());
}

CustomTableObject::CustomTableObject() = default;
CustomTableObject::~CustomTableObject() = default;

}  // namespace ZkMobileBackup
