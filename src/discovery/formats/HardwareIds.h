#pragma once

// Names of PCI and USB vendors and devices from the pci.ids and usb.ids databases. Both
// databases list a vendor as a line "vvvv  Name" at the start of a line, followed by its
// devices as tab-indented lines "\tdddd  Name" (and their subsystems or interfaces, two
// tabs deep). A lookup is a text search in the file's bytes: nothing is built from the
// whole file. One object serves one scan: each database is read once, on first use, and
// kept until the object goes away; an id the database does not hold reads as "0x" and
// four lower-case hex digits.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"

namespace tov {

enum class IdsDatabase { Pci, Usb };

class HardwareIds {
public:
    // pci.ids is about 1.4 MB, usb.ids about 0.7 MB; anything far larger is no database.
    static constexpr std::uint64_t kReadLimit = 16 * 1024 * 1024;

    explicit HardwareIds(std::shared_ptr<SystemSource> source);

    std::string vendorName(IdsDatabase database, std::uint16_t vendor);
    std::string deviceName(IdsDatabase database, std::uint16_t vendor, std::uint16_t device);

private:
    struct LoadedText {
        bool loaded = false;
        std::optional<std::string> bytes;
    };

    // The database's bytes, read on first use; nothing when no copy can be read.
    const std::optional<std::string>& textOf(IdsDatabase database);
    std::optional<std::string> readDatabase(IdsDatabase database);

    std::shared_ptr<SystemSource> source_;
    LoadedText pci_;
    LoadedText usb_;
};

// "0x" and the id as four lower-case hex digits: the name of an id no database holds.
std::string hexIdText(std::uint16_t id);

// An id as sysfs writes it ("0x8086" in a PCI "vendor" file, "046d" in a USB "idVendor"
// file), white space around it allowed; nothing for anything else.
std::optional<std::uint16_t> parseHardwareId(std::string_view text);

// The name on the vendor's line of a database's text, or nothing.
std::optional<std::string> idsVendorName(std::string_view text, std::uint16_t vendor);
// The name on the line of the vendor's device, or nothing.
std::optional<std::string> idsDeviceName(std::string_view text, std::uint16_t vendor, std::uint16_t device);

}  // namespace tov
