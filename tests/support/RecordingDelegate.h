#pragma once

#include <vector>

#include "base/Value.h"
#include "recovery/DlxSQLiteParser.h"

namespace ZkMobileBackup {

/// Keeps what a parser reports.
class RecordingDelegate : public DlxSQLiteParserDelegate {
public:
    void paserStart() override { ++starts; }
    void parserProcess(const Dictionary& progress) override { reports.push_back(progress); }
    void parserComplete(bool complete) override { completions.push_back(complete); }

    int starts = 0;
    std::vector<Dictionary> reports;
    std::vector<bool> completions;
};

}  // namespace ZkMobileBackup
