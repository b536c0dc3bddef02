#pragma once

// Reads a few keys of a JSON document's top-level object in one streaming pass: the whole
// document is checked to be JSON, but only the values of the wanted keys are kept and
// everything else is skipped without being built, so a large or hostile document costs
// about one chunk of input and its longest single token in memory, and time linear in its
// size. Containers nested deeper than kMaximumJsonDepth make the document unreadable, as
// for every JSON document the daemon reads.

#include <istream>
#include <string>
#include <vector>

#include "model/Value.h"

namespace tov {

enum class JsonRootKind { Object, Array, Scalar };

struct TopLevelJsonKeys {
    bool parsed = false;          // the input is one whole JSON document
    std::string error;            // why not, when it is not
    JsonRootKind root = JsonRootKind::Scalar;
    // The wanted keys found in the top-level object, in document order, a repeated key
    // with its last value; an array or object value is given as an empty one of its kind.
    Dictionary values;
};

TopLevelJsonKeys readTopLevelJsonKeys(std::istream& input, const std::vector<std::string>& wantedKeys);

}  // namespace tov
