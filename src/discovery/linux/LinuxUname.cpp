#include "discovery/linux/LinuxUname.h"

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "discovery/SystemFacts.h"

namespace tov {

std::optional<std::string> unameField(SystemSource& source, std::string_view field) {
    const Value names = source.fact(facts::kUname);
    const DictionaryRef dictionary = names.dictionary();
    const Value* value = dictionary ? dictionary->find(field) : nullptr;
    const std::string* text = value ? value->string() : nullptr;
    if (!text) {
        QVSLogger::debug("The kernel's %.*s is unknown: no uname fact.", static_cast<int>(field.size()), field.data());
        return std::nullopt;
    }
    return printableText(*text);
}

}  // namespace tov
