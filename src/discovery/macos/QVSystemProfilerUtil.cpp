#include "discovery/macos/QVSystemProfilerUtil.h"

#include <exception>
#include <optional>

#include "common/PropertyList.h"
#include "common/QVSLogger.h"

namespace tov {
namespace {

ArrayRef parsedArray(const std::optional<std::string>& output) {
    if (!output) return nullptr;
    const std::optional<Value> tree = parsePropertyList(*output);
    return tree ? tree->array() : nullptr;
}

}  // namespace

DictionaryRef QVSystemProfilerUtil::copyProfileForDataType(SystemSource& source, const std::string& dataType) {
    try {
        const ArrayRef reports =
            parsedArray(source.runTool({kSystemProfilerPath, "-xml", dataType, "-detailLevel", "mini"}));
        if (!reports || reports->empty()) return nullptr;
        return reports->front().dictionary();
    } catch (const std::exception& exception) {
        QVSLogger::debug("copyProfileForDataType. ex = [%s]", exception.what());
        return nullptr;
    }
}

ArrayRef QVSystemProfilerUtil::fullProfileListForDataType(SystemSource& source, const std::string& dataType) {
    return parsedArray(source.runTool({kSystemProfilerPath, "-xml", dataType}));
}

}  // namespace tov
