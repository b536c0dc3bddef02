#include "platform/DebuggerGuard.h"

#include <sys/prctl.h>

namespace tov {

// A process that is not dumpable cannot be attached to with ptrace by any user but one
// holding CAP_SYS_PTRACE over it, and leaves no core file.
void denyDebuggerAttachment() { ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0); }

}  // namespace tov
