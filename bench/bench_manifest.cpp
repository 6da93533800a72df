// Time to read a manifest of 300,000 records whose names are hashed against reading the file and hashing the same texts
// with EVP_Digest. Prints "manifest OWN PEER" in seconds.
#include <array>
#include <iostream>
#include <openssl/evp.h>
#include <string>
#include <vector>

#include "ZkMobileBackup/backup/ZkMbdbFileParser.h"
#include "bench/Measure.h"
#include "tests/support/Files.h"
#include "tests/support/ManifestBuilder.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

namespace {

constexpr int kRecords = 300'000;
constexpr int kRuns = 3;

ManifestRecord recordNumber(int number) {
    ManifestRecord record;
    record.domain = "AppDomain-com.example.application" + std::to_string(number % 50);
    record.path = "Library/Caches/folder" + std::to_string(number % 1000) + "/item number " + std::to_string(number);
    record.length = static_cast<std::uint64_t>(number);
    return record;
}

std::vector<std::string> writeManifest(const std::string& path) {
    ManifestBuilder builder;
    std::vector<std::string> hashedTexts;
    for (int i = 0; i < kRecords; ++i) {
        const ManifestRecord record = recordNumber(i);
        builder.add(record);
        hashedTexts.push_back(record.domain + "-" + record.path);
    }
    writeBytes(path, builder.bytes());
    return hashedTexts;
}

void readAndHash(const std::string& path, const std::vector<std::string>& texts) {
    const auto bytes = readBytes(path);
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    for (const std::string& text : texts) {
        EVP_Digest(text.data(), text.size(), digest.data(), nullptr, EVP_sha1(), nullptr);
    }
}

}  // namespace

int main() {
    const TemporaryFolder folder;
    const std::string path = folder.path("Manifest.mbdb");
    const std::vector<std::string> texts = writeManifest(path);
    if (parserMbdb(path)->size() != texts.size()) {
        std::cerr << "bench_manifest: records are missing\n";
        return 1;
    }
    const double own = leastSeconds(kRuns, [&] { parserMbdb(path); });
    const double peer = leastSeconds(kRuns, [&] { readAndHash(path, texts); });
    std::cout << "manifest " << own << ' ' << peer << '\n';
    return 0;
}
