// open_media PICTURE MOVIE: opens each twice and prints the extent of the images in the records, or that there is no
// record.
#include <cstdio>
#include <memory>
#include <string>

#include "ZkMobileBackup/records/InfoKeys.h"
#include "ZkMobileBackup/records/RecordKeyConstants.h"
#include "ZkMobileBackup/records/ZkMobileBackupMovieRecord.h"
#include "ZkMobileBackup/records/ZkMobileBackupPhotoRecord.h"
#include "base/Image.h"

using namespace ZkMobileBackup;

namespace {

void print(const std::shared_ptr<const ZkMobileBackupAppDomainRecord>& record, std::string_view key) {
    const Value* const value = record == nullptr ? nullptr : record->value()->find(key);
    const auto pixels = value == nullptr ? std::nullopt : (*value->image())->pixels();
    if (pixels) {
        std::printf("%d x %d\n", pixels->width, pixels->height);
    } else {
        std::printf("none\n");
    }
}

}  // namespace

int main(int /*argc*/, char** argv) {
    const Dictionary picture{{kRawDBdataKey, argv[1]}};
    const Dictionary movie{{kRawDBdataKey, argv[2]}};
    for (int turn = 0; turn < 2; ++turn) {
        print(ZkMobileBackupPhotoRecord::initWithPhotoInfo(picture), kPhotoRecordThumbnail);
        print(ZkMobileBackupMovieRecord::initWithMovieInfo(movie), kMovieRecordThumbnail);
    }
}
