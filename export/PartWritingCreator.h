#pragma once

#include <memory>
#include <string>

#include "export/PackagedCreator.h"

namespace ZkMobileBackup {

/// Base of the packaged writers that hand their parts to a writer of its own, which reports progress to the same
/// delegate. A request to stop is kept from that writer on purpose: the parts are written to their end, then nothing is
/// packed.
class ZKMB_API PartWritingCreator : public PackagedCreator {
public:
    // Each sets the value here and for the part writer.
    void setFileCreatorDelegate(FileCreatorDelegate* delegate) override;
    void setIndex(std::int64_t index) override;
    void setCount(std::int64_t count) override;
    void setProfile(Profile profile) override;

protected:
    PartWritingCreator(const PackageFormat& format, Rows rows, std::string savePath,
                       std::shared_ptr<FileCreator> partWriter);

private:
    std::shared_ptr<FileCreator> partWriter_;
};

}  // namespace ZkMobileBackup
