#include "discovery/macos/RegistryServices.h"

#include "discovery/SystemFacts.h"

namespace tov {
namespace {

constexpr const char* kPathKey = "path";
constexpr const char* kPropertiesKey = "properties";

ArrayRef matchedServices(SystemSource& source, const std::string& matching) {
    return source.fact(facts::kRegistry, matching).array();
}

bool hasPath(const Dictionary& service) { return service.get(kPathKey).isString(); }

}  // namespace

std::vector<DictionaryRef> walkedRegistryServices(SystemSource& source, const std::string& matching) {
    std::vector<DictionaryRef> walked;
    const ArrayRef services = matchedServices(source, matching);
    if (!services) return walked;
    for (const Value& element : *services) {
        DictionaryRef service = element.dictionary();
        if (!service || !hasPath(*service)) break;
        walked.push_back(std::move(service));
    }
    return walked;
}

DictionaryRef firstRegistryService(SystemSource& source, const std::string& matching) {
    const ArrayRef services = matchedServices(source, matching);
    if (!services || services->empty()) return nullptr;
    return services->front().dictionary();
}

DictionaryRef serviceProperties(const Dictionary& service) { return service.get(kPropertiesKey).dictionary(); }

}  // namespace tov
