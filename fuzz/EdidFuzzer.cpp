// Hands arbitrary bytes to the EDID reader as if a monitor sent them. Whatever the bytes,
// reading must stay inside them, and what comes out must be consistent: a printable
// non-empty name, a vendor id of at most four hex digits, a sensible colour depth, modes
// with pixels and a refresh rate within bounds.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "common/PrintableText.h"
#include "discovery/formats/Edid.h"

namespace {

void requireSensible(const std::optional<tov::DisplayMode>& mode) {
    if (!mode) return;
    if (mode->width <= 0 || mode->height <= 0) std::abort();
    if (mode->refreshRate <= 0 || mode->refreshRate > tov::kMaximumRefreshRate) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view raw(reinterpret_cast<const char*>(data), size);
    const std::optional<tov::Edid> edid = tov::parseEdid(raw);
    if (!edid) return 0;
    if (edid->monitorName && (edid->monitorName->empty() || tov::printableText(*edid->monitorName) != *edid->monitorName)) {
        std::abort();
    }
    if (edid->vendorId.empty() || edid->vendorId.size() > 4 ||
        edid->vendorId.find_first_not_of("0123456789abcdef") != std::string::npos) {
        std::abort();
    }
    if (edid->bitsPerColour && (*edid->bitsPerColour < 6 || *edid->bitsPerColour > 16)) std::abort();
    requireSensible(edid->firstDetailedTiming);
    requireSensible(edid->preferredMode);
    return 0;
}
