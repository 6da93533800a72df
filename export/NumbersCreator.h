#pragma once

#include <memory>
#include <string>

#include "base/Api.h"
#include "export/PartWritingCreator.h"

namespace ZkMobileBackup {

class WriteNumberFiles;

/// Writes a table as a spreadsheet document of the Numbers application: a package whose table is filled, the header row
/// and one row for each row of the table. The document is made from the template "test.numbers", in the stage folder
/// "NumStage".
class ZKMB_API NumbersCreator : public PartWritingCreator {
public:
    // initWithDictionary:SavePath:
    /// A writer of `rows` (a list of dictionaries, whatever the name says) to `savePath`, a path without extension.
    static std::shared_ptr<NumbersCreator> initWithDictionary(Rows rows, std::string savePath);
    ~NumbersCreator() override;

    // initNumsFile
    /// Lays out the stage folder: the unpacked template and two empty folders that such documents are expected to have.
    void initNumsFile();

protected:
    NumbersCreator(Rows rows, std::string savePath);
    void prepareStage() override;
    void writeParts() override;

private:
    NumbersCreator(Rows rows, std::string savePath, std::shared_ptr<WriteNumberFiles> numberFiles);

    std::shared_ptr<WriteNumberFiles> numberFiles_;
};

}  // namespace ZkMobileBackup
