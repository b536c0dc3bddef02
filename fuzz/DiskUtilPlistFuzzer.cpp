// Hands arbitrary bytes, as a property list, to the readers of the Mac disk tools' plist
// output: the disk list (its records and mount paths), a disk's information, the
// information of a mount path, and the boot-blessing tool's answer. Besides not crashing:
// every mount path returned is a text the list held, once; a listed record's mount point
// is one of them; a disk's information fills only the disk keys; a path's information is
// the list's own dictionary; blessed folders have a path; and a mounted volume outside
// the startup disks stays a boot volume only when the answer names a blessed folder.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "common/PropertyList.h"
#include "common/QVSLogger.h"
#include "discovery/SystemSource.h"
#include "discovery/macos/QVDiskUtilHardwareInfoDiscoverer.h"
#include "model/QVDiskUtilDisk.h"

namespace {

using Discoverer = tov::QVDiskUtilHardwareInfoDiscoverer;

constexpr const char* kMountPath = "/Volumes/Other Mac";

// A Mac whose tools all answer the same bytes.
class EchoMachine : public tov::SystemSource {
public:
    explicit EchoMachine(std::string output) : output_(std::move(output)) {}

    std::string platform() const override { return kMacOSPlatform; }
    std::optional<std::string> runTool(const std::vector<std::string>& argv) override {
        runs.push_back(argv);
        return output_;
    }
    std::optional<std::string> readFile(const std::string&, std::uint64_t) override { return std::nullopt; }
    std::optional<std::vector<std::string>> listFolder(const std::string&) override { return std::nullopt; }
    std::optional<std::string> readLink(const std::string&) override { return std::nullopt; }
    tov::PathKind pathKind(const std::string&) override { return tov::PathKind::None; }
    tov::Value fact(const std::string&, const std::string&) override { return tov::Value(); }

    std::vector<std::vector<std::string>> runs;

private:
    std::string output_;
};

void collectStrings(const tov::Value& value, std::set<std::string>& strings) {
    if (const std::string* text = value.string()) strings.insert(*text);
    if (const tov::ArrayRef array = value.array()) {
        for (const tov::Value& element : *array) collectStrings(element, strings);
    }
    if (const tov::DictionaryRef dictionary = value.dictionary()) {
        for (const auto& entry : *dictionary) collectStrings(entry.second, strings);
    }
}

std::vector<std::string> checkMountPaths(const std::string& bytes, const std::optional<tov::Value>& tree) {
    const std::vector<std::string> paths = Discoverer::mountPathWithDiskUtilListPlistResponse(bytes);
    std::set<std::string> held;
    if (tree) collectStrings(*tree, held);
    for (const std::string& path : paths) {
        if (held.count(path) == 0 || std::count(paths.begin(), paths.end(), path) != 1) std::abort();
    }
    return paths;
}

void checkDiskList(const std::string& bytes, const std::vector<std::string>& mountPaths) {
    const tov::ArrayRef disks = Discoverer::disksWithDiskUtilListPlistResponse(bytes);
    for (const tov::Value& element : *disks) {
        const auto disk = std::dynamic_pointer_cast<tov::QVDiskUtilDisk>(element.record());
        if (!disk || !disk->identifier() || !disk->name()) std::abort();
        const std::optional<std::string>& mountPoint = disk->mountPoint();
        if (mountPoint && std::find(mountPaths.begin(), mountPaths.end(), *mountPoint) == mountPaths.end()) {
            std::abort();
        }
    }
}

void checkDiskInformation(const std::string& bytes) {
    static const std::set<std::string> kDiskKeys{"name",       "deviceName", "deviceId", "sizeBytes",
                                                 "freeSpaceBytes", "fileSystem", "boot",     "opticalMedia"};
    auto machine = std::make_shared<EchoMachine>(bytes);
    Discoverer discoverer(machine);
    discoverer.systemSetupListStartupDiskMountPoints = {"/"};
    auto disk = tov::QVDiskUtilDisk::diskUtilDisk();
    disk->setIdentifier("disk1s2");
    disk->setMountPoint(kMountPath);
    discoverer.populateDiskWithDiskUtilPlistInfoResponse(*disk, bytes);
    for (const auto& entry : *disk->innerDictionary()) {
        if (kDiskKeys.count(entry.first) == 0) std::abort();
    }
    if (disk->identifier() != "disk1s2") std::abort();
    if (machine->runs.size() > 1) std::abort();
    if (!machine->runs.empty() &&
        machine->runs.front() != std::vector<std::string>{"/usr/sbin/bless", "--info", kMountPath, "--plist"}) {
        std::abort();
    }
    // Here bless answers the same bytes, so they decide whether the mark stays.
    if (disk->isBootVolume() && Discoverer::parseBlessPlistInfo(bytes).empty()) std::abort();
}

void checkPathInformation(const std::string& bytes, const std::optional<tov::Value>& tree) {
    EchoMachine machine(bytes);
    const tov::DictionaryRef info = Discoverer::infoPlistForMountPath(machine, kMountPath);
    const tov::DictionaryRef expected = tree ? tree->dictionary() : nullptr;
    if (bool(info) != bool(expected) || (info && !(*info == *expected))) std::abort();
}

void checkBlessAnswer(const std::string& bytes) {
    for (const tov::DictionaryRef& folder : Discoverer::parseBlessPlistInfo(bytes)) {
        const tov::Value pathValue = folder->get("Path");
        const std::string* path = pathValue.string();
        if (!path || path->empty() || !folder->contains("Directory ID")) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tov::QVSLogger::setMinimumLogLevel("CRITICAL");
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::optional<tov::Value> tree = tov::parsePropertyList(bytes);
    checkDiskList(bytes, checkMountPaths(bytes, tree));
    checkDiskInformation(bytes);
    checkPathInformation(bytes, tree);
    checkBlessAnswer(bytes);
    return 0;
}
