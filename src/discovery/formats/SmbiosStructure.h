#pragma once

// One raw SMBIOS structure as the kernel gives it (/sys/firmware/dmi/entries/T-N/raw):
// a formatted area whose second byte is its length, then the string set, NUL-terminated
// strings ended by an empty one. Every accessor is bounded by the bytes actually present,
// so truncated or hostile entries read as missing fields rather than past the end.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tov {

class SmbiosStructure {
public:
    // Nothing when the bytes are too short for the four-byte header or the length byte
    // is smaller than the header.
    static std::optional<SmbiosStructure> parse(std::string_view raw);

    std::uint8_t type() const { return type_; }
    // The formatted area's length as the structure declares it.
    std::uint8_t declaredLength() const { return declaredLength_; }

    // A field of the formatted area; nothing when it lies beyond the declared length or
    // the bytes present.
    std::optional<std::uint8_t> byteAt(std::size_t offset) const;
    std::optional<std::uint16_t> wordAt(std::size_t offset) const;
    std::optional<std::uint32_t> doubleWordAt(std::size_t offset) const;

    // The string whose one-based index is the byte at offset, trimmed, with control
    // characters removed and invalid UTF-8 replaced; "" when the index is 0, out of
    // range or the field is missing.
    std::string stringAt(std::size_t offset) const;

private:
    SmbiosStructure(std::string_view formatted, std::vector<std::string_view> strings, std::uint8_t declaredLength);
    bool holds(std::size_t offset, std::size_t width) const;

    std::string formatted_;
    std::vector<std::string> strings_;
    std::uint8_t type_ = 0;
    std::uint8_t declaredLength_ = 0;
};

}  // namespace tov
