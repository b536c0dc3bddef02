#pragma once

// Records of every kind with each property set, and small helpers for tests of the kinds.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/Json.h"
#include "model/QVSystemInfo.h"

namespace tov::testing {

// One filled record per kind, in a fixed order, each with scan result 2 and each equal to
// itself under its kind's equality.
std::vector<RecordRef> filledRecordsOfEveryKind();

// The record's JSON form, compact.
std::string compactJson(const QVSystemInfo& record);

// A record of the kind whose dictionary is the parsed JSON object, as a report read back
// gives it (non-negative integers come back unsigned).
template <class Kind>
std::shared_ptr<Kind> recordFromJson(std::string_view json) {
    auto record = std::make_shared<Kind>();
    const std::optional<Value> parsed = parseJson(json);
    if (parsed && parsed->dictionary()) record->setInnerDict(parsed->dictionary());
    return record;
}

}  // namespace tov::testing
