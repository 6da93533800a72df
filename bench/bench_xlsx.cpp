// Writes the workbook of bench/WorkbookTexts.h, from rows in memory, in the manner of the profile that is named.
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "bench/WorkbookTexts.h"
#include "export/XlsxCreater.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

namespace {

Rows workbookRows() {
    Rows rows;
    for (int i = 0; i < kWorkbookRows; ++i) {
        Dictionary row;
        for (int column = 0; column < kWorkbookColumnCount; ++column) {
            row.set(kWorkbookColumns[column], workbookText(i, column));
        }
        rows.append(std::move(row));
    }
    return rows;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: bench_xlsx legacy|standard\n";
        return 2;
    }
    const TemporaryFolder folder;
    setenv("XDG_DATA_HOME", folder.path().c_str(), 1);
    const auto creator = XlsxCreater::initWithDictionary(workbookRows(), folder.path("Workbook"));
    creator->setProfile(std::string_view(argv[1]) == "legacy" ? Profile::kLegacy : Profile::kStandard);
    creator->startConvert();
    std::cerr << creator->failure();
    return creator->failure().empty() ? 0 : 1;
}
