#include "platform/XmlStream.h"

#include <array>
#include <fmt/format.h>

#include "platform/Xml.h"

namespace ZkMobileBackup {

namespace {

/// By byte: what stands for it; empty for a byte that stands for itself.
using Escapes = std::array<std::string_view, 256>;

constexpr Escapes textEscapes() {
    Escapes escapes{};
    escapes['&'] = "&amp;";
    escapes['<'] = "&lt;";
    escapes['>'] = "&gt;";
    return escapes;
}

/// Line ends and tabs would read back as blanks.
constexpr Escapes attributeEscapes() {
    Escapes escapes = textEscapes();
    escapes['>'] = {};
    escapes['"'] = "&quot;";
    escapes['\t'] = "&#09;";
    escapes['\n'] = "&#10;";
    escapes['\r'] = "&#13;";
    return escapes;
}

void appendEscaped(std::string& target, std::string_view text, const Escapes& escapes) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view escape = escapes[static_cast<unsigned char>(text[i])];
        if (escape.empty()) continue;
        target.append(text, start, i - start).append(escape);
        start = i + 1;
    }
    target.append(text, start);
}

/// Whether there are only printable ASCII characters that stand for themselves, as in most texts. Looks at all of them,
/// which is the fastest way.
bool isWrittenAsItIs(std::string_view text) {
    bool asItIs = true;
    for (const char c : text) {
        asItIs &= static_cast<signed char>(c) >= 0x20 && c != '&' && c != '<' && c != '>' && c != '"';
    }
    return asItIs;
}

void appendXmlText(std::string& target, std::string_view text, const Escapes& escapes) {
    if (isWrittenAsItIs(text)) {
        target.append(text);
    } else if (isXmlText(text)) {
        appendEscaped(target, text, escapes);
    } else {
        appendEscaped(target, xmlText(text), escapes);
    }
}

}  // namespace

XmlStream& XmlStream::begin(std::string_view name) {
    closeStartTag();
    if (!open_.empty()) newLine();
    if (open_.empty()) text_.append(depth_, '\t');
    text_.append("<").append(name);
    open_.push_back(name);
    content_ = Content::kNone;
    return *this;
}

XmlStream& XmlStream::attribute(std::string_view name, std::string_view value) {
    static constexpr Escapes kEscapes = attributeEscapes();
    text_.append(" ").append(name).append("=\"");
    appendXmlText(text_, value, kEscapes);
    text_ += '"';
    return *this;
}

XmlStream& XmlStream::text(std::string_view text) {
    static constexpr Escapes kEscapes = textEscapes();
    if (text.empty()) return *this;
    text_ += '>';
    appendXmlText(text_, text, kEscapes);
    content_ = Content::kText;
    return *this;
}

XmlStream& XmlStream::end() {
    if (content_ == Content::kNone) text_ += '>';
    const std::string_view name = open_.back();
    open_.pop_back();
    if (content_ == Content::kElements) newLine();
    text_.append("</").append(name).append(">");
    if (open_.empty()) text_ += '\n';
    content_ = Content::kElements;
    drainIfLong();
    return *this;
}

XmlStream& XmlStream::tree(pugi::xml_node element) {
    closeStartTag();
    if (!open_.empty()) text_ += '\n';
    appendPrettyPrinted(text_, element, depth_ + static_cast<unsigned>(open_.size()));
    if (!open_.empty()) text_.pop_back();  // the line ends when the next element begins
    content_ = Content::kElements;
    return *this;
}

void XmlStream::drainIfLong() {
    constexpr std::size_t kLong = std::size_t{256} << 10;
    if (drain_ && text_.size() >= kLong) drain_();
}

/// The element in hand gets a child.
void XmlStream::closeStartTag() {
    if (content_ == Content::kNone) text_ += '>';
}

void XmlStream::newLine() {
    text_ += '\n';
    text_.append(depth_ + open_.size(), '\t');
}

PrintedAround::PrintedAround(const pugi::xml_document& document, pugi::xml_node placeholder) {
    for (pugi::xml_node above = placeholder.parent(); above.type() == pugi::node_element; above = above.parent()) {
        ++depth;
    }
    const std::string name = placeholder.name();
    std::string mark;
    std::size_t found = 0;
    unsigned number = 0;
    do {  // until the document has nothing else that reads like the placeholder
        const std::string uniqueName = fmt::format("placeholder-{}", number++);
        mark = fmt::format("<{0}></{0}>", uniqueName);
        placeholder.set_name(uniqueName.c_str());
        before = prettyPrinted(document);
        found = before.find(mark);
    } while (found != before.rfind(mark));
    placeholder.set_name(name.c_str());
    hasPlace = found != std::string::npos;
    if (hasPlace) cutAt(found, mark.size());
}

void PrintedAround::cutAt(std::size_t position, std::size_t length) {
    behind = before.substr(position + length);
    before.resize(position);
    // The content brings the indentation and the end of its lines along.
    if (before.ends_with(std::string(depth, '\t'))) before.resize(position - depth);
    if (behind.starts_with('\n')) behind.erase(0, 1);
}

}  // namespace ZkMobileBackup
