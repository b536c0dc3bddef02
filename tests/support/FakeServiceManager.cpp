#include "support/FakeServiceManager.h"

#include <algorithm>

#include "app/WholeSeconds.h"

namespace tov::testing {

std::string FakeServiceManager::jobFileText(const std::string& label, const std::string& programPath,
                                            double interval, bool runAtLoad) const {
    return "job " + label + " " + programPath + " " + std::to_string(wholeSeconds(interval)) + " " +
           (runAtLoad ? "1" : "0") + "\n";
}

std::optional<std::string> FakeServiceManager::list(const std::string& label) {
    calls.push_back("list " + label);
    return listing;
}

std::string FakeServiceManager::load(const std::string& jobFilePath) {
    calls.push_back("load " + jobFilePath);
    if (loadLists) listing = listingOf("com.quorvel.keldservice.tov");
    return loadOutput;
}

std::string FakeServiceManager::unload(const std::string& jobFilePath) {
    calls.push_back("unload " + jobFilePath);
    listing = "";
    return unloadOutput;
}

int FakeServiceManager::count(const std::string& prefix) const {
    return static_cast<int>(
        std::count_if(calls.begin(), calls.end(), [&](const std::string& call) { return call.starts_with(prefix); }));
}

}  // namespace tov::testing
