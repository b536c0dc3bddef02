#pragma once

// The processors of /proc/cpuinfo. On x86 each "processor" block names the model, its
// clock and where the thread sits ("physical id", "core id"); on Arm a block has the
// "CPU implementer"/"CPU part" codes and the board's "Model" follows the last block.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tov {

struct ProcCpuInfo {
    struct Processor {
        std::string modelName;
        std::string vendorId;
        std::string implementer;
        std::optional<double> megahertz;
        std::optional<std::int64_t> physicalId;
        std::optional<std::int64_t> coreId;
    };

    // At most kMaximumProcessors, in the order of the file.
    std::vector<Processor> processors;
    // The board's "Model" and "Hardware" lines (Arm), outside any processor block.
    std::string boardModel;
    std::string hardware;

    static constexpr std::size_t kMaximumProcessors = 16384;

    // The first processor's "model name"; "" when none has one.
    std::string firstModelName() const;
    // The first processor's "cpu MHz".
    std::optional<double> firstMegahertz() const;
    // True when the blocks have the x86 form: a "vendor_id", or a "model name" without
    // Arm's "CPU implementer" (32-bit Arm kernels write a "model name" too).
    bool looksX86() const;
};

// Lines without ":" are ignored, values are made printable, and text after the last line
// break counts like a last line.
ProcCpuInfo parseProcCpuInfo(std::string_view text);

}  // namespace tov
