#pragma once

namespace tov {

// The public-IP lookup page set when tov was built; "" means no lookup at all.
const char* publicIpLookupUrl();

}  // namespace tov
