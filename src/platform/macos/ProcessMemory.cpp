#include "platform/ProcessMemory.h"

#include <mach/mach.h>
#include <sys/sysctl.h>
#include <sys/types.h>

namespace tov {

// task_info of this task. The flavour is MACH_TASK_BASIC_INFO, whose resident size is the
// one TASK_BASIC_INFO_64 reports: the SDK's task_info.h asks callers to use it instead, and
// on arm64 TASK_BASIC_INFO_64 is another flavour with another layout. The count is the
// structure's size in natural_t words, as task_info expects.
std::optional<std::uint64_t> residentBytesOfCurrentProcess() {
    mach_task_basic_info_data_t information {};
    mach_msg_type_number_t count = MACH_TASK_BASIC_INFO_COUNT;
    if (task_info(mach_task_self(), MACH_TASK_BASIC_INFO, reinterpret_cast<task_info_t>(&information), &count) !=
        KERN_SUCCESS) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(information.resident_size);
}

std::uint64_t physicalMemoryBytes() {
    int name[2] = {CTL_HW, HW_MEMSIZE};
    std::uint64_t bytes = 0;
    size_t length = sizeof bytes;
    if (sysctl(name, 2, &bytes, &length, nullptr, 0) != 0 || length != sizeof bytes) return 0;
    return bytes;
}

}  // namespace tov
