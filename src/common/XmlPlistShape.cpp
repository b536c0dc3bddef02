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

}  // namespace

std::optional<XmlPlistShape> measureXmlPlist(std::string_view bytes, const XmlPlistShape& limits) {
    XmlPlistShape shape;
    std::uint64_t openContainers = 0;
    for (std::size_t position = bytes.find('<'); position != std::string_view::npos;
         position = bytes.find('<', position + 1)) {
        const std::size_t close = bytes.find('>', position);
        if (close == std::string_view::npos) return std::nullopt;
        const bool closing = position + 1 < bytes.size() && bytes[position + 1] == '/';
        const std::string_view name = nameAt(bytes, position + (closing ? 2 : 1));
        const bool selfClosing = close > position && bytes[close - 1] == '/';
        if (isContainer(name)) {
            if (closing) {
                if (openContainers == 0) return std::nullopt;
                --openContainers;
                continue;
            }
            if (++shape.nodes > limits.nodes) return std::nullopt;
            if (selfClosing) continue;
            ++openContainers;
            if (openContainers > shape.depth) shape.depth = openContainers;
            if (shape.depth > limits.depth) return std::nullopt;
        } else if (!closing && isValueOrKey(name)) {
            if (++shape.nodes > limits.nodes) return std::nullopt;
        }
    }
    return shape;
}

}  // namespace tov
