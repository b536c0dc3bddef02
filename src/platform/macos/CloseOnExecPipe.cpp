#include "platform/CloseOnExecPipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace tov {
namespace {

bool setCloseOnExec(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFD);
    return flags != -1 && fcntl(descriptor, F_SETFD, flags | FD_CLOEXEC) != -1;
}

}  // namespace

// macOS has no pipe2: the flag is set right after the pipe is made, which leaves a window
// of a few instructions in which a child started by another thread could inherit the ends.
bool openCloseOnExecPipe(int descriptors[2]) {
    if (pipe(descriptors) != 0) return false;
    if (setCloseOnExec(descriptors[0]) && setCloseOnExec(descriptors[1])) return true;
    const int failure = errno;
    close(descriptors[0]);
    close(descriptors[1]);
    errno = failure;
    return false;
}

}  // namespace tov
