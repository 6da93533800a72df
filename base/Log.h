#pragma once

#include <functional>
#include <string_view>

#include "base/Api.h"

namespace ZkMobileBackup {

/// Receives one line of the library's log, without a line end, on whatever thread wrote it.
using LogSink = std::function<void(std::string_view line)>;

/// Replaces the sink of the library's log. An empty sink brings back the default, which writes to standard error.
/// Any thread; calls of one sink never overlap.
ZKMB_API void setLogSink(LogSink sink);

/// Writes one line to the log. Any thread.
ZKMB_API void writeLog(std::string_view line);

}  // namespace ZkMobileBackup
