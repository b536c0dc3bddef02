#pragma once

// Reads the stored previous report (the inventory dictionary without its wrapper) back
// into an inventory of records, holding only what the comparison with a fresh scan needs.

#include <optional>
#include <string_view>

#include "model/Value.h"

namespace tov {

class QVHardwareReportJsonReader {
public:
    // The eight sections "sysctl", "appkit", "coreaudio", "corefoundation", "diskutil",
    // "iokit", "operatingSystems" and "events"; null when the content is missing, is not one
    // JSON object, lacks "operatingSystems" or a section cannot be read.
    static DictionaryRef hardwareDictionaryWithJsonContent(std::optional<std::string_view> content);

    // Each section reader gives the section's lists as arrays of new records, an empty
    // dictionary for an empty section, and null when a list is not an array or one of its
    // elements is not an object.
    static DictionaryRef parseSysCtl(const Dictionary& section);
    static DictionaryRef parseAppKit(const Dictionary& section);
    static DictionaryRef parseCoreAudio(const Dictionary& section);
    static DictionaryRef parseCoreFoundation(const Dictionary& section);
    static DictionaryRef parseDiskUtil(const Dictionary& section);
    static DictionaryRef parseIOKit(const Dictionary& section);
    // The stored section itself, unchanged.
    static Value parseOperatingSystems(const Value& section);
    // { "Network": IP record } (empty addresses when "Network" is missing), an empty
    // dictionary for an empty section, null when "Network" is not an object.
    static DictionaryRef parseIPInfo(const Dictionary& section);
};

}  // namespace tov
