#pragma once

// Brings the stored report up to date with the changes of a change scan that was handed
// over: added records are appended or their keys added, changed records replace their
// stored counterparts' keys, removed records leave the stored report.

#include "model/Value.h"

namespace tov {

class QVReportMerger {
public:
    // The three difference trees may each be null; fullReport is changed in place.
    static void mergeAdded(const DictionaryRef& added, const DictionaryRef& modified, const DictionaryRef& removed,
                           Dictionary& fullReport);

private:
    enum class Pass { Added, Changed, Removed };
    static void mergeTree(const Dictionary& tree, Dictionary& fullReport, Pass pass);
};

}  // namespace tov
