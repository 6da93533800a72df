#include <gtest/gtest.h>
#include <memory>

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"
#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "base/MainQueue.h"
#include "tests/support/TemporaryFolder.h"
#include "tool/backup.h"
#include "tool/command.h"
#include "tool/extraction.h"

namespace zkmb {
namespace {

using ZkMobileBackup::DlxExportType;
using ZkMobileBackup::MainQueue;
using ZkMobileBackup::ZkMobileBackupAppDomain;
using ZkMobileBackup::ZkMobileBackupAppDomainRecord;

/// A domain with one record, which has no export value.
class Domain : public ZkMobileBackupAppDomain {
public:
    static std::shared_ptr<Domain> init() { return connected(std::make_shared<Domain>()); }

    Domain() {
        records_.push_back(ZkMobileBackupAppDomainRecord::initWithDictionary({}, false));
        records_.back()->setShouldRecovery(true);
    }

    void recoveryComplete(bool complete) override {
        if (!complete) return ZkMobileBackupAppDomain::recoveryComplete(false);
        // The end of a job may be some time in coming.
        MainQueue::post([this] {
            jobEnded = true;
            ZkMobileBackupAppDomain::recoveryComplete(true);
        });
    }

    bool jobEnded = false;
};

/// One whose file is stopped.
class StoppedDomain : public Domain {
public:
    static std::shared_ptr<StoppedDomain> init() { return connected(std::make_shared<StoppedDomain>()); }

    void extractWithOutputPath(const std::string& path, DlxExportType type, ExportCallback callback) override {
        exporter()->extportComplete(false);
        ZkMobileBackupAppDomain::extractWithOutputPath(path, type, std::move(callback));
    }
};

/// One whose jobs are stopped and end without a last call.
class StoppedJobs : public Domain {
public:
    static std::shared_ptr<StoppedJobs> init() { return connected(std::make_shared<StoppedJobs>()); }

    void parserWithCallbackBlock(ParserCallback) override { stopLater(); }
    void extractWithOutputPath(const std::string&, DlxExportType, ExportCallback) override { stopLater(); }

private:
    void stopLater() {
        MainQueue::post([this] {
            jobEnded = true;
            postStopped();
        });
    }
};

/// One whose parse reports its end past the main queue, where a report still waits.
class HastyDomain : public Domain {
public:
    static std::shared_ptr<HastyDomain> init() { return connected(std::make_shared<HastyDomain>()); }

    void parserWithCallbackBlock(ParserCallback callback) override {
        setParserCallback(std::move(callback));
        postParserCallback(kParserGoingOn, 0.5);
        MainQueue::post([this] { reportWasHeard = true; });
        callParserCallback(kParserFinished, 1.0);
    }

    bool reportWasHeard = false;
};

class ExtractionOf : public testing::Test {
protected:
    void run(ZkMobileBackupAppDomain& domain) {
        Extraction(domain, context_).run(folder_.path(), DlxExportType::kHtml);
    }

    ZkMobileBackup::TemporaryFolder folder_;
    Context context_;
};

TEST_F(ExtractionOf, RecordsWithoutExportValuesEndsAlsoWhenStopped) {
    const auto domain = Domain::init();
    domain->exporter()->stopRecoveryBackupData();
    run(*domain);
    EXPECT_TRUE(domain->jobEnded);
}

TEST_F(ExtractionOf, AStoppedFileEndsWithItsJob) {
    const auto domain = StoppedDomain::init();
    run(*domain);
    EXPECT_TRUE(domain->jobEnded);
}

TEST_F(ExtractionOf, AJobThatEndsWithoutALastCallEnds) {
    const auto domain = StoppedJobs::init();
    run(*domain);
    EXPECT_TRUE(domain->jobEnded);
}

TEST_F(ExtractionOf, ADomainLeavesItToHearOfTheNextOneItself) {
    const auto domain = Domain::init();
    run(*domain);
    EXPECT_EQ(domain->exporter()->exporterDelegate(), domain.get());
}

TEST(ParseOf, AJobThatEndsWithoutALastCallEnds) {
    Context context;
    const auto domain = StoppedJobs::init();
    parseDomain(*domain, context);
    EXPECT_TRUE(domain->jobEnded);
}

TEST(ParseOf, AHastyDomainLeavesNoReportBehind) {
    Context context;
    const auto domain = HastyDomain::init();
    parseDomain(*domain, context);
    EXPECT_TRUE(domain->reportWasHeard);
}

}  // namespace
}  // namespace zkmb
