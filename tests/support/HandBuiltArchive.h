#pragma once

// Keyed archives and binary property lists put together piece by piece, for the inputs
// that the encoder never writes: what macOS writes in other forms, and broken files.

#include <plist/plist.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace tov::testing {

plist_t newUid(std::uint64_t index);
plist_t newUidArray(std::initializer_list<std::uint64_t> indexes);
// { "NS.keys": [...], "NS.objects": [...], "$class": UID(classIndex) }
plist_t newDictionaryObject(std::initializer_list<std::uint64_t> keys, std::initializer_list<std::uint64_t> values,
                            std::uint64_t classIndex);
// { "NS.string": text, "$class": UID(classIndex) }
plist_t newStringObject(const std::string& text, std::uint64_t classIndex);
// { "$classname": name, "$classes": [name, parents...] }
plist_t newClassDescription(const std::string& name, std::initializer_list<const char*> parents);

// The binary property list of node; node stays the caller's.
std::string binaryPlist(plist_t node);
std::string xmlPlist(plist_t node);

// "$objects" starting with "$null", and the archive around it.
class HandBuiltArchive {
public:
    HandBuiltArchive();
    ~HandBuiltArchive();
    HandBuiltArchive(const HandBuiltArchive&) = delete;
    HandBuiltArchive& operator=(const HandBuiltArchive&) = delete;

    // Takes the object and answers its index.
    std::uint64_t add(plist_t object);
    // The whole archive, "$top" naming root; the caller frees it.
    plist_t newArchive(std::uint64_t root = 1) const;
    std::string binary(std::uint64_t root = 1) const;

private:
    plist_t objects_;
};

// Settings as macOS archives an NSDictionary: "previous-report-hash" as an NSMutableString
// object ("92eb5ffee6ae2fec3ad71c777531578f"), "localIp" as a plain string ("10.0.0.5") and
// "previous-full-scan-datetime" as an integer (1700000000).
std::string macStyleSettingsArchive();

// A binary property list assembled from raw object bytes, for shapes that libplist never
// writes (shared objects, cycles, bad tables).
struct RawBinaryPlist {
    std::vector<std::string> objects;
    std::uint64_t top = 0;
    unsigned offsetWidth = 2;
    unsigned referenceWidth = 2;

    std::string bytes() const;
    // An array (marker 0xA) or dictionary (0xD: the key references, then the values') object.
    std::string container(unsigned kind, const std::vector<std::uint64_t>& references) const;
};

std::string bigEndianBytes(std::uint64_t value, unsigned width);

}  // namespace tov::testing
