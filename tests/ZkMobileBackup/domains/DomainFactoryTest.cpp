#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ZkMobileBackup/backup/ZkDeviceBackupSnapshot.h"
#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupCalendarDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupCallHistoryDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupMessageDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupMovieDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupNoteDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupReminderDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupSafariBookmarksDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupVoiceMailDomain.h"
#include "ZkMobileBackup/domains/domain_factory.h"
#include "tests/ZkMobileBackup/domains/DomainTesting.h"

namespace ZkMobileBackup {
namespace {

std::vector<std::string> exportNamesOf(const std::string& databaseName) {
    std::vector<std::string> names;
    for (const auto& domain : domainsOf(databaseInfo(databaseName))) names.push_back(domain->exportName().value());
    return names;
}

template <typename Domain>
bool isOnlyDomainOf(const std::string& databaseName) {
    const auto domains = domainsOf(databaseInfo(databaseName));
    return domains.size() == 1 && dynamic_cast<Domain*>(domains.front().get()) != nullptr;
}

TEST(DomainFactory, EveryDatabaseGivesItsNamedDomains) {
    EXPECT_THAT(exportNamesOf("AddressBook"), testing::ElementsAre("Contacts"));
    EXPECT_THAT(exportNamesOf("Calendar"), testing::ElementsAre("Calendar", "Reminder"));
    EXPECT_THAT(exportNamesOf("sms"), testing::ElementsAre("Message"));
    EXPECT_THAT(exportNamesOf("notes"), testing::ElementsAre("Note"));
    EXPECT_THAT(exportNamesOf("call_history"), testing::ElementsAre("Callhistory"));
    EXPECT_THAT(exportNamesOf("Bookmarks"), testing::ElementsAre("SafariBookmarks"));
    EXPECT_THAT(exportNamesOf("voicemail"), testing::ElementsAre("Voicemail"));
    EXPECT_THAT(exportNamesOf("Photos"), testing::ElementsAre("Photo"));
}

TEST(DomainFactory, EveryDatabaseGivesItsDomainClass) {
    EXPECT_TRUE(isOnlyDomainOf<ZkMobileBackupAddressBookDomain>("AddressBook"));
    EXPECT_TRUE(isOnlyDomainOf<ZkMobileBackupMessageDomain>("sms"));
    EXPECT_TRUE(isOnlyDomainOf<ZkMobileBackupNoteDomain>("notes"));
    EXPECT_TRUE(isOnlyDomainOf<ZkMobileBackupCallHistoryDomain>("call_history"));
    EXPECT_TRUE(isOnlyDomainOf<ZkMobileBackupSafariBookmarksDomain>("Bookmarks"));
    EXPECT_TRUE(isOnlyDomainOf<ZkMobileBackupVoiceMailDomain>("voicemail"));
    EXPECT_TRUE(isOnlyDomainOf<ZkMobileBackupPhotoDomain>("Photos"));
}

TEST(DomainFactory, CalendarDatabaseGivesCalendarThenReminders) {
    const auto domains = domainsOf(databaseInfo("Calendar"));
    ASSERT_EQ(domains.size(), 2u);
    EXPECT_NE(dynamic_cast<ZkMobileBackupCalendarDomain*>(domains[0].get()), nullptr);
    EXPECT_NE(dynamic_cast<ZkMobileBackupReminderDomain*>(domains[1].get()), nullptr);
}

TEST(DomainFactory, BothCalendarDomainsShareOneCopyOfTheBytes) {
    const SharedBytes bytes = shared({1, 2, 3});
    const auto domains = domainsOf({{kRawDBNameKey, "Calendar"}, {kRawDBdataKey, bytes}});
    // One holder here, and one dictionary that the domains share.
    EXPECT_EQ(bytes.use_count(), 2);
}

TEST(DomainFactory, UnknownDatabaseGivesPlainDomainNamedExport) {
    EXPECT_THAT(exportNamesOf("Podcasts"), testing::ElementsAre("export"));
    EXPECT_FALSE(isOnlyDomainOf<ZkMobileBackupNoteDomain>("Podcasts"));
}

TEST(DomainFactory, NameIsComparedExactly) {
    EXPECT_THAT(exportNamesOf("calendar"), testing::ElementsAre("export"));
    EXPECT_THAT(exportNamesOf("Calendar "), testing::ElementsAre("export"));
    EXPECT_THAT(exportNamesOf("sms.db"), testing::ElementsAre("export"));
    EXPECT_THAT(exportNamesOf(""), testing::ElementsAre("export"));
}

TEST(DomainFactory, OnlyTheLastComponentOfTheNameCounts) {
    EXPECT_THAT(exportNamesOf("Library/SMS/sms"), testing::ElementsAre("Message"));
    EXPECT_THAT(exportNamesOf("sms/other"), testing::ElementsAre("export"));
}

TEST(DomainFactory, InfoWithoutNameGivesPlainDomain) {
    const auto domains = domainsOf({});
    ASSERT_EQ(domains.size(), 1u);
    EXPECT_EQ(domains.front()->exportName(), "export");
}

TEST(DomainFactory, NameThatIsNoTextGivesPlainDomain) {
    const auto domains = domainsOf({{kRawDBNameKey, 5}});
    ASSERT_EQ(domains.size(), 1u);
    EXPECT_EQ(domains.front()->exportName(), "export");
}

TEST(DomainFactory, MoviesHaveNoExportName) {
    EXPECT_EQ(ZkMobileBackupMovieDomain::initWithMovoes({})->exportName(), std::nullopt);
}

TEST(DomainFactory, PhotoDomainOfTheDatabaseHasEmptyLists) {
    const auto domains = domainsOf(databaseInfo("Photos"));
    const auto& photos = dynamic_cast<const ZkMobileBackupPhotoDomain&>(*domains.front());
    EXPECT_TRUE(photos.photos().empty());
    EXPECT_TRUE(photos.ithmbs().empty());
}

TEST(DomainFactory, SnapshotsListTheDatabasesOfTheFactoryInItsOrder) {
    std::vector<std::string> files;
    for (const DomainTableRow& row : domainTable()) files.emplace_back(row.databaseFile);
    const auto snapshot = ZkDeviceBackupSnapshot::initWithUDID({}, {}, {}, 0, {}, "");
    EXPECT_EQ(std::vector<std::string>(snapshot->userTextDataDB().begin(), snapshot->userTextDataDB().end()), files);
}

}  // namespace
}  // namespace ZkMobileBackup
