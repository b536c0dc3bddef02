#pragma once

// A dictionary of strings and numbers as the keyed archive that macOS's NSKeyedArchiver
// writes: a binary property list { "$version": 100000, "$archiver": "NSKeyedArchiver",
// "$top": { "root": UID 1 }, "$objects": [ "$null", the dictionary { "NS.keys",
// "NS.objects", "$class" }, its keys, its values, its class description ] }.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/Value.h"

namespace tov {

// Archives larger than this are not decoded: a dictionary of a few settings takes a few
// hundred bytes.
constexpr std::uint64_t kMaximumKeyedArchiveBytes = 1 << 20;

// The archive bytes of the dictionary, as an NSMutableDictionary. Only strings and
// numbers (signed, unsigned, floating) are kept: other values are left out. Nothing when a
// key or string value cannot be a property-list string (it holds a NUL byte or is not
// UTF-8) or the property list cannot be written.
std::optional<std::string> encodeKeyedArchive(const Dictionary& dictionary);

// The dictionary archived in bytes. Accepts what macOS writes: an NSDictionary or
// NSMutableDictionary root, strings as plain strings or as NSString / NSMutableString
// objects, numbers as integers (16-byte ones as unsigned) or reals, objects shared between
// references. Entries whose key is not a string, or whose value is neither a string nor a
// number (a reference to "$null" included), are skipped. Nothing when the bytes are not a
// binary property list of that form, when a reference points outside "$objects", when an
// object contains itself, or when the property list would unfold past safe bounds.
std::optional<DictionaryRef> decodeKeyedArchive(std::string_view bytes);

}  // namespace tov
