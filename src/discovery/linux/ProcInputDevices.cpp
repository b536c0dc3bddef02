#include "discovery/linux/ProcInputDevices.h"

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/formats/HardwareIds.h"

namespace tov {
namespace {

std::string_view nextLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

// The value of "key=" among the blank-separated facts of an "I:" line.
std::optional<std::uint16_t> idField(std::string_view facts, std::string_view key) {
    for (std::size_t start = 0; start < facts.size();) {
        std::size_t end = facts.find(' ', start);
        if (end == std::string_view::npos) end = facts.size();
        const std::string_view fact = facts.substr(start, end - start);
        if (hasPrefix(fact, key) && fact.size() > key.size() && fact[key.size()] == '=') {
            return parseHardwareId(fact.substr(key.size() + 1));
        }
        start = end + 1;
    }
    return std::nullopt;
}

void readIdentity(InputDevice& device, std::string_view facts) {
    device.bus = idField(facts, "Bus").value_or(0);
    device.vendor = idField(facts, "Vendor").value_or(0);
    device.product = idField(facts, "Product").value_or(0);
}

// Name="..." with its quotes taken off.
std::string readName(std::string_view facts) {
    if (hasPrefix(facts, "Name=")) facts.remove_prefix(5);
    if (facts.size() >= 2 && facts.front() == '"' && facts.back() == '"') facts = facts.substr(1, facts.size() - 2);
    return printableText(facts);
}

InputCapabilities* bitmapNamed(InputDevice& device, std::string_view name) {
    if (name == "EV") return &device.events;
    if (name == "KEY") return &device.keys;
    if (name == "REL") return &device.relativeAxes;
    if (name == "ABS") return &device.absoluteAxes;
    if (name == "PROP") return &device.properties;
    return nullptr;
}

void readBitmap(InputDevice& device, std::string_view facts, unsigned wordBits) {
    const std::size_t equals = facts.find('=');
    if (equals == std::string_view::npos) return;
    InputCapabilities* bitmap = bitmapNamed(device, facts.substr(0, equals));
    if (!bitmap) return;
    if (std::optional<InputCapabilities> parsed = InputCapabilities::parse(facts.substr(equals + 1), wordBits)) {
        *bitmap = std::move(*parsed);
        return;
    }
    const std::string bitmapName(facts.substr(0, equals));
    QVSLogger::debug("The %s bitmap of the input device \"%s\" cannot be read; it counts as empty.",
                     bitmapName.c_str(), device.name.value_or("").c_str());
}

void readLine(InputDevice& device, std::string_view line, unsigned wordBits) {
    if (line.size() < 3 || line[1] != ':' || line[2] != ' ') return;
    const std::string_view facts = line.substr(3);
    switch (line[0]) {
        case 'I': readIdentity(device, facts); break;
        case 'N': device.name = readName(facts); break;
        case 'B': readBitmap(device, facts, wordBits); break;
        default: break;
    }
}

}  // namespace

std::vector<InputDevice> ProcInputDevices::parse(std::string_view text, unsigned wordBits) {
    std::vector<InputDevice> devices;
    std::optional<InputDevice> current;
    while (!text.empty()) {
        const std::string_view line = nextLine(text);
        if (line.empty()) {
            if (current) devices.push_back(std::move(*current));
            current.reset();
            if (devices.size() == kMaximumDevices) break;
            continue;
        }
        if (!current) current.emplace();
        readLine(*current, line, wordBits);
    }
    if (current && devices.size() < kMaximumDevices) devices.push_back(std::move(*current));
    if (devices.size() == kMaximumDevices && !text.empty()) {
        QVSLogger::debug("%s lists more than %zu input devices; the rest are left out.", kPath, kMaximumDevices);
    }
    return devices;
}

}  // namespace tov
