#pragma once

// Reading the small KEY=value files of the system (formats/OsRelease.h) through the source.

#include <optional>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"
#include "discovery/formats/OsRelease.h"

namespace tov {

inline constexpr std::uint64_t kKeyValueFileReadLimit = 64 * 1024;

// The value of key when it is assigned and not empty, as printable text.
std::optional<std::string> printableSetting(const OsRelease& settings, std::string_view key);

// The assignments of the file at path; nothing (with a debug line) when it cannot be read.
std::optional<OsRelease> readKeyValueFile(SystemSource& source, const std::string& path);

struct OsReleaseFile {
    std::string path;  // the file that was read
    OsRelease release;
};

// /etc/os-release, or /usr/lib/os-release when the former cannot be read.
std::optional<OsReleaseFile> readOsReleaseFile(SystemSource& source);

}  // namespace tov
