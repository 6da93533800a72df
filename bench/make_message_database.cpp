// make_message_database PATH ROWS [tenth|half]: a database like that of a phone's messages, with as many rows of 22
// columns and about 240 bytes each; a tenth or every second of them is then deleted, none without a third argument.
#include <filesystem>
#include <iostream>
#include <string>

#include "tests/support/DatabaseBuilder.h"

using namespace ZkMobileBackup;

namespace {

constexpr const char* kMessageTable =
    "CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT NOT NULL, text TEXT, replace INTEGER "
    "DEFAULT 0, service_center TEXT, handle_id INTEGER DEFAULT 0, subject TEXT, country TEXT, attributedBody BLOB, "
    "version INTEGER DEFAULT 0, type INTEGER DEFAULT 0, service TEXT, account TEXT, account_guid TEXT, error INTEGER "
    "DEFAULT 0, date INTEGER, date_read INTEGER, date_delivered INTEGER, is_delivered INTEGER DEFAULT 0, is_finished "
    "INTEGER DEFAULT 0, is_emote INTEGER DEFAULT 0, is_from_me INTEGER DEFAULT 0)";

std::string insertRows(const std::string& count) {
    return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + count +
           ") INSERT INTO message SELECT i, printf('guid-%08d-%08d', i, i * 7919 % 99991), "
           "printf('Message number %d: ', i) || substr('Über den Wolken ist es hell. The quick brown fox jumps over "
           "the lazy dog, said nobody at all today. 明日の会議は午後三時からです。', 1 + i % 23, 60 + i % 41), 0, "
           "NULL, "
           "1 + i % 97, NULL, 'de', x'0102030405060708', 10, 0, 'text message', 'owner@example.com', 'account-guid', "
           "0, "
           "384000000 + i * 60, 384000030 + i * 60, 384000020 + i * 60, 1, 1, 0, i % 2 FROM n";
}

// Half of the tenth are single rows, which leave holes in pages; the other half is a range, which frees pages.
std::string deleteRows(const std::string& share, const std::string& count) {
    if (share == "half") return "DELETE FROM message WHERE ROWID % 2 = 0";
    if (share == "tenth") {
        return "DELETE FROM message WHERE ROWID % 20 = 7 OR ROWID BETWEEN " + count + " / 2 AND " + count + " / 2 + " +
               count + " / 20";
    }
    return "";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: make_message_database PATH ROWS [tenth|half]\n";
        return 2;
    }
    const std::string count = argv[2];
    DatabaseBuilder database;
    database.exec(kMessageTable).exec(insertRows(count)).exec(deleteRows(argc > 3 ? argv[3] : "", count));
    std::filesystem::copy_file(database.path(), argv[1], std::filesystem::copy_options::overwrite_existing);
    return 0;
}
