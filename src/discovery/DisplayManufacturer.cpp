#include "discovery/DisplayManufacturer.h"

#include "common/TextUtils.h"

namespace tov {
namespace {

constexpr std::string_view kAppleVendorId = "610";
constexpr std::string_view kDellVendorId = "10ac";
constexpr std::int64_t kAppleRefreshRate = 60;

}  // namespace

DisplayManufacturer displayManufacturer(std::string_view description, const std::optional<std::string>& vendorId) {
    if (!vendorId || equalsIgnoringCase(*vendorId, kAppleVendorId)) return {"Apple", true};
    if (equalsIgnoringCase(*vendorId, kDellVendorId)) return {"DELL", false};
    return {std::string(description) + "(" + *vendorId + ")", false};
}

std::string displayRefreshText(const DisplayManufacturer& manufacturer, const std::string& refreshText) {
    return manufacturer.refreshAtSixty ? std::to_string(kAppleRefreshRate) : refreshText;
}

std::int64_t displayRefreshRate(const DisplayManufacturer& manufacturer, std::int64_t refreshRate) {
    return manufacturer.refreshAtSixty ? kAppleRefreshRate : refreshRate;
}

}  // namespace tov
