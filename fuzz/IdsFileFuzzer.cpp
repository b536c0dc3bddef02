// Searches arbitrary bytes as an id database read in parts, and checks the answers
// against the search of the whole text: the same names, as long as no two vendor lines
// share an id and no line is longer than a part (those are cut).

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"
#include "discovery/formats/HardwareIds.h"
#include "discovery/formats/IdsFile.h"
#include "discovery/formats/IdsLines.h"

namespace {

// One file of the given bytes; every read is bounded by the part size.
class BytesSource : public tov::SystemSource {
public:
    explicit BytesSource(std::string_view bytes) : bytes_(bytes) {}
    std::string platform() const override { return kLinuxPlatform; }
    std::optional<std::string> runTool(const std::vector<std::string>&) override { return std::nullopt; }
    std::optional<std::string> readFile(const std::string&, std::uint64_t) override { std::abort(); }
    std::optional<std::string> readFilePart(const std::string&, std::uint64_t offset, std::uint64_t length) override {
        if (length > tov::IdsFile::kPartBytes) std::abort();
        if (offset >= bytes_.size()) return std::string();
        return std::string(bytes_.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(length)));
    }
    std::optional<std::vector<std::string>> listFolder(const std::string&) override { return std::nullopt; }
    std::optional<std::string> readLink(const std::string&) override { return std::nullopt; }
    tov::PathKind pathKind(const std::string&) override { return tov::PathKind::None; }
    tov::Value fact(const std::string&, const std::string&) override { return tov::Value(); }

private:
    std::string_view bytes_;
};

// Whether the part-wise search must give what the whole text gives.
bool comparable(std::string_view text) {
    std::set<std::uint16_t> vendors;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string_view::npos) end = text.size();
        if (end - start >= tov::IdsFile::kPartBytes) return false;
        if (const std::optional<std::uint16_t> id = tov::idsVendorLineId(text.substr(start, end - start))) {
            if (!vendors.insert(*id).second) return false;
        }
        start = end + 1;
    }
    return true;
}

std::uint16_t idAt(std::string_view bytes, std::size_t index) {
    return static_cast<std::uint16_t>((static_cast<unsigned char>(bytes[index]) << 8) |
                                      static_cast<unsigned char>(bytes[index + 1]));
}

}  // namespace

// The first four bytes choose the vendor and device to look up; the rest is the database.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (bytes.size() < 4) return 0;
    const std::uint16_t vendor = idAt(bytes, 0);
    const std::uint16_t device = idAt(bytes, 2);
    const std::string_view text = bytes.substr(4);
    BytesSource source(text);
    std::optional<tov::IdsFile> file = tov::IdsFile::open(source, "/usr/share/misc/pci.ids", 1 << 20);
    if (!file) std::abort();
    const std::optional<std::string> vendorName = file->vendorName(vendor);
    const std::optional<std::string> deviceName = file->deviceName(vendor, device);
    if (vendorName && (vendorName->empty() || vendorName->find('\n') != std::string::npos)) std::abort();
    if (deviceName && (deviceName->empty() || deviceName->find('\n') != std::string::npos)) std::abort();
    if (comparable(text)) {
        if (vendorName != tov::idsVendorName(text, vendor)) std::abort();
        if (deviceName != tov::idsDeviceName(text, vendor, device)) std::abort();
    }
    return 0;
}
