#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include "ZkMobileBackup/backup/ZkMbdbFileParser.h"
#include "ZkMobileBackup/domains/ZkMobileBackupAddressBookDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupMovieDomain.h"
#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"
#include "ZkMobileBackup/scan/ZkMobileBackupParser.h"
#include "base/MainQueue.h"
#include "tests/ZkMobileBackup/scan/BackupOnDisk.h"
#include "tests/support/SampleBackup.h"

namespace ZkMobileBackup {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct ScanEvent {
    std::int64_t state;
    std::string domain;
    double progress;
    bool operator==(const ScanEvent&) const = default;
};
using ScanEvents = std::vector<ScanEvent>;

constexpr double kSteps = 8 + 2;  // databases known, then photos and movies
const ScanEvent kEnd{3, "none", 1.0};

std::string nameOf(const std::shared_ptr<ZkMobileBackupAppDomain>& domain) {
    if (domain == nullptr) return "none";
    if (dynamic_cast<const ZkMobileBackupMovieDomain*>(domain.get()) != nullptr) return "movies";
    return domain->exportName().value();
}

ScanEvents scan(ZkMobileBackupParser& parser) {
    ScanEvents events;
    parser.parserSnapshotWithCallbackBlock([&](std::int64_t state,
                                               const std::shared_ptr<ZkMobileBackupAppDomain>& domain,
                                               std::atomic<bool>*, double progress) {
        events.push_back({state, nameOf(domain), progress});
    });
    return events;
}

std::vector<std::string> namesOf(const ZkMobileBackupParser::Domains& domains) {
    std::vector<std::string> names;
    for (const auto& domain : domains) names.push_back(nameOf(domain));
    return names;
}

const ZkMobileBackupPhotoDomain& photosOf(const ZkMobileBackupParser& parser) {
    return dynamic_cast<const ZkMobileBackupPhotoDomain&>(*parser.domains().end()[-2]);
}

const ZkMobileBackupMovieDomain& moviesOf(const ZkMobileBackupParser& parser) {
    return dynamic_cast<const ZkMobileBackupMovieDomain&>(*parser.domains().back());
}

class ScanTest : public testing::Test {
protected:
    ~ScanTest() override { ZkMobileBackupAppDomain::setAddressBookDomain(nullptr); }

    std::shared_ptr<ZkMobileBackupParser> parser() const {
        return ZkMobileBackupParser::initWithBackupSnapshot(backup.snapshot());
    }
    ScanEvents scanBackup() const { return scan(*parser()); }

    BackupOnDisk backup;
};

// --- Databases -----------------------------------------------------------------------------------------------------

TEST_F(ScanTest, MessageDatabaseComesBeforePhotosMoviesAndTheEnd) {
    backup.add("Library/SMS/sms.db");
    EXPECT_THAT(scanBackup(), ElementsAre(ScanEvent{1, "Message", 1 / kSteps}, ScanEvent{1, "Photo", 2 / kSteps},
                                          ScanEvent{1, "movies", 3 / kSteps}, kEnd));
}

TEST_F(ScanTest, CalendarDatabaseGivesTwoDomainsWithConsecutiveProgress) {
    backup.add("Library/Calendar/Calendar.sqlitedb").add("Library/Notes/notes.sqlite");
    EXPECT_THAT(scanBackup(), ElementsAre(ScanEvent{1, "Calendar", 1 / kSteps}, ScanEvent{1, "Reminder", 2 / kSteps},
                                          ScanEvent{1, "Note", 3 / kSteps}, ScanEvent{1, "Photo", 4 / kSteps},
                                          ScanEvent{1, "movies", 5 / kSteps}, kEnd));
}

TEST_F(ScanTest, DomainsAreKeptInTheOrderOfTheirReport) {
    backup.add("Library/Notes/notes.sqlite").add("Library/SMS/sms.db");
    const auto scanned = parser();
    scan(*scanned);
    EXPECT_THAT(namesOf(scanned->domains()), ElementsAre("Note", "Message", "Photo", "movies"));
}

TEST_F(ScanTest, BothCalendarDomainsAreKeptBeforeTheFirstIsReported) {
    backup.add("Library/Calendar/Calendar.sqlitedb");
    const auto scanned = parser();
    std::vector<std::size_t> counts;
    scanned->parserSnapshotWithCallbackBlock(
        [&](auto, auto, auto, auto) { counts.push_back(scanned->domains().size()); });
    EXPECT_THAT(counts, ElementsAre(2, 2, 3, 4, 4));
}

TEST_F(ScanTest, DatabaseThatCannotBeReadIsLeftOutAndNotCounted) {
    backup.addToManifest("Library/Notes/notes.sqlite").add("Library/SMS/sms.db");
    EXPECT_EQ(scanBackup().front(), (ScanEvent{1, "Message", 1 / kSteps}));
}

TEST_F(ScanTest, DatabaseThatIsAFolderIsLeftOut) {
    backup.addToManifest("Library/SMS/sms.db");
    std::filesystem::create_directory(backup.storedPath("Library/SMS/sms.db"));
    EXPECT_EQ(scanBackup().front().domain, "Photo");
}

TEST_F(ScanTest, DatabaseNamedTwiceGivesItsDomainsTwice) {
    backup.add("Library/SMS/sms.db").add("Other/sms.db");
    EXPECT_THAT(scanBackup(), ElementsAre(ScanEvent{1, "Message", 1 / kSteps}, ScanEvent{1, "Message", 2 / kSteps},
                                          ScanEvent{1, "Photo", 3 / kSteps}, ScanEvent{1, "movies", 4 / kSteps}, kEnd));
}

TEST_F(ScanTest, DatabaseNamesAreComparedExactly) {
    backup.add("Library/SMS/SMS.db").add("Library/SMS/sms.db.old").add("Library/sms.db/other");
    EXPECT_EQ(scanBackup().front().domain, "Photo");
}

TEST_F(ScanTest, PhotoDatabaseGivesAnEmptyPhotoDomainOfItsOwn) {
    backup.add("Media/PhotoData/Photos.sqlite").add("Media/DCIM/IMG_0001.JPG");
    const auto scanned = parser();
    scan(*scanned);
    ASSERT_THAT(namesOf(scanned->domains()), ElementsAre("Photo", "Photo", "movies"));
    EXPECT_THAT(dynamic_cast<const ZkMobileBackupPhotoDomain&>(*scanned->domains().front()).photos(), IsEmpty());
    EXPECT_EQ(photosOf(*scanned).photos().size(), 1u);
}

TEST_F(ScanTest, SnapshotDecidesWhatADatabaseIs) {
    backup.add("Library/Podcasts.db").add("Library/SMS/sms.db");
    const auto snapshot =
        std::make_shared<SnapshotWithDatabases>(backup.path(), std::vector<std::string>{"Podcasts.db"});
    EXPECT_THAT(scan(*ZkMobileBackupParser::initWithBackupSnapshot(snapshot)),
                ElementsAre(ScanEvent{1, "export", 1 / 3.0}, ScanEvent{1, "Photo", 2 / 3.0},
                            ScanEvent{1, "movies", 3 / 3.0}, kEnd));
}

TEST_F(ScanTest, FilesAreFoundUnderUpperCaseNamesToo) {
    backup.addToManifest("Library/SMS/sms.db");
    writeText(backup.path() + "/" + BackupOnDisk::hashedName("Library/SMS/sms.db"), "x");
    EXPECT_EQ(scanBackup().front().domain, "Message");
}

TEST(IndexedScan, FilesAreFoundUnderTheNamesOfTheIndex) {
    const TemporaryFolder folder;
    const std::string name(40, 'a');
    ManifestBuilder manifest;
    manifest.addIndexed({.domain = "HomeDomain", .path = "Library/SMS/sms.db"}, name);
    manifest.add({.domain = "HomeDomain", .path = "Library/Notes/notes.sqlite"});
    manifest.add({.domain = "MediaDomain", .path = "Media/DCIM/IMG_0001.JPG"});
    writeBytes(folder.path("Manifest.mbdb"), manifest.bytes());
    writeBytes(folder.path("Manifest.mbdx"), manifest.indexBytes());
    writeText(folder.path(name), "x");
    const auto scanned = ZkMobileBackupParser::initWithBackupSnapshot(snapshotOf(folder.path()));
    scan(*scanned);
    EXPECT_THAT(namesOf(scanned->domains()), ElementsAre("Message", "Photo", "movies"));
    EXPECT_EQ(*photosOf(*scanned).photos().front().text(kRawDBdataKey), folder.path("<nofileID>"));
}

// --- Contacts ------------------------------------------------------------------------------------------------------

TEST_F(ScanTest, ContactsAreReportedButNotCounted) {
    backup.add("Library/SMS/sms.db").add("Library/AddressBook/AddressBook.sqlitedb").add("Library/Notes/notes.sqlite");
    EXPECT_THAT(scanBackup(), ElementsAre(ScanEvent{1, "Message", 1 / kSteps}, ScanEvent{1, "Contacts", 1 / kSteps},
                                          ScanEvent{1, "Note", 2 / kSteps}, ScanEvent{1, "Photo", 3 / kSteps},
                                          ScanEvent{1, "movies", 4 / kSteps}, kEnd));
}

TEST_F(ScanTest, ContactsArePublishedBeforeAnyDomainIsReported) {
    backup.add("Library/SMS/sms.db").add("Library/AddressBook/AddressBook.sqlitedb");
    const auto scanned = parser();
    std::shared_ptr<ZkMobileBackupAddressBookDomain> atFirst;
    scanned->parserSnapshotWithCallbackBlock([&](auto, auto, auto, auto) {
        if (!atFirst) atFirst = ZkMobileBackupAppDomain::addressBookDomain();
    });
    ASSERT_NE(atFirst, nullptr);
    EXPECT_EQ(scanned->domains()[1], atFirst);
}

TEST_F(ScanTest, WithoutContactsNoneArePublished) {
    ZkMobileBackupAppDomain::setAddressBookDomain(ZkMobileBackupAddressBookDomain::init());
    backup.add("Library/SMS/sms.db");
    scanBackup();
    EXPECT_EQ(ZkMobileBackupAppDomain::addressBookDomain(), nullptr);
}

TEST_F(ScanTest, EmptyManifestLeavesThePublishedContacts) {
    const auto before = ZkMobileBackupAddressBookDomain::init();
    ZkMobileBackupAppDomain::setAddressBookDomain(before);
    backup.writeManifest(backup.manifestBytes());
    scanBackup();
    EXPECT_EQ(ZkMobileBackupAppDomain::addressBookDomain(), before);
}

TEST_F(ScanTest, ContactsThatCannotBeReadAreNotReported) {
    backup.addToManifest("Library/AddressBook/AddressBook.sqlitedb");
    EXPECT_EQ(scanBackup().front().domain, "Photo");
    EXPECT_EQ(ZkMobileBackupAppDomain::addressBookDomain(), nullptr);
}

TEST_F(ScanTest, OnlyTheFirstContactsDatabaseIsTried) {
    backup.addToManifest("Library/AddressBook/AddressBook.sqlitedb").add("Other/AddressBook.sqlitedb");
    EXPECT_EQ(scanBackup().front().domain, "Photo");
}

TEST_F(ScanTest, EveryContactsRecordReportsTheOneDomain) {
    backup.add("Library/AddressBook/AddressBook.sqlitedb").addToManifest("Other/AddressBook.sqlitedb");
    const auto scanned = parser();
    const ScanEvents events = scan(*scanned);
    EXPECT_EQ(events[0], (ScanEvent{1, "Contacts", 0.0}));
    EXPECT_EQ(events[1], (ScanEvent{1, "Contacts", 0.0}));
    EXPECT_EQ(scanned->domains()[0], scanned->domains()[1]);
}

TEST_F(ScanTest, AddressBookDomainIsMadeAnewAtEachCall) {
    backup.add("Library/AddressBook/AddressBook.sqlitedb");
    const auto scanned = parser();
    EXPECT_EQ(scanned->addressBookDomain(), nullptr);  // the manifest is not read yet
    scan(*scanned);
    const auto domain = scanned->addressBookDomain();
    ASSERT_NE(domain, nullptr);
    EXPECT_NE(domain, scanned->domains().front());
    EXPECT_EQ(domain->backupParser(), scanned);
}

// --- Photos, thumbnails and movies ---------------------------------------------------------------------------------

TEST_F(ScanTest, PhotosCarryNamePathAndChangeTime) {
    backup.addToManifest("Media/DCIM/IMG_0001.JPG", 1234567890).add("Media/DCIM/IMG_0002.PNG");
    const auto scanned = parser();
    scan(*scanned);
    const auto& photos = photosOf(*scanned).photos();
    ASSERT_EQ(photos.size(), 2u);
    // Nothing is stored under the first name: its path is the one that the manifest makes.
    EXPECT_EQ(photos[0],
              (Dictionary{{kRawDBNameKey, "IMG_0001"},
                          {kRawDBdataKey, backup.path() + "/" + BackupOnDisk::hashedName("Media/DCIM/IMG_0001.JPG")},
                          {kRawDBdateKey, Date{1234567890}}}));
    EXPECT_EQ(*photos[1].text(kRawDBdataKey), backup.storedPath("Media/DCIM/IMG_0002.PNG"));
}

TEST_F(ScanTest, ChangeTimeBefore1970IsADateBefore1970) {
    backup.addToManifest("IMG.JPG", 0xFFFFFFFF);
    const auto scanned = parser();
    scan(*scanned);
    EXPECT_EQ(*photosOf(*scanned).photos().front().find(kRawDBdateKey), Value(Date{-1}));
}

TEST_F(ScanTest, MoviesCarryNameAndPathAlone) {
    backup.add("Media/DCIM/IMG_0003.MOV");
    const auto scanned = parser();
    scan(*scanned);
    EXPECT_THAT(moviesOf(*scanned).movoes(),
                ElementsAre(Dictionary{{kRawDBNameKey, "IMG_0003"},
                                       {kRawDBdataKey, backup.storedPath("Media/DCIM/IMG_0003.MOV")}}));
    EXPECT_THAT(photosOf(*scanned).photos(), IsEmpty());
}

TEST_F(ScanTest, ExtensionsInOtherCasesAreNotTaken) {
    for (const char* name : {"a.jpg", "a.Jpg", "a.png", "a.mov", "a.JPEG", "a.ITHMB", "JPG", ".JPG", "a.JPG.txt"}) {
        backup.add(name);
    }
    const auto scanned = parser();
    scan(*scanned);
    EXPECT_THAT(photosOf(*scanned).photos(), IsEmpty());
    EXPECT_THAT(photosOf(*scanned).ithmbs(), IsEmpty());
    EXPECT_THAT(moviesOf(*scanned).movoes(), IsEmpty());
}

TEST_F(ScanTest, ThumbnailStoresCarryPathAndName) {
    backup.add("Media/PhotoData/3319.ithmb");
    const auto scanned = parser();
    scan(*scanned);
    EXPECT_THAT(
        photosOf(*scanned).ithmbs(),
        ElementsAre(Dictionary{{"path", backup.storedPath("Media/PhotoData/3319.ithmb")}, {"name", "3319.ithmb"}}));
    EXPECT_THAT(photosOf(*scanned).photos(), IsEmpty());
}

TEST_F(ScanTest, ThumbnailStoreIsCollectedWhateverTheSnapshotTakesItFor) {
    backup.add("Media/PhotoData/3319.ithmb");
    const auto snapshot =
        std::make_shared<SnapshotWithDatabases>(backup.path(), std::vector<std::string>{"3319.ithmb"});
    const auto scanned = ZkMobileBackupParser::initWithBackupSnapshot(snapshot);
    scan(*scanned);
    EXPECT_THAT(namesOf(scanned->domains()), ElementsAre("export", "Photo", "movies"));
    EXPECT_EQ(photosOf(*scanned).ithmbs().size(), 1u);
}

TEST_F(ScanTest, PhotosAndMoviesComeLastAlsoWhenThereAreNone) {
    backup.add("notes.txt");
    EXPECT_THAT(scanBackup(), ElementsAre(ScanEvent{1, "Photo", 1 / kSteps}, ScanEvent{1, "movies", 2 / kSteps}, kEnd));
}

// --- Runs ----------------------------------------------------------------------------------------------------------

TEST_F(ScanTest, SecondScanGivesTheSameDomainsWithoutTheManifest) {
    backup.add("Library/AddressBook/AddressBook.sqlitedb").add("Library/SMS/sms.db").add("Media/IMG.JPG");
    const auto scanned = parser();
    const ScanEvents first = scan(*scanned);
    const auto firstDomains = scanned->domains();
    std::filesystem::remove(backup.manifestPath());
    EXPECT_EQ(scan(*scanned), first);
    EXPECT_EQ(namesOf(scanned->domains()), namesOf(firstDomains));
    EXPECT_NE(scanned->domains(), firstDomains);
    EXPECT_EQ(photosOf(*scanned).photos().size(), 1u);
}

TEST_F(ScanTest, SecondScanReadsTheDataAnew) {
    backup.add("Library/SMS/sms.db");
    const auto scanned = parser();
    scan(*scanned);
    std::filesystem::remove(backup.storedPath("Library/SMS/sms.db"));
    EXPECT_EQ(scan(*scanned).front().domain, "Photo");
}

TEST_F(ScanTest, ManifestThatCannotBeReadGivesOnlyTheEnd) {
    const auto scanned = parser();
    EXPECT_THAT(scan(*scanned), ElementsAre(kEnd));
    EXPECT_THAT(scanned->domains(), IsEmpty());
    // What could not be read is not kept.
    backup.add("Library/SMS/sms.db");
    EXPECT_EQ(scan(*scanned).front().domain, "Message");
}

TEST_F(ScanTest, ManifestWithoutRecordsGivesOnlyTheEnd) {
    for (const char* content : {"", "mbd", "mbdb", "mbdb\x05", "no manifest at all"}) {
        writeText(backup.manifestPath(), content);
        EXPECT_THAT(scanBackup(), ElementsAre(kEnd));
    }
    backup.writeManifest(backup.manifestBytes());
    EXPECT_THAT(scanBackup(), ElementsAre(kEnd));
}

TEST_F(ScanTest, MissingFolderOrSnapshotGivesOnlyTheEnd) {
    EXPECT_THAT(scan(*ZkMobileBackupParser::initWithBackupSnapshot(snapshotOf("/no/such/backup"))), ElementsAre(kEnd));
    EXPECT_THAT(scan(*ZkMobileBackupParser::initWithBackupSnapshot(nullptr)), ElementsAre(kEnd));
}

TEST_F(ScanTest, ManifestCutAtAnyLengthEndsOrderly) {
    backup.add("Library/SMS/sms.db").add("Library/Calendar/Calendar.sqlitedb").add("Media/IMG.JPG");
    const auto whole = backup.manifestBytes();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        backup.writeManifest({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)});
        EXPECT_EQ(scanBackup().back(), kEnd);
    }
}

TEST_F(ScanTest, PathsOfTheManifestNeverLeadOutOfTheFolder) {
    backup.addToManifest("../../../IMG.JPG").addToManifest("/etc/IMG.MOV").addToManifest("../x.ithmb");
    const auto scanned = parser();
    scan(*scanned);
    const auto parentOf = [](const Dictionary& info, std::string_view key) {
        return std::string(pathWithoutLastComponent(*info.text(key)));
    };
    EXPECT_EQ(parentOf(photosOf(*scanned).photos().front(), kRawDBdataKey), backup.path());
    EXPECT_EQ(parentOf(photosOf(*scanned).ithmbs().front(), kThumbnailStorePathKey), backup.path());
    EXPECT_EQ(parentOf(moviesOf(*scanned).movoes().front(), kRawDBdataKey), backup.path());
}

TEST_F(ScanTest, BackupStaysAsItIs) {
    backup.add("Library/SMS/sms.db").add("Library/Calendar/Calendar.sqlitedb").add("Media/IMG.JPG");
    const auto before = folderContent(backup.path());
    scanBackup();
    EXPECT_EQ(folderContent(backup.path()), before);
}

TEST_F(ScanTest, CallbackComesFromTheCallersThread) {
    backup.add("Library/SMS/sms.db");
    std::vector<std::thread::id> threads;
    parser()->parserSnapshotWithCallbackBlock(
        [&](auto, auto, auto, auto) { threads.push_back(std::this_thread::get_id()); });
    EXPECT_EQ(threads, std::vector<std::thread::id>(4, std::this_thread::get_id()));
}

TEST_F(ScanTest, StopFlagIsHandedOutButNotLookedAt) {
    backup.add("Library/SMS/sms.db");
    std::vector<std::atomic<bool>*> flags;
    const auto scanned = parser();
    scanned->parserSnapshotWithCallbackBlock([&](auto, auto, std::atomic<bool>* stop, auto) {
        *stop = true;
        flags.push_back(stop);
    });
    EXPECT_EQ(flags, std::vector<std::atomic<bool>*>(4, flags.front()));
}

TEST_F(ScanTest, WorksWithoutCallback) {
    backup.add("Library/SMS/sms.db");
    const auto scanned = parser();
    scanned->parserSnapshotWithCallbackBlock(nullptr);
    EXPECT_THAT(namesOf(scanned->domains()), ElementsAre("Message", "Photo", "movies"));
}

TEST_F(ScanTest, CallbackMayLetGoOfTheParser) {
    backup.add("Library/SMS/sms.db");
    auto scanned = parser();
    std::size_t calls = 0;
    scanned->parserSnapshotWithCallbackBlock([&](auto, auto, std::atomic<bool>* stop, auto) {
        scanned.reset();
        EXPECT_FALSE(*stop);
        ++calls;
    });
    EXPECT_EQ(calls, 4u);
}

TEST_F(ScanTest, CallbackMayScanAgain) {
    backup.add("Library/SMS/sms.db");
    const auto scanned = parser();
    bool again = false;
    scanned->parserSnapshotWithCallbackBlock([&](auto, auto, auto, auto) {
        if (!std::exchange(again, true)) scan(*scanned);
    });
    EXPECT_THAT(namesOf(scanned->domains()), ElementsAre("Message", "Photo", "movies", "Photo", "movies"));
}

TEST_F(ScanTest, DomainsReferToTheirParserWeakly) {
    backup.add("Library/SMS/sms.db");
    auto scanned = parser();
    scan(*scanned);
    const auto domain = scanned->domains().front();
    EXPECT_EQ(domain->backupParser(), scanned);
    scanned.reset();
    EXPECT_EQ(domain->backupParser(), nullptr);
}

TEST_F(ScanTest, ParserKeepsItsSnapshot) {
    const auto snapshot = backup.snapshot();
    EXPECT_EQ(ZkMobileBackupParser::initWithBackupSnapshot(snapshot)->snapshot(), snapshot);
}

template <typename Parser>
class ParserSubclass : public testing::Test {};
using ParserSubclasses = testing::Types<ZkiTunesBackupParser, ZkiCloudBackupParser, ZkDeviceBackupParser>;
TYPED_TEST_SUITE(ParserSubclass, ParserSubclasses);

TYPED_TEST(ParserSubclass, ScansLikeItsBase) {
    BackupOnDisk backup;
    backup.add("Library/SMS/sms.db");
    const std::shared_ptr<TypeParam> parser = TypeParam::initWithBackupSnapshot(backup.snapshot());
    EXPECT_EQ(scan(*parser), scan(*ZkMobileBackupParser::initWithBackupSnapshot(backup.snapshot())));
}

/// Voicemail has none yet, the photo library's database gives a domain without pictures.
bool hasNoRecords(const ZkMobileBackupAppDomain& domain) {
    const auto* photos = dynamic_cast<const ZkMobileBackupPhotoDomain*>(&domain);
    return domain.exportName() == "Voicemail" || (photos != nullptr && photos->photos().empty());
}

TEST(SampleBackupScan, EveryDomainParsesAtOnceInBothKindsOfBackup) {
    for (const BackupIndex index : {BackupIndex::None, BackupIndex::Present}) {
        const TemporaryFolder folder;
        writeSampleBackup(folder.path(), index);
        const auto parser = ZkMobileBackupParser::initWithBackupSnapshot(snapshotOf(folder.path()));
        scan(*parser);
        std::atomic<std::size_t> running = parser->domains().size();
        for (const auto& domain : parser->domains()) {
            domain->parserWithCallbackBlock([&](std::int64_t state, std::atomic<bool>*, double) {
                if (state == 3 && --running == 0) MainQueue::stop();
            });
        }
        MainQueue::run();
        for (const auto& domain : parser->domains()) {
            EXPECT_EQ(domain->records().empty(), hasNoRecords(*domain)) << nameOf(domain);
        }
        ZkMobileBackupAppDomain::setAddressBookDomain(nullptr);
    }
}

}  // namespace
}  // namespace ZkMobileBackup
