// Prints the report of a capture folder exactly as the fixture tests compute it, so that a
// fixture's expected report can be written (after reading it through) with
//   build/tests/tov_fixture_report tests/fixtures/linux/laptop > .../expected-report.json

#include <cstdio>
#include <optional>
#include <string>

#include "support/FixtureReport.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: tov_fixture_report CAPTURE_FOLDER\n");
        return 2;
    }
    const std::optional<std::string> report = tov::testing::fixtureReport(argv[1]);
    if (!report) {
        std::fprintf(stderr, "tov_fixture_report: %s is no capture folder\n", argv[1]);
        return 1;
    }
    std::fwrite(report->data(), 1, report->size(), stdout);
    std::fputs("\n", stdout);
    return 0;
}
