#include "base/Log.h"

#include <cstdio>
#include <mutex>
#include <string>
#include <utility>

namespace ZkMobileBackup {

namespace {

struct Log {
    std::mutex mutex;
    LogSink sink;  // guarded by mutex
};

Log& log() {
    static Log& instance = *new Log;  // never destroyed: jobs may still write while the process ends
    return instance;
}

}  // namespace

void setLogSink(LogSink sink) {
    const std::lock_guard lock(log().mutex);
    log().sink = std::move(sink);
}

void writeLog(std::string_view line) {
    const std::lock_guard lock(log().mutex);
    if (log().sink) {
        log().sink(line);
        return;
    }
    const std::string text = std::string(line) + "\n";
    std::fputs(text.c_str(), stderr);
}

}  // namespace ZkMobileBackup
