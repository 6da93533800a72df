#include "export/ZipEntryWriter.h"

#include <algorithm>
#include <array>
#include <unistd.h>
#include <zlib.h>

#include "export/ZipCipher.h"

namespace ZkMobileBackup {

namespace {

bool writeBytes(zipFile archive, std::span<const std::uint8_t> bytes) {
    return zipWriteInFileInZip(archive, bytes.data(), static_cast<unsigned>(bytes.size())) == ZIP_OK;
}

bool writePlain(zipFile archive, const NewZipEntry& entry) {
    if (zipOpenNewFileInZip(archive, entry.name.c_str(), &entry.info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                            Z_DEFAULT_COMPRESSION) != ZIP_OK) {
        return false;
    }
    const bool isWritten = writeBytes(archive, entry.bytes);
    return zipCloseFileInZip(archive) == ZIP_OK && isWritten;
}

bool writeHeader(zipFile archive, std::uint32_t crc, ZipCipher& cipher) {
    ZipCipher::Header header;
    if (::getentropy(header.data(), header.size()) != 0) return false;
    // A reader tells a wrong password by these.
    header[ZipCipher::kHeaderSize - 2] = static_cast<std::uint8_t>(crc >> 16);
    header[ZipCipher::kHeaderSize - 1] = static_cast<std::uint8_t>(crc >> 24);
    cipher.encrypt(header);
    return writeBytes(archive, header);
}

/// Writes what deflate yields, encrypted, until the end of the stream.
bool writeStream(zipFile archive, z_stream& stream, ZipCipher& cipher) {
    std::array<std::uint8_t, std::size_t{16} << 10> piece;
    int result = Z_OK;
    while (result == Z_OK) {
        stream.next_out = piece.data();
        stream.avail_out = static_cast<uInt>(piece.size());
        result = deflate(&stream, Z_FINISH);
        const auto output = std::span(piece).first(piece.size() - stream.avail_out);
        cipher.encrypt(output);
        if (!writeBytes(archive, output)) return false;
    }
    return result == Z_STREAM_END;
}

bool writeDeflated(zipFile archive, std::span<const std::uint8_t> bytes, ZipCipher& cipher) {
    z_stream stream{};
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
        return false;
    }
    stream.next_in = const_cast<Bytef*>(bytes.data());  // only read, but zlib's field is not const
    stream.avail_in = static_cast<uInt>(bytes.size());
    const bool isWritten = writeStream(archive, stream, cipher);
    deflateEnd(&stream);
    return isWritten;
}

/// Opens an entry that is marked as encrypted and whose bytes are stored as they are handed over.
bool openEncrypted(zipFile archive, const NewZipEntry& entry) {
    constexpr int kRaw = 1;
    constexpr uLong kEncrypted = 1;
    constexpr uLong kDefaultVersion = 0;
    constexpr const char* kNoPassword = nullptr;
    return zipOpenNewFileInZip4(archive, entry.name.c_str(), &entry.info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED,
                                Z_DEFAULT_COMPRESSION, kRaw, MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, kNoPassword,
                                0, kDefaultVersion, kEncrypted) == ZIP_OK;
}

bool writeEncrypted(zipFile archive, const NewZipEntry& entry, const std::string& password) {
    if (!ZipCipher::canUse(password) || !openEncrypted(archive, entry)) return false;
    const uLong crc = crc32(0, entry.bytes.data(), static_cast<uInt>(entry.bytes.size()));
    ZipCipher cipher(password);
    const bool isWritten =
        writeHeader(archive, static_cast<std::uint32_t>(crc), cipher) && writeDeflated(archive, entry.bytes, cipher);
    return zipCloseFileInZipRaw(archive, entry.bytes.size(), crc) == ZIP_OK && isWritten;
}

}  // namespace

bool writeZipEntry(zipFile archive, const NewZipEntry& entry, const std::string& password) {
    return password.empty() ? writePlain(archive, entry) : writeEncrypted(archive, entry, password);
}

}  // namespace ZkMobileBackup
