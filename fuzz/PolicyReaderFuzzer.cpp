// Hands arbitrary bytes to the streaming policy reader and compares it with the full JSON
// parser: both must agree on whether the bytes are one JSON document, on the kind of its
// root and on the top-level values of the policy keys; the compacted text the reader
// parses must be valid exactly when the original is.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "common/CompactJsonInputBuffer.h"
#include "common/TopLevelJsonKeys.h"
#include "model/Json.h"

namespace {

const char* const kKeys[] = {"FullScanIntervalHours", "ScanAfterRestart", "EventDrivenScan"};

std::string compacted(const std::string& text) {
    std::stringbuf source(text);
    tov::CompactJsonInputBuffer buffer(source, tov::kMaximumJsonDepth);
    std::ostringstream output;
    output << &buffer;
    return output.str();
}

tov::JsonRootKind rootKind(const tov::Value& root) {
    if (root.isDictionary()) return tov::JsonRootKind::Object;
    if (root.isArray()) return tov::JsonRootKind::Array;
    return tov::JsonRootKind::Scalar;
}

// A container is given empty by the reader; only its kind must match.
bool sameValue(const tov::Value& read, const tov::Value& parsed) {
    if (parsed.isArray() || parsed.isDictionary()) return read.type() == parsed.type();
    return read == parsed;
}

void compareWithTheFullParser(const std::string& text) {
    std::istringstream input(text);
    const tov::TopLevelJsonKeys keys = tov::readTopLevelJsonKeys(input, {kKeys[0], kKeys[1], kKeys[2]});
    const std::optional<tov::Value> root = tov::parseJson(text);
    if (keys.parsed != root.has_value()) std::abort();
    if (!root) return;
    if (keys.root != rootKind(*root)) std::abort();
    const tov::DictionaryRef object = root->dictionary();
    for (const char* key : kKeys) {
        const tov::Value* parsed = object ? object->find(key) : nullptr;
        const tov::Value* read = keys.values.find(key);
        if ((parsed == nullptr) != (read == nullptr)) std::abort();
        if (parsed && !sameValue(*read, *parsed)) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (nlohmann::json::accept(text) != nlohmann::json::accept(compacted(text))) std::abort();
    compareWithTheFullParser(text);
    return 0;
}
