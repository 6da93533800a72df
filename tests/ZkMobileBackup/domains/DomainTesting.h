#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"
#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "base/MainQueue.h"

namespace ZkMobileBackup {

struct ParseEvent {
    std::int64_t state;
    double progress;
    bool operator==(const ParseEvent&) const = default;
};
using ParseEvents = std::vector<ParseEvent>;

struct ExportEvent {
    std::int64_t first;
    std::int64_t second;
    double progress;
    bool operator==(const ExportEvent&) const = default;
};
using ExportEvents = std::vector<ExportEvent>;

inline constexpr std::int64_t kFinishedState = 3;

inline SharedBytes shared(std::vector<std::uint8_t> bytes) {
    return std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
}

inline Dictionary databaseInfo(const std::string& name, std::vector<std::uint8_t> bytes = {}) {
    return {{kRawDBNameKey, name}, {kRawDBdataKey, shared(std::move(bytes))}};
}

/// The domains of a database, without a backup parser.
inline std::vector<std::shared_ptr<ZkMobileBackupAppDomain>> domainsOf(const Dictionary& info) {
    return ZkMobileBackupAppDomain::appDomainWithBackupParser(nullptr, info);
}

/// Parses a domain to its end while the calling thread runs the main queue.
inline ParseEvents parse(ZkMobileBackupAppDomain& domain) {
    ParseEvents events;
    domain.parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>*, double progress) {
        events.push_back({state, progress});
        if (state == kFinishedState) MainQueue::stop();
    });
    MainQueue::run();
    return events;
}

/// Extracts a domain to its end while the calling thread runs the main queue.
inline ExportEvents extract(ZkMobileBackupAppDomain& domain, const std::string& outputPath) {
    ExportEvents events;
    const auto note = [&](std::int64_t first, std::int64_t second, std::atomic<bool>*, double progress) {
        events.push_back({first, second, progress});
        if (second == 1) MainQueue::stop();
    };
    domain.extractWithOutputPath(outputPath, DlxExportType::kHtml, note);
    MainQueue::run();
    return events;
}

/// Runs the main queue until every owner has let go of the object.
template <typename Object>
void runUntilGone(const std::weak_ptr<Object>& object) {
    while (!object.expired()) {
        MainQueue::runUntilIdle();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

/// Runs main queue jobs at once, on whatever thread posts them, as long as it lives.
class ImmediateMainQueue {
public:
    ImmediateMainQueue() {
        MainQueue::setExecutor([](const MainQueue::Job& job) { job(); });
    }
    ~ImmediateMainQueue() { MainQueue::setExecutor({}); }
};

/// Keeps main queue jobs until they are asked for one by one, as long as it lives.
class SteppedMainQueue {
public:
    SteppedMainQueue() {
        MainQueue::setExecutor([this](MainQueue::Job job) {
            const std::lock_guard lock(mutex_);
            jobs_.push_back(std::move(job));
        });
    }
    ~SteppedMainQueue() { MainQueue::setExecutor({}); }

    /// Runs the jobs that are waiting now, none that they post.
    void runOneTurn() {
        std::deque<MainQueue::Job> turn;
        {
            const std::lock_guard lock(mutex_);
            turn.swap(jobs_);
        }
        for (const MainQueue::Job& job : turn) job();
    }

private:
    std::mutex mutex_;
    std::deque<MainQueue::Job> jobs_;
};

/// A domain whose own step the test supplies.
class ScriptedDomain : public ZkMobileBackupAppDomain {
public:
    using Step = std::function<void(ScriptedDomain& domain)>;

    static std::shared_ptr<ScriptedDomain> init(Step details = {}) {
        return connected(std::shared_ptr<ScriptedDomain>(new ScriptedDomain(std::move(details))));
    }
    std::optional<std::string> exportName() const override { return name; }

    void addRecord(Dictionary value, bool marked) {
        records_.push_back(ZkMobileBackupAppDomainRecord::initWithDictionary(std::move(value), false));
        records_.back()->setShouldRecovery(marked);
    }
    void addRecord(std::shared_ptr<ZkMobileBackupAppDomainRecord> record) { records_.push_back(std::move(record)); }
    void reportProgress(double progress) { parserProcess({{kBackupProcessKey, progress}}); }

    std::optional<std::string> name = "Scripted";

protected:
    void _parserDetails() override {
        if (details_) details_(*this);
    }

private:
    explicit ScriptedDomain(Step details) : details_(std::move(details)) {}
    const Step details_;
};

}  // namespace ZkMobileBackup
