#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/Browser.h"
#include "tests/support/DatabaseBuilder.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/SmallBackup.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

constexpr int kMessages = 2000;

/// Of the characters that documents show in lists.
std::string messageText(int number) {
    return "Message " + std::to_string(number) + (number % 2 == 0 ? " — Привет 😀" : ": 明日の会議");
}

/// One long conversation with somebody from the sample contacts.
std::vector<std::uint8_t> longConversation() {
    DatabaseBuilder database;
    database.exec("CREATE TABLE message (ROWID INTEGER PRIMARY KEY, text TEXT, is_from_me INTEGER, date INTEGER)");
    database.exec("CREATE TABLE chat_message_join (chat_id INTEGER, message_id INTEGER)");
    database.exec(
        "CREATE TABLE chat (ROWID INTEGER PRIMARY KEY, a TEXT, b TEXT, c TEXT, d TEXT, e TEXT, chat_identifier TEXT)");
    database.exec("BEGIN");
    database.insert("chat", {1, "", "", "", "", "", "+15550100123"});
    for (int number = 1; number <= kMessages; ++number) {
        database.insert("message", {number, messageText(number), number % 2, 384'000'000 + 60 * number});
        database.insert("chat_message_join", {1, number});
    }
    database.exec("COMMIT");
    return database.bytes();
}

class RecoveredPage : public testing::Test {
protected:
    RecoveredPage() {
        backup_.add("AddressBook.sqlitedb", sampleAddressBook());
        backup_.add("sms.db", longConversation());
    }

    /// What the browser shows in the table of a domain's live records.
    std::string tableOf(const std::string& domain) const {
        EXPECT_THAT(runTool({"export", backup_.path(), "--output", folder_.path("out"), "--type", "html", "--domain",
                             domain, "--only", "live"}),
                    SucceedsSilently());
        const std::string page = domOf(folder_.path("out/Velmora Retrievo/" + domain + ".html"));
        const std::size_t start = page.find("<table");
        const std::size_t end = page.find("</table>");
        return start < end ? page.substr(start, end - start) : "";
    }

    SmallBackup backup_;
    TemporaryFolder folder_;
};

/// Each text behind the one before; the first that is not, or nothing.
std::string missingIn(const std::string& page, const std::vector<std::string>& texts) {
    std::size_t position = 0;
    for (const std::string& text : texts) {
        position = page.find(text, position);
        if (position == std::string::npos) return text;
        position += text.size();
    }
    return "";
}

TEST_F(RecoveredPage, HasEveryMessageOfALongConversationInItsOrder) {
    std::vector<std::string> texts;
    for (int number = 1; number <= kMessages; ++number) {
        texts.push_back(number % 2 == 1 ? "Send:2013-03-" : "Received:2013-03-");
        texts.push_back(messageText(number));
    }
    const std::string page = tableOf("Message");
    EXPECT_EQ(missingIn(page, texts), "");
    for (const char* text : {"Amelia Hartley", "+15550100123"}) EXPECT_EQ(missingIn(page, {text}), "");
}

TEST_F(RecoveredPage, HasEveryEntryOfTheListsOfContacts) {
    const std::string page = tableOf("Contacts");
    for (const char* text : {"Amelia Hartley", "+1-555-010-0123", "555-0199", "amelia@example.com",
                             "12 Harbour Street, Springfield", "Prefers mornings", "さくら 山本", "sakura@example.jp",
                             "京都市左京区一丁目", "दीपा शर्मा", "Rosa 🌹 Delgado"}) {
        EXPECT_EQ(missingIn(page, {text}), "");
    }
}

}  // namespace
}  // namespace ZkMobileBackup
