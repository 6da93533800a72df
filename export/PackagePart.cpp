#include "export/PackagePart.h"

#include <fmt/format.h>
#include <string_view>

#include "platform/FileReplacement.h"
#include "platform/Files.h"
#include "platform/Xml.h"
#include "platform/XmlStream.h"

namespace ZkMobileBackup {

PackagePart::PackagePart() {
    pugi::xml_node declaration = document_.append_child(pugi::node_declaration);
    setAttribute(declaration, "version", "1.0");
    setAttribute(declaration, "encoding", "UTF-8");
    setAttribute(declaration, "standalone", "yes");
}

PackagePart::PackagePart(const std::string& path) {
    constexpr unsigned kKeepDeclaration = pugi::parse_default | pugi::parse_declaration | pugi::parse_doctype;
    const pugi::xml_parse_result result = document_.load_file(path.c_str(), kKeepDeclaration);
    if (result) return;
    failure_ = fmt::format("Cannot read '{}': {}.", path, result.description());
    document_.reset();  // of what was read until then
}

pugi::xml_node PackagePart::first(const char* name) const {
    return document_.find_node([name](pugi::xml_node node) { return std::string_view(node.name()) == name; });
}

pugi::xml_node PackagePart::child(pugi::xml_node parent, std::size_t position) {
    for (const pugi::xml_node node : parent.children()) {
        if (node.type() == pugi::node_element && position-- == 0) return node;
    }
    return {};
}

pugi::xml_node PackagePart::insertChild(pugi::xml_node parent, std::size_t position, const char* name) {
    const pugi::xml_node next = child(parent, position);
    return next ? parent.insert_child_before(name, next) : parent.append_child(name);
}

std::string PackagePart::write(const std::string& path) const {
    return replaceFile(path, prettyPrinted(document_));
}

std::string PackagePart::write(const std::string& path, pugi::xml_node placeholder,
                               const std::function<void(XmlStream& parent)>& addContent) const {
    const PrintedAround around(document_, placeholder);
    if (!around.hasPlace) return write(path);
    FileReplacement file(path);
    std::string text = around.before;
    const auto drain = [&file, &text] {
        file.append(text);
        text.clear();
    };
    XmlStream parent(text, around.depth, drain);
    addContent(parent);
    drain();
    file.append(around.behind);
    return file.finish();
}

}  // namespace ZkMobileBackup
