#include "app/QVApplicationDelegate.h"

#include <cstdio>

#include "common/Paths.h"
#include "common/QVSPolicy.h"
#include "report/QVSReport.h"

namespace tov {

std::string QVApplicationDelegate::environment() const {
    std::string text = std::string("Version:") + kVersion + "\n";
    text += "Outbox:" + Paths::outboxFolder() + "\n";
    const std::string configHash = QVSPolicy::sharedPolicy().md5();
    if (!configHash.empty()) text += "ConfigHash:" + configHash + "\n";
    return text;
}

void QVApplicationDelegate::forceFullScan() {
    std::fputs("Force Full Scan.\n", stdout);
    std::fflush(stdout);
    QVSReport::sharedManager().reportHardwareForced();
}

}  // namespace tov
