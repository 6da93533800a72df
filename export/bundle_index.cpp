#include "export/bundle_index.h"

#include "platform/Xml.h"

namespace ZkMobileBackup {

std::string bundleIndexPath(const PackageFormat& format) {
    return stagePath(format, "index.xml");
}

void setXmlVersion(pugi::xml_document& document) {
    pugi::xml_node declaration = document.first_child();
    if (declaration.type() != pugi::node_declaration) declaration = document.prepend_child(pugi::node_declaration);
    setAttribute(declaration, "version", "1.0");
}

pugi::xml_node descendant(pugi::xml_node node, std::initializer_list<std::size_t> positions) {
    for (const std::size_t position : positions) node = PackagePart::child(node, position);
    return node;
}

void renewAttributes(pugi::xml_node element, Attributes attributes) {
    for (const auto& [name, value] : attributes) element.remove_attribute(name);
    for (const auto& [name, value] : attributes) setAttribute(element, name, value);
}

void renewDataSource(pugi::xml_node grid) {
    grid.remove_child(descendant(grid, {4}));
    appendElement(grid, "sf:datasource");
}

std::string writeBundleIndex(const PackagePart& index, const std::string& path, pugi::xml_node grid,
                             const std::function<void(XmlStream&)>& streamDataSource) {
    if (!grid || !streamDataSource) return index.write(path);
    return index.write(path, grid.last_child(), streamDataSource);
}

void growList(pugi::xml_node list, std::int32_t count, std::int32_t added, const char* name, Attributes attributes) {
    setAttribute(list, "sf:count", std::to_string(count));
    for (std::int32_t i = 0; i < added; ++i) {
        const pugi::xml_node element = appendElement(list, name);
        for (const auto& [attribute, value] : attributes) setAttribute(element, attribute, value);
    }
}

}  // namespace ZkMobileBackup
