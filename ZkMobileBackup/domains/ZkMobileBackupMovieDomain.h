#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

/// The movies of a backup. So far it only holds what a scan found; it has no records.
class ZKMB_API ZkMobileBackupMovieDomain : public ZkMobileBackupAppDomain {
public:
    // initWithMovoes: ("movoes" stands for movies)
    /// Dictionaries with kRawDBNameKey and kRawDBdataKey (path).
    static std::shared_ptr<ZkMobileBackupMovieDomain> initWithMovoes(std::vector<Dictionary> movoes);

    // parserWithCallbackBlock:
    /// Reports the end, (3, stop, 1.0), on the thread of the job, unlike every other domain. May be called again.
    void parserWithCallbackBlock(ParserCallback callback) override;
    // exportName: nothing, movies have no folder of their own.
    std::optional<std::string> exportName() const override;

    // --- Additions of ours -------------------------------------------------------------------------------------------

    std::string_view className() const override { return "ZkMobileBackupMovieDomain"; }
    const std::vector<Dictionary>& movoes() const { return movoes_; }

protected:
    explicit ZkMobileBackupMovieDomain(std::vector<Dictionary> movoes);

private:
    const std::vector<Dictionary> movoes_;
};

}  // namespace ZkMobileBackup
