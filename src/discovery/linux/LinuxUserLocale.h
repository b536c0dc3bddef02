#pragma once

// The locale of the console user: LANG of the user's ~/.config/locale.conf (the home
// folder from /etc/passwd), else the system's LANG (/etc/locale.conf, else
// /etc/default/locale), given without its encoding or modifier ("en_US.UTF-8" is "en_US").

#include <optional>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"

namespace tov {

// The user's locale; the system's when username is "" or the user has no locale file.
// Nothing (with a debug line naming the file) when the user's locale file exists and
// sets no LANG: the system's locale is then not the user's.
std::optional<std::string> linuxUserLocale(SystemSource& source, const std::string& username);

// The system's locale; "C", the locale of a system that sets none, when neither file sets LANG.
std::string linuxSystemLocale(SystemSource& source);

// "de_DE.UTF-8@euro" gives "de_DE".
std::string localeWithoutEncoding(std::string_view locale);

// The home folder of the user in the passwd text; nothing when the user has no line there.
std::optional<std::string> homeFolderInPasswd(std::string_view passwd, std::string_view username);

}  // namespace tov
