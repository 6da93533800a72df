#pragma once

#include <memory>
#include <string>

#include "base/Api.h"
#include "export/PartWritingCreator.h"

namespace ZkMobileBackup {

class WritePagesFiles;

/// Writes a table as a document of the Pages application, one page that holds the table. Of its keys 60 become columns.
/// The document is made from the template "test.pages", in the stage folder "PgsStage".
class ZKMB_API PagesCreator : public PartWritingCreator {
public:
    // initWithDictionary:SavePath:
    /// A writer of `rows` (a list of dictionaries, whatever the name says) to `savePath`, a path without extension.
    static std::shared_ptr<PagesCreator> initWithDictionary(Rows rows, std::string savePath);
    ~PagesCreator() override;

    // initPagesFile
    /// Lays out the stage folder: the unpacked template and two empty folders that such documents are expected to have.
    void initPagesFile();

protected:
    PagesCreator(Rows rows, std::string savePath);
    void prepareStage() override;
    void writeParts() override;

private:
    PagesCreator(Rows rows, std::string savePath, std::shared_ptr<WritePagesFiles> pagesFiles);

    std::shared_ptr<WritePagesFiles> pagesFiles_;
};

}  // namespace ZkMobileBackup
