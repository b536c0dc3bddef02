// Every capture folder under tests/fixtures/<platform>/ has its summary table (tov -s)
// checked in beside its expected report ("summary.txt"), made from the same fixed-time
// inventory as that report.

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

constexpr const char* kExpectedSummary = "summary.txt";

std::vector<std::string> fixtureMachines() {
    std::vector<std::string> machines;
    std::error_code error;
    for (const char* platform : {"linux", "macos"}) {
        for (const auto& entry : fs::directory_iterator(fs::path(TOV_TEST_FIXTURES) / platform, error)) {
            if (entry.is_directory()) machines.push_back(std::string(platform) + "/" + entry.path().filename().string());
        }
    }
    std::sort(machines.begin(), machines.end());
    return machines;
}

class FixtureSummaries : public ::testing::TestWithParam<std::string> {};

TEST_P(FixtureSummaries, MachineGivesItsCheckedInSummary) {
    const fs::path machine = fs::path(TOV_TEST_FIXTURES) / GetParam();
    ASSERT_TRUE(fs::is_regular_file(machine / kExpectedSummary)) << "no " << kExpectedSummary << " in " << machine;
    const std::optional<std::string> summary = testing::fixtureSummary(machine.string());
    ASSERT_TRUE(summary) << machine << " is no capture folder";
    EXPECT_EQ(*summary, testing::readFile((machine / kExpectedSummary).string()));
}

std::string machineTestName(const ::testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(RecordedMachines, FixtureSummaries, ::testing::ValuesIn(fixtureMachines()), machineTestName);

}  // namespace
}  // namespace tov
