#include "recovery/DlxSQLiteParser.h"

#include <mutex>

#include "base/Text.h"
#include "recovery/engine/btree_walker.h"
#include "recovery/engine/column_signature.h"
#include "recovery/engine/freelist.h"
#include "recovery/engine/parser_state.h"
#include "recovery/engine/schema.h"
#include "recovery/engine/serial_types.h"
#include "recovery/shaping/call_texts.h"
#include "recovery/shaping/result_table.h"

namespace ZkMobileBackup {

namespace {

// Columns of the schema table; the last one is written in capitals on purpose.
constexpr const char* kSchemaTableName = "sqlite_master";
constexpr const char* kSchemaColumns[] = {"type", "name", "tbl_name", "rootpage", "SQL"};
enum SchemaColumn : std::size_t { kSchemaType = 0, kSchemaName = 1, kSchemaRootPage = 3, kSchemaSql = 4 };

std::mutex& oneDatabaseAtATime() {
    static std::mutex mutex;
    return mutex;
}

}  // namespace

DlxSQLiteParserDelegate::~DlxSQLiteParserDelegate() = default;
void DlxSQLiteParserDelegate::paserStart() {}
void DlxSQLiteParserDelegate::parserProcess(const Dictionary& /*progress*/) {}
void DlxSQLiteParserDelegate::parserComplete(bool /*complete*/) {}

std::shared_ptr<DlxSQLiteParser> DlxSQLiteParser::initWithDBPath(const std::string& path) {
    return std::shared_ptr<DlxSQLiteParser>(new DlxSQLiteParser(DlxSQLiteReader::initWithDBPath(path)));
}

std::shared_ptr<DlxSQLiteParser> DlxSQLiteParser::initWithDBData(std::span<const std::uint8_t> bytes) {
    return std::shared_ptr<DlxSQLiteParser>(new DlxSQLiteParser(DlxSQLiteReader::initWithDBData(bytes)));
}

DlxSQLiteParser::DlxSQLiteParser(std::shared_ptr<DlxSQLiteReader> reader)
    : state_(std::make_unique<engine::ParserState>()) {
    state_->header = DlxSQLiteDBHeader::initWithSQLiteReader(reader);
    state_->reader = std::move(reader);
}

DlxSQLiteParser::~DlxSQLiteParser() = default;

bool DlxSQLiteParser::parser() {
    const std::lock_guard lock(oneDatabaseAtATime());
    state_->pageVisits = 0;
    paserStart();
    const RawTable schema = createSQLiteMasterTable();
    state_->tables.push_back(schema);
    if (!parserNodeOfTable(schema.get())) return false;
    state_->tableCount = static_cast<std::int64_t>(schema->rowList().size()) + state_->header->freePagePageCount();
    parserNomarlTableListWithMasterTable(*schema);
    parserFreePageList();
    return !bStop();
}

const std::vector<DlxSQLiteParser::RawTable>& DlxSQLiteParser::tableList() const {
    return state_->tables;
}

DlxSQLiteParserDelegate* DlxSQLiteParser::sqliteParserDelegate() const {
    return delegate_;
}

void DlxSQLiteParser::setSqliteParserDelegate(DlxSQLiteParserDelegate* delegate) {
    delegate_ = delegate;
}

std::int64_t DlxSQLiteParser::dbIndex() const {
    return state_->dbIndex;
}

void DlxSQLiteParser::setDbIndex(std::int64_t index) {
    state_->dbIndex = index;
}

bool DlxSQLiteParser::bStop() const {
    return state_->shouldStop();
}

void DlxSQLiteParser::setBStop(bool stop) {
    state_->stop.store(stop, std::memory_order_relaxed);
}

const std::optional<std::string>& DlxSQLiteParser::lastError() const {
    return state_->lastError;
}

void DlxSQLiteParser::setLastError(std::optional<std::string> text) {
    state_->lastError = std::move(text);
}

void DlxSQLiteParser::clearLastError() {
    state_->lastError.reset();
}

void DlxSQLiteParser::paserStart() {
    if (delegate_ != nullptr) delegate_->paserStart();
}

void DlxSQLiteParser::parserProcess(const Dictionary& progress) {
    if (delegate_ != nullptr) delegate_->parserProcess(progress);
}

void DlxSQLiteParser::parserComplete(bool complete) {
    if (delegate_ != nullptr) delegate_->parserComplete(complete);
}

// ---- Result tables ----

shaping::Source DlxSQLiteParser::shapingSource() {
    return {.tables = state_->tables,
            .stop = state_->stop,
            .tableCount = state_->tableCount,
            .dbIndex = state_->dbIndex,
            .report = [this](const Dictionary& progress) { parserProcess(progress); }};
}

std::shared_ptr<CustomTableObject> DlxSQLiteParser::customTableForReminderDB() {
    return shaping::shapeReminders(shapingSource());
}

std::shared_ptr<CustomTableObject> DlxSQLiteParser::customTableForCalendarDB() {
    return shaping::shapeCalendar(shapingSource());
}

std::shared_ptr<CustomTableObject> DlxSQLiteParser::customTableForBookmarksDB() {
    return shaping::shapeBookmarks(shapingSource());
}

std::shared_ptr<CustomTableObject> DlxSQLiteParser::customTableForNotesDB() {
    return shaping::shapeNotes(shapingSource());
}

std::shared_ptr<CustomTableObject> DlxSQLiteParser::customTableForAddressBookDB(
    std::optional<Dictionary>* contactsMap) {
    std::optional<Dictionary> unwanted;
    return shaping::shapeContacts(shapingSource(), contactsMap != nullptr ? *contactsMap : unwanted);
}

std::shared_ptr<CustomTableObject> DlxSQLiteParser::customTableForSMSDB(const Dictionary* contactsMap) {
    return shaping::shapeMessages(shapingSource(), contactsMap);
}

std::shared_ptr<CustomTableObject> DlxSQLiteParser::customTableForCallHistoryDB(const Dictionary* contactsMap) {
    return shaping::shapeCallHistory(shapingSource(), contactsMap);
}

std::string DlxSQLiteParser::callTypeFormatFromTypeFlag(std::int64_t flags, std::int64_t duration) {
    return shaping::callType(flags, duration);
}

std::string DlxSQLiteParser::durationTextFormatFromDuration(std::int64_t duration,
                                                            const std::optional<std::string>& type) {
    return shaping::callDuration(duration, type);
}

std::int64_t DlxSQLiteParser::indexInFiledList(const std::vector<std::string>& filedList, std::string_view filedName) {
    return shaping::indexOfColumn(filedList, filedName);
}

std::optional<Dictionary> DlxSQLiteParser::newDictionaryOfDBWithFiledList(const std::vector<std::string>* filedList) {
    if (filedList == nullptr) return std::nullopt;
    return shaping::newResultRow(*filedList);
}

// ---- Schema and B-tree walk ----

DlxSQLiteParser::RawTable DlxSQLiteParser::createSQLiteMasterTable() const {
    auto table = std::make_shared<RawTableObject>(state_->rows);
    table->setName(kSchemaTableName);
    table->setTableType(RawTableObject::kSchemaTable);
    table->setPageNum(0);
    table->setFiledList({std::begin(kSchemaColumns), std::end(kSchemaColumns)});
    return table;
}

bool DlxSQLiteParser::searchFiledsOfTable(RawTableObject* table, std::string_view createTable) {
    return table != nullptr && engine::readColumns(*table, createTable);
}

std::optional<std::string> DlxSQLiteParser::subStringUntilNextSpaceFromCurPos(std::string_view text,
                                                                              std::uint16_t* length) {
    if (text.data() == nullptr) {
        if (length != nullptr) *length = 0;
        return std::nullopt;
    }
    engine::SchemaWord word = engine::firstWord(text);
    if (length != nullptr) *length = word.length;
    return std::move(word.text);
}

std::int64_t DlxSQLiteParser::payloadType(std::string_view typeWord) {
    return engine::columnClassOf(typeWord);
}

void DlxSQLiteParser::parserNomarlTableListWithMasterTable(const RawTableObject& schema) {
    const auto rowCount = static_cast<double>(schema.rowList().size());
    for (std::size_t i = 0; i < schema.rowList().size() && !bStop(); ++i) {
        const Row row = schema.rowList()[i];
        if (row.cell(kSchemaType) == "table") {
            auto table = std::make_shared<RawTableObject>(state_->rows);
            table->setName(std::string(row.cell(kSchemaName)));
            table->setPageNum(integerValue(row.cell(kSchemaRootPage)));
            state_->tables.push_back(table);
            searchFiledsOfTable(table.get(), row.cell(kSchemaSql));
            if (table->pageNum() > 0) parserNodeOfTable(table.get());
        }
        parserProcess({{kBackupProcessKey, static_cast<double>(i + 1) / rowCount},
                       {kBackupDeletedDataKey, 0},
                       {kBackupAllDataKey, 0}});
    }
}

bool DlxSQLiteParser::parserNodeOfTable(RawTableObject* table) {
    if (table == nullptr || !state_->complete()) return state_->failInvalidParameter(__func__);
    engine::BtreeWalker(*state_, *table).walkTable();
    return true;
}

bool DlxSQLiteParser::parserInteriorNodeOfTable(RawTableObject* table) {
    if (table == nullptr || !state_->complete()) return state_->failInvalidParameter(__func__);
    engine::BtreeWalker(*state_, *table).walkInterior();
    return true;
}

bool DlxSQLiteParser::parserLeafNodeOfTable(RawTableObject* table) {
    if (table == nullptr || !state_->complete()) return state_->failInvalidParameter(__func__);
    engine::BtreeWalker(*state_, *table).walkLeaf();
    return true;
}

bool DlxSQLiteParser::parserPayloadOfAtLeafNodeOfTable(RawTableObject* table, std::uint16_t offset) {
    if (table == nullptr || !state_->complete()) return state_->failInvalidParameter(__func__);
    return engine::BtreeWalker(*state_, *table).readCell(offset);
}

// ---- Records ----

std::shared_ptr<PayloadObject> DlxSQLiteParser::decodeNormalHeaderOfPayload() {
    if (!state_->complete()) return nullptr;
    auto payload = std::make_shared<PayloadObject>();
    return engine::PayloadDecoder(*state_).decodeLiveCell(*payload) ? payload : nullptr;
}

std::shared_ptr<PayloadObject> DlxSQLiteParser::decodePayloadWithMode(std::int64_t mode, std::uint16_t forcedLength,
                                                                      std::int64_t columnCount) {
    if (!state_->complete()) return nullptr;
    auto payload = std::make_shared<PayloadObject>();
    const bool accepted = engine::PayloadDecoder(*state_).decodeCarvedRecord(*payload, mode, forcedLength, columnCount);
    return accepted ? payload : nullptr;
}

std::int32_t DlxSQLiteParser::decodeHeaderOfPayload(PayloadObject* payload, Position from, Position to) {
    if (payload == nullptr || !from || !to || !state_->complete()) return 0;
    return engine::PayloadDecoder(*state_).decodeHeader(*payload, *from, *to);
}

void DlxSQLiteParser::decodeOverFlowListOfPayload(PayloadObject* payload) {
    if (payload == nullptr || !state_->complete()) return;
    engine::PayloadDecoder(*state_).decodeOverflowList(*payload);
}

std::optional<Row> DlxSQLiteParser::dumpBodyOfPayload(PayloadObject* payload, std::int64_t mode) {
    if (payload == nullptr || !state_->complete()) {
        state_->failInvalidParameter(__func__);
        return std::nullopt;
    }
    return engine::PayloadRenderer(*state_).render(*payload, mode);
}

std::string DlxSQLiteParser::dumpText(std::int64_t content, std::int64_t length, std::int64_t limit) const {
    return state_->complete() ? engine::PayloadRenderer::text(state_->image(), content, length, limit) : std::string();
}

std::string DlxSQLiteParser::dumpBlob(std::int64_t content, std::uint16_t length) const {
    return state_->complete() ? engine::PayloadRenderer::hexDigits(state_->image(), content, length) : std::string();
}

void DlxSQLiteParser::dumpBlobToFile(std::int64_t content, std::int64_t length, std::int32_t blobIndex) const {
    if (state_->complete()) engine::PayloadRenderer::writeBlobFile(state_->image(), content, length, blobIndex);
}

bool DlxSQLiteParser::isIntergerType(std::int32_t serialType) {
    return engine::serialTypeOf(serialType).is(engine::kIntegerClass);
}

bool DlxSQLiteParser::isFloatType(std::int32_t serialType) {
    return engine::serialTypeOf(serialType).is(engine::kFloatClass);
}

bool DlxSQLiteParser::isVarCharType(std::int32_t serialType) {
    return engine::serialTypeOf(serialType).is(engine::kTextClass);
}

bool DlxSQLiteParser::isBlobType(std::int32_t serialType) {
    return engine::serialTypeOf(serialType).is(engine::kBlobClass);
}

// ---- Deleted records ----

bool DlxSQLiteParser::findDeletedPayloadsOfTable(RawTableObject* table, Position end, const OffsetList* liveOffsets,
                                                 const OffsetList* freeblockOffsets) {
    if (table == nullptr || !end || !state_->complete()) return state_->failInvalidParameter(__func__);
    engine::Carver(*state_).scan(*table, engine::ColumnSignature(*table), *end, liveOffsets, freeblockOffsets);
    return true;
}

bool DlxSQLiteParser::checkPayloadFromCurOffsetOfTable(const RawTableObject* table, std::uint16_t* length) {
    if (table == nullptr || !state_->complete()) return state_->failInvalidParameter(__func__);
    const engine::ColumnSignature signature(*table);
    if (!signature.hasColumnTypes()) return false;
    const auto match = signature.matchAt(state_->image(), state_->reader->dbCurOffset(), state_->reader->dbEnd());
    if (length != nullptr) *length = match.length;
    return match.accepted;
}

bool DlxSQLiteParser::parserFreePageList() {
    if (!state_->complete()) return state_->failInvalidParameter(__func__);
    engine::Freelist freelist(*state_, [this](const Dictionary& progress) { parserProcess(progress); });
    return freelist.walk();
}

DlxSQLiteParser::RawTable DlxSQLiteParser::createTableOfFreePage(std::uint32_t pageNumber) const {
    return engine::Freelist::tableOfPage(*state_, pageNumber);
}

DlxSQLiteParser::RawTable DlxSQLiteParser::matchedTableForFreePageTableByFiledCount(std::int64_t filedCount) const {
    return engine::Freelist::tableWithFieldCount(*state_, filedCount);
}

std::optional<DlxSQLiteParser::OffsetList> DlxSQLiteParser::findDeletedPayloadsOfFreeBlockListOfTable(
    RawTableObject* table, std::uint16_t firstFreeblock) {
    if (table == nullptr || !state_->complete()) {
        state_->failInvalidParameter(__func__);
        return std::nullopt;
    }
    return engine::Carver(*state_).scanFreeblocks(*table, firstFreeblock);
}

void DlxSQLiteParser::parserDeletedRows() {
    if (!state_->complete() || state_->header->pageSize() == 0) return;
    const std::int64_t pageSize = state_->header->pageSize();
    for (std::int64_t start = 0; !state_->isBeyondEnd(start); start += pageSize) {
        state_->enterPage(start);
        if (state_->image().byte(start) != engine::kLeafTablePage) continue;
        const RawTable table = createTableOfFreePage(static_cast<std::uint32_t>(start));
        engine::BtreeWalker(*state_, *table).walkLeaf();
    }
}

// ---- Additions ----

const std::shared_ptr<DlxSQLiteDBHeader>& DlxSQLiteParser::sqliteDBHeader() const {
    return state_->header;
}

const std::shared_ptr<DlxSQLiteReader>& DlxSQLiteParser::sqliteReader() const {
    return state_->reader;
}

}  // namespace ZkMobileBackup
