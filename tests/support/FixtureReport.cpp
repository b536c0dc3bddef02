#include "support/FixtureReport.h"

#include <chrono>

#include "discovery/HardwareDiscovery.h"
#include "discovery/QVDiscovererFactory.h"
#include "discovery/RecordedSystemSource.h"
#include "model/Json.h"
#include "report/QVHardwareReportJsonWriter.h"

namespace tov::testing {

DictionaryRef fixtureHardware(const std::string& captureFolder) {
    std::shared_ptr<SystemSource> source = RecordedSystemSource::open(captureFolder);
    if (!source) return nullptr;
    QVDiscovererFactory::Options options;
    options.persistAddresses = false;
    options.clock = [] { return std::chrono::system_clock::time_point(std::chrono::seconds(kFixtureScanTime)); };
    QVDiscovererFactory factory(source, options);
    return discoverHardware(factory);
}

std::optional<std::string> fixtureReport(const std::string& captureFolder) {
    const DictionaryRef hardware = fixtureHardware(captureFolder);
    if (!hardware) return std::nullopt;
    return QVHardwareReportJsonWriter::jsonContentOfHardware(hardware);
}

std::string withoutCollection(const std::string& document) {
    const std::optional<Value> parsed = parseJson(document);
    if (!parsed || !parsed->isDictionary()) return document;
    if (const DictionaryRef inventory = parsed->dictionary()->get("HWInventory").dictionary()) {
        inventory->remove("collection");
    }
    return writeJson(*parsed, JsonStyle::Indented);
}

}  // namespace tov::testing
