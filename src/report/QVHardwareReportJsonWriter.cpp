#include "report/QVHardwareReportJsonWriter.h"

#include <exception>

#include "model/Json.h"
#include "model/QVSystemInfo.h"

namespace tov {
namespace {

bool nestsDeeperThan(const Value& value, int levels);

bool arrayNestsDeeperThan(const ArrayRef& array, int levels) {
    if (!array) return false;
    for (const Value& value : *array) {
        if (nestsDeeperThan(value, levels)) return true;
    }
    return false;
}

bool dictionaryNestsDeeperThan(const DictionaryRef& dictionary, int levels) {
    if (!dictionary) return false;
    for (const auto& entry : *dictionary) {
        if (nestsDeeperThan(entry.second, levels)) return true;
    }
    return false;
}

// True when value holds containers more than `levels` deep (a record counts as the
// object it is written as). The walk stops one level past the limit, so a container
// that holds itself ends it too.
bool nestsDeeperThan(const Value& value, int levels) {
    switch (value.type()) {
    case Value::Type::Array:
        if (levels == 0) return true;
        return arrayNestsDeeperThan(value.array(), levels - 1);
    case Value::Type::Dictionary:
        if (levels == 0) return true;
        return dictionaryNestsDeeperThan(value.dictionary(), levels - 1);
    case Value::Type::Record:
        if (levels == 0) return true;
        return value.record() && dictionaryNestsDeeperThan(value.record()->proxyForJson(), levels - 1);
    default:
        return false;
    }
}

// The argument with each record-table replaced by its dictionary of inner dictionaries;
// the text is the same either way, the tables merely spare the writer the records.
DictionaryRef documentDictionary(const Dictionary& tree) {
    auto document = makeDictionary();
    for (const auto& [key, value] : tree) {
        if (QVHardwareReportJsonWriter::isStrictlySystemInfoDictionary(value)) {
            document->set(key, Value(QVHardwareReportJsonWriter::jsonDictionaryForSystemInfoDictionary(value.dictionary())));
        } else {
            document->set(key, value);
        }
    }
    return document;
}

std::optional<std::string> documentText(const DictionaryRef& tree) {
    if (!tree) return std::nullopt;
    try {
        const Value document(documentDictionary(*tree));
        if (nestsDeeperThan(document, kMaximumJsonDepth)) return std::nullopt;
        return writeJson(document, JsonStyle::Indented);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

bool isArrayOfRecords(const Value& value) {
    const ArrayRef array = value.array();
    if (!array) return false;
    for (const Value& element : *array) {
        if (!element.record()) return false;
    }
    return true;
}

// The array with each record replaced by its own inner dictionary.
ArrayRef innerDictionariesOf(const Array& array) {
    auto converted = makeArray();
    converted->reserve(array.size());
    for (const Value& element : array) {
        const RecordRef record = element.record();
        converted->push_back(record ? Value(record->innerDictionary()) : element);
    }
    return converted;
}

}  // namespace

std::optional<std::string> QVHardwareReportJsonWriter::jsonContentOfHardware(const DictionaryRef& hardware) {
    return documentText(hardware);
}

std::optional<std::string> QVHardwareReportJsonWriter::jsonContentOfDeltaHardware(const DictionaryRef& delta) {
    return documentText(delta);
}

bool QVHardwareReportJsonWriter::isStrictlySystemInfoDictionary(const Value& object) {
    const DictionaryRef dictionary = object.dictionary();
    if (!dictionary || dictionary->empty()) return false;
    for (const auto& entry : *dictionary) {
        if (!isArrayOfRecords(entry.second)) return false;
    }
    return true;
}

DictionaryRef QVHardwareReportJsonWriter::jsonDictionaryForSystemInfoDictionary(const DictionaryRef& table) {
    if (!table) return nullptr;
    auto converted = makeDictionary();
    for (const auto& [key, value] : *table) {
        const ArrayRef array = value.array();
        converted->set(key, array ? Value(innerDictionariesOf(*array)) : value);
    }
    return converted;
}

}  // namespace tov
