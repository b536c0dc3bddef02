#pragma once

namespace tov {

// Opens a pipe whose two ends are closed in every child at exec, so that a child started
// by another thread at the same moment never inherits them. descriptors[0] reads,
// descriptors[1] writes. False (errno set) when no pipe could be made.
bool openCloseOnExecPipe(int descriptors[2]);

}  // namespace tov
