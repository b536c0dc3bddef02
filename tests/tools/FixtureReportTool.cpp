// Prints the report of a capture folder exactly as the fixture tests compute it, so that a
// fixture's expected report can be written (after reading it through) with
//   build/tests/tov_fixture_report tests/fixtures/linux/laptop > .../expected-report.json
// and, with --summary, its summary table (tov -s) likewise:
//   build/tests/tov_fixture_report --summary tests/fixtures/linux/laptop > .../summary.txt

#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "support/FixtureReport.h"

int main(int argc, char** argv) {
    const bool summary = argc == 3 && std::strcmp(argv[1], "--summary") == 0;
    if (argc != 2 && !summary) {
        std::fprintf(stderr, "usage: tov_fixture_report [--summary] CAPTURE_FOLDER\n");
        return 2;
    }
    const char* folder = argv[argc - 1];
    const std::optional<std::string> text =
        summary ? tov::testing::fixtureSummary(folder) : tov::testing::fixtureReport(folder);
    if (!text) {
        std::fprintf(stderr, "tov_fixture_report: %s is no capture folder\n", folder);
        return 1;
    }
    std::fwrite(text->data(), 1, text->size(), stdout);
    // A report document has no final line break of its own; a summary ends with one.
    if (!summary) std::fputs("\n", stdout);
    return 0;
}
