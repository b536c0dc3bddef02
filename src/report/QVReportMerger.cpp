#include "report/QVReportMerger.h"

#include <algorithm>
#include <vector>

#include "common/QVSLogger.h"
#include "model/QVSystemInfo.h"

namespace tov {
namespace {

// Identifiers match when both records have one and the texts are equal.
bool sameIdentifier(const QVSystemInfo& first, const QVSystemInfo& second) {
    const std::optional<std::string> firstIdentifier = first.identifier();
    return firstIdentifier && firstIdentifier == second.identifier();
}

// The first record of stored whose identifier is the record's; elements that are not
// records are reported with the warning given.
RecordRef findCounterpart(const Array& stored, const QVSystemInfo& record, const char* notARecordWarning) {
    for (const Value& element : stored) {
        const RecordRef candidate = element.record();
        if (!candidate) {
            QVSLogger::warning("%s", notARecordWarning);
            continue;
        }
        if (sameIdentifier(*candidate, record)) return candidate;
    }
    return nullptr;
}

void addKeys(const QVSystemInfo& from, Dictionary& into) {
    for (const auto& [key, value] : *from.innerDictionary()) into.set(key, value);
}

void removeKeys(const QVSystemInfo& of, Dictionary& from) {
    for (const auto& entry : *of.innerDictionary()) from.remove(entry.first);
}

// A record directly under a key: its keys are added to the stored record, or to a copy of
// a stored plain dictionary.
void addRecordKeys(const std::string& key, const QVSystemInfo& record, Dictionary& fullReport) {
    const Value stored = fullReport.get(key);
    if (const RecordRef storedRecord = stored.record()) {
        addKeys(record, *storedRecord->innerDictionary());
    } else if (const DictionaryRef storedDictionary = stored.dictionary()) {
        DictionaryRef copy = storedDictionary->shallowCopy();
        addKeys(record, *copy);
        fullReport.set(key, Value(copy));
    }
}

void removeRecordKeys(const std::string& key, const QVSystemInfo& record, Dictionary& fullReport) {
    const Value stored = fullReport.get(key);
    if (const RecordRef storedRecord = stored.record()) {
        removeKeys(record, *storedRecord->innerDictionary());
    } else if (const DictionaryRef storedDictionary = stored.dictionary()) {
        DictionaryRef copy = storedDictionary->shallowCopy();
        removeKeys(record, *copy);
        fullReport.set(key, Value(copy));
    }
}

void appendRecords(const Array& added, Array& stored) {
    for (const Value& element : added) {
        if (element.isRecord()) stored.push_back(element);
    }
}

// Each changed record replaces every key of its stored counterpart.
void replaceChangedRecords(const Array& changed, Array& stored) {
    for (const Value& element : changed) {
        const RecordRef record = element.record();
        if (!record) {
            QVSLogger::warning("item is not QVSystemInfo object!2");
            continue;
        }
        const RecordRef counterpart = findCounterpart(stored, *record, "olditem is not QVSystemInfo object!1");
        if (!counterpart) continue;
        const Dictionary replacement = *record->innerDictionary();
        Dictionary& keys = *counterpart->innerDictionary();
        keys.clear();
        for (const auto& [key, value] : replacement) keys.set(key, value);
    }
}

void removeRecords(const Array& removed, Array& stored) {
    std::vector<RecordRef> counterparts;
    for (const Value& element : removed) {
        const RecordRef record = element.record();
        if (!record) {
            QVSLogger::warning("item is not QVSystemInfo object!4");
            continue;
        }
        if (RecordRef counterpart = findCounterpart(stored, *record, "olditem is not QVSystemInfo object!3")) {
            counterparts.push_back(std::move(counterpart));
        }
    }
    const auto isRemoved = [&counterparts](const Value& element) {
        const RecordRef record = element.record();
        return record && std::any_of(counterparts.begin(), counterparts.end(),
                                     [&record](const RecordRef& counterpart) { return record->isEqual(*counterpart); });
    };
    stored.erase(std::remove_if(stored.begin(), stored.end(), isRemoved), stored.end());
}

}  // namespace

void QVReportMerger::mergeAdded(const DictionaryRef& added, const DictionaryRef& modified, const DictionaryRef& removed,
                                Dictionary& fullReport) {
    if (added && !added->empty()) mergeTree(*added, fullReport, Pass::Added);
    if (modified && !modified->empty()) mergeTree(*modified, fullReport, Pass::Changed);
    if (removed && !removed->empty()) mergeTree(*removed, fullReport, Pass::Removed);
}

// Walks one difference tree alongside the stored report; a value whose stored counterpart
// has another shape, or none, is skipped.
void QVReportMerger::mergeTree(const Dictionary& tree, Dictionary& fullReport, Pass pass) {
    for (const auto& [key, value] : tree) {
        const Value stored = fullReport.get(key);
        if (const DictionaryRef section = value.dictionary()) {
            if (const DictionaryRef storedSection = stored.dictionary()) mergeTree(*section, *storedSection, pass);
        } else if (const ArrayRef records = value.array()) {
            const ArrayRef storedRecords = stored.array();
            if (!storedRecords) continue;
            if (pass == Pass::Added) appendRecords(*records, *storedRecords);
            if (pass == Pass::Changed) replaceChangedRecords(*records, *storedRecords);
            if (pass == Pass::Removed) removeRecords(*records, *storedRecords);
        } else if (const RecordRef record = value.record()) {
            if (pass == Pass::Removed) {
                removeRecordKeys(key, *record, fullReport);
            } else {
                addRecordKeys(key, *record, fullReport);
            }
        }
    }
}

}  // namespace tov
