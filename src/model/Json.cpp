#include "model/Json.h"

#include <nlohmann/json.hpp>

#include <vector>

#include "model/QVSystemInfo.h"

namespace tov {
namespace {

using OrderedJson = nlohmann::ordered_json;

OrderedJson toJson(const Value& value);

OrderedJson dictionaryToJson(const DictionaryRef& dictionary) {
    OrderedJson object = OrderedJson::object();
    if (!dictionary) return object;
    for (const auto& [key, member] : *dictionary) object[key] = toJson(member);
    return object;
}

OrderedJson toJson(const Value& value) {
    switch (value.type()) {
    case Value::Type::Absent:
        return nullptr;
    case Value::Type::Bool:
        return value.toBool();
    case Value::Type::Int:
        return value.toInt64();
    case Value::Type::UInt:
        return value.toUInt64();
    case Value::Type::Double:
        return value.toDouble();
    case Value::Type::String:
        return *value.string();
    case Value::Type::Array: {
        OrderedJson array = OrderedJson::array();
        if (const ArrayRef items = value.array()) {
            for (const Value& item : *items) array.push_back(toJson(item));
        }
        return array;
    }
    case Value::Type::Dictionary:
        return dictionaryToJson(value.dictionary());
    case Value::Type::Record:
        return dictionaryToJson(value.record() ? value.record()->proxyForJson() : nullptr);
    }
    return nullptr;
}

// Builds the value tree straight from the parser's events and refuses documents nested
// deeper than the maximum.
class TreeBuilder : public nlohmann::json_sax<OrderedJson> {
public:
    bool null() override { return add(Value()); }
    bool boolean(bool value) override { return add(Value(value)); }
    bool number_integer(number_integer_t value) override { return add(Value(value)); }
    bool number_unsigned(number_unsigned_t value) override { return add(Value(value)); }
    bool number_float(number_float_t value, const string_t&) override { return add(Value(value)); }
    bool string(string_t& value) override { return add(Value(std::move(value))); }
    bool binary(binary_t&) override { return fail("binary values are not JSON"); }

    bool start_object(std::size_t) override { return open(Value::newDictionary()); }
    bool key(string_t& key) override {
        pendingKey_ = std::move(key);
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t) override { return open(Value::newArray()); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& problem) override {
        return fail(problem.what());
    }

    std::optional<Value> result() const { return failed_ ? std::nullopt : std::optional<Value>(root_); }
    const std::string& error() const { return error_; }

private:
    bool add(Value value) {
        if (open_.empty()) {
            root_ = std::move(value);
        } else if (const ArrayRef array = open_.back().array()) {
            array->push_back(std::move(value));
        } else {
            open_.back().dictionary()->set(pendingKey_, std::move(value));
        }
        return true;
    }

    bool open(Value container) {
        if (static_cast<int>(open_.size()) >= kMaximumJsonDepth) {
            return fail("nested too deeply (more than " + std::to_string(kMaximumJsonDepth) + " levels)");
        }
        add(container);
        open_.push_back(std::move(container));
        return true;
    }

    bool close() {
        open_.pop_back();
        return true;
    }

    bool fail(std::string reason) {
        failed_ = true;
        error_ = std::move(reason);
        return false;
    }

    Value root_;
    std::vector<Value> open_;
    std::string pendingKey_;
    bool failed_ = false;
    std::string error_;
};

}  // namespace

std::string writeJson(const Value& value, JsonStyle style) {
    const int indent = style == JsonStyle::Indented ? 2 : -1;
    return toJson(value).dump(indent, ' ', false, OrderedJson::error_handler_t::replace);
}

std::optional<Value> parseJson(std::string_view text, std::string* error) {
    TreeBuilder builder;
    bool parsed = false;
    try {
        parsed = OrderedJson::sax_parse(text, &builder);
    } catch (const std::exception& problem) {
        if (error) *error = problem.what();
        return std::nullopt;
    }
    if (!parsed || !builder.result()) {
        if (error) *error = builder.error().empty() ? "not a JSON document" : builder.error();
        return std::nullopt;
    }
    return builder.result();
}

}  // namespace tov
