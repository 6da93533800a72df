// Time of the notes join and of the calendar's location look-up at three sizes. Prints "notes ROWS SECONDS" and
// "calendar ROWS SECONDS" for each.
#include <algorithm>
#include <iostream>
#include <string>

#include "bench/Measure.h"
#include "recovery/DlxSQLiteParser.h"
#include "tests/support/DatabaseBuilder.h"

using namespace ZkMobileBackup;

namespace {

constexpr int kRuns = 3;
constexpr int kLargestKey = 16'383;

std::string numbersUpTo(int count) {
    return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) + ") ";
}

std::shared_ptr<DlxSQLiteParser> parsed(const DatabaseBuilder& database) {
    const auto parser = DlxSQLiteParser::initWithDBPath(database.path());
    parser->parser();
    return parser;
}

std::shared_ptr<DlxSQLiteParser> notes(int count) {
    DatabaseBuilder database;
    database.exec("CREATE TABLE ZNOTE (Z_PK INTEGER PRIMARY KEY, ZMODIFICATIONDATE TIMESTAMP, ZTITLE TEXT)");
    database.exec("CREATE TABLE ZNOTEBODY (Z_PK INTEGER PRIMARY KEY, ZOWNER INTEGER, ZCONTENT TEXT)");
    database.exec(numbersUpTo(count) + "INSERT INTO ZNOTE SELECT i, 384000000 + i, 'Title ' || i FROM n");
    database.exec(numbersUpTo(count) + "INSERT INTO ZNOTEBODY SELECT i, i, 'Text of note ' || i FROM n");
    return parsed(database);
}

std::shared_ptr<DlxSQLiteParser> calendar(int count) {
    DatabaseBuilder database;
    database.exec(
        "CREATE TABLE CalendarItem (ROWID INTEGER PRIMARY KEY, summary TEXT, location_id INTEGER, start_date INTEGER, "
        "end_date INTEGER, entity_type INTEGER)");
    database.exec("CREATE TABLE Location (ROWID INTEGER PRIMARY KEY, owner INTEGER, title TEXT)");
    // Events name their locations in no order. Keys above kLargestKey do not come out of the file as they went in.
    database.exec(numbersUpTo(count) + "INSERT INTO CalendarItem SELECT i, 'Event ' || i, 1 + i * 7919 % " +
                  std::to_string(std::min(count, kLargestKey)) + ", 384000000 + i, 384003600 + i, 2 FROM n");
    database.exec(numbersUpTo(count) + "INSERT INTO Location SELECT i, i, 'Place ' || i FROM n");
    return parsed(database);
}

}  // namespace

int main() {
    for (const int count : {1'000, 10'000, 100'000}) {
        const auto noteParser = notes(count);
        const auto calendarParser = calendar(count);
        const double noteTime = leastSeconds(kRuns, [&] { noteParser->customTableForNotesDB(); });
        const double calendarTime = leastSeconds(kRuns, [&] { calendarParser->customTableForCalendarDB(); });
        std::cout << "notes " << count << ' ' << noteTime << "\ncalendar " << count << ' ' << calendarTime << '\n';
    }
    return 0;
}
