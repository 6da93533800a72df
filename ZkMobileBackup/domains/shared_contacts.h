#pragma once

#include <optional>

#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"

namespace ZkMobileBackup {

/// The contacts map of the backup now being read, nothing without a contacts database that gives one.
inline std::optional<Dictionary> sharedContacts() {
    const auto contacts = ZkMobileBackupAppDomain::addressBookDomain();
    return contacts != nullptr ? contacts->contactsInfo() : std::nullopt;
}

}  // namespace ZkMobileBackup
