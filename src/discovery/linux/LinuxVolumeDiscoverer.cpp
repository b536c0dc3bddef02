#include "discovery/linux/LinuxVolumeDiscoverer.h"

#include <utility>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/SystemFacts.h"
#include "discovery/linux/BlockDeviceMounts.h"
#include "discovery/linux/LinuxVolumeLabel.h"

namespace tov {
namespace {

// The SCSI peripheral type of a CD/DVD drive.
constexpr const char* kScsiTypeOfOpticalDrive = "5";
constexpr std::uint64_t kSectorBytes = 512;
constexpr std::size_t kMaximumNameBytes = 255;

bool isRamDisk(const std::string& name) { return hasPrefix(name, "ram") || hasPrefix(name, "zram"); }
bool isLoop(const std::string& name) { return hasPrefix(name, "loop"); }
bool isDeviceMapper(const std::string& name) { return hasPrefix(name, "dm-"); }

// Adds the disk unless an equal one is there already: an ordered set.
void addOnce(Array& disks, const std::shared_ptr<QVDiskUtilDisk>& disk) {
    for (const Value& present : disks) {
        if (present.record() && present.record()->isEqual(*disk)) return;
    }
    disks.push_back(disk);
}

std::optional<std::uint64_t> product(std::uint64_t left, std::uint64_t right) {
    std::uint64_t result = 0;
    if (__builtin_mul_overflow(left, right, &result)) return std::nullopt;
    return result;
}

}  // namespace

bool isBootMountPoint(const std::string& mountPoint) {
    return mountPoint == "/" || mountPoint == "/boot" || mountPoint == "/boot/efi";
}

LinuxVolumeDiscoverer::LinuxVolumeDiscoverer(std::shared_ptr<SystemSource> source) : source_(std::move(source)) {}

DictionaryRef LinuxVolumeDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    section->set(kDisksKey, discoverDisks());
    return section;
}

ArrayRef LinuxVolumeDiscoverer::discoverDisks() {
    ArrayRef disks = makeArray();
    const std::vector<MountEntry> mounts = MountInfo::read(*source_).value_or(std::vector<MountEntry>{});
    for (const BlockDeviceEntry& device : SysfsBlockDevices::list(*source_)) {
        if (!isReported(device)) continue;
        const std::optional<std::string> dev = SysfsBlockDevices::attribute(*source_, device.path + "/dev");
        const std::optional<DeviceNumber> number = dev ? SysfsBlockDevices::parseDeviceNumber(*dev) : std::nullopt;
        if (!number) {
            QVSLogger::debug("The block device %s is left out: %s/dev cannot be read.", device.name.c_str(),
                             device.path.c_str());
            continue;
        }
        addOnce(*disks, diskOf(device, *number, mounts));
    }
    return disks;
}

bool LinuxVolumeDiscoverer::isReported(const BlockDeviceEntry& device) {
    if (isRamDisk(device.diskName)) return false;
    return isBackedLoopOrNoLoop(device) && !hasHolders(device);
}

bool LinuxVolumeDiscoverer::isBackedLoopOrNoLoop(const BlockDeviceEntry& device) {
    if (!isLoop(device.diskName)) return true;
    const std::optional<std::string> backingFile =
        SysfsBlockDevices::attribute(*source_, device.diskPath + "/loop/backing_file");
    return backingFile && !backingFile->empty();
}

bool LinuxVolumeDiscoverer::hasHolders(const BlockDeviceEntry& device) {
    const std::optional<std::vector<std::string>> holders = source_->listFolder(device.path + "/holders");
    return holders && !holders->empty();
}

std::shared_ptr<QVDiskUtilDisk> LinuxVolumeDiscoverer::diskOf(const BlockDeviceEntry& device, DeviceNumber number,
                                                              const std::vector<MountEntry>& mounts) {
    const std::optional<UdevRecord> record = UdevDatabase::readBlockDevice(*source_, number.major, number.minor);
    auto disk = QVDiskUtilDisk::diskUtilDisk();
    disk->setName(volumeLabelOf(*source_, record, device.name));
    const std::string mapperName = mapperNameOf(device);
    disk->setIdentifier(mapperName.empty() ? device.name : mapperName);
    disk->setDeviceName(modelOf(device));
    disk->setSize(sizeOf(device));
    disk->setFreeSpace(0);
    if (record) disk->setFileSystem(reportableText(record->property("ID_FS_TYPE").value_or(""), kMaximumNameBytes));
    disk->setOpticalMedia(isOptical(device));
    applyMounts(*disk, device.name, mapperName, number, mounts);
    return disk;
}

std::string LinuxVolumeDiscoverer::mapperNameOf(const BlockDeviceEntry& device) {
    if (device.isPartition || !isDeviceMapper(device.name)) return "";
    const std::optional<std::string> name = SysfsBlockDevices::attribute(*source_, device.path + "/dm/name");
    return name ? reportableText(*name, kMaximumNameBytes) : "";
}

std::string LinuxVolumeDiscoverer::modelOf(const BlockDeviceEntry& device) {
    const std::optional<std::string> model = SysfsBlockDevices::driveModel(*source_, device.diskPath);
    return model ? reportableText(*model, kMaximumNameBytes) : "";
}

std::uint64_t LinuxVolumeDiscoverer::sizeOf(const BlockDeviceEntry& device) {
    const std::optional<std::string> text = SysfsBlockDevices::attribute(*source_, device.path + "/size");
    const std::optional<std::uint64_t> sectors = text ? SysfsBlockDevices::parseUnsigned(*text) : std::nullopt;
    const std::optional<std::uint64_t> bytes = sectors ? product(*sectors, kSectorBytes) : std::nullopt;
    if (!bytes) {
        QVSLogger::debug("The size of the block device %s is unknown: %s/size is missing or no sector count.",
                         device.name.c_str(), device.path.c_str());
        return 0;
    }
    return *bytes;
}

bool LinuxVolumeDiscoverer::isOptical(const BlockDeviceEntry& device) {
    if (hasPrefix(device.diskName, "sr")) return true;
    return SysfsBlockDevices::attribute(*source_, device.diskPath + "/device/type") == kScsiTypeOfOpticalDrive;
}

void LinuxVolumeDiscoverer::applyMounts(QVDiskUtilDisk& disk, const std::string& kernelName,
                                        const std::string& mapperName, DeviceNumber number,
                                        const std::vector<MountEntry>& mounts) {
    const std::vector<const MountEntry*> own =
        mountsOfDevice(mounts, number, deviceSourcesOf(kernelName, mapperName));
    for (const MountEntry* entry : own) {
        if (isBootMountPoint(entry->mountPoint)) disk.setBootVolume(true);
    }
    const MountEntry* primary = primaryMount(own);
    if (!primary) return;
    disk.setMountPoint(primary->mountPoint);
    disk.setFreeSpace(freeSpaceAt(primary->mountPoint));
    if (disk.fileSystem().value_or("").empty()) disk.setFileSystem(reportableText(primary->fileSystem, kMaximumNameBytes));
}

std::uint64_t LinuxVolumeDiscoverer::freeSpaceAt(const std::string& mountPoint) {
    const DictionaryRef statistics = source_->fact(facts::kFileSystemStatistics, mountPoint).dictionary();
    if (!statistics) {
        // The mount point is outside text: it stays out of the log.
        QVSLogger::debug("No file-system statistics of a mounted volume; its free space counts as 0.");
        return 0;
    }
    const std::optional<std::uint64_t> bytes =
        product(statistics->get("availableBlocks").toUInt64(), statistics->get("blockSize").toUInt64());
    return bytes.value_or(0);
}

}  // namespace tov
