#pragma once

// How wide the running kernel's long is, told by the machine name of uname: 32 bits for
// the 32-bit architectures (i686, armv7l, ...), 64 for the others and when uname is
// unknown. Bitmaps the kernel prints (input capabilities) come in words of this width.

#include <string_view>

#include "discovery/SystemSource.h"

namespace tov {

unsigned linuxKernelWordBits(SystemSource& source);

// The width for a uname machine name.
unsigned kernelWordBitsOfMachine(std::string_view machine);

}  // namespace tov
