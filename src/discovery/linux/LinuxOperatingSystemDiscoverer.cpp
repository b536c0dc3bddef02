#include "discovery/linux/LinuxOperatingSystemDiscoverer.h"

#include <utility>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "discovery/linux/LinuxConsoleUser.h"
#include "discovery/linux/LinuxDirectoryDomain.h"
#include "discovery/linux/LinuxFirmwareIdentity.h"
#include "discovery/linux/LinuxSerialNumber.h"
#include "discovery/linux/LinuxUname.h"
#include "discovery/linux/LinuxUserLocale.h"
#include "discovery/linux/MountInfo.h"

namespace tov {
namespace {

constexpr const char* kMachineInfoPath = "/etc/machine-info";
constexpr const char* kSystemDirectory = "/boot";
constexpr const char* kNoIntegrityProtection = "N/A";
constexpr const char* kRootMountPoint = "/";

// Stores the value, or logs why the section ends at key.
bool store(Dictionary& section, const char* key, const std::optional<std::string>& value, const std::string& reason) {
    if (!value) {
        QVSLogger::warning("The operatingSystems section ends before \"%s\": %s", key, reason.c_str());
        return false;
    }
    section.set(key, Value(*value));
    return true;
}

}  // namespace

LinuxOperatingSystemDiscoverer::LinuxOperatingSystemDiscoverer(std::shared_ptr<SystemSource> source)
    : source_(std::move(source)) {}

DictionaryRef LinuxOperatingSystemDiscoverer::discoverInfo() {
    DictionaryRef section = makeDictionary();
    discoverOS(*section);
    return section;
}

bool LinuxOperatingSystemDiscoverer::discoverOS(Dictionary& section) {
    const std::string consoleUser = linuxConsoleUser(*source_);
    if (!discoverRelease(section, consoleUser) || !discoverMachine(section, consoleUser)) return false;
    discoverSerialNumber(section);
    return true;
}

// osName to osVersion: the distribution's os-release, the firmware's maker and the domain.
bool LinuxOperatingSystemDiscoverer::discoverRelease(Dictionary& section, const std::string& consoleUser) {
    const std::optional<OsReleaseFile> file = readOsReleaseFile(*source_);
    if (!file) return store(section, kOsNameKey, std::nullopt, "neither /etc/os-release nor /usr/lib/os-release can be read.");
    const std::optional<std::string> name = printableSetting(file->release, "NAME");
    if (!store(section, kOsNameKey, name, file->path + " has no NAME.")) return false;
    section.set(kSystemManufacturerKey, Value(linuxSystemManufacturer(*source_)));
    section.set(kOsManufacturerKey, Value(printableSetting(file->release, "VENDOR_NAME").value_or(*name)));
    section.set(kDomainKey, Value(consoleUser.empty() ? std::string() : linuxDirectoryDomain(*source_)));
    section.set(kOsVersionKey, Value(osVersion(file->release, unameField(*source_, "release"))));
    return true;
}

// systemType to systemIntegrityProtectionStatus.
bool LinuxOperatingSystemDiscoverer::discoverMachine(Dictionary& section, const std::string& consoleUser) {
    section.set(kSystemTypeKey, Value(unameField(*source_, "machine").value_or("")));
    if (!store(section, kSystemNameKey, systemName(), "the host has no name (no pretty host name and no uname).")) {
        return false;
    }
    section.set(kUsernameKey, Value(consoleUser));
    section.set(kBootDeviceKey, Value(bootDevice(*source_)));
    section.set(kSystemDirectoryKey, Value(kSystemDirectory));
    if (!store(section, kUserLocaleKey, linuxUserLocale(*source_, consoleUser),
               "the locale file of " + consoleUser + " sets no LANG.")) {
        return false;
    }
    section.set(kSystemModelKey, Value(linuxSystemModel(*source_)));
    section.set(kSystemIntegrityProtectionStatusKey, Value(kNoIntegrityProtection));
    return true;
}

std::optional<std::string> LinuxOperatingSystemDiscoverer::systemName() {
    if (const std::optional<OsRelease> machineInfo = readKeyValueFile(*source_, kMachineInfoPath)) {
        if (std::optional<std::string> prettyName = printableSetting(*machineInfo, "PRETTY_HOSTNAME")) {
            if (!prettyName->empty()) return prettyName;
        }
    }
    return unameField(*source_, "nodename");
}

void LinuxOperatingSystemDiscoverer::discoverSerialNumber(Dictionary& section) {
    if (const std::optional<std::string> serial = linuxMachineSerialNumber(*source_)) {
        section.set(kSerialNumberKey, Value(printableText(*serial)));
    }
}

std::string LinuxOperatingSystemDiscoverer::osVersion(const OsRelease& release,
                                                      const std::optional<std::string>& kernelRelease) {
    const std::optional<std::string> version = printableSetting(release, "VERSION_ID");
    const std::string build = printableSetting(release, "BUILD_ID").value_or(kernelRelease.value_or(""));
    if (!version) return build;
    if (build.empty()) return *version;
    return *version + " (" + build + ")";
}

std::string LinuxOperatingSystemDiscoverer::bootDevice(SystemSource& source) {
    const std::optional<std::vector<MountEntry>> mounts = MountInfo::read(source);
    const MountEntry* root = mounts ? MountInfo::visibleAt(*mounts, kRootMountPoint) : nullptr;
    if (!root || root->source.empty()) {
        QVSLogger::debug("The mount table names no device at %s: the boot device is \"%s\".", kRootMountPoint,
                         kRootMountPoint);
        return kRootMountPoint;
    }
    return printableText(root->source);
}

}  // namespace tov
