#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/Files.h"
#include "tests/support/MediaFiles.h"
#include "tests/support/Painting.h"
#include "tests/support/SampleDatabases.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tool/SmallBackup.h"
#include "tests/tool/ToolMatchers.h"
#include "tests/tool/ToolRun.h"

namespace ZkMobileBackup {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

/// A backup with notes, a photo, two thumbnails and a movie.
class MediaCommand : public testing::Test {
protected:
    MediaCommand() {
        const std::vector<ThumbnailSlot> thumbnails{quadrants(24, 22), std::nullopt, quadrants(24, 22)};
        backup_.add("Library/Notes/notes.sqlite", sampleNotes());
        backup_.add("Media/DCIM/100APPLE/IMG_0001.JPG", photo_);
        backup_.add("Media/PhotoData/Thumbnails/3303.ithmb", thumbnailStore(24, 22, thumbnails));
        backup_.add("Media/DCIM/100APPLE/IMG_0002.MOV", movie_);
    }

    ToolResult run(const std::vector<std::string>& options) const {
        std::vector<std::string> all{"export", backup_.path(), "--output", output()};
        all.insert(all.end(), options.begin(), options.end());
        return runTool(all);
    }
    ToolResult records(const std::string& domain, bool asJson) const {
        std::vector<std::string> all{"records", backup_.path(), "--domain", domain};
        if (asJson) all.push_back("--json");
        return runTool(all);
    }

    std::string output() const { return folder_.path("out"); }
    std::string product(const std::string& name) const { return output() + "/Velmora Retrievo/" + name; }

    const std::vector<std::uint8_t> photo_ = jpegFile(quadrants(400, 300));
    const std::vector<std::uint8_t> movie_ = movieFile();
    SmallBackup backup_;
    TemporaryFolder folder_;
};

TEST_F(MediaCommand, ScanCountsPhotosAndMovies) {
    const ToolResult result = runTool({"scan", backup_.path(), "--json"});
    ASSERT_THAT(result, SucceedsSilently());
    const json domains = result.json()["domains"];
    ASSERT_EQ(domains.size(), 3U);
    EXPECT_EQ(domains[1]["records"], 3);
    EXPECT_EQ(domains[1]["deleted"], 2);
    EXPECT_EQ(domains[2]["records"], 1);
    EXPECT_EQ(domains[2]["deleted"], 0);
}

TEST_F(MediaCommand, RecordsShowsExtentsOfPicturesAsJson) {
    const ToolResult result = records("Photo", true);
    ASSERT_THAT(result, SucceedsSilently());
    const json photos = result.json();
    ASSERT_EQ(photos.size(), 3U);
    EXPECT_EQ(photos[0]["deleted"], false);
    EXPECT_EQ(photos[0]["value"]["title"], "IMG_0001");
    EXPECT_EQ(photos[0]["value"]["create date"], "1970-01-01T00:00:00Z");
    EXPECT_EQ(photos[0]["value"]["thumbnail"], (json{{"width", 120}, {"height", 90}}));
    EXPECT_EQ(photos[0]["value"]["resolution"], (json{{"width", 120}, {"height", 90}}));
    EXPECT_EQ(photos[0]["exportValue"], photos[0]["value"]);
    EXPECT_EQ(photos[2]["deleted"], true);
    EXPECT_EQ(photos[2]["value"]["title"], "_2");
    EXPECT_EQ(photos[2]["value"]["thumbnail"], (json{{"width", 24}, {"height", 22}}));
}

TEST_F(MediaCommand, RecordsShowsMoviesAsJson) {
    const ToolResult result = records("Movie", true);
    ASSERT_THAT(result, SucceedsSilently());
    const json movies = result.json();
    ASSERT_EQ(movies.size(), 1U);
    EXPECT_EQ(movies[0]["deleted"], false);
    EXPECT_EQ(movies[0]["value"], (json{{"title", "IMG_0002"},
                                        {"duration", 300},
                                        {"size", movie_.size()},
                                        {"thumbnail", {{"width", 160}, {"height", 120}}}}));
}

TEST_F(MediaCommand, RecordsShowsExtentsInItsTable) {
    const ToolResult photos = records("Photo", false);
    ASSERT_THAT(photos, SucceedsSilently());
    EXPECT_THAT(photos.output, HasSubstr("Photo: 3 rows, 2 of them deleted"));
    EXPECT_THAT(photos.output, HasSubstr("120 x 90"));
    EXPECT_THAT(photos.output, HasSubstr("24 x 22"));
    const ToolResult movies = records("Movie", false);
    ASSERT_THAT(movies, SucceedsSilently());
    EXPECT_THAT(movies.output, HasSubstr("160 x 120"));
    EXPECT_THAT(movies.output, HasSubstr(std::to_string(movie_.size())));
}

TEST_F(MediaCommand, ExportWritesPhotosThumbnailsAndMovies) {
    const ToolResult result = run({"--type", "html", "--json"});
    ASSERT_THAT(result, SucceedsSilently());
    const json domains = result.json()["domains"];
    EXPECT_EQ(domains[1]["files"],
              json({product("Photo/IMG_0001.JPG"), product("Photo/_1.JPG"), product("Photo/_2.JPG")}));
    EXPECT_EQ(domains[2]["files"], json({product("IMG_0002.MOV")}));
    EXPECT_EQ(folderContent(output()).size(), 5U);
    EXPECT_TRUE(readBytes(product("Photo/IMG_0001.JPG")) == photo_);
    EXPECT_TRUE(readBytes(product("IMG_0002.MOV")) == movie_);
}

TEST_F(MediaCommand, ExportOfMediaNeedsNothingThatDocumentsNeed) {
    for (const std::string type : {"html", "docx", "xlsx", "numbers", "pages"}) {
        const std::string into = folder_.path(type);
        // Packaged documents are put together below this folder.
        const ToolResult result = runToolWith(
            {{"XDG_DATA_HOME", "/dev/null/none"}},
            {"export", backup_.path(), "--output", into, "--type", type, "--domain", "Photo", "--domain", "Movie"});
        EXPECT_THAT(result, SucceedsSilently()) << type;
        EXPECT_THAT(result.output, HasSubstr("\n4 files written\n"));
        EXPECT_EQ(folderContent(into).size(), 4U);
    }
}

TEST_F(MediaCommand, ExportWritesEachFileOnceHoweverOftenItsDomainIsNamed) {
    backup_.add("Media/PhotoData/Photos.sqlite", {});
    ASSERT_THAT(run({"--type", "html", "--domain", "Photo", "--domain", "Movie", "--domain", "Photo"}),
                SucceedsSilently());
    EXPECT_EQ(folderContent(output()).size(), 4U);
}

TEST_F(MediaCommand, ExportOfMoviesMakesTheirFolder) {
    const ToolResult result = run({"--type", "pages", "--domain", "Movie"});
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_TRUE(readBytes(product("IMG_0002.MOV")) == movie_);
}

TEST_F(MediaCommand, FolderIsNotMadeWithoutMovies) {
    ASSERT_THAT(run({"--type", "html", "--domain", "Movie", "--only", "deleted"}), SucceedsSilently());
    EXPECT_FALSE(fs::exists(product("")));
}

TEST_F(MediaCommand, OnlyLimitsPhotosAndMovies) {
    ASSERT_THAT(run({"--type", "html", "--domain", "Photo", "--domain", "Movie", "--only", "live"}),
                SucceedsSilently());
    EXPECT_THAT(folderContent(output()), ElementsAre(testing::Key("Velmora Retrievo/IMG_0002.MOV"),
                                                     testing::Key("Velmora Retrievo/Photo/IMG_0001.JPG")));
    fs::remove_all(output());
    ASSERT_THAT(run({"--type", "html", "--domain", "Photo", "--domain", "Movie", "--only", "deleted"}),
                SucceedsSilently());
    EXPECT_THAT(folderContent(output()), ElementsAre(testing::Key("Velmora Retrievo/Photo/_1.JPG"),
                                                     testing::Key("Velmora Retrievo/Photo/_2.JPG")));
}

TEST_F(MediaCommand, EarlierPhotosAndMoviesAreKept) {
    ASSERT_THAT(run({"--type", "html"}), SucceedsSilently());
    ASSERT_THAT(run({"--type", "html"}), SucceedsSilently());
    EXPECT_TRUE(readBytes(product("IMG_0002(0).MOV")) == movie_);
    EXPECT_TRUE(readBytes(product("Photo/IMG_0001(0).JPG")) == photo_);
    EXPECT_EQ(folderContent(output()).size(), 10U);
}

TEST_F(MediaCommand, FileWhereTheFolderIsNeededIsAFailure) {
    writeText(output() + "/Velmora Retrievo", "a file where a folder is needed");
    for (const char* domain : {"Photo", "Movie"}) {
        const ToolResult result = run({"--type", "html", "--domain", domain});
        EXPECT_THAT(result, FailsWithOneSentenceNaming("Velmora Retrievo")) << domain;
        EXPECT_THAT(result.output, HasSubstr("\n0 files written\n"));
    }
}

TEST_F(MediaCommand, MovieThatCannotBeWrittenIsAFailureAndLeavesTheOthersAlone) {
    backup_.add("Media/DCIM/" + std::string(254, 'x') + ".MOV", movie_);
    backup_.add("Media/DCIM/IMG_0003.MOV", movie_);
    const ToolResult result = run({"--type", "html", "--domain", "Movie", "--json"});
    EXPECT_THAT(result, FailsWithOneSentenceNaming("xxx.MOV"));
    EXPECT_EQ(result.json()["domains"][0]["files"], json({product("IMG_0002.MOV"), product("IMG_0003.MOV")}));
}

TEST_F(MediaCommand, PhotoThatCannotBeWrittenIsAFailureAndLeavesTheOthersAlone) {
    backup_.add("Media/DCIM/" + std::string(254, 'x') + ".JPG", photo_);
    const ToolResult result = run({"--type", "html", "--domain", "Photo", "--json"});
    EXPECT_THAT(result, FailsWithOneSentenceNaming("xxx.JPG"));
    EXPECT_EQ(result.json()["domains"][0]["files"].size(), 3U);
}

TEST_F(MediaCommand, WrittenFilesAreShownOnOneSafeLineEachAndExactlyAsJson) {
    const std::string title = "first\nsecond \x1b[31mred\xC2\x9B";
    backup_.add("Media/DCIM/" + title + ".MOV", movie_).add("Media/DCIM/" + title + ".JPG", photo_);
    const ToolResult shown = run({"--type", "html", "--domain", "Photo", "--domain", "Movie", "--only", "live"});
    ASSERT_THAT(shown, SucceedsSilently());
    EXPECT_THAT(shown.output, HasSubstr("\n" + product("first second  [31mred .MOV") + "\n"));
    EXPECT_THAT(shown.output, HasSubstr("\n" + product("Photo/first second  [31mred .JPG") + "\n"));
    EXPECT_EQ(shown.output.find('\x1b'), std::string::npos);
    fs::remove_all(output());
    const ToolResult exact = run({"--type", "html", "--domain", "Movie", "--json"});
    EXPECT_EQ(exact.json()["domains"][0]["files"], json({product("IMG_0002.MOV"), product(title + ".MOV")}));
}

TEST_F(MediaCommand, WhatIsNoPictureOrMovieIsLeftOut) {
    const std::vector<std::uint8_t> noise(5'000, 0x5A);
    backup_.add("Media/DCIM/IMG_0004.JPG", noise).add("Media/DCIM/IMG_0005.MOV", noise);
    const ToolResult result = run({"--type", "html", "--domain", "Photo", "--domain", "Movie"});
    ASSERT_THAT(result, SucceedsSilently());
    EXPECT_THAT(result.output, HasSubstr("\n4 files written\n"));
}

}  // namespace
}  // namespace ZkMobileBackup
