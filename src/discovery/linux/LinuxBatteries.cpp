#include "discovery/linux/LinuxBatteries.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/PathWalk.h"
#include "discovery/linux/LinuxVolumeLabel.h"
#include "model/QVIOKitBattery.h"

namespace tov {
namespace {

constexpr const char* kPowerSupplyFolder = "/sys/class/power_supply";
constexpr std::uint64_t kAttributeReadLimit = 4096;
constexpr std::size_t kMaximumSupplies = 256;
constexpr std::size_t kMaximumTextBytes = 255;

constexpr std::int64_t kMaximumPercent = 100;
// Energy (µWh), charge (µAh), power (µW) and current (µA) beyond 10^10, ten kilowatt
// hours and the like, are no battery's.
constexpr std::int64_t kMaximumMicroUnits = 10'000'000'000;
// A run time beyond a week is no battery's either.
constexpr std::int64_t kMaximumMinutes = 7 * 24 * 60;
constexpr std::int64_t kMaximumSeconds = kMaximumMinutes * 60;

struct Supply {
    std::string name;  // the folder's name ("BAT0")
    std::string path;  // "/sys/class/power_supply/BAT0"
};

std::optional<std::string> textAttribute(SystemSource& source, const Supply& supply, const char* attribute) {
    const std::optional<std::string> text = source.readFile(childPath(supply.path, attribute), kAttributeReadLimit);
    if (!text) return std::nullopt;
    return trimWhitespaceAndNewlines(*text);
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    if (text.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return number;
}

enum class Sign { Positive, Magnitude };

// A numeric attribute within 0..largest; a missing file is just missing, anything else
// unusable is logged. With Sign::Magnitude a negative number counts by its magnitude.
std::optional<std::int64_t> measurement(SystemSource& source, const Supply& supply, const char* attribute,
                                        std::int64_t largest, Sign sign = Sign::Positive) {
    const std::optional<std::string> text = textAttribute(source, supply, attribute);
    if (!text) return std::nullopt;
    std::optional<std::int64_t> number = parseInteger(*text);
    if (number && *number < 0 && sign == Sign::Magnitude && *number >= -largest) number = -*number;
    if (!number || *number < 0 || *number > largest) {
        QVSLogger::debug("The battery %s attribute %s is left out: it is empty, negative, no number or too large.",
                         supply.name.c_str(), attribute);
        return std::nullopt;
    }
    return number;
}

// numerator ÷ denominator × factor, when both are known and the denominator is not 0.
std::optional<std::int64_t> ratio(std::optional<std::int64_t> numerator, std::optional<std::int64_t> denominator,
                                  std::int64_t factor) {
    if (!numerator || !denominator || *denominator == 0) return std::nullopt;
    return *numerator * factor / *denominator;
}

float capacityOf(SystemSource& source, const Supply& supply) {
    if (const auto percent = measurement(source, supply, "capacity", kMaximumPercent)) {
        return static_cast<float>(*percent);
    }
    std::optional<std::int64_t> computed =
        ratio(measurement(source, supply, "energy_now", kMaximumMicroUnits),
              measurement(source, supply, "energy_full", kMaximumMicroUnits), kMaximumPercent);
    if (!computed) {
        computed = ratio(measurement(source, supply, "charge_now", kMaximumMicroUnits),
                         measurement(source, supply, "charge_full", kMaximumMicroUnits), kMaximumPercent);
    }
    // A battery may hold a little more than its last full charge: it is full.
    return computed ? static_cast<float>(std::min(*computed, kMaximumPercent)) : 0.0f;
}

// A computed run time, when it is one a battery can have.
std::optional<std::int64_t> plausibleMinutes(const Supply& supply, std::optional<std::int64_t> minutes,
                                             const char* basis) {
    if (!minutes || *minutes <= kMaximumMinutes) return minutes;
    QVSLogger::debug("The battery %s run time from %s is left out: %lld minutes is too long.", supply.name.c_str(),
                     basis, static_cast<long long>(*minutes));
    return std::nullopt;
}

std::int64_t minutesToEmpty(SystemSource& source, const Supply& supply) {
    if (textAttribute(source, supply, "status") != "Discharging") return 0;
    if (const auto seconds = measurement(source, supply, "time_to_empty_now", kMaximumSeconds)) return *seconds / 60;
    const auto fromEnergy = plausibleMinutes(supply,
                                             ratio(measurement(source, supply, "energy_now", kMaximumMicroUnits),
                                                   measurement(source, supply, "power_now", kMaximumMicroUnits), 60),
                                             "energy_now and power_now");
    if (fromEnergy) return *fromEnergy;
    const auto fromCharge = plausibleMinutes(
        supply,
        ratio(measurement(source, supply, "charge_now", kMaximumMicroUnits),
              measurement(source, supply, "current_now", kMaximumMicroUnits, Sign::Magnitude), 60),
        "charge_now and current_now");
    return fromCharge.value_or(0);
}

std::string reportable(std::string_view text) { return reportableText(text, kMaximumTextBytes); }

std::string nameOf(SystemSource& source, const Supply& supply) {
    std::string model = reportable(textAttribute(source, supply, "model_name").value_or(""));
    return model.empty() ? reportable(supply.name) : model;
}

// A battery of the machine: type "Battery", scope other than "Device".
bool isMachineBattery(SystemSource& source, const Supply& supply) {
    if (textAttribute(source, supply, "type") != "Battery") return false;
    return textAttribute(source, supply, "scope") != "Device";
}

std::shared_ptr<QVIOKitBattery> batteryOf(SystemSource& source, const Supply& supply) {
    auto battery = QVIOKitBattery::ioKitBattery();
    battery->setName(nameOf(source, supply));
    battery->setSerialNo(reportable(textAttribute(source, supply, "serial_number").value_or("")));
    battery->setCapacity(capacityOf(source, supply));
    battery->setEstimatedRunTime(minutesToEmpty(source, supply));
    return battery;
}

std::vector<Supply> suppliesOf(SystemSource& source) {
    const std::optional<std::vector<std::string>> names = source.listFolder(kPowerSupplyFolder);
    if (!names) {
        QVSLogger::debug("No batteries: %s cannot be listed.", kPowerSupplyFolder);
        return {};
    }
    std::vector<Supply> supplies;
    for (std::size_t index = 0; index < names->size() && index < kMaximumSupplies; ++index) {
        supplies.push_back({(*names)[index], childPath(kPowerSupplyFolder, (*names)[index])});
    }
    return supplies;
}

}  // namespace

ArrayRef discoverLinuxBatteries(SystemSource& source) {
    std::vector<std::shared_ptr<QVIOKitBattery>> batteries;
    for (const Supply& supply : suppliesOf(source)) {
        if (isMachineBattery(source, supply)) batteries.push_back(batteryOf(source, supply));
    }
    return equalRecordsOnce(batteries);
}

}  // namespace tov
