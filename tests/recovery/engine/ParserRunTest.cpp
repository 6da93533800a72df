#include <gtest/gtest.h>
#include <thread>

#include "recovery/TableKeys.h"
#include "tests/recovery/engine/HandMadeDatabase.h"
#include "tests/recovery/engine/PlainReading.h"
#include "tests/support/RecordingDelegate.h"

namespace ZkMobileBackup {
namespace {

using testing::HandMadeDatabase;
using testing::text;
using testing::Texts;

constexpr std::uint16_t kPageSize = 512;

/// Two tables of one row each, and an index between them.
HandMadeDatabase twoTables() {
    HandMadeDatabase database(kPageSize, 3);
    database.schema({{"a", 2, "CREATE TABLE a (x REAL, y REAL)"},
                     {"i", 0, "CREATE INDEX i ON a (x)", "index"},
                     {"b", 3, "CREATE TABLE b (x REAL, y REAL)"}});
    database.leaf(2, {testing::cell(1, {text("in"), text("a")})});
    database.leaf(3, {testing::cell(1, {text("in"), text("b")})});
    return database;
}

/// Stops the run once it has reported `reports` times.
class StoppingDelegate : public DlxSQLiteParserDelegate {
public:
    StoppingDelegate(DlxSQLiteParser& parser, int reports) : parser_(parser), left_(reports) {}
    void paserStart() override { stopAtZero(); }
    void parserProcess(const Dictionary& /*progress*/) override {
        --left_;
        stopAtZero();
    }

private:
    void stopAtZero() {
        if (left_ == 0) parser_.setBStop(true);
    }

    DlxSQLiteParser& parser_;
    int left_;
};

TEST(ParserRun, ReportsItsStartAndEachSchemaRow) {
    const auto parser = twoTables().parser();
    RecordingDelegate delegate;
    parser->setSqliteParserDelegate(&delegate);
    EXPECT_EQ(parser->sqliteParserDelegate(), &delegate);
    EXPECT_TRUE(parser->parser());
    EXPECT_EQ(delegate.starts, 1);
    EXPECT_TRUE(delegate.completions.empty());
    ASSERT_EQ(delegate.reports.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        const Dictionary& report = delegate.reports[i];
        ASSERT_EQ(report.size(), 3U);
        EXPECT_EQ(report.keyAt(0), kBackupProcessKey);
        ASSERT_NE(report.valueAt(0).floating(), nullptr);
        EXPECT_DOUBLE_EQ(*report.valueAt(0).floating(), static_cast<double>(i + 1) / 3.0);
        EXPECT_EQ(report.find(kBackupDeletedDataKey)->numberOr0(), 0);
        EXPECT_EQ(report.find(kBackupAllDataKey)->numberOr0(), 0);
    }
}

TEST(ParserRun, ReportsAnIndexRowThatGivesNoTable) {
    HandMadeDatabase database(kPageSize, 1);
    database.schema({{"i", 0, "CREATE INDEX i ON a (x)", "index"}});
    const auto parser = database.parser();
    RecordingDelegate delegate;
    parser->setSqliteParserDelegate(&delegate);
    EXPECT_TRUE(parser->parser());
    EXPECT_EQ(parser->tableList().size(), 1U);
    EXPECT_EQ(delegate.reports.size(), 1U);
}

TEST(ParserRun, DoesNotDependOnItsOrdinal) {
    const auto parser = twoTables().parser();
    RecordingDelegate delegate;
    parser->setSqliteParserDelegate(&delegate);
    parser->setDbIndex(7);
    EXPECT_EQ(parser->dbIndex(), 7);
    EXPECT_TRUE(parser->parser());
    EXPECT_DOUBLE_EQ(delegate.reports.back().find(kBackupProcessKey)->numberOr0(), 1.0);
}

TEST(ParserRun, SendsItsMessagesToADelegateThatIsSet) {
    const auto parser = twoTables().parser();
    parser->paserStart();
    parser->parserComplete(true);  // to nobody
    RecordingDelegate delegate;
    parser->setSqliteParserDelegate(&delegate);
    parser->paserStart();
    parser->parserProcess({{kBackupProcessKey, 0.5}});
    parser->parserComplete(true);
    EXPECT_EQ(delegate.starts, 1);
    EXPECT_EQ(delegate.reports.size(), 1U);
    EXPECT_EQ(delegate.completions, (std::vector<bool>{true}));
    DlxSQLiteParserDelegate silent;
    parser->setSqliteParserDelegate(&silent);
    EXPECT_TRUE(parser->parser());
}

TEST(ParserRun, BeforeItThereAreNoTables) {
    EXPECT_TRUE(twoTables().parser()->tableList().empty());
}

TEST(ParserRun, TwiceAppendsEveryTableAgain) {
    const auto parser = twoTables().parser();
    EXPECT_TRUE(parser->parser());
    EXPECT_TRUE(parser->parser());
    ASSERT_EQ(parser->tableList().size(), 6U);
    EXPECT_EQ(parser->tableList()[3]->name(), "sqlite_master");
    EXPECT_EQ(testing::liveRows(*parser, 4), (std::vector<Texts>{{"in", "a"}}));
}

TEST(ParserRun, CountsPageVisitsAnewEachTime) {
    const auto parser = twoTables().parser();
    parser->sqliteDBHeader()->setMaxPageVisits(3);
    EXPECT_TRUE(parser->parser());
    EXPECT_TRUE(parser->parser());
    EXPECT_EQ(testing::liveRows(*parser, 5).size(), 1U);
}

TEST(ParserRun, WithoutAFileFails) {
    const auto parser = DlxSQLiteParser::initWithDBPath("/no/such/file");
    RecordingDelegate delegate;
    parser->setSqliteParserDelegate(&delegate);
    EXPECT_FALSE(parser->parser());
    EXPECT_EQ(delegate.starts, 1);
    EXPECT_TRUE(delegate.reports.empty());
    EXPECT_EQ(parser->tableList().size(), 1U);
    EXPECT_EQ(parser->lastError(), "Invaid parameter:DlxSQLiteParser::parserNodeOfTable");
    EXPECT_EQ(parser->sqliteDBHeader(), nullptr);
}

TEST(ParserRun, KeepsItsErrorTextUntilItIsCleared) {
    const auto parser = twoTables().parser();
    EXPECT_EQ(parser->lastError(), std::nullopt);
    parser->setLastError("text");
    EXPECT_EQ(parser->lastError(), "text");
    parser->clearLastError();
    EXPECT_EQ(parser->lastError(), std::nullopt);
}

TEST(ParserRun, WithAStopRequestFromTheStartReadsNothing) {
    const auto parser = twoTables().parser();
    EXPECT_FALSE(parser->bStop());
    parser->setBStop(true);
    EXPECT_FALSE(parser->parser());
    EXPECT_TRUE(parser->bStop());
    EXPECT_EQ(parser->tableList().size(), 1U);
    EXPECT_TRUE(testing::liveRows(*parser, 0).empty());
}

TEST(ParserRun, StopsBetweenSchemaRowsAndKeepsWhatItRead) {
    const auto parser = twoTables().parser();
    StoppingDelegate delegate(*parser, 1);
    parser->setSqliteParserDelegate(&delegate);
    EXPECT_FALSE(parser->parser());
    ASSERT_EQ(parser->tableList().size(), 2U);
    EXPECT_EQ(testing::liveRows(*parser, 1), (std::vector<Texts>{{"in", "a"}}));
    EXPECT_TRUE(parser->bStop());
}

TEST(ParserRun, StoppedAtItsVeryEndIsNotComplete) {
    const auto parser = twoTables().parser();
    StoppingDelegate delegate(*parser, 3);
    parser->setSqliteParserDelegate(&delegate);
    EXPECT_FALSE(parser->parser());
    EXPECT_EQ(parser->tableList().size(), 3U);
}

TEST(ParserRun, EndsAfterAStopRequestOfAnotherThread) {
    // The run waits in its first message until the other thread has set the flag.
    class WaitingDelegate : public DlxSQLiteParserDelegate {
    public:
        explicit WaitingDelegate(DlxSQLiteParser& parser) : parser_(parser) {}
        void paserStart() override {
            std::thread([this] { parser_.setBStop(true); }).join();
        }

    private:
        DlxSQLiteParser& parser_;
    };
    const auto parser = twoTables().parser();
    WaitingDelegate delegate(*parser);
    parser->setSqliteParserDelegate(&delegate);
    EXPECT_FALSE(parser->parser());
}

TEST(ParserRun, MayBeStoppedAtAnyMoment) {
    const HandMadeDatabase database = twoTables();
    for (int i = 0; i < 50; ++i) {
        const auto parser = database.parser();
        std::thread stopper([&parser] { parser->setBStop(true); });
        const bool complete = parser->parser();
        stopper.join();
        EXPECT_TRUE(parser->bStop());
        EXPECT_TRUE(!complete || parser->tableList().size() == 3);
    }
}

TEST(ParserRun, OfSeveralThreadsTakeTurns) {
    /// Notes whether another run began before this one ended its messages.
    class TurnDelegate : public DlxSQLiteParserDelegate {
    public:
        explicit TurnDelegate(int& running) : running_(running) {}
        // The counter needs no protection of its own: only one run at a time may touch it.
        void paserStart() override { ++running_; }
        void parserProcess(const Dictionary& /*progress*/) override { overlapped = overlapped || running_ != 1; }
        void ended() { --running_; }
        bool overlapped = false;

    private:
        int& running_;
    };
    /// Leaves its turn with the report of the last schema row.
    class LastReport : public TurnDelegate {
    public:
        using TurnDelegate::TurnDelegate;
        void parserProcess(const Dictionary& progress) override {
            TurnDelegate::parserProcess(progress);
            if (progress.find(kBackupProcessKey)->numberOr0() == 1.0) ended();
        }
    };
    const HandMadeDatabase database = twoTables();
    const auto expected = testing::tablesOf(*database.parsed());
    int running = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int run = 0; run < 10; ++run) {
                const auto parser = database.parser();
                LastReport delegate(running);
                parser->setSqliteParserDelegate(&delegate);
                EXPECT_TRUE(parser->parser());
                EXPECT_FALSE(delegate.overlapped);
                EXPECT_EQ(testing::tablesOf(*parser), expected);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(running, 0);
}

TEST(ParserRun, LeavesTheCallersBytesAlone) {
    const HandMadeDatabase database = twoTables();
    testing::Bytes bytes = database.image;
    const auto parser = DlxSQLiteParser::initWithDBData(bytes);
    std::fill(bytes.begin(), bytes.end(), std::uint8_t{0});
    EXPECT_TRUE(parser->parser());
    EXPECT_EQ(parser->tableList().size(), 3U);
}

TEST(DeletedRowsOfAllPages, GoToNoTable) {
    const auto parser = twoTables().parsed();
    const auto before = testing::tablesOf(*parser);
    parser->parserDeletedRows();
    EXPECT_EQ(testing::tablesOf(*parser), before);
}

}  // namespace
}  // namespace ZkMobileBackup
