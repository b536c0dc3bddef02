#pragma once

// Every file and folder the daemon uses, from one place. Tests move them all below a
// temporary folder with setRootForTesting; nothing else changes them.

#include <string>

namespace tov {

class Paths {
public:
    static std::string componentFolder();
    static std::string outboxFolder();
    static std::string deltaFolder();
    static std::string previousReport();
    static std::string settingsFile();
    static std::string policyFile();
    static std::string executable();
    static std::string logsFolder();
    static std::string jobFile();
    static std::string temporaryReport();
    static std::string debugTrigger();
    static std::string archiveStagingFolder();

    // Prefixes every path with root; an empty root restores the real paths.
    static void setRootForTesting(const std::string& root);
    static std::string root();

private:
    static std::string rooted(const std::string& path);
};

}  // namespace tov
