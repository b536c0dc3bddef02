#include "discovery/linux/LinuxBatteries.h"

#include <gtest/gtest.h>

#include <map>

#include "common/QVSLogger.h"
#include "model/QVIOKitBattery.h"
#include "support/TemporaryRootTest.h"
#include "support/MemorySystemSource.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::MemorySystemSource;
using Attributes = std::map<std::string, std::string>;

class LinuxBatteriesTest : public testing::TemporaryRootTest {
protected:

    // A supply as the kernel lays it out: a link in the class folder to its device folder,
    // each attribute a file holding its value and a line end.
    void supply(const std::string& name, const Attributes& attributes) {
        const std::string device = "/sys/devices/LNXSYSTM:00/LNXSYBUS:00/PNP0C0A:00/power_supply/" + name;
        source.link("/sys/class/power_supply/" + name, "../../devices/LNXSYSTM:00/LNXSYBUS:00/PNP0C0A:00/power_supply/" + name);
        for (const auto& [attribute, value] : attributes) source.file(device + "/" + attribute, value + "\n");
        source.folder(device);
    }

    std::vector<std::shared_ptr<QVIOKitBattery>> batteries() {
        std::vector<std::shared_ptr<QVIOKitBattery>> found;
        const ArrayRef array = discoverLinuxBatteries(source);
        for (const Value& value : *array) {
            found.push_back(std::dynamic_pointer_cast<QVIOKitBattery>(value.record()));
        }
        return found;
    }

    std::shared_ptr<QVIOKitBattery> onlyBattery() {
        const auto found = batteries();
        EXPECT_EQ(found.size(), 1u);
        return found.empty() ? QVIOKitBattery::ioKitBattery() : found.front();
    }

    MemorySystemSource source;
};

const Attributes kEnergyForm{{"type", "Battery"},        {"status", "Discharging"},   {"model_name", "5B10W51827"},
                             {"serial_number", " 4242"}, {"energy_now", "30000000"},  {"energy_full", "60000000"},
                             {"power_now", "12000000"},  {"capacity", "49"},          {"scope", "System"}};

const Attributes kChargeForm{{"type", "Battery"},       {"status", "Discharging"},  {"model_name", "bq20z451"},
                             {"serial_number", "SN 77"}, {"charge_now", "3000000"}, {"charge_full", "4000000"},
                             {"current_now", "1500000"}};

TEST_F(LinuxBatteriesTest, EnergyFormGivesNameSerialCapacityAndMinutesToEmpty) {
    supply("BAT0", kEnergyForm);
    const auto battery = onlyBattery();
    EXPECT_EQ(battery->name(), "5B10W51827");
    EXPECT_EQ(battery->serialNo(), "4242");
    EXPECT_EQ(battery->capacity(), 49.0f);
    // 30 Wh at 12 W: two and a half hours.
    EXPECT_EQ(battery->estimatedRunTime(), 150);
}

TEST_F(LinuxBatteriesTest, ChargeFormGivesMinutesFromChargeAndCurrent) {
    supply("BAT1", kChargeForm);
    const auto battery = onlyBattery();
    EXPECT_EQ(battery->name(), "bq20z451");
    EXPECT_EQ(battery->serialNo(), "SN 77");
    // No capacity file: 3 Ah of 4 Ah.
    EXPECT_EQ(battery->capacity(), 75.0f);
    EXPECT_EQ(battery->estimatedRunTime(), 120);
}

TEST_F(LinuxBatteriesTest, NegativeCurrentWhileDischargingCountsByItsMagnitude) {
    Attributes attributes = kChargeForm;
    attributes["current_now"] = "-1500000";
    supply("CMB0", attributes);
    EXPECT_EQ(onlyBattery()->estimatedRunTime(), 120);
}

TEST_F(LinuxBatteriesTest, TimeToEmptyComesFirstInSecondsTurnedIntoMinutes) {
    Attributes attributes = kEnergyForm;
    attributes["time_to_empty_now"] = "5430";
    supply("BAT0", attributes);
    EXPECT_EQ(onlyBattery()->estimatedRunTime(), 90);
}

TEST_F(LinuxBatteriesTest, NotDischargingGivesNoRunTime) {
    for (const char* status : {"Charging", "Full", "Not charging", "Unknown"}) {
        Attributes attributes = kEnergyForm;
        attributes["status"] = status;
        attributes["time_to_empty_now"] = "5430";
        MemorySystemSource fresh;
        source = fresh;
        supply("BAT0", attributes);
        EXPECT_EQ(onlyBattery()->estimatedRunTime(), 0) << status;
        EXPECT_EQ(onlyBattery()->capacity(), 49.0f) << status;
    }
}

TEST_F(LinuxBatteriesTest, CapacityFromEnergyWhenTheFileIsMissingAndFullAtMost) {
    Attributes attributes = kEnergyForm;
    attributes.erase("capacity");
    attributes["energy_full"] = "40000000";
    supply("BAT0", attributes);
    EXPECT_EQ(onlyBattery()->capacity(), 75.0f);

    source = MemorySystemSource();
    attributes["energy_now"] = "41000000";
    supply("BAT0", attributes);
    EXPECT_EQ(onlyBattery()->capacity(), 100.0f);
}

TEST_F(LinuxBatteriesTest, MissingModelNameGivesTheSupplyNameAndNothingElseKnownGivesZeros) {
    supply("BAT1", {{"type", "Battery"}, {"status", "Discharging"}});
    const auto battery = onlyBattery();
    EXPECT_EQ(battery->name(), "BAT1");
    EXPECT_EQ(battery->serialNo(), "");
    EXPECT_EQ(battery->capacity(), 0.0f);
    EXPECT_EQ(battery->estimatedRunTime(), 0);
}

TEST_F(LinuxBatteriesTest, EmptyModelNameAlsoGivesTheSupplyName) {
    Attributes attributes = kEnergyForm;
    attributes["model_name"] = "  ";
    supply("BAT0", attributes);
    EXPECT_EQ(onlyBattery()->name(), "BAT0");
}

TEST_F(LinuxBatteriesTest, EmptyNegativeNonNumericAndHugeAttributesCountAsMissing) {
    supply("BAT0", {{"type", "Battery"},
                    {"status", "Discharging"},
                    {"capacity", "250"},
                    {"energy_now", ""},
                    {"energy_full", "-5"},
                    {"charge_now", "lots"},
                    {"charge_full", "4000000"},
                    {"time_to_empty_now", "99999999999"},
                    {"power_now", "12000000"},
                    {"current_now", "1500000"}});
    const auto battery = onlyBattery();
    EXPECT_EQ(battery->capacity(), 0.0f);
    EXPECT_EQ(battery->estimatedRunTime(), 0);
    const std::string logged = log();
    for (const char* attribute : {"capacity", "energy_now", "energy_full", "charge_now", "time_to_empty_now"}) {
        EXPECT_NE(logged.find(std::string("The battery BAT0 attribute ") + attribute + " is left out"), std::string::npos)
            << attribute << "\n" << logged;
    }
}

TEST_F(LinuxBatteriesTest, AFallbackIsTakenWhenAnEarlierSourceIsUnusable) {
    Attributes attributes = kEnergyForm;
    attributes["capacity"] = "-1";
    attributes["time_to_empty_now"] = "";
    supply("BAT0", attributes);
    const auto battery = onlyBattery();
    EXPECT_EQ(battery->capacity(), 50.0f);
    EXPECT_EQ(battery->estimatedRunTime(), 150);
}

TEST_F(LinuxBatteriesTest, ARunTimeOfMoreThanAWeekIsNoBatterysAndIsLogged) {
    Attributes attributes = kEnergyForm;
    attributes["power_now"] = "1";
    supply("BAT0", attributes);
    EXPECT_EQ(onlyBattery()->estimatedRunTime(), 0);
    EXPECT_NE(log().find("run time from energy_now and power_now is left out"), std::string::npos) << log();
}

TEST_F(LinuxBatteriesTest, ZeroPowerFallsBackToChargeAndCurrent) {
    Attributes attributes = kEnergyForm;
    attributes["power_now"] = "0";
    attributes["charge_now"] = "2000000";
    attributes["current_now"] = "1000000";
    supply("BAT0", attributes);
    EXPECT_EQ(onlyBattery()->estimatedRunTime(), 120);
}

TEST_F(LinuxBatteriesTest, PeripheralMainsAndUsbSuppliesAreNoBatteriesOfTheMachine) {
    supply("BAT0", kEnergyForm);
    Attributes mouse = kEnergyForm;
    mouse["scope"] = "Device";
    mouse["model_name"] = "MX Anywhere 3";
    supply("hidpp_battery_0", mouse);
    supply("AC", {{"type", "Mains"}, {"online", "1"}});
    supply("ucsi-source-psy-USBC000:001", {{"type", "USB"}, {"scope", "System"}, {"online", "1"}});
    supply("odd", {{"status", "Discharging"}});
    const auto found = batteries();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0]->name(), "5B10W51827");
}

TEST_F(LinuxBatteriesTest, SerialsKeepBlanksInsideAndLoseControlCharacters) {
    Attributes attributes = kEnergyForm;
    attributes["serial_number"] = "\t 12 34\x01\x1b 56  ";
    supply("BAT0", attributes);
    EXPECT_EQ(onlyBattery()->serialNo(), "12 34 56");
}

TEST_F(LinuxBatteriesTest, EqualBatteriesAreReportedOnce) {
    supply("BAT0", kEnergyForm);
    supply("BAT1", kEnergyForm);
    EXPECT_EQ(batteries().size(), 1u);
    Attributes second = kEnergyForm;
    second["serial_number"] = "4243";
    supply("BAT1", second);
    EXPECT_EQ(batteries().size(), 2u);
}

TEST_F(LinuxBatteriesTest, NoPowerSupplyFolderGivesNoBatteries) {
    EXPECT_TRUE(discoverLinuxBatteries(source)->empty());
    EXPECT_NE(log().find("No batteries: /sys/class/power_supply cannot be listed."), std::string::npos);
}

}  // namespace
}  // namespace tov
