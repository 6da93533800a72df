#pragma once

#include <cstddef>
#include <functional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZkMobileBackup {

/// Writes the bulk of a document as text, without a tree in memory: byte for byte what prettyPrinted makes of the same
/// elements. An element holds either other elements or one text.
class XmlStream {
public:
    /// Appends to `text`, the outermost elements standing `depth` levels deep in their document.
    XmlStream(std::string& text, unsigned depth) : text_(text), depth_(depth) {}
    /// The same, `drain` being called from time to time to take the text away, so that it stays short.
    XmlStream(std::string& text, unsigned depth, std::function<void()> drain)
        : text_(text), depth_(depth), drain_(std::move(drain)) {}

    /// Begins an element. Names must outlive its end.
    XmlStream& begin(std::string_view name);
    /// Adds an attribute to the element that was just begun; the value is passed through xmlText.
    XmlStream& attribute(std::string_view name, std::string_view value);
    /// Gives the element that was just begun its text, passed through xmlText; an empty one changes nothing.
    XmlStream& text(std::string_view text);
    /// Ends the innermost element.
    XmlStream& end();
    /// Adds an element of a tree, with all it holds.
    XmlStream& tree(pugi::xml_node element);

private:
    void closeStartTag();
    void drainIfLong();
    void newLine();

    std::string& text_;
    unsigned depth_;
    std::function<void()> drain_;  // may be empty
    std::vector<std::string_view> open_;
    enum class Content { kNone, kText, kElements } content_ = Content::kElements;  // of the innermost element
};

/// The document as text like prettyPrinted, but for one element, in whose place streamed content is to stand.
struct PrintedAround {
    /// `placeholder` is an element without attributes and content. It bears another name meanwhile, by which it is told
    /// from everything else.
    PrintedAround(const pugi::xml_document& document, pugi::xml_node placeholder);

    std::string before;  ///< the whole document where there is no place for the content
    std::string behind;
    unsigned depth = 0;     ///< at which the content stands
    bool hasPlace = false;  ///< whether the placeholder is an element of the document

private:
    void cutAt(std::size_t position, std::size_t length);
};

}  // namespace ZkMobileBackup
