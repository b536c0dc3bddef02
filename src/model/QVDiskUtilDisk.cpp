#include "model/QVDiskUtilDisk.h"

namespace tov {
namespace {

constexpr std::string_view kNameKey = "name";
constexpr std::string_view kDeviceNameKey = "deviceName";
constexpr std::string_view kIdentifierKey = "deviceId";
constexpr std::string_view kSizeKey = "sizeBytes";
constexpr std::string_view kFreeSpaceKey = "freeSpaceBytes";
constexpr std::string_view kFileSystemKey = "fileSystem";
constexpr std::string_view kBootKey = "boot";
constexpr std::string_view kOpticalMediaKey = "opticalMedia";

}  // namespace

QVDiskUtilDisk::QVDiskUtilDisk() {
    setBootVolume(false);
    setOpticalMedia(false);
    setValue(kFileSystemKey, Value(""));
}

std::shared_ptr<QVDiskUtilDisk> QVDiskUtilDisk::diskUtilDisk() { return std::make_shared<QVDiskUtilDisk>(); }

std::optional<std::string> QVDiskUtilDisk::name() const { return stringForKey(kNameKey); }
void QVDiskUtilDisk::setName(std::optional<std::string_view> name) { setStringValue(name, kNameKey); }

std::optional<std::string> QVDiskUtilDisk::deviceName() const { return stringForKey(kDeviceNameKey); }
void QVDiskUtilDisk::setDeviceName(std::optional<std::string_view> deviceName) {
    setStringValue(deviceName, kDeviceNameKey);
}

std::optional<std::string> QVDiskUtilDisk::identifier() const { return stringForKey(kIdentifierKey); }
void QVDiskUtilDisk::setIdentifier(std::optional<std::string_view> identifier) {
    setStringValue(identifier, kIdentifierKey);
}

std::uint64_t QVDiskUtilDisk::size() const { return valueForKey(kSizeKey).toUInt64(); }
void QVDiskUtilDisk::setSize(std::uint64_t size) { setValue(kSizeKey, Value(size)); }

std::uint64_t QVDiskUtilDisk::freeSpace() const { return valueForKey(kFreeSpaceKey).toUInt64(); }
void QVDiskUtilDisk::setFreeSpace(std::uint64_t freeSpace) { setValue(kFreeSpaceKey, Value(freeSpace)); }

std::optional<std::string> QVDiskUtilDisk::fileSystem() const { return stringForKey(kFileSystemKey); }
void QVDiskUtilDisk::setFileSystem(std::optional<std::string_view> fileSystem) {
    setStringValue(fileSystem, kFileSystemKey);
}

bool QVDiskUtilDisk::isBootVolume() const { return valueForKey(kBootKey).toBool(); }
void QVDiskUtilDisk::setBootVolume(bool bootVolume) { setValue(kBootKey, Value(bootVolume)); }

bool QVDiskUtilDisk::isOpticalMedia() const { return valueForKey(kOpticalMediaKey).toBool(); }
void QVDiskUtilDisk::setOpticalMedia(bool opticalMedia) { setValue(kOpticalMediaKey, Value(opticalMedia)); }

bool QVDiskUtilDisk::isEqual(const QVSystemInfo& other) const {
    if (!otherIsOfMyKind(other)) return false;
    const auto& disk = static_cast<const QVDiskUtilDisk&>(other);
    return stringEquals(other, kNameKey) && stringEquals(other, kDeviceNameKey) &&
           stringEquals(other, kIdentifierKey) && size() == disk.size() && stringEquals(other, kFileSystemKey);
}

}  // namespace tov
