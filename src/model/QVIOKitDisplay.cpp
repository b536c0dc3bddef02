#include "model/QVIOKitDisplay.h"

namespace tov {
namespace {

constexpr std::string_view kDescriptionKey = "adapterDescription";
constexpr std::string_view kManufacturerKey = "manufacturer";
constexpr std::string_view kRefreshRateKey = "refreshRate";
constexpr std::string_view kWidthKey = "width";
constexpr std::string_view kHeightKey = "height";
constexpr std::string_view kDepthKey = "depth";

}  // namespace

std::shared_ptr<QVIOKitDisplay> QVIOKitDisplay::iokitDisplay() { return std::make_shared<QVIOKitDisplay>(); }

std::optional<std::string> QVIOKitDisplay::getDescription() const { return stringForKey(kDescriptionKey); }
void QVIOKitDisplay::setDescription(std::optional<std::string_view> description) {
    setStringValue(description, kDescriptionKey);
}

std::optional<std::string> QVIOKitDisplay::manufacturer() const { return stringForKey(kManufacturerKey); }
void QVIOKitDisplay::setManufacturer(std::optional<std::string_view> manufacturer) {
    setStringValue(manufacturer, kManufacturerKey);
}

std::int64_t QVIOKitDisplay::frequency() const { return valueForKey(kRefreshRateKey).toInt64(); }
void QVIOKitDisplay::setFrequency(std::int64_t frequency) { setValue(kRefreshRateKey, Value(frequency)); }

std::int64_t QVIOKitDisplay::width() const { return valueForKey(kWidthKey).toInt64(); }
void QVIOKitDisplay::setWidth(std::int64_t width) { setValue(kWidthKey, Value(width)); }

std::int64_t QVIOKitDisplay::height() const { return valueForKey(kHeightKey).toInt64(); }
void QVIOKitDisplay::setHeight(std::int64_t height) { setValue(kHeightKey, Value(height)); }

std::int64_t QVIOKitDisplay::depth() const { return valueForKey(kDepthKey).toInt64(); }
void QVIOKitDisplay::setDepth(std::int64_t depth) { setValue(kDepthKey, Value(depth)); }

bool QVIOKitDisplay::isEqual(const QVSystemInfo& other) const {
    return otherIsOfMyKind(other) && stringEquals(other, kDescriptionKey) && stringEquals(other, kManufacturerKey);
}

}  // namespace tov
