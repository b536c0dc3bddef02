#pragma once

// The label of a Linux volume: what its file system calls itself. udev keeps it in its
// database (ID_FS_LABEL_ENC with "\xNN" escapes, ID_FS_LABEL with unsafe characters
// replaced); without udev's record the names of the links in /dev/disk/by-label that
// point to the device tell it.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"
#include "discovery/formats/UdevDatabase.h"

namespace tov {

inline constexpr const char* kLabelLinkFolder = "/dev/disk/by-label";
// A label longer than any file system allows is cut to this many bytes.
inline constexpr std::size_t kMaximumLabelBytes = 255;

// The label of the device named kernelName, as the report shows it; "" when it has none.
std::string volumeLabelOf(SystemSource& source, const std::optional<UdevRecord>& record,
                          const std::string& kernelName);

// Text from the machine made fit for the report: printable (common/PrintableText.h), so
// that a report read back compares equal, and cut at a character boundary when it is
// longer than maximumBytes.
std::string reportableText(std::string_view text, std::size_t maximumBytes);

}  // namespace tov
