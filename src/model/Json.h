#pragma once

// JSON text in and out of the value tree. Records are written as the JSON object of
// their dictionary; absent values as null.

#include <optional>
#include <string>
#include <string_view>

#include "model/Value.h"

namespace tov {

enum class JsonStyle {
    Indented,  // one member per line, for report documents
    Compact,   // no white space, for the header line
};

// Containers nested deeper than this make a document unreadable.
constexpr int kMaximumJsonDepth = 32;

std::string writeJson(const Value& value, JsonStyle style);

// One root value; on failure nothing, with the reason in error when given.
std::optional<Value> parseJson(std::string_view text, std::string* error = nullptr);

}  // namespace tov
