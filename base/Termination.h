#pragma once

#include <functional>

#include "base/Api.h"

namespace ZkMobileBackup {

/// Replaces what happens when the library cannot go on without a folder of its own: the handler is called on the thread
/// that needs the folder, whose work then ends without a result. An empty handler brings back the default, which sends
/// SIGTERM to the own process. Any thread.
ZKMB_API void setTerminationHandler(std::function<void()> handler);

/// Asks the host to end.
void requestTermination();

}  // namespace ZkMobileBackup
