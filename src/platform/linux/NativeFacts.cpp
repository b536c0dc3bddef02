#include "platform/NativeFacts.h"

#include <map>
#include <string_view>

#include "discovery/SystemFacts.h"
#include "platform/PosixFacts.h"
#include "platform/linux/LinuxFacts.h"

namespace tov {
namespace {

using FactFunction = Value (*)(const std::string&);

const std::map<std::string_view, FactFunction>& factFunctions() {
    static const std::map<std::string_view, FactFunction> functions{
        {facts::kInterfaces, networkInterfacesFact},
        {facts::kFileSystemStatistics, fileSystemStatisticsFact},
        {facts::kUname, unameFact},
        {facts::kPrinters, printersFact},
        {facts::kPublicIpPage, publicIpPageFact},
        {facts::kBirthTime, birthTimeFact},
        {facts::kConsoleUser, consoleUserFact},
    };
    return functions;
}

}  // namespace

Value nativeFact(const std::string& name, const std::string& key) {
    const auto found = factFunctions().find(name);
    return found == factFunctions().end() ? Value() : found->second(key);
}

const char* hostPlatformName() { return "linux"; }

}  // namespace tov
