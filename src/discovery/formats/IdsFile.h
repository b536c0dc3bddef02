#pragma once

// One pci.ids or usb.ids database file, searched in small parts so that it is never held
// whole: no read asks for more than kPartBytes, and a lookup holds a few parts at most.
// The databases list their vendors in ascending order of id, each followed by the block
// of its devices (tab-indented lines); other sections (classes, languages, ...) follow
// at the end and hold no vendor lines. A vendor's line is found by a binary search over
// byte offsets: a probe reads a part on each side of its offset for the nearest vendor
// lines. A probe that lands inside a long block (Intel's in pci.ids is hundreds of KiB)
// finds none; that stretch is remembered as holding no vendor line, the next probe goes
// to the largest stretch not known yet, and first a part is read at each end of the range,
// which narrows it whatever it holds. So a long block seldom costs its whole length.
// The vendor lines and empty stretches met stay known for the next lookups of the scan.
// The search stops at the first vendor line of the id it meets (the databases hold each
// id once). When it does not find the vendor (an absent id, or a copy not in order), the
// file is read line by line from its start, so the answer is the one the whole text
// gives. A device is found by reading on through its vendor's block.

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "discovery/SystemSource.h"

namespace tov {

class IdsFile {
public:
    // No read asks for more bytes than this.
    static constexpr std::size_t kPartBytes = 4096;

    // The database at path when it can be read and holds at most sizeLimit bytes.
    static std::optional<IdsFile> open(SystemSource& source, std::string path, std::uint64_t sizeLimit);

    // The name on the vendor's line, or nothing.
    std::optional<std::string> vendorName(std::uint16_t vendor);
    // The name on the line of the vendor's device, or nothing.
    std::optional<std::string> deviceName(std::uint16_t vendor, std::uint16_t device);

private:
    struct VendorLine {
        std::uint64_t start = 0;
        std::uint16_t id = 0;
    };

    // Where the search may still find the first vendor line whose id is at least the
    // one sought: every vendor line before low has a smaller id; the first vendor line
    // at or after high (lineAtHigh, when known) has an id at least the one sought.
    struct SearchRange {
        std::uint64_t low = 0;
        std::uint64_t high = 0;
        std::optional<VendorLine> lineAtHigh;
    };

    // end: no byte of the file is at or after it.
    IdsFile(SystemSource& source, std::string path, std::uint64_t end);

    // Where the vendor's line starts (remembered for the next question), or nothing.
    std::optional<std::uint64_t> vendorLineStart(std::uint16_t vendor);
    std::optional<std::uint64_t> searchInOrder(std::uint16_t vendor);
    std::optional<std::uint64_t> scanFromStart(std::uint16_t vendor);

    // A stretch of the file's bytes, [start, end).
    struct Span {
        std::uint64_t start = 0;
        std::uint64_t end = 0;
    };

    // Looks for the vendor lines nearest to the middle of the unknown span, a few parts
    // on each side, and narrows the range by them; a span without any is remembered as
    // such. The start of the vendor's own line when it was met.
    std::optional<std::uint64_t> probe(SearchRange& range, const Span& unknown, std::uint16_t vendor);
    // After a probe that met no vendor line: reads a part at each end of the range,
    // which narrows it whatever it holds. The start of the vendor's own line when met.
    std::optional<std::uint64_t> probeEdges(SearchRange& range, std::uint16_t vendor);
    // The largest part of [low, high) not known to hold no vendor line; nothing when all is.
    std::optional<Span> largestUnknownSpan(std::uint64_t low, std::uint64_t high) const;
    void rememberVendorFreeSpan(const Span& span);
    // The range that the vendor lines met by earlier searches leave.
    SearchRange rangeFromKnownLines(std::uint16_t vendor) const;
    void rememberLine(const VendorLine& line);
    // Applies what a run of consecutive vendor lines tells, with no other vendor line
    // between gapStart and the run nor between the run and gapEnd; the start of the
    // vendor's own line when the run holds it.
    std::optional<std::uint64_t> learn(SearchRange& range, const std::vector<VendorLine>& lines,
                                       std::uint64_t gapStart, std::uint64_t gapEnd, std::uint16_t vendor);
    static std::optional<VendorLine> firstAtLeast(const std::vector<VendorLine>& lines, std::uint16_t vendor,
                                                  const std::optional<VendorLine>& otherwise);

    // The vendor lines that start in [from, to) (to - from at most kSearchStep).
    std::vector<VendorLine> vendorLinesStartingIn(std::uint64_t from, std::uint64_t to);
    // The line at start, cut to a part.
    std::optional<std::string> lineAt(std::uint64_t start);

    SystemSource* source_;
    std::string path_;
    // No byte of the file is at or after end_; lowered as short reads show the real end.
    std::uint64_t end_;
    std::map<std::uint16_t, std::optional<std::uint64_t>> vendorStarts_;
    std::map<std::uint64_t, std::uint16_t> knownLines_;  // where a vendor line starts, and its id
    std::vector<Span> vendorFreeSpans_;                  // in order, apart from each other
};

}  // namespace tov
