#include "discovery/formats/IdsFile.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/formats/IdsLines.h"
#include "discovery/formats/PartLineReader.h"

namespace tov {
namespace {

// The width of the offsets a search read looks at for line starts: the read also takes
// the byte before (to tell a line start) and a vendor line's first bytes after.
constexpr std::uint64_t kSearchStep = IdsFile::kPartBytes - kIdsEntryPrefixSize - 1;

// Vendors whose line was looked for, remembered for the devices asked next.
constexpr std::size_t kRememberedVendors = 256;
// Vendor lines the searches met, remembered to start the next search in a narrower range.
constexpr std::size_t kRememberedLines = 256;
// Stretches known to hold no vendor line (inside long blocks), so no probe lands there again.
constexpr std::size_t kRememberedSpans = 64;
// How many parts a probe reads on each side before it gives up on a long block and the
// search probes elsewhere.
constexpr int kProbeSteps = 1;

}  // namespace

std::optional<IdsFile> IdsFile::open(SystemSource& source, std::string path, std::uint64_t sizeLimit) {
    const std::optional<std::string> beyondLimit = source.readFilePart(path, sizeLimit, 1);
    if (!beyondLimit) return std::nullopt;
    if (!beyondLimit->empty()) {
        QVSLogger::debug("%s holds more than %llu bytes; it is no id database and is not read.", path.c_str(),
                         static_cast<unsigned long long>(sizeLimit));
        return std::nullopt;
    }
    // A file smaller than a part tells its end at once; a larger one as the search reads.
    const std::optional<std::string> firstPart = source.readFilePart(path, 0, kPartBytes);
    const std::uint64_t end = firstPart && firstPart->size() < kPartBytes ? firstPart->size() : sizeLimit;
    return IdsFile(source, std::move(path), end);
}

IdsFile::IdsFile(SystemSource& source, std::string path, std::uint64_t end)
    : source_(&source), path_(std::move(path)), end_(end) {}

std::optional<std::string> IdsFile::vendorName(std::uint16_t vendor) {
    const std::optional<std::uint64_t> start = vendorLineStart(vendor);
    if (!start) return std::nullopt;
    const std::optional<std::string> line = lineAt(*start);
    return line ? idsEntryName(*line, kIdsEntryPrefixSize) : std::nullopt;
}

std::optional<std::string> IdsFile::deviceName(std::uint16_t vendor, std::uint16_t device) {
    const std::optional<std::uint64_t> start = vendorLineStart(vendor);
    if (!start) return std::nullopt;
    const std::string prefix = "\t" + idsEntryPrefix(device);
    PartLineReader lines(*source_, path_, *start, end_, kPartBytes);
    lines.next();  // the vendor's own line
    while (const std::optional<PartLineReader::Line> line = lines.next()) {
        if (hasPrefix(line->text, prefix)) return idsEntryName(line->text, prefix.size());
        if (endsIdsVendorBlock(line->text)) return std::nullopt;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> IdsFile::vendorLineStart(std::uint16_t vendor) {
    if (const auto known = vendorStarts_.find(vendor); known != vendorStarts_.end()) return known->second;
    std::optional<std::uint64_t> start = searchInOrder(vendor);
    if (!start) start = scanFromStart(vendor);
    if (vendorStarts_.size() >= kRememberedVendors) vendorStarts_.clear();
    vendorStarts_.emplace(vendor, start);
    return start;
}

std::optional<std::uint64_t> IdsFile::searchInOrder(std::uint16_t vendor) {
    SearchRange range = rangeFromKnownLines(vendor);
    for (;;) {
        if (range.lineAtHigh && range.lineAtHigh->id == vendor) return range.lineAtHigh->start;
        range.high = std::min(range.high, end_);
        range.low = std::min(range.low, range.high);
        if (range.high - range.low <= kSearchStep) break;
        const std::optional<Span> unknown = largestUnknownSpan(range.low, range.high);
        if (!unknown) {
            range.low = range.high;  // no vendor line starts inside the range
            break;
        }
        const SearchRange before = range;
        if (const std::optional<std::uint64_t> found = probe(range, *unknown, vendor)) return found;
        const bool narrowed = range.low != before.low || range.high != before.high;
        if (!narrowed) {
            if (const std::optional<std::uint64_t> found = probeEdges(range, vendor)) return found;
        }
    }
    const std::optional<VendorLine> found =
        firstAtLeast(vendorLinesStartingIn(range.low, range.high), vendor, range.lineAtHigh);
    if (found && found->id == vendor) return found->start;
    return std::nullopt;
}

std::optional<std::uint64_t> IdsFile::scanFromStart(std::uint16_t vendor) {
    QVSLogger::debug("%s: the ordered search finds no vendor %04x; the file is read from its start to be sure.",
                     path_.c_str(), static_cast<unsigned>(vendor));
    const std::string prefix = idsEntryPrefix(vendor);
    PartLineReader lines(*source_, path_, 0, end_, kPartBytes);
    while (const std::optional<PartLineReader::Line> line = lines.next()) {
        if (hasPrefix(line->text, prefix)) return line->start;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> IdsFile::probe(SearchRange& range, const Span& unknown, std::uint16_t vendor) {
    const std::uint64_t middle = unknown.start + (unknown.end - unknown.start) / 2;
    std::uint64_t forward = middle;
    std::uint64_t backward = middle;
    for (int step = 0; step < kProbeSteps && (forward < unknown.end || backward > unknown.start); ++step) {
        if (forward < unknown.end) {
            const std::uint64_t to = std::min(forward + kSearchStep, unknown.end);
            const std::vector<VendorLine> lines = vendorLinesStartingIn(forward, to);
            if (!lines.empty()) return learn(range, lines, backward, to, vendor);
            forward = to;
            // The file ended before the middle: the next probe looks lower.
            if (end_ <= middle) {
                range.high = std::min(range.high, end_);
                return std::nullopt;
            }
        }
        if (backward > unknown.start) {
            const std::uint64_t from = backward - std::min(kSearchStep, backward - unknown.start);
            const std::vector<VendorLine> lines = vendorLinesStartingIn(from, backward);
            if (!lines.empty()) return learn(range, lines, from, forward, vendor);
            backward = from;
        }
    }
    rememberVendorFreeSpan({backward, forward});
    return std::nullopt;
}

std::optional<std::uint64_t> IdsFile::probeEdges(SearchRange& range, std::uint16_t vendor) {
    const std::uint64_t to = std::min(range.low + kSearchStep, range.high);
    const std::vector<VendorLine> afterLow = vendorLinesStartingIn(range.low, to);
    if (afterLow.empty()) {
        range.low = to;
    } else if (const std::optional<std::uint64_t> found = learn(range, afterLow, range.low, to, vendor)) {
        return found;
    }
    if (range.high - range.low <= kSearchStep) return std::nullopt;
    const std::uint64_t from = range.high - kSearchStep;
    const std::vector<VendorLine> beforeHigh = vendorLinesStartingIn(from, range.high);
    if (beforeHigh.empty()) {
        range.high = from;
        return std::nullopt;
    }
    return learn(range, beforeHigh, from, range.high, vendor);
}

std::optional<IdsFile::Span> IdsFile::largestUnknownSpan(std::uint64_t low, std::uint64_t high) const {
    std::optional<Span> largest;
    const auto consider = [&largest](std::uint64_t start, std::uint64_t end) {
        if (start < end && (!largest || end - start > largest->end - largest->start)) largest = Span{start, end};
    };
    std::uint64_t cursor = low;
    for (const Span& known : vendorFreeSpans_) {
        if (known.end <= cursor) continue;
        if (known.start >= high) break;
        consider(cursor, known.start);
        cursor = std::max(cursor, known.end);
    }
    consider(cursor, high);
    return largest;
}

void IdsFile::rememberVendorFreeSpan(const Span& span) {
    if (span.start >= span.end) return;
    if (vendorFreeSpans_.size() >= kRememberedSpans) vendorFreeSpans_.clear();
    Span merged = span;
    std::vector<Span> kept;
    for (const Span& known : vendorFreeSpans_) {
        if (known.end < merged.start || known.start > merged.end) {
            kept.push_back(known);
        } else {
            merged = Span{std::min(merged.start, known.start), std::max(merged.end, known.end)};
        }
    }
    kept.push_back(merged);
    std::sort(kept.begin(), kept.end(), [](const Span& left, const Span& right) { return left.start < right.start; });
    vendorFreeSpans_ = std::move(kept);
}

IdsFile::SearchRange IdsFile::rangeFromKnownLines(std::uint16_t vendor) const {
    SearchRange range{0, end_, std::nullopt};
    for (const auto& [start, id] : knownLines_) {
        if (id < vendor) {
            range.low = std::max(range.low, start + 1);
        } else if (!range.lineAtHigh || start < range.high) {
            range.high = start;
            range.lineAtHigh = VendorLine{start, id};
        }
    }
    // Lines out of order (a copy not sorted): the search starts afresh.
    if (range.low > range.high) return SearchRange{0, end_, std::nullopt};
    return range;
}

void IdsFile::rememberLine(const VendorLine& line) {
    if (knownLines_.size() >= kRememberedLines) knownLines_.clear();
    knownLines_.emplace(line.start, line.id);
}

std::optional<std::uint64_t> IdsFile::learn(SearchRange& range, const std::vector<VendorLine>& lines,
                                            std::uint64_t gapStart, std::uint64_t gapEnd, std::uint16_t vendor) {
    const auto atLeast =
        std::find_if(lines.begin(), lines.end(), [vendor](const VendorLine& line) { return line.id >= vendor; });
    if (atLeast != lines.end()) rememberLine(*atLeast);
    if (atLeast != lines.begin()) rememberLine(*std::prev(atLeast));
    if (atLeast != lines.end() && atLeast->id == vendor) return atLeast->start;
    if (atLeast == lines.end()) {
        range.low = std::min(gapEnd, range.high);
    } else if (atLeast == lines.begin()) {
        range.high = gapStart;
        range.lineAtHigh = *atLeast;
    } else {
        range.low = range.high = std::prev(atLeast)->start + 1;
        range.lineAtHigh = *atLeast;
    }
    return std::nullopt;
}

std::optional<IdsFile::VendorLine> IdsFile::firstAtLeast(const std::vector<VendorLine>& lines, std::uint16_t vendor,
                                                         const std::optional<VendorLine>& otherwise) {
    for (const VendorLine& line : lines) {
        if (line.id >= vendor) return line;
    }
    return otherwise;
}

std::vector<IdsFile::VendorLine> IdsFile::vendorLinesStartingIn(std::uint64_t from, std::uint64_t to) {
    to = std::min(to, end_);
    std::vector<VendorLine> lines;
    if (from >= to) return lines;
    const std::uint64_t base = from == 0 ? 0 : from - 1;
    const std::uint64_t wanted = to + kIdsEntryPrefixSize - base;
    const std::string part = source_->readFilePart(path_, base, wanted).value_or(std::string());
    if (part.size() < wanted) end_ = std::min(end_, base + part.size());
    const std::string_view bytes(part);
    const auto addIfVendorLine = [&](std::uint64_t start) {
        if (const std::optional<std::uint16_t> id = idsVendorLineId(bytes.substr(start - base))) {
            lines.push_back({start, *id});
        }
    };
    if (from == 0 && !bytes.empty()) addIfVendorLine(0);
    for (std::size_t lineBreak = bytes.find('\n'); lineBreak != std::string_view::npos;
         lineBreak = bytes.find('\n', lineBreak + 1)) {
        const std::uint64_t start = base + lineBreak + 1;
        if (start >= to) break;
        if (start >= from) addIfVendorLine(start);
    }
    return lines;
}

std::optional<std::string> IdsFile::lineAt(std::uint64_t start) {
    PartLineReader lines(*source_, path_, start, end_, kPartBytes);
    const std::optional<PartLineReader::Line> line = lines.next();
    if (!line) return std::nullopt;
    return std::string(line->text);
}

}  // namespace tov
