#pragma once

// The "operatingSystems" section on Linux: a flat dictionary of strings about the
// installed system, the machine and the user at the console, filled key by key in a
// fixed order. A value that cannot be found (os-release without NAME, no host name, a
// user locale file without LANG) ends the section there, with a warning: the keys stored
// before it stay. Firmware values of a machine without DMI are "" (that is normal).

#include <memory>
#include <optional>
#include <string>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SectionKeys.h"
#include "discovery/SystemSource.h"
#include "discovery/linux/LinuxKeyValueFiles.h"

namespace tov {

class LinuxOperatingSystemDiscoverer : public QVSystemInfoDiscoverer, public OperatingSystemsSectionKeys {
public:
    explicit LinuxOperatingSystemDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return "operatingSystems"; }
    DictionaryRef discoverInfo() override;

    // Fills section in key order; false when a value is missing and the section ends early.
    bool discoverOS(Dictionary& section);

    // "VERSION_ID (build)", the build being BUILD_ID or else the kernel release; the build
    // alone for a distribution without VERSION_ID (rolling or testing releases).
    static std::string osVersion(const OsRelease& release, const std::optional<std::string>& kernelRelease);
    // The source device mounted at "/"; "/" when the mount table does not tell.
    static std::string bootDevice(SystemSource& source);

private:
    bool discoverRelease(Dictionary& section, const std::string& consoleUser);
    bool discoverMachine(Dictionary& section, const std::string& consoleUser);
    std::optional<std::string> systemName();
    void discoverSerialNumber(Dictionary& section);

    std::shared_ptr<SystemSource> source_;
};

}  // namespace tov
