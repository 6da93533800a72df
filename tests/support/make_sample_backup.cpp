// make_sample_backup FOLDER [--index]: writes a sample backup.
#include <exception>
#include <iostream>
#include <string_view>

#include "tests/support/SampleBackup.h"

int main(int argc, char** argv) {
    using namespace ZkMobileBackup;
    const bool indexed = argc == 3 && std::string_view(argv[2]) == "--index";
    if (argc != 2 && !indexed) {
        std::cerr << "usage: make_sample_backup FOLDER [--index]\n";
        return 2;
    }
    try {
        writeSampleBackup(argv[1], indexed ? BackupIndex::Present : BackupIndex::None);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "make_sample_backup: " << error.what() << '\n';
        return 1;
    }
}
