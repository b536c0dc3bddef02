#include "support/PrivateMemoryFolder.h"

namespace tov::testing {

// macOS has no mount namespaces: a mount would be the whole machine's, so none is made.
bool mountPrivateMemoryFolder(const std::string&, int) { return false; }

bool remountMemoryFolderReadOnly(const std::string&, int) { return false; }

}  // namespace tov::testing
