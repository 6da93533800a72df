#pragma once

#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>

#include "export/PackagePart.h"
#include "platform/FileReplacement.h"
#include "platform/XmlStream.h"

namespace ZkMobileBackup {

/// A new XML file of a package most of which is streamed to the file, while the rest may still change. The file's bytes
/// are those of a PackagePart with the same elements.
class StreamedPart {
public:
    explicit StreamedPart(std::string path) : path_(std::move(path)) {}

    /// A new document for all but the streamed elements. A change of what precedes these, once they have begun, is
    /// allowed and costs another copy of the file.
    pugi::xml_document& document() { return part_.document(); }
    /// Begins the streamed elements, which are to be the only children of `parent`. To be called once.
    XmlStream& begin(pugi::xml_node parent);
    /// Writes the rest and puts the file in its place. Returns an empty text or the reason of the first failure.
    std::string finish();

private:
    void drain();
    void replaceBefore(const std::string& before);

    std::string path_;
    PackagePart part_;
    pugi::xml_node placeholder_;  // stands where the streamed elements do
    std::string before_;          // what the file begins with
    std::unique_ptr<FileReplacement> file_;
    std::string gathered_;  // streamed and not yet in the file
    bool isStreamed_ = false;
    std::optional<XmlStream> content_;
};

}  // namespace ZkMobileBackup
