#pragma once

#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"

namespace ZkMobileBackup {

// Keys of the dictionary that describes a thumbnail store. Both are texts.
inline constexpr std::string_view kThumbnailStorePathKey = "path";  ///< of the file
inline constexpr std::string_view kThumbnailStoreNameKey = "name";  ///< of the file, as the phone had it

/// The pictures of a backup. So far it only holds what a scan found; it has no records.
class ZKMB_API ZkMobileBackupPhotoDomain : public ZkMobileBackupAppDomain {
public:
    // init: a domain without pictures.
    static std::shared_ptr<ZkMobileBackupPhotoDomain> init();
    // initWithPhotos:ithmbs:
    /// `photos`: dictionaries with kRawDBNameKey, kRawDBdataKey (path) and kRawDBdateKey. `ithmbs`: thumbnail stores,
    /// with kThumbnailStorePathKey and kThumbnailStoreNameKey.
    static std::shared_ptr<ZkMobileBackupPhotoDomain> initWithPhotos(std::vector<Dictionary> photos,
                                                                     std::vector<Dictionary> ithmbs);

    // parserWithCallbackBlock:
    /// Reports the end, (3, stop, 1.0), through the main queue. May be called again.
    void parserWithCallbackBlock(ParserCallback callback) override;
    // exportName
    std::optional<std::string> exportName() const override;

    // --- Additions of ours -------------------------------------------------------------------------------------------

    std::string_view className() const override { return "ZkMobileBackupPhotoDomain"; }
    const std::vector<Dictionary>& photos() const { return photos_; }
    const std::vector<Dictionary>& ithmbs() const { return ithmbs_; }

protected:
    ZkMobileBackupPhotoDomain(std::vector<Dictionary> photos, std::vector<Dictionary> ithmbs);

private:
    const std::vector<Dictionary> photos_;
    const std::vector<Dictionary> ithmbs_;
};

}  // namespace ZkMobileBackup
