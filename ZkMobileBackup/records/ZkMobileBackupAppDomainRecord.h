#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Api.h"
#include "base/Value.h"

namespace ZkMobileBackup {

/// Ordered keys of a record class: the columns that a host shows.
using RecordKeys = std::vector<std::string>;

/// One recovered row, live or deleted, and the caller's choice whether to export it.
///
/// The value never changes once the record is made, and may be read from any thread. The two flags are plain: set them
/// while no job runs on the record's domain.
class ZKMB_API ZkMobileBackupAppDomainRecord {
public:
    // initWithDictionary:deleted:
    /// A record of `row`, shared rather than copied: later changes of the caller's dictionary do not reach it. Without
    /// a row it keeps no value and is not deleted. Never null.
    static std::shared_ptr<ZkMobileBackupAppDomainRecord> initWithDictionary(std::optional<Dictionary> row,
                                                                             bool deleted);

    virtual ~ZkMobileBackupAppDomainRecord();
    ZkMobileBackupAppDomainRecord(const ZkMobileBackupAppDomainRecord&) = delete;
    ZkMobileBackupAppDomainRecord& operator=(const ZkMobileBackupAppDomainRecord&) = delete;

    // recordKeys
    /// The keys of this class, the same list at every call; null for a class without keys. Each class has its own.
    static const RecordKeys* recordKeys();

    // recordValueForKey:
    /// The stored value, as long as the record lives; null where there is none.
    const Value* recordValueForKey(std::string_view key) const;

    // exportValue
    /// What the exporter writes: the row without its identity, every text cut before its first unit that is not visible
    /// (see isvisiable), so that a text of several lines leaves its first. Nothing for a record without a value.
    virtual std::optional<Dictionary> exportValue() const;

    /// Whether the row was deleted on the phone.
    bool isDeleted() const { return deleted_; }
    // setIsDeleted:
    void setIsDeleted(bool deleted) { deleted_ = deleted; }
    /// Whether the caller wants this record exported; false at first. The library never sets it.
    bool shouldRecovery() const { return shouldRecovery_; }
    // setShouldRecovery:
    void setShouldRecovery(bool wanted) { shouldRecovery_ = wanted; }

    // Ours.
    /// The recordKeys of the object's own class, for code that knows only this base.
    virtual const RecordKeys* keysOfClass() const;
    /// The whole value, also what is under no key of the class; nothing for a record that was made without a row.
    const std::optional<Dictionary>& value() const { return value_; }

protected:
    ZkMobileBackupAppDomainRecord(std::optional<Dictionary> row, bool deleted);

    /// The value without the row's identity, ready to be changed; nothing for a record without a value.
    std::optional<Dictionary> valueWithoutIdentity() const;

private:
    const std::optional<Dictionary> value_;
    bool deleted_;
    bool shouldRecovery_ = false;
};

}  // namespace ZkMobileBackup
