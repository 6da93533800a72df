#include "ZkMobileBackup/domains/ZkMobileBackupMovieDomain.h"

#include <utility>

#include "platform/GlobalQueue.h"

namespace ZkMobileBackup {

std::shared_ptr<ZkMobileBackupMovieDomain> ZkMobileBackupMovieDomain::initWithMovoes(std::vector<Dictionary> movoes) {
    return connected(std::shared_ptr<ZkMobileBackupMovieDomain>(new ZkMobileBackupMovieDomain(std::move(movoes))));
}

ZkMobileBackupMovieDomain::ZkMobileBackupMovieDomain(std::vector<Dictionary> movoes) : movoes_(std::move(movoes)) {}

void ZkMobileBackupMovieDomain::parserWithCallbackBlock(ParserCallback callback) {
    setParserCallback(std::move(callback));
    // Hosts rely on this one call coming from the job's own thread: it must not go through the main queue.
    submitJob(QueuePriority::kDefault, [this, self = shared_from_this()] { callParserCallback(kParserFinished, 1.0); });
}

std::optional<std::string> ZkMobileBackupMovieDomain::exportName() const {
    return std::nullopt;
}

}  // namespace ZkMobileBackup
