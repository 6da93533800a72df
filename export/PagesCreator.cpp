#include "export/PagesCreator.h"

#include <utility>

#include "export/PackageFormat.h"
#include "export/WritePagesFiles.h"

namespace ZkMobileBackup {

std::shared_ptr<PagesCreator> PagesCreator::initWithDictionary(Rows rows, std::string savePath) {
    return std::shared_ptr<PagesCreator>(new PagesCreator(std::move(rows), std::move(savePath)));
}

PagesCreator::PagesCreator(Rows rows, std::string savePath)
    : PagesCreator(std::move(rows), std::move(savePath), WritePagesFiles::init()) {}

PagesCreator::PagesCreator(Rows rows, std::string savePath, std::shared_ptr<WritePagesFiles> pagesFiles)
    : PartWritingCreator(kPagesPackage, std::move(rows), std::move(savePath), pagesFiles),
      pagesFiles_(std::move(pagesFiles)) {}

PagesCreator::~PagesCreator() = default;

void PagesCreator::prepareStage() {
    initPagesFile();
}

void PagesCreator::initPagesFile() {
    layTemplate();
}

void PagesCreator::writeParts() {
    pagesFiles_->writePages(DictionArr());
    takeFailure(*pagesFiles_);
}

}  // namespace ZkMobileBackup
