#pragma once

#include <string>

namespace ZkMobileBackup {

// The cells of the workbook that both sides write: short and long texts, some of them the same in many rows.

inline constexpr int kWorkbookRows = 50'000;
inline constexpr const char* kWorkbookColumns[] = {"Name",     "Phone",   "Date", "Type",
                                                   "Duration", "Company", "Mail", "Note"};
inline constexpr int kWorkbookColumnCount = 8;

inline std::string workbookText(int row, int column) {
    const std::string number = std::to_string(row);
    switch (column) {
        case 0:
            return "Person " + number;
        case 1:
            return "+1555010" + number;
        case 2:
            return "2013-03-" + std::to_string(10 + row % 20) + " 05:" + std::to_string(10 + row % 50);
        case 3:
            return row % 2 == 0 ? "Incoming" : "Outgoing";
        case 4:
            return number + " Seconds";
        case 5:
            return "Company " + std::to_string(row % 977);
        case 6:
            return "person" + number + "@example.com";
        default:
            return "The quick brown fox jumps over the lazy dog, said number " + number;
    }
}

}  // namespace ZkMobileBackup
