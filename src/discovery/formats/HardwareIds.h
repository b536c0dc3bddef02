#pragma once

// Names of PCI and USB vendors and devices from the pci.ids and usb.ids databases. Both
// databases list a vendor as a line "vvvv  Name" at the start of a line, followed by its
// devices as tab-indented lines "\tdddd  Name" (and their subsystems or interfaces, two
// tabs deep). The files (about 1.4 MB and 0.7 MB) are never held whole: a lookup reads
// the few small parts it needs (IdsFile.h). One object serves one scan and remembers the
// names it gave, as the same ids are asked for again and again; an id the database does
// not hold reads as "0x" and four lower-case hex digits.

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

#include "discovery/SystemSource.h"
#include "discovery/formats/IdsFile.h"

namespace tov {

enum class IdsDatabase { Pci, Usb };

class HardwareIds {
public:
    // pci.ids is about 1.4 MB, usb.ids about 0.7 MB; anything far larger is no database.
    static constexpr std::uint64_t kReadLimit = 16 * 1024 * 1024;
    // Names remembered at most; more are forgotten and looked up again.
    static constexpr std::size_t kRememberedNames = 256;

    explicit HardwareIds(std::shared_ptr<SystemSource> source);

    std::string vendorName(IdsDatabase database, std::uint16_t vendor);
    std::string deviceName(IdsDatabase database, std::uint16_t vendor, std::uint16_t device);

private:
    struct OpenedFile {
        bool tried = false;
        std::optional<IdsFile> file;
    };
    // The database, the vendor and the device (-1 for the vendor's own name).
    using NameKey = std::tuple<IdsDatabase, std::uint16_t, std::int32_t>;

    // The database's file, found on first use; nothing when no copy can be read.
    IdsFile* fileOf(IdsDatabase database);
    std::optional<IdsFile> openDatabase(IdsDatabase database);
    void remember(const NameKey& key, const std::string& name);

    std::shared_ptr<SystemSource> source_;
    OpenedFile pci_;
    OpenedFile usb_;
    std::map<NameKey, std::string> names_;
};

// "0x" and the id as four lower-case hex digits: the name of an id no database holds.
std::string hexIdText(std::uint16_t id);

// An id as sysfs writes it ("0x8086" in a PCI "vendor" file, "046d" in a USB "idVendor"
// file), white space around it allowed; nothing for anything else.
std::optional<std::uint16_t> parseHardwareId(std::string_view text);

// The same lookups in a database's whole text, the plain form that the search in parts
// agrees with. The name on the vendor's line, or nothing.
std::optional<std::string> idsVendorName(std::string_view text, std::uint16_t vendor);
// The name on the line of the vendor's device, or nothing.
std::optional<std::string> idsDeviceName(std::string_view text, std::uint16_t vendor, std::uint16_t device);

}  // namespace tov
