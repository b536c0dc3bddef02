// Feeds arbitrary bytes, XML or binary, to the property-list reader under its default
// limits and under small ones. Whatever it accepts must stay within the limits (nodes:
// the limit plus the data bytes, each of which becomes a number; containers: the depth
// limit plus the one level a data object's byte array adds), and reading the same bytes
// twice must give equal trees.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "common/PropertyList.h"

namespace {

struct TreeSize {
    std::uint64_t nodes = 0;
    std::uint64_t containerDepth = 0;
};

TreeSize sizeOf(const tov::Value& value) {
    TreeSize size{1, 0};
    auto addChild = [&size](const tov::Value& child) {
        const TreeSize childSize = sizeOf(child);
        size.nodes += childSize.nodes;
        if (childSize.containerDepth > size.containerDepth) size.containerDepth = childSize.containerDepth;
    };
    if (const tov::ArrayRef array = value.array()) {
        for (const tov::Value& element : *array) addChild(element);
        ++size.containerDepth;
    } else if (const tov::DictionaryRef dictionary = value.dictionary()) {
        for (const auto& entry : *dictionary) addChild(entry.second);
        ++size.containerDepth;
    }
    return size;
}

bool sameDouble(double left, double right) { return std::memcmp(&left, &right, sizeof left) == 0; }

// Structural equality in which a real compares by its bits, so that NaN equals itself.
bool sameTree(const tov::Value& left, const tov::Value& right) {
    if (left.type() != right.type()) return false;
    if (left.type() == tov::Value::Type::Double) return sameDouble(left.toDouble(), right.toDouble());
    if (const tov::ArrayRef array = left.array()) {
        const tov::ArrayRef other = right.array();
        if (array->size() != other->size()) return false;
        for (std::size_t index = 0; index < array->size(); ++index) {
            if (!sameTree((*array)[index], (*other)[index])) return false;
        }
        return true;
    }
    if (const tov::DictionaryRef dictionary = left.dictionary()) {
        const auto& entries = dictionary->entries();
        const auto& others = right.dictionary()->entries();
        if (entries.size() != others.size()) return false;
        for (std::size_t index = 0; index < entries.size(); ++index) {
            if (entries[index].first != others[index].first) return false;
            if (!sameTree(entries[index].second, others[index].second)) return false;
        }
        return true;
    }
    return left == right;
}

void check(std::string_view bytes, const tov::PropertyListLimits& limits) {
    const std::optional<tov::Value> first = tov::parsePropertyList(bytes, limits);
    const std::optional<tov::Value> second = tov::parsePropertyList(bytes, limits);
    if (first.has_value() != second.has_value()) std::abort();
    if (!first) return;
    if (!sameTree(*first, *second)) std::abort();
    const TreeSize size = sizeOf(*first);
    if (size.nodes > limits.nodes + limits.dataBytes) std::abort();
    if (size.containerDepth > limits.depth + 1) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    check(bytes, tov::PropertyListLimits{});
    tov::PropertyListLimits small;
    small.nodes = 64;
    small.depth = 6;
    small.dataBytes = 32;
    check(bytes, small);
    return 0;
}
