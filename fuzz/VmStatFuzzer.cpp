// Feeds arbitrary text to the vm_stat reader of the sysctl section and to its size-text
// rule. The reader may only ever store "active" and "wired", as signed numbers; the size
// rule gives the text back unchanged unless it ends in KB or MB (any letter case), and
// then either the text unchanged, the trimmed text before the first "KB", or a decimal
// number of kilobytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include "common/TextUtils.h"
#include "discovery/macos/QVSysCtlHardwareInfoDiscoverer.h"

namespace {

using Discoverer = tov::QVSysCtlHardwareInfoDiscoverer;

bool endsWith(const std::string& text, const std::string& suffix) {
    return text.size() >= suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool isDecimal(const std::string& text) {
    std::size_t start = text.size() > 0 && text[0] == '-' ? 1 : 0;
    if (start == text.size()) return false;
    for (std::size_t index = start; index < text.size(); ++index) {
        if (text[index] < '0' || text[index] > '9') return false;
    }
    return true;
}

void checkVmStat(const std::string& text) {
    tov::Dictionary counts;
    Discoverer::populateDictionaryWithVmStatResponse(&counts, text);
    for (const auto& [key, value] : counts) {
        if (key != "active" && key != "wired") std::abort();
        if (value.type() != tov::Value::Type::Int) std::abort();
    }
}

void checkSizeText(const std::string& text) {
    const std::optional<std::string> kilobytes = Discoverer::getKBValueFromSizeString(text);
    if (!kilobytes) std::abort();
    const std::string upper = tov::asciiUppercase(text);
    if (*kilobytes == text) return;
    if (endsWith(upper, "KB")) {
        const std::size_t unit = text.find("KB");
        if (unit == std::string::npos) std::abort();
        if (*kilobytes != tov::trimWhitespaceAndNewlines(std::string_view(text).substr(0, unit))) std::abort();
    } else if (endsWith(upper, "MB")) {
        if (text.find("MB") == std::string::npos || !isDecimal(*kilobytes)) std::abort();
    } else {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkVmStat(text);
    checkSizeText(text);
    if (Discoverer::getKBValueFromSizeString(std::nullopt)) std::abort();
    return 0;
}
