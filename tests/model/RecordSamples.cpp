#include "RecordSamples.h"

#include <chrono>

#include "model/Json.h"
#include "model/QVAppKitPrinter.h"
#include "model/QVCoreAudioSound.h"
#include "model/QVCoreFoundationOperatingSystem.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVIOKitBattery.h"
#include "model/QVIOKitCamera.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitMemory.h"
#include "model/QVIOKitNetwork.h"
#include "model/QVIOKitPointingDevice.h"
#include "model/QVIPInfo.h"
#include "model/QVSysCtlCpu.h"
#include "model/QVSysCtlMemory.h"
#include "model/QVSysCtlTimeZone.h"

namespace tov::testing {
namespace {

using namespace std::chrono;

RecordRef camera() {
    auto record = QVIOKitCamera::ioKitCamera();
    record->setName("FaceTime HD Camera");
    record->setModel("UVC Camera VendorID_1452 ProductID_34068");
    record->setUuid("0x1a11000005ac8514");
    return record;
}

RecordRef keyboard() {
    auto record = QVIOKitKeyboard::ioKitKeyboard();
    record->setName("Apple Internal Keyboard / Trackpad");
    return record;
}

RecordRef ipInfo() {
    auto record = QVIPInfo::ipInfo();
    record->setLocalIp("192.168.1.20");
    record->setPublicIp("203.0.113.7");
    return record;
}

RecordRef display() {
    auto record = QVIOKitDisplay::iokitDisplay();
    record->setDescription("Apple M1");
    record->setManufacturer("Apple");
    record->setFrequency(60);
    record->setWidth(2560);
    record->setHeight(1600);
    record->setDepth(32);
    return record;
}

RecordRef printer() {
    auto record = QVAppKitPrinter::appKitPrinter();
    record->setName("Office_LaserJet");
    record->setDriver("HP LaserJet Series PCL 6");
    return record;
}

RecordRef operatingSystem() {
    auto record = QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem();
    record->setOSInstallDate(sys_days{2023y / November / 2} + 7h + 45min + 10s);
    record->setOSLastBootTime(sys_days{2024y / March / 15} + 8h + 1min + 2s);
    record->setBuild("23D60");
    record->setEdition("macOS 14.3.1");
    return record;
}

RecordRef timeZone() {
    auto record = QVSysCtlTimeZone::sysCtlTimeZone();
    record->setTimeZone("(UTC+01:00) Central European Standard Time");
    return record;
}

RecordRef cpu() {
    auto record = QVSysCtlCpu::sysCtlCpu();
    record->setPhysicalCores(8);
    record->setLogicalCores(8);
    record->setInstructionSet(12);
    record->setArchitecture(5);
    record->setProcessorSpeed(3200);
    record->setL2CacheSize(Value("4 MB"));
    record->setL3CacheSize(Value("0"));
    record->setDescription("Apple M1");
    return record;
}

RecordRef diskUtilDisk() {
    auto record = QVDiskUtilDisk::diskUtilDisk();
    record->setName("Macintosh HD");
    record->setDeviceName("APPLE SSD AP0512Q");
    record->setIdentifier("disk3s1");
    record->setSize(494384795648u);
    record->setFreeSpace(300000000000u);
    record->setFileSystem("APFS");
    record->setBootVolume(true);
    record->setMountPoint("/");
    return record;
}

RecordRef battery() {
    auto record = QVIOKitBattery::ioKitBattery();
    record->setName("bq20z451");
    record->setSerialNo("D864134A1B2Q0N4AJ");
    record->setCapacity(87.9f);
    record->setEstimatedRunTime(-1);
    return record;
}

RecordRef network() {
    auto record = QVIOKitNetwork::ioKitNetwork();
    record->setAdapter("Wi-Fi");
    record->setVendor("Broadcom");
    record->setMacAddress("a4:83:e7:01:02:03");
    record->setSpeed(866000000u);
    record->setSsid("Office");
    return record;
}

RecordRef sound() {
    auto record = QVCoreAudioSound::coreAudioSound();
    record->setName("MacBook Pro Speakers");
    record->setManufacturer("Apple Inc.");
    return record;
}

RecordRef memoryModule() {
    auto record = QVIOKitMemory::ioKitMemory();
    record->setName("BANK 0/ChannelA-DIMM0");
    record->setSerialNumber("0x12345678");
    record->setPartNumber("M471A1K43CB1-CTD");
    record->setSize("8 GB");
    record->setSpeed("2667 MHz");
    record->setStatus("OK");
    record->setType("DDR4");
    record->setManufacturer("Samsung");
    return record;
}

RecordRef pointingDevice() {
    auto record = QVIOKitPointingDevice::ioKitPointingDevice();
    record->setDescription("Magic Mouse");
    record->setManufacturer("Apple");
    return record;
}

RecordRef sysCtlMemory() {
    auto record = QVSysCtlMemory::sysCtlMemory();
    record->setTotalPhysicalMemory(17179869184u);
    record->setUsedPhysicalMemory(9000000000u);
    record->setTotalVirtualMemory(2147483648u);
    record->setUsedVirtualMemory(1000000000u);
    return record;
}

RecordRef ioKitDisk() {
    auto record = QVIOKitDisk::ioKitDisk();
    record->setName("APPLE SSD AP0512Q Media");
    record->setSerialNo("0ba0123456789abc");
    record->setRemovable(false);
    return record;
}

}  // namespace

std::vector<RecordRef> filledRecordsOfEveryKind() {
    std::vector<RecordRef> records;
    for (RecordRef (*make)() : {camera, keyboard, ipInfo, display, printer, operatingSystem, timeZone, cpu,
                                diskUtilDisk, battery, network, sound, memoryModule, pointingDevice, sysCtlMemory,
                                ioKitDisk}) {
        records.push_back(make());
        records.back()->setScanResult(2);
    }
    return records;
}

std::string compactJson(const QVSystemInfo& record) {
    return writeJson(Value(record.proxyForJson()), JsonStyle::Compact);
}

}  // namespace tov::testing
