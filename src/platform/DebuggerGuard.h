#pragma once

namespace tov {

// Refuses debuggers and other tracers from now on (the daemon runs as root and holds
// the machine's inventory).
void denyDebuggerAttachment();

}  // namespace tov
