#include <filesystem>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/FileSizeLimit.h"
#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/PaddedMovie.h"
#include "tests/support/Painting.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/SmallBackup.h"
#include "tests/tool/WatchedRun.h"

namespace ZkMobileBackup {
namespace {

using nlohmann::json;

constexpr int kManyFiles = 3'000;  // so that the tool has not come to their end when Ctrl-C meets it

/// Ctrl-C meets the tool while it reads or writes photos or movies: those jobs end without a last call.
class InterruptedMedia : public testing::Test {
protected:
    static std::vector<std::string> names(const char* extension) {
        std::vector<std::string> names;
        for (int i = 0; i < kManyFiles; ++i) names.push_back(fmt::format("Media/DCIM/IMG_{:04}.{}", i, extension));
        return names;
    }

    /// Presses Ctrl-C once the bar of that label is on the screen.
    ToolResult runTo(const std::string& label, std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin() + 1, {backup_.path(), "--json"});
        WatchedRun run(WatchedRun::Errors::Terminal, arguments);
        EXPECT_TRUE(run.readUntil(label));
        run.pressCtrlC();
        return run.finish();
    }

    std::vector<std::string> exportOf(const char* domain) const {
        return {"export", "--output", output(), "--type", "html", "--domain", domain};
    }
    std::string output() const { return folder_.path("out"); }

    SmallBackup backup_;
    TemporaryFolder folder_;
};

MATCHER(WasInterrupted, "") {
    *result_listener << "status " << arg.status << ", errors: " << arg.errors;
    return arg.status == 1 && arg.errors.ends_with("zkmb: Interrupted.\n");
}

TEST_F(InterruptedMedia, ReadingPhotosEndsWithThoseReadSoFar) {
    backup_.addAlike(names("JPG"), jpegFile(quadrants(640, 480)));
    const ToolResult result = runTo("Reading Photo", {"records", "--domain", "Photo"});
    EXPECT_THAT(result, WasInterrupted());
    EXPECT_LT(result.json().size(), std::size_t{kManyFiles});
}

TEST_F(InterruptedMedia, ReadingMoviesEndsWithThoseReadSoFar) {
    backup_.addAlike(names("MOV"), movieFile());
    const ToolResult result = runTo("Reading Movie", {"records", "--domain", "Movie"});
    EXPECT_THAT(result, WasInterrupted());
    EXPECT_LT(result.json().size(), std::size_t{kManyFiles});
}

TEST_F(InterruptedMedia, ExportNamesThePhotosThatAreThere) {
    backup_.addAlike(names("JPG"), jpegFile(quadrants(64, 48)));
    const ToolResult result = runTo("Writing Photo", exportOf("Photo"));
    EXPECT_THAT(result, WasInterrupted());
    const json files = result.json()["domains"][0]["files"];
    EXPECT_LT(files.size(), std::size_t{kManyFiles});
    EXPECT_EQ(files.size(), folderContent(output()).size());
    for (const json& file : files) EXPECT_TRUE(std::filesystem::exists(file.get<std::string>()));
}

TEST_F(InterruptedMedia, ExportLeavesAPartOfTheMovieThatItWasCopying) {
    constexpr std::uint64_t kSize = std::uint64_t{16} << 30;
    writeSparseMovie(backup_.addAlike({"Media/DCIM/IMG_0001.MOV"}, {}), kSize);
    const FileSizeLimit limit(std::uint64_t{2} << 30);  // a tool that does not stop must not fill the disk
    const ToolResult result = runTo("Writing Movie", exportOf("Movie"));
    EXPECT_THAT(result, WasInterrupted());
    EXPECT_EQ(result.json()["domains"][0]["files"], json::array());
    const std::string part = output() + "/Velmora Retrievo/IMG_0001.MOV";
    EXPECT_LT(std::filesystem::file_size(part), kSize);
    EXPECT_THAT(result.errors, testing::HasSubstr(fmt::format("zkmb: '{}' is only a part of ", part)));
}

}  // namespace
}  // namespace ZkMobileBackup
