#include "platform/NativeFacts.h"

#include "discovery/SystemFacts.h"
#include "platform/PosixFacts.h"

namespace tov {
namespace {

const FactTable& posixFacts() {
    static const FactTable functions{
        {facts::kInterfaces, networkInterfacesFact},
        {facts::kFileSystemStatistics, fileSystemStatisticsFact},
        {facts::kUname, unameFact},
        {facts::kPrinters, printersFact},
        {facts::kPublicIpPage, publicIpPageFact},
    };
    return functions;
}

}  // namespace

Value nativeFact(const std::string& name, const std::string& key) {
    for (const FactTable* table : {&posixFacts(), &platformOnlyFacts()}) {
        const auto found = table->find(name);
        if (found != table->end()) return found->second(key);
    }
    return Value();
}

}  // namespace tov
