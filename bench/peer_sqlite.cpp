// peer_sqlite FILE: steps through every row of every table with libsqlite3 and takes each column as text.
#include <iostream>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace {

std::vector<std::string> tableNames(sqlite3* database) {
    std::vector<std::string> names{"sqlite_master"};
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, "SELECT name FROM sqlite_master WHERE type = 'table'", -1, &statement, nullptr);
    while (sqlite3_step(statement) == SQLITE_ROW) {
        names.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
    }
    sqlite3_finalize(statement);
    return names;
}

struct Count {
    long long rows = 0;
    long long bytes = 0;
};

Count readTable(sqlite3* database, const std::string& name) {
    Count count;
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, ("SELECT * FROM \"" + name + "\"").c_str(), -1, &statement, nullptr);
    while (sqlite3_step(statement) == SQLITE_ROW) {
        ++count.rows;
        for (int column = 0; column < sqlite3_column_count(statement); ++column) {
            if (sqlite3_column_text(statement, column)) count.bytes += sqlite3_column_bytes(statement, column);
        }
    }
    sqlite3_finalize(statement);
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    sqlite3* database = nullptr;
    if (argc != 2 || sqlite3_open_v2(argv[1], &database, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
        std::cerr << "usage: peer_sqlite FILE\n";
        return 2;
    }
    for (const std::string& name : tableNames(database)) {
        const Count count = readTable(database, name);
        std::cout << name << ": " << count.rows << " rows, " << count.bytes << " bytes of text\n";
    }
    sqlite3_close(database);
    return 0;
}
