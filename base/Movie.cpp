#include "base/Movie.h"

namespace ZkMobileBackup {

Movie::~Movie() = default;

}  // namespace ZkMobileBackup
