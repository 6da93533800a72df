#include "ZkMobileBackup/domains/ZkMobileBackupPhotoDomain.h"

#include <utility>

#include "platform/GlobalQueue.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupPhotoDomain> ZkMobileBackupPhotoDomain::init() {
    return initWithPhotos({}, {});
}

std::shared_ptr<ZkMobileBackupPhotoDomain> ZkMobileBackupPhotoDomain::initWithPhotos(std::vector<Dictionary> photos,
                                                                                     std::vector<Dictionary> ithmbs) {
    return connected(std::shared_ptr<ZkMobileBackupPhotoDomain>(
        new ZkMobileBackupPhotoDomain(std::move(photos), std::move(ithmbs))));
}

ZkMobileBackupPhotoDomain::ZkMobileBackupPhotoDomain(std::vector<Dictionary> photos, std::vector<Dictionary> ithmbs)
    : photos_(std::move(photos)), ithmbs_(std::move(ithmbs)) {}

void ZkMobileBackupPhotoDomain::parserWithCallbackBlock(ParserCallback callback) {
    setParserCallback(std::move(callback));
    submitJob(QueuePriority::kBackground, [self = shared_from_this()]() mutable { postParserEnd(std::move(self)); });
}

std::optional<std::string> ZkMobileBackupPhotoDomain::exportName() const {
    return "Photo";
}

}  // namespace ZkMobileBackup
