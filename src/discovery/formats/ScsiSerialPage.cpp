#include "discovery/formats/ScsiSerialPage.h"

#include <cstddef>

namespace tov {
namespace {

constexpr std::size_t kHeaderBytes = 4;
constexpr unsigned char kUnitSerialNumberPage = 0x80;

unsigned byteAt(std::string_view bytes, std::size_t index) { return static_cast<unsigned char>(bytes[index]); }

}  // namespace

std::optional<ScsiSerialPage> parseScsiSerialPage(std::string_view bytes) {
    if (bytes.size() < kHeaderBytes || byteAt(bytes, 1) != kUnitSerialNumberPage) return std::nullopt;
    const std::size_t length = (std::size_t{byteAt(bytes, 2)} << 8) | byteAt(bytes, 3);
    if (length > bytes.size() - kHeaderBytes) return std::nullopt;
    return ScsiSerialPage{std::string(bytes.substr(kHeaderBytes, length))};
}

}  // namespace tov
