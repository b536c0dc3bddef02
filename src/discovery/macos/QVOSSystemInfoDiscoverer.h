#pragma once

// The "operatingSystems" section on a Mac: a flat dictionary of texts about the installed
// system, the machine and the user at the console, filled key by key in a fixed order.
// A value that cannot be found (the system version file or one of its keys, the host's
// localized name, a preferences file without "AppleLocale", a kernel parameter) ends the
// section at its key with a warning: the keys stored before it stay. "serialNumber"
// comes last and only when the device registry names the machine's serial number.

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "discovery/QVSystemInfoDiscoverer.h"
#include "discovery/SectionKeys.h"
#include "discovery/SystemSource.h"

namespace tov {

class QVOSSystemInfoDiscoverer : public QVSystemInfoDiscoverer, public OperatingSystemsSectionKeys {
public:
    static constexpr const char* kSourceName = "operatingSystems";

    explicit QVOSSystemInfoDiscoverer(std::shared_ptr<SystemSource> source);

    std::string sourceName() const override { return kSourceName; }
    // A new dictionary filled by discoverOS.
    DictionaryRef discoverInfo() override;

    // Fills section in key order; false when a value is missing and the section ends early.
    static bool discoverOS(SystemSource& source, Dictionary& section);
    // The boot volume's path under "/Volumes" and the path of its blessed system folder
    // there; "/" and "/" when bless names no folder or no volume under "/Volumes" holds it.
    static std::pair<std::string, std::string> discoverBootDevice(SystemSource& source);
    // The directory domain of the user's record ("corp.example"); "" when unknown.
    static std::string discoverDomainWithUsername(SystemSource& source, const std::string& username);
    // The user at the console: the process's own user when the store names none, "" when
    // nobody is logged in ("loginwindow").
    static std::string currentHumanUsername(SystemSource& source);
    // "AppleLocale" of the user's global preferences; the current locale for an empty
    // name or a user without that file; nothing when the file has no such text.
    static std::optional<std::string> localeOfUserWithUsername(SystemSource& source, const std::string& username);
    // "enabled" or "disabled" as csrutil tells, "N/A" without csrutil.
    static std::string systemIntegrityProtectionStatus(SystemSource& source);

private:
    static bool discoverRelease(SystemSource& source, Dictionary& section, const std::string& consoleUser);
    static bool discoverMachine(SystemSource& source, Dictionary& section, const std::string& consoleUser);
    static void discoverSerialNumber(SystemSource& source, Dictionary& section);

    std::shared_ptr<SystemSource> source_;
};

}  // namespace tov
