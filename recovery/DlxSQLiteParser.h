#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/Api.h"
#include "base/Value.h"
#include "recovery/DlxSQLiteDBHeader.h"
#include "recovery/DlxSQLiteReader.h"
#include "recovery/TableKeys.h"
#include "recovery/model/Payload.h"
#include "recovery/model/TableObject.h"

namespace ZkMobileBackup {

namespace engine {
struct ParserState;
}
namespace shaping {
struct Source;
}

/// Hears of a parser's progress, on the thread that runs the parser. Every answer may be left out.
class ZKMB_API DlxSQLiteParserDelegate {
public:
    virtual ~DlxSQLiteParserDelegate();
    virtual void paserStart();
    // parserProcess:
    virtual void parserProcess(const Dictionary& progress);
    // parserComplete: the parser itself never sends it.
    virtual void parserComplete(bool complete);
};

/// Recovers the tables of one SQLite database file from its bytes: live rows, and the rows of deleted records.
///
/// Make it, set delegate and limits, run `parser` once, then read the tables or the result tables. Everything but
/// `setBStop` belongs to one thread at a time; parsers on different threads take turns, since one database is parsed at
/// a time in a process. Failures leave a text in `lastError`; nothing throws.
///
/// The spellings "paser", "Nomarl", "Filed" (field) and "Interger" are fixed parts of this interface.
class ZKMB_API DlxSQLiteParser {
public:
    using Position = std::optional<std::int64_t>;
    /// Offsets within a page, in bytes.
    using OffsetList = std::vector<std::uint16_t>;
    using RawTable = std::shared_ptr<RawTableObject>;

    // initWithDBPath: a parser without a reader, whose `parser` fails, when the file cannot be read.
    static std::shared_ptr<DlxSQLiteParser> initWithDBPath(const std::string& path);
    // initWithDBData: parses a copy of the bytes.
    static std::shared_ptr<DlxSQLiteParser> initWithDBData(std::span<const std::uint8_t> bytes);

    virtual ~DlxSQLiteParser();
    DlxSQLiteParser(const DlxSQLiteParser&) = delete;
    DlxSQLiteParser& operator=(const DlxSQLiteParser&) = delete;

    /// Runs the whole recovery; true when it completed without a stop request. To be run once, and not from within a
    /// call of a delegate: another parser may only begin when this one has ended.
    bool parser();

    /// The schema table, then one table per schema row of type "table", in schema order.
    const std::vector<RawTable>& tableList() const;

    DlxSQLiteParserDelegate* sqliteParserDelegate() const;
    void setSqliteParserDelegate(DlxSQLiteParserDelegate* delegate);  // not owned
    /// Ordinal of this database in a larger run; it only shifts the progress.
    std::int64_t dbIndex() const;
    void setDbIndex(std::int64_t index);
    /// Stop request, from any thread. Once set it stays set.
    bool bStop() const;
    void setBStop(bool stop);

    const std::optional<std::string>& lastError() const;
    void setLastError(std::optional<std::string> text);
    void clearLastError();

    // Each reaches the delegate, if there is one.
    void paserStart();
    // parserProcess:
    void parserProcess(const Dictionary& progress);
    // parserComplete:
    void parserComplete(bool complete);

    // ---- Result tables, after `parser` ----
    // Each call makes a new table: named, with its columns, and without rows when a raw table that it needs is missing.

    std::shared_ptr<CustomTableObject> customTableForReminderDB();
    std::shared_ptr<CustomTableObject> customTableForCalendarDB();
    std::shared_ptr<CustomTableObject> customTableForBookmarksDB();
    std::shared_ptr<CustomTableObject> customTableForNotesDB();
    // customTableForAddressBookDB:
    /// `contactsMap`, which may be null, receives the contacts map: from a phone number or an address to the name of
    /// its person. What it held before is dropped; it stays as it is when a raw table that it needs is missing.
    std::shared_ptr<CustomTableObject> customTableForAddressBookDB(std::optional<Dictionary>* contactsMap);
    // customTableForSMSDB:
    /// One row a conversation. Names come from the contacts map, null for none.
    std::shared_ptr<CustomTableObject> customTableForSMSDB(const Dictionary* contactsMap);
    // customTableForCallHistoryDB:
    /// Names come from the contacts map, null for none.
    std::shared_ptr<CustomTableObject> customTableForCallHistoryDB(const Dictionary* contactsMap);
    // callTypeFormatFromTypeFlag:duration:
    /// "Incoming", "Outgoing" or "Failed". The duration is in seconds.
    static std::string callTypeFormatFromTypeFlag(std::int64_t flags, std::int64_t duration);
    // durationTextFormatFromDuration:andType:
    /// A duration in seconds in its largest whole unit, such as "2 hours"; for a duration of 0 what became of a call of
    /// this type, which may be nothing. Empty for a negative duration.
    static std::string durationTextFormatFromDuration(std::int64_t duration, const std::optional<std::string>& type);

    // indexInFiledList:byFiledName:
    /// Position of a column by its name, letter case ignored; -1 for none.
    static std::int64_t indexInFiledList(const std::vector<std::string>& filedList, std::string_view filedName);
    // newDictionaryOfDBWithFiledList:
    /// A result row: a unique text under "RowData_Identify_Key", then every column with the empty text; nothing for a
    /// null list.
    static std::optional<Dictionary> newDictionaryOfDBWithFiledList(const std::vector<std::string>* filedList);

    // ---- Schema and B-tree walk: the steps of `parser` ----

    /// A new schema table; its rows belong to this parser's tables.
    RawTable createSQLiteMasterTable() const;
    // searchFiledsOfTable:fromSQLString:
    /// Fills the table's columns from its CREATE TABLE text; false for a missing table or an empty text.
    static bool searchFiledsOfTable(RawTableObject* table, std::string_view createTable);
    // subStringUntilNextSpaceFromCurPos:len:
    /// The word at the head of `text`, and the bytes up to its delimiter; nothing and 0 for a null text.
    static std::optional<std::string> subStringUntilNextSpaceFromCurPos(std::string_view text, std::uint16_t* length);
    // payloadType:
    /// Class of a declared type word, a ColumnClass; letter case matters.
    static std::int64_t payloadType(std::string_view typeWord);
    // parserNomarlTableListWithMasterTable:
    void parserNomarlTableListWithMasterTable(const RawTableObject& schema);
    // parserNodeOfTable:
    /// Walks a table from its root page; false without a table, reader or header.
    bool parserNodeOfTable(RawTableObject* table);
    // parserInteriorNodeOfTable: from the page at the cursor.
    bool parserInteriorNodeOfTable(RawTableObject* table);
    // parserLeafNodeOfTable: the page at the cursor; true whenever it could be looked at.
    bool parserLeafNodeOfTable(RawTableObject* table);
    // parserPayloadOfAtLeafNodeOfTable:withOffset:
    /// Reads the live cell at an offset of the current page; false when it is rejected.
    bool parserPayloadOfAtLeafNodeOfTable(RawTableObject* table, std::uint16_t offset);

    // ---- Records: the record stands at the reader's cursor, which stays where it is ----

    /// Header of a live cell; null when it is rejected.
    std::shared_ptr<PayloadObject> decodeNormalHeaderOfPayload();
    // decodePayloadWithMode:andForcedLen:cellCount:
    /// Header of a deleted record: mode 1 for a freeblock's, 2 for one in unallocated space. Null when it is rejected.
    std::shared_ptr<PayloadObject> decodePayloadWithMode(std::int64_t mode, std::uint16_t forcedLength,
                                                         std::int64_t columnCount);
    // decodeHeaderOfPayload:fromPos:toPos:
    /// Reads serial types into the payload; returns the body length in bytes, 0 when anything is missing.
    std::int32_t decodeHeaderOfPayload(PayloadObject* payload, Position from, Position to);
    // decodeOverFlowListOfPayload:
    void decodeOverFlowListOfPayload(PayloadObject* payload);
    // dumpBodyOfPayload:mode:
    /// The row of a decoded record, mode 0 for a live cell. Nothing for one with a cell of an invalid type. The row is
    /// valid as long as the parser. Changes the image when the record has overflow pages.
    std::optional<Row> dumpBodyOfPayload(PayloadObject* payload, std::int64_t mode);
    // dumpText:andLen:limited:
    std::string dumpText(std::int64_t content, std::int64_t length, std::int64_t limit) const;
    // dumpBlob:andLen:
    std::string dumpBlob(std::int64_t content, std::uint16_t length) const;
    // dumpBlobToFile:andLen:blobIndex:
    void dumpBlobToFile(std::int64_t content, std::int64_t length, std::int32_t blobIndex) const;

    // Which columns a serial type fits.
    // isIntergerType:
    static bool isIntergerType(std::int32_t serialType);
    // isFloatType:
    static bool isFloatType(std::int32_t serialType);
    // isVarCharType:
    static bool isVarCharType(std::int32_t serialType);
    // isBlobType:
    static bool isBlobType(std::int32_t serialType);

    // ---- Deleted records ----

    // findDeletedPayloadsOfTable:fromCurPosToEndPos:normalOffList:freeBlockOffList:
    /// Scans from the cursor to `end`, jumping over the cells and freeblocks of the lists, which may be null.
    bool findDeletedPayloadsOfTable(RawTableObject* table, Position end, const OffsetList* liveOffsets,
                                    const OffsetList* freeblockOffsets);
    // checkPayloadFromCurOffsetOfTable:len:
    /// Whether the bytes at the cursor fit the table's column types; `length` receives an upper bound of the record's
    /// length, and stays as it is for a table without column types.
    bool checkPayloadFromCurOffsetOfTable(const RawTableObject* table, std::uint16_t* length);
    /// Recovers rows from the pages of the freelist; false without one.
    bool parserFreePageList();
    // createTableOfFreePage:
    RawTable createTableOfFreePage(std::uint32_t pageNumber) const;
    // matchedTableForFreePageTableByFiledCount:
    /// The last table with that many columns; null for none and for a count of 0 or less.
    RawTable matchedTableForFreePageTableByFiledCount(std::int64_t filedCount) const;
    // findDeletedPayloadsOfFreeBlockListOfTable:withFirstFreeBlockOffset:
    /// Offsets of the current page's freeblocks that gave a row; nothing without a table, reader or header.
    std::optional<OffsetList> findDeletedPayloadsOfFreeBlockListOfTable(RawTableObject* table,
                                                                        std::uint16_t firstFreeblock);
    /// Walks every leaf page of the image by itself; its rows go to no table.
    void parserDeletedRows();

    // ---- Additions of this library ----

    /// Header fields and limits; null when the file could not be read.
    const std::shared_ptr<DlxSQLiteDBHeader>& sqliteDBHeader() const;
    /// Image and cursor; null when the file could not be read.
    const std::shared_ptr<DlxSQLiteReader>& sqliteReader() const;

protected:
    explicit DlxSQLiteParser(std::shared_ptr<DlxSQLiteReader> reader);

private:
    shaping::Source shapingSource();

    std::unique_ptr<engine::ParserState> state_;
    DlxSQLiteParserDelegate* delegate_ = nullptr;  // not owned
};

}  // namespace ZkMobileBackup
