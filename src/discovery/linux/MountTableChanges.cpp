#include "discovery/linux/MountTableChanges.h"

#include <map>
#include <tuple>

namespace tov {
namespace {

using MountKey = std::tuple<std::string_view, unsigned, unsigned, std::string_view, std::string_view, std::string_view>;

MountKey keyOf(const MountEntry& entry) {
    return {entry.mountPoint, entry.major, entry.minor, entry.root, entry.fileSystem, entry.source};
}

std::map<MountKey, std::size_t> countsOf(const std::vector<MountEntry>& entries) {
    std::map<MountKey, std::size_t> counts;
    for (const MountEntry& entry : entries) ++counts[keyOf(entry)];
    return counts;
}

// The entries of table that other does not match, one for one, in table order; of equal
// entries the later ones are left over (the upper ones of a stack).
std::vector<const MountEntry*> unmatched(const std::vector<MountEntry>& table, const std::vector<MountEntry>& other) {
    std::map<MountKey, std::size_t> available = countsOf(other);
    std::vector<const MountEntry*> left;
    for (const MountEntry& entry : table) {
        const auto match = available.find(keyOf(entry));
        if (match != available.end() && match->second > 0) {
            --match->second;
        } else {
            left.push_back(&entry);
        }
    }
    return left;
}

VolumeEvent eventFor(VolumeEvent::Kind kind, const MountEntry& entry) {
    return VolumeEvent{kind, entry.mountPoint, volumeNameOfMountPath(entry.mountPoint)};
}

}  // namespace

std::vector<VolumeEvent> mountTableChanges(const std::vector<MountEntry>& before, const std::vector<MountEntry>& after) {
    std::vector<VolumeEvent> events;
    for (const MountEntry* gone : unmatched(before, after)) events.push_back(eventFor(VolumeEvent::Kind::Unmounted, *gone));
    for (const MountEntry* come : unmatched(after, before)) events.push_back(eventFor(VolumeEvent::Kind::Mounted, *come));
    return events;
}

std::string volumeNameOfMountPath(std::string_view mountPath) {
    while (mountPath.size() > 1 && mountPath.back() == '/') mountPath.remove_suffix(1);
    if (mountPath == "/") return "/";
    const std::size_t slash = mountPath.rfind('/');
    return std::string(slash == std::string_view::npos ? mountPath : mountPath.substr(slash + 1));
}

}  // namespace tov
