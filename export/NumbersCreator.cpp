#include "export/NumbersCreator.h"

#include <utility>

#include "export/PackageFormat.h"
#include "export/WriteNumberFiles.h"

namespace ZkMobileBackup {

std::shared_ptr<NumbersCreator> NumbersCreator::initWithDictionary(Rows rows, std::string savePath) {
    return std::shared_ptr<NumbersCreator>(new NumbersCreator(std::move(rows), std::move(savePath)));
}

NumbersCreator::NumbersCreator(Rows rows, std::string savePath)
    : NumbersCreator(std::move(rows), std::move(savePath), WriteNumberFiles::init()) {}

NumbersCreator::NumbersCreator(Rows rows, std::string savePath, std::shared_ptr<WriteNumberFiles> numberFiles)
    : PartWritingCreator(kNumbersPackage, std::move(rows), std::move(savePath), numberFiles),
      numberFiles_(std::move(numberFiles)) {}

NumbersCreator::~NumbersCreator() = default;

void NumbersCreator::prepareStage() {
    initNumsFile();
}

void NumbersCreator::initNumsFile() {
    layTemplate();
}

void NumbersCreator::writeParts() {
    numberFiles_->writeNumbers(DictionArr());
    takeFailure(*numberFiles_);
}

}  // namespace ZkMobileBackup
