#include "discovery/macos/MacSystemVersion.h"

#include "common/PropertyList.h"

namespace tov {
namespace {

// The file holds a handful of short texts; anything near this size is not that file.
constexpr std::uint64_t kMaximumBytes = 1024 * 1024;

}  // namespace

DictionaryRef readSystemVersion(SystemSource& source) {
    const std::optional<std::string> bytes = source.readFile(kSystemVersionPath, kMaximumBytes);
    if (!bytes) return nullptr;
    const std::optional<Value> list = parsePropertyList(*bytes);
    return list ? list->dictionary() : nullptr;
}

std::optional<std::string> systemVersionText(const DictionaryRef& version, std::string_view key) {
    if (!version) return std::nullopt;
    const Value* value = version->find(key);
    if (!value || !value->string()) return std::nullopt;
    return *value->string();
}

}  // namespace tov
