#include "discovery/macos/SystemProfilerDevices.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/TextUtils.h"
#include "discovery/DisplayManufacturer.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/macos/QVSystemProfilerUtil.h"
#include "model/QVIOKitCamera.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitMemory.h"

namespace tov {
namespace {

using Displays = std::vector<std::shared_ptr<QVIOKitDisplay>>;

constexpr const char* kDisplaysDataType = "SPDisplaysDataType";
constexpr const char* kCameraDataType = "SPCameraDataType";
constexpr const char* kMemoryDataType = "SPMemoryDataType";

constexpr std::string_view kItemsKey = "_items";
constexpr std::string_view kNameKey = "_name";
constexpr std::string_view kAttachedDisplaysKey = "spdisplays_ndrvs";

constexpr const char* kGenericAdapterName = "Generic Graphics Adapter";
constexpr const char* kGenericDisplayName = "Generic Display";
// The profiler's model of an adapter it has no name for (a virtual machine's).
constexpr std::string_view kPlaceholderAdapterModel = "spdisplays_display";
constexpr std::string_view kVirtualBoxVendor = "0x80ee";
constexpr std::string_view kVMwareVendor = "0x15ad";
constexpr std::string_view kThirtyTwoBitColour = "CGSThirtytwoBitColor";
constexpr std::int64_t kThirtyTwoBitDepth = 24;
constexpr const char* kNoRefreshText = "0";

// Entries of a profiler report are read defensively: a value of another type than the
// rule expects reads as absent, an entry that is no dictionary is no record.

std::optional<std::string> textUnder(const Dictionary& entry, std::string_view key) {
    const Value* value = entry.find(key);
    if (!value || !value->isString()) return std::nullopt;
    return *value->string();
}

ArrayRef arrayUnder(const Dictionary& entry, std::string_view key) {
    const Value* value = entry.find(key);
    return value ? value->array() : nullptr;
}

bool isNonEmpty(const std::optional<std::string>& text) { return text && !text->empty(); }

// first, or second where first is absent or empty.
std::optional<std::string> preferred(const std::optional<std::string>& first,
                                     const std::optional<std::string>& second) {
    return isNonEmpty(first) ? first : second;
}

// The leading number of text as the profiler's refresh rates are read ("60.00Hz" is 60):
// white space and a sign are accepted, anything after the number is ignored, and text
// that does not start with a decimal number reads as 0.
double leadingDoubleValue(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string_view::npos) return 0;
    std::string_view number = text.substr(start);
    if (!number.empty() && (number.front() == '+' || number.front() == '-')) number.remove_prefix(1);
    if (hasPrefix(number, "0x") || hasPrefix(number, "0X")) return 0;
    const std::string terminated(text.substr(start));
    return std::strtod(terminated.c_str(), nullptr);
}

// An integer read from text, handed through a double and truncated back, as the mode's
// numbers are stored.
std::int64_t throughDouble(std::int64_t value) { return clampedInteger<std::int64_t>(static_cast<double>(value)); }

// --- graphics adapters ---

struct AdapterIdentity {
    std::string description;
    std::optional<std::string> manufacturer;
};

// A virtual machine's adapter has the placeholder model; its vendor names the machine.
// The third test repeats the VMware vendor and so never applies: a Parallels adapter
// (0x1ab8) keeps the placeholder and its vendor, as the rule has always answered.
AdapterIdentity adapterIdentity(const std::string& model, const std::optional<std::string>& vendor) {
    if (model == kPlaceholderAdapterModel) {
        if (vendor == kVirtualBoxVendor) {
            return {"VirtualBox Graphics Adapter", "VirtualBox Graphics Adapter Vendor(0x80ee)"};
        }
        if (vendor == kVMwareVendor) return {"VMware Graphics Adapter", "VMWare Graphics Adapter Vendor(0x15ad)"};
        if (vendor == kVMwareVendor) {
            return {"Parallels Graphics Adapter", "Parallels Graphics Adapter Vendor(0x1ab8)"};
        }
    }
    return {model, vendor};
}

std::shared_ptr<QVIOKitDisplay> adapterRecord(const Dictionary& item) {
    const std::optional<std::string> model =
        preferred(preferred(textUnder(item, "sppci_model"), textUnder(item, kNameKey)), kGenericAdapterName);
    const std::optional<std::string> vendor =
        preferred(textUnder(item, "spdisplays_vendor"), textUnder(item, "spdisplays_vendor-id"));
    const AdapterIdentity identity = adapterIdentity(*model, vendor);
    const std::shared_ptr<QVIOKitDisplay> adapter = QVIOKitDisplay::iokitDisplay();
    adapter->setDescription(identity.description);
    adapter->setManufacturer(identity.manufacturer);
    adapter->setFrequency(0);
    adapter->setWidth(0);
    adapter->setHeight(0);
    adapter->setDepth(0);
    return adapter;
}

// --- attached displays ---

// "1440 x 900 @ 60.00Hz": the resolution before the first "@", the refresh rate after it.
struct ModeTexts {
    std::optional<std::string> resolution;
    std::string refresh;
};

ModeTexts splitAtRefresh(const std::optional<std::string>& resolution) {
    const std::size_t at = resolution ? resolution->find('@') : std::string::npos;
    if (at == std::string::npos) return {resolution, kNoRefreshText};
    const std::string_view text = *resolution;
    return {trimWhitespaceAndNewlines(text.substr(0, at)), trimWhitespaceAndNewlines(text.substr(at + 1))};
}

struct PixelSize {
    std::int64_t width = 0;
    std::int64_t height = 0;
};

// "2560 x 1600" gives 2560 and 1600; a text that is not two pieces around one "x" gives 0 x 0.
PixelSize pixelSizeOf(const std::optional<std::string>& resolution) {
    if (!resolution) return {};
    const std::string_view text = *resolution;
    const std::size_t x = text.find('x');
    if (x == std::string_view::npos || text.find('x', x + 1) != std::string_view::npos) return {};
    return {throughDouble(leadingIntegerValue(text.substr(0, x))),
            throughDouble(leadingIntegerValue(text.substr(x + 1)))};
}

// A missing depth counts as 32-bit colour, as the comparison with nothing answers "same".
std::int64_t depthOf(const std::optional<std::string>& depthText) {
    return !depthText || equalsIgnoringCase(*depthText, kThirtyTwoBitColour) ? kThirtyTwoBitDepth : 0;
}

std::shared_ptr<QVIOKitDisplay> displayRecord(const Dictionary& entry) {
    const std::optional<std::string> name = textUnder(entry, kNameKey);
    const ModeTexts mode = splitAtRefresh(
        preferred(preferred(textUnder(entry, "_spdisplays_resolution"), textUnder(entry, "spdisplays_resolution")),
                  textUnder(entry, "_spdisplays_pixels")));
    const std::optional<std::string> depthText = textUnder(entry, "spdisplays_depth");
    const std::optional<std::string> vendorId =
        preferred(textUnder(entry, "_spdisplays_display-vendor-id"), textUnder(entry, "spdisplays_display-vendor-id"));
    const std::string description = name.value_or(kGenericDisplayName);
    const DisplayManufacturer manufacturer = displayManufacturer(description, vendorId);
    const PixelSize size = pixelSizeOf(mode.resolution);
    const std::string refreshText = displayRefreshText(manufacturer, mode.refresh);

    const std::shared_ptr<QVIOKitDisplay> display = QVIOKitDisplay::iokitDisplay();
    display->setDescription(description);
    display->setManufacturer(manufacturer.name);
    display->setFrequency(clampedInteger<std::int64_t>(leadingDoubleValue(refreshText)));
    display->setWidth(size.width);
    display->setHeight(size.height);
    display->setDepth(depthOf(depthText));
    return display;
}

void addAttachedDisplays(const Dictionary& item, Displays& displays) {
    const ArrayRef attached = arrayUnder(item, kAttachedDisplaysKey);
    if (!attached) return;
    for (const Value& element : *attached) {
        if (const DictionaryRef entry = element.dictionary()) displays.push_back(displayRecord(*entry));
    }
}

// --- the profiles read without a detail level ---

// Element 0 of the whole profile list, when it is a dictionary.
DictionaryRef firstReport(SystemSource& source, const char* dataType) {
    const ArrayRef reports = QVSystemProfilerUtil::fullProfileListForDataType(source, dataType);
    return reports && !reports->empty() ? reports->front().dictionary() : nullptr;
}

std::shared_ptr<QVIOKitCamera> cameraRecord(const Dictionary& item) {
    const std::shared_ptr<QVIOKitCamera> camera = QVIOKitCamera::ioKitCamera();
    camera->setName(textUnder(item, kNameKey));
    camera->setModel(textUnder(item, "spcamera_model-id"));
    camera->setUuid(textUnder(item, "spcamera_unique-id"));
    return camera;
}

// The slots are the "_items" of the first entry of the report's "_items". An Apple
// Silicon Mac lists no slots there (one entry with the memory type and total), so it
// has none.
ArrayRef memorySlots(const Dictionary& report) {
    const ArrayRef groups = arrayUnder(report, kItemsKey);
    if (!groups || groups->empty()) return nullptr;
    const DictionaryRef firstGroup = groups->front().dictionary();
    return firstGroup ? arrayUnder(*firstGroup, kItemsKey) : nullptr;
}

std::shared_ptr<QVIOKitMemory> memoryRecord(const Dictionary& slot) {
    const std::shared_ptr<QVIOKitMemory> memory = QVIOKitMemory::ioKitMemory();
    memory->setName(textUnder(slot, kNameKey));
    memory->setType(textUnder(slot, "dimm_type"));
    memory->setSize(textUnder(slot, "dimm_size"));
    memory->setSerialNumber(textUnder(slot, "dimm_serial_number"));
    memory->setStatus(textUnder(slot, "dimm_status"));
    memory->setManufacturer(textUnder(slot, "dimm_manufacturer"));
    memory->setPartNumber(textUnder(slot, "dimm_part_number"));
    memory->setSpeed(textUnder(slot, "dimm_speed"));
    return memory;
}

// One record per dictionary element of items, made by recordOf; equal records once.
template <class Record>
ArrayRef recordsOf(const ArrayRef& items, std::shared_ptr<Record> (*recordOf)(const Dictionary&)) {
    std::vector<std::shared_ptr<Record>> records;
    if (items) {
        for (const Value& element : *items) {
            if (const DictionaryRef item = element.dictionary()) records.push_back(recordOf(*item));
        }
    }
    return equalRecordsOnce(records);
}

}  // namespace

ArrayRef displaysFromSystemProfiler(SystemSource& source) {
    const DictionaryRef profile = QVSystemProfilerUtil::copyProfileForDataType(source, kDisplaysDataType);
    const ArrayRef items = profile ? arrayUnder(*profile, kItemsKey) : nullptr;
    Displays displays;
    if (items) {
        for (const Value& element : *items) {
            const DictionaryRef item = element.dictionary();
            if (!item) continue;
            displays.push_back(adapterRecord(*item));
            addAttachedDisplays(*item, displays);
        }
    }
    return equalRecordsOnce(displays);
}

ArrayRef camerasFromSystemProfiler(SystemSource& source) {
    const DictionaryRef report = firstReport(source, kCameraDataType);
    return recordsOf(report ? arrayUnder(*report, kItemsKey) : nullptr, &cameraRecord);
}

ArrayRef memoryModulesFromSystemProfiler(SystemSource& source) {
    const DictionaryRef report = firstReport(source, kMemoryDataType);
    return recordsOf(report ? memorySlots(*report) : nullptr, &memoryRecord);
}

}  // namespace tov
