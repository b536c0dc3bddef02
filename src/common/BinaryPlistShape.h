#pragma once

// The size of the tree a binary property list ("bplist00") unfolds into. A binary property
// list stores each object once and lets containers refer to it any number of times; a tree
// reader such as libplist copies a shared object at every reference and recurses once per
// level of nesting. A few hundred bytes can therefore ask for gigabytes or for a recursion
// deeper than any stack. Measuring the shape first, from the object table alone, lets a
// reader refuse such input before it is parsed.

#include <cstdint>
#include <optional>
#include <string_view>

namespace tov {

struct BinaryPlistShape {
    // Tree nodes once every reference is unfolded (dictionary keys count as nodes).
    std::uint64_t nodes = 0;
    // Bytes of string and data contents once unfolded; two-byte strings count four bytes a
    // character, the most their UTF-8 form can take.
    std::uint64_t payloadBytes = 0;
    // Nodes on the longest path from the top object down to a leaf.
    std::uint64_t depth = 0;
};

// The shape of the binary property list in bytes. Nothing when the bytes are not a
// well-formed "bplist00" object table (bad trailer, offsets or references wider than 8
// bytes, lengths in other than 1, 2, 4 or 8 bytes, an offset or reference out of range, a container running past the table), when an
// object contains itself, when a two-byte string holds the character U+0000, or when any
// measure exceeds its limit.
std::optional<BinaryPlistShape> measureBinaryPlist(std::string_view bytes, const BinaryPlistShape& limits);

}  // namespace tov
