#include "common/TopLevelJsonKeys.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

#include "common/CompactJsonInputBuffer.h"
#include "model/Json.h"

namespace tov {
namespace {

using OrderedJson = nlohmann::ordered_json;

// Parser events that keep the top-level values of the wanted keys and count the nesting
// depth of everything else.
class KeyCollector : public nlohmann::json_sax<OrderedJson> {
public:
    explicit KeyCollector(const std::vector<std::string>& wantedKeys) : wantedKeys_(wantedKeys) {}

    bool null() override { return scalar(Value()); }
    bool boolean(bool value) override { return scalar(Value(value)); }
    bool number_integer(number_integer_t value) override { return scalar(Value(value)); }
    bool number_unsigned(number_unsigned_t value) override { return scalar(Value(value)); }
    bool number_float(number_float_t value, const string_t&) override { return scalar(Value(value)); }
    bool string(string_t& value) override {
        if (!capturing_) return scalar(Value());
        return scalar(Value(std::move(value)));
    }
    bool binary(binary_t&) override { return fail("binary values are not JSON"); }

    bool key(string_t& key) override {
        capturing_ = depth_ == 1 && std::find(wantedKeys_.begin(), wantedKeys_.end(), key) != wantedKeys_.end();
        if (capturing_) pendingKey_ = std::move(key);
        return true;
    }
    bool start_object(std::size_t) override { return open(JsonRootKind::Object, Value::newDictionary()); }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(JsonRootKind::Array, Value::newArray()); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& problem) override {
        return fail(problem.what());
    }

    TopLevelJsonKeys& result() { return result_; }

private:
    bool scalar(Value value) {
        keep(std::move(value));
        return true;
    }

    bool open(JsonRootKind kind, Value emptyContainer) {
        if (depth_ >= kMaximumJsonDepth) {
            return fail("nested too deeply (more than " + std::to_string(kMaximumJsonDepth) + " levels)");
        }
        if (depth_ == 0) result_.root = kind;
        keep(std::move(emptyContainer));
        ++depth_;
        return true;
    }

    bool close() {
        --depth_;
        return true;
    }

    // Stores a value that directly follows a wanted key of the top-level object.
    void keep(Value value) {
        if (!capturing_) return;
        result_.values.set(pendingKey_, std::move(value));
        capturing_ = false;
    }

    bool fail(std::string reason) {
        result_.error = std::move(reason);
        return false;
    }

    const std::vector<std::string>& wantedKeys_;
    TopLevelJsonKeys result_;
    int depth_ = 0;
    bool capturing_ = false;
    std::string pendingKey_;
};

}  // namespace

TopLevelJsonKeys readTopLevelJsonKeys(std::istream& input, const std::vector<std::string>& wantedKeys) {
    KeyCollector collector(wantedKeys);
    if (input.rdbuf() == nullptr) {
        collector.result().error = "no input";
        return std::move(collector.result());
    }
    CompactJsonInputBuffer compacted(*input.rdbuf(), kMaximumJsonDepth);
    std::istream compactedInput(&compacted);
    bool parsed = false;
    try {
        parsed = OrderedJson::sax_parse(compactedInput, &collector);
    } catch (const std::exception& problem) {
        collector.result().error = problem.what();
    }
    TopLevelJsonKeys result = std::move(collector.result());
    result.parsed = parsed && result.error.empty();
    if (!result.parsed) {
        result.values.clear();
        if (result.error.empty()) result.error = "not a JSON document";
    }
    return result;
}

}  // namespace tov
