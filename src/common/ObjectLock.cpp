#include "common/ObjectLock.h"

#include <array>
#include <cstdint>
#include <functional>

namespace tov {
namespace {

// A prime number of slots, so that objects allocated at a regular stride spread over all.
constexpr std::size_t kSlotCount = 127;

std::array<std::recursive_mutex, kSlotCount>& slots() {
    static std::array<std::recursive_mutex, kSlotCount> table;
    return table;
}

std::size_t slotFor(const void* object) {
    // The low bits of an address are the same for every allocation of one alignment.
    const auto address = reinterpret_cast<std::uintptr_t>(object) >> 4;
    return std::hash<std::uintptr_t>{}(address) % kSlotCount;
}

}  // namespace

std::recursive_mutex& objectMutexFor(const void* object) { return slots()[slotFor(object)]; }

}  // namespace tov
