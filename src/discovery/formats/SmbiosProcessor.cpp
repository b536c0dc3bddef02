#include "discovery/formats/SmbiosProcessor.h"

#include "discovery/formats/SmbiosStructure.h"

namespace tov {
namespace {

constexpr std::size_t kVersion = 0x10;

}  // namespace

std::optional<std::string> smbiosProcessorVersion(std::string_view raw) {
    const std::optional<SmbiosStructure> structure = SmbiosStructure::parse(raw);
    if (!structure || structure->type() != kSmbiosProcessorType) return std::nullopt;
    std::string version = structure->stringAt(kVersion);
    if (version.empty()) return std::nullopt;
    return version;
}

}  // namespace tov
