#pragma once

namespace tov {

// The whole entry sequence of the executable; answers the process's exit code.
int runTov(int argc, char** argv);

}  // namespace tov
