#include "export/ZipEntryReader.h"

namespace ZkMobileBackup {

namespace {

constexpr int kStored = 0;

// Bits of an entry's flags.
constexpr uLong kEncrypted = 1 << 0;
constexpr uLong kChecksumFollows = 1 << 3;

/// The last byte of an encrypted entry's header, by which a wrong password is told. Writers that know the checksum only
/// afterwards take the time instead.
std::uint8_t checkByte(const unz_file_info& info) {
    return static_cast<std::uint8_t>((info.flag & kChecksumFollows) != 0 ? info.dosDate >> 8 : info.crc >> 24);
}

}  // namespace

ZipEntryReader::~ZipEntryReader() {
    inflateEnd(&stream_);
    unzCloseCurrentFile(archive_);
}

bool ZipEntryReader::open() {
    constexpr int kRaw = 1;
    if (unzOpenCurrentFile2(archive_, &method_, nullptr, kRaw) != UNZ_OK) return false;
    return method_ == kStored || (method_ == Z_DEFLATED && inflateInit2(&stream_, -MAX_WBITS) == Z_OK);
}

bool ZipEntryReader::readInfo() {
    if (unzGetCurrentFileInfo(archive_, &info_, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK) return false;
    std::string name(info_.size_filename, '\0');
    if (unzGetCurrentFileInfo(archive_, &info_, name.data(), info_.size_filename, nullptr, 0, nullptr, 0) != UNZ_OK) {
        return false;
    }
    name_ = name.substr(0, name.find('\0'));
    return true;
}

bool ZipEntryReader::unlock(const std::string& password) {
    if ((info_.flag & kEncrypted) == 0) return true;
    if (password.empty() || !ZipCipher::canUse(password)) return false;
    cipher_.emplace(password);
    ZipCipher::Header header;
    return readStoredBytes(header) == static_cast<int>(header.size()) && header.back() == checkByte(info_);
}

std::time_t ZipEntryReader::modificationTime() const {
    const tm_unz& date = info_.tmu_date;
    std::tm fields{};
    fields.tm_sec = static_cast<int>(date.tm_sec);
    fields.tm_min = static_cast<int>(date.tm_min);
    fields.tm_hour = static_cast<int>(date.tm_hour);
    fields.tm_mday = static_cast<int>(date.tm_mday);
    fields.tm_mon = static_cast<int>(date.tm_mon);
    fields.tm_year = static_cast<int>(date.tm_year) - 1900;
    fields.tm_isdst = -1;
    return std::mktime(&fields);
}

int ZipEntryReader::read(std::span<std::uint8_t> chunk) {
    const int count = method_ == kStored ? readStoredBytes(chunk) : readInflated(chunk);
    if (count > 0) checksum_ = crc32(checksum_, chunk.data(), static_cast<uInt>(count));
    return count;
}

int ZipEntryReader::readStoredBytes(std::span<std::uint8_t> chunk) {
    const int count = unzReadCurrentFile(archive_, chunk.data(), static_cast<unsigned>(chunk.size()));
    if (count > 0 && cipher_) cipher_->decrypt(chunk.first(static_cast<std::size_t>(count)));
    return count;
}

int ZipEntryReader::readInflated(std::span<std::uint8_t> chunk) {
    stream_.next_out = chunk.data();
    stream_.avail_out = static_cast<uInt>(chunk.size());
    while (stream_.avail_out > 0 && !streamEnded_) {
        const int result = inflateSome();
        if (result != Z_OK) return result;
    }
    return static_cast<int>(chunk.size() - stream_.avail_out);
}

/// Returns Z_OK or a negative number. A stream that breaks off ends with the latter: inflate gets nothing to go on
/// with.
int ZipEntryReader::inflateSome() {
    if (stream_.avail_in == 0) {
        const int count = readStoredBytes(input_);
        if (count < 0) return count;
        stream_.next_in = input_.data();
        stream_.avail_in = static_cast<uInt>(count);
    }
    const bool isEmpty = stream_.avail_in == 0 && stream_.total_in == 0;  // some writers deflate nothing to nothing
    const int result = inflate(&stream_, Z_NO_FLUSH);
    streamEnded_ = isEmpty || result == Z_STREAM_END;
    return streamEnded_ ? Z_OK : result;
}

}  // namespace ZkMobileBackup
