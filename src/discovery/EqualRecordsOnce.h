#pragma once

// The ordered set of the discoverers: records in the order given, each record that is
// equal (by its kind's isEqual) to an earlier one left out, so the first one is kept.

#include <memory>
#include <vector>

#include "model/QVSystemInfo.h"
#include "model/Value.h"

namespace tov {

template <class Record>
ArrayRef equalRecordsOnce(const std::vector<std::shared_ptr<Record>>& records) {
    std::vector<std::shared_ptr<Record>> kept;
    for (const std::shared_ptr<Record>& record : records) {
        bool seen = false;
        for (const std::shared_ptr<Record>& earlier : kept) seen = seen || earlier->isEqual(*record);
        if (!seen) kept.push_back(record);
    }
    ArrayRef array = makeArray();
    for (std::shared_ptr<Record>& record : kept) array->push_back(Value(std::move(record)));
    return array;
}

}  // namespace tov
