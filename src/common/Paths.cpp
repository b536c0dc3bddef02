#include "common/Paths.h"

#include <mutex>

#include "platform/PlatformPaths.h"

namespace tov {
namespace {

std::mutex rootLock;
std::string testRoot;

}  // namespace

std::string Paths::componentFolder() { return rooted(platformPaths().componentFolder); }
std::string Paths::outboxFolder() { return componentFolder() + "/outbox"; }
std::string Paths::deltaFolder() { return componentFolder() + "/.delta"; }
std::string Paths::previousReport() { return deltaFolder() + "/previous.json"; }
std::string Paths::settingsFile() { return componentFolder() + "/settings.bin"; }
std::string Paths::policyFile() { return componentFolder() + "/policy.json"; }
std::string Paths::executable() { return componentFolder() + "/tov"; }
std::string Paths::logsFolder() { return rooted(platformPaths().logsFolder); }
std::string Paths::jobFile() { return rooted(platformPaths().jobFile); }
std::string Paths::stagingFolder() { return componentFolder() + "/.staging"; }
std::string Paths::temporaryReport() { return stagingFolder() + "/__h_hardware_h__.json"; }
std::string Paths::fullReportOwedMarker() { return deltaFolder() + "/full-report-owed"; }
std::string Paths::debugTrigger() { return rooted("/tmp/debug_tov"); }

void Paths::setRootForTesting(const std::string& root) {
    std::lock_guard<std::mutex> guard(rootLock);
    testRoot = root;
}

std::string Paths::root() {
    std::lock_guard<std::mutex> guard(rootLock);
    return testRoot;
}

std::string Paths::rooted(const std::string& path) { return root() + path; }

}  // namespace tov
