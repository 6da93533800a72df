#include "base/Image.h"

namespace ZkMobileBackup {

Image::~Image() = default;

}  // namespace ZkMobileBackup
