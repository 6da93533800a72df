#include <gmock/gmock.h>

#include "ZkMobileBackup/records/ZkMobileBackupAddressBookRecord.h"
#include "base/Log.h"

namespace ZkMobileBackup {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Dictionary exported(const Dictionary& row) {
    return *ZkMobileBackupAddressBookRecord::initWithDictionary(row, false)->exportValue();
}

TEST(AddressBookExport, HasSevenEntriesInOrder) {
    const Dictionary row{{"RowData_Identify_Key", "0x1"},
                         {"emailList", Array{"e@example.org"}},
                         {"name", "Ann"},
                         {"company", "Works"},
                         {"Note", "n"},
                         {"image", "NULL"},
                         {"mobilePhoneList", Array{"1", "2"}},
                         {"addressList", Array{"street"}},
                         {"homePhoneList", Array{"3"}}};
    const Dictionary expected{{"name", "Ann"},
                              {"company", "Works"},
                              {"mobilePhoneList", Array{"1", "2"}},
                              {"addressList", Array{"street"}},
                              {"homePhoneList", Array{"3"}},
                              {"emailList", Array{"e@example.org"}},
                              {"Note", "n"}};
    EXPECT_EQ(exported(row), expected);
}

TEST(AddressBookExport, MissingValuesAreEmptyTexts) {
    const Dictionary expected{{"name", ""},        {"company", ""},       {"mobilePhoneList", ""},
                              {"addressList", ""}, {"homePhoneList", ""}, {"emailList", ""},
                              {"Note", ""}};
    EXPECT_EQ(exported(Dictionary()), expected);
    EXPECT_EQ(*ZkMobileBackupAddressBookRecord::initWithDictionary(std::nullopt, true)->exportValue(), expected);
}

TEST(AddressBookExport, NullReadsEmptyInNameAndCompanyOnly) {
    const Dictionary row = exported({{"name", "NULL"}, {"company", "NULL"}, {"Note", "NULL"}});
    EXPECT_EQ(*row.text("name"), "");
    EXPECT_EQ(*row.text("company"), "");
    EXPECT_EQ(*row.text("Note"), "NULL");
}

TEST(AddressBookExport, NothingIsCutOrCleaned) {
    const Dictionary row = exported({{"name", "a\nb"}, {"Note", "\tx"}, {"emailList", Array{"c\nd"}}});
    EXPECT_EQ(*row.text("name"), "a\nb");
    EXPECT_EQ(*row.text("Note"), "\tx");
    EXPECT_EQ(*row.find("emailList"), Value(Array{"c\nd"}));
}

class AddressBookImage : public ::testing::Test {
protected:
    AddressBookImage() {
        setLogSink([this](std::string_view line) { lines_.emplace_back(line); });
    }
    ~AddressBookImage() override { setLogSink({}); }
    void make(std::optional<Dictionary> row) {
        ZkMobileBackupAddressBookRecord::initWithDictionary(std::move(row), false);
    }
    std::vector<std::string> lines_;
};

TEST_F(AddressBookImage, IsWrittenToTheLog) {
    make(Dictionary{{"image", "FFD8"}});
    EXPECT_THAT(lines_, ElementsAre("FFD8"));
}

TEST_F(AddressBookImage, EmptyTextIsWrittenToo) {
    make(Dictionary{{"image", ""}});
    EXPECT_THAT(lines_, ElementsAre(""));
}

TEST_F(AddressBookImage, NullOrMissingIsNotWritten) {
    make(Dictionary{{"image", "NULL"}});
    make(Dictionary{{"name", "a"}});
    make(std::nullopt);
    EXPECT_THAT(lines_, IsEmpty());
}

}  // namespace
}  // namespace ZkMobileBackup
