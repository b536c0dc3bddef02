// Feeds arbitrary bytes to the parsers of the small outside texts of the network, sound
// and id discovery: the id databases, ALSA's card list, sysfs id files and the public-IP
// page. Besides not crashing, each answer must keep its promised shape.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "discovery/QVIPInfoDiscoverer.h"
#include "discovery/formats/HardwareIds.h"
#include "discovery/linux/AsoundCards.h"

namespace {

// The first four bytes choose the ids to look up; the rest is the database.
void checkIds(std::string_view bytes) {
    if (bytes.size() < 4) return;
    const auto vendor = static_cast<std::uint16_t>((static_cast<unsigned char>(bytes[0]) << 8) |
                                                   static_cast<unsigned char>(bytes[1]));
    const auto device = static_cast<std::uint16_t>((static_cast<unsigned char>(bytes[2]) << 8) |
                                                   static_cast<unsigned char>(bytes[3]));
    const std::string_view text = bytes.substr(4);
    const std::optional<std::string> vendorName = tov::idsVendorName(text, vendor);
    if (vendorName && (vendorName->empty() || vendorName->find('\n') != std::string::npos)) std::abort();
    const std::optional<std::string> deviceName = tov::idsDeviceName(text, vendor, device);
    if (deviceName && (deviceName->empty() || deviceName->find('\n') != std::string::npos)) std::abort();
}

void checkAddress(std::string_view bytes) {
    const std::optional<std::string> address = tov::QVIPInfoDiscoverer::ipAddressFromHtmlContents(bytes);
    if (address && address->size() > 15) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    checkIds(bytes);
    for (const tov::AsoundCard& card : tov::parseAsoundCards(bytes)) {
        if (card.number < 0 || card.name.find('\n') != std::string::npos) std::abort();
    }
    tov::parseHardwareId(bytes);
    checkAddress(bytes);
    return 0;
}
