#pragma once

// Quantities of the inventory written for people: byte counts in binary units and link
// speeds in bits per second, with one decimal only where it tells something.

#include <cstdint>
#include <string>

namespace tov {

// 512110190592 gives "476.9 GiB", 34359738368 "32 GiB", 1023 "1023 B": the largest unit
// of 1024 that leaves at least one, with one decimal unless it rounds to a whole number.
std::string binarySizeText(std::uint64_t bytes);

// 866000000 gives "866 Mbit/s", 2500000000 "2.5 Gbit/s", 1000000000 "1 Gbit/s", 999
// "999 bit/s": steps of 1000, as link speeds are counted.
std::string bitRateText(std::uint64_t bitsPerSecond);

}  // namespace tov
