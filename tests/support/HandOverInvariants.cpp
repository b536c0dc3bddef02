#include "support/HandOverInvariants.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>

#include "common/FileAccess.h"
#include "common/KeyedArchive.h"
#include "common/Paths.h"
#include "common/ZipMembers.h"
#include "model/Json.h"
#include "report/QVHardwareReportJsonReader.h"

namespace tov::testing {
namespace {

constexpr std::uint64_t kMaximumReportBytes = 104857600;
constexpr std::uint64_t kMaximumHeaderBytes = 4096;
constexpr std::string_view kHeaderPrefix = "X-NG-metadata: ";

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string withoutExtension(const std::string& name) { return name.substr(0, name.rfind('.')); }

bool isJsonObject(std::string_view text) {
    const std::optional<Value> value = parseJson(text);
    return value && value->dictionary() && !value->dictionary()->empty();
}

// One line "X-NG-metadata: {...}" whose object names the component.
bool isWholeHeader(const std::string& path) {
    const std::optional<std::string> line = readWholeFile(path, kMaximumHeaderBytes);
    if (!line || !line->starts_with(kHeaderPrefix) || line->find('\n') != std::string::npos) return false;
    const std::optional<Value> parsed = parseJson(std::string_view(*line).substr(kHeaderPrefix.size()));
    const DictionaryRef metadata = parsed ? parsed->dictionary() : nullptr;
    if (!metadata) return false;
    const Value component = metadata->get("Component");
    return component.string() && *component.string() == "TOV" && metadata->get("scanType").isString();
}

std::optional<std::string> reportInArchive(const std::string& path) {
    if (!isRegularFileItem(path)) return std::nullopt;
    std::optional<std::string> report = readZipMembers(path, kMaximumReportBytes);
    if (!report || !isJsonObject(*report)) return std::nullopt;
    return report;
}

bool isWholeArchive(const std::string& path) { return reportInArchive(path).has_value(); }

struct OutboxListing {
    std::set<std::string> headers;  // names without extension
    std::set<std::string> archives;
    std::vector<std::string> others;
};

OutboxListing listOutbox() {
    OutboxListing listing;
    for (const std::string& name : namesIn(Paths::outboxFolder())) {
        if (name.ends_with(".hdr")) {
            listing.headers.insert(withoutExtension(name));
        } else if (name.ends_with(".zip")) {
            listing.archives.insert(withoutExtension(name));
        } else {
            listing.others.push_back(name);
        }
    }
    return listing;
}

std::string outboxPath(const std::string& stem, const char* extension) {
    return Paths::outboxFolder() + "/" + stem + extension;
}

void checkHeaders(const OutboxListing& listing, std::vector<std::string>& breaches) {
    for (const std::string& stem : listing.headers) {
        if (!isWholeHeader(outboxPath(stem, ".hdr"))) {
            breaches.push_back("outbox: " + stem + ".hdr is not a whole header");
        }
        if (!listing.archives.contains(stem)) {
            breaches.push_back("outbox: " + stem + ".hdr has no archive");
        } else if (!isWholeArchive(outboxPath(stem, ".zip"))) {
            breaches.push_back("outbox: " + stem + ".zip does not unzip to a report");
        }
    }
}

void checkArchivesHaveHeaders(const OutboxListing& listing, std::vector<std::string>& breaches) {
    for (const std::string& stem : listing.archives) {
        if (listing.headers.contains(stem)) continue;
        breaches.push_back("outbox: " + stem + ".zip has no header");
    }
    for (const std::string& name : listing.others) breaches.push_back("outbox: stray entry " + name);
}

void append(std::vector<std::string>& to, const std::vector<std::string>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

}  // namespace

std::vector<std::string> storedReportBreaches() {
    const std::string path = Paths::previousReport();
    if (!isRegularFileItem(path)) return {"previous.json is missing"};
    const std::optional<std::string> bytes = readWholeFile(path, kMaximumReportBytes);
    if (!bytes || !QVHardwareReportJsonReader::hardwareDictionaryWithJsonContent(*bytes)) {
        return {"previous.json does not read as a stored report"};
    }
    return {};
}

std::vector<std::string> settingsBreaches() {
    const std::optional<std::string> bytes = readWholeFile(Paths::settingsFile(), kMaximumKeyedArchiveBytes);
    if (!bytes) return {"settings.bin is missing"};
    if (!decodeKeyedArchive(*bytes)) return {"settings.bin does not decode"};
    return {};
}

std::vector<std::string> outboxBreaches(OutboxRule rule) {
    const OutboxListing listing = listOutbox();
    std::vector<std::string> breaches;
    checkHeaders(listing, breaches);
    if (rule == OutboxRule::WholePairsOnly) checkArchivesHaveHeaders(listing, breaches);
    return breaches;
}

std::vector<std::string> temporaryFolderBreaches() {
    std::vector<std::string> breaches;
    for (const std::string& name : namesIn("/tmp")) {
        if (name.starts_with("hardware.json-") || name.starts_with("__h_hardware_h__.json")) {
            breaches.push_back("/tmp: " + name + " left behind");
        }
    }
    return breaches;
}

std::vector<std::string> handOverBreaches(OutboxRule rule) {
    std::vector<std::string> breaches = storedReportBreaches();
    append(breaches, settingsBreaches());
    append(breaches, outboxBreaches(rule));
    if (rule == OutboxRule::WholePairsOnly) append(breaches, temporaryFolderBreaches());
    return breaches;
}

std::vector<std::string> outboxReports() {
    const OutboxListing listing = listOutbox();
    std::vector<std::string> reports;
    for (const std::string& stem : listing.headers) {
        if (!listing.archives.contains(stem) || !isWholeHeader(outboxPath(stem, ".hdr"))) continue;
        std::optional<std::string> report = reportInArchive(outboxPath(stem, ".zip"));
        if (report) reports.push_back(std::move(*report));
    }
    return reports;
}

bool outboxHoldsReportOfMachine(const std::string& name) {
    const std::string member = "\"systemName\": \"" + name + "\"";
    const std::vector<std::string> reports = outboxReports();
    return std::any_of(reports.begin(), reports.end(),
                       [&](const std::string& report) { return report.find(member) != std::string::npos; });
}

}  // namespace tov::testing
