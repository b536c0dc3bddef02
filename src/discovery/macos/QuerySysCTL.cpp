#include "discovery/macos/QuerySysCTL.h"

#include "discovery/SystemFacts.h"

namespace tov {

std::optional<std::string> QuerySysCTL(SystemSource& source, const std::string& name) {
    const Value parameter = source.fact(facts::kSysctl, name);
    if (const std::string* text = parameter.string()) return *text;
    return std::nullopt;
}

}  // namespace tov
