#pragma once

#include <array>
#include <cstdint>
#include <ctime>
#include <minizip/unzip.h>
#include <optional>
#include <span>
#include <string>
#include <zlib.h>

#include "export/ZipCipher.h"

namespace ZkMobileBackup {

/// Reads the current entry of an open archive; the entry is closed with the object. minizip hands out the stored bytes
/// and they are decrypted and inflated here: as distributed it cannot decrypt, and it would cut an entry at the size
/// that the entry claims. What an entry claims about its uncompressed size is believed nowhere.
class ZipEntryReader {
public:
    /// The archive must outlive the reader and stay at this entry.
    explicit ZipEntryReader(unzFile archive) : archive_(archive) {}
    ~ZipEntryReader();
    ZipEntryReader(const ZipEntryReader&) = delete;
    ZipEntryReader& operator=(const ZipEntryReader&) = delete;

    // The steps, in order. Each returns false on failure.

    /// Fails without a current entry, and for an entry that is neither stored nor deflated.
    bool open();
    bool readInfo();
    /// Gets an encrypted entry ready for reading; the others need no password. Fails without the right password.
    bool unlock(const std::string& password);

    /// As the archive has it, up to its first NUL.
    const std::string& name() const { return name_; }
    /// The entry's date, which has no zone, taken as local time. Months and days beyond the calendar roll over.
    std::time_t modificationTime() const;

    /// Reads the next bytes of the content. Returns their number, 0 at the end, and a negative number when the content
    /// is damaged.
    int read(std::span<std::uint8_t> chunk);
    /// Whether what was read so far has the checksum that the entry states for the whole.
    bool checksumMatches() const { return checksum_ == info_.crc; }

private:
    int readStoredBytes(std::span<std::uint8_t> chunk);
    int readInflated(std::span<std::uint8_t> chunk);
    int inflateSome();

    unzFile archive_;  // not owned
    int method_ = 0;
    unz_file_info info_{};
    std::string name_;
    std::optional<ZipCipher> cipher_;  // for an encrypted entry
    z_stream stream_{};
    std::array<std::uint8_t, 4096> input_{};  // what stream_ reads from
    bool streamEnded_ = false;
    uLong checksum_ = 0;  // of what was read
};

}  // namespace ZkMobileBackup
