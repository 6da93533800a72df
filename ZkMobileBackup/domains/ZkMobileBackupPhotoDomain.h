#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ZkMobileBackup/domains/ZkMobileBackupFileDomain.h"

namespace ZkMobileBackup {

class Image;
class OutputPaths;

/// The pictures of a backup: the photos that it holds as files, and as deleted records the thumbnails of one of the
/// stores (".ithmb") that the phone's photo library keeps. It does not read the photo database. Its records are
/// ZkMobileBackupPhotoRecord objects.
class ZKMB_API ZkMobileBackupPhotoDomain : public ZkMobileBackupFileDomain {
public:
    // init: a domain without pictures.
    static std::shared_ptr<ZkMobileBackupPhotoDomain> init();
    // initWithPhotos:ithmbs:
    /// `photos`: dictionaries with kRawDBNameKey, kRawDBdataKey (path) and kRawDBdateKey. `ithmbs`: thumbnail stores,
    /// with kThumbnailStorePathKey and kThumbnailStoreNameKey.
    static std::shared_ptr<ZkMobileBackupPhotoDomain> initWithPhotos(std::vector<Dictionary> photos,
                                                                     std::vector<Dictionary> ithmbs);

    // parserWithCallbackBlock:
    /// Makes the records on the background queue; returns at once. Through the main queue the callback hears
    /// (1, stop, photos so far / all photos * 0.5) for each photo, also for one that gives no record, and at the end
    /// (3, stop, 1.0); thumbnails report no progress. The stop flag is looked at after each photo; it ends the parse
    /// without a further call, see setStoppedHandler. Once the photos are done, the thumbnails cannot be stopped.
    /// Called again, all records are appended once more. A thumbnail store that can be opened but not be read ends the
    /// process with a line on standard error.
    void parserWithCallbackBlock(ParserCallback callback) override;
    // exportName
    std::optional<std::string> exportName() const override;

    // Steps of a parse, made by parserWithCallbackBlock on its thread. All domains of the process share one bitmap
    // header that _reset_head writes and _write_one_bmp reads: who calls these must see to it that no domain of the
    // process is in one of them meanwhile. Parses take turns by themselves.

    // _bestThumbnail:
    /// The store with the widest thumbnails, of several the first; null for an empty list. Belongs to `ithmbs`.
    const Dictionary* _bestThumbnail(const std::vector<Dictionary>& ithmbs) const;
    // _reset_head:
    /// Makes the bitmap header and the slot size those of a store, chosen by its kThumbnailStoreNameKey.
    void _reset_head(const Dictionary& ithmb);
    // _read_ithmb_file:
    /// Makes a record of each slot of a store that is not dark, as _write_one_bmp does, but of an image that reads its
    /// slot in the store again whenever somebody looks, and has no pixels once the store lacks it. Nothing for null and
    /// when the file is not regular or cannot be opened; any other failure ends the process.
    void _read_ithmb_file(const char* path);
    // _isDarkImage:size:
    /// Whether no pixel's low byte is set, among the first `size` bytes; so it is for a size below 1.
    bool _isDarkImage(std::span<const std::uint8_t> bytes, std::int32_t size) const;
    // _write_one_bmp:
    /// Makes the record of a slot's thumbnail: "_1", "_2", ... by the number of thumbnails counted so far. It has a
    /// copy of the slot's pixels.
    void _write_one_bmp(std::span<const std::uint8_t> slot);
    // _isDeleted:
    /// Whether all bytes are 0. Kept for hosts; nothing here calls it.
    bool _isDeleted(std::span<const std::uint8_t, 16> bytes) const;

    // saveImage:toFile:
    /// Writes a picture as a JPEG file of quality 90 to the first free name after `path` (see GetOutPutFile), complete
    /// or not at all; as in an export, `writtenPaths` or `firstFailure` tells what became of it. Returns whether it was
    /// written. Any thread.
    bool saveImage(const std::shared_ptr<const Image>& image, const std::string& path);

    // --- Additions of ours -------------------------------------------------------------------------------------------

    std::string_view className() const override { return "ZkMobileBackupPhotoDomain"; }
    const std::vector<Dictionary>& photos() const { return photos_; }
    const std::vector<Dictionary>& ithmbs() const { return ithmbs_; }

protected:
    ZkMobileBackupPhotoDomain(std::vector<Dictionary> photos, std::vector<Dictionary> ithmbs);

    bool exportRecords(const Records& marked, const std::string& outputPath) override;

private:
    bool runParse(Date start);
    bool readPhotos();
    void readThumbnails();
    void appendThumbnail(Value picture);
    void appendRecord(const Dictionary& info);
    void exportRecord(const ZkMobileBackupAppDomainRecord& record, const std::string& folder, OutputPaths& paths);
    void copyPhoto(const ZkMobileBackupAppDomainRecord& record, const std::string& path, OutputPaths& paths);
    bool saveImage(const std::shared_ptr<const Image>& image, const std::string& path, OutputPaths& paths);

    const std::vector<Dictionary> photos_;
    const std::vector<Dictionary> ithmbs_;

    std::mutex parseMutex_;  // parses of one domain take turns
    // The parse's:
    Date ithmbDate_;  // when it was asked for
    std::int32_t deletedPhotoCount_ = 0;
    std::int32_t bmpSize_ = 0;  // bytes of a thumbnail's pixels
};

}  // namespace ZkMobileBackup
