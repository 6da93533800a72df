// Property lists, XML and binary.
#include <cstdint>
#include <string_view>

#include "platform/PropertyList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ZkMobileBackup::parsePropertyList({reinterpret_cast<const char*>(data), size});
    return 0;
}
