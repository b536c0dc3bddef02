#pragma once

// Compares two inventory trees (dictionaries and arrays whose leaves are records) into a
// difference tree of the same nesting that holds only the records added, changed or
// removed, each marked with its scan result; and cuts a difference tree down to the records
// of one mark, which is how the members of a delta report are made.
//
// The difference operations do not copy records: the result holds the very records of the
// inputs, and the marks are changed on them in place (on the old and on the new side).

#include <cstdint>
#include <string>
#include <vector>

#include "model/QVSystemInfo.h"
#include "model/Value.h"

namespace tov {

// The scan-result marks a comparison leaves on records.
enum QVScanResult : std::int32_t {
    QVScanResultNone = 0,     // unchanged, or not yet compared
    QVScanResultAdded = 1,    // in the new tree only; the new record is reported
    QVScanResultChanged = 2,  // in both and not equal; both carry the mark, the new one is reported
    QVScanResultRemoved = 3,  // in the old tree only; the old record is reported
};

class QVCollectionUtil {
public:
    // Fills result with the difference of the two dictionaries: records directly under a
    // key are matched by the key, arrays and sections under a key in both trees are
    // compared recursively and stored when their difference is not empty. Plain values,
    // containers that exist on one side only and values of different types report nothing.
    static void populateDifferencesIn(Dictionary& result, const Dictionary& oldDictionary,
                                      const Dictionary& newDictionary);
    // Appends to result the removed and changed records in the old array's order, then the
    // added records in the new array's order. Records are matched by identifier.
    static void populateDifferencesIn(Array& result, const Array& oldArray, const Array& newArray);

    // Removes, at every depth, each record whose mark is not scanResult, then prunes.
    static void cullSystemInfosFromDictionary(Dictionary& dictionary, std::int32_t scanResult);
    // Removes the records whose mark is not scanResult; other elements stay.
    static void cullSystemInfosFromArray(Array& array, std::int32_t scanResult);

    // Removes every entry that leads to no record; answers whether anything is left.
    static bool pruneDictionaryElementsWithoutSystemInfoInstances(Dictionary& dictionary);
    // Removes the elements that are neither records nor text; answers whether anything is left.
    static bool pruneArrayElementsWithoutSystemInfoInstances(Array& array);

    // Set the mark of the records directly inside to 0, holding the container's object
    // lock (common/ObjectLock.h) meanwhile; the record form holds its inner dictionary's.
    static void resetScanResultOfDictionary(const Dictionary& dictionary);
    static void resetScanResultOfArray(const Array& array);
    static void resetScanResultOfSystemInfo(QVSystemInfo& record);

    // Both arrays, both dictionaries, or one an instance of the other's kind (or of a kind
    // derived from it). Plain values are of the same type when both are text, both are
    // booleans, or both are other numbers; an absent value or a null reference is of no type.
    static bool isObject(const Value& object, const Value& ofSameTypeAs);

    // The texts that are not empty, in their order.
    static std::vector<std::string> arrayWithEmptyComponentsRemovedInArray(
        const std::vector<std::string>& components);
};

}  // namespace tov
