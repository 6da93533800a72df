#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

#include "ZkMobileBackup/domains/TzProductName.h"
#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"
#include "ZkMobileBackup/domains/domain_factory.h"
#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "base/Log.h"
#include "base/MainQueue.h"
#include "base/Text.h"
#include "platform/Files.h"
#include "platform/GlobalQueue.h"

namespace ZkMobileBackup {

namespace {

struct AddressBookSlot {
    std::mutex mutex;
    std::shared_ptr<ZkMobileBackupAddressBookDomain> domain;  // guarded by mutex
};

AddressBookSlot& addressBookSlot() {
    static AddressBookSlot& slot = *new AddressBookSlot;  // never destroyed: jobs may still ask while the process ends
    return slot;
}

}  // namespace

std::vector<std::shared_ptr<ZkMobileBackupAppDomain>> ZkMobileBackupAppDomain::appDomainWithBackupParser(
    const std::shared_ptr<ZkMobileBackupParser>& parser, const Dictionary& info) {
    const std::string* name = info.text(kRawDBNameKey);
    auto domains = makeDomains(lastPathComponent(name != nullptr ? *name : std::string_view()));
    for (const auto& domain : domains) {
        domain->info_ = info;
        domain->backupParser_ = parser;
    }
    return domains;
}

void ZkMobileBackupAppDomain::setAddressBookDomain(std::shared_ptr<ZkMobileBackupAddressBookDomain> domain) {
    const std::lock_guard lock(addressBookSlot().mutex);
    addressBookSlot().domain.swap(domain);  // the old one is let go behind the lock
}

std::shared_ptr<ZkMobileBackupAddressBookDomain> ZkMobileBackupAppDomain::addressBookDomain() {
    const std::lock_guard lock(addressBookSlot().mutex);
    return addressBookSlot().domain;
}

std::shared_ptr<ZkMobileBackupAppDomain> ZkMobileBackupAppDomain::init() {
    return connected(std::shared_ptr<ZkMobileBackupAppDomain>(new ZkMobileBackupAppDomain));
}

ZkMobileBackupAppDomain::ZkMobileBackupAppDomain() : exporter_(DlxExporter::init()) {}

ZkMobileBackupAppDomain::~ZkMobileBackupAppDomain() {
    // A host may hold on to either of them for longer.
    exporter_->setExporterDelegate(nullptr);
    if (parser_) parser_->setSqliteParserDelegate(nullptr);
}

void ZkMobileBackupAppDomain::connectExporter() {
    exporter_->setExporterDelegate(this);
    exporter_->setOwner(weak_from_this());
}

void ZkMobileBackupAppDomain::parserWithCallbackBlock(ParserCallback callback) {
    // Marked here, not in the job: two quick calls would otherwise parse twice.
    if (parseRequested_.exchange(true)) {
        if (callback) callback(kParserFinished, &parserStop_, 1.0);
        return;
    }
    progress_ = 0;
    submitJob(QueuePriority::kBackground, [self = shared_from_this(), callback = std::move(callback)]() mutable {
        self->setParserCallback(std::move(callback));
        self->runParser();
        postParserEnd(std::move(self));
    });
}

void ZkMobileBackupAppDomain::runParser() {
    const auto engine = DlxSQLiteParser::initWithDBData(databaseBytes());
    engine->setSqliteParserDelegate(this);
    setParser(engine);
    try {
        engine->parser();
        _parserDetails();
    } catch (const std::bad_alloc&) {
        // A hostile file may ask for more than there is; what was found until then stays, and the end is reported.
        writeLog("There is not enough memory for all that a database holds.");
    }
}

std::span<const std::uint8_t> ZkMobileBackupAppDomain::databaseBytes() const {
    const Value* data = info_.find(kRawDBdataKey);
    const SharedBytes* bytes = data != nullptr ? data->bytes() : nullptr;
    if (bytes == nullptr || *bytes == nullptr) return {};
    return **bytes;
}

void ZkMobileBackupAppDomain::_parserDetails() {}

void ZkMobileBackupAppDomain::paserStart() {
    postParserCallback(kParserStarted, 0);
}

void ZkMobileBackupAppDomain::parserProcess(const Dictionary& progress) {
    if (parserStop_.load(std::memory_order_relaxed)) {
        if (const auto engine = parser()) engine->setBStop(true);
    }
    const Value* fraction = progress.find(kBackupProcessKey);
    // Every result table counts from 0 again: the host sees progress rise only.
    if (fraction == nullptr || !(fraction->numberOr0() > progress_)) return;
    progress_ = fraction->numberOr0();
    postParserCallback(kParserGoingOn, progress_);
}

void ZkMobileBackupAppDomain::setParserCallback(ParserCallback callback) {
    const std::lock_guard lock(mutex_);
    parserCallback_.swap(callback);
}

void ZkMobileBackupAppDomain::callParserCallback(ParserState state, double progress) {
    ParserCallback callback;
    {
        const std::lock_guard lock(mutex_);
        callback = parserCallback_;
    }
    if (callback) callback(state, &parserStop_, progress);
}

void ZkMobileBackupAppDomain::postParserCallback(ParserState state, double progress) {
    MainQueue::post([self = shared_from_this(), state, progress] { self->callParserCallback(state, progress); });
}

void ZkMobileBackupAppDomain::postParserEnd(std::shared_ptr<ZkMobileBackupAppDomain> domain) {
    MainQueue::post([domain = std::move(domain)] { domain->callParserCallback(kParserFinished, 1.0); });
}

void ZkMobileBackupAppDomain::letGo(std::shared_ptr<ZkMobileBackupAppDomain> domain) {
    MainQueue::post([domain = std::move(domain)] {});
}

std::string ZkMobileBackupAppDomain::GetOutPutFile(std::string_view path) const {
    return freeOutputPath(std::string(path));
}

void ZkMobileBackupAppDomain::extractWithOutputPath(const std::string& outputPath, DlxExportType type,
                                                    ExportCallback callback) {
    setExportCallback(std::move(callback));
    std::vector<Dictionary> values = exportValuesOfMarkedRecords();
    if (values.empty()) return reportEmptyExport();
    std::string path = joinedPath(outputPath, TzProductName);
    if (const auto name = exportName()) path = joinedPath(path, *name);
    exporter_->recoveryBackupData(Rows(std::move(values)), type, path);
}

ZkMobileBackupAppDomain::Records ZkMobileBackupAppDomain::markedRecords() const {
    Records marked;
    std::ranges::copy_if(records_, std::back_inserter(marked),
                         [](const auto& record) { return record->shouldRecovery(); });
    return marked;
}

/// The export values of the marked records; a record without one is left out.
std::vector<Dictionary> ZkMobileBackupAppDomain::exportValuesOfMarkedRecords() const {
    std::vector<Dictionary> values;
    for (const auto& record : markedRecords()) {
        if (auto value = record->exportValue()) values.push_back(std::move(*value));
    }
    return values;
}

void ZkMobileBackupAppDomain::reportEmptyExport() {
    exporter_->extportComplete(true);
    // No job of the exporter keeps its delegate alive here; this stands behind the exporter's call.
    letGo(shared_from_this());
}

void ZkMobileBackupAppDomain::recoveryStart() {
    postExportCallback(kExportGoingOn, 0);
}

void ZkMobileBackupAppDomain::recoveryProcess(double process) {
    postExportCallback(kExportGoingOn, process);
}

void ZkMobileBackupAppDomain::recoveryComplete(bool /*complete*/) {
    postExportCallback(kExportFinished, 1.0);
}

void ZkMobileBackupAppDomain::setExportCallback(ExportCallback callback) {
    const std::lock_guard lock(mutex_);
    exportCallback_.swap(callback);
}

/// The exporter's events come on the main queue; the host's callback stays one turn behind them.
void ZkMobileBackupAppDomain::postExportCallback(ExportState state, double progress) {
    MainQueue::post([self = shared_from_this(), state, progress] { self->callExportCallback(state, progress); });
}

void ZkMobileBackupAppDomain::callExportCallback(ExportState state, double progress) {
    ExportCallback callback;
    {
        const std::lock_guard lock(mutex_);
        callback = exportCallback_;
    }
    if (callback) callback(state, state, &exportStop_, progress);
}

void ZkMobileBackupAppDomain::setStoppedHandler(std::function<void()> handler) {
    const std::lock_guard lock(mutex_);
    stoppedHandler_.swap(handler);
}

void ZkMobileBackupAppDomain::postStopped() {
    MainQueue::post([self = shared_from_this()] {
        std::function<void()> handler;
        {
            const std::lock_guard lock(self->mutex_);
            handler = self->stoppedHandler_;
        }
        if (handler) handler();
    });
}

std::shared_ptr<ZkDeviceBackupSnapshot> ZkMobileBackupAppDomain::snapshot() const {
    const std::lock_guard lock(mutex_);
    return snapshot_.lock();
}

void ZkMobileBackupAppDomain::setSnapshot(const std::shared_ptr<ZkDeviceBackupSnapshot>& snapshot) {
    const std::lock_guard lock(mutex_);
    snapshot_ = snapshot;
}

std::shared_ptr<DlxSQLiteParser> ZkMobileBackupAppDomain::parser() const {
    const std::lock_guard lock(mutex_);
    return parser_;
}

void ZkMobileBackupAppDomain::setParser(std::shared_ptr<DlxSQLiteParser> parser) {
    const std::lock_guard lock(mutex_);
    parser_ = std::move(parser);
}

std::optional<std::string> ZkMobileBackupAppDomain::exportName() const {
    return "export";
}

}  // namespace ZkMobileBackup
