#include "support/HandOverScenario.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdio>
#include <sstream>

#include "support/HandOverInvariants.h"
#include "support/TovInNamespace.h"

namespace tov::testing {
namespace {

constexpr std::string_view kBreachMark = "breach: ";
// A pretty host name there would hide the kernel's host name from the scan.
constexpr const char* kMachineInfo = "/etc/machine-info";

bool forcedScanEnds(int program) { return runOpenedProgramInto(program, {"forcefullscan"}, "/dev/null") == 0; }

bool hideMachineInfo() {
    if (::access(kMachineInfo, F_OK) != 0) return true;
    return ::mount("/dev/null", kMachineInfo, nullptr, MS_BIND, nullptr) == 0;
}

}  // namespace

bool enterPrivateHostName() { return ::unshare(CLONE_NEWUTS) == 0 && hideMachineInfo(); }

bool renameHost(const std::string& name) { return ::sethostname(name.data(), name.size()) == 0; }

bool privateHostNameAvailable() {
    return runInChild([] { return enterPrivateOptAndTmp() && enterPrivateHostName() && renameHost("tov") ? 0 : 1; })
               .exitCode == 0;
}

bool prepareInstallation(int program) {
    return enterPrivateHostName() && renameHost("tov-installed") && forcedScanEnds(program) && forcedScanEnds(program);
}

std::vector<std::string> cleanScanBreaches(int program) {
    const std::string name = "tov-scanned-after";
    if (!renameHost(name) || !forcedScanEnds(program)) return {"a clean forced scan afterwards did not end normally"};
    std::vector<std::string> breaches;
    for (const std::string& breach : handOverBreaches(OutboxRule::WholePairsOnly)) {
        breaches.push_back("after a clean forced scan: " + breach);
    }
    if (!outboxHoldsReportOfMachine(name)) {
        breaches.push_back("a clean forced scan afterwards left no report of its own in the outbox");
    }
    return breaches;
}

void printBreaches(const std::vector<std::string>& breaches) {
    for (const std::string& breach : breaches) {
        std::printf("%.*s%s\n", static_cast<int>(kBreachMark.size()), kBreachMark.data(), breach.c_str());
    }
    std::fflush(stdout);
}

std::vector<std::string> breachesInOutput(const std::string& output) {
    std::vector<std::string> breaches;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(kBreachMark)) breaches.push_back(line.substr(kBreachMark.size()));
    }
    return breaches;
}

}  // namespace tov::testing
