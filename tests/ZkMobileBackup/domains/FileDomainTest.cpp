#include <filesystem>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "ZkMobileBackup/domains/ZkMobileBackupFileDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupMovieDomain.h"
#include "platform/Files.h"
#include "tests/ZkMobileBackup/domains/DomainTesting.h"
#include "tests/ZkMobileBackup/domains/PhotoTesting.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A domain whose export the test supplies.
class ScriptedFileDomain : public ZkMobileBackupFileDomain {
public:
    using Export = std::function<bool(ScriptedFileDomain& domain, const std::string& outputPath)>;

    static std::shared_ptr<ScriptedFileDomain> init(Export exportFiles) {
        return connected(std::shared_ptr<ScriptedFileDomain>(new ScriptedFileDomain(std::move(exportFiles))));
    }
    using ZkMobileBackupFileDomain::noteFailure;
    using ZkMobileBackupFileDomain::noteWritten;
    using ZkMobileBackupFileDomain::targetOf;

protected:
    bool exportRecords(const Records&, const std::string& outputPath) override { return export_(*this, outputPath); }

private:
    explicit ScriptedFileDomain(Export exportFiles) : export_(std::move(exportFiles)) {}
    const Export export_;
};

std::shared_ptr<ZkMobileBackupAppDomainRecord> titled(const Value& title) {
    return ZkMobileBackupAppDomainRecord::initWithDictionary(Dictionary{{"title", title}}, false);
}

int nicenessOfThisThread() {
    return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
}

/// The niceness of the thread on which a domain with one record reports its parse.
int nicenessOfParse(ZkMobileBackupAppDomain& domain) {
    const ImmediateMainQueue immediate;
    const auto niceness = std::make_shared<std::promise<int>>();
    domain.parserWithCallbackBlock([niceness](std::int64_t state, std::atomic<bool>*, double) {
        if (state == kFinishedState) niceness->set_value(nicenessOfThisThread());
    });
    return niceness->get_future().get();
}

TEST(FileDomain, MoviesAreParsedAtDefaultPriority) {
    EXPECT_EQ(nicenessOfParse(*ZkMobileBackupMovieDomain::initWithMovoes({})), nicenessOfThisThread());
}

TEST(FileDomain, PhotosAreParsedInTheBackground) {
    EXPECT_GT(nicenessOfParse(*ZkMobileBackupPhotoDomain::init()), nicenessOfThisThread());
}

TEST(FileDomain, FilesAreExportedAtDefaultPriority) {
    int niceness = -1;
    const auto domain = ScriptedFileDomain::init([&](ScriptedFileDomain&, const std::string&) {
        niceness = nicenessOfThisThread();
        return true;
    });
    extract(*domain, "/");
    EXPECT_EQ(niceness, nicenessOfThisThread());
}

TEST(FileDomain, RelativeOutputFolderIsTheOneOfTheMomentOfTheCall) {
    const TemporaryFolder folder;
    const fs::path before = fs::current_path();
    for (int round = 0; round < 20; ++round) {
        std::promise<std::string> heard;
        const auto domain = ScriptedFileDomain::init([&](ScriptedFileDomain&, const std::string& path) {
            heard.set_value(path);
            return true;
        });
        domain->extractWithOutputPath("out", DlxExportType::kHtml, {});
        fs::current_path(folder.path());
        EXPECT_EQ(heard.get_future().get(), before / "out");
        fs::current_path(before);
        MainQueue::runUntilIdle();
    }
}

TEST(FileDomain, ExportKeepsItsDomainUntilTheLastCallHasCome) {
    auto domain = ScriptedFileDomain::init([](ScriptedFileDomain&, const std::string&) { return true; });
    const std::weak_ptr<ScriptedFileDomain> observer = domain;
    bool ended = false;
    domain->extractWithOutputPath("/", DlxExportType::kHtml, [&](auto, auto, auto*, auto) {
        ended = true;
        EXPECT_FALSE(observer.expired());
    });
    domain.reset();
    runUntilGone(observer);
    EXPECT_TRUE(ended);
}

TEST(FileDomain, OutcomeIsForgottenOnceTheNextExportIsAccepted) {
    std::promise<void> goOn;
    bool first = true;
    const auto domain = ScriptedFileDomain::init([&](ScriptedFileDomain& self, const std::string&) {
        if (!std::exchange(first, false)) goOn.get_future().wait();
        self.noteWritten({"/file", ""});
        self.noteFailure("failure");
        return true;
    });
    extract(*domain, "/");
    EXPECT_THAT(domain->writtenPaths(), ElementsAre("/file"));
    domain->extractWithOutputPath("/", DlxExportType::kHtml, [](auto, auto, auto*, auto) { MainQueue::stop(); });
    EXPECT_THAT(domain->writtenPaths(), IsEmpty());
    EXPECT_EQ(domain->firstFailure(), "");
    goOn.set_value();
    MainQueue::run();
}

TEST(FileDomain, MemoryThatRunsOutIsAFailureAndEndsTheExport) {
    const auto domain = ScriptedFileDomain::init([](ScriptedFileDomain& self, const std::string&) -> bool {
        self.noteWritten({"/file", ""});
        throw std::bad_alloc();
    });
    EXPECT_THAT(extract(*domain, "/folder"), ElementsAre(ExportEvent{1, 1, 1.0}));
    EXPECT_THAT(domain->writtenPaths(), ElementsAre("/file"));
    EXPECT_THAT(domain->firstFailure(), HasSubstr("'/folder'"));
}

TEST(FileDomain, FirstFailureIsTheOneThatIsTold) {
    const auto domain = ScriptedFileDomain::init([](ScriptedFileDomain& self, const std::string&) {
        self.noteFailure("");
        self.noteWritten({"", "first"});
        self.noteFailure("second");
        return true;
    });
    extract(*domain, "/");
    EXPECT_EQ(domain->firstFailure(), "first");
    EXPECT_THAT(domain->writtenPaths(), IsEmpty());
}

TEST(FileDomain, RecordsAskForFilesByTheirTitles) {
    const auto domain = ScriptedFileDomain::init({});
    for (const std::string title : {"IMG_0001", "a.b", "..", "", "a\nb"}) {
        EXPECT_EQ(domain->targetOf(*titled(title), "title", "/out", ".MOV"), "/out/" + title + ".MOV");
    }
    EXPECT_EQ(domain->firstFailure(), "");
}

TEST(FileDomain, TitleThatNoFileCanHaveIsAFailureThatNamesTheFolder) {
    for (const Value& title :
         {Value("/"), Value("../a"), Value("a/b"), Value("/etc/passwd"), Value(std::string("a\0b", 3)), Value(5)}) {
        const auto domain = ScriptedFileDomain::init({});
        EXPECT_EQ(domain->targetOf(*titled(title), "title", "/out", ".MOV"), std::nullopt);
        EXPECT_THAT(domain->firstFailure(), HasSubstr("'/out'"));
    }
    const auto domain = ScriptedFileDomain::init({});
    EXPECT_EQ(domain->targetOf(*titled("a"), "name", "/out", ".MOV"), std::nullopt);
    EXPECT_THAT(domain->firstFailure(), HasSubstr("'/out'"));
}

}  // namespace
}  // namespace ZkMobileBackup
