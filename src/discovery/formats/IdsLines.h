#pragma once

// The line rules of the pci.ids and usb.ids databases, shared by the search of a whole
// text and the search of a file read in parts. A vendor is a line "vvvv  Name" at the
// start of a line (four lower-case hex digits, two blanks); its devices follow as
// tab-indented lines "\tdddd  Name"; comments and blank lines may stand among them.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tov {

// The bytes an entry of the id starts with: four lower-case hex digits and two blanks.
std::string idsEntryPrefix(std::uint16_t id);
inline constexpr std::size_t kIdsEntryPrefixSize = 6;

// The text after the entry's prefix on its line, trimmed; nothing when it is empty.
std::optional<std::string> idsEntryName(std::string_view line, std::size_t prefixSize);

// Comments and blank lines may stand between a vendor's lines.
bool isIgnorableIdsLine(std::string_view line);

// Whether the line closes the block of devices of the vendor above it: a line that is
// neither indented nor ignorable (the next vendor, or a section of classes).
bool endsIdsVendorBlock(std::string_view line);

// The id of a vendor line, from at least its first six bytes; nothing for another line.
std::optional<std::uint16_t> idsVendorLineId(std::string_view line);

}  // namespace tov
