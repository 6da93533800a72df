// Writes the workbook of bench/WorkbookTexts.h through libxlsxwriter in its default mode.
#include <xlsxwriter.h>

#include "bench/WorkbookTexts.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

int main() {
    const TemporaryFolder folder;
    lxw_workbook* workbook = workbook_new(folder.path("Workbook.xlsx").c_str());
    lxw_worksheet* sheet = workbook_add_worksheet(workbook, nullptr);
    for (lxw_col_t column = 0; column < kWorkbookColumnCount; ++column) {
        worksheet_write_string(sheet, 0, column, kWorkbookColumns[column], nullptr);
    }
    for (int row = 0; row < kWorkbookRows; ++row) {
        for (lxw_col_t column = 0; column < kWorkbookColumnCount; ++column) {
            const auto line = static_cast<lxw_row_t>(row + 1);
            worksheet_write_string(sheet, line, column, workbookText(row, column).c_str(), nullptr);
        }
    }
    return workbook_close(workbook) == LXW_NO_ERROR ? 0 : 1;
}
