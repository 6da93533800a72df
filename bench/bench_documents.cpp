// Times to write Word, Numbers and Pages documents, the programs that pack them included. For each format prints
//   peer FORMAT OWN PEER      50,000 rows of 5 texts against a peer that has the finished parts in memory, writes them
//                             into a folder and packs this likewise
//   FORMAT TABLE ROWS SECONDS tables of growing size; a row of a "sparse" table has 5 of 10 columns
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <utility>
#include <vector>

#include "base/Resources.h"
#include "bench/Measure.h"
#include "export/DlxExporter.h"
#include "export/ZipArchive.h"
#include "platform/Process.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

using namespace ZkMobileBackup;

namespace {

namespace fs = std::filesystem;

constexpr int kRuns = 3;
constexpr int kComparedRows = 50'000;
constexpr int kGrowth[] = {1'000, 10'000, 100'000};
constexpr int kTextsInRow = 5;

using Parts = std::map<std::string, std::vector<std::uint8_t>>;

struct Format {
    const char* name;
    const char* script;
    std::shared_ptr<FileCreator> (DlxExporter::*make)(Rows data, std::string outputPath) const;
};

constexpr Format kFormats[] = {
    {"docx", "zipBuildWord.sh", &DlxExporter::docxExporterWithData},
    {"numbers", "zipBuildNumbers.sh", &DlxExporter::numbersExporterWithData},
    {"pages", "zipBuildPages.sh", &DlxExporter::pagesExporterWithData},
};

struct Table {
    const char* name;
    int columns;
};

constexpr Table kFull{"full", kTextsInRow};
constexpr Table kSparse{"sparse", 2 * kTextsInRow};

/// A row of a sparse table has every second column, the odd and the even ones in turn.
Rows makeRows(const Table& table, int count) {
    Rows rows;
    const int step = table.columns / kTextsInRow;
    for (int row = 0; row < count; ++row) {
        Dictionary dictionary;
        for (int column = row % step; column < table.columns; column += step) {
            dictionary.set("Column " + std::to_string(column), "Text " + std::to_string(row * table.columns + column));
        }
        rows.append(std::move(dictionary));
    }
    return rows;
}

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Processor time of this process and of the programs that it has run to their end.
double processorSecondsOfAll() {
    rusage children{};
    getrusage(RUSAGE_CHILDREN, &children);
    return processorSeconds() + secondsOf(children.ru_utime) + secondsOf(children.ru_stime);
}

template <typename Work>
double secondsOfAll(Work&& work) {
    const double begin = processorSecondsOfAll();
    work();
    return processorSecondsOfAll() - begin;
}

/// Writes documents of a format into a folder of its own.
class Bench {
public:
    explicit Bench(const Format& format) : format_(format) {}

    void comparePeer() const {
        const Rows rows = makeRows(kFull, kComparedRows);
        writeOwn(rows);
        const Parts parts = partsOf(document("own"));
        double own = std::numeric_limits<double>::infinity();
        double peer = own;
        for (int run = 0; run < kRuns; ++run) {
            own = std::min(own, secondsOfAll([&] { writeOwn(rows); }));
            peer = std::min(peer, secondsOfAll([&] { writePeer(parts); }));
        }
        std::cout << "peer " << format_.name << ' ' << own << ' ' << peer << '\n';
    }

    void measureGrowth(const Table& table) const {
        for (const int count : kGrowth) {
            const Rows rows = makeRows(table, count);
            double least = std::numeric_limits<double>::infinity();
            for (int run = 0; run < kRuns; ++run) least = std::min(least, secondsOfAll([&] { writeOwn(rows); }));
            std::cout << format_.name << ' ' << table.name << ' ' << count << ' ' << least << '\n';
        }
    }

private:
    std::string document(const std::string& name) const { return folder_.path(name + "." + format_.name); }

    void writeOwn(const Rows& rows) const {
        fs::remove(document("own"));
        (*DlxExporter::init().*format_.make)(rows, folder_.path("own"))->startConvert();
        if (!fs::exists(document("own"))) fail("there is no document");
    }

    void writePeer(const Parts& parts) const {
        const std::string stage = folder_.path("stage");
        fs::remove(document("peer"));
        for (const auto& [name, bytes] : parts) writeBytes(stage + "/" + name, bytes);
        runProgram({resourceFolder() + "/" + format_.script, stage, document("peer")});
        fs::remove_all(stage);
        if (!fs::exists(document("peer"))) fail("the peer's document is missing");
    }

    Parts partsOf(const std::string& path) const {
        const TemporaryFolder unpacked;
        const auto archive = ZipArchive::init();
        if (!archive->UnzipOpenFile(path) || !archive->UnzipFileTo(unpacked.path(), true))
            fail("it cannot be unpacked");
        return folderContent(unpacked.path());
    }

    [[noreturn]] void fail(const char* reason) const {
        std::cerr << "bench_documents: " << format_.name << ": " << reason << '\n';
        std::exit(EXIT_FAILURE);
    }

    const Format& format_;
    TemporaryFolder folder_;
};

}  // namespace

int main() {
    const TemporaryFolder data;
    setenv("XDG_DATA_HOME", data.path().c_str(), 1);
    for (const Format& format : kFormats) {
        const Bench bench(format);
        bench.comparePeer();
        bench.measureGrowth(kFull);
        bench.measureGrowth(kSparse);
    }
    return 0;
}
