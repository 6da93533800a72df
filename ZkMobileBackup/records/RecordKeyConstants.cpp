#include "ZkMobileBackup/records/RecordKeyConstants.h"

namespace ZkMobileBackup {

const char kAddressBookRecordName[] = "name";
const char kAddressBookRecordCompany[] = "company";
const char kAddressBookRecordMobilePhoneList[] = "mobilePhoneList";
const char kAddressBookRecordAddressList[] = "addressList";
const char kAddressBookRecordHomePhoneList[] = "homePhoneList";
const char kAddressBookRecordEmailList[] = "emailList";
const char kAddressBookRecordNote[] = "Note";

const char kMessageRecordName[] = "name";
const char kMessageRecordPhone[] = "phone";
const char kMessageRecordEmail[] = "email";
const char kMessageRecordContents[] = "textlist";
const char kMessageRecordContentsItemData[] = "detail_date";
const char kMessageRecordContentsItemText[] = "detail_text";
const char kMessageRecordContentsItemSend[] = "detail_sent_flag";

const char kCalendarRecordTitle[] = "title";
const char kCalendarRecordStartData[] = "startdate";
const char kCalendarRecordEndData[] = "endDate";
const char kCalendarRecordLocation[] = "location";

const char kCallHistoryRecordName[] = "name";
const char kCallHistoryRecordPhone[] = "phone";
const char kCallHistoryRecordDate[] = "date";
const char kCallHistoryRecordType[] = "type";
const char kCallHistoryRecordDuration[] = "duration";

const char kReminderRecordTitle[] = "title";
const char kReminderRecordList[] = "list";
const char kReminderRecordStatus[] = "status";
const char kReminderRecordDate[] = "date";

const char kSafariBookmarksRecordTitle[] = "title";
const char kSafariBookmarksRecordURL[] = "url";

const char kNoteRecordTitle[] = "title";
const char kNoteRecordDate[] = "date";
const char kNoteRecordText[] = "text";

const char kMovieRecordTitle[] = "title";
const char kMovieRecordDuration[] = "duration";
const char kMovieRecordResolution[] = "resolution";
const char kMovieRecordSize[] = "size";
const char kMovieRecordThumbnail[] = "thumbnail";

const char kPhotoRecordTitle[] = "title";
const char kPhotoRecordThumbnail[] = "thumbnail";
const char kPhotoRecordResolution[] = "resolution";
const char kPhotoRecordCreateDate[] = "create date";

}  // namespace ZkMobileBackup
