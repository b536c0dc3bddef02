#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tov {

// The bytes of a ZIP archive holding one deflated member named memberName (no folder path)
// with the given contents. The archive is made in memory, so the caller decides where and
// with which permissions it is written. Nothing on any failure.
std::optional<std::string> zipWithOneMember(const std::string& memberName, std::string_view contents);

}  // namespace tov
