#pragma once

// The "disks" category on Linux: the real drives among the block devices.
//
// Drives are the whole disks of /sys/block that stand for hardware: SCSI, SATA and USB
// disks and optical drives (sd*, sr*), NVMe namespaces (nvme0n1), virtio and Xen disks
// (vd*, xvd*), old IDE disks (hd*) and memory cards (mmcblk0). Devices the kernel builds
// from others or from memory (loop, ram, zram, dm-*, md*, nbd*, zd*) are none, nor are
// the boot and replay-protected areas of an eMMC (mmcblk0boot0, mmcblk0rpmb).
//   name          the drive's model; a virtio disk, which has none, is named by the PCI
//                 function that carries it (pci.ids); a drive without a name is left out
//   serialNumber  the device's own serial ("device/serial" of NVMe and memory cards,
//                 "serial" of a virtio disk), else the SCSI Unit Serial Number page
//                 ("device/vpd_pg80"), else the serial of the USB device it is part of
//   removable     its "removable" attribute is 1, or it hangs off USB, FireWire or
//                 Thunderbolt

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "model/Value.h"

namespace tov {

ArrayRef discoverLinuxDisks(SystemSource& source, HardwareIds& hardwareIds);

}  // namespace tov
