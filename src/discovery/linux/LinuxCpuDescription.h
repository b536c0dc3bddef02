#pragma once

// The processor's name for the "sysctl" section. x86 kernels name the model in
// /proc/cpuinfo; Arm kernels only give vendor and part codes there, so on Arm the
// firmware's processor version or the board's device-tree model names it instead.

#include <string>

#include "discovery/SystemSource.h"
#include "discovery/linux/ProcCpuInfo.h"

namespace tov {

// x86: the "model name", else the SMBIOS processor version. Others: the SMBIOS processor
// version, the device-tree model, cpuinfo's board "Model", the "model name". "" when
// none is known.
std::string linuxCpuDescription(SystemSource& source, const ProcCpuInfo& cpuInfo, bool x86);

}  // namespace tov
