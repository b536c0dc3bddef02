#pragma once

// The KEY=value files of systemd and the distributions: /etc/os-release, /etc/machine-info,
// /etc/locale.conf, /etc/default/locale. Each line is a shell-style assignment without
// any shell features beyond quoting:
//   # a comment
//   NAME="Fedora Linux"
//   VERSION_ID=39
//   PRETTY_HOSTNAME='Build server'
// Values may be unquoted (a backslash keeps the next character), in single quotes (kept
// as written) or in double quotes (a backslash before $ ` " or \ keeps that character).
// Blank lines, comments and CR line ends are allowed; a line that is no such assignment
// (an unterminated quote, a bad key, text after the value) is left out, so a truncated
// file gives the assignments it still holds.

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tov {

class OsRelease {
public:
    using Entry = std::pair<std::string, std::string>;

    static OsRelease parse(std::string_view text);

    // The value last assigned to key, as the shell would see it; nothing when unassigned.
    std::optional<std::string> value(std::string_view key) const;
    // The value when assigned and not empty.
    std::optional<std::string> nonEmptyValue(std::string_view key) const;
    // Each key once, where it was first assigned, with its last value.
    const std::vector<Entry>& entries() const { return entries_; }

private:
    void assign(std::string key, std::string value);

    std::vector<Entry> entries_;
    std::unordered_map<std::string, std::size_t> positions_;  // key to its entry
};

}  // namespace tov
