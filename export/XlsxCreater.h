#pragma once

#include <memory>
#include <string>

#include "base/Api.h"
#include "export/PartWritingCreator.h"

namespace ZkMobileBackup {

class WriteXlsxFile;

/// Writes a table as a workbook with one sheet, packed by "/usr/bin/zip". ("Creater" stands for creator.)
class ZKMB_API XlsxCreater : public PartWritingCreator {
public:
    // initWithDictionary:SavePath:
    /// A writer of `rows` (a list of dictionaries, whatever the name says) to `savePath`, a path without extension.
    static std::shared_ptr<XlsxCreater> initWithDictionary(Rows rows, std::string savePath);
    ~XlsxCreater() override;

    /// The writer of the parts, never null.
    const std::shared_ptr<WriteXlsxFile>& xlsxFiles() const { return xlsxFiles_; }

    // initXlsxFile
    /// Makes the stage folder anew and unpacks the template "test.xlsx" into it.
    void initXlsxFile();

protected:
    XlsxCreater(Rows rows, std::string savePath);
    void prepareStage() override;
    void writeParts() override;
    std::string pack(const std::string& stageFolder, const std::string& package) override;

private:
    XlsxCreater(Rows rows, std::string savePath, std::shared_ptr<WriteXlsxFile> xlsxFiles);

    std::shared_ptr<WriteXlsxFile> xlsxFiles_;
};

}  // namespace ZkMobileBackup
