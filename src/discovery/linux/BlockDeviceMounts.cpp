#include "discovery/linux/BlockDeviceMounts.h"

#include <algorithm>

namespace tov {

std::vector<std::string> deviceSourcesOf(const std::string& kernelName, const std::string& mapperName) {
    std::vector<std::string> sources{"/dev/" + kernelName};
    if (!mapperName.empty()) sources.push_back("/dev/mapper/" + mapperName);
    return sources;
}

std::vector<const MountEntry*> mountsOfDevice(const std::vector<MountEntry>& table, DeviceNumber number,
                                              const std::vector<std::string>& sources) {
    std::vector<const MountEntry*> mounts;
    for (const MountEntry& entry : table) {
        const bool sameNumber = entry.major != 0 && entry.major == number.major && entry.minor == number.minor;
        const bool anonymous = entry.major == 0;
        const bool sameSource = std::find(sources.begin(), sources.end(), entry.source) != sources.end();
        if (sameNumber || (anonymous && sameSource)) mounts.push_back(&entry);
    }
    return mounts;
}

const MountEntry* primaryMount(const std::vector<const MountEntry*>& mounts) {
    for (const MountEntry* entry : mounts) {
        if (entry->root == "/") return entry;
    }
    return mounts.empty() ? nullptr : mounts.front();
}

}  // namespace tov
