// Every capture folder under tests/fixtures/<platform>/ is a recorded machine with the
// report it must give checked in beside it ("expected-report.json"). The report is made
// as tov -p -replay makes it, with a fixed scan time; only the time stamp is ignored.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "support/FixtureReport.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

namespace fs = std::filesystem;

constexpr const char* kExpectedReport = "expected-report.json";

std::vector<std::string> fixtureMachines() {
    std::vector<std::string> machines;
    std::error_code error;
    for (const char* platform : {"linux", "macos"}) {
        const fs::path folder = fs::path(TOV_TEST_FIXTURES) / platform;
        for (const auto& entry : fs::directory_iterator(folder, error)) {
            if (entry.is_directory()) machines.push_back(std::string(platform) + "/" + entry.path().filename().string());
        }
    }
    std::sort(machines.begin(), machines.end());
    return machines;
}

class FixtureReports : public ::testing::TestWithParam<std::string> {};

TEST_P(FixtureReports, MachineGivesItsExpectedReport) {
    const fs::path machine = fs::path(TOV_TEST_FIXTURES) / GetParam();
    ASSERT_TRUE(fs::is_regular_file(machine / kExpectedReport)) << "no " << kExpectedReport << " in " << machine;
    const std::optional<std::string> report = testing::fixtureReport(machine.string());
    ASSERT_TRUE(report) << machine << " is no capture folder";
    EXPECT_EQ(testing::withoutCollection(*report),
              testing::withoutCollection(testing::readFile((machine / kExpectedReport).string())));
}

std::string machineTestName(const ::testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(RecordedMachines, FixtureReports, ::testing::ValuesIn(fixtureMachines()), machineTestName);

TEST(FixtureReportsCoverage, SixLinuxMachinesAreRecorded) {
    const std::vector<std::string> machines = fixtureMachines();
    EXPECT_GE(std::count_if(machines.begin(), machines.end(),
                            [](const std::string& machine) { return machine.rfind("linux/", 0) == 0; }),
              6);
}

TEST(FixtureReportsCoverage, FiveMacOSMachinesAreRecorded) {
    const std::vector<std::string> machines = fixtureMachines();
    EXPECT_GE(std::count_if(machines.begin(), machines.end(),
                            [](const std::string& machine) { return machine.rfind("macos/", 0) == 0; }),
              5);
}

}  // namespace
}  // namespace tov
