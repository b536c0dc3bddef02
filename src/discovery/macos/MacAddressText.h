#pragma once

// The text of a network adapter's MAC address from its registry data property.

#include <string>

#include "model/Value.h"

namespace tov {

// The first 6 bytes of the data (an array of byte numbers) as "00:1C:B3:09:85:15",
// upper-case hexadecimal. "" when the data is missing, is no data, or holds fewer than 6
// bytes: such an adapter is still reported, with an empty address, rather than read past
// its data.
std::string macAddressText(const Value& data);

}  // namespace tov
