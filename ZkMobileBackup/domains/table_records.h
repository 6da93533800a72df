#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"
#include "recovery/model/TableObject.h"

namespace ZkMobileBackup {

template <typename Record>
void appendRecordsOfRows(const RowList& rows, bool deleted, ZkMobileBackupAppDomain::Records& records) {
    for (const Row& row : rows) records.push_back(Record::initWithDictionary(*row.dictionary(), deleted));
}

/// Appends one record a row of a result table: the live rows', then the deleted rows'.
template <typename Record>
void appendRecords(const CustomTableObject& table, ZkMobileBackupAppDomain::Records& records) {
    records.reserve(records.size() + table.rowList().size() + table.deletedRowList().size());
    appendRecordsOfRows<Record>(table.rowList(), false, records);
    appendRecordsOfRows<Record>(table.deletedRowList(), true, records);
}

}  // namespace ZkMobileBackup
