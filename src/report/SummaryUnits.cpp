#include "report/SummaryUnits.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace tov {
namespace {

// The amount with one decimal, or none when the decimal would be 0: 2.0 gives "2".
std::string oneDecimal(double amount) {
    const double tenths = std::round(amount * 10.0);
    char text[32] = {};
    if (std::fmod(tenths, 10.0) == 0.0) {
        std::snprintf(text, sizeof text, "%.0f", tenths / 10.0);
    } else {
        std::snprintf(text, sizeof text, "%.1f", tenths / 10.0);
    }
    return text;
}

// The count in the largest unit that leaves at least one after rounding to a tenth.
template <std::size_t N>
std::string scaled(std::uint64_t count, double step, const std::array<const char*, N>& units) {
    double amount = static_cast<double>(count);
    std::size_t unit = 0;
    while (unit + 1 < units.size() && std::round(amount * 10.0) / 10.0 >= step) {
        amount /= step;
        ++unit;
    }
    return oneDecimal(amount) + " " + units[unit];
}

}  // namespace

std::string binarySizeText(std::uint64_t bytes) {
    static constexpr std::array<const char*, 7> kUnits{"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    return scaled(bytes, 1024.0, kUnits);
}

std::string bitRateText(std::uint64_t bitsPerSecond) {
    static constexpr std::array<const char*, 5> kUnits{"bit/s", "kbit/s", "Mbit/s", "Gbit/s", "Tbit/s"};
    return scaled(bitsPerSecond, 1000.0, kUnits);
}

}  // namespace tov
