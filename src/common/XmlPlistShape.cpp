#include "common/XmlPlistShape.h"

namespace tov {
namespace {

bool isNameEnd(char character) {
    return character == '>' || character == '/' || character == ' ' || character == '\t' || character == '\n' ||
           character == '\r';
}

// The element name right after "<" or "</" at position.
std::string_view nameAt(std::string_view bytes, std::size_t position) {
    std::size_t end = position;
    while (end < bytes.size() && !isNameEnd(bytes[end])) ++end;
    return bytes.substr(position, end - position);
}

bool isContainer(std::string_view name) { return name == "dict" || name == "array"; }

bool isValueOrKey(std::string_view name) {
    return name == "key" || name == "string" || name == "integer" || name == "real" || name == "true" ||
           name == "false" || name == "data" || name == "date";
}

bool startsWithAt(std::string_view bytes, std::size_t position, std::string_view prefix) {
    return bytes.substr(position, prefix.size()) == prefix;
}

constexpr std::size_t kNowhere = std::string_view::npos;

// The first position from position on where found(position) holds, text between double
// quotes skipped as the parser skips it in markup; kNowhere when there is none or a quote
// is never closed.
template <class Found>
std::size_t findOutsideQuotes(std::string_view bytes, std::size_t position, Found found) {
    for (; position < bytes.size(); ++position) {
        if (found(position)) return position;
        if (bytes[position] == '"') {
            position = bytes.find('"', position + 1);
            if (position == kNowhere) return kNowhere;
        }
    }
    return kNowhere;
}

// Just past the first end marker from position on; kNowhere when there is none.
std::size_t pastMarker(std::string_view bytes, std::size_t position, std::string_view marker) {
    const std::size_t found = bytes.find(marker, position);
    return found == kNowhere ? found : found + marker.size();
}

std::size_t pastQuotedMarker(std::string_view bytes, std::size_t position, std::string_view marker) {
    const std::size_t found =
        findOutsideQuotes(bytes, position, [&](std::size_t at) { return startsWithAt(bytes, at, marker); });
    return found == kNowhere ? found : found + marker.size();
}

// A document type declaration ends at its first ">", or, when a "[" comes first, at the
// first "]>" after it (quoted text skipped).
std::size_t pastDoctype(std::string_view bytes, std::size_t position) {
    const std::size_t stop =
        findOutsideQuotes(bytes, position, [&](std::size_t at) { return bytes[at] == '[' || bytes[at] == '>'; });
    if (stop == kNowhere) return stop;
    if (bytes[stop] == '>') return stop + 1;
    return pastQuotedMarker(bytes, stop, "]>");
}

// Where the parser goes on after the markup at position (a "<") when it is a comment, a
// character-data section, a processing instruction or a document type declaration, whose
// contents it skips; 0 for an element tag; kNowhere when the markup is never closed.
std::size_t pastSkippedMarkup(std::string_view bytes, std::size_t position) {
    if (startsWithAt(bytes, position, "<!--")) return pastMarker(bytes, position + 4, "-->");
    if (startsWithAt(bytes, position, "<![CDATA[")) return pastMarker(bytes, position + 9, "]]>");
    if (startsWithAt(bytes, position, "<?")) return pastQuotedMarker(bytes, position + 2, "?>");
    if (startsWithAt(bytes, position, "<!DOCTYPE")) return pastDoctype(bytes, position + 9);
    return 0;
}

// The ">" that ends the element tag at position: the name runs to a blank, "<" or ">";
// after it, attributes may quote any character. kNowhere when a "<" comes first or the
// tag never ends, which the parser refuses too.
std::size_t tagEnd(std::string_view bytes, std::size_t position) {
    const std::size_t nameEnd = bytes.find_first_of(" \r\n\t<>", position + 1);
    if (nameEnd == kNowhere || bytes[nameEnd] == '>') return nameEnd;
    const std::size_t end =
        findOutsideQuotes(bytes, nameEnd, [&](std::size_t at) { return bytes[at] == '<' || bytes[at] == '>'; });
    if (end == kNowhere || bytes[end] == '<') return kNowhere;
    return end;
}

class ShapeCounter {
public:
    explicit ShapeCounter(const XmlPlistShape& limits) : limits_(limits) {}

    // Counts the element tag at position; false when a limit is passed or a container is
    // closed that was never opened.
    bool countTag(std::string_view bytes, std::size_t position, std::size_t close) {
        const bool closing = position + 1 < bytes.size() && bytes[position + 1] == '/';
        const std::string_view name = nameAt(bytes, position + (closing ? 2 : 1));
        const bool selfClosing = bytes[close - 1] == '/';
        if (isContainer(name)) return closing ? closeContainer() : openContainer(selfClosing);
        if (!closing && isValueOrKey(name)) return countNode();
        return true;
    }

    const XmlPlistShape& shape() const { return shape_; }

private:
    bool countNode() { return ++shape_.nodes <= limits_.nodes; }

    // An empty container is a level of its own as much as one with contents.
    bool openContainer(bool selfClosing) {
        if (!countNode()) return false;
        if (openContainers_ + 1 > shape_.depth) shape_.depth = openContainers_ + 1;
        if (shape_.depth > limits_.depth) return false;
        if (!selfClosing) ++openContainers_;
        return true;
    }

    bool closeContainer() {
        if (openContainers_ == 0) return false;
        --openContainers_;
        return true;
    }

    XmlPlistShape limits_;
    XmlPlistShape shape_;
    std::uint64_t openContainers_ = 0;
};

}  // namespace

std::optional<XmlPlistShape> measureXmlPlist(std::string_view bytes, const XmlPlistShape& limits) {
    ShapeCounter counter(limits);
    std::size_t position = bytes.find('<');
    while (position != kNowhere) {
        std::size_t next = pastSkippedMarkup(bytes, position);
        if (next == 0) {
            const std::size_t close = tagEnd(bytes, position);
            if (close == kNowhere || !counter.countTag(bytes, position, close)) return std::nullopt;
            next = close + 1;
        }
        if (next == kNowhere) return std::nullopt;
        position = bytes.find('<', next);
    }
    return counter.shape();
}

}  // namespace tov
