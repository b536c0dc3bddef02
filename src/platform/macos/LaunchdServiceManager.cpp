#include "platform/macos/LaunchdServiceManager.h"

#include <sstream>

#include "app/QVDaemonPlistGenerator.h"
#include "common/QVSCommand.h"

namespace tov {
namespace {

constexpr const char* kLaunchctl = "/bin/launchctl";

// The lines of text that hold part, as grep prints them; the filter runs here rather than
// in a shell pipeline, so no text reaches a shell.
std::string linesHolding(const std::string& text, const std::string& part) {
    std::istringstream lines(text);
    std::string line;
    std::string result;
    while (std::getline(lines, line)) {
        if (line.find(part) != std::string::npos) result += line + "\n";
    }
    return result;
}

}  // namespace

std::string LaunchdServiceManager::jobFileText(const std::string& label, const std::string& programPath,
                                               double interval, bool runAtLoad) const {
    return QVDaemonPlistGenerator::generatePlist(label, programPath, interval, runAtLoad);
}

std::optional<std::string> LaunchdServiceManager::list(const std::string& label) {
    const std::optional<std::string> output = QVSCommand::runProgram(kLaunchctl, {"list"});
    if (!output) return std::nullopt;
    return linesHolding(*output, label);
}

std::string LaunchdServiceManager::load(const std::string& jobFilePath) {
    return QVSCommand::runProgram(kLaunchctl, {"load", "-w", jobFilePath}).value_or("");
}

std::string LaunchdServiceManager::unload(const std::string& jobFilePath) {
    return QVSCommand::runProgram(kLaunchctl, {"unload", jobFilePath}).value_or("");
}

ServiceManager& platformServiceManager() {
    static LaunchdServiceManager manager;
    return manager;
}

}  // namespace tov
