#include "export/XlsxCreater.h"

#include <utility>

#include "export/PackageFormat.h"
#include "export/WriteXlsxFile.h"
#include "platform/Process.h"

namespace ZkMobileBackup {

std::shared_ptr<XlsxCreater> XlsxCreater::initWithDictionary(Rows rows, std::string savePath) {
    return std::shared_ptr<XlsxCreater>(new XlsxCreater(std::move(rows), std::move(savePath)));
}

XlsxCreater::XlsxCreater(Rows rows, std::string savePath)
    : XlsxCreater(std::move(rows), std::move(savePath), WriteXlsxFile::init()) {}

XlsxCreater::XlsxCreater(Rows rows, std::string savePath, std::shared_ptr<WriteXlsxFile> xlsxFiles)
    : PartWritingCreator(kXlsxPackage, std::move(rows), std::move(savePath), xlsxFiles),
      xlsxFiles_(std::move(xlsxFiles)) {}

XlsxCreater::~XlsxCreater() = default;

void XlsxCreater::prepareStage() {
    initXlsxFile();
}

void XlsxCreater::initXlsxFile() {
    layTemplate();
}

void XlsxCreater::writeParts() {
    xlsxFiles_->writeXlsx(DictionArr());
    takeFailure(*xlsxFiles_);
}

std::string XlsxCreater::pack(const std::string& stageFolder, const std::string& package) {
    // "-m" moves the files out of the stage folder, what is not named here stays out of the workbook.
    return runProgram({"/usr/bin/zip", "-q", "-Xr", "-m", package, "_rels", "[Content_Types].xml", "docProps", "xl"},
                      stageFolder);
}

}  // namespace ZkMobileBackup
