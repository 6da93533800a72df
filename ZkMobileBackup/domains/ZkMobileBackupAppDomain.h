#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ZkMobileBackup/records/InfoKeys.h"
#include "base/Api.h"
#include "base/Value.h"
#include "export/DlxExporter.h"
#include "recovery/DlxSQLiteParser.h"

namespace ZkMobileBackup {

class ZkDeviceBackupSnapshot;
class ZkMobileBackupAddressBookDomain;
class ZkMobileBackupAppDomainRecord;
class ZkMobileBackupParser;

/// One application's data in one backup: its records, live and deleted, and their export to files. This class itself
/// stands for a database that no application here is known for; it never has records.
///
/// Make domains with a backup parser's scan. Parse first; read `records` once the parse has reported its end, mark the
/// wanted ones with `setShouldRecovery`, then extract. Parses and exports run in the background and report through the
/// main queue, so the host must keep that queue running. A job keeps its domain alive until its last callback has been
/// delivered. Callbacks are kept by the domain until they are replaced; one that owns the domain keeps it for ever.
class ZKMB_API ZkMobileBackupAppDomain : public DlxSQLiteParserDelegate,
                                         public DlxExporterDelegate,
                                         public std::enable_shared_from_this<ZkMobileBackupAppDomain> {
public:
    using Records = std::vector<std::shared_ptr<ZkMobileBackupAppDomainRecord>>;

    /// Hears of a parse: state 0 started (progress 0), 1 going on, 3 finished (progress 1.0). Setting `*stop`, which
    /// lives as long as the domain, ends the parse early with what was found until then; it stays set.
    using ParserCallback = std::function<void(std::int64_t state, std::atomic<bool>* stop, double progress)>;
    /// Hears of an export: (0, 0, stop, progress) at its start and while it goes on, (1, 1, stop, 1.0) at its end.
    /// `*stop` lives as long as the domain.
    using ExportCallback =
        std::function<void(std::int64_t first, std::int64_t second, std::atomic<bool>* stop, double progress)>;

    // appDomainWithBackupParser:info:
    /// New domains for the database that `info` describes, chosen by its name: one, or two for the calendar database.
    /// The domains share `info` and its bytes and do not own the parser, which may be null.
    static std::vector<std::shared_ptr<ZkMobileBackupAppDomain>> appDomainWithBackupParser(
        const std::shared_ptr<ZkMobileBackupParser>& parser, const Dictionary& info);

    // setAddressBookDomain:
    /// Sets the contacts domain of the backup now being read, one in a process; each scan replaces it. Null for none.
    /// Any thread.
    static void setAddressBookDomain(std::shared_ptr<ZkMobileBackupAddressBookDomain> domain);
    // addressBookDomain
    /// The contacts domain in which other domains look up names, null without one. Any thread.
    static std::shared_ptr<ZkMobileBackupAddressBookDomain> addressBookDomain();

    // init
    static std::shared_ptr<ZkMobileBackupAppDomain> init();
    ~ZkMobileBackupAppDomain() override;
    ZkMobileBackupAppDomain(const ZkMobileBackupAppDomain&) = delete;
    ZkMobileBackupAppDomain& operator=(const ZkMobileBackupAppDomain&) = delete;

    // parserWithCallbackBlock:
    /// Parses the domain's data on the background queue; returns at once. Without a callback it parses all the same. A
    /// domain is parsed once: called again, also while the parse is still to come or under way, this only calls
    /// `callback` with (3, stop, 1.0), at once on the caller's thread. No failure is reported: data that cannot be read
    /// gives no records.
    virtual void parserWithCallbackBlock(ParserCallback callback);

    // GetOutPutFile:
    /// The path itself when nothing stands there, else the first free one with "(0)", "(1)", ... before its extension.
    std::string GetOutPutFile(std::string_view path) const;

    // records
    /// Live records, then deleted ones. Belongs to the parse while one is under way.
    const Records& records() const { return records_; }

    // lastError
    /// What a kind of domain has to say about its last failure; nothing without one.
    const std::optional<std::string>& lastError() const { return lastError_; }

    // extractWithOutputPath:type:callbackBlock:
    /// Writes the records marked with `shouldRecovery` as one document below outputPath/TzProductName; returns at once.
    /// Without marked records nothing is written and only the end is reported. A failure is not reported: see
    /// `exporter()`. The callback's stop flag is not looked at here; `exporter()->stopRecoveryBackupData()` stops.
    virtual void extractWithOutputPath(const std::string& outputPath, DlxExportType type, ExportCallback callback);

    // Events of the engine, on the parsing thread. ("paser" stands for parser.)
    void paserStart() override;
    // parserProcess:
    void parserProcess(const Dictionary& progress) override;

    // Events of the exporter, on the main queue.
    void recoveryStart() override;
    // recoveryProcess:
    void recoveryProcess(double process) override;
    // recoveryComplete:
    void recoveryComplete(bool complete) override;

    // snapshot, setSnapshot:
    /// A snapshot that the host wants to find again here; not owned, null once it is gone. Any thread.
    std::shared_ptr<ZkDeviceBackupSnapshot> snapshot() const;
    void setSnapshot(const std::shared_ptr<ZkDeviceBackupSnapshot>& snapshot);

    // exportName
    /// Name of the domain, and of its exported document; nothing for a domain that has none.
    virtual std::optional<std::string> exportName() const;

    // --- Additions of ours -------------------------------------------------------------------------------------------

    /// Name of the object's class, such as "ZkMobileBackupNoteDomain".
    virtual std::string_view className() const { return "ZkMobileBackupAppDomain"; }
    /// The engine of the domain's parse, null until that parse has begun. Its tables may be read once the parse has
    /// reported its end; `setBStop` may be called before. Any thread.
    std::shared_ptr<DlxSQLiteParser> parser() const;
    /// The exporter of `extractWithOutputPath`, the same one for the domain's life: stops an export and tells what was
    /// written and what failed.
    const std::shared_ptr<DlxExporter>& exporter() const { return exporter_; }
    /// The backup parser whose scan made the domain; not owned, null without one and once it is gone.
    std::shared_ptr<ZkMobileBackupParser> backupParser() const { return backupParser_.lock(); }

    /// The files that the export started last has written so far, in the order of writing. Any thread.
    virtual std::vector<std::string> writtenPaths() const { return exporter_->writtenPaths(); }
    /// The first failure of the export started last, as a sentence that names the file or folder; empty without one.
    /// Any thread.
    virtual std::string firstFailure() const { return exporter_->firstFailure(); }

    /// A parse or an export of photos or movies that is stopped ends without its last callback; `handler` is called in
    /// its place, on the main queue. Jobs of other domains always report their end. Any thread.
    void setStoppedHandler(std::function<void()> handler);

protected:
    /// What a parse callback hears.
    enum ParserState : std::int64_t { kParserStarted = 0, kParserGoingOn = 1, kParserFinished = 3 };
    /// What an export callback hears, twice in each call.
    enum ExportState : std::int64_t { kExportGoingOn = 0, kExportFinished = 1 };

    ZkMobileBackupAppDomain();

    /// What every `init...` ends with: from here on the exporter reports to the domain.
    template <typename Domain>
    static std::shared_ptr<Domain> connected(std::shared_ptr<Domain> domain) {
        domain->connectExporter();
        return domain;
    }

    /// A domain's own step: makes records of the tables of `parser()`. On the parsing thread, once the engine has run.
    virtual void _parserDetails();

    /// The bytes of the domain's database, as long as the domain lives; none when its info dictionary holds no bytes.
    std::span<const std::uint8_t> databaseBytes() const;

    void setParserCallback(ParserCallback callback);
    /// Calls the parse callback, on the calling thread.
    void callParserCallback(ParserState state, double progress);
    /// The same through the main queue.
    void postParserCallback(ParserState state, double progress);
    /// Ends a parse job: reports the end through the main queue and lets go of the domain there, so that the job's
    /// thread never destroys it behind the back of a host that still uses its engine.
    static void postParserEnd(std::shared_ptr<ZkMobileBackupAppDomain> domain);

    /// Lets go of a job's domain on the main queue, behind all that the job has posted.
    static void letGo(std::shared_ptr<ZkMobileBackupAppDomain> domain);

    void setExportCallback(ExportCallback callback);
    /// Calls the export callback through the main queue.
    void postExportCallback(ExportState state, double progress);
    /// Calls the handler of stopped jobs through the main queue.
    void postStopped();

    // Whether the host has asked the job to stop.
    bool parserStopped() const { return parserStop_.load(std::memory_order_relaxed); }
    bool exportStopped() const { return exportStop_.load(std::memory_order_relaxed); }

    /// The records that the host wants exported, in their order.
    Records markedRecords() const;

    Records records_;
    std::optional<std::string> lastError_;

private:
    void connectExporter();
    void runParser();
    void setParser(std::shared_ptr<DlxSQLiteParser> parser);
    void callExportCallback(ExportState state, double progress);
    void reportEmptyExport();
    std::vector<Dictionary> exportValuesOfMarkedRecords() const;

    // Set by the factory, then only read:
    Dictionary info_;
    std::weak_ptr<ZkMobileBackupParser> backupParser_;
    const std::shared_ptr<DlxExporter> exporter_;

    std::atomic<bool> parseRequested_{false};
    std::atomic<bool> parserStop_{false};
    std::atomic<bool> exportStop_{false};
    double progress_ = 0;  // highest one reported; the parsing thread's

    mutable std::mutex mutex_;
    // Guarded by mutex_:
    std::shared_ptr<DlxSQLiteParser> parser_;
    std::weak_ptr<ZkDeviceBackupSnapshot> snapshot_;
    ParserCallback parserCallback_;
    ExportCallback exportCallback_;
    std::function<void()> stoppedHandler_;
};

}  // namespace ZkMobileBackup
