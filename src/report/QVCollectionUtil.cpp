#include "report/QVCollectionUtil.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <typeinfo>

#include "common/ObjectLock.h"

namespace tov {
namespace {

// Records are matched by identifier, compared exactly. An absent identifier (a kind named
// by a key that was never set) matches nothing, not even another absent one, as an absent
// string equals nothing in the record equalities; such a record is therefore always
// reported as removed from the old tree and added to the new one, never as changed.
bool identifiersMatch(const std::optional<std::string>& identifier, const QVSystemInfo& other) {
    if (!identifier) return false;
    const std::optional<std::string> otherIdentifier = other.identifier();
    return otherIdentifier && *otherIdentifier == *identifier;
}

// The first record of the array with the identifier, in the array's order; other elements
// are skipped. A linear search: arrays hold a handful of devices.
RecordRef firstRecordWithIdentifier(const Array& array, const std::optional<std::string>& identifier) {
    for (const Value& element : array) {
        RecordRef record = element.record();
        if (record && identifiersMatch(identifier, *record)) return record;
    }
    return nullptr;
}

void markRecords(const Array& array, std::int32_t scanResult) {
    for (const Value& element : array) {
        if (RecordRef record = element.record()) record->setScanResult(scanResult);
    }
}

void markRecords(const Dictionary& dictionary, std::int32_t scanResult) {
    for (const auto& entry : dictionary) {
        if (RecordRef record = entry.second.record()) record->setScanResult(scanResult);
    }
}

// The stored value under key, or nullptr when the key is missing or holds nothing.
const Value* presentValue(const Dictionary& dictionary, const std::string& key) {
    const Value* value = dictionary.find(key);
    return value && !value->isAbsent() ? value : nullptr;
}

bool plainValuesOfSameType(const Value& object, const Value& other) {
    if (object.isString() || object.isBool()) return object.type() == other.type();
    return object.isNumber() && other.isNumber() && !other.isBool();
}

bool recordsOfSameKind(const QVSystemInfo& object, const QVSystemInfo& other) {
    return object.isKindOf(typeid(other)) || other.isKindOf(typeid(object));
}

// First pass over the old array: removed records, and changed ones (the new record is
// reported). Each old record is compared with the first new record of its identifier, so
// two old records of one identifier that both differ from it report it twice.
void reportRemovedAndChanged(Array& result, const Array& oldArray, const Array& newArray) {
    for (const Value& element : oldArray) {
        const RecordRef oldRecord = element.record();
        if (!oldRecord) continue;
        const RecordRef newRecord = firstRecordWithIdentifier(newArray, oldRecord->identifier());
        if (!newRecord) {
            oldRecord->setScanResult(QVScanResultRemoved);
            result.push_back(element);
        } else if (!oldRecord->isEqual(*newRecord)) {
            oldRecord->setScanResult(QVScanResultChanged);
            newRecord->setScanResult(QVScanResultChanged);
            result.push_back(Value(newRecord));
        }
    }
}

// Second pass over the new array: a record left unmarked is added only when no old record
// has its identifier; otherwise it was equal to its counterpart, or it repeats an
// identifier already matched.
void reportAdded(Array& result, const Array& oldArray, const Array& newArray) {
    for (const Value& element : newArray) {
        const RecordRef newRecord = element.record();
        if (!newRecord || newRecord->scanResult() != QVScanResultNone) continue;
        if (firstRecordWithIdentifier(oldArray, newRecord->identifier())) continue;
        newRecord->setScanResult(QVScanResultAdded);
        result.push_back(element);
    }
}

// A value present in the old tree only. Only a record is reported; a container or plain
// value that vanishes is nothing to report (sections and arrays are present in both trees
// of real inventories).
void reportVanished(Dictionary& result, const std::string& key, const Value& oldValue) {
    const RecordRef oldRecord = oldValue.record();
    if (!oldRecord) return;
    oldRecord->setScanResult(QVScanResultRemoved);
    result.set(key, oldValue);
}

// A key present in both trees. Containers of one type are compared recursively and their
// difference stored when not empty; records are compared by their kind's equality; plain
// values (such as the "collection" time) are never reported.
void reportDifferenceUnderKey(Dictionary& result, const std::string& key, const Value& oldValue,
                              const Value& newValue) {
    if (!QVCollectionUtil::isObject(oldValue, newValue)) return;
    if (const ArrayRef newArray = newValue.array()) {
        const ArrayRef difference = makeArray();
        QVCollectionUtil::populateDifferencesIn(*difference, *oldValue.array(), *newArray);
        if (!difference->empty()) result.set(key, Value(difference));
    } else if (const DictionaryRef newDictionary = newValue.dictionary()) {
        const DictionaryRef difference = makeDictionary();
        QVCollectionUtil::populateDifferencesIn(*difference, *oldValue.dictionary(), *newDictionary);
        if (!difference->empty()) result.set(key, Value(difference));
    } else if (const RecordRef newRecord = newValue.record()) {
        const RecordRef oldRecord = oldValue.record();
        if (oldRecord->isEqual(*newRecord)) return;
        oldRecord->setScanResult(QVScanResultChanged);
        newRecord->setScanResult(QVScanResultChanged);
        result.set(key, newValue);
    }
}

}  // namespace

// The pass over the new dictionary would compare the containers of the keys present in both
// trees a second time and store the same difference again in the same place (a comparison
// first resets the marks it reads, so it gives the same result each time as long as a
// record sits in one place of the tree). They are compared once, in the first pass; the
// second pass only reports the records under keys the old tree lacks.
void QVCollectionUtil::populateDifferencesIn(Dictionary& result, const Dictionary& oldDictionary,
                                             const Dictionary& newDictionary) {
    markRecords(oldDictionary, QVScanResultNone);
    markRecords(newDictionary, QVScanResultNone);
    for (const auto& [key, oldValue] : oldDictionary) {
        if (oldValue.isAbsent()) continue;
        if (const Value* newValue = presentValue(newDictionary, key)) {
            reportDifferenceUnderKey(result, key, oldValue, *newValue);
        } else {
            reportVanished(result, key, oldValue);
        }
    }
    for (const auto& [key, newValue] : newDictionary) {
        if (presentValue(oldDictionary, key)) continue;
        // A whole array or section new to the tree is not reported, nor a plain value.
        if (const RecordRef newRecord = newValue.record()) {
            newRecord->setScanResult(QVScanResultAdded);
            result.set(key, newValue);
        }
    }
}

void QVCollectionUtil::populateDifferencesIn(Array& result, const Array& oldArray, const Array& newArray) {
    markRecords(oldArray, QVScanResultNone);
    markRecords(newArray, QVScanResultNone);
    reportRemovedAndChanged(result, oldArray, newArray);
    reportAdded(result, oldArray, newArray);
}

void QVCollectionUtil::cullSystemInfosFromDictionary(Dictionary& dictionary, std::int32_t scanResult) {
    std::vector<std::string> doomedKeys;
    for (const auto& [key, value] : dictionary) {
        if (const DictionaryRef section = value.dictionary()) {
            cullSystemInfosFromDictionary(*section, scanResult);
        } else if (const ArrayRef array = value.array()) {
            cullSystemInfosFromArray(*array, scanResult);
        } else if (const RecordRef record = value.record(); record && record->scanResult() != scanResult) {
            doomedKeys.push_back(key);
        }
    }
    for (const std::string& key : doomedKeys) dictionary.remove(key);
    pruneDictionaryElementsWithoutSystemInfoInstances(dictionary);
}

void QVCollectionUtil::cullSystemInfosFromArray(Array& array, std::int32_t scanResult) {
    std::erase_if(array, [scanResult](const Value& element) {
        const RecordRef record = element.record();
        return record && record->scanResult() != scanResult;
    });
}

bool QVCollectionUtil::pruneDictionaryElementsWithoutSystemInfoInstances(Dictionary& dictionary) {
    std::vector<std::string> doomedKeys;
    for (const auto& [key, value] : dictionary) {
        bool keep = false;
        if (value.record()) {
            keep = true;
        } else if (const DictionaryRef section = value.dictionary()) {
            keep = pruneDictionaryElementsWithoutSystemInfoInstances(*section);
        } else if (const ArrayRef array = value.array()) {
            keep = pruneArrayElementsWithoutSystemInfoInstances(*array);
        }
        if (!keep) doomedKeys.push_back(key);
    }
    for (const std::string& key : doomedKeys) dictionary.remove(key);
    return !dictionary.empty();
}

bool QVCollectionUtil::pruneArrayElementsWithoutSystemInfoInstances(Array& array) {
    std::erase_if(array, [](const Value& element) { return !element.record() && !element.isString(); });
    return !array.empty();
}

void QVCollectionUtil::resetScanResultOfDictionary(const Dictionary& dictionary) {
    const ObjectLock lock(&dictionary);
    markRecords(dictionary, QVScanResultNone);
}

void QVCollectionUtil::resetScanResultOfArray(const Array& array) {
    const ObjectLock lock(&array);
    markRecords(array, QVScanResultNone);
}

// The walk of the inner dictionary goes over its keys, which are text, so nothing beneath
// the record is reset; the lock is still taken, as for the other forms, so the reset never
// overlaps another walk of that dictionary under the lock.
void QVCollectionUtil::resetScanResultOfSystemInfo(QVSystemInfo& record) {
    const ObjectLock lock(record.innerDictionary().get());
    record.setScanResult(QVScanResultNone);
}

bool QVCollectionUtil::isObject(const Value& object, const Value& ofSameTypeAs) {
    if (object.array()) return ofSameTypeAs.array() != nullptr;
    if (object.dictionary()) return ofSameTypeAs.dictionary() != nullptr;
    if (const RecordRef record = object.record()) {
        const RecordRef other = ofSameTypeAs.record();
        return other && recordsOfSameKind(*record, *other);
    }
    return plainValuesOfSameType(object, ofSameTypeAs);
}

std::vector<std::string> QVCollectionUtil::arrayWithEmptyComponentsRemovedInArray(
    const std::vector<std::string>& components) {
    std::vector<std::string> kept;
    std::copy_if(components.begin(), components.end(), std::back_inserter(kept),
                 [](const std::string& component) { return !component.empty(); });
    return kept;
}

}  // namespace tov
