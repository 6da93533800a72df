#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/ByteBuilder.h"
#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"

namespace ZkMobileBackup {

/// A movie of exactly so many bytes that plays as before: what it lacked is a box that players skip, filled with noise.
inline std::vector<std::uint8_t> padded(const std::vector<std::uint8_t>& movie, std::size_t size) {
    constexpr std::size_t kBoxHeader = 8;
    if (size < movie.size() + kBoxHeader) throw std::runtime_error("the movie is larger");
    ByteBuilder builder;
    builder.bytes(movie).u32(static_cast<std::uint32_t>(size - movie.size())).text("free");
    std::vector<std::uint8_t> bytes = builder.bytes();
    std::minstd_rand noise;
    while (bytes.size() < size) bytes.push_back(static_cast<std::uint8_t>(noise() >> 16));
    return bytes;
}

/// Writes a movie of any number of bytes, most of which take no room on the disk.
inline void writeSparseMovie(const std::string& path, std::uint64_t size) {
    ByteBuilder movie;
    movie.bytes(movieFile());
    const std::uint64_t begin = movie.size();
    movie.u32(1).text("free").u64(size - begin);  // 1 tells that a 64-bit size follows
    writeBytes(path, movie.bytes());
    std::filesystem::resize_file(path, size);
}

}  // namespace ZkMobileBackup
