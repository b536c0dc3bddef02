#include "discovery/linux/ProcCpuInfo.h"

#include <charconv>

#include "common/PrintableText.h"
#include "common/TextUtils.h"

namespace tov {
namespace {

template <class Number>
std::optional<Number> numberOf(const std::string& text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// A whole text as a decimal number ("2095.076").
std::optional<double> decimalOf(const std::string& text) {
    const std::optional<LeadingDecimal> number = leadingDecimal(text);
    if (!number || number->length != text.size()) return std::nullopt;
    return number->value;
}

void setProcessorField(ProcCpuInfo::Processor& processor, const std::string& key, const std::string& value) {
    if (key == "model name") processor.modelName = value;
    else if (key == "vendor_id") processor.vendorId = value;
    else if (key == "CPU implementer") processor.implementer = value;
    else if (key == "cpu MHz") processor.megahertz = decimalOf(value);
    else if (key == "physical id") processor.physicalId = numberOf<std::int64_t>(value);
    else if (key == "core id") processor.coreId = numberOf<std::int64_t>(value);
}

void setBoardField(ProcCpuInfo& info, const std::string& key, const std::string& value) {
    if (key == "Model") info.boardModel = value;
    else if (key == "Hardware") info.hardware = value;
}

bool isWanted(const std::string& key) {
    for (const char* wanted : {"model name", "vendor_id", "CPU implementer", "cpu MHz", "physical id", "core id",
                               "Model", "Hardware"}) {
        if (key == wanted) return true;
    }
    return false;
}

// Reads the lines in order; a blank line ends the current processor block.
class CpuInfoReader {
public:
    void readLine(std::string_view line) {
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) {
            if (trimWhitespaceAndNewlines(line).empty()) inBlock_ = false;
            return;
        }
        const std::string key = trimWhitespaceAndNewlines(line.substr(0, colon));
        if (key == "processor") {
            startProcessor();
            return;
        }
        // Only the few fields read below are decoded; "flags" and the like are skipped.
        if (!isWanted(key)) return;
        const std::string value = printableText(line.substr(colon + 1));
        if (inBlock_) {
            setProcessorField(info_.processors.back(), key, value);
        } else {
            setBoardField(info_, key, value);
        }
    }

    ProcCpuInfo take() { return std::move(info_); }

private:
    void startProcessor() {
        inBlock_ = info_.processors.size() < ProcCpuInfo::kMaximumProcessors;
        if (inBlock_) info_.processors.emplace_back();
    }

    ProcCpuInfo info_;
    bool inBlock_ = false;
};

}  // namespace

std::string ProcCpuInfo::firstModelName() const {
    for (const Processor& processor : processors) {
        if (!processor.modelName.empty()) return processor.modelName;
    }
    return "";
}

std::optional<double> ProcCpuInfo::firstMegahertz() const {
    for (const Processor& processor : processors) {
        if (processor.megahertz) return processor.megahertz;
    }
    return std::nullopt;
}

bool ProcCpuInfo::looksX86() const {
    for (const Processor& processor : processors) {
        if (!processor.vendorId.empty()) return true;
        if (!processor.modelName.empty() && processor.implementer.empty()) return true;
    }
    return false;
}

ProcCpuInfo parseProcCpuInfo(std::string_view text) {
    CpuInfoReader reader;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        reader.readLine(text.substr(0, end));
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
    return reader.take();
}

}  // namespace tov
