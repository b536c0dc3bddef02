#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tov {

// The contents of every file member of a ZIP archive, one after the other in archive
// order (as "unzip -p" prints them). Nothing when the archive cannot be read or its
// contents would exceed maximumBytes.
std::optional<std::string> readZipMembers(const std::string& path, std::uint64_t maximumBytes);

}  // namespace tov
