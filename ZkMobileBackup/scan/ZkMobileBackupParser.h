#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "base/Api.h"

namespace ZkMobileBackup {

class ZkDeviceBackupSnapshot;
class ZkMobileBackupAddressBookDomain;
class ZkMobileBackupAppDomain;

/// Turns one backup into the domains of its applications. It only finds them: each domain parses itself when asked.
/// One thread at a time.
class ZKMB_API ZkMobileBackupParser : public std::enable_shared_from_this<ZkMobileBackupParser> {
public:
    using Domains = std::vector<std::shared_ptr<ZkMobileBackupAppDomain>>;

    /// Hears of a scan: state 1 with each domain that was added, then state 3, without a domain, at progress 1.0.
    /// `progress` is from 0 to 1; it counts the databases that a backup may hold, so it passes 1 where a backup names
    /// one of them many times. `stop` lives as long as the parser; a scan does not look at it.
    using ScanCallback = std::function<void(std::int64_t state, std::shared_ptr<ZkMobileBackupAppDomain> domain,
                                            std::atomic<bool>* stop, double progress)>;

    // initWithBackupSnapshot:
    /// A parser of this backup, never null. A null snapshot is read like a backup without a manifest.
    static std::shared_ptr<ZkMobileBackupParser> initWithBackupSnapshot(
        std::shared_ptr<ZkDeviceBackupSnapshot> snapshot);

    virtual ~ZkMobileBackupParser();
    ZkMobileBackupParser(const ZkMobileBackupParser&) = delete;
    ZkMobileBackupParser& operator=(const ZkMobileBackupParser&) = delete;

    // parserSnapshotWithCallbackBlock:
    /// Scans the backup on the calling thread, calls `callback`, which may be empty, from it, and returns when the scan
    /// is over. The manifest is read by the first scan and kept; every scan makes new domains and loads their data
    /// anew. It also sets the process's contacts domain, to none when the backup has none. Pictures and movies always
    /// come last, also when there are none. A manifest that is empty or cannot be read gives no domain but the call
    /// with state 3; a database that cannot be read is left out.
    void parserSnapshotWithCallbackBlock(const ScanCallback& callback);

    // domains
    /// The domains that the last scan found, in the order of their report.
    const Domains& domains() const { return domains_; }

    // snapshot
    const std::shared_ptr<ZkDeviceBackupSnapshot>& snapshot() const { return snapshot_; }

    // addressBookDomain
    /// A new contacts domain of this backup; null before the first scan, and when the backup has no contacts database
    /// or the first one that it names cannot be read.
    std::shared_ptr<ZkMobileBackupAddressBookDomain> addressBookDomain();

protected:
    explicit ZkMobileBackupParser(std::shared_ptr<ZkDeviceBackupSnapshot> snapshot);

private:
    struct Backup;
    class Scan;

    void readBackupOnce();

    const std::shared_ptr<ZkDeviceBackupSnapshot> snapshot_;
    Domains domains_;
    std::unique_ptr<Backup> backup_;  // null until its manifest could be read
    std::atomic<bool> shouldStop_{false};
};

// Parsers for one kind of source each; they differ in nothing but the name.

/// For backups that the phone's desktop program made.
class ZKMB_API ZkiTunesBackupParser : public ZkMobileBackupParser {
public:
    // initWithBackupSnapshot:
    static std::shared_ptr<ZkiTunesBackupParser> initWithBackupSnapshot(
        std::shared_ptr<ZkDeviceBackupSnapshot> snapshot);

protected:
    using ZkMobileBackupParser::ZkMobileBackupParser;
};

/// For backups fetched from the cloud.
class ZKMB_API ZkiCloudBackupParser : public ZkMobileBackupParser {
public:
    // initWithBackupSnapshot:
    static std::shared_ptr<ZkiCloudBackupParser> initWithBackupSnapshot(
        std::shared_ptr<ZkDeviceBackupSnapshot> snapshot);

protected:
    using ZkMobileBackupParser::ZkMobileBackupParser;
};

/// For backups taken from a connected device.
class ZKMB_API ZkDeviceBackupParser : public ZkMobileBackupParser {
public:
    // initWithBackupSnapshot:
    static std::shared_ptr<ZkDeviceBackupParser> initWithBackupSnapshot(
        std::shared_ptr<ZkDeviceBackupSnapshot> snapshot);

protected:
    using ZkMobileBackupParser::ZkMobileBackupParser;
};

}  // namespace ZkMobileBackup
