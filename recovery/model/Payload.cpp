#include "recovery/model/Payload.h"

namespace ZkMobileBackup {

void PayloadObject::reset() {
    prefixLen_ = 0;
    length_ = 0;
    rowid_ = ~std::uint64_t{0};
    headerSize_ = 0;
    cellCount_ = 0;
    cellPageOffset_ = -1;
    cellPage_ = -1;
    cellList_.clear();
    overFlowPageList_.clear();
    base_.reset();
    mappedData_.reset();
    mappedDataEndpoint_.reset();
    ignoreFirstFiled_ = false;
}

}  // namespace ZkMobileBackup
