#pragma once

// A small Mac for the operating-system tests: macOS 14.7.4 on an Intel MacBook Pro, user
// "anna" at the console, bound to the directory corp.example.com, booted from the volume
// that "/Volumes/Macintosh HD" links to, System Integrity Protection on.

#include <memory>
#include <initializer_list>
#include <string>
#include <utility>

#include "support/MemorySystemSource.h"

namespace tov::testing {

inline constexpr const char* kSystemVersionXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n<dict>\n"
    "\t<key>ProductBuildVersion</key>\n\t<string>23H420</string>\n"
    "\t<key>ProductCopyright</key>\n\t<string>1983-2025 Apple Inc.</string>\n"
    "\t<key>ProductName</key>\n\t<string>macOS</string>\n"
    "\t<key>ProductUserVisibleVersion</key>\n\t<string>14.7.4</string>\n"
    "\t<key>ProductVersion</key>\n\t<string>14.7.4</string>\n"
    "</dict>\n</plist>\n";

inline constexpr const char* kBlessInfo =
    "finderinfo[0]:     64 => Blessed System Folder is /System/Library/CoreServices\n"
    "finderinfo[1]:    195 => Blessed System File is /System/Library/CoreServices/boot.efi\n"
    "finderinfo[2]:      0 => Open-folder linked list empty\n"
    "64-bit VSDB volume id:  0x1A2B3C4D5E6F7081\n";

inline constexpr const char* kAnnaPreferences = "/Users/anna/Library/Preferences/.GlobalPreferences.plist";

// A system version file of the given dictionary body (key and string lines).
std::string systemVersionWith(const std::string& body);

// A binary property list of one dictionary whose keys map to texts, keys in the order
// given (first, second, first, second, ...).
std::string binaryTextDictionary(std::initializer_list<std::string> keysAndTexts);

Value dictionaryOf(std::initializer_list<std::pair<const char*, Value>> entries);

std::shared_ptr<MemorySystemSource> annasMacBook();

}  // namespace tov::testing
