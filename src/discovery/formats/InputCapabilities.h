#pragma once

// One capability bitmap of an input device as the kernel prints it in
// /proc/bus/input/devices ("B: KEY=1000000000007 ff9f207ac14057ff ...") and in sysfs:
// hex words separated by blanks, the most significant word first, each word as wide as
// the kernel's long (64 bits on 64-bit kernels, 32 on 32-bit ones); leading zero words
// are left out. Bit n is the capability numbered n (KEY_A, BTN_LEFT, REL_X, ...).

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tov {

class InputCapabilities {
public:
    // The largest bitmap (keys, KEY_MAX 0x2ff) takes 12 words of 64 bits or 24 of 32;
    // far more words than that is no bitmap of the kernel's.
    static constexpr std::size_t kMaximumWords = 64;

    // No capability at all.
    InputCapabilities() = default;

    // The bitmap of text with words of wordBits (32 or 64) bits; nothing when a word is
    // not hex, is wider than wordBits, the words are more than kMaximumWords or there
    // are none.
    static std::optional<InputCapabilities> parse(std::string_view text, unsigned wordBits);

    bool has(unsigned bit) const;
    // Whether every bit from first to last (both included) is set.
    bool hasAll(unsigned first, unsigned last) const;
    bool empty() const;

private:
    // Least significant word first.
    std::vector<std::uint64_t> words_;
    unsigned wordBits_ = 64;
};

}  // namespace tov
