#pragma once

#include "base/Profile.h"

namespace ZkMobileBackup {

/// Where the workbooks of the two profiles differ.
struct XlsxManner {
    const char* baseColumnWidth;  ///< name of the attribute; there are readers that refuse any name but the right one
    bool trueExtent;              ///< "dimension" and "spans" tell which cells there are, else they say the same always
    bool printerSettings;         ///< the sheet has a relationship to printer settings, a part that is never written
    bool heightFromText;          ///< rows are as high as their text needs, else readers cut off what wraps
    bool threeColumnLetters;      ///< columns behind ZZ have three letters, else two, of which readers refuse the first
    bool escapedText;             ///< texts that look like escapes of the format are escaped, else readers undo them
};

constexpr XlsxManner xlsxManner(Profile profile) {
    const bool legacy = profile == Profile::kLegacy;
    return {
        .baseColumnWidth = legacy ? "baseColWith" : "baseColWidth",
        .trueExtent = !legacy,
        .printerSettings = legacy,
        .heightFromText = !legacy,
        .threeColumnLetters = !legacy,
        .escapedText = !legacy,
    };
}

}  // namespace ZkMobileBackup
