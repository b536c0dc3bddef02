#pragma once

// The Unit Serial Number page of SCSI vital product data (page 0x80), as the kernel keeps
// it in a SCSI device's "vpd_pg80" file: a 4-byte header (peripheral byte, the page code
// 0x80, then the length of what follows as a 16-bit big-endian number) and that many
// bytes of serial number, usually ASCII padded with blanks.

#include <optional>
#include <string>
#include <string_view>

namespace tov {

struct ScsiSerialPage {
    // The serial's bytes as the page holds them (blanks and all).
    std::string serial;
};

// Nothing when the bytes are no such page: shorter than the header, another page code,
// or a length that runs past the end of the bytes.
std::optional<ScsiSerialPage> parseScsiSerialPage(std::string_view bytes);

}  // namespace tov
