#pragma once

#include "base/Profile.h"

namespace ZkMobileBackup {

/// Of every cell, in twentieths of a point.
inline constexpr const char* kDocxCellWidth = "1130";

/// A width with its unit, as in w:tblW.
struct DocxWidth {
    const char* value;
    const char* type;
};

/// Where the documents of the two profiles differ. What kLegacy does either breaks the schema or makes some reader hide
/// texts.
struct DocxManner {
    bool leftFromTextOnProperties;  ///< w:leftFromText stands on w:tblPr, not on the w:tblpPr that it belongs to
    bool layoutBeforeBorders;       ///< w:tblLayout precedes w:tblBorders
    bool marginsBeforeBorders;      ///< w:tcMar precedes w:tcBorders and w:shd
    bool gridOfWidestTable;         ///< the grid has 28 narrow columns, not those of the table; some readers go by it
    DocxWidth tableWidth;           ///< a floating table narrower than the page is cut at its end by some readers
    bool tableWithoutColumns;       ///< rows of which none has a key make a table of rows without cells
    bool paragraphAfterTable;       ///< a floating table at the end of the body is hidden by some readers
};

constexpr DocxManner docxManner(Profile profile) {
    const bool legacy = profile == Profile::kLegacy;
    return {
        .leftFromTextOnProperties = legacy,
        .layoutBeforeBorders = legacy,
        .marginsBeforeBorders = legacy,
        .gridOfWidestTable = legacy,
        .tableWidth = legacy ? DocxWidth{"0", "auto"} : DocxWidth{"31546", "dxa"},  // the page less 180 at each side
        .tableWithoutColumns = legacy,
        .paragraphAfterTable = !legacy,
    };
}

}  // namespace ZkMobileBackup
