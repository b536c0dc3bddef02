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
    // The root-only folder where the temporary report and the archive being made live, on
    // the outbox's file system, so that a rename hands them over.
    static std::string stagingFolder();
    static std::string temporaryReport();
    // Present while the next report handed over must be a full report (reports that were
    // never collected have been removed from the outbox).
    static std::string fullReportOwedMarker();
    static std::string debugTrigger();

    // Prefixes every path with root; an empty root restores the real paths.
    static void setRootForTesting(const std::string& root);
    static std::string root();

private:
    static std::string rooted(const std::string& path);
};

}  // namespace tov
