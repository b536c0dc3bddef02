#pragma once

// The INI files of sssd (/etc/sssd/sssd.conf) and Samba (/etc/samba/smb.conf):
//   [sssd]
//   domains = corp.example.com
//   [domain/corp.example.com]
//   ; a comment
// Section and key names compare without regard to letter case; values are trimmed. Lines
// that are neither a section, an assignment nor a comment are left out.

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tov {

class IniFile {
public:
    struct Setting {
        std::string section;
        std::string key;
        std::string value;
    };

    static IniFile parse(std::string_view text);

    // The value last given to key in section; nothing when it has none.
    std::optional<std::string> value(std::string_view section, std::string_view key) const;
    // The section names in the order they first appear, repeated ones once.
    const std::vector<std::string>& sections() const { return sections_; }

private:
    void addSection(std::string name);

    std::vector<std::string> sections_;
    std::unordered_set<std::string> lowercaseSections_;
    std::vector<Setting> settings_;
};

}  // namespace tov
