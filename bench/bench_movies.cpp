// Copies a movie of 2 GB out of a backup and lets cp copy it too, in turns, and prints seconds on the wall: copying
// waits for memory and disk as much as it computes. Then the peak of the memory that the copying took.
//
// bench_movies FOLDER   The movie is made there once and kept; copies go there too.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <random>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "ZkMobileBackup/domains/TzProductName.h"
#include "ZkMobileBackup/domains/ZkMobileBackupMovieDomain.h"
#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "base/MainQueue.h"
#include "tests/support/ByteBuilder.h"
#include "tests/support/MediaFiles.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;

constexpr int kRounds = 10;
constexpr std::uint64_t kMovieSize = 2'000'000'000;

/// A movie whose last box, which players skip, is full of noise.
void makeMovie(const std::string& path) {
    ByteBuilder head;
    head.bytes(movieFile());
    head.u32(static_cast<std::uint32_t>(kMovieSize - head.size())).text("free");
    std::mt19937_64 random;
    std::array<std::uint64_t, 1 << 17> noise{};
    std::ofstream file(path + ".new", std::ios::binary);
    file.write(reinterpret_cast<const char*>(head.bytes().data()), static_cast<std::streamsize>(head.size()));
    for (std::uint64_t left = kMovieSize - head.size(); left > 0; left -= std::min<std::uint64_t>(left, sizeof noise)) {
        std::ranges::generate(noise, random);
        file.write(reinterpret_cast<const char*>(noise.data()),
                   static_cast<std::streamsize>(std::min<std::uint64_t>(left, sizeof noise)));
    }
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
    fs::rename(path + ".new", path);
}

void readOnce(const std::string& path) {
    std::vector<char> buffer(1 << 20);
    std::ifstream file(path, std::ios::binary);
    while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()))) {
    }
}

std::shared_ptr<ZkMobileBackupMovieDomain> domainOf(const std::string& movie) {
    auto domain = ZkMobileBackupMovieDomain::initWithMovoes({{{kRawDBNameKey, "copy"}, {kRawDBdataKey, movie}}});
    domain->parserWithCallbackBlock([](std::int64_t state, std::atomic<bool>*, double) {
        if (state == 3) MainQueue::stop();
    });
    MainQueue::run();
    MainQueue::runUntilIdle();
    if (domain->records().size() != 1) throw std::runtime_error("cannot open " + movie);
    domain->records().front()->setShouldRecovery(true);
    return domain;
}

void exportMovie(ZkMobileBackupMovieDomain& domain, const std::string& folder) {
    domain.extractWithOutputPath(folder, DlxExportType::kHtml,
                                 [](std::int64_t ended, std::int64_t, std::atomic<bool>*, double) {
                                     if (ended != 0) MainQueue::stop();
                                 });
    MainQueue::run();
    if (!domain.firstFailure().empty()) throw std::runtime_error(domain.firstFailure());
}

void copyByProgram(const std::string& from, const std::string& to) {
    std::string program = "cp";
    std::string option = "--reflink=never";
    std::string source = from;
    std::string target = to;
    std::array<char*, 5> arguments{program.data(), option.data(), source.data(), target.data(), nullptr};
    pid_t child = 0;
    int status = -1;
    if (posix_spawnp(&child, "cp", nullptr, nullptr, arguments.data(), environ) == 0) waitpid(child, &status, 0);
    if (status != 0) throw std::runtime_error("cp failed");
}

/// Seconds that a copy takes, which is removed again. What was written before is on the disk by then.
template <typename Copy>
double secondsOf(const std::string& target, Copy&& copy) {
    sync();
    const auto begin = std::chrono::steady_clock::now();
    copy();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    if (fs::file_size(target) != kMovieSize) throw std::runtime_error("the copy is not whole");
    fs::remove(target);
    return elapsed.count();
}

/// The peak of the memory that this process had since the last reset, in bytes.
std::size_t peakMemory() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word && word != "VmHWM:") {
    }
    std::size_t kilobytes = 0;
    status >> kilobytes;
    return kilobytes * 1024;
}

void resetPeakMemory() {
    std::ofstream control("/proc/self/clear_refs");
    control << 5 << std::flush;
    if (!control) throw std::runtime_error("cannot reset the peak of the memory");
}

void run(const std::string& folder) {
    const std::string movie = folder + "/movie-2000000000.mov";
    const std::string product = folder + "/" + TzProductName;
    fs::create_directories(product);
    if (!fs::exists(movie)) makeMovie(movie);
    readOnce(movie);
    const auto domain = domainOf(movie);
    resetPeakMemory();
    const std::size_t baseline = peakMemory();
    double own = std::numeric_limits<double>::infinity();
    double peer = own;
    const auto runOwn = [&] {
        own = std::min(own, secondsOf(product + "/copy.MOV", [&] { exportMovie(*domain, folder); }));
    };
    const auto runPeer = [&] {
        peer = std::min(peer, secondsOf(product + "/peer", [&] { copyByProgram(movie, product + "/peer"); }));
    };
    // Each gets the memory that the other has just left every second time: it is faster than fresh memory.
    for (int round = 0; round < kRounds; ++round) {
        round % 2 == 0 ? runOwn() : runPeer();
        round % 2 == 0 ? runPeer() : runOwn();
    }
    std::cout << "copy " << own << " " << peer << "\nmemory " << peakMemory() - baseline << "\n";
    fs::remove_all(product);
}

}  // namespace
}  // namespace ZkMobileBackup

int main(int count, char** arguments) {
    if (count != 2) return 2;
    try {
        ZkMobileBackup::run(arguments[1]);
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
