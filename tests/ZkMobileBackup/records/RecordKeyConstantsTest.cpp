#include <gtest/gtest.h>
#include <iterator>

#include "ZkMobileBackup/records/RecordKeyConstants.h"

namespace ZkMobileBackup {
namespace {

struct Constant {
    const char* constant;
    const char* text;
};

const Constant kConstants[] = {
    {kAddressBookRecordName, "name"},
    {kAddressBookRecordCompany, "company"},
    {kAddressBookRecordMobilePhoneList, "mobilePhoneList"},
    {kAddressBookRecordAddressList, "addressList"},
    {kAddressBookRecordHomePhoneList, "homePhoneList"},
    {kAddressBookRecordEmailList, "emailList"},
    {kAddressBookRecordNote, "Note"},
    {kMessageRecordName, "name"},
    {kMessageRecordPhone, "phone"},
    {kMessageRecordEmail, "email"},
    {kMessageRecordContents, "textlist"},
    {kMessageRecordContentsItemData, "detail_date"},
    {kMessageRecordContentsItemText, "detail_text"},
    {kMessageRecordContentsItemSend, "detail_sent_flag"},
    {kCalendarRecordTitle, "title"},
    {kCalendarRecordStartData, "startdate"},
    {kCalendarRecordEndData, "endDate"},
    {kCalendarRecordLocation, "location"},
    {kCallHistoryRecordName, "name"},
    {kCallHistoryRecordPhone, "phone"},
    {kCallHistoryRecordDate, "date"},
    {kCallHistoryRecordType, "type"},
    {kCallHistoryRecordDuration, "duration"},
    {kReminderRecordTitle, "title"},
    {kReminderRecordList, "list"},
    {kReminderRecordStatus, "status"},
    {kReminderRecordDate, "date"},
    {kSafariBookmarksRecordTitle, "title"},
    {kSafariBookmarksRecordURL, "url"},
    {kNoteRecordTitle, "title"},
    {kNoteRecordDate, "date"},
    {kNoteRecordText, "text"},
    {kMovieRecordTitle, "title"},
    {kMovieRecordDuration, "duration"},
    {kMovieRecordResolution, "resolution"},
    {kMovieRecordSize, "size"},
    {kMovieRecordThumbnail, "thumbnail"},
    {kPhotoRecordTitle, "title"},
    {kPhotoRecordThumbnail, "thumbnail"},
    {kPhotoRecordResolution, "resolution"},
    {kPhotoRecordCreateDate, "create date"},
};

TEST(RecordKeyConstants, HaveTheirTexts) {
    EXPECT_EQ(std::size(kConstants), 41U);
    for (const Constant& row : kConstants) EXPECT_STREQ(row.constant, row.text);
}

}  // namespace
}  // namespace ZkMobileBackup
