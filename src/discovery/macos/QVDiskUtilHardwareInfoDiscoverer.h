#pragma once

// The "diskutil" section on a Mac: the disks and partitions of the disk utility's list,
// each completed from the utility's information on it. The physical volumes that carry a
// CoreStorage logical volume are left out (the logical volume is listed instead), and a
// volume stays a boot volume only when it is on the startup-disk list or the boot-blessing
// tool names a blessed folder on it. Everything is learnt from tool output read through
// the source; outside text reaches a tool as one argument each, never through a shell.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SystemSource.h"
#include "model/QVDiskUtilDisk.h"

namespace tov {

class QVDiskUtilHardwareInfoDiscoverer : public QVDiskDiscoverer {
public:
    static constexpr const char* kSourceName = "diskutil";
    static constexpr const char* kDisksKey = "disks";
    static constexpr const char* kDiskUtilPath = "/usr/sbin/diskutil";
    static constexpr const char* kSystemSetupPath = "/usr/sbin/systemsetup";
    static constexpr const char* kBlessPath = "/usr/sbin/bless";
    static constexpr const char* kDfPath = "/bin/df";

    explicit QVDiskUtilHardwareInfoDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return kSourceName; }
    // { "disks": discoverDisks() }.
    DictionaryRef discoverInfo() override;
    // The listed disks in list order, without the CoreStorage physical volumes, each
    // filled from its disk information. Refreshes the startup-disk mount points first.
    ArrayRef discoverDisks() override;

    // The tools' standard output; "" when a tool cannot be run (or, for the per-disk and
    // per-path questions, when the identifier or path is empty: nothing is run then).
    static std::string diskListPlistResponse(SystemSource& source);
    static std::string diskCSListResponse(SystemSource& source);
    static std::string systemSetupListStartupDisksResponse(SystemSource& source);
    static std::string diskPlistInfoResponseForDisk(SystemSource& source, const QVDiskUtilDisk& disk);
    static std::string blessPlistInfoResponseForMountPath(SystemSource& source, const std::string& mountPath);
    // The disk information of a mount path as it is, an error dictionary included; null
    // when the tool cannot be run or its output is no property-list dictionary.
    static DictionaryRef infoPlistForMountPath(SystemSource& source, const std::string& mountPath);
    // The identifier of the disk holding "/" ("disk1s1" of "/dev/disk1s1"), from df's
    // second line; nothing when df cannot be run or prints fewer than two lines.
    static std::optional<std::string> getCurrentOSDiskId(SystemSource& source);

    // Every whole disk of the list followed by its partitions, equal records once. Each
    // record has its name ("" when the volume has none), identifier and mount point.
    static ArrayRef disksWithDiskUtilListPlistResponse(const std::string& response);
    // Every mount point of a whole disk or partition of the list, in order, once each.
    static std::vector<std::string> mountPathWithDiskUtilListPlistResponse(const std::string& response);
    // The CoreStorage physical volumes, or logical volumes, of the listing.
    static ArrayRef physicalVolumeDisksWithDiskUtilCSListResponse(const std::string& response);
    static ArrayRef disksWithDiskUtilCSListResponse(const std::string& response);
    // The startup disks' mount paths: each listed ".../System/Library/CoreServices"
    // folder with that part removed ("/" for the running system's volume).
    static std::vector<std::string> parseSystemSetupListStartupDisksResponse(const std::string& response);
    // The blessed folders of the boot-blessing tool's answer: its "Finder Info" entries
    // with a positive "Directory ID" and a non-empty "Path".
    static std::vector<DictionaryRef> parseBlessPlistInfo(const std::string& response);

    // Fills the disk from its disk information: sizes, media name, file system, the
    // optical mark and the boot mark (checked with the boot-blessing tool when the volume
    // is mounted outside the startup disks).
    void populateDiskWithDiskUtilPlistInfoResponse(QVDiskUtilDisk& disk, const std::string& response);

    // The mount paths of the startup disks as the last discoverDisks found them.
    std::vector<std::string> systemSetupListStartupDiskMountPoints;

private:
    void applyInfoEntry(QVDiskUtilDisk& disk, const std::string& key, const Value& value);
    bool isBlessedOrStartupVolume(const QVDiskUtilDisk& disk);

    std::shared_ptr<SystemSource> source_;
};

}  // namespace tov
