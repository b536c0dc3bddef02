#include "platform/CloseOnExecPipe.h"

#include <fcntl.h>
#include <unistd.h>

namespace tov {

bool openCloseOnExecPipe(int descriptors[2]) {
    return pipe2(descriptors, O_CLOEXEC) == 0;
}

}  // namespace tov
