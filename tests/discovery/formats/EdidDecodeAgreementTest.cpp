// Our reading of every EDID of the capture fixtures, compared with edid-decode's, an
// independent reader: the maker's letters, the product name and the first detailed timing.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "discovery/formats/Edid.h"
#include "support/ChildProcess.h"

namespace tov {
namespace {

namespace fs = std::filesystem;

constexpr const char* kEdidDecode = "/usr/bin/edid-decode";

struct DecodedEdid {
    std::string maker;
    std::optional<std::string> name;
    std::optional<DisplayMode> firstTiming;
};

std::optional<std::string> firstMatch(const std::string& text, const std::regex& pattern, int group = 1) {
    std::smatch match;
    if (!std::regex_search(text, match, pattern)) return std::nullopt;
    return match[group].str();
}

DecodedEdid decodedFrom(const std::string& output) {
    DecodedEdid decoded;
    decoded.maker = firstMatch(output, std::regex(R"(Manufacturer: ([A-Z@]{3}))")).value_or("");
    decoded.name = firstMatch(output, std::regex(R"(Display Product Name: '([^']*)')"));
    std::smatch timing;
    if (std::regex_search(output, timing, std::regex(R"(DTD 1:\s+(\d+)x(\d+)\S*\s+([0-9.]+) Hz)"))) {
        decoded.firstTiming = DisplayMode{std::stoll(timing[1]), std::stoll(timing[2]),
                                          std::llround(std::stod(timing[3]))};
    }
    return decoded;
}

// The vendor id text of three maker letters, as the EDID packs them.
std::string vendorIdOfMaker(const std::string& letters) {
    unsigned value = 0;
    for (const char letter : letters) value = value << 5 | static_cast<unsigned>(letter - '@');
    char text[8];
    std::snprintf(text, sizeof text, "%x", value);
    return text;
}

std::vector<fs::path> fixtureEdids() {
    std::vector<fs::path> edids;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(fs::path(TOV_TEST_FIXTURES) / "linux")) {
        // Links are not followed: the fixtures hold link loops on purpose.
        if (entry.is_symlink() || entry.path().filename() != "edid") continue;
        std::error_code error;
        if (entry.is_regular_file(error) && entry.file_size(error) > 0) {
            edids.push_back(entry.path());
        }
    }
    return edids;
}

std::string bytesOf(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

testing::ChildResult edidDecode(const fs::path& path) {
    return testing::runInChild([&path] { return testing::executeProgram(kEdidDecode, {path.string()}); });
}

TEST(EdidDecodeAgreement, EveryFixtureEdidReadsAsEdidDecodeReadsIt) {
    if (!fs::exists(kEdidDecode)) GTEST_SKIP() << "edid-decode is not installed (scripts/install-deps.sh)";
    int compared = 0;
    int rejected = 0;
    for (const fs::path& path : fixtureEdids()) {
        SCOPED_TRACE(path.string());
        const testing::ChildResult result = edidDecode(path);
        const std::optional<Edid> edid = parseEdid(bytesOf(path));
        if (!edid) {
            // What we refuse, edid-decode finds damaged too.
            EXPECT_TRUE(result.exitCode != 0 || result.output.find("(should be") != std::string::npos);
            ++rejected;
            continue;
        }
        const DecodedEdid decoded = decodedFrom(result.output);
        EXPECT_EQ(edid->vendorId, vendorIdOfMaker(decoded.maker));
        EXPECT_EQ(edid->monitorName, decoded.name);
        EXPECT_EQ(edid->firstDetailedTiming, decoded.firstTiming);
        ++compared;
    }
    EXPECT_GE(compared, 8);
    EXPECT_GE(rejected, 2);
}

}  // namespace
}  // namespace tov
