#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/Log.h"
#include "export/ZipArchive.h"
#include "tests/export/ExportTesting.h"

namespace ZkMobileBackup {

/// Notes what an archive reports and asks, and answers as it is told.
class RecordingZipDelegate : public ZipArchiveDelegate {
public:
    void ErrorMessage(std::string_view message) override { messages.emplace_back(message); }
    bool OverWriteOperation(std::string_view path) override {
        asked.emplace_back(path);
        return answer;
    }

    std::vector<std::string> messages;
    std::vector<std::string> asked;
    bool answer = true;
};

/// An archive object with a delegate that notes everything.
struct ObservedZip {
    std::shared_ptr<ZipArchive> archive = ZipArchive::init();
    std::shared_ptr<RecordingZipDelegate> delegate = std::make_shared<RecordingZipDelegate>();

    ObservedZip() { archive->setDelegate(delegate); }
};

/// What unpacking brought about.
struct Unpacked {
    bool result = false;
    std::vector<std::string> messages;
    std::map<std::string, std::string> files;  ///< content by path below the destination
};

inline std::map<std::string, std::string> filesBelow(const std::string& folder) {
    std::map<std::string, std::string> files;
    if (!std::filesystem::is_directory(folder)) return files;
    for (const auto& [name, bytes] : folderContent(folder)) files[name] = std::string(bytes.begin(), bytes.end());
    return files;
}

/// Opens and unpacks an archive, overwriting.
inline Unpacked unpack(const std::string& archive, const std::string& folder, const std::string& password = {}) {
    const ObservedZip zip;
    zip.archive->UnzipOpenFile(archive, password);
    const bool result = zip.archive->UnzipFileTo(folder, true);
    return {result, zip.delegate->messages, filesBelow(folder)};
}

inline Unpacked unpackBytes(const TemporaryFolder& scratch, std::string_view bytes, const std::string& folder,
                            const std::string& password = {}) {
    writeText(scratch.path("hand-made.zip"), bytes);
    return unpack(scratch.path("hand-made.zip"), folder, password);
}

/// Keeps the lines of the library's log as long as it lives.
class LogLines {
public:
    LogLines() {
        setLogSink([this](std::string_view line) { lines_.emplace_back(line); });
    }
    ~LogLines() { setLogSink({}); }
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    const std::vector<std::string>& lines() const { return lines_; }

private:
    std::vector<std::string> lines_;
};

}  // namespace ZkMobileBackup
