#include <algorithm>
#include <atomic>
#include <filesystem>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <thread>

#include "ZkMobileBackup/backup/ZkDeviceBackupSnapshot.h"
#include "ZkMobileBackup/domains/TzProductName.h"
#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupMovieDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"
#include "ZkMobileBackup/records/ZkMobileBackupMessageRecord.h"
#include "tests/ZkMobileBackup/domains/DomainTesting.h"
#include "tests/support/DatabaseBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

std::vector<std::uint8_t> bookmarkDatabase() {
    DatabaseBuilder database;
    database.exec("CREATE TABLE bookmarks (id INTEGER PRIMARY KEY, title TEXT, url TEXT)");
    for (int i = 0; i < 20; ++i) database.insert("bookmarks", {nullptr, "title " + std::to_string(i), "http://x.test"});
    return database.bytes();
}

std::ptrdiff_t liveRecordsOf(const ZkMobileBackupAppDomain& domain) {
    return std::ranges::count_if(domain.records(), [](const auto& record) { return !record->isDeleted(); });
}

std::string textOf(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
}

// --- Parse ---------------------------------------------------------------------------------------------------------

TEST(DomainParse, ReportsStartProgressAndEndInOrder) {
    const auto domain = domainsOf(databaseInfo("Bookmarks", bookmarkDatabase())).front();
    const ParseEvents events = parse(*domain);
    ASSERT_GE(events.size(), 3u);
    EXPECT_EQ(events.front(), (ParseEvent{0, 0.0}));
    EXPECT_EQ(events.back(), (ParseEvent{3, 1.0}));
    for (std::size_t i = 1; i + 1 < events.size(); ++i) {
        EXPECT_EQ(events[i].state, 1);
        EXPECT_GT(events[i].progress, events[i - 1].progress);
    }
}

TEST(DomainParse, EveryCallbackComesFromTheMainQueue) {
    const auto domain = domainsOf(databaseInfo("Bookmarks", bookmarkDatabase())).front();
    std::vector<std::thread::id> threads;
    domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>*, double) {
        threads.push_back(std::this_thread::get_id());
        if (state == kFinishedState) MainQueue::stop();
    });
    MainQueue::run();
    EXPECT_THAT(threads, testing::Each(std::this_thread::get_id()));
}

TEST(DomainParse, SecondParseOnlyReportsTheEndAtOnce) {
    const auto domain = domainsOf(databaseInfo("Bookmarks", bookmarkDatabase())).front();
    parse(*domain);
    const auto engine = domain->parser();
    ParseEvents events;
    domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>* stop, double progress) {
        EXPECT_NE(stop, nullptr);
        events.push_back({state, progress});
    });
    EXPECT_THAT(events, ElementsAre(ParseEvent{3, 1.0}));
    MainQueue::runUntilIdle();
    EXPECT_EQ(events.size(), 1u);
    EXPECT_EQ(liveRecordsOf(*domain), 20);
    EXPECT_EQ(domain->parser(), engine);
}

TEST(DomainParse, SecondCallBeforeTheEndOnlyReportsAndAppendsNothing) {
    const auto domain = domainsOf(databaseInfo("Bookmarks", bookmarkDatabase())).front();
    ParseEvents second;
    domain->parserWithCallbackBlock([](std::int64_t state, std::atomic<bool>*, double) {
        if (state == kFinishedState) MainQueue::stop();
    });
    domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>*, double progress) {
        second.push_back({state, progress});
    });
    EXPECT_THAT(second, ElementsAre(ParseEvent{3, 1.0}));
    MainQueue::run();
    EXPECT_EQ(second.size(), 1u);
    EXPECT_EQ(liveRecordsOf(*domain), 20);
}

TEST(DomainParse, SecondCallWithoutCallbackIsHarmless) {
    const auto domain = ZkMobileBackupAppDomain::init();
    parse(*domain);
    domain->parserWithCallbackBlock(nullptr);
    EXPECT_TRUE(domain->records().empty());
}

TEST(DomainParse, OnlyRisingProgressReachesTheCaller) {
    const auto domain = ScriptedDomain::init([](ScriptedDomain& self) {
        for (const double progress : {0.2, 0.1, 0.2, 0.5}) self.reportProgress(progress);
    });
    EXPECT_THAT(parse(*domain),
                ElementsAre(ParseEvent{0, 0.0}, ParseEvent{1, 0.2}, ParseEvent{1, 0.5}, ParseEvent{3, 1.0}));
}

TEST(DomainParse, ProgressBeyondOneIsReportedAsItCame) {
    const auto domain = ScriptedDomain::init([](ScriptedDomain& self) { self.reportProgress(1.25); });
    EXPECT_THAT(parse(*domain), testing::Contains(ParseEvent{1, 1.25}));
}

TEST(DomainParse, ProgressThatIsNoNumberIsDropped) {
    const auto domain = ScriptedDomain::init([](ScriptedDomain& self) {
        self.parserProcess({});
        self.parserProcess({{kBackupProcessKey, "0.7"}});
        self.parserProcess({{kBackupProcessKey, std::numeric_limits<double>::quiet_NaN()}});
    });
    EXPECT_THAT(parse(*domain), ElementsAre(ParseEvent{0, 0.0}, ParseEvent{3, 1.0}));
}

TEST(DomainParse, EngineCompletionIsNotReported) {
    const auto domain = ScriptedDomain::init([](ScriptedDomain& self) { self.parser()->parserComplete(true); });
    EXPECT_THAT(parse(*domain), ElementsAre(ParseEvent{0, 0.0}, ParseEvent{3, 1.0}));
}

TEST(DomainParse, WorksWithoutCallback) {
    const auto domain = domainsOf(databaseInfo("Bookmarks", bookmarkDatabase())).front();
    const std::weak_ptr<ZkMobileBackupAppDomain> weak = domain;
    domain->parserWithCallbackBlock(nullptr);
    while (weak.use_count() > 1) MainQueue::runUntilIdle();
    EXPECT_EQ(liveRecordsOf(*domain), 20);
}

TEST(DomainParse, StopFlagReachesTheEngineAndTheEndIsReported) {
    const auto domain = domainsOf(databaseInfo("Bookmarks", bookmarkDatabase())).front();
    const ImmediateMainQueue immediate;
    const auto finished = std::make_shared<std::promise<void>>();
    domain->parserWithCallbackBlock([finished](std::int64_t state, std::atomic<bool>* stop, double) {
        *stop = true;
        if (state == kFinishedState) finished->set_value();
    });
    finished->get_future().wait();
    EXPECT_TRUE(domain->parser()->bStop());
    EXPECT_TRUE(domain->records().empty());
}

TEST(DomainParse, UnreadableDataGivesNoRecordsAndTheEnd) {
    const std::vector<Dictionary> infos{
        {{kRawDBNameKey, "Bookmarks"}},
        {{kRawDBNameKey, "Bookmarks"}, {kRawDBdataKey, "/no/bytes"}},
        {{kRawDBNameKey, "Bookmarks"}, {kRawDBdataKey, SharedBytes()}},
        databaseInfo("Bookmarks"),
        databaseInfo("Bookmarks", {'n', 'o', ' ', 'd', 'a', 't', 'a', 'b', 'a', 's', 'e'}),
    };
    for (const Dictionary& info : infos) {
        const auto domain = domainsOf(info).front();
        EXPECT_EQ(parse(*domain).back(), (ParseEvent{3, 1.0}));
        EXPECT_TRUE(domain->records().empty());
        EXPECT_EQ(domain->lastError(), std::nullopt);
    }
}

TEST(DomainParse, DatabaseCutAtAnyLengthEndsOrderly) {
    const auto whole = bookmarkDatabase();
    for (std::size_t length = 0; length < whole.size(); length += 97) {
        const std::vector<std::uint8_t> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const auto domain = domainsOf(databaseInfo("Bookmarks", cut)).front();
        EXPECT_EQ(parse(*domain).back(), (ParseEvent{3, 1.0}));
    }
}

TEST(DomainParse, TheDatabaseBytesStayAsTheyAre) {
    const auto bytes = bookmarkDatabase();
    const SharedBytes given = shared(bytes);
    const auto domain = domainsOf({{kRawDBNameKey, "Bookmarks"}, {kRawDBdataKey, given}}).front();
    parse(*domain);
    EXPECT_EQ(*given, bytes);
}

TEST(DomainParse, EngineIsKeptAndReadableAfterwards) {
    const auto domain = domainsOf(databaseInfo("Podcasts", bookmarkDatabase())).front();
    EXPECT_EQ(domain->parser(), nullptr);
    parse(*domain);
    ASSERT_NE(domain->parser(), nullptr);
    EXPECT_EQ(domain->parser()->tableList().size(), 2u);
    EXPECT_TRUE(domain->records().empty());
}

TEST(DomainParse, EngineOutlivesItsDomain) {
    auto domain = domainsOf(databaseInfo("Bookmarks", bookmarkDatabase())).front();
    parse(*domain);
    const auto engine = domain->parser();
    const std::weak_ptr<ZkMobileBackupAppDomain> weak = domain;
    domain.reset();
    runUntilGone(weak);
    EXPECT_EQ(engine->customTableForBookmarksDB()->rowList().size(), 20u);
}

TEST(DomainParse, HostMayLetGoOfTheDomainWhileItsJobRuns) {
    auto domain = domainsOf(databaseInfo("Bookmarks", bookmarkDatabase())).front();
    const std::weak_ptr<ZkMobileBackupAppDomain> weak = domain;
    ParseEvents events;
    domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>* stop, double progress) {
        *stop = stop->load();  // the flag must still be there
        events.push_back({state, progress});
    });
    domain.reset();
    runUntilGone(weak);
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events.back(), (ParseEvent{3, 1.0}));
}

TEST(DomainParse, HostMayLetGoOfTheDomainInItsLastCallback) {
    auto domain = domainsOf(databaseInfo("Bookmarks", bookmarkDatabase())).front();
    const std::weak_ptr<ZkMobileBackupAppDomain> weak = domain;
    bool stopFlagStillThere = false;
    domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>* stop, double) {
        if (state != kFinishedState) return;
        domain.reset();
        stopFlagStillThere = !stop->load();
    });
    runUntilGone(weak);
    EXPECT_TRUE(stopFlagStillThere);
}

TEST(DomainParse, SeveralDomainsParseAtOnce) {
    std::vector<std::shared_ptr<ZkMobileBackupAppDomain>> domains;
    for (const char* name : {"Bookmarks", "Calendar", "notes", "sms", "Podcasts", "Bookmarks"}) {
        for (auto& domain : domainsOf(databaseInfo(name, bookmarkDatabase()))) domains.push_back(std::move(domain));
    }
    std::size_t running = domains.size();
    for (const auto& domain : domains) {
        domain->parserWithCallbackBlock([&running](std::int64_t state, std::atomic<bool>*, double) {
            if (state == kFinishedState && --running == 0) MainQueue::stop();
        });
    }
    MainQueue::run();
    EXPECT_EQ(liveRecordsOf(*domains.front()), 20);
    EXPECT_EQ(liveRecordsOf(*domains.back()), 20);
}

TEST(PhotoDomainParse, ReportsTheEndThroughTheMainQueueEachTime) {
    const auto domain = ZkMobileBackupPhotoDomain::initWithPhotos({}, {});
    EXPECT_THAT(parse(*domain), ElementsAre(ParseEvent{3, 1.0}));
    EXPECT_THAT(parse(*domain), ElementsAre(ParseEvent{3, 1.0}));
    EXPECT_TRUE(domain->records().empty());
}

// --- Export --------------------------------------------------------------------------------------------------------

TEST(DomainExport, ProductNameIsTheFixedText) {
    EXPECT_STREQ(TzProductName, "Velmora Retrievo");
}

TEST(DomainExport, WritesBelowProductNameAndExportName) {
    const TemporaryFolder folder;
    const auto domain = ScriptedDomain::init();
    domain->addRecord({{"title", "wanted text"}}, true);
    const ExportEvents events = extract(*domain, folder.path());
    EXPECT_EQ(events.front(), (ExportEvent{0, 0, 0.0}));
    EXPECT_EQ(events.back(), (ExportEvent{1, 1, 1.0}));
    std::vector<double> progress;
    for (const ExportEvent& event : events) progress.push_back(event.progress);
    // Skeleton, header row, the one row, the file, the end.
    EXPECT_THAT(progress, testing::ElementsAre(0, 0.2, 0.2, testing::DoubleEq(0.8), 1, 1));
    for (std::size_t i = 1; i + 1 < events.size(); ++i) EXPECT_EQ(events[i].first + events[i].second, 0);
    EXPECT_THAT(textOf(readBytes(folder.path("Velmora Retrievo/Scripted.html"))), HasSubstr("wanted text"));
}

TEST(DomainExport, WithoutExportNameTheFolderNameServes) {
    const TemporaryFolder folder;
    const auto domain = ScriptedDomain::init();
    domain->name = std::nullopt;
    domain->addRecord({{"title", "wanted text"}}, true);
    extract(*domain, folder.path());
    EXPECT_THAT(textOf(readBytes(folder.path("Velmora Retrievo.html"))), HasSubstr("wanted text"));
}

TEST(DomainExport, OnlyMarkedRecordsAreWrittenInRecordOrder) {
    const TemporaryFolder folder;
    const auto domain = ScriptedDomain::init();
    domain->addRecord({{"title", "first"}}, true);
    domain->addRecord({{"title", "unwanted"}}, false);
    domain->addRecord({{"title", "second"}}, true);
    extract(*domain, folder.path());
    const std::string document = textOf(readBytes(folder.path("Velmora Retrievo/Scripted.html")));
    EXPECT_LT(document.find("first"), document.find("second"));
    EXPECT_THAT(document, HasSubstr("second"));
    EXPECT_THAT(document, Not(HasSubstr("unwanted")));
}

TEST(DomainExport, WithoutMarkedRecordsOnlyTheEndIsReportedAndNothingWritten) {
    const TemporaryFolder folder;
    const auto domain = ScriptedDomain::init();
    domain->addRecord({{"title", "unwanted"}}, false);
    EXPECT_THAT(extract(*domain, folder.path()), ElementsAre(ExportEvent{1, 1, 1.0}));
    EXPECT_TRUE(folderContent(folder.path()).empty());
    EXPECT_FALSE(std::filesystem::exists(folder.path("Velmora Retrievo")));
}

TEST(DomainExport, RecordWithoutExportValueIsLeftOut) {
    const TemporaryFolder folder;
    const auto domain = ScriptedDomain::init();
    const auto record = ZkMobileBackupMessageRecord::initWithDictionary(Dictionary{{"name", "no texts"}}, false);
    record->setShouldRecovery(true);
    domain->addRecord(record);
    EXPECT_THAT(extract(*domain, folder.path()), ElementsAre(ExportEvent{1, 1, 1.0}));
}

TEST(DomainExport, PhotosAndMoviesReportOnlyTheEnd) {
    const TemporaryFolder folder;
    EXPECT_THAT(extract(*ZkMobileBackupPhotoDomain::init(), folder.path()), ElementsAre(ExportEvent{1, 1, 1.0}));
    EXPECT_THAT(extract(*ZkMobileBackupMovieDomain::initWithMovoes({}), folder.path()),
                ElementsAre(ExportEvent{1, 1, 1.0}));
    EXPECT_TRUE(folderContent(folder.path()).empty());
}

TEST(DomainExport, CallbackComesOneTurnAfterTheExporter) {
    SteppedMainQueue queue;
    const auto domain = ScriptedDomain::init();
    ExportEvents events;
    domain->extractWithOutputPath("/unused", DlxExportType::kHtml,
                                  [&](std::int64_t first, std::int64_t second, std::atomic<bool>*, double progress) {
                                      events.push_back({first, second, progress});
                                  });
    queue.runOneTurn();
    EXPECT_TRUE(events.empty());
    queue.runOneTurn();
    EXPECT_THAT(events, ElementsAre(ExportEvent{1, 1, 1.0}));
}

TEST(DomainExport, ItsStopFlagIsNotLookedAt) {
    const TemporaryFolder folder;
    const auto domain = ScriptedDomain::init();
    domain->addRecord({{"title", "wanted text"}}, true);
    domain->extractWithOutputPath(folder.path(), DlxExportType::kHtml,
                                  [&](std::int64_t, std::int64_t second, std::atomic<bool>* stop, double) {
                                      *stop = true;
                                      if (second == 1) MainQueue::stop();
                                  });
    MainQueue::run();
    EXPECT_FALSE(domain->exporter()->isStop());
    extract(*domain, folder.path());  // the flag is still set
    EXPECT_EQ(folderContent(folder.path()).size(), 2u);
}

TEST(DomainExport, ExporterTellsWhatWasWritten) {
    const TemporaryFolder folder;
    const auto domain = ScriptedDomain::init();
    domain->addRecord({{"title", "wanted text"}}, true);
    extract(*domain, folder.path());
    EXPECT_THAT(domain->exporter()->writtenPaths(), ElementsAre(folder.path("Velmora Retrievo/Scripted.html")));
}

TEST(DomainExport, WorksWithoutCallback) {
    const TemporaryFolder folder;
    auto domain = ScriptedDomain::init();
    domain->addRecord({{"title", "wanted text"}}, true);
    domain->extractWithOutputPath(folder.path(), DlxExportType::kHtml, nullptr);
    const std::weak_ptr<ScriptedDomain> weak = domain;
    domain.reset();
    runUntilGone(weak);
    EXPECT_EQ(folderContent(folder.path()).size(), 1u);
}

TEST(DomainExport, HostMayLetGoOfTheDomainWhileItExports) {
    const TemporaryFolder folder;
    for (const bool marked : {true, false}) {
        auto domain = ScriptedDomain::init();
        domain->addRecord({{"title", "text"}}, marked);
        ExportEvents events;
        domain->extractWithOutputPath(
            folder.path(), DlxExportType::kHtml,
            [&](std::int64_t first, std::int64_t second, std::atomic<bool>* stop, double progress) {
                *stop = stop->load();  // the flag must still be there
                events.push_back({first, second, progress});
            });
        const std::weak_ptr<ScriptedDomain> weak = domain;
        domain.reset();
        runUntilGone(weak);
        ASSERT_FALSE(events.empty());
        EXPECT_EQ(events.back(), (ExportEvent{1, 1, 1.0}));
    }
}

TEST(DomainExport, ExporterOutlivesItsDomain) {
    auto domain = ScriptedDomain::init();
    const auto exporter = domain->exporter();
    domain.reset();
    exporter->extportComplete(true);
    MainQueue::runUntilIdle();
    EXPECT_EQ(exporter->exporterDelegate(), nullptr);
}

// --- The rest ------------------------------------------------------------------------------------------------------

TEST(Domain, FreeOutputNameNeverNamesAnExistingFile) {
    const TemporaryFolder folder;
    const auto domain = ZkMobileBackupAppDomain::init();
    const std::string path = folder.path("a.txt");
    EXPECT_EQ(domain->GetOutPutFile(path), path);
    writeText(path, "");
    EXPECT_EQ(domain->GetOutPutFile(path), folder.path("a(0).txt"));
    writeText(folder.path("a(0).txt"), "");
    EXPECT_EQ(domain->GetOutPutFile(path), folder.path("a(1).txt"));
}

TEST(Domain, FreshDomainIsEmpty) {
    const auto domain = ZkMobileBackupAppDomain::init();
    EXPECT_TRUE(domain->records().empty());
    EXPECT_EQ(domain->lastError(), std::nullopt);
    EXPECT_EQ(domain->parser(), nullptr);
    EXPECT_EQ(domain->snapshot(), nullptr);
    EXPECT_EQ(domain->backupParser(), nullptr);
    ASSERT_NE(domain->exporter(), nullptr);
    EXPECT_EQ(domain->exporter()->exporterDelegate(), domain.get());
}

TEST(Domain, RefersToItsSnapshotWeakly) {
    const auto domain = ZkMobileBackupAppDomain::init();
    auto snapshot = ZkDeviceBackupSnapshot::initWithUDID({}, {}, {}, 0, {}, "");
    domain->setSnapshot(snapshot);
    EXPECT_EQ(domain->snapshot(), snapshot);
    snapshot.reset();
    EXPECT_EQ(domain->snapshot(), nullptr);
}

class AddressBookSlot : public testing::Test {
protected:
    ~AddressBookSlot() override { ZkMobileBackupAppDomain::setAddressBookDomain(nullptr); }
};

TEST_F(AddressBookSlot, HoldsTheDomainUntilItIsReplaced) {
    auto first = ZkMobileBackupAddressBookDomain::init();
    const std::weak_ptr<ZkMobileBackupAddressBookDomain> weak = first;
    ZkMobileBackupAppDomain::setAddressBookDomain(std::move(first));
    EXPECT_EQ(ZkMobileBackupAppDomain::addressBookDomain(), weak.lock());
    EXPECT_FALSE(weak.expired());
    ZkMobileBackupAppDomain::setAddressBookDomain(ZkMobileBackupAddressBookDomain::init());
    EXPECT_TRUE(weak.expired());
    ZkMobileBackupAppDomain::setAddressBookDomain(nullptr);
    EXPECT_EQ(ZkMobileBackupAppDomain::addressBookDomain(), nullptr);
}

TEST_F(AddressBookSlot, MayBeReadWhileItIsReplaced) {
    std::thread writer([] {
        for (int i = 0; i < 100; ++i) {
            ZkMobileBackupAppDomain::setAddressBookDomain(ZkMobileBackupAddressBookDomain::init());
        }
    });
    for (int i = 0; i < 100; ++i) {
        const auto domain = ZkMobileBackupAppDomain::addressBookDomain();
        EXPECT_TRUE(domain == nullptr || domain->exportName() == "Contacts");
    }
    writer.join();
    EXPECT_NE(ZkMobileBackupAppDomain::addressBookDomain(), nullptr);
}

}  // namespace
}  // namespace ZkMobileBackup
