// Hands arbitrary bytes to the mount-table and udev-record parsers, then to the disk
// discoverer and the USB test of mount paths over a small fixed machine (one USB disk
// sda with partition sda1, 8:1) whose mount table and udev record of sda1 are the input.
// The input is split at its first NUL byte: the mount table, then the udev record.
// Whatever the bytes, parsing must end, decoded text never grows, and every text that
// reaches the report is valid UTF-8 within its bound.

#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

#include "common/QVSLogger.h"
#include "discovery/SystemSource.h"
#include "discovery/formats/UdevDatabase.h"
#include "discovery/linux/LinuxMountedVolume.h"
#include "discovery/linux/LinuxVolumeDiscoverer.h"
#include "discovery/linux/LinuxVolumeLabel.h"
#include "discovery/linux/MountInfo.h"

namespace {

constexpr const char* kDisk = "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-1/1-1:1.0/host0/target0:0:0/0:0:0:0/block/sda";

class FixedMachine : public tov::SystemSource {
public:
    FixedMachine(std::string_view mountTable, std::string_view udevRecord) {
        const std::string disk = kDisk;
        files_[tov::MountInfo::kPath] = std::string(mountTable);
        files_["/run/udev/data/b8:1"] = std::string(udevRecord);
        files_[disk + "/dev"] = "8:0\n";
        files_[disk + "/size"] = "2048\n";
        files_[disk + "/sda1/dev"] = "8:1\n";
        files_[disk + "/sda1/size"] = "2000\n";
        files_[disk + "/sda1/partition"] = "1\n";
        links_["/sys/block/sda"] = std::string("..") + (disk.c_str() + 4);
        links_["/sys/class/block/sda1"] = std::string("../..") + (disk.c_str() + 4) + "/sda1";
        links_["/sys/dev/block/8:1"] = links_["/sys/class/block/sda1"];
    }

    std::string platform() const override { return kLinuxPlatform; }
    std::optional<std::string> runTool(const std::vector<std::string>&) override { return std::nullopt; }
    std::optional<std::string> readFile(const std::string& path, std::uint64_t maximumBytes) override {
        const auto found = files_.find(resolved(path));
        if (found == files_.end() || found->second.size() > maximumBytes) return std::nullopt;
        return found->second;
    }
    std::optional<std::vector<std::string>> listFolder(const std::string& path) override {
        if (path == "/sys/block") return std::vector<std::string>{"sda"};
        if (resolved(path) == kDisk) return std::vector<std::string>{"dev", "sda1", "size"};
        return std::nullopt;
    }
    std::optional<std::string> readLink(const std::string& path) override {
        const auto found = links_.find(path);
        if (found == links_.end()) return std::nullopt;
        return found->second;
    }
    tov::PathKind pathKind(const std::string& path) override {
        if (links_.count(path) != 0) return tov::PathKind::Link;
        if (files_.count(resolved(path)) != 0) return tov::PathKind::File;
        const std::string disk = kDisk;
        const std::string at = resolved(path);
        if (at == disk || at == disk + "/sda1" || disk.compare(0, at.size() + 1, at + "/") == 0) {
            return tov::PathKind::Folder;
        }
        return tov::PathKind::None;
    }
    tov::Value fact(const std::string&, const std::string&) override { return tov::Value(); }

private:
    // The one link of the machine that discovery reads through.
    static std::string resolved(const std::string& path) {
        const std::string link = "/sys/block/sda";
        if (path.compare(0, link.size(), link) == 0) return kDisk + path.substr(link.size());
        return path;
    }

    std::map<std::string, std::string> files_;
    std::map<std::string, std::string> links_;
};

void requireReportable(const std::string& text, std::size_t bound) {
    if (text.size() > bound) std::abort();
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t position = 0; position < length;) {
        UChar32 character;
        U8_NEXT(bytes, position, length, character);
        if (character < 0) std::abort();
    }
}

void checkParsers(std::string_view mountTable, std::string_view udevRecord) {
    for (const tov::MountEntry& entry : tov::MountInfo::parse(mountTable)) {
        if (entry.mountPoint.size() > mountTable.size() || entry.source.size() > mountTable.size()) std::abort();
    }
    const tov::UdevRecord record = tov::UdevDatabase::parse(udevRecord);
    if (record.properties.size() > tov::UdevDatabase::kMaximumEntries) std::abort();
    for (const auto& property : record.properties) {
        if (tov::UdevDatabase::decodeHexEscapes(property.second).size() > property.second.size()) std::abort();
    }
    requireReportable(tov::reportableText(udevRecord, tov::kMaximumLabelBytes), tov::kMaximumLabelBytes);
}

void checkDiscovery(std::string_view mountTable, std::string_view udevRecord) {
    auto machine = std::make_shared<FixedMachine>(mountTable, udevRecord);
    const tov::ArrayRef disks = tov::LinuxVolumeDiscoverer(machine).discoverDisks();
    if (disks->size() != 2) std::abort();
    for (const tov::MountEntry& entry : tov::MountInfo::parse(mountTable)) {
        const tov::DictionaryRef info = tov::LinuxMountedVolume::infoForMountPath(*machine, entry.mountPoint);
        if (info && info->get("BusProtocol") != tov::Value("USB")) std::abort();
        if (info) requireReportable(*info->get("VolumeName").string(), tov::kMaximumLabelBytes);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tov::QVSLogger::setMinimumLogLevel("CRITICAL");
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::size_t separator = input.find('\0');
    const std::string_view mountTable = input.substr(0, separator);
    const std::string_view udevRecord = separator == std::string_view::npos ? "" : input.substr(separator + 1);
    checkParsers(mountTable, udevRecord);
    checkDiscovery(mountTable, udevRecord);
    return 0;
}
