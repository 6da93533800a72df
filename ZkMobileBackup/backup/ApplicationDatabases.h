#pragma once

#include <array>
#include <string_view>

namespace ZkMobileBackup {

// File names of the application databases that can be read.
inline constexpr std::string_view kAddressBookDatabase = "AddressBook.sqlitedb";
inline constexpr std::string_view kCalendarDatabase = "Calendar.sqlitedb";
inline constexpr std::string_view kMessageDatabase = "sms.db";
inline constexpr std::string_view kNoteDatabase = "notes.sqlite";
inline constexpr std::string_view kCallHistoryDatabase = "call_history.db";
inline constexpr std::string_view kSafariBookmarksDatabase = "Bookmarks.db";
inline constexpr std::string_view kVoiceMailDatabase = "voicemail.db";
inline constexpr std::string_view kPhotoDatabase = "Photos.sqlite";

/// All of them, in the order in which a database's name is compared with them.
inline constexpr std::array kApplicationDatabases = {
    kAddressBookDatabase, kCalendarDatabase,        kMessageDatabase,   kNoteDatabase,
    kCallHistoryDatabase, kSafariBookmarksDatabase, kVoiceMailDatabase, kPhotoDatabase,
};

}  // namespace ZkMobileBackup
