#include "platform/NativeFacts.h"

#include "platform/PosixFacts.h"

namespace tov {

const FactTable& platformOnlyFacts() {
    static const FactTable functions{};
    return functions;
}

const char* hostPlatformName() { return "macos"; }

}  // namespace tov
