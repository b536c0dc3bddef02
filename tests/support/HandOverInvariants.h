#pragma once

// What must hold for the daemon's files on the real paths (inside a private namespace)
// whatever happened to the last scan: the stored report and the settings can be read,
// and the outbox holds only whole archive-and-header pairs. Each check answers its
// breaches as lines of text, none when all is well.

#include <string>
#include <vector>

namespace tov::testing {

enum class OutboxRule {
    // Every header has its archive and every archive its header; nothing else is there.
    WholePairsOnly,
    // After a crash (or a removal the system refused) an archive may wait for its header
    // and a fresh file for its rename: every header still has a whole archive.
    HeadersHaveArchives,
};

// ".delta/previous.json" is a report the project's reader accepts.
std::vector<std::string> storedReportBreaches();
// "settings.bin" decodes as a keyed archive.
std::vector<std::string> settingsBreaches();
// The outbox under rule: headers are one whole line, archives unzip to a JSON report.
std::vector<std::string> outboxBreaches(OutboxRule rule);
// Report files left in /tmp, where nothing of a report may stay once a scan has ended.
std::vector<std::string> temporaryFolderBreaches();

// All of the above that apply under rule (with HeadersHaveArchives, /tmp is not looked at).
std::vector<std::string> handOverBreaches(OutboxRule rule);

// The reports of the whole pairs in the outbox, unzipped.
std::vector<std::string> outboxReports();
// Some whole pair in the outbox holds a report with the machine name given.
bool outboxHoldsReportOfMachine(const std::string& name);

}  // namespace tov::testing
