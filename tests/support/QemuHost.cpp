#include "support/QemuHost.h"

#include <elf.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "support/ChildProcess.h"
#include "support/SanitizerBuild.h"

namespace tov::testing {
namespace {

struct InstalledKernel {
    std::string release;
    std::string image;
};

// The first executable of that name on PATH, or "".
std::string findProgram(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::string folders = path != nullptr ? path : "/usr/bin:/bin";
    std::size_t start = 0;
    while (start <= folders.size()) {
        std::size_t end = folders.find(':', start);
        if (end == std::string::npos) end = folders.size();
        const std::string candidate = folders.substr(start, end - start) + "/" + name;
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
        start = end + 1;
    }
    return "";
}

// The newest kernel of /boot whose modules are installed.
std::optional<InstalledKernel> installedKernel() {
    std::optional<InstalledKernel> newest;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/boot", error)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("vmlinuz-", 0) != 0) continue;
        const std::string release = name.substr(8);
        if (!std::filesystem::exists("/lib/modules/" + release + "/modules.dep", error)) continue;
        if (!newest || release > newest->release) newest = InstalledKernel{release, entry.path().string()};
    }
    return newest;
}

// A 64-bit ELF executable without a program interpreter is statically linked.
bool isStaticExecutable(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    Elf64_Ehdr header{};
    if (!file.read(reinterpret_cast<char*>(&header), sizeof header)) return false;
    if (std::string_view(reinterpret_cast<const char*>(header.e_ident), SELFMAG) != ELFMAG) return false;
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_phentsize != sizeof(Elf64_Phdr)) return false;
    for (unsigned index = 0; index < header.e_phnum; ++index) {
        Elf64_Phdr program{};
        file.seekg(static_cast<std::streamoff>(header.e_phoff + index * sizeof program));
        if (!file.read(reinterpret_cast<char*>(&program), sizeof program)) return false;
        if (program.p_type == PT_INTERP) return false;
    }
    return true;
}

}  // namespace

std::string qemuMachinesUnavailable() {
    if (kSanitizedBuild) return "a sanitizer build: its tov is slow and needs the sanitizer runtime in the guest";
    if (::geteuid() != 0) return "needs root (the installed kernel is readable by root only)";
    if (findProgram("qemu-system-x86_64").empty()) return "qemu-system-x86_64 is not installed";
    const std::optional<InstalledKernel> kernel = installedKernel();
    if (!kernel) return "no kernel in /boot with its modules in /lib/modules";
    const std::string busybox = findProgram("busybox");
    if (busybox.empty() || !isStaticExecutable(busybox)) return "busybox-static is not installed";
    return "";
}

std::optional<QemuGuestImage> installedGuestKernel() {
    const std::optional<InstalledKernel> kernel = installedKernel();
    const std::string qemu = findProgram("qemu-system-x86_64");
    if (!kernel || qemu.empty()) return std::nullopt;
    return QemuGuestImage{qemu, kernel->image, "", kernel->release};
}

std::optional<QemuGuestImage> makeQemuGuestImage(const std::string& folder, const std::string& tov,
                                                 std::string& failure) {
    std::optional<QemuGuestImage> image = installedGuestKernel();
    if (!image) {
        failure = "no emulator or no installed kernel";
        return std::nullopt;
    }
    const ChildResult result = runInChild([&] {
        ::dup2(STDOUT_FILENO, STDERR_FILENO);
        return executeProgram("/bin/bash", {TOV_MAKE_INITRAMFS, folder, tov, image->kernelRelease});
    });
    if (result.exitCode != 0) {
        failure = "make-initramfs.sh failed (" + std::to_string(result.exitCode) + "):\n" + result.output;
        return std::nullopt;
    }
    image->initramfs = folder + "/initramfs.cpio.gz";
    return image;
}

}  // namespace tov::testing
