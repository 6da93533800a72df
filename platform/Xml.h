#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace ZkMobileBackup {

/// The text without the characters that XML 1.0 cannot carry: U+0000 to U+001F but tab, line feed and carriage return,
/// U+FFFE, U+FFFF and whatever is no valid UTF-8.
std::string xmlText(std::string_view text);
/// Whether it has no such characters.
bool isXmlText(std::string_view text);

/// Appends `<name>` to `parent`.
pugi::xml_node appendElement(pugi::xml_node parent, const char* name);
/// Appends `<name>text</name>`, the text passed through xmlText.
pugi::xml_node appendTextElement(pugi::xml_node parent, const char* name, std::string_view text);
void setAttribute(pugi::xml_node element, const char* name, std::string_view value);

/// The document as text, indented, its declaration and document type included. An element without content is written
/// as a start tag and an end tag, which HTML readers need. Element texts stand as they are, never re-indented.
std::string prettyPrinted(const pugi::xml_document& document);
/// The same of one element, which stands `depth` levels deep.
void appendPrettyPrinted(std::string& text, pugi::xml_node element, unsigned depth);

}  // namespace ZkMobileBackup
