// Feeds arbitrary bytes to the settings file's decoder. Whatever decodes must also survive
// being written again: writing the decoded dictionary and decoding that gives back the
// same archive bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "common/KeyedArchive.h"

namespace {

void checkRewriting(const tov::Dictionary& decoded) {
    const std::optional<std::string> written = tov::encodeKeyedArchive(decoded);
    if (!written) return;  // strings that are not UTF-8 cannot be written back
    const std::optional<tov::DictionaryRef> reread = tov::decodeKeyedArchive(*written);
    if (!reread) std::abort();
    const std::optional<std::string> rewritten = tov::encodeKeyedArchive(**reread);
    if (!rewritten || *rewritten != *written) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::optional<tov::DictionaryRef> decoded = tov::decodeKeyedArchive(bytes);
    if (decoded) checkRewriting(**decoded);
    return 0;
}
