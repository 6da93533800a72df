#include "platform/Xml.h"

#include <cstdint>
#include <unicode/utf8.h>

namespace ZkMobileBackup {

namespace {

constexpr const char* kIndentation = "\t";
constexpr unsigned kPrettyPrint = pugi::format_indent | pugi::format_no_empty_element_tags;

/// Reads the next character; negative for bytes that are no valid UTF-8.
UChar32 nextCharacter(std::string_view text, std::int64_t& position) {
    UChar32 character = 0;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    U8_NEXT(bytes, position, static_cast<std::int64_t>(text.size()), character);
    return character;
}

bool isCarriedByXml(UChar32 character) {
    if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
    return character != 0xFFFE && character != 0xFFFF;
}

/// Whether there are only printable ASCII characters, as in most texts. Looks at all of them, which is the fastest way.
bool isPlainText(std::string_view text) {
    bool plain = true;
    for (const char c : text) plain &= static_cast<signed char>(c) >= 0x20;
    return plain;
}

/// Appends what pugixml prints to a text.
class TextWriter : public pugi::xml_writer {
public:
    explicit TextWriter(std::string& text) : text_(text) {}
    void write(const void* data, std::size_t size) override { text_.append(static_cast<const char*>(data), size); }

private:
    std::string& text_;
};

template <typename Target>
void setXmlText(Target target, std::string_view text) {
    if (isXmlText(text)) {
        target.set_value(text.data(), text.size());
    } else {
        const std::string carried = xmlText(text);
        target.set_value(carried.data(), carried.size());
    }
}

}  // namespace

bool isXmlText(std::string_view text) {
    if (isPlainText(text)) return true;
    const auto length = static_cast<std::int64_t>(text.size());
    for (std::int64_t i = 0; i < length;) {
        if (!isCarriedByXml(nextCharacter(text, i))) return false;
    }
    return true;
}

std::string xmlText(std::string_view text) {
    std::string carried;
    carried.reserve(text.size());
    const auto length = static_cast<std::int64_t>(text.size());
    for (std::int64_t i = 0; i < length;) {
        const std::int64_t start = i;
        if (!isCarriedByXml(nextCharacter(text, i))) continue;
        carried.append(text, static_cast<std::size_t>(start), static_cast<std::size_t>(i - start));
    }
    return carried;
}

pugi::xml_node appendElement(pugi::xml_node parent, const char* name) {
    return parent.append_child(name);
}

pugi::xml_node appendTextElement(pugi::xml_node parent, const char* name, std::string_view text) {
    pugi::xml_node element = appendElement(parent, name);
    if (!text.empty()) setXmlText(element.append_child(pugi::node_pcdata), text);
    return element;
}

void setAttribute(pugi::xml_node element, const char* name, std::string_view value) {
    pugi::xml_attribute attribute = element.attribute(name);
    setXmlText(attribute ? attribute : element.append_attribute(name), value);
}

std::string prettyPrinted(const pugi::xml_document& document) {
    std::string text;
    TextWriter writer(text);
    document.save(writer, kIndentation, kPrettyPrint, pugi::encoding_utf8);
    return text;
}

void appendPrettyPrinted(std::string& text, pugi::xml_node element, unsigned depth) {
    TextWriter writer(text);
    element.print(writer, kIndentation, kPrettyPrint, pugi::encoding_utf8, depth);
}

}  // namespace ZkMobileBackup
