#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/Api.h"
#include "export/ExportRows.h"
#include "export/FileCreator.h"

namespace ZkMobileBackup {

struct PackageFormat;

/// Base of the writers whose documents are packages: a stage folder is filled from a template, its parts are written
/// anew, and the folder is packed. All writers of a format share one stage folder, in this process and in others of the
/// same user, and take turns on it.
class ZKMB_API PackagedCreator : public FileCreator {
public:
    ~PackagedCreator() override;

    /// The table to be written.
    const Rows& DictionArr() const { return rows_; }
    /// The output path without extension.
    const std::string& SavePath() const { return savePath_; }

    // startConvert
    /// Makes the document under the first free name. Once stopped it packs nothing, reports extportComplete(false) and
    /// leaves the stage folder as it is; the next document of the format clears it.
    void startConvert() override;

    // applicationSupportFolder
    /// The stage folder; nothing where the user has no folder for application data, after asking the host to end (see
    /// setTerminationHandler).
    std::optional<std::string> applicationSupportFolder() const;
    // createSupportFolder
    /// Makes the stage folder anew, empty and closed to other users.
    void createSupportFolder();
    // removeHtmlFile
    /// Removes the stage folder. (No HTML is left in it for long.)
    void removeHtmlFile();

protected:
    PackagedCreator(const PackageFormat& format, Rows rows, std::string savePath);

    /// Path of a file or folder in the stage folder.
    std::string stagePath(std::string_view name) const;
    /// Clears the stage folder, unpacks the format's template into it and makes the folders that the format adds. What
    /// fails is noted; the rest is done all the same. False, with nothing unpacked, when there is no stage folder that
    /// is empty: no document is made then.
    bool layTemplate();

    /// Lays out the stage folder: the format's own `init...File`.
    virtual void prepareStage() = 0;
    /// Writes the parts of the document into the stage folder.
    virtual void writeParts() = 0;
    /// Packs the stage folder into `package`, an absolute path at which nothing stands. Returns an empty text, or the
    /// reason of the failure. Starts the format's script.
    virtual std::string pack(const std::string& stageFolder, const std::string& package);

private:
    void convert(const std::string& stageFolder);
    void packDocument(const std::string& stageFolder);
    void packThrough(const std::string& folder, const std::string& stageFolder, const std::string& path);

    const PackageFormat& format_;
    Rows rows_;
    std::string savePath_;
    bool hasNewStage_ = false;
};

}  // namespace ZkMobileBackup
