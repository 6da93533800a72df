#pragma once

#include <functional>
#include <pugixml.hpp>
#include <string>

namespace ZkMobileBackup {

class XmlStream;

/// One XML file of a package.
class PackagePart {
public:
    /// A new document: version 1.0, UTF-8, standalone.
    PackagePart();
    /// The document in a file; empty where it cannot be read, with the reason in failure().
    explicit PackagePart(const std::string& path);

    pugi::xml_document& document() { return document_; }
    /// The first element of this name, in document order; null for none.
    pugi::xml_node first(const char* name) const;
    /// Child element `position`, counted from 0 without white space and comments; null for none.
    static pugi::xml_node child(pugi::xml_node parent, std::size_t position);
    /// A new child element at that position, the last one where the parent has fewer.
    static pugi::xml_node insertChild(pugi::xml_node parent, std::size_t position, const char* name);

    const std::string& failure() const { return failure_; }
    /// Writes the document, pretty-printed, in place of the file. Returns an empty text or the reason of the failure.
    std::string write(const std::string& path) const;
    /// The same with what `addContent` streams in place of an element (see PrintedAround); it goes to the file as it
    /// comes. Without such an element nothing is streamed.
    std::string write(const std::string& path, pugi::xml_node placeholder,
                      const std::function<void(XmlStream& parent)>& addContent) const;

private:
    pugi::xml_document document_;
    std::string failure_;
};

}  // namespace ZkMobileBackup
