#include "discovery/linux/LinuxFirmwareIdentity.h"

#include <optional>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"

namespace tov {
namespace {

constexpr std::uint64_t kFirmwareTextReadLimit = 4096;

// The file's text without the NUL that ends device-tree strings; nothing when it is missing or empty.
std::optional<std::string> firmwareText(SystemSource& source, const char* path) {
    const std::optional<std::string> bytes = source.readFile(path, kFirmwareTextReadLimit);
    if (!bytes) {
        QVSLogger::debug("%s cannot be read.", path);
        return std::nullopt;
    }
    std::string text = printableText(std::string_view(*bytes).substr(0, bytes->find('\0')));
    if (text.empty()) return std::nullopt;
    return text;
}

}  // namespace

std::string linuxSystemManufacturer(SystemSource& source) {
    return firmwareText(source, "/sys/class/dmi/id/sys_vendor").value_or("");
}

std::string linuxSystemModel(SystemSource& source) {
    for (const char* path :
         {"/sys/class/dmi/id/product_name", "/proc/device-tree/model", "/sys/firmware/devicetree/base/model"}) {
        if (std::optional<std::string> model = firmwareText(source, path)) return *model;
    }
    return "";
}

}  // namespace tov
