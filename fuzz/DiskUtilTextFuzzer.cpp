// Hands arbitrary bytes to the readers of the Mac disk tools' text output: the CoreStorage
// volume listing (physical and logical volumes), the startup-disk list and df's output,
// and then to a whole disk scan whose listing and startup list are the input. Besides not
// crashing: every volume record names its disk, startup paths are absolute lines, df
// gives one path component, and no listed physical volume is reported.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "common/QVSLogger.h"
#include "discovery/SystemSource.h"
#include "discovery/macos/QVDiskUtilHardwareInfoDiscoverer.h"
#include "model/QVDiskUtilDisk.h"

namespace {

using Discoverer = tov::QVDiskUtilHardwareInfoDiscoverer;

// A Mac whose tools answer fixed texts; nothing else is there.
class ToolMachine : public tov::SystemSource {
public:
    void answer(const std::vector<std::string>& argv, std::string output) { outputs_[argv] = std::move(output); }

    std::string platform() const override { return kMacOSPlatform; }
    std::optional<std::string> runTool(const std::vector<std::string>& argv) override {
        const auto found = outputs_.find(argv);
        if (found == outputs_.end()) return std::nullopt;
        return found->second;
    }
    std::optional<std::string> readFile(const std::string&, std::uint64_t) override { return std::nullopt; }
    std::optional<std::vector<std::string>> listFolder(const std::string&) override { return std::nullopt; }
    std::optional<std::string> readLink(const std::string&) override { return std::nullopt; }
    tov::PathKind pathKind(const std::string&) override { return tov::PathKind::None; }
    tov::Value fact(const std::string&, const std::string&) override { return tov::Value(); }

private:
    std::map<std::vector<std::string>, std::string> outputs_;
};

std::size_t lineCount(std::string_view text) {
    std::size_t lines = 1;
    for (const char character : text) lines += character == '\n' ? 1 : 0;
    return lines;
}

bool isOneLine(const std::string& text) { return text.find('\n') == std::string::npos; }

std::vector<std::shared_ptr<tov::QVDiskUtilDisk>> disksOf(const tov::ArrayRef& array) {
    std::vector<std::shared_ptr<tov::QVDiskUtilDisk>> disks;
    for (const tov::Value& element : *array) {
        auto disk = std::dynamic_pointer_cast<tov::QVDiskUtilDisk>(element.record());
        if (!disk) std::abort();
        disks.push_back(std::move(disk));
    }
    return disks;
}

std::set<std::string> checkVolumes(const tov::ArrayRef& volumes, std::string_view listing) {
    std::set<std::string> identifiers;
    if (volumes->size() > lineCount(listing)) std::abort();
    for (const auto& volume : disksOf(volumes)) {
        const std::string identifier = volume->identifier().value_or("");
        if (identifier.empty()) std::abort();
        identifiers.insert(identifier);
    }
    return identifiers;
}

void checkStartupDisks(const std::string& text) {
    const std::vector<std::string> paths = Discoverer::parseSystemSetupListStartupDisksResponse(text);
    if (paths.size() > lineCount(text)) std::abort();
    for (const std::string& path : paths) {
        if (path.empty() || path.front() != '/' || !isOneLine(path) || path.size() > text.size()) std::abort();
    }
}

void checkDf(const std::string& text) {
    ToolMachine machine;
    machine.answer({"/bin/df", "/"}, text);
    const std::optional<std::string> disk = Discoverer::getCurrentOSDiskId(machine);
    if (disk.has_value() != (lineCount(text) >= 2)) std::abort();
    if (!disk) return;
    if (!isOneLine(*disk) || disk->size() > text.size()) std::abort();
    if (disk->find('/') != std::string::npos && *disk != "/") std::abort();
}

// Two disks, each with one partition; the listing may name any of them.
void checkScan(const std::string& text, const std::set<std::string>& physicalVolumes) {
    auto machine = std::make_shared<ToolMachine>();
    machine->answer({"/usr/sbin/diskutil", "list", "-plist"},
                    "<plist version=\"1.0\"><dict><key>AllDisksAndPartitions</key><array>"
                    "<dict><key>DeviceIdentifier</key><string>disk0</string><key>Partitions</key><array>"
                    "<dict><key>DeviceIdentifier</key><string>disk0s2</string>"
                    "<key>MountPoint</key><string>/</string></dict></array></dict>"
                    "<dict><key>DeviceIdentifier</key><string>disk1</string><key>Partitions</key><array>"
                    "<dict><key>DeviceIdentifier</key><string>disk1s2</string></dict></array></dict>"
                    "</array></dict></plist>");
    machine->answer({"/usr/sbin/diskutil", "cs", "list"}, text);
    machine->answer({"/usr/sbin/systemsetup", "-liststartupdisks"}, text);
    machine->answer({"/usr/sbin/diskutil", "info", "-plist", "disk0s2"},
                    "<plist version=\"1.0\"><dict><key>Bootable</key><true/></dict></plist>");
    Discoverer discoverer(machine);
    const auto disks = disksOf(discoverer.discoverDisks());
    if (disks.size() > 4) std::abort();
    for (const auto& disk : disks) {
        if (physicalVolumes.count(disk->identifier().value_or("")) != 0) std::abort();
    }
    if (discoverer.systemSetupListStartupDiskMountPoints != Discoverer::parseSystemSetupListStartupDisksResponse(text)) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tov::QVSLogger::setMinimumLogLevel("CRITICAL");
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::set<std::string> physicalVolumes =
        checkVolumes(Discoverer::physicalVolumeDisksWithDiskUtilCSListResponse(text), text);
    checkVolumes(Discoverer::disksWithDiskUtilCSListResponse(text), text);
    checkStartupDisks(text);
    checkDf(text);
    checkScan(text, physicalVolumes);
    return 0;
}
