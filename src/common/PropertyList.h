#pragma once

// Reads a property list, XML or binary, as a tool prints it or a file holds it, into a
// value tree. The bytes are outside input: their shape is measured first (nodes, nesting,
// payload) and a list beyond the bounds is refused before libplist sees it.
//
// The tree: dictionaries keep the list's key order; strings, booleans, integers (signed
// where the list's number is negative) and reals as themselves; a date as its text
// "yyyy-MM-ddTHH:mm:ssZ" (UTC); a data object as an array of its bytes, each a number
// from 0 to 255. The value tree has no byte-string kind, and an array of byte numbers
// cannot be taken for text, survives a JSON capture unchanged, and lets a rule read the
// first bytes of an address directly.

#include <cstdint>
#include <optional>
#include <string_view>

#include "model/Value.h"

namespace tov {

struct PropertyListLimits {
    std::uint64_t bytes = 64ULL * 1024 * 1024;
    std::uint64_t nodes = 1000000;
    std::uint64_t depth = 200;
    // Bytes of all data objects together (each becomes one number in the tree).
    std::uint64_t dataBytes = 4ULL * 1024 * 1024;
};

// The tree of the property list in bytes; nothing when the bytes are empty, are no
// well-formed property list, or exceed a limit.
std::optional<Value> parsePropertyList(std::string_view bytes, const PropertyListLimits& limits = {});

}  // namespace tov
