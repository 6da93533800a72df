#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <pugixml.hpp>
#include <string>
#include <utility>

#include "export/PackageFormat.h"
#include "export/PackagePart.h"
#include "platform/XmlStream.h"

namespace ZkMobileBackup {

/// The one part of a bundle that is written: the document itself, with one table. Empty where the user has no folder
/// for application data.
std::string bundleIndexPath(const PackageFormat& format);
/// States version 1.0, whatever the document said.
void setXmlVersion(pugi::xml_document& document);

/// The element reached by one child position after the other, see PackagePart::child; null where there is none.
pugi::xml_node descendant(pugi::xml_node node, std::initializer_list<std::size_t> positions);

using Attributes = std::initializer_list<std::pair<const char*, std::string>>;
/// Sets attributes behind all others, in this order, wherever they stood before.
void renewAttributes(pugi::xml_node element, Attributes attributes);

/// Puts an empty data source at the end of a grid, in place of the template's.
void renewDataSource(pugi::xml_node grid);

/// Writes the part; where there is a function for it, the data source is streamed in place of the one that was renewed.
/// Returns an empty text or the reason of the failure.
std::string writeBundleIndex(const PackagePart& index, const std::string& path, pugi::xml_node grid,
                             const std::function<void(XmlStream&)>& streamDataSource);

/// Sets the count that a list states and appends `added` elements, all alike, to it.
void growList(pugi::xml_node list, std::int32_t count, std::int32_t added, const char* name, Attributes attributes);

}  // namespace ZkMobileBackup
