#pragma once

// The keys of the sections whose discoverers differ by platform: a Mac's report and a
// Linux machine's are read with one schema, so both discoverers of a section take their
// keys from here.

namespace tov {

// The "iokit" section's categories, and the key of the serial-number entry.
struct IOKitSectionKeys {
    static constexpr const char* kSerialNumbersKey = "serialNumbers";
    static constexpr const char* kSerialNumberKey = "serialNumber";
    static constexpr const char* kDisplaysKey = "displays";
    static constexpr const char* kKeyboardsKey = "keyboards";
    static constexpr const char* kPointingDevicesKey = "pointingDevices";
    static constexpr const char* kBatteriesKey = "batteries";
    static constexpr const char* kDisksKey = "disks";
    static constexpr const char* kNetworkAdaptersKey = "networkAdapters";
    static constexpr const char* kCameraKey = "camera";
    static constexpr const char* kMemoryKey = "memory";
};

// The "operatingSystems" section's keys, in the order the section is filled.
struct OperatingSystemsSectionKeys {
    static constexpr const char* kOsNameKey = "osName";
    static constexpr const char* kSystemManufacturerKey = "systemManufacturer";
    static constexpr const char* kOsManufacturerKey = "osManufacturer";
    static constexpr const char* kDomainKey = "domain";
    static constexpr const char* kOsVersionKey = "osVersion";
    static constexpr const char* kSystemTypeKey = "systemType";
    static constexpr const char* kSystemNameKey = "systemName";
    static constexpr const char* kUsernameKey = "username";
    static constexpr const char* kBootDeviceKey = "bootDevice";
    static constexpr const char* kSystemDirectoryKey = "systemDirectory";
    static constexpr const char* kUserLocaleKey = "userLocale";
    static constexpr const char* kSystemModelKey = "systemModel";
    static constexpr const char* kSystemIntegrityProtectionStatusKey = "systemIntegrityProtectionStatus";
    static constexpr const char* kSerialNumberKey = "serialNumber";
};

}  // namespace tov
