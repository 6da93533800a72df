#pragma once

#include <string_view>

namespace ZkMobileBackup {

// Keys of the info dictionary that describes a domain's data, a photo or a movie.
inline constexpr std::string_view kRawDBNameKey = "RawDBNameKey";  ///< text: file name without its extension
inline constexpr std::string_view kRawDBdataKey = "RawDBdataKey";  ///< bytes of a database, or a file's path as text
inline constexpr std::string_view kRawDBdateKey = "RawDBdateKey";  ///< date: a photo's change time

// Keys of the info dictionary of a thumbnail, which has the bytes of a picture file or, an addition of ours, an image
// under kRawDBdataKey.
inline constexpr std::string_view kThumbnailDateKey = "date";        ///< date: when the parse was asked for
inline constexpr std::string_view kThumbnailDeletedKey = "deleted";  ///< any value; tells it from a photo's info

// Keys of the dictionary that describes a thumbnail store. Both are texts.
inline constexpr std::string_view kThumbnailStorePathKey = "path";  ///< of the file
inline constexpr std::string_view kThumbnailStoreNameKey = "name";  ///< of the file, as the phone had it

}  // namespace ZkMobileBackup
