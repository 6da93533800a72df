// Writes the notes of a backup, deleted ones included, as one HTML document: recover_notes BACKUP OUTPUT
#include <iostream>

#include "ZkMobileBackup/backup/ZkiTunesBackupSnapshot.h"
#include "ZkMobileBackup/domains/ZkMobileBackupAppDomain.h"
#include "ZkMobileBackup/records/ZkMobileBackupAppDomainRecord.h"
#include "ZkMobileBackup/scan/ZkMobileBackupParser.h"
#include "base/MainQueue.h"

using namespace ZkMobileBackup;

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const auto backup = ZkiTunesBackupSnapshot::initWithUDID({}, {}, {}, 0, {}, argv[1]);
    const auto parser = ZkMobileBackupParser::initWithBackupSnapshot(backup);
    parser->parserSnapshotWithCallbackBlock({});

    for (const auto& domain : parser->domains()) {
        if (domain->exportName() != "Note") continue;
        const auto writeAll = [&](std::int64_t state, std::atomic<bool>*, double) {
            if (state != 3) return;  // the parse is not finished yet
            for (const auto& record : domain->records()) record->setShouldRecovery(true);
            domain->extractWithOutputPath(argv[2], DlxExportType::kHtml,
                                          [](std::int64_t ended, std::int64_t, std::atomic<bool>*, double) {
                                              if (ended == 1) MainQueue::stop();
                                          });
        };
        domain->parserWithCallbackBlock(writeAll);
        MainQueue::run();  // progress and completion arrive here
        for (const auto& path : domain->exporter()->writtenPaths()) std::cout << path << "\n";
    }
}
