#pragma once

// What this host needs to run the QEMU test machines (the emulator, an installed kernel
// with its modules, a static busybox, root to read the kernel), and the guest image made
// from them: the kernel and an initramfs with tov in it.

#include <optional>
#include <string>

#include "support/QemuMachine.h"

namespace tov::testing {

// Why the machines cannot run here, or "" when they can.
std::string qemuMachinesUnavailable();

// The emulator and the installed kernel, without an initramfs; nothing when either is missing.
std::optional<QemuGuestImage> installedGuestKernel();

// Makes the initramfs (tests/qemu/make-initramfs.sh) with the given tov in folder. On
// failure, nothing, and failure holds what the script said.
std::optional<QemuGuestImage> makeQemuGuestImage(const std::string& folder, const std::string& tov,
                                                 std::string& failure);

}  // namespace tov::testing
