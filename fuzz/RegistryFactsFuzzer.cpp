// Hands arbitrary bytes to the Mac device-registry section as a property list that a
// machine gives for every registry matching, its power sources and its Wi-Fi interface.
// Whatever the tree, every category must be an array of records of its kind, at most one
// serial number, and every MAC address either "" or six upper-case hex pairs.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/PropertyList.h"
#include "common/QVSLogger.h"
#include "discovery/SystemSource.h"
#include "discovery/macos/QVIOKitHardwareInfoDiscoverer.h"
#include "model/QVIOKitBattery.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitNetwork.h"
#include "model/QVIOKitPointingDevice.h"

namespace {

// A Mac that answers every native fact with the one tree and runs no tool.
class OneTreeMac : public tov::SystemSource {
public:
    explicit OneTreeMac(tov::Value tree) : tree_(std::move(tree)) {}

    std::string platform() const override { return kMacOSPlatform; }
    std::optional<std::string> runTool(const std::vector<std::string>&) override { return std::nullopt; }
    std::optional<std::string> readFile(const std::string&, std::uint64_t) override { return std::nullopt; }
    std::optional<std::vector<std::string>> listFolder(const std::string&) override { return std::nullopt; }
    std::optional<std::string> readLink(const std::string&) override { return std::nullopt; }
    tov::PathKind pathKind(const std::string&) override { return tov::PathKind::None; }
    tov::Value fact(const std::string&, const std::string&) override { return tree_; }

private:
    tov::Value tree_;
};

void require(bool condition) {
    if (!condition) std::abort();
}

bool isMacAddressText(const std::string& text) {
    if (text.empty()) return true;
    if (text.size() != 17) return false;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char c = text[index];
        if (index % 3 == 2) {
            if (c != ':') return false;
        } else if (!std::isxdigit(static_cast<unsigned char>(c)) || std::islower(static_cast<unsigned char>(c))) {
            return false;
        }
    }
    return true;
}

// The category as records of one kind: an array whose every element is such a record.
template <class Record>
std::vector<std::shared_ptr<Record>> recordsOf(const tov::Dictionary& section, const char* key) {
    const tov::ArrayRef category = section.get(key).array();
    require(category != nullptr);
    std::vector<std::shared_ptr<Record>> records;
    for (const tov::Value& element : *category) {
        auto record = std::dynamic_pointer_cast<Record>(element.record());
        require(record != nullptr);
        records.push_back(std::move(record));
    }
    return records;
}

void checkSerialNumbers(const tov::Dictionary& section) {
    const tov::ArrayRef serials = section.get(tov::QVIOKitHardwareInfoDiscoverer::kSerialNumbersKey).array();
    require(serials != nullptr && serials->size() <= 1);
    for (const tov::Value& entry : *serials) {
        const tov::DictionaryRef dictionary = entry.dictionary();
        require(dictionary != nullptr && dictionary->size() == 1);
        require(dictionary->get(tov::QVIOKitHardwareInfoDiscoverer::kSerialNumberKey).isString());
    }
}

void checkNetworkAdapters(const tov::Dictionary& section, bool mockWiFi) {
    for (const auto& adapter :
         recordsOf<tov::QVIOKitNetwork>(section, tov::QVIOKitHardwareInfoDiscoverer::kNetworkAdaptersKey)) {
        require(isMacAddressText(adapter->macAddress().value_or("absent")));
        if (mockWiFi) require(adapter->ssid() == "mock-ssid");
    }
}

void checkSection(tov::QVIOKitHardwareInfoDiscoverer& discoverer, bool mockWiFi) {
    const tov::DictionaryRef section = discoverer.discoverInfo();
    require(section != nullptr);
    for (const auto& [key, value] : *section) require(value.isArray());
    checkSerialNumbers(*section);
    recordsOf<tov::QVIOKitKeyboard>(*section, tov::QVIOKitHardwareInfoDiscoverer::kKeyboardsKey);
    recordsOf<tov::QVIOKitPointingDevice>(*section, tov::QVIOKitHardwareInfoDiscoverer::kPointingDevicesKey);
    recordsOf<tov::QVIOKitBattery>(*section, tov::QVIOKitHardwareInfoDiscoverer::kBatteriesKey);
    const auto disks = recordsOf<tov::QVIOKitDisk>(*section, tov::QVIOKitHardwareInfoDiscoverer::kDisksKey);
    require(discoverer.discoverDisks()->size() == disks.size());
    checkNetworkAdapters(*section, mockWiFi);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tov::QVSLogger::setMinimumLogLevel("CRITICAL");
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::optional<tov::Value> tree = tov::parsePropertyList(bytes);
    const auto machine = std::make_shared<OneTreeMac>(tree ? *tree : tov::Value());
    for (const bool mockWiFi : {false, true}) {
        tov::QVIOKitHardwareInfoDiscoverer discoverer(machine, mockWiFi);
        checkSection(discoverer, mockWiFi);
    }
    return 0;
}
