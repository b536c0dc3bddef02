#pragma once

// The size of the tree an XML property list unfolds into, measured from its tags alone
// before any parser sees it. A property list from a tool is outside input: nesting
// thousands of containers deep would take a recursive reader past its stack, and millions
// of empty elements would take gigabytes once they are objects. Comments, character-data
// sections, processing instructions, the document type declaration and quoted text inside
// a tag are skipped as the parser skips them, so tags hidden there can neither open nor
// close a container; other
// tags count generously (a tag the parser would refuse counts too), so a list the measure
// accepts is within bounds.

#include <cstdint>
#include <optional>
#include <string_view>

namespace tov {

struct XmlPlistShape {
    // Elements that become tree nodes (dictionary keys count as nodes).
    std::uint64_t nodes = 0;
    // Containers on the deepest path, the top one and an empty innermost one included.
    std::uint64_t depth = 0;
};

// The shape of the XML property list in bytes; nothing when a measure exceeds its limit,
// a tag, comment, character-data section, processing instruction or document type
// declaration is not closed, or a container is closed that was never opened.
std::optional<XmlPlistShape> measureXmlPlist(std::string_view bytes, const XmlPlistShape& limits);

}  // namespace tov
