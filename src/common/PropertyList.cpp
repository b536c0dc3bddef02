#include "common/PropertyList.h"

#include <plist/plist.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <memory>
#include <string>

#include "common/BinaryPlistShape.h"
#include "common/XmlPlistShape.h"

namespace tov {
namespace {

constexpr std::string_view kBinaryMagic = "bplist00";
// Seconds from 1970-01-01 to 2001-01-01, the epoch of property-list dates.
constexpr std::int64_t kPlistEpochSeconds = 978307200;

struct PlistFree {
    void operator()(void* node) const { plist_free(node); }
};
using PlistOwner = std::unique_ptr<void, PlistFree>;

bool isBinary(std::string_view bytes) { return bytes.substr(0, kBinaryMagic.size()) == kBinaryMagic; }

bool shapeIsWithin(std::string_view bytes, const PropertyListLimits& limits) {
    if (isBinary(bytes)) {
        BinaryPlistShape bounds;
        bounds.nodes = limits.nodes;
        bounds.depth = limits.depth;
        bounds.payloadBytes = limits.bytes;
        return measureBinaryPlist(bytes, bounds).has_value();
    }
    return measureXmlPlist(bytes, XmlPlistShape{limits.nodes, limits.depth}).has_value();
}

PlistOwner readPlist(std::string_view bytes) {
    plist_t node = nullptr;
    const auto length = static_cast<std::uint32_t>(bytes.size());
    if (isBinary(bytes)) {
        plist_from_bin(bytes.data(), length, &node);
    } else {
        plist_from_xml(bytes.data(), length, &node);
    }
    return PlistOwner(node);
}

std::string dateText(plist_t node) {
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    const std::time_t time = static_cast<std::time_t>(kPlistEpochSeconds + seconds);
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

class TreeBuilder {
public:
    explicit TreeBuilder(const PropertyListLimits& limits) : dataBudget_(limits.dataBytes) {}

    // The node's tree; nothing when the data objects exceed their budget.
    std::optional<Value> valueOf(plist_t node) {
        switch (plist_get_node_type(node)) {
            case PLIST_DICT: return dictionaryOf(node);
            case PLIST_ARRAY: return arrayOf(node);
            case PLIST_STRING: return Value(stringText(node));
            case PLIST_KEY: return Value(ownedText(node, plist_get_key_val));
            case PLIST_BOOLEAN: return Value(booleanOf(node));
            case PLIST_UINT: return integerOf(node);
            case PLIST_REAL: return realOf(node);
            case PLIST_DATE: return Value(dateText(node));
            case PLIST_DATA: return dataOf(node);
            case PLIST_UID: return uidOf(node);
            default: return Value();
        }
    }

private:
    std::optional<Value> dictionaryOf(plist_t node) {
        DictionaryRef dictionary = makeDictionary();
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(node, &iterator);
        bool within = true;
        for (;;) {
            char* key = nullptr;
            plist_t item = nullptr;
            plist_dict_next_item(node, iterator, &key, &item);
            if (!item) {
                std::free(key);
                break;
            }
            std::optional<Value> value = valueOf(item);
            if (value && key) dictionary->set(key, std::move(*value));
            std::free(key);
            if (!value) {
                within = false;
                break;
            }
        }
        std::free(iterator);
        if (!within) return std::nullopt;
        return Value(dictionary);
    }

    std::optional<Value> arrayOf(plist_t node) {
        ArrayRef array = makeArray();
        const std::uint32_t size = plist_array_get_size(node);
        array->reserve(size);
        for (std::uint32_t index = 0; index < size; ++index) {
            std::optional<Value> value = valueOf(plist_array_get_item(node, index));
            if (!value) return std::nullopt;
            array->push_back(std::move(*value));
        }
        return Value(array);
    }

    // The text up to its first zero byte. libplist's copying getter stops the process on
    // a text that holds one, and the length it states for an XML text counts the bytes
    // after the zero that its copy does not hold, so the copy is read only up to the zero.
    static std::string stringText(plist_t node) {
        std::uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        return text ? std::string(text, strnlen(text, static_cast<std::size_t>(length))) : std::string();
    }

    static std::string ownedText(plist_t node, void (*get)(plist_t, char**)) {
        char* text = nullptr;
        get(node, &text);
        std::string result = text ? text : "";
        std::free(text);
        return result;
    }

    static bool booleanOf(plist_t node) {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }

    // libplist keeps every integer as 64 bits; a list's negative number comes back in
    // two's complement, which is what the signed reading gives.
    static Value integerOf(plist_t node) {
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return Value(static_cast<std::int64_t>(value));
    }

    static Value realOf(plist_t node) {
        double value = 0;
        plist_get_real_val(node, &value);
        return Value(value);
    }

    static Value uidOf(plist_t node) {
        std::uint64_t value = 0;
        plist_get_uid_val(node, &value);
        return Value(value);
    }

    std::optional<Value> dataOf(plist_t node) {
        char* bytes = nullptr;
        std::uint64_t length = 0;
        plist_get_data_val(node, &bytes, &length);
        if (length > dataBudget_) {
            std::free(bytes);
            return std::nullopt;
        }
        dataBudget_ -= length;
        ArrayRef array = makeArray();
        array->reserve(length);
        for (std::uint64_t index = 0; index < length; ++index) {
            array->emplace_back(static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[index])));
        }
        std::free(bytes);
        return Value(array);
    }

    std::uint64_t dataBudget_;
};

}  // namespace

std::optional<Value> parsePropertyList(std::string_view bytes, const PropertyListLimits& limits) {
    if (bytes.empty() || bytes.size() > limits.bytes) return std::nullopt;
    if (bytes.size() > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    if (!shapeIsWithin(bytes, limits)) return std::nullopt;
    const PlistOwner top = readPlist(bytes);
    if (!top) return std::nullopt;
    return TreeBuilder(limits).valueOf(top.get());
}

}  // namespace tov
