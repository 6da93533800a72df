#include "platform/property_list_limits.h"

#include <algorithm>
#include <cstdint>
#include <pugixml.hpp>
#include <sstream>
#include <vector>

namespace ZkMobileBackup {

namespace {

constexpr std::size_t kTrailerLength = 32;

/// High halves of the markers that lead binary objects.
enum ObjectType : unsigned {
    kData = 0x40,
    kText = 0x50,
    kUtf16Text = 0x60,
    kArray = 0xA0,
    kOrderedSet = 0xB0,
    kSet = 0xC0,
    kDictionary = 0xD0,
};

/// A binary object with a size of its own: where its content begins and what it takes.
struct SizedObject {
    std::uint64_t content;
    std::uint64_t bytes;
    std::uint64_t references;
};

/// Follows every reference of a binary property list, an object again for each reference to it.
class BinaryWalk {
public:
    explicit BinaryWalk(std::string_view bytes) : bytes_(bytes) {
        const std::uint64_t trailer = bytes.size() - kTrailerLength;
        offsetWidth_ = number(trailer + 6, 1);
        referenceWidth_ = number(trailer + 7, 1);
        pending_.push_back({number(trailer + 16, 8), 1});
        offsetTable_ = number(trailer + 24, 8);
    }

    bool staysWithinLimits() {
        while (!pending_.empty()) {
            const Reference reference = pending_.back();
            pending_.pop_back();
            if (++visited_ > kMostPropertyListNodes || reference.depth > kDeepestPropertyList) return false;
            if (!enter(reference)) return false;
        }
        return true;
    }

private:
    struct Reference {
        std::uint64_t object;
        int depth;
    };

    /// A big-endian number; bytes outside the file read as 0, of wide numbers the low 64 bits stay.
    std::uint64_t number(std::uint64_t position, std::uint64_t width) const {
        std::uint64_t value = 0;
        for (std::uint64_t i = width > sizeof value ? width - sizeof value : 0; i < width; ++i) {
            const std::uint64_t at = position + i;
            value = value << 8 | (at < bytes_.size() ? static_cast<std::uint8_t>(bytes_[at]) : 0U);
        }
        return value;
    }

    SizedObject objectAt(std::uint64_t position) const {
        const auto marker = static_cast<unsigned>(number(position++, 1));
        std::uint64_t size = marker & 0xFU;
        if (size == 0xF) {
            const std::uint64_t width = std::uint64_t{1} << (number(position++, 1) & 0xF);
            size = number(position, width);
            position += width;
        }
        // More than the file has is enough to be refused; from here on nothing wraps.
        size = std::min<std::uint64_t>(size, bytes_.size());
        switch (marker & 0xF0U) {
            case kData:
            case kText:
                return {position, size, 0};
            case kUtf16Text:
                return {position, 2 * size, 0};
            case kArray:
            case kOrderedSet:
            case kSet:
                return {position, 0, size};
            case kDictionary:
                return {position, 0, 2 * size};
            default:
                return {position, 0, 0};
        }
    }

    /// Counts an object and notes what it refers to; false when that is beyond the limits.
    bool enter(const Reference& reference) {
        const SizedObject object = objectAt(number(offsetTable_ + reference.object * offsetWidth_, offsetWidth_));
        copiedBytes_ += object.bytes;
        if (copiedBytes_ > kLargestPropertyList) return false;
        if (object.references > kMostPropertyListNodes - pending_.size()) return false;
        for (std::uint64_t i = 0; i < object.references; ++i) {
            const std::uint64_t child = number(object.content + i * referenceWidth_, referenceWidth_);
            pending_.push_back({child, reference.depth + 1});
        }
        return true;
    }

    std::string_view bytes_;
    std::uint64_t offsetWidth_ = 0;
    std::uint64_t referenceWidth_ = 0;
    std::uint64_t offsetTable_ = 0;
    std::vector<Reference> pending_;
    std::size_t visited_ = 0;
    std::uint64_t copiedBytes_ = 0;
};

/// Walks a tree for as long as it stays within the limits.
class LimitWalker : public pugi::xml_tree_walker {
public:
    bool for_each(pugi::xml_node&) override {
        return ++visited_ <= kMostPropertyListNodes && depth() <= kDeepestPropertyList;
    }

private:
    std::size_t visited_ = 0;
};

}  // namespace

bool isModestBinaryPropertyList(std::string_view bytes) {
    if (bytes.size() < kTrailerLength || bytes.size() > kLargestPropertyList) return false;
    return BinaryWalk(bytes).staysWithinLimits();
}

std::optional<std::string> plainXmlPropertyList(std::string_view bytes) {
    if (bytes.size() > kLargestPropertyList) return std::nullopt;
    constexpr unsigned kElementsAndTextsOnly =
        pugi::parse_minimal | pugi::parse_escapes | pugi::parse_cdata | pugi::parse_ws_pcdata_single;
    pugi::xml_document document;
    LimitWalker walker;
    if (!document.load_buffer(bytes.data(), bytes.size(), kElementsAndTextsOnly)) return std::nullopt;
    if (!document.traverse(walker)) return std::nullopt;
    std::ostringstream text;
    document.save(text, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return text.str();
}

}  // namespace ZkMobileBackup
