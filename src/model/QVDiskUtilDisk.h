#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "model/QVHardware.h"

namespace tov {

// A volume as the disk utility lists it, named by its device identifier ("deviceId").
// A new record already holds boot false, opticalMedia false and fileSystem "".
class QVDiskUtilDisk : public QVRecordKind<QVDiskUtilDisk, QVHardware> {
public:
    static constexpr const char* kClassName = "QVDiskUtilDisk";

    QVDiskUtilDisk();

    static std::shared_ptr<QVDiskUtilDisk> diskUtilDisk();

    // Volume name.
    std::optional<std::string> name() const;
    void setName(std::optional<std::string_view> name);
    std::optional<std::string> deviceName() const;
    void setDeviceName(std::optional<std::string_view> deviceName);
    std::optional<std::string> identifier() const override;
    void setIdentifier(std::optional<std::string_view> identifier);
    // Bytes.
    std::uint64_t size() const;
    void setSize(std::uint64_t size);
    std::uint64_t freeSpace() const;
    void setFreeSpace(std::uint64_t freeSpace);
    std::optional<std::string> fileSystem() const;
    void setFileSystem(std::optional<std::string_view> fileSystem);
    bool isBootVolume() const;
    void setBootVolume(bool bootVolume);
    bool isOpticalMedia() const;
    void setOpticalMedia(bool opticalMedia);

    // Where the volume is mounted, if it is. Kept beside the dictionary: never written to
    // JSON, not copied and not coded.
    const std::optional<std::string>& mountPoint() const { return mountPoint_; }
    void setMountPoint(std::optional<std::string> mountPoint) { mountPoint_ = std::move(mountPoint); }

    // Name, device name, identifier, size, then file system. The boot and optical flags
    // never make two disks unequal: a volume that becomes bootable is the same volume.
    bool isEqual(const QVSystemInfo& other) const override;

private:
    std::optional<std::string> mountPoint_;
};

}  // namespace tov
