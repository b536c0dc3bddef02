#include "discovery/macos/MacAddressText.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace tov {
namespace {

constexpr std::size_t kAddressBytes = 6;

// The element as a byte, when it is a whole number from 0 to 255.
std::optional<unsigned> byteOf(const Value& element) {
    if (element.type() == Value::Type::Int) {
        const std::int64_t number = element.toInt64();
        if (number >= 0 && number <= 0xFF) return static_cast<unsigned>(number);
    } else if (element.type() == Value::Type::UInt) {
        const std::uint64_t number = element.toUInt64();
        if (number <= 0xFF) return static_cast<unsigned>(number);
    }
    return std::nullopt;
}

std::optional<std::array<unsigned, kAddressBytes>> firstAddressBytes(const Value& data) {
    const ArrayRef bytes = data.array();
    if (!bytes || bytes->size() < kAddressBytes) return std::nullopt;
    std::array<unsigned, kAddressBytes> address{};
    for (std::size_t index = 0; index < kAddressBytes; ++index) {
        const std::optional<unsigned> byte = byteOf((*bytes)[index]);
        if (!byte) return std::nullopt;
        address[index] = *byte;
    }
    return address;
}

}  // namespace

std::string macAddressText(const Value& data) {
    const std::optional<std::array<unsigned, kAddressBytes>> address = firstAddressBytes(data);
    if (!address) return "";
    char text[sizeof "00:00:00:00:00:00"];
    std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", (*address)[0], (*address)[1],
                  (*address)[2], (*address)[3], (*address)[4], (*address)[5]);
    return text;
}

}  // namespace tov
