// The manual page man/tov.8 against the code: every switch the argument rules accept is
// documented, the page documents no dash switch the program does not have, and the
// constants an administrator relies on (paths, policy keys, defaults, version, header)
// are the ones the code uses.

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "app/InventoryPrinter.h"
#include "app/QVDaemonInstaller.h"
#include "app/QVMemoryGuard.h"
#include "app/QVSAppArgument.h"
#include "app/TovMain.h"
#include "common/QVSPolicy.h"
#include "common/Version.h"
#include "platform/PlatformPaths.h"
#include "report/QVReportOutbox.h"

namespace tov {
namespace {

// A switch as the page names it: the mdoc macro ("Fl" for a switch written with its
// leading "-", "Cm" for a bare word) and the word after it, with an argument vector that
// uses it and the parser's answer that shows it was understood (none when the parser
// only compares whole words, or when the switch belongs to a view not read here).
struct DocumentedSwitch {
    std::string macro;
    std::string word;
    std::vector<std::string> arguments;
    std::function<bool(const QVSAppArgument&)> understood;
};

bool levelIs(const QVSAppArgument& arguments, const std::string& level) {
    return arguments.logLevel() == level;
}

bool folderIs(const QVSAppArgument& arguments, const char* flag, const std::string& folder) {
    return arguments.findArgumentAfterOptionFlag(flag) == folder && InventoryPrinter::isPrintRequest(arguments);
}

// Kept by hand: QVSAppArgument has no list of the switches it knows.
std::vector<DocumentedSwitch> switchesTheProgramAccepts() {
    const auto environment = [](const QVSAppArgument& a) { return a.isEnvironmentCall(); };
    const auto install = [](const QVSAppArgument& a) { return a.isInstallationCall(); };
    const auto uninstall = [](const QVSAppArgument& a) { return a.isUninstallationCall(); };
    const auto print = [](const QVSAppArgument& a) { return a.isPrintCall() && InventoryPrinter::isPrintRequest(a); };
    const auto summary = [](const QVSAppArgument& a) { return a.isSummaryCall(); };
    const auto debugLevel = [](const QVSAppArgument& a) { return levelIs(a, "DEBUG"); };
    const auto threshold = [](const QVSAppArgument& a) { return memoryThreshold(a) == 5000000; };
    const auto capture = [](const QVSAppArgument& a) { return folderIs(a, InventoryPrinter::kCaptureFlag, "/c"); };
    const auto replay = [](const QVSAppArgument& a) { return folderIs(a, InventoryPrinter::kReplayFlag, "/r"); };
    return {
        {"Fl", "e", {"-e"}, environment},
        {"Cm", "e", {"e"}, environment},
        {"Fl", "i", {"-i"}, install},
        {"Cm", "i", {"i"}, install},
        {"Fl", "u", {"-u"}, uninstall},
        {"Cm", "u", {"u"}, uninstall},
        {"Fl", "p", {"-p"}, print},
        {"Cm", "p", {"p"}, print},
        {"Fl", "s", {"-s"}, summary},
        {"Cm", "s", {"s"}, summary},
        {"Cm", "forcefullscan", {"forcefullscan"}, nullptr},
        {"Fl", "forcefullscan", {"-forcefullscan"}, nullptr},
        {"Cm", "re", {"re"}, nullptr},
        {"Fl", "ll", {"-ll", "DEBUG"}, debugLevel},
        {"Fl", "ll=", {"-ll=DEBUG"}, debugLevel},
        {"Cm", "ll", {"ll", "DEBUG"}, debugLevel},
        {"Cm", "ll=", {"ll=DEBUG"}, debugLevel},
        {"Fl", "mm", {"-mm", "5000000"}, threshold},
        {"Fl", "mm=", {"-mm=5000000"}, threshold},
        {"Fl", "capture", {"-p", "-capture", "/c"}, capture},
        {"Fl", "capture=", {"-p", "-capture=/c"}, capture},
        {"Fl", "replay", {"-p", "-replay", "/r"}, replay},
        {"Fl", "replay=", {"-p", "-replay=/r"}, replay},
    };
}

// Dash words the page names that are no switch of the command line: "-re", which the
// memory guard gives the instance it respawns, is described as such.
const std::set<std::string> kDescribedNonSwitches = {"re"};

std::string pageText() {
    std::ifstream page(TOV_MAN_PAGE);
    std::stringstream text;
    text << page.rdbuf();
    return text.str();
}

// The words of every macro line (a line starting with "."), one vector per line.
std::vector<std::vector<std::string>> macroLines(const std::string& text) {
    std::vector<std::vector<std::string>> lines;
    std::istringstream input(text);
    std::string line;
    while (std::getline(input, line)) {
        if (line.empty() || line.front() != '.') continue;
        std::istringstream words(line.substr(1));
        std::vector<std::string> split;
        for (std::string word; words >> word;) split.push_back(word);
        lines.push_back(split);
    }
    return lines;
}

bool pageNames(const std::vector<std::vector<std::string>>& lines, const std::string& macro, const std::string& word) {
    for (const std::vector<std::string>& line : lines) {
        for (std::size_t index = 0; index + 1 < line.size(); ++index) {
            if (line[index] == macro && line[index + 1] == word) return true;
        }
    }
    return false;
}

class ManPage : public ::testing::Test {
protected:
    void SetUp() override {
        text_ = pageText();
        ASSERT_FALSE(text_.empty()) << "cannot read " << TOV_MAN_PAGE;
        lines_ = macroLines(text_);
    }

    bool mentions(const std::string& fragment) const { return text_.find(fragment) != std::string::npos; }

    std::string text_;
    std::vector<std::vector<std::string>> lines_;
};

TEST(ManPageSwitches, EveryListedSwitchIsUnderstoodByTheParser) {
    for (const DocumentedSwitch& documented : switchesTheProgramAccepts()) {
        if (!documented.understood) continue;
        EXPECT_TRUE(documented.understood(QVSAppArgument(documented.arguments)))
            << documented.macro << " " << documented.word;
        // The check itself must not hold for any arguments at all.
        EXPECT_FALSE(documented.understood(QVSAppArgument(std::vector<std::string>{"unknown"})))
            << documented.macro << " " << documented.word;
    }
}

TEST_F(ManPage, NamesEverySwitchTheProgramAccepts) {
    for (const DocumentedSwitch& documented : switchesTheProgramAccepts()) {
        EXPECT_TRUE(pageNames(lines_, documented.macro, documented.word))
            << "the page does not name ." << documented.macro << " " << documented.word;
    }
}

TEST_F(ManPage, NamesNoDashSwitchTheProgramLacks) {
    std::set<std::string> known = kDescribedNonSwitches;
    for (const DocumentedSwitch& documented : switchesTheProgramAccepts()) {
        if (documented.macro == "Fl") known.insert(documented.word);
    }
    for (const std::vector<std::string>& line : lines_) {
        for (std::size_t index = 0; index + 1 < line.size(); ++index) {
            if (line[index] != "Fl") continue;
            EXPECT_TRUE(known.count(line[index + 1])) << "the page names the unknown switch -" << line[index + 1];
        }
    }
}

TEST_F(ManPage, GivesThisPlatformsPaths) {
    EXPECT_TRUE(mentions(platformPaths().componentFolder));
    EXPECT_TRUE(mentions(platformPaths().logsFolder));
    EXPECT_TRUE(mentions(platformPaths().jobFile));
    EXPECT_TRUE(mentions("/tmp/debug_tov"));
    EXPECT_TRUE(mentions(QVDaemonInstaller::kDaemonLabel));
}

TEST_F(ManPage, GivesThePolicyKeysWithTheirDefaults) {
    EXPECT_TRUE(pageNames(lines_, "Cm", QVSPolicy::kFullScanIntervalHoursKey));
    EXPECT_TRUE(pageNames(lines_, "Cm", QVSPolicy::kScanAfterRestartKey));
    EXPECT_TRUE(pageNames(lines_, "Cm", QVSPolicy::kEventDrivenScanKey));
    EXPECT_TRUE(mentions("default " + std::to_string(QVSPolicy::kDefaultFullScanIntervalHours)));
}

TEST_F(ManPage, GivesTheMemoryThresholdsAndTheReportHeader) {
    EXPECT_TRUE(mentions(std::to_string(QVMemoryGuard::kDefaultMemoryThreshold)));
    EXPECT_TRUE(mentions(std::to_string(QVMemoryGuard::kMaximumMemoryThreshold)));
    EXPECT_TRUE(mentions(QVReportOutbox::headerLine(QVScanTypeFull)));
    EXPECT_TRUE(mentions(std::string("Version:") + kTovVersion));
}

}  // namespace
}  // namespace tov
