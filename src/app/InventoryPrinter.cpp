#include "app/InventoryPrinter.h"

#include <memory>
#include <optional>
#include <string>

#include "common/QVSLogger.h"
#include "discovery/CapturingSystemSource.h"
#include "discovery/HardwareDiscovery.h"
#include "discovery/PublicIpLookupUrl.h"
#include "discovery/QVDiscovererFactory.h"
#include "discovery/RecordedSystemSource.h"
#include "platform/LiveSystemSource.h"
#include "report/InventorySummary.h"
#include "report/QVHardwareReportJsonWriter.h"

namespace tov {
namespace {

int refuse(const std::string& reason) {
    QVSLogger::error("%s", reason.c_str());
    std::fprintf(stderr, "tov: %s\n", reason.c_str());
    return 1;
}

std::optional<std::string> folderOf(const QVSAppArgument& arguments, const char* flag) {
    std::optional<std::string> folder = arguments.findArgumentAfterOptionFlag(flag);
    if (folder && folder->empty()) return std::nullopt;
    return folder;
}

// The source the scan reads: the capture to replay, or this machine; recorded into a new
// capture when asked. Null when one of them cannot be opened.
std::shared_ptr<SystemSource> sourceFor(const std::optional<std::string>& replay,
                                        const std::optional<std::string>& capture,
                                        std::shared_ptr<CapturingSystemSource>& capturing) {
    std::shared_ptr<SystemSource> source;
    if (replay) {
        source = RecordedSystemSource::open(*replay);
    } else {
        source = std::make_shared<LiveSystemSource>();
    }
    if (!source || !capture) return source;
    capturing = CapturingSystemSource::create(source, *capture);
    return capturing;
}

// Why the switches cannot be carried out together, or nothing when they can. A summary
// writes nothing at all, so it records no capture.
std::optional<std::string> conflictOf(const QVSAppArgument& arguments, bool capture, bool replay) {
    if (arguments.isPrintCall() && arguments.isSummaryCall()) return "-p and -s cannot be used together.";
    if (capture && replay) return "-capture and -replay cannot be used together.";
    if (capture && !arguments.isPrintCall()) return "-capture goes with -p.";
    if (replay && !arguments.isPrintCall() && !arguments.isSummaryCall()) return "-replay goes with -p or -s.";
    return std::nullopt;
}

// The inventory as the document of a full report, or as the summary table.
std::optional<std::string> textOf(const DictionaryRef& hardware, bool summary) {
    if (summary) return InventorySummary::textOf(Value(hardware));
    return QVHardwareReportJsonWriter::jsonContentOfHardware(hardware);
}

}  // namespace

bool InventoryPrinter::isPrintRequest(const QVSAppArgument& arguments) {
    return arguments.isPrintCall() || arguments.isSummaryCall() || arguments.findArgumentAfterOptionFlag(kCaptureFlag) ||
           arguments.findArgumentAfterOptionFlag(kReplayFlag);
}

int InventoryPrinter::print(const QVSAppArgument& arguments, std::FILE* output) {
    const std::optional<std::string> capture = folderOf(arguments, kCaptureFlag);
    const std::optional<std::string> replay = folderOf(arguments, kReplayFlag);
    if (const std::optional<std::string> conflict = conflictOf(arguments, capture.has_value(), replay.has_value())) {
        return refuse(*conflict);
    }
    std::shared_ptr<CapturingSystemSource> capturing;
    std::shared_ptr<SystemSource> source = sourceFor(replay, capture, capturing);
    if (!source) return refuse("The capture folder " + replay.value_or(capture.value_or("")) + " cannot be used.");

    QVDiscovererFactory::Options options;
    options.persistAddresses = false;
    options.publicIpUrl = publicIpLookupUrl();
    QVDiscovererFactory factory(source, options);
    const std::optional<std::string> document = textOf(discoverHardware(factory), arguments.isSummaryCall());
    if (!document) return refuse("The inventory could not be written as JSON.");
    std::fwrite(document->data(), 1, document->size(), output);
    std::fflush(output);
    if (capturing && !capturing->complete()) return refuse("The capture is incomplete; the log says what is missing.");
    return 0;
}

}  // namespace tov
