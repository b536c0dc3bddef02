#pragma once

// The command-line arguments of tov (without the program path) and the rules that read
// its switches.

#include <optional>
#include <string>
#include <vector>

namespace tov {

class QVSAppArgument {
public:
    QVSAppArgument(int argc, const char* const* argv);  // initWithRawArgument::
    explicit QVSAppArgument(std::vector<std::string> arguments);

    const std::vector<std::string>& arguments() const { return arguments_; }

    bool isEnvironmentCall() const;     // "-e" or "e"
    bool isInstallationCall() const;    // "-i" or "i"
    bool isUninstallationCall() const;  // "-u" or "u"
    bool isPrintCall() const;           // "-p" or "p"
    bool isSummaryCall() const;         // "-s" or "s"
    // A whole argument equal to flag, ignoring letter case.
    bool containArgumentFlag(const std::string& flag) const;
    // The level of "-ll=LEVEL", "ll=LEVEL", or "-ll"/"ll" followed by LEVEL.
    std::optional<std::string> logLevel() const;
    // The value of "FLAG=VALUE" or of the argument after "FLAG".
    std::optional<std::string> findArgumentAfterOptionFlag(const std::string& flag) const;

private:
    bool containsEither(const char* shortForm, const char* bareForm) const;

    std::vector<std::string> arguments_;
};

}  // namespace tov
