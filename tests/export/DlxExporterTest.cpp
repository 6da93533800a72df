#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "base/MainQueue.h"
#include "export/DlxExporter.h"
#include "tests/export/ExportTesting.h"

namespace ZkMobileBackup {
namespace {

using Texts = std::vector<std::string>;

constexpr auto kUnknownType = static_cast<DlxExportType>(7);

Rows someRows() {
    return Rows({Dictionary{{"A", "a1"}, {"B", "b1"}}, Dictionary{{"A", "a2"}, {"B", "b2"}}});
}

Tables threeTables() {
    return Tables({{"One", someRows()}, {"Two", someRows()}, {"Three", someRows()}});
}

/// Runs the main queue until nobody but the test holds the object any more: its jobs are over then.
template <typename Object>
void runUntilReleased(const std::weak_ptr<Object>& object, long holders) {
    do {
        MainQueue::runUntilIdle();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    } while (object.use_count() > holders);
    MainQueue::runUntilIdle();
}

class DlxExporterTest : public testing::Test {
protected:
    DlxExporterTest() { exporter->setExporterDelegate(&delegate); }
    ~DlxExporterTest() override { MainQueue::setExecutor({}); }

    void finishJobs() { runUntilReleased(std::weak_ptr<DlxExporter>(exporter), 1); }

    void exportRows(Rows rows, DlxExportType type, const std::string& path) {
        exporter->recoveryBackupData(std::move(rows), type, path);
        finishJobs();
    }
    void exportTables(Tables tables, DlxExportType type, const std::string& path) {
        exporter->recoveryBackupData(std::move(tables), type, path);
        finishJobs();
    }

    ExportFolder folder;
    RecordingExporterDelegate delegate;
    std::shared_ptr<DlxExporter> exporter = DlxExporter::init();
};

TEST_F(DlxExporterTest, StartsWithoutDelegateAndUnstopped) {
    const auto fresh = DlxExporter::init();
    EXPECT_EQ(fresh->exporterDelegate(), nullptr);
    EXPECT_FALSE(fresh->isStop());
    EXPECT_TRUE(fresh->writtenPaths().empty());
    EXPECT_EQ(fresh->firstFailure(), "");
}

TEST_F(DlxExporterTest, SingleFileIsWrittenAndReported) {
    exportRows(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    EXPECT_EQ(folder.names(), Texts{"Notes.html"});
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete true"}));
    EXPECT_EQ(delegate.progress().size(), 5U);
    EXPECT_DOUBLE_EQ(delegate.progress().back(), 1.0);
    EXPECT_EQ(exporter->writtenPaths(), Texts{folder.path("Notes.html")});
    EXPECT_EQ(exporter->firstFailure(), "");
}

TEST_F(DlxExporterTest, CallsOnlyOnTheMainQueueAndNeverAtOnce) {
    exporter->extportStart();
    exporter->extportProcess(0.5);
    exporter->extportComplete(false);
    EXPECT_TRUE(delegate.events().empty());
    EXPECT_TRUE(delegate.progress().empty());
    MainQueue::runUntilIdle();
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete false"}));
    EXPECT_EQ(delegate.progress(), std::vector<double>{0.5});
}

TEST_F(DlxExporterTest, WorksWithoutADelegate) {
    exporter->setExporterDelegate(nullptr);
    exportRows(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    EXPECT_EQ(folder.names(), Texts{"Notes.html"});
}

TEST_F(DlxExporterTest, MissingFoldersAreMade) {
    exportRows(someRows(), DlxExportType::kHtml, folder.path("x/y/Notes"));
    EXPECT_EQ(exporter->writtenPaths(), Texts{folder.path("x/y/Notes.html")});
}

TEST_F(DlxExporterTest, NoRowsCompleteWithoutFileOrFolder) {
    exportRows(Rows(nullptr), DlxExportType::kHtml, folder.path("x/Notes"));
    exportRows(Rows(), kUnknownType, folder.path("x/Notes"));
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete true", "start", "complete true"}));
    EXPECT_TRUE(delegate.progress().empty());
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(DlxExporterTest, SingleFileOfUnknownTypeEndsInSilence) {
    exportRows(someRows(), kUnknownType, folder.path("x/Notes"));
    EXPECT_EQ(delegate.events(), Texts{"start"});
    EXPECT_TRUE(delegate.progress().empty());
    EXPECT_EQ(folder.names(), Texts{"x"});  // the folder is made before the type is looked at
    EXPECT_TRUE(exporter->writtenPaths().empty());
    EXPECT_NE(exporter->firstFailure(), "");
}

TEST_F(DlxExporterTest, BatchOfUnknownTypeCompletesWithoutFiles) {
    exportTables(threeTables(), kUnknownType, folder.path("x"));
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete true"}));
    EXPECT_EQ(folder.names(), Texts{"x"});
    EXPECT_TRUE(exporter->writtenPaths().empty());
}

TEST_F(DlxExporterTest, KnowsWhichTypesItCanWrite) {
    EXPECT_TRUE(DlxExporter::canWrite(DlxExportType::kHtml));
    EXPECT_FALSE(DlxExporter::canWrite(kUnknownType));
    EXPECT_FALSE(DlxExporter::canWrite(static_cast<DlxExportType>(-1)));
}

TEST_F(DlxExporterTest, BatchWritesOneFileATable) {
    exportTables(threeTables(), DlxExportType::kHtml, folder.path("out"));
    EXPECT_EQ(exporter->writtenPaths(),
              (Texts{folder.path("out/One_ExportFile.html"), folder.path("out/Two_ExportFile.html"),
                     folder.path("out/Three_ExportFile.html")}));
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete true"}));
}

TEST_F(DlxExporterTest, BatchProgressRisesThroughOneSliceATable) {
    exportTables(threeTables(), DlxExportType::kHtml, folder.path());
    const std::vector<double> progress = delegate.progress();
    ASSERT_EQ(progress.size(), 15U);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    for (std::size_t table = 0; table < 3; ++table) {
        EXPECT_DOUBLE_EQ(progress[5 * table], (0.2 + static_cast<double>(table)) / 3);
        EXPECT_DOUBLE_EQ(progress[5 * table + 4], (1.0 + static_cast<double>(table)) / 3);
    }
}

TEST_F(DlxExporterTest, EmptyBatchCompletesWithoutFolder) {
    exportTables(Tables(nullptr), DlxExportType::kHtml, folder.path("x"));
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete true"}));
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(DlxExporterTest, EmptyTableOfABatchMakesAPage) {
    exportTables(Tables({{"None", Rows()}}), DlxExportType::kHtml, folder.path());
    EXPECT_EQ(folder.names(), Texts{"None_ExportFile.html"});
    EXPECT_DOUBLE_EQ(delegate.progress().back(), 1.0);
}

TEST_F(DlxExporterTest, StopFlagReachesOnlyTheFileInWork) {
    exporter->setIsStop(true);
    EXPECT_TRUE(exporter->isStop());
    exportRows(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    EXPECT_EQ(folder.names(), Texts{"Notes.html"});
    EXPECT_TRUE(exporter->isStop());
}

/// Runs what is posted at once on the posting thread, so that a delegate can act while a row is being written.
void deliverAtOnce() {
    MainQueue::setExecutor([](const MainQueue::Job& job) { job(); });
}

TEST_F(DlxExporterTest, StoppedFileIsReportedFalseThenTrue) {
    deliverAtOnce();
    delegate.onProgress = [this](double process) {
        if (process > 0.4) exporter->stopRecoveryBackupData();
    };
    exportRows(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete false", "complete true"}));
    EXPECT_TRUE(folder.names().empty());
    EXPECT_TRUE(exporter->writtenPaths().empty());
    EXPECT_EQ(exporter->firstFailure(), "");
}

TEST_F(DlxExporterTest, StopEndsOneFileOfABatch) {
    deliverAtOnce();
    delegate.onProgress = [this](double process) {
        if (process > 0.4 && process < 0.6) exporter->stopRecoveryBackupData();
    };
    exportTables(threeTables(), DlxExportType::kHtml, folder.path());
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete false", "complete true"}));
    EXPECT_EQ(folder.names(), (Texts{"One_ExportFile.html", "Three_ExportFile.html"}));
}

TEST_F(DlxExporterTest, StopCanBeTakenBack) {
    deliverAtOnce();
    delegate.onProgress = [this](double) {
        exporter->stopRecoveryBackupData();
        exporter->setIsStop(false);
    };
    exportRows(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    EXPECT_EQ(folder.names(), Texts{"Notes.html"});
    EXPECT_FALSE(exporter->isStop());
}

TEST_F(DlxExporterTest, StopFromAnyThreadIsSafe) {
    exporter->recoveryBackupData(threeTables(), DlxExportType::kHtml, folder.path());
    std::thread stopper([this] {
        for (int i = 0; i < 100; ++i) exporter->setIsStop(i % 2 == 0);
    });
    stopper.join();
    finishJobs();
    EXPECT_EQ(delegate.events().back(), "complete true");
}

TEST_F(DlxExporterTest, SecondJobNeverReplacesAFile) {
    exportRows(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    exportRows(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    EXPECT_EQ(folder.names(), (Texts{"Notes(0).html", "Notes.html"}));
    EXPECT_EQ(exporter->writtenPaths(), Texts{folder.path("Notes(0).html")});
}

TEST_F(DlxExporterTest, JobsOfOneNameAtTheSameTimeLoseNoFile) {
    const auto other = DlxExporter::init();
    for (int i = 0; i < 4; ++i) {
        exporter->recoveryBackupData(someRows(), DlxExportType::kHtml, folder.path("Notes"));
        other->recoveryBackupData(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    }
    finishJobs();
    runUntilReleased(std::weak_ptr<DlxExporter>(other), 1);
    EXPECT_EQ(folder.names().size(), 8U);
}

TEST_F(DlxExporterTest, FolderThatCannotBeMadeIsAFailureAndTheJobCompletes) {
    folder.addFile("blocked");
    exportRows(someRows(), DlxExportType::kHtml, folder.path("blocked/Notes"));
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete true"}));
    EXPECT_DOUBLE_EQ(delegate.progress().back(), 1.0);
    EXPECT_NE(exporter->firstFailure().find(folder.path("blocked")), std::string::npos) << exporter->firstFailure();
    EXPECT_TRUE(exporter->writtenPaths().empty());
    EXPECT_EQ(fileText(folder.path("blocked")), "there before");
}

TEST_F(DlxExporterTest, FailureOfOneTableLeavesTheOthers) {
    exportTables(Tables({{"no/such/folder", someRows()}, {"Two", someRows()}}), DlxExportType::kHtml, folder.path());
    EXPECT_EQ(folder.names(), Texts{"Two_ExportFile.html"});
    EXPECT_NE(exporter->firstFailure().find("no/such/folder_ExportFile"), std::string::npos)
        << exporter->firstFailure();
    EXPECT_EQ(exporter->writtenPaths(), Texts{folder.path("Two_ExportFile.html")});
}

TEST_F(DlxExporterTest, OutcomeIsThatOfTheLastJob) {
    exportRows(someRows(), kUnknownType, folder.path("Notes"));
    exportRows(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    EXPECT_EQ(exporter->firstFailure(), "");
    exportRows(Rows(), DlxExportType::kHtml, folder.path("Notes"));
    EXPECT_TRUE(exporter->writtenPaths().empty());
}

TEST_F(DlxExporterTest, RelativePathIsTakenWhenTheJobIsAccepted) {
    const std::string before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    exporter->recoveryBackupData(someRows(), DlxExportType::kHtml, "Notes");
    std::filesystem::current_path(before);
    finishJobs();
    EXPECT_EQ(folder.names(), Texts{"Notes.html"});
    EXPECT_EQ(exporter->writtenPaths().at(0).front(), '/');
}

TEST_F(DlxExporterTest, JobKeepsItsExporterUntilTheLastCallback) {
    const std::weak_ptr<DlxExporter> watched = exporter;
    exporter->recoveryBackupData(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    exporter.reset();
    runUntilReleased(watched, 0);
    EXPECT_EQ(delegate.events(), (Texts{"start", "complete true"}));
}

TEST_F(DlxExporterTest, JobKeepsTheOwnerUntilTheLastCallback) {
    struct Owner {
        RecordingExporterDelegate& delegate;
        Texts& eventsAtTheEnd;
        ~Owner() { eventsAtTheEnd = delegate.events(); }
    };
    Texts eventsAtTheEnd;
    std::shared_ptr<Owner> owner(new Owner{delegate, eventsAtTheEnd});
    const std::weak_ptr<Owner> watched = owner;
    exporter->setOwner(owner);
    exporter->recoveryBackupData(someRows(), DlxExportType::kHtml, folder.path("Notes"));
    owner.reset();
    runUntilReleased(watched, 0);
    EXPECT_EQ(eventsAtTheEnd, (Texts{"start", "complete true"}));
}

TEST_F(DlxExporterTest, MakesAnHtmlWriter) {
    const auto writer = exporter->htmlExporterWithData(someRows(), folder.path("Notes"));
    writer->startConvert();
    EXPECT_EQ(writer->writtenPath(), folder.path("Notes.html"));
}

TEST_F(DlxExporterTest, FreeNameIsThatOfTheWriters) {
    folder.addFile("Notes.html");
    EXPECT_EQ(exporter->GetOutPutFile(folder.path("Notes.html")), folder.path("Notes(0).html"));
    EXPECT_EQ(exporter->GetOutPutFile(folder.path("Other.html")), folder.path("Other.html"));
}

}  // namespace
}  // namespace ZkMobileBackup
