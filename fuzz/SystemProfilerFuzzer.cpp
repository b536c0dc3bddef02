// Hands arbitrary bytes to the profiler's device readers as the output of every system
// profiler run: displays and hardware (mini detail level), cameras and memory. Whatever the
// bytes, each category must be an array of records of its own kind, each record bounded
// by the entries that could have made it, with no two of them equal, and the same bytes
// must always give the same records.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/PropertyList.h"
#include "common/QVSLogger.h"
#include "discovery/SystemSource.h"
#include "discovery/macos/QVSystemProfilerUtil.h"
#include "discovery/macos/SystemProfilerDevices.h"
#include "model/QVIOKitCamera.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitMemory.h"

namespace {

using tov::ArrayRef;
using tov::DictionaryRef;
using tov::Value;

// A Mac whose system profiler prints the same bytes for every report and has nothing else.
class ProfilerOutputSource : public tov::SystemSource {
public:
    explicit ProfilerOutputSource(std::string_view output) : output_(output) {}

    std::string platform() const override { return kMacOSPlatform; }
    std::optional<std::string> runTool(const std::vector<std::string>& argv) override {
        runs.push_back(argv);
        if (argv.empty() || argv[0] != tov::QVSystemProfilerUtil::kSystemProfilerPath) return std::nullopt;
        return output_;
    }
    std::optional<std::string> readFile(const std::string&, std::uint64_t) override { return std::nullopt; }
    std::optional<std::vector<std::string>> listFolder(const std::string&) override { return std::nullopt; }
    std::optional<std::string> readLink(const std::string&) override { return std::nullopt; }
    tov::PathKind pathKind(const std::string&) override { return tov::PathKind::None; }
    Value fact(const std::string&, const std::string&) override { return Value(); }

    std::vector<std::vector<std::string>> runs;

private:
    std::string output_;
};

void require(bool condition) {
    if (!condition) std::abort();
}

std::size_t sizeOf(const ArrayRef& array) { return array ? array->size() : 0; }

ArrayRef arrayUnder(const DictionaryRef& dictionary, std::string_view key) {
    return dictionary ? dictionary->get(key).array() : nullptr;
}

DictionaryRef firstDictionary(const ArrayRef& array) {
    return array && !array->empty() ? array->front().dictionary() : nullptr;
}

// No record of the category is equal to another one.
template <class Record>
void requireOnceEach(const std::vector<std::shared_ptr<Record>>& records) {
    for (std::size_t left = 0; left < records.size(); ++left) {
        for (std::size_t right = left + 1; right < records.size(); ++right) {
            require(!records[left]->isEqual(*records[right]));
        }
    }
}

// Every element is a record of the kind; answers them.
template <class Record>
std::vector<std::shared_ptr<Record>> recordsOfKind(const ArrayRef& array) {
    require(array != nullptr);
    std::vector<std::shared_ptr<Record>> records;
    for (const Value& element : *array) {
        const auto record = std::dynamic_pointer_cast<Record>(element.record());
        require(record != nullptr);
        records.push_back(record);
    }
    requireOnceEach(records);
    return records;
}

// At most one record per adapter entry and per attached display entry.
std::size_t displayEntries(const DictionaryRef& profile) {
    const ArrayRef items = arrayUnder(profile, "_items");
    if (!items) return 0;
    std::size_t entries = items->size();
    for (const Value& item : *items) entries += sizeOf(arrayUnder(item.dictionary(), "spdisplays_ndrvs"));
    return entries;
}

void checkDisplays(const ArrayRef& displays, const DictionaryRef& profile) {
    const auto records = recordsOfKind<tov::QVIOKitDisplay>(displays);
    require(records.size() <= displayEntries(profile));
    for (const auto& display : records) {
        require(display->getDescription().has_value() && display->manufacturer().has_value());
        require(display->depth() == 0 || display->depth() == 24);
        // Apple's displays are at 60 Hz; an adapter has no mode at all.
        if (display->manufacturer() == "Apple") require(display->frequency() == 0 || display->frequency() == 60);
    }
}

void checkCameras(const ArrayRef& cameras, const DictionaryRef& report) {
    const auto records = recordsOfKind<tov::QVIOKitCamera>(cameras);
    require(records.size() <= sizeOf(arrayUnder(report, "_items")));
    for (const auto& camera : records) {
        require(camera->name().has_value() && camera->model().has_value() && camera->uuid().has_value());
    }
}

void checkMemory(const ArrayRef& modules, const DictionaryRef& report) {
    const auto records = recordsOfKind<tov::QVIOKitMemory>(modules);
    require(records.size() <= sizeOf(arrayUnder(firstDictionary(arrayUnder(report, "_items")), "_items")));
    for (const auto& module : records) {
        for (const std::optional<std::string>& text :
             {module->name(), module->type(), module->size(), module->serialNumber(), module->status(),
              module->manufacturer(), module->partNumber(), module->speed()}) {
            require(text.has_value());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tov::QVSLogger::setMinimumLogLevel("CRITICAL");
    const std::string_view output(reinterpret_cast<const char*>(data), size);
    ProfilerOutputSource source(output);

    const ArrayRef displays = tov::displaysFromSystemProfiler(source);
    const ArrayRef cameras = tov::camerasFromSystemProfiler(source);
    const ArrayRef modules = tov::memoryModulesFromSystemProfiler(source);
    const DictionaryRef hardware = tov::QVSystemProfilerUtil::copyProfileForDataType(source, "SPHardwareDataType");

    const std::vector<std::vector<std::string>> expectedRuns = {
        {"/usr/sbin/system_profiler", "-xml", "SPDisplaysDataType", "-detailLevel", "mini"},
        {"/usr/sbin/system_profiler", "-xml", "SPCameraDataType"},
        {"/usr/sbin/system_profiler", "-xml", "SPMemoryDataType"},
        {"/usr/sbin/system_profiler", "-xml", "SPHardwareDataType", "-detailLevel", "mini"}};
    require(source.runs == expectedRuns);

    // The same bytes parsed here: a profile exactly when they are a list starting with a
    // dictionary, and the reports every reader saw.
    const std::optional<Value> parsed = tov::parsePropertyList(output);
    const DictionaryRef report = parsed ? firstDictionary(parsed->array()) : nullptr;
    require((hardware != nullptr) == (report != nullptr));
    if (hardware) require(*hardware == *report);

    checkDisplays(displays, report);
    checkCameras(cameras, report);
    checkMemory(modules, report);

    ProfilerOutputSource again(output);
    require(Value(tov::displaysFromSystemProfiler(again)) == Value(displays));
    require(Value(tov::camerasFromSystemProfiler(again)) == Value(cameras));
    require(Value(tov::memoryModulesFromSystemProfiler(again)) == Value(modules));
    return 0;
}
