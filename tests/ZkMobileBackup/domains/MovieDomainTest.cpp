#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include "ZkMobileBackup/domains/ZkMobileBackupMovieDomain.h"
#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/ZkMobileBackupMovieRecord.h"
#include "tests/ZkMobileBackup/domains/DomainTesting.h"
#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/PaddedMovie.h"
#include "tests/support/TemporaryFolder.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using Bytes = std::vector<std::uint8_t>;
using StopFlag = std::atomic<bool>*;

const Bytes& shortMovie() {
    static const Bytes movie = movieFile();
    return movie;
}

class MovieDomain : public testing::Test {
protected:
    /// The path of a file of the backup, and its entry in the list of movies.
    std::string list(const std::string& title) {
        const std::string path = backup.path(std::to_string(movies.size()));
        movies.push_back({{kRawDBNameKey, title}, {kRawDBdataKey, path}});
        return path;
    }
    std::string addMovie(const std::string& title, const Bytes& bytes = shortMovie()) {
        const std::string path = list(title);
        writeBytes(path, bytes);
        return path;
    }
    std::shared_ptr<ZkMobileBackupMovieDomain> domain() const {
        return ZkMobileBackupMovieDomain::initWithMovoes(movies);
    }

    std::vector<Dictionary> movies;
    const TemporaryFolder backup;
};

std::vector<std::string> titlesOf(const ZkMobileBackupAppDomain& domain) {
    std::vector<std::string> titles;
    for (const auto& record : domain.records()) titles.push_back(*record->recordValueForKey(kMovieRecordTitle)->text());
    return titles;
}

// --- Parse ---------------------------------------------------------------------------------------------------------

/// What a parse that is not stopped reports.
struct Reports {
    std::thread::id endThread;
    double endProgress = 0;
    StopFlag stop = nullptr;
    ParseEvents onMainQueue;
};

/// Parses to the end while nobody runs the main queue, then hears what waits there.
Reports parseMovies(ZkMobileBackupMovieDomain& domain) {
    Reports reports;
    std::promise<void> ended;
    domain.parserWithCallbackBlock([&](std::int64_t state, StopFlag stop, double progress) {
        if (state != kFinishedState) {
            reports.onMainQueue.push_back({state, progress});
            return;
        }
        reports.endThread = std::this_thread::get_id();
        reports.endProgress = progress;
        reports.stop = stop;
        ended.set_value();
    });
    ended.get_future().wait();
    MainQueue::runUntilIdle();
    return reports;
}

using MovieDomainParse = MovieDomain;

TEST_F(MovieDomainParse, MakesARecordOfEachMovieInTheirOrder) {
    addMovie("IMG_0002");
    addMovie("IMG_0001");
    const auto movieDomain = domain();
    const Reports reports = parseMovies(*movieDomain);
    EXPECT_THAT(titlesOf(*movieDomain), ElementsAre("IMG_0002", "IMG_0001"));
    EXPECT_THAT(reports.onMainQueue, ElementsAre(ParseEvent{1, 0.5}, ParseEvent{1, 1.0}));
    EXPECT_EQ(reports.endProgress, 1.0);
}

TEST_F(MovieDomainParse, EndComesOnTheThreadOfTheJobPastTheMainQueue) {
    addMovie("IMG_0001");
    const auto movieDomain = domain();
    EXPECT_NE(parseMovies(*movieDomain).endThread, std::this_thread::get_id());
}

TEST_F(MovieDomainParse, ProgressComesThroughTheMainQueue) {
    addMovie("IMG_0001");
    const auto movieDomain = domain();
    std::promise<void> ended;
    std::vector<std::thread::id> threads;
    movieDomain->parserWithCallbackBlock([&](std::int64_t state, StopFlag, double) {
        state == kFinishedState ? ended.set_value() : threads.push_back(std::this_thread::get_id());
    });
    ended.get_future().wait();
    EXPECT_THAT(threads, IsEmpty());
    MainQueue::runUntilIdle();
    EXPECT_THAT(threads, ElementsAre(std::this_thread::get_id()));
}

TEST_F(MovieDomainParse, EmptyListGivesOnlyTheEnd) {
    const auto movieDomain = domain();
    const Reports reports = parseMovies(*movieDomain);
    EXPECT_THAT(reports.onMainQueue, IsEmpty());
    EXPECT_EQ(reports.endProgress, 1.0);
    EXPECT_THAT(movieDomain->records(), IsEmpty());
}

TEST_F(MovieDomainParse, FilesThatAreNoMoviesAreCountedButGiveNoRecord) {
    addMovie("noise", Bytes(5'000, 0x5A));
    addMovie("empty", {});
    list("vanished");
    fs::create_directory(list("directory"));
    ASSERT_EQ(mkfifo(list("pipe").c_str(), 0600), 0);
    addMovie("movie");
    const auto movieDomain = domain();
    const Reports reports = parseMovies(*movieDomain);
    EXPECT_THAT(titlesOf(*movieDomain), ElementsAre("movie"));
    ParseEvents expected;
    for (int count = 1; count <= 6; ++count) expected.push_back({1, count / 6.0});
    EXPECT_EQ(reports.onMainQueue, expected);
}

TEST_F(MovieDomainParse, SecondParseAppendsAllRecordsAgain) {
    addMovie("a");
    addMovie("b");
    const auto movieDomain = domain();
    parseMovies(*movieDomain);
    const Reports reports = parseMovies(*movieDomain);
    EXPECT_THAT(titlesOf(*movieDomain), ElementsAre("a", "b", "a", "b"));
    EXPECT_EQ(reports.onMainQueue.size(), 2U);
}

TEST_F(MovieDomainParse, TwoParsesAtOnceAppendOneAfterTheOther) {
    addMovie("a");
    addMovie("b");
    const auto movieDomain = domain();
    std::atomic<int> running = 2;
    std::promise<void> ended;
    for (int count = 0; count < 2; ++count) {
        movieDomain->parserWithCallbackBlock([&](std::int64_t state, StopFlag, double) {
            if (state == kFinishedState && --running == 0) ended.set_value();
        });
    }
    ended.get_future().wait();
    EXPECT_THAT(titlesOf(*movieDomain), ElementsAre("a", "b", "a", "b"));
    MainQueue::runUntilIdle();
}

TEST_F(MovieDomainParse, StopEndsItAfterTheFileInHandWithoutAFurtherCall) {
    addMovie("a");
    addMovie("b");
    addMovie("c");
    const auto movieDomain = domain();
    *parseMovies(*movieDomain).stop = true;
    ParseEvents events;
    movieDomain->setStoppedHandler([] { MainQueue::stop(); });
    movieDomain->parserWithCallbackBlock([&](std::int64_t state, StopFlag, double progress) {
        events.push_back({state, progress});
    });
    MainQueue::run();
    MainQueue::runUntilIdle();
    EXPECT_THAT(events, ElementsAre(ParseEvent{1, 1 / 3.0}));
    EXPECT_THAT(titlesOf(*movieDomain), ElementsAre("a", "b", "c", "a"));
}

TEST_F(MovieDomainParse, StopAfterTheLastFileAlsoEndsItWithoutAFurtherCall) {
    addMovie("a");
    const auto movieDomain = domain();
    const ImmediateMainQueue queue;
    std::promise<void> stopped;
    movieDomain->setStoppedHandler([&] { stopped.set_value(); });
    ParseEvents events;
    movieDomain->parserWithCallbackBlock([&](std::int64_t state, StopFlag stop, double progress) {
        events.push_back({state, progress});
        *stop = true;
    });
    stopped.get_future().wait();
    EXPECT_THAT(events, ElementsAre(ParseEvent{1, 1.0}));
    EXPECT_THAT(titlesOf(*movieDomain), ElementsAre("a"));
}

TEST_F(MovieDomainParse, WithoutACallbackItsJobEndsAllTheSame) {
    addMovie("a");
    auto movieDomain = domain();
    movieDomain->parserWithCallbackBlock(nullptr);
    const std::weak_ptr<ZkMobileBackupMovieDomain> observer = movieDomain;
    movieDomain.reset();
    runUntilGone(observer);
}

TEST_F(MovieDomainParse, HasNoExportName) {
    EXPECT_EQ(domain()->exportName(), std::nullopt);
}

// --- Export --------------------------------------------------------------------------------------------------------

constexpr ExportEvent kExportEnd{1, 1, 1.0};

/// What an export reports, to its end or until it is stopped.
struct Outcome {
    ExportEvents events;
    bool stopped = false;
};

class MovieDomainExport : public MovieDomain {
protected:
    MovieDomainExport() { fs::create_directory(outputFolder()); }

    std::string outputFolder() const { return output.path("Velmora Retrievo"); }
    std::string target(const std::string& name) const { return outputFolder() + "/" + name; }
    std::map<std::string, Bytes> written() const { return folderContent(outputFolder()); }

    std::shared_ptr<ZkMobileBackupMovieDomain> parsed() const {
        auto movieDomain = domain();
        parseMovies(*movieDomain);
        for (const auto& record : movieDomain->records()) record->setShouldRecovery(true);
        return movieDomain;
    }

    /// Hears each event on the job's own thread, before the job goes on.
    using Listener = std::function<void(std::size_t events, std::atomic<bool>& stop)>;

    Outcome exportMovies(ZkMobileBackupMovieDomain& movieDomain, const Listener& listener = {}) const {
        const ImmediateMainQueue queue;
        Outcome outcome;
        std::promise<void> ended;
        movieDomain.setStoppedHandler([&] {
            outcome.stopped = true;
            ended.set_value();
        });
        movieDomain.extractWithOutputPath(output.path(), DlxExportType::kHtml,
                                          [&](std::int64_t first, std::int64_t second, StopFlag stop, double progress) {
                                              outcome.events.push_back({first, second, progress});
                                              if (listener) listener(outcome.events.size(), *stop);
                                              if (first == 1) ended.set_value();
                                          });
        ended.get_future().wait();
        return outcome;
    }

    const TemporaryFolder output;
};

constexpr std::size_t kChunk = 4'000'000;

TEST_F(MovieDomainExport, ShortMovieIsCopiedInOnePass) {
    addMovie("IMG_0001");
    const auto movieDomain = parsed();
    EXPECT_THAT(exportMovies(*movieDomain).events, ElementsAre(ExportEvent{0, 0, 1.0}, kExportEnd));
    EXPECT_EQ(written(), (std::map<std::string, Bytes>{{"IMG_0001.MOV", shortMovie()}}));
    EXPECT_THAT(movieDomain->writtenPaths(), ElementsAre(target("IMG_0001.MOV")));
    EXPECT_EQ(movieDomain->firstFailure(), "");
}

TEST_F(MovieDomainExport, MovieOfExactlyAChunkIsAWholeChunkAndAnEmptyPass) {
    const Bytes movie = padded(shortMovie(), kChunk);
    addMovie("IMG_0001", movie);
    const auto movieDomain = parsed();
    EXPECT_THAT(exportMovies(*movieDomain).events,
                ElementsAre(ExportEvent{0, 0, 1.0}, ExportEvent{0, 0, 1.0}, kExportEnd));
    EXPECT_TRUE(readBytes(target("IMG_0001.MOV")) == movie);
}

TEST_F(MovieDomainExport, MovieOfOneByteLessThanAChunkIsOnePass) {
    addMovie("IMG_0001", padded(shortMovie(), kChunk - 1));
    EXPECT_THAT(exportMovies(*parsed()).events, ElementsAre(ExportEvent{0, 0, 1.0}, kExportEnd));
}

TEST_F(MovieDomainExport, MovieOf9000000BytesIsThreeChunks) {
    const Bytes movie = padded(shortMovie(), 9'000'000);
    addMovie("IMG_0001", movie);
    EXPECT_THAT(exportMovies(*parsed()).events, ElementsAre(ExportEvent{0, 0, 4.0 / 9}, ExportEvent{0, 0, 8.0 / 9},
                                                            ExportEvent{0, 0, 1.0}, kExportEnd));
    EXPECT_TRUE(readBytes(target("IMG_0001.MOV")) == movie);
}

TEST_F(MovieDomainExport, ProgressCountsTheBytesOfAllMarkedMovies) {
    addMovie("a", padded(shortMovie(), 1'000'000));
    addMovie("unwanted", padded(shortMovie(), 500'000));
    addMovie("b", padded(shortMovie(), 3'000'000));
    const auto movieDomain = parsed();
    movieDomain->records()[1]->setShouldRecovery(false);
    EXPECT_THAT(exportMovies(*movieDomain).events,
                ElementsAre(ExportEvent{0, 0, 0.25}, ExportEvent{0, 0, 1.0}, kExportEnd));
    EXPECT_THAT(movieDomain->writtenPaths(), ElementsAre(target("a.MOV"), target("b.MOV")));
    EXPECT_EQ(written().size(), 2U);
}

TEST_F(MovieDomainExport, ProgressIsNotLimitedTo32Bits) {
    constexpr std::uint64_t kSize = std::uint64_t{5} << 30;
    for (const char* title : {"a", "b"}) writeSparseMovie(list(title), kSize);
    const Outcome outcome = exportMovies(*parsed(), [](std::size_t, std::atomic<bool>& stop) { stop = true; });
    EXPECT_THAT(outcome.events, ElementsAre(ExportEvent{0, 0, 4e6 / (2.0 * kSize)}));
}

TEST_F(MovieDomainExport, CallbacksComeThroughTheMainQueue) {
    addMovie("a");
    const auto movieDomain = parsed();
    std::vector<std::thread::id> threads;
    movieDomain->extractWithOutputPath(output.path(), DlxExportType::kHtml,
                                       [&](std::int64_t first, std::int64_t, StopFlag, double) {
                                           threads.push_back(std::this_thread::get_id());
                                           if (first == 1) MainQueue::stop();
                                       });
    MainQueue::run();
    EXPECT_THAT(threads, ElementsAre(std::this_thread::get_id(), std::this_thread::get_id()));
}

TEST_F(MovieDomainExport, WithoutMarkedMoviesOnlyTheEndIsReported) {
    addMovie("a");
    const auto movieDomain = parsed();
    movieDomain->records().front()->setShouldRecovery(false);
    EXPECT_THAT(exportMovies(*movieDomain).events, ElementsAre(kExportEnd));
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(MovieDomainExport, MoviesTitledAlikeGetNumbersFrom0) {
    const Bytes second = padded(shortMovie(), 100'000);
    addMovie("IMG_0001");
    addMovie("IMG_0001", second);
    addMovie("IMG_0001");
    const auto movieDomain = parsed();
    exportMovies(*movieDomain);
    EXPECT_THAT(movieDomain->writtenPaths(),
                ElementsAre(target("IMG_0001.MOV"), target("IMG_0001(0).MOV"), target("IMG_0001(1).MOV")));
    EXPECT_TRUE(readBytes(target("IMG_0001(0).MOV")) == second);
    EXPECT_TRUE(readBytes(target("IMG_0001.MOV")) == shortMovie());
}

TEST_F(MovieDomainExport, EarlierFilesAreKept) {
    writeText(target("a.MOV"), "earlier");
    fs::create_symlink(output.path("elsewhere"), target("b.MOV"));
    addMovie("a");
    addMovie("b");
    exportMovies(*parsed());
    EXPECT_EQ(fs::file_size(target("a.MOV")), 7U);
    EXPECT_TRUE(readBytes(target("a(0).MOV")) == shortMovie());
    EXPECT_TRUE(readBytes(target("b(0).MOV")) == shortMovie());
    EXPECT_FALSE(fs::exists(output.path("elsewhere")));
}

TEST_F(MovieDomainExport, TitleIsKeptAsItIs) {
    addMovie("1. May (5)");
    addMovie("..");
    addMovie("");
    exportMovies(*parsed());
    EXPECT_THAT(written(), ElementsAre(testing::Key("...MOV"), testing::Key(".MOV"), testing::Key("1. May (5).MOV")));
}

TEST_F(MovieDomainExport, MovieWithoutATitleIsAFailureAndLeavesTheNextOneAlone) {
    addMovie("a");
    addMovie("b");
    movies.front().remove(kRawDBNameKey);
    const auto movieDomain = parsed();
    EXPECT_THAT(exportMovies(*movieDomain).events, ElementsAre(ExportEvent{0, 0, 0.5}, kExportEnd));
    EXPECT_THAT(written(), ElementsAre(testing::Key("b.MOV")));
    EXPECT_THAT(movieDomain->firstFailure(), HasSubstr("'" + outputFolder() + "'"));
}

TEST_F(MovieDomainExport, TitleThatLeadsOutOfTheFolderIsAFailure) {
    for (const std::string title : {"../escaped", "/tmp/escaped", "sub/escaped"}) addMovie(title);
    addMovie(std::string("a\0b", 3));
    const auto movieDomain = parsed();
    EXPECT_THAT(exportMovies(*movieDomain).events, ElementsAre(kExportEnd));
    EXPECT_THAT(folderContent(output.path()), IsEmpty());
    EXPECT_THAT(movieDomain->firstFailure(), HasSubstr("'" + outputFolder() + "'"));
}

TEST_F(MovieDomainExport, NumbersOfTitlesAlikeGoOnWhereTheyWere) {
    for (int count = 0; count < 4; ++count) addMovie("a");
    const auto movieDomain = parsed();
    exportMovies(*movieDomain, [&](std::size_t events, std::atomic<bool>&) {
        if (events == 3) fs::remove(target("a(0).MOV"));
    });
    EXPECT_EQ(movieDomain->writtenPaths().back(), target("a(2).MOV"));
}

TEST_F(MovieDomainExport, FolderIsNotMade) {
    fs::remove(outputFolder());
    addMovie("a");
    addMovie("b");
    const auto movieDomain = parsed();
    EXPECT_THAT(exportMovies(*movieDomain).events, ElementsAre(kExportEnd));
    EXPECT_FALSE(fs::exists(outputFolder()));
    EXPECT_THAT(movieDomain->writtenPaths(), IsEmpty());
    EXPECT_THAT(movieDomain->firstFailure(), HasSubstr(target("a.MOV")));
}

TEST_F(MovieDomainExport, TargetThatCannotBeMadeLeavesTheNextMovieAlone) {
    addMovie(std::string(300, 'x'));
    addMovie("b");
    const auto movieDomain = parsed();
    EXPECT_EQ(exportMovies(*movieDomain).events.back(), kExportEnd);
    EXPECT_THAT(movieDomain->writtenPaths(), ElementsAre(target("b.MOV")));
    EXPECT_THAT(movieDomain->firstFailure(), HasSubstr("xxx.MOV"));
}

TEST_F(MovieDomainExport, MovieThatHasVanishedLeavesAnEmptyFileAndTheNextOneAlone) {
    const std::string path = addMovie("a");
    addMovie("b");
    const auto movieDomain = parsed();
    fs::remove(path);
    EXPECT_THAT(exportMovies(*movieDomain).events, ElementsAre(ExportEvent{0, 0, 1.0}, kExportEnd));
    EXPECT_EQ(written(), (std::map<std::string, Bytes>{{"a.MOV", {}}, {"b.MOV", shortMovie()}}));
    EXPECT_THAT(movieDomain->writtenPaths(), ElementsAre(target("b.MOV")));
    EXPECT_THAT(movieDomain->firstFailure(), HasSubstr(path));
}

TEST_F(MovieDomainExport, FailureOfAnEarlierExportIsForgotten) {
    fs::remove(outputFolder());
    addMovie("a");
    const auto movieDomain = parsed();
    exportMovies(*movieDomain);
    fs::create_directory(outputFolder());
    exportMovies(*movieDomain);
    EXPECT_EQ(movieDomain->firstFailure(), "");
    EXPECT_THAT(movieDomain->writtenPaths(), ElementsAre(target("a.MOV")));
}

TEST_F(MovieDomainExport, MoviesThatBecameEmptyHaveNoProgress) {
    const std::string path = addMovie("a");
    const auto movieDomain = parsed();
    fs::resize_file(path, 0);
    EXPECT_THAT(exportMovies(*movieDomain).events, ElementsAre(ExportEvent{0, 0, 0.0}, kExportEnd));
    EXPECT_EQ(fs::file_size(target("a.MOV")), 0U);
}

TEST_F(MovieDomainExport, MovieThatBecomesShorterEndsWithWhatIsThere) {
    const std::string path = addMovie("a", padded(shortMovie(), 9'000'000));
    addMovie("b", padded(shortMovie(), 1'000'000));
    const auto movieDomain = parsed();
    const Outcome outcome = exportMovies(*movieDomain, [&](std::size_t events, std::atomic<bool>&) {
        if (events == 1) fs::resize_file(path, 5'000'000);
    });
    EXPECT_THAT(outcome.events,
                ElementsAre(ExportEvent{0, 0, 0.4}, ExportEvent{0, 0, 0.5}, ExportEvent{0, 0, 0.6}, kExportEnd));
    EXPECT_TRUE(readBytes(target("a.MOV")) == readBytes(path));
    EXPECT_THAT(movieDomain->writtenPaths(), ElementsAre(target("b.MOV")));
    EXPECT_THAT(movieDomain->firstFailure(), HasSubstr(path));
}

TEST_F(MovieDomainExport, MovieThatGrowsIsReadToItsEndAsOfTheLastPassAndCountsAsItWas) {
    const std::string path = addMovie("a", padded(shortMovie(), 5'000'000));
    const Outcome outcome = exportMovies(*parsed(), [&](std::size_t events, std::atomic<bool>&) {
        if (events == 1) std::ofstream(path, std::ios::app | std::ios::binary) << std::string(500'000, 'x');
    });
    EXPECT_THAT(outcome.events, ElementsAre(ExportEvent{0, 0, 0.8}, ExportEvent{0, 0, 1.0}, kExportEnd));
    EXPECT_TRUE(readBytes(target("a.MOV")) == readBytes(path));
}

TEST_F(MovieDomainExport, MovieThatGrowsForEverEndsWhereItWasWhenTheLastPassBegan) {
    const std::string path = addMovie("a", padded(shortMovie(), kChunk));
    addMovie("b");
    const Outcome outcome = exportMovies(
        *parsed(), [&](std::size_t, std::atomic<bool>&) { fs::resize_file(path, fs::file_size(path) + 2 * kChunk); });
    EXPECT_EQ(outcome.events.size(), 4U);
    for (const ExportEvent& event : outcome.events) EXPECT_LE(event.progress, 1.0);
    EXPECT_EQ(outcome.events.back(), kExportEnd);
    EXPECT_EQ(fs::file_size(target("a.MOV")), 3 * kChunk);
}

// A movie that is copied whole ends without a stop test, so the next one is where its stop is seen.

TEST_F(MovieDomainExport, StopBeforehandLeavesAnEmptyFileAndReportsNothing) {
    addMovie("a");
    addMovie("b");
    const auto movieDomain = parsed();
    const auto stop = [](std::size_t, std::atomic<bool>& flag) { flag = true; };
    EXPECT_TRUE(exportMovies(*movieDomain, stop).stopped);
    fs::remove_all(outputFolder());
    fs::create_directory(outputFolder());
    const Outcome outcome = exportMovies(*movieDomain);
    EXPECT_TRUE(outcome.stopped);
    EXPECT_THAT(outcome.events, IsEmpty());
    EXPECT_EQ(written(), (std::map<std::string, Bytes>{{"a.MOV", {}}}));
    EXPECT_THAT(movieDomain->writtenPaths(), IsEmpty());
    EXPECT_THAT(movieDomain->firstFailure(), HasSubstr("'" + target("a.MOV") + "'"));
}

TEST_F(MovieDomainExport, StopIsSeenAlsoWhereTheTargetCannotBeMade) {
    addMovie("a");
    addMovie(std::string(300, 'x'));
    addMovie("b");
    const auto movieDomain = parsed();
    const Outcome outcome = exportMovies(*movieDomain, [](std::size_t, std::atomic<bool>& stop) { stop = true; });
    EXPECT_TRUE(outcome.stopped);
    EXPECT_THAT(outcome.events, ElementsAre(ExportEvent{0, 0, 1 / 3.0}));
    EXPECT_THAT(written(), ElementsAre(testing::Key("a.MOV")));
    EXPECT_THAT(movieDomain->firstFailure(), HasSubstr("xxx.MOV"));
}

TEST_F(MovieDomainExport, StopAfterTheOnlyChunkOfAMovieLeavesItWhole) {
    const Bytes movie = padded(shortMovie(), kChunk);
    addMovie("a", movie);
    const auto movieDomain = parsed();
    const Outcome outcome = exportMovies(*movieDomain, [](std::size_t, std::atomic<bool>& stop) { stop = true; });
    EXPECT_TRUE(outcome.stopped);
    EXPECT_THAT(outcome.events, ElementsAre(ExportEvent{0, 0, 1.0}));
    EXPECT_TRUE(readBytes(target("a.MOV")) == movie);
    EXPECT_THAT(movieDomain->writtenPaths(), ElementsAre(target("a.MOV")));
    EXPECT_EQ(movieDomain->firstFailure(), "");
}

TEST_F(MovieDomainExport, StopAfterAWholeChunkLeavesAPartOfTheMovie) {
    const Bytes movie = padded(shortMovie(), 9'000'000);
    addMovie("a", movie);
    const auto movieDomain = parsed();
    const Outcome outcome = exportMovies(*movieDomain, [](std::size_t, std::atomic<bool>& stop) { stop = true; });
    EXPECT_TRUE(outcome.stopped);
    EXPECT_THAT(outcome.events, ElementsAre(ExportEvent{0, 0, 4.0 / 9}));
    EXPECT_TRUE(std::ranges::equal(readBytes(target("a.MOV")), std::span(movie).first(kChunk)));
    EXPECT_THAT(movieDomain->writtenPaths(), IsEmpty());
    EXPECT_THAT(movieDomain->firstFailure(), HasSubstr("'" + target("a.MOV") + "'"));
}

TEST_F(MovieDomainExport, StopInTheLastPassOfAMovieIsSeenWhenTheNextOneIsOpen) {
    addMovie("a");
    addMovie("b");
    const auto movieDomain = parsed();
    const Outcome outcome = exportMovies(*movieDomain, [](std::size_t, std::atomic<bool>& stop) { stop = true; });
    EXPECT_TRUE(outcome.stopped);
    EXPECT_THAT(outcome.events, ElementsAre(ExportEvent{0, 0, 0.5}));
    EXPECT_EQ(written(), (std::map<std::string, Bytes>{{"a.MOV", shortMovie()}, {"b.MOV", {}}}));
    EXPECT_THAT(movieDomain->writtenPaths(), ElementsAre(target("a.MOV")));
}

TEST_F(MovieDomainExport, StopInTheLastPassOfAllComesTooLate) {
    addMovie("a");
    const Outcome outcome = exportMovies(*parsed(), [](std::size_t, std::atomic<bool>& stop) { stop = true; });
    EXPECT_FALSE(outcome.stopped);
    EXPECT_THAT(outcome.events, ElementsAre(ExportEvent{0, 0, 1.0}, kExportEnd));
}

TEST_F(MovieDomainExport, TwoExportsAtOnceNeverShareAFile) {
    addMovie("a", padded(shortMovie(), 9'000'000));
    const auto one = parsed();
    const auto other = parsed();
    int running = 2;
    const auto listen = [&](std::int64_t first, std::int64_t, StopFlag, double) {
        if (first == 1 && --running == 0) MainQueue::stop();
    };
    one->extractWithOutputPath(output.path(), DlxExportType::kHtml, listen);
    other->extractWithOutputPath(output.path(), DlxExportType::kHtml, listen);
    MainQueue::run();
    EXPECT_NE(one->writtenPaths(), other->writtenPaths());
    EXPECT_TRUE(readBytes(target("a.MOV")) == readBytes(target("a(0).MOV")));
    EXPECT_EQ(fs::file_size(target("a.MOV")), 9'000'000U);
}

}  // namespace
}  // namespace ZkMobileBackup
