#pragma once

#include "base/Api.h"

namespace ZkMobileBackup {

// Keys of record values: the columns of the result tables and of the photo and movie records. Some spellings are fixed
// by what hosts already use.

// Contacts.
ZKMB_API extern const char kAddressBookRecordName[];
ZKMB_API extern const char kAddressBookRecordCompany[];
ZKMB_API extern const char kAddressBookRecordMobilePhoneList[];
ZKMB_API extern const char kAddressBookRecordAddressList[];
ZKMB_API extern const char kAddressBookRecordHomePhoneList[];
ZKMB_API extern const char kAddressBookRecordEmailList[];
ZKMB_API extern const char kAddressBookRecordNote[];

// Messages. The items make up the array under kMessageRecordContents; "ItemData" stands for the item's date.
ZKMB_API extern const char kMessageRecordName[];
ZKMB_API extern const char kMessageRecordPhone[];
ZKMB_API extern const char kMessageRecordEmail[];
ZKMB_API extern const char kMessageRecordContents[];
ZKMB_API extern const char kMessageRecordContentsItemData[];
ZKMB_API extern const char kMessageRecordContentsItemText[];
ZKMB_API extern const char kMessageRecordContentsItemSend[];

// Calendar events. "Data" stands for Date in these names.
ZKMB_API extern const char kCalendarRecordTitle[];
ZKMB_API extern const char kCalendarRecordStartData[];
ZKMB_API extern const char kCalendarRecordEndData[];
ZKMB_API extern const char kCalendarRecordLocation[];

// Calls.
ZKMB_API extern const char kCallHistoryRecordName[];
ZKMB_API extern const char kCallHistoryRecordPhone[];
ZKMB_API extern const char kCallHistoryRecordDate[];
ZKMB_API extern const char kCallHistoryRecordType[];
ZKMB_API extern const char kCallHistoryRecordDuration[];

// Reminders.
ZKMB_API extern const char kReminderRecordTitle[];
ZKMB_API extern const char kReminderRecordList[];
ZKMB_API extern const char kReminderRecordStatus[];
ZKMB_API extern const char kReminderRecordDate[];

// Bookmarks.
ZKMB_API extern const char kSafariBookmarksRecordTitle[];
ZKMB_API extern const char kSafariBookmarksRecordURL[];

// Notes.
ZKMB_API extern const char kNoteRecordTitle[];
ZKMB_API extern const char kNoteRecordDate[];
ZKMB_API extern const char kNoteRecordText[];

// Movies.
ZKMB_API extern const char kMovieRecordTitle[];
ZKMB_API extern const char kMovieRecordDuration[];
ZKMB_API extern const char kMovieRecordResolution[];
ZKMB_API extern const char kMovieRecordSize[];
ZKMB_API extern const char kMovieRecordThumbnail[];

// Photos.
ZKMB_API extern const char kPhotoRecordTitle[];
ZKMB_API extern const char kPhotoRecordThumbnail[];
ZKMB_API extern const char kPhotoRecordResolution[];
ZKMB_API extern const char kPhotoRecordCreateDate[];

}  // namespace ZkMobileBackup
