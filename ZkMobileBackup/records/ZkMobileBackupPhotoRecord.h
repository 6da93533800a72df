#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ZkMobileBackup/records/InfoKeys.h"
#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "base/Image.h"

namespace ZkMobileBackup {

/// A picture: a photo that the backup holds as a file, or a thumbnail of one, which counts as deleted.
///
/// Its value: kPhotoRecordTitle (text, when the info has a name), kPhotoRecordCreateDate (date, when the info has one),
/// kPhotoRecordThumbnail (image) and kPhotoRecordResolution (size of that image, not of the photo). The image is a
/// handle that decodes its picture whenever somebody looks.
class ZKMB_API ZkMobileBackupPhotoRecord : public ZkMobileBackupAppDomainRecord {
public:
    // initWithPhotoInfo:
    /// A live photo of an info with kRawDBNameKey, kRawDBdataKey (path) and kRawDBdateKey; a thumbnail of one with
    /// kRawDBNameKey, kRawDBdataKey (bytes of a picture file; an addition of ours: an image, which is taken as it is),
    /// kThumbnailDateKey and kThumbnailDeletedKey. Null when no picture can be made of the file or the bytes. Of a
    /// photo wider than 300 pixels the image is one of 0.3 times the size.
    static std::shared_ptr<ZkMobileBackupPhotoRecord> initWithPhotoInfo(const Dictionary& info);
    // initWithDictionary:deleted:
    static std::shared_ptr<ZkMobileBackupPhotoRecord> initWithDictionary(std::optional<Dictionary> row, bool deleted);
    // recordKeys
    static const RecordKeys* recordKeys();
    const RecordKeys* keysOfClass() const override;

    // resizeImage:by:
    /// A picture of `factor` times the size; null for no image, and for a factor that leaves nothing of it.
    static std::shared_ptr<const Image> resizeImage(std::shared_ptr<const Image> image, double factor);

    // photoPath
    /// The live photo's file; nothing for a thumbnail.
    const std::optional<std::string>& photoPath() const { return photoPath_; }

protected:
    ZkMobileBackupPhotoRecord(std::optional<Dictionary> row, bool deleted, std::optional<std::string> photoPath = {});

private:
    const std::optional<std::string> photoPath_;
};

}  // namespace ZkMobileBackup
