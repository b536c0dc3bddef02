#pragma once

// The native facts that every POSIX platform answers the same way (SystemFacts.h gives
// their shapes). Each platform's fact table lists them beside its own.

#include <map>
#include <string>
#include <string_view>

#include "model/Value.h"

namespace tov {

using FactFunction = Value (*)(const std::string& key);
using FactTable = std::map<std::string_view, FactFunction>;

// The facts that only this platform answers, beside the POSIX ones below.
const FactTable& platformOnlyFacts();

// The interfaces' addresses (getifaddrs), in the order the system gives them.
Value networkInterfacesFact(const std::string& key);
// statvfs of the mount path in key.
Value fileSystemStatisticsFact(const std::string& mountPath);
// uname.
Value unameFact(const std::string& key);
// The printing system's destinations (CUPS).
Value printersFact(const std::string& key);
// One GET of the URL in key, when its host is reachable.
Value publicIpPageFact(const std::string& url);

}  // namespace tov
