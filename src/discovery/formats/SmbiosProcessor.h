#pragma once

// The processor version string of an SMBIOS processor structure (type 4), as the kernel
// gives it in /sys/firmware/dmi/entries/4-N/raw.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tov {

inline constexpr std::uint8_t kSmbiosProcessorType = 4;

// The trimmed version text ("Intel(R) Xeon(R) CPU L5640 @ 2.27GHz", "Cortex-A72");
// nothing when the bytes are no processor structure or carry no version.
std::optional<std::string> smbiosProcessorVersion(std::string_view raw);

}  // namespace tov
