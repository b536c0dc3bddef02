#include "common/BinaryPlistShape.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tov {
namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::uint64_t kTrailerSize = 32;

// The object kinds whose marker carries a length: data, the two string forms and the
// three containers. Every other kind has a fixed size that the tree reader checks itself.
enum ObjectKind : unsigned {
    kData = 0x4,
    kByteString = 0x5,
    kTwoByteString = 0x6,
    kArray = 0xA,
    kSet = 0xC,
    kDictionary = 0xD,
};
constexpr unsigned kIntegerKind = 0x1;
constexpr unsigned kLongLength = 0xF;

// Lengths after a marker come in 1, 2, 4 or 8 bytes.
bool isSupportedLengthWidth(std::uint64_t width) {
    return width == 1 || width == 2 || width == 4 || width == 8;
}

// Offsets and references take as many bytes as their largest value needs (libplist
// writes three-byte offsets into files above 64 KiB).
bool isSupportedIndexWidth(std::uint64_t width) { return width >= 1 && width <= 8; }

std::uint64_t byteAt(std::string_view bytes, std::uint64_t offset) {
    return static_cast<unsigned char>(bytes[offset]);
}

// Callers check that width bytes are there.
std::uint64_t bigEndian(std::string_view bytes, std::uint64_t offset, std::uint64_t width) {
    std::uint64_t value = 0;
    for (std::uint64_t i = 0; i < width; ++i) value = (value << 8) | byteAt(bytes, offset + i);
    return value;
}

std::uint64_t saturatingAdd(std::uint64_t left, std::uint64_t right) {
    return left > std::numeric_limits<std::uint64_t>::max() - right ? std::numeric_limits<std::uint64_t>::max()
                                                                      : left + right;
}

// What the 32-byte trailer says about the object table.
struct ObjectTable {
    std::string_view bytes;
    std::uint64_t offsetWidth = 0;
    std::uint64_t referenceWidth = 0;
    std::uint64_t objectCount = 0;
    std::uint64_t topObject = 0;
    // Objects lie between the header and the offset table, which starts here.
    std::uint64_t tableOffset = 0;
};

std::optional<ObjectTable> readObjectTable(std::string_view bytes) {
    if (bytes.size() < kMagic.size() + kTrailerSize || bytes.substr(0, kMagic.size()) != kMagic) {
        return std::nullopt;
    }
    const std::uint64_t trailer = bytes.size() - kTrailerSize;
    ObjectTable table;
    table.bytes = bytes;
    table.offsetWidth = byteAt(bytes, trailer + 6);
    table.referenceWidth = byteAt(bytes, trailer + 7);
    table.objectCount = bigEndian(bytes, trailer + 8, 8);
    table.topObject = bigEndian(bytes, trailer + 16, 8);
    table.tableOffset = bigEndian(bytes, trailer + 24, 8);
    if (!isSupportedIndexWidth(table.offsetWidth) || !isSupportedIndexWidth(table.referenceWidth)) {
        return std::nullopt;
    }
    if (table.objectCount == 0 || table.topObject >= table.objectCount) return std::nullopt;
    if (table.tableOffset < kMagic.size() || table.tableOffset >= trailer) return std::nullopt;
    if (table.objectCount > (trailer - table.tableOffset) / table.offsetWidth) return std::nullopt;
    return table;
}

// One object as the table stores it: the objects it refers to and its own content bytes.
struct ObjectEntry {
    std::vector<std::uint64_t> references;
    std::uint64_t payloadBytes = 0;
};

class ObjectReader {
public:
    explicit ObjectReader(const ObjectTable& table) : table_(table) {}

    std::optional<ObjectEntry> read(std::uint64_t index) const {
        const std::optional<std::uint64_t> offset = objectOffset(index);
        if (!offset) return std::nullopt;
        const unsigned marker = static_cast<unsigned>(byteAt(table_.bytes, *offset));
        const unsigned kind = marker >> 4;
        if (!hasLength(kind)) return ObjectEntry{};
        std::uint64_t position = *offset + 1;
        const std::optional<std::uint64_t> length = readLength(position, marker & 0xF);
        if (!length) return std::nullopt;
        return readContents(kind, position, *length);
    }

private:
    static bool hasLength(unsigned kind) {
        return kind == kData || kind == kByteString || kind == kTwoByteString || kind == kArray || kind == kSet ||
               kind == kDictionary;
    }

    std::optional<std::uint64_t> objectOffset(std::uint64_t index) const {
        const std::uint64_t offset =
            bigEndian(table_.bytes, table_.tableOffset + index * table_.offsetWidth, table_.offsetWidth);
        if (offset < kMagic.size() || offset >= table_.tableOffset) return std::nullopt;
        return offset;
    }

    // The length in the marker, or, when the marker says so, in the integer after it.
    std::optional<std::uint64_t> readLength(std::uint64_t& position, unsigned shortLength) const {
        if (shortLength != kLongLength) return shortLength;
        if (position >= table_.tableOffset) return std::nullopt;
        const std::uint64_t lengthMarker = byteAt(table_.bytes, position);
        if ((lengthMarker >> 4) != kIntegerKind) return std::nullopt;
        const std::uint64_t width = std::uint64_t{1} << (lengthMarker & 0xF);
        if (!isSupportedLengthWidth(width) || width > table_.tableOffset - position - 1) return std::nullopt;
        const std::uint64_t length = bigEndian(table_.bytes, position + 1, width);
        position += 1 + width;
        return length;
    }

    std::optional<ObjectEntry> readContents(unsigned kind, std::uint64_t position, std::uint64_t length) const {
        const std::uint64_t available = table_.tableOffset - position;
        ObjectEntry entry;
        switch (kind) {
            case kData:
            case kByteString:
                if (length > available) return std::nullopt;
                entry.payloadBytes = length;
                return entry;
            case kTwoByteString:
                if (length > available / 2 || holdsZeroCharacter(position, length)) return std::nullopt;
                entry.payloadBytes = length * 4;
                return entry;
            case kDictionary:
                // The keys' references, then the values'.
                if (length > available / (2 * table_.referenceWidth)) return std::nullopt;
                return readReferences(position, length * 2);
            default:
                if (length > available / table_.referenceWidth) return std::nullopt;
                return readReferences(position, length);
        }
    }

    // libplist stops the process when it hands over a dictionary key whose two-byte text
    // holds U+0000 (its stated length then differs from the C text's), so such a text is
    // refused wherever it stands.
    bool holdsZeroCharacter(std::uint64_t position, std::uint64_t length) const {
        for (std::uint64_t i = 0; i < length; ++i) {
            if (byteAt(table_.bytes, position + 2 * i) == 0 && byteAt(table_.bytes, position + 2 * i + 1) == 0) {
                return true;
            }
        }
        return false;
    }

    std::optional<ObjectEntry> readReferences(std::uint64_t position, std::uint64_t count) const {
        ObjectEntry entry;
        entry.references.reserve(count);
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::uint64_t reference =
                bigEndian(table_.bytes, position + i * table_.referenceWidth, table_.referenceWidth);
            if (reference >= table_.objectCount) return std::nullopt;
            entry.references.push_back(reference);
        }
        return entry;
    }

    ObjectTable table_;
};

// A depth-first walk from the top object that measures each object once and adds its
// measure at every reference to it, stopping as soon as a limit is passed or an object
// is met again below itself.
class ShapeMeasurer {
public:
    ShapeMeasurer(const ObjectTable& table, const BinaryPlistShape& limits) : reader_(table), limits_(limits) {}

    std::optional<BinaryPlistShape> measure(std::uint64_t top) {
        if (!open(top)) return std::nullopt;
        while (!path_.empty()) {
            Step& step = path_.back();
            if (step.nextReference < step.entry.references.size()) {
                if (!visit(step.entry.references[step.nextReference++])) return std::nullopt;
                continue;
            }
            const std::optional<BinaryPlistShape> finished = close();
            if (!finished) return std::nullopt;
            if (path_.empty()) return finished;
            if (!addTo(path_.back().shape, *finished)) return std::nullopt;
        }
        return std::nullopt;
    }

private:
    struct Step {
        std::uint64_t index = 0;
        ObjectEntry entry;
        std::size_t nextReference = 0;
        BinaryPlistShape shape;  // of the references counted so far
    };
    struct Measure {
        bool open = true;
        BinaryPlistShape shape;
    };

    bool visit(std::uint64_t index) {
        const auto known = measures_.find(index);
        if (known == measures_.end()) return open(index);
        if (known->second.open) return false;
        return addTo(path_.back().shape, known->second.shape);
    }

    bool open(std::uint64_t index) {
        if (path_.size() >= limits_.depth) return false;
        std::optional<ObjectEntry> entry = reader_.read(index);
        if (!entry) return false;
        measures_[index] = Measure{};
        path_.push_back(Step{index, std::move(*entry), 0, BinaryPlistShape{}});
        return true;
    }

    std::optional<BinaryPlistShape> close() {
        const Step& step = path_.back();
        BinaryPlistShape shape;
        shape.nodes = saturatingAdd(step.shape.nodes, 1);
        shape.payloadBytes = saturatingAdd(step.shape.payloadBytes, step.entry.payloadBytes);
        shape.depth = step.shape.depth + 1;
        if (!withinLimits(shape)) return std::nullopt;
        measures_[step.index] = Measure{false, shape};
        path_.pop_back();
        return shape;
    }

    bool addTo(BinaryPlistShape& total, const BinaryPlistShape& part) const {
        total.nodes = saturatingAdd(total.nodes, part.nodes);
        total.payloadBytes = saturatingAdd(total.payloadBytes, part.payloadBytes);
        total.depth = std::max(total.depth, part.depth);
        return withinLimits(total);
    }

    bool withinLimits(const BinaryPlistShape& shape) const {
        return shape.nodes <= limits_.nodes && shape.payloadBytes <= limits_.payloadBytes &&
               shape.depth <= limits_.depth;
    }

    ObjectReader reader_;
    BinaryPlistShape limits_;
    std::vector<Step> path_;
    std::unordered_map<std::uint64_t, Measure> measures_;
};

}  // namespace

std::optional<BinaryPlistShape> measureBinaryPlist(std::string_view bytes, const BinaryPlistShape& limits) {
    const std::optional<ObjectTable> table = readObjectTable(bytes);
    if (!table) return std::nullopt;
    return ShapeMeasurer(*table, limits).measure(table->topObject);
}

}  // namespace tov
