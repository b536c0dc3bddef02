#include "common/KeyedArchive.h"

#include <plist/plist.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "common/BinaryPlistShape.h"
#include "common/StringData.h"

namespace tov {
namespace {

constexpr const char* kArchiverKey = "$archiver";
constexpr std::string_view kArchiverName = "NSKeyedArchiver";
constexpr const char* kVersionKey = "$version";
constexpr std::uint64_t kArchiveVersion = 100000;
constexpr const char* kTopKey = "$top";
constexpr const char* kRootKey = "root";
constexpr const char* kObjectsKey = "$objects";
constexpr const char* kNullObject = "$null";
constexpr const char* kClassKey = "$class";
constexpr const char* kClassNameKey = "$classname";
constexpr const char* kClassesKey = "$classes";
constexpr const char* kKeysKey = "NS.keys";
constexpr const char* kValuesKey = "NS.objects";
constexpr const char* kStringKey = "NS.string";
// The reference that stands for nil.
constexpr std::uint64_t kNullReference = 0;
constexpr std::uint64_t kRootReference = 1;

// A settings archive unfolds into a few dozen nodes, five levels deep.
constexpr BinaryPlistShape kDecodingLimits{65536, 4 << 20, 64};

struct PlistFree {
    void operator()(void* node) const { plist_free(node); }
};
using PlistOwner = std::unique_ptr<void, PlistFree>;

std::optional<std::string> writeBinaryPlist(plist_t node) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(node, &bytes, &length);
    if (bytes == nullptr) return std::nullopt;
    std::string written(bytes, length);
    plist_to_bin_free(bytes);
    if (written.empty()) return std::nullopt;
    return written;
}

PlistOwner readBinaryPlist(std::string_view bytes) {
    plist_t node = nullptr;
    plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    return PlistOwner(node);
}

// ---- Encoding

bool isKeptValue(const Value& value) {
    switch (value.type()) {
        case Value::Type::Int:
        case Value::Type::UInt:
        case Value::Type::Double:
        case Value::Type::String: return true;
        default: return false;
    }
}

// libplist takes strings as C strings and writes them as given.
bool isPlistString(const std::string& text) {
    return text.find('\0') == std::string::npos && (text.empty() || isValidStringData(text));
}

// The entries the archive keeps; nothing when one of them cannot be written.
std::optional<std::vector<const Dictionary::Entry*>> keptEntries(const Dictionary& dictionary) {
    std::vector<const Dictionary::Entry*> kept;
    for (const Dictionary::Entry& entry : dictionary) {
        if (!isKeptValue(entry.second)) continue;
        if (!isPlistString(entry.first)) return std::nullopt;
        if (entry.second.isString() && !isPlistString(*entry.second.string())) return std::nullopt;
        kept.push_back(&entry);
    }
    return kept;
}

// libplist writes the integers of the nodes it makes in eight bytes, which every reader
// takes as signed; an unsigned number above the signed range needs the sixteen-byte form,
// which libplist keeps only for nodes it has read. So that node is read from a
// one-object property list holding the number in that form.
plist_t newWideUnsignedNode(std::uint64_t number) {
    std::string bytes = "bplist00";
    bytes += '\x14';
    bytes.append(8, '\0');
    for (int shift = 56; shift >= 0; shift -= 8) bytes += static_cast<char>((number >> shift) & 0xFF);
    const char offsetTable = 8;
    bytes += offsetTable;
    bytes.append(6, '\0');
    bytes += '\x01';  // offset width
    bytes += '\x01';  // reference width
    for (const std::uint64_t field : {std::uint64_t{1}, std::uint64_t{0}, std::uint64_t{25}}) {
        for (int shift = 56; shift >= 0; shift -= 8) bytes += static_cast<char>((field >> shift) & 0xFF);
    }
    return readBinaryPlist(bytes).release();
}

plist_t newValueNode(const Value& value) {
    switch (value.type()) {
        case Value::Type::Int: return plist_new_uint(static_cast<std::uint64_t>(value.toInt64()));
        case Value::Type::UInt: {
            const std::uint64_t number = value.toUInt64();
            if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
                return plist_new_uint(number);
            }
            return newWideUnsignedNode(number);
        }
        case Value::Type::Double: return plist_new_real(value.toDouble());
        default: return plist_new_string(value.string()->c_str());
    }
}

plist_t newStringArray(std::initializer_list<const char*> texts) {
    plist_t array = plist_new_array();
    for (const char* text : texts) plist_array_append_item(array, plist_new_string(text));
    return array;
}

plist_t newClassDescription() {
    plist_t description = plist_new_dict();
    plist_dict_set_item(description, kClassNameKey, plist_new_string("NSMutableDictionary"));
    plist_dict_set_item(description, kClassesKey, newStringArray({"NSMutableDictionary", "NSDictionary", "NSObject"}));
    return description;
}

// "$objects": "$null", the dictionary, its keys, its values, its class.
std::optional<PlistOwner> newObjects(const std::vector<const Dictionary::Entry*>& entries) {
    PlistOwner objects(plist_new_array());
    plist_t keys = plist_new_array();
    plist_t values = plist_new_array();
    const std::uint64_t firstKey = kRootReference + 1;
    const std::uint64_t firstValue = firstKey + entries.size();
    for (std::uint64_t i = 0; i < entries.size(); ++i) {
        plist_array_append_item(keys, plist_new_uid(firstKey + i));
        plist_array_append_item(values, plist_new_uid(firstValue + i));
    }
    plist_t root = plist_new_dict();
    plist_dict_set_item(root, kKeysKey, keys);
    plist_dict_set_item(root, kValuesKey, values);
    plist_dict_set_item(root, kClassKey, plist_new_uid(firstValue + entries.size()));
    plist_array_append_item(objects.get(), plist_new_string(kNullObject));
    plist_array_append_item(objects.get(), root);
    for (const Dictionary::Entry* entry : entries) {
        plist_array_append_item(objects.get(), plist_new_string(entry->first.c_str()));
    }
    for (const Dictionary::Entry* entry : entries) {
        plist_t value = newValueNode(entry->second);
        if (value == nullptr) return std::nullopt;
        plist_array_append_item(objects.get(), value);
    }
    plist_array_append_item(objects.get(), newClassDescription());
    return objects;
}

// ---- Decoding

std::optional<std::string_view> stringValue(plist_t node) {
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    if (text == nullptr) return std::nullopt;
    return std::string_view(text, length);
}

std::optional<std::uint64_t> unsignedValue(plist_t node, plist_type type) {
    if (node == nullptr || plist_get_node_type(node) != type) return std::nullopt;
    std::uint64_t number = 0;
    if (type == PLIST_UID) {
        plist_get_uid_val(node, &number);
    } else {
        plist_get_uint_val(node, &number);
    }
    return number;
}

plist_t itemOfType(plist_t dictionary, const char* key, plist_type type) {
    plist_t item = plist_dict_get_item(dictionary, key);
    return item != nullptr && plist_get_node_type(item) == type ? item : nullptr;
}

// Whether the integer was stored in sixteen bytes, the form for unsigned numbers above the
// signed range; libplist tells only by writing it again.
bool isSixteenByteInteger(plist_t node) {
    const std::optional<std::string> written = writeBinaryPlist(node);
    return written && written->size() > 8 && static_cast<unsigned char>((*written)[8]) == 0x14;
}

Value numberValue(plist_t node) {
    std::uint64_t number = 0;
    plist_get_uint_val(node, &number);
    if (isSixteenByteInteger(node)) return Value(number);
    return Value(static_cast<std::int64_t>(number));
}

// Every node directly or indirectly inside node (node included), in no particular order.
template <typename Visit>
void forEachNode(plist_t node, Visit visit) {
    std::vector<plist_t> pending{node};
    while (!pending.empty()) {
        plist_t current = pending.back();
        pending.pop_back();
        visit(current);
        const plist_type type = plist_get_node_type(current);
        if (type == PLIST_ARRAY) {
            const std::uint32_t size = plist_array_get_size(current);
            for (std::uint32_t i = 0; i < size; ++i) pending.push_back(plist_array_get_item(current, i));
        } else if (type == PLIST_DICT) {
            plist_dict_iter iterator = nullptr;
            plist_dict_new_iter(current, &iterator);
            for (;;) {
                plist_t item = nullptr;
                plist_dict_next_item(current, iterator, nullptr, &item);
                if (item == nullptr) break;
                pending.push_back(item);
            }
            std::free(iterator);
        }
    }
}

// The archive's object table, read through references (UID nodes).
class ArchiveObjects {
public:
    explicit ArchiveObjects(plist_t objects) : objects_(objects), count_(plist_array_get_size(objects)) {}

    // The object a reference names; null when node is not a reference or names no object.
    plist_t object(plist_t reference) const {
        const std::optional<std::uint64_t> index = unsignedValue(reference, PLIST_UID);
        return index ? objectAt(*index) : nullptr;
    }

    plist_t objectAt(std::uint64_t index) const {
        return index < count_ ? plist_array_get_item(objects_, static_cast<std::uint32_t>(index)) : nullptr;
    }

    // Every reference reachable from the object at index names an object, and no object
    // refers back to itself through others.
    bool isSoundFrom(std::uint64_t index) const {
        if (index >= count_) return false;
        enum class State : unsigned char { Unvisited, Open, Done };
        std::vector<State> states(count_, State::Unvisited);
        struct Step {
            std::uint64_t index;
            std::vector<std::uint64_t> references;
            std::size_t next = 0;
        };
        std::vector<Step> path;
        states[index] = State::Open;
        path.push_back(Step{index, referencesIn(objectAt(index))});
        while (!path.empty()) {
            Step& step = path.back();
            if (step.next == step.references.size()) {
                states[step.index] = State::Done;
                path.pop_back();
                continue;
            }
            const std::uint64_t next = step.references[step.next++];
            if (next >= count_ || states[next] == State::Open) return false;
            if (states[next] == State::Done) continue;
            states[next] = State::Open;
            path.push_back(Step{next, referencesIn(objectAt(next))});
        }
        return true;
    }

    // The name in the class description the object's "$class" refers to.
    std::optional<std::string_view> className(plist_t object) const {
        if (plist_get_node_type(object) != PLIST_DICT) return std::nullopt;
        plist_t description = this->object(plist_dict_get_item(object, kClassKey));
        if (description == nullptr || plist_get_node_type(description) != PLIST_DICT) return std::nullopt;
        return stringValue(plist_dict_get_item(description, kClassNameKey));
    }

    // A plain string, or an NSString / NSMutableString object; nothing for nil or other objects.
    std::optional<std::string_view> string(plist_t reference) const {
        if (isNull(reference)) return std::nullopt;
        plist_t found = object(reference);
        if (found == nullptr) return std::nullopt;
        if (plist_get_node_type(found) == PLIST_STRING) return stringValue(found);
        const std::optional<std::string_view> name = className(found);
        if (!name || (*name != "NSString" && *name != "NSMutableString")) return std::nullopt;
        return stringValue(plist_dict_get_item(found, kStringKey));
    }

    // A string or a number; absent for nil and any other object.
    Value value(plist_t reference) const {
        if (isNull(reference)) return Value();
        plist_t found = object(reference);
        if (found == nullptr) return Value();
        switch (plist_get_node_type(found)) {
            case PLIST_UINT: return numberValue(found);
            case PLIST_REAL: {
                double number = 0;
                plist_get_real_val(found, &number);
                return Value(number);
            }
            default: {
                const std::optional<std::string_view> text = string(reference);
                return text ? Value(*text) : Value();
            }
        }
    }

    // The NSDictionary or NSMutableDictionary at index; nothing when it is something else
    // or its key and value lists are not lists of references of equal length.
    std::optional<DictionaryRef> dictionary(std::uint64_t index) const {
        plist_t found = objectAt(index);
        const std::optional<std::string_view> name = found ? className(found) : std::nullopt;
        if (!name || (*name != "NSDictionary" && *name != "NSMutableDictionary")) return std::nullopt;
        plist_t keys = itemOfType(found, kKeysKey, PLIST_ARRAY);
        plist_t values = itemOfType(found, kValuesKey, PLIST_ARRAY);
        if (keys == nullptr || values == nullptr) return std::nullopt;
        const std::uint32_t size = plist_array_get_size(keys);
        if (plist_array_get_size(values) != size) return std::nullopt;
        DictionaryRef decoded = makeDictionary();
        for (std::uint32_t i = 0; i < size; ++i) {
            plist_t key = plist_array_get_item(keys, i);
            plist_t value = plist_array_get_item(values, i);
            if (object(key) == nullptr || object(value) == nullptr) return std::nullopt;
            addEntry(*decoded, key, value);
        }
        return decoded;
    }

private:
    static bool isNull(plist_t reference) { return unsignedValue(reference, PLIST_UID) == kNullReference; }

    static std::vector<std::uint64_t> referencesIn(plist_t object) {
        std::vector<std::uint64_t> references;
        forEachNode(object, [&references](plist_t node) {
            if (const std::optional<std::uint64_t> index = unsignedValue(node, PLIST_UID)) {
                if (*index != kNullReference) references.push_back(*index);
            }
        });
        return references;
    }

    void addEntry(Dictionary& decoded, plist_t key, plist_t value) const {
        const std::optional<std::string_view> text = string(key);
        if (!text) return;
        Value decodedValue = this->value(value);
        if (!decodedValue.isAbsent()) decoded.set(*text, std::move(decodedValue));
    }

    plist_t objects_;
    std::uint64_t count_;
};

bool isKeyedArchive(plist_t top) {
    if (plist_get_node_type(top) != PLIST_DICT) return false;
    return stringValue(plist_dict_get_item(top, kArchiverKey)) == kArchiverName &&
           unsignedValue(plist_dict_get_item(top, kVersionKey), PLIST_UINT) == kArchiveVersion;
}

std::optional<DictionaryRef> decodeTop(plist_t top) {
    if (!isKeyedArchive(top)) return std::nullopt;
    plist_t topObjects = itemOfType(top, kTopKey, PLIST_DICT);
    plist_t objectTable = itemOfType(top, kObjectsKey, PLIST_ARRAY);
    if (topObjects == nullptr || objectTable == nullptr) return std::nullopt;
    const std::optional<std::uint64_t> root = unsignedValue(plist_dict_get_item(topObjects, kRootKey), PLIST_UID);
    if (!root) return std::nullopt;
    const ArchiveObjects objects(objectTable);
    if (!objects.isSoundFrom(*root)) return std::nullopt;
    return objects.dictionary(*root);
}

}  // namespace

std::optional<std::string> encodeKeyedArchive(const Dictionary& dictionary) {
    const std::optional<std::vector<const Dictionary::Entry*>> entries = keptEntries(dictionary);
    if (!entries) return std::nullopt;
    std::optional<PlistOwner> objects = newObjects(*entries);
    if (!objects) return std::nullopt;
    PlistOwner top(plist_new_dict());
    plist_dict_set_item(top.get(), kVersionKey, plist_new_uint(kArchiveVersion));
    plist_dict_set_item(top.get(), kArchiverKey, plist_new_string(std::string(kArchiverName).c_str()));
    plist_t rootReference = plist_new_dict();
    plist_dict_set_item(rootReference, kRootKey, plist_new_uid(kRootReference));
    plist_dict_set_item(top.get(), kTopKey, rootReference);
    plist_dict_set_item(top.get(), kObjectsKey, objects->release());
    return writeBinaryPlist(top.get());
}

std::optional<DictionaryRef> decodeKeyedArchive(std::string_view bytes) {
    if (bytes.size() > kMaximumKeyedArchiveBytes) return std::nullopt;
    if (!measureBinaryPlist(bytes, kDecodingLimits)) return std::nullopt;
    const PlistOwner top = readBinaryPlist(bytes);
    if (!top) return std::nullopt;
    return decodeTop(top.get());
}

}  // namespace tov
