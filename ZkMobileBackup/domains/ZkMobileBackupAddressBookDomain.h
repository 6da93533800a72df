#pragma once

#include <mutex>
#include <optional>

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The contacts, and the names that other domains put to numbers and addresses.
class ZKMB_API ZkMobileBackupAddressBookDomain : public ZkMobileBackupAppDomain {
public:
    // init
    static std::shared_ptr<ZkMobileBackupAddressBookDomain> init();
    // contactsInfo
    /// The contacts map: from a phone number or an address to the name of its person. Until the domain's own parse has
    /// made the map, the first call parses the database for it, on the calling thread, and others wait. Once made the
    /// map stays as it is. Nothing while it cannot be made; each call then tries again. No stop flag ends that parse.
    /// Any thread, but not within a call of a parser's delegate: parsers take turns.
    std::optional<Dictionary> contactsInfo();
    // exportName
    std::optional<std::string> exportName() const override;
    // Ours.
    std::string_view className() const override { return "ZkMobileBackupAddressBookDomain"; }

protected:
    ZkMobileBackupAddressBookDomain() = default;
    void _parserDetails() override;

private:
    std::optional<Dictionary> newContactsMap() const;

    // A lock of its own: the engine's lock is taken within it, and events of the engine take the base's lock within
    // that one.
    std::mutex contactsMutex_;
    std::optional<Dictionary> contactsInfo_;  // guarded by contactsMutex_
};

}  // namespace ZkMobileBackup
