#include "common/UserDatabase.h"

#include <grp.h>
#include <pwd.h>

#include <cerrno>
#include <utility>
#include <vector>

namespace tov {
namespace {

// An entry is a few hundred bytes; the scratch buffer grows on ERANGE up to this.
constexpr std::size_t kMaximumEntryBytes = 1u << 20;

// Runs a re-entrant user or group database lookup, growing its scratch buffer on ERANGE,
// and hands the entry found to extract.
template <typename Entry, typename Lookup, typename Extract>
auto lookUp(Lookup lookup, Extract extract) -> std::optional<decltype(extract(std::declval<const Entry&>()))> {
    std::vector<char> buffer(4096);
    for (;;) {
        Entry entry{};
        Entry* found = nullptr;
        const int result = lookup(&entry, buffer.data(), buffer.size(), &found);
        if (result == ERANGE && buffer.size() < kMaximumEntryBytes) {
            buffer.resize(buffer.size() * 2);
            continue;
        }
        if (result != 0 || found == nullptr) return std::nullopt;
        return extract(*found);
    }
}

}  // namespace

std::optional<std::string> userNameOfId(uid_t user) {
    return lookUp<passwd>(
        [user](passwd* entry, char* buffer, std::size_t size, passwd** found) {
            return getpwuid_r(user, entry, buffer, size, found);
        },
        [](const passwd& entry) { return std::string(entry.pw_name != nullptr ? entry.pw_name : ""); });
}

std::optional<std::string> groupNameOfId(gid_t group) {
    return lookUp<struct group>(
        [group](struct group* entry, char* buffer, std::size_t size, struct group** found) {
            return getgrgid_r(group, entry, buffer, size, found);
        },
        [](const struct group& entry) { return std::string(entry.gr_name != nullptr ? entry.gr_name : ""); });
}

}  // namespace tov
