#include "discovery/linux/LinuxMemoryTotals.h"

#include <limits>

#include "discovery/formats/SmbiosMemoryDevice.h"

namespace tov {
namespace {

std::uint64_t saturatingSum(std::uint64_t left, std::uint64_t right) {
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    return right > most - left ? most : left + right;
}

std::uint64_t differenceAtLeastZero(std::uint64_t total, std::uint64_t part) { return part > total ? 0 : total - part; }

std::optional<std::uint64_t> availableMemory(const ProcMemInfo& memInfo) {
    if (memInfo.memAvailable) return *memInfo.memAvailable;
    if (!memInfo.memFree) return std::nullopt;
    return saturatingSum(saturatingSum(memInfo.memFree.value_or(0), memInfo.buffers.value_or(0)),
                         memInfo.cached.value_or(0));
}

}  // namespace

std::optional<std::uint64_t> installedMemoryBytes(const std::vector<std::string>& memoryDeviceEntries) {
    std::uint64_t total = 0;
    bool anyInstalled = false;
    for (const std::string& entry : memoryDeviceEntries) {
        const std::optional<SmbiosMemoryDevice> device = decodeSmbiosMemoryDevice(entry);
        if (!device || !device->installed) continue;
        if (!device->sizeBytes) return std::nullopt;
        anyInstalled = true;
        total = saturatingSum(total, *device->sizeBytes);
    }
    if (!anyInstalled || total == 0) return std::nullopt;
    return total;
}

LinuxMemoryTotals linuxMemoryTotals(std::optional<std::uint64_t> installed, const ProcMemInfo& memInfo) {
    LinuxMemoryTotals totals;
    const std::uint64_t managed = memInfo.memTotal.value_or(0);
    totals.totalPhysical = installed.value_or(managed);
    const std::optional<std::uint64_t> available = availableMemory(memInfo);
    totals.usedPhysical = available ? differenceAtLeastZero(managed, *available) : 0;
    totals.totalSwap = memInfo.swapTotal.value_or(0);
    totals.usedSwap = memInfo.swapFree ? differenceAtLeastZero(totals.totalSwap, *memInfo.swapFree) : 0;
    return totals;
}

}  // namespace tov
