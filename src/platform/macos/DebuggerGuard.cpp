#include "platform/DebuggerGuard.h"

#include <sys/ptrace.h>
#include <sys/types.h>

namespace tov {

void denyDebuggerAttachment() { ::ptrace(PT_DENY_ATTACH, 0, nullptr, 0); }

}  // namespace tov
