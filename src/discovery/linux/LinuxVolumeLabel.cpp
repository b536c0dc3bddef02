#include "discovery/linux/LinuxVolumeLabel.h"

#include <unicode/utf8.h>

#include <cstdint>
#include <vector>

#include "common/PrintableText.h"
#include "discovery/PathWalk.h"

namespace tov {
namespace {

// Links looked at in the label folder, so that a hostile folder cannot stall the scan.
constexpr std::size_t kMaximumLabelLinks = 4096;

std::optional<std::string> labelFromRecord(const std::optional<UdevRecord>& record) {
    if (!record) return std::nullopt;
    std::optional<std::string> label = record->decodedProperty("ID_FS_LABEL");
    if (label && label->empty()) return std::nullopt;
    return label;
}

// The first link of the label folder, in name order, whose target names the device.
std::optional<std::string> labelFromLinks(SystemSource& source, const std::string& kernelName) {
    const std::optional<std::vector<std::string>> names = source.listFolder(kLabelLinkFolder);
    if (!names) return std::nullopt;
    for (std::size_t index = 0; index < names->size() && index < kMaximumLabelLinks; ++index) {
        const std::optional<std::string> target = source.readLink(childPath(kLabelLinkFolder, (*names)[index]));
        if (target && lastPathComponent(*target) == kernelName) return UdevDatabase::decodeHexEscapes((*names)[index]);
    }
    return std::nullopt;
}

}  // namespace

std::string volumeLabelOf(SystemSource& source, const std::optional<UdevRecord>& record,
                          const std::string& kernelName) {
    std::optional<std::string> label = labelFromRecord(record);
    if (!label) label = labelFromLinks(source, kernelName);
    return label ? reportableText(*label, kMaximumLabelBytes) : std::string();
}

std::string reportableText(std::string_view text, std::size_t maximumBytes) {
    std::string printable = printableText(text);
    if (printable.size() <= maximumBytes) return printable;
    // Cut before the character that would cross the limit, never inside one.
    std::size_t cut = maximumBytes;
    while (cut > 0 && U8_IS_TRAIL(static_cast<std::uint8_t>(printable[cut]))) --cut;
    printable.resize(cut);
    return printable;
}

}  // namespace tov
