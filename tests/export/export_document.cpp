// Writes one document, in a process of its own:
//   export_document FORMAT SAVEPATH MARK ROWS [RESOURCES]
// Every cell holds the mark. Prints where the document was written, or why not, and whether the host was asked to end.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "base/Resources.h"
#include "base/Termination.h"
#include "export/DlxExporter.h"

namespace ZkMobileBackup {
namespace {

Rows markedRows(const std::string& mark, std::size_t count) {
    return Rows(std::vector<Dictionary>(count, Dictionary{{"A", mark}, {"B", mark}}));
}

std::shared_ptr<FileCreator> writerOf(const std::string& format, Rows rows, const std::string& savePath) {
    const auto exporter = DlxExporter::init();
    if (format == "docx") return exporter->docxExporterWithData(std::move(rows), savePath);
    if (format == "xlsx") return exporter->xlsxExporterWithData(std::move(rows), savePath);
    if (format == "numbers") return exporter->numbersExporterWithData(std::move(rows), savePath);
    return exporter->pagesExporterWithData(std::move(rows), savePath);
}

int exportDocument(const std::string& format, const std::string& savePath, const std::string& mark, std::size_t rows) {
    setTerminationHandler([] { std::puts("asked to end"); });
    const auto writer = writerOf(format, markedRows(mark, rows), savePath);
    writer->startConvert();
    if (!writer->writtenPath().empty()) std::printf("written %s\n", writer->writtenPath().c_str());
    if (!writer->failure().empty()) std::printf("failure %s\n", writer->failure().c_str());
    return writer->failure().empty() ? 0 : 1;
}

}  // namespace
}  // namespace ZkMobileBackup

int main(int argc, char** argv) {
    if (argc != 5 && argc != 6) return 2;
    if (argc == 6) ZkMobileBackup::setResourceFolder(argv[5]);
    return ZkMobileBackup::exportDocument(argv[1], argv[2], argv[3], std::strtoull(argv[4], nullptr, 10));
}
