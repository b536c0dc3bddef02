// Hands arbitrary bytes to the SMBIOS decoders as if the kernel gave them as a raw
// memory-device or processor entry. Whatever the bytes, decoding must stay inside them,
// and what comes out must be consistent: an empty slot has size 0, strings are printable.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "common/PrintableText.h"
#include "discovery/formats/SmbiosMemoryDevice.h"
#include "discovery/formats/SmbiosProcessor.h"

namespace {

void requirePrintable(const std::string& text) {
    if (tov::printableText(text) != text) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view raw(reinterpret_cast<const char*>(data), size);
    if (const std::optional<tov::SmbiosMemoryDevice> device = tov::decodeSmbiosMemoryDevice(raw)) {
        if (!device->installed && device->sizeBytes && *device->sizeBytes != 0) std::abort();
        for (const std::string* text : {&device->locator, &device->bankLocator, &device->manufacturer,
                                        &device->serialNumber, &device->partNumber}) {
            requirePrintable(*text);
        }
    }
    if (const std::optional<std::string> version = tov::smbiosProcessorVersion(raw)) {
        if (version->empty()) std::abort();
        requirePrintable(*version);
    }
    return 0;
}
