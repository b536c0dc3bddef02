#pragma once

// Runs the built tov executable as a user would, in a private mount namespace whose /opt
// and /tmp are empty memory file systems, so the real paths can be used without touching
// the machine's own files.

#include <string>
#include <vector>

#include "support/ChildProcess.h"

namespace tov::testing {

// The folders a namespace replaces with empty memory file systems: /opt and /tmp, and
// for the installation modes also systemd's unit folder /etc/systemd/system, so that a
// unit file can be written and removed without touching the machine's.
enum class PrivateFolders { OptAndTmp, OptTmpAndSystemdUnits };

// Inside a child: a mount namespace of its own with those folders fresh.
bool enterPrivateOptAndTmp(PrivateFolders folders = PrivateFolders::OptAndTmp);
// Whether this machine allows it (root, the folders present, namespaces available).
bool privateOptAndTmpAvailable(PrivateFolders folders = PrivateFolders::OptAndTmp);

// Replaces the child with the program opened at descriptor program.
int executeOpenedProgram(int program, const std::vector<std::string>& arguments);
// Runs the program opened at descriptor program to its end in a child of this process;
// answers its exit code.
int runOpenedProgram(int program, const std::vector<std::string>& arguments);

// The same, with the program's standard output going to the file at outputPath (kept
// as it is when the path is empty).
int runOpenedProgramInto(int program, const std::vector<std::string>& arguments, const std::string& outputPath);

// Runs body in a child that has opened tov (descriptor given to body) and entered the
// private namespace; 126 when that failed.
ChildResult runWithTovInNamespace(const std::function<int(int program)>& body,
                                  PrivateFolders folders = PrivateFolders::OptAndTmp);

}  // namespace tov::testing
