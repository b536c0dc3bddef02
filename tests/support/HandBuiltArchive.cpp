#include "support/HandBuiltArchive.h"

#include <cstdlib>

namespace tov::testing {

plist_t newUid(std::uint64_t index) { return plist_new_uid(index); }

plist_t newUidArray(std::initializer_list<std::uint64_t> indexes) {
    plist_t array = plist_new_array();
    for (const std::uint64_t index : indexes) plist_array_append_item(array, newUid(index));
    return array;
}

plist_t newDictionaryObject(std::initializer_list<std::uint64_t> keys, std::initializer_list<std::uint64_t> values,
                            std::uint64_t classIndex) {
    plist_t object = plist_new_dict();
    plist_dict_set_item(object, "NS.keys", newUidArray(keys));
    plist_dict_set_item(object, "NS.objects", newUidArray(values));
    plist_dict_set_item(object, "$class", newUid(classIndex));
    return object;
}

plist_t newStringObject(const std::string& text, std::uint64_t classIndex) {
    plist_t object = plist_new_dict();
    plist_dict_set_item(object, "NS.string", plist_new_string(text.c_str()));
    plist_dict_set_item(object, "$class", newUid(classIndex));
    return object;
}

plist_t newClassDescription(const std::string& name, std::initializer_list<const char*> parents) {
    plist_t classes = plist_new_array();
    plist_array_append_item(classes, plist_new_string(name.c_str()));
    for (const char* parent : parents) plist_array_append_item(classes, plist_new_string(parent));
    plist_t description = plist_new_dict();
    plist_dict_set_item(description, "$classname", plist_new_string(name.c_str()));
    plist_dict_set_item(description, "$classes", classes);
    return description;
}

std::string binaryPlist(plist_t node) {
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(node, &bytes, &length);
    std::string written(bytes, length);
    plist_to_bin_free(bytes);
    return written;
}

std::string xmlPlist(plist_t node) {
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node, &text, &length);
    std::string written(text, length);
    plist_to_xml_free(text);
    return written;
}

HandBuiltArchive::HandBuiltArchive() : objects_(plist_new_array()) {
    plist_array_append_item(objects_, plist_new_string("$null"));
}

HandBuiltArchive::~HandBuiltArchive() { plist_free(objects_); }

std::uint64_t HandBuiltArchive::add(plist_t object) {
    plist_array_append_item(objects_, object);
    return plist_array_get_size(objects_) - 1;
}

plist_t HandBuiltArchive::newArchive(std::uint64_t root) const {
    plist_t top = plist_new_dict();
    plist_dict_set_item(top, "root", newUid(root));
    plist_t archive = plist_new_dict();
    plist_dict_set_item(archive, "$version", plist_new_uint(100000));
    plist_dict_set_item(archive, "$archiver", plist_new_string("NSKeyedArchiver"));
    plist_dict_set_item(archive, "$top", top);
    plist_dict_set_item(archive, "$objects", plist_copy(objects_));
    return archive;
}

std::string HandBuiltArchive::binary(std::uint64_t root) const {
    plist_t archive = newArchive(root);
    std::string bytes = binaryPlist(archive);
    plist_free(archive);
    return bytes;
}

std::string macStyleSettingsArchive() {
    HandBuiltArchive archive;
    archive.add(newDictionaryObject({2, 3, 4}, {5, 7, 8}, 9));
    archive.add(plist_new_string("previous-report-hash"));
    archive.add(plist_new_string("localIp"));
    archive.add(plist_new_string("previous-full-scan-datetime"));
    archive.add(newStringObject("92eb5ffee6ae2fec3ad71c777531578f", 6));
    archive.add(newClassDescription("NSMutableString", {"NSString", "NSObject"}));
    archive.add(plist_new_string("10.0.0.5"));
    archive.add(plist_new_uint(1700000000));
    archive.add(newClassDescription("NSDictionary", {"NSObject"}));
    return archive.binary();
}

std::string bigEndianBytes(std::uint64_t value, unsigned width) {
    std::string bytes;
    for (unsigned i = width; i > 0; --i) bytes += static_cast<char>((value >> (8 * (i - 1))) & 0xFF);
    return bytes;
}

std::string RawBinaryPlist::bytes() const {
    std::string written = "bplist00";
    std::string offsets;
    for (const std::string& object : objects) {
        offsets += bigEndianBytes(written.size(), offsetWidth);
        written += object;
    }
    const std::uint64_t tableOffset = written.size();
    written += offsets;
    written.append(6, '\0');
    written += static_cast<char>(offsetWidth);
    written += static_cast<char>(referenceWidth);
    written += bigEndianBytes(objects.size(), 8);
    written += bigEndianBytes(top, 8);
    written += bigEndianBytes(tableOffset, 8);
    return written;
}

std::string RawBinaryPlist::container(unsigned kind, const std::vector<std::uint64_t>& references) const {
    const std::uint64_t count = kind == 0xD ? references.size() / 2 : references.size();
    std::string object;
    if (count < 15) {
        object += static_cast<char>((kind << 4) | count);
    } else {
        object += static_cast<char>((kind << 4) | 0xF);
        object += '\x13';
        object += bigEndianBytes(count, 8);
    }
    for (const std::uint64_t reference : references) object += bigEndianBytes(reference, referenceWidth);
    return object;
}

}  // namespace tov::testing
