#pragma once

// The steps that the fault and crash tests of the hand-over share. They run inside a
// child that has entered a private namespace (support/TovInNamespace.h) and report what
// they found through its standard output, one breach per line.
//
// Each step scans under a host name of its own (in a private UTS namespace), so that
// every scan finds a changed inventory and has a report to hand over.

#include <string>
#include <vector>

namespace tov::testing {

// A host name of this process's own that scans report as the machine's name; false
// when it cannot be had. Only inside a private mount namespace: a pretty host name in
// /etc/machine-info is hidden by a mount.
bool enterPrivateHostName();
bool renameHost(const std::string& name);
// Whether this machine allows a private host name.
bool privateHostNameAvailable();

// In a private host name, two forced scans of a new installation: the first stores the
// inventory, the second hands a full report over. False when either did not end normally.
bool prepareInstallation(int program);

// Runs a forced scan under a new host name to its end and answers what is wrong
// afterwards: an abnormal end, any breach of the hand-over invariants, or no whole pair
// in the outbox that holds the new name.
std::vector<std::string> cleanScanBreaches(int program);

// Writes breaches to standard output in the form breachesInOutput reads.
void printBreaches(const std::vector<std::string>& breaches);
std::vector<std::string> breachesInOutput(const std::string& output);

}  // namespace tov::testing
