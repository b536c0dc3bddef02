#include "discovery/linux/LinuxSerialNumber.h"

#include <array>
#include <string_view>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"

namespace tov {
namespace {

constexpr const char* kProductSerialPath = "/sys/class/dmi/id/product_serial";
constexpr std::uint64_t kSerialReadLimit = 4096;
constexpr std::array<std::string_view, 3> kPlaceholders{"Not Specified", "To Be Filled By O.E.M.", "0"};

bool isPlaceholder(std::string_view serial) {
    for (std::string_view placeholder : kPlaceholders) {
        if (equalsIgnoringCase(serial, placeholder)) return true;
    }
    return false;
}

}  // namespace

std::optional<std::string> linuxMachineSerialNumber(SystemSource& source) {
    const std::optional<std::string> text = source.readFile(kProductSerialPath, kSerialReadLimit);
    if (!text) {
        QVSLogger::debug("No machine serial number: %s cannot be read.", kProductSerialPath);
        return std::nullopt;
    }
    std::string serial = trimWhitespaceAndNewlines(*text);
    if (serial.empty() || isPlaceholder(serial)) return std::nullopt;
    return serial;
}

}  // namespace tov
