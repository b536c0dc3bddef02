#pragma once

#include <string>
#include <string_view>

namespace tov {

// Writes a new ZIP archive at archivePath holding one deflated member named memberName
// (no folder path) with the given contents. libzip writes the archive beside its path and
// renames it into place, so a failed write leaves no half archive. False on any failure.
bool writeZipWithOneMember(const std::string& archivePath, const std::string& memberName, std::string_view contents);

}  // namespace tov
