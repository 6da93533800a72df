#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "export/DlxExporter.h"
#include "export/FileCreator.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {

/// A new folder for documents, removed at the end of a test.
class ExportFolder : public TemporaryFolder {
public:
    /// Puts a file in the way of a document.
    void addFile(const std::string& name) const { writeText(path(name), "there before"); }

    /// Names in the folder, sorted.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path())) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
};

inline std::string fileText(const std::string& path) {
    const std::vector<std::uint8_t> bytes = readBytes(path);
    return {bytes.begin(), bytes.end()};
}

/// Notes the calls of one writer, in order, and may act on its progress.
class RecordingWriterDelegate : public FileCreatorDelegate {
public:
    void extportStart() override { ++starts; }
    void extportProcess(double process) override {
        progress.push_back(process);
        if (onProgress) onProgress(process);
    }
    void extportComplete(bool complete) override { completions.push_back(complete); }

    int starts = 0;
    std::vector<double> progress;
    std::vector<bool> completions;
    std::function<void(double)> onProgress;
};

/// Notes the calls of an exporter, whatever thread they come from.
class RecordingExporterDelegate : public DlxExporterDelegate {
public:
    void recoveryStart() override { note("start"); }
    void recoveryProcess(double process) override {
        {
            const std::lock_guard lock(mutex_);
            progress_.push_back(process);
        }
        if (onProgress) onProgress(process);
    }
    void recoveryComplete(bool complete) override { note(complete ? "complete true" : "complete false"); }

    /// Starts and completions in order.
    std::vector<std::string> events() const {
        const std::lock_guard lock(mutex_);
        return events_;
    }
    std::vector<double> progress() const {
        const std::lock_guard lock(mutex_);
        return progress_;
    }

    std::function<void(double)> onProgress;

private:
    void note(const std::string& event) {
        const std::lock_guard lock(mutex_);
        events_.push_back(event);
    }

    mutable std::mutex mutex_;
    std::vector<std::string> events_;
    std::vector<double> progress_;
};

}  // namespace ZkMobileBackup
