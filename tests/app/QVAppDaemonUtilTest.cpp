#include "app/QVAppDaemonUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/QVSCommand.h"
#include "platform/ProcessId.h"

namespace tov {
namespace {

constexpr long kOwnPid = 4242;

std::int64_t countIn(const std::string& output) {
    return QVAppDaemonUtil::instanceCountInProcessList(output, kOwnPid);
}

TEST(QVAppDaemonUtilInstanceCount, EmptyOutputCountsNothing) {
    EXPECT_EQ(countIn(""), 0);
}

TEST(QVAppDaemonUtilInstanceCount, OtherInstancesAreCounted) {
    EXPECT_EQ(countIn("  812 ?        Ss     0:01 tov\n 9001 ?        S      0:00 tovsleeper\n"), 2);
}

TEST(QVAppDaemonUtilInstanceCount, ExitingInstanceInParenthesesIsNotCounted) {
    EXPECT_EQ(countIn("  812 ?        Z      0:00 (tov)\n"), 0);
    // Only the exact name with its line feed marks an exiting instance.
    EXPECT_EQ(countIn("  812 ?        Z      0:00 (tovsleeper)\n"), 1);
}

TEST(QVAppDaemonUtilInstanceCount, OwnLineIsNotCounted) {
    EXPECT_EQ(countIn(" 4242 pts/0    S+     0:00 tov_tests\n"), 0);
    EXPECT_EQ(countIn(" 4242 pts/0    S+     0:00 tov_tests\n 4243 ?  S 0:00 tov\n"), 1);
}

TEST(QVAppDaemonUtilInstanceCount, LineWhoseIdReadsAsZeroIsNotCounted) {
    EXPECT_EQ(countIn("    0 ?        S      0:00 tov\n"), 0);
    EXPECT_EQ(countIn("PID ?        S      0:00 tov\n"), 0);
    EXPECT_EQ(countIn("\n\n"), 0);
    EXPECT_EQ(countIn("   \t \n"), 0);
}

TEST(QVAppDaemonUtilInstanceCount, TabsSeparateLikeBlanks) {
    EXPECT_EQ(countIn("\t812\t?\tS\t0:00\ttov\n"), 1);
    EXPECT_EQ(countIn("\t812\t?\tZ\t0:00\t(tov)\n"), 0);
    EXPECT_EQ(countIn("\t4242\t?\tS\t0:00\ttov\n"), 0);
}

TEST(QVAppDaemonUtilInstanceCount, LastLineWithoutLineFeedIsRead) {
    EXPECT_EQ(countIn("  812 ?        S      0:00 tov"), 1);
    // Without its line feed the parenthesised name is not the exiting-instance mark.
    EXPECT_EQ(countIn("  812 ?        Z      0:00 (tov)"), 1);
}

TEST(QVAppDaemonUtilInstanceCount, LongLineIsReadInPiecesOf1023Bytes) {
    // The first 1023 bytes count as one line, the rest as the next.
    const std::string longName(2000, 'x');
    EXPECT_EQ(countIn("  812 ? S 0:00 tov" + longName + "\n"), 1);
    // A rest that begins with a number counts as a line of its own.
    const std::string head = "  812 ? S 0:00 tov";
    const std::string filler(1023 - head.size(), 'y');
    EXPECT_EQ(countIn(head + filler + " 913 ? S 0:00 tov\n"), 2);
    // Cut exactly before the line feed: the line feed alone is the next line.
    EXPECT_EQ(countIn(head + filler + "\n"), 1);
    // The rest of a long own line that reads as another process id is counted.
    const std::string ownHead = " 4242 ? S 0:00 tov";
    EXPECT_EQ(countIn(ownHead + std::string(1023 - ownHead.size(), 'z') + "777 ? S 0:00 tov\n"), 1);
}

TEST(QVAppDaemonUtilInstanceCount, WeirdTextIsHandledLineByLine) {
    EXPECT_EQ(countIn(std::string("  812 ? S 0:00 t\0v\n", 19) + "  813 ? S 0:00 tov\n"), 2);
    EXPECT_EQ(countIn("99999999999999999999999 ? S 0:00 tov\n"), 1);
    EXPECT_EQ(countIn("-5 ? S 0:00 tov\n"), 1);
}

constexpr std::uint64_t kRam = 16ULL * 1024 * 1024 * 1024;

TEST(QVAppDaemonUtilMemoryFallback, OwnLinePercentageOfRam) {
    const std::string output =
        "root       812  0.0  0.3 123456  9876 ?        Ss   10:00   0:01 /opt/tov\n"
        "root      4242  1.5  2.5 223456 19876 pts/0    S+   10:01   0:00 ./tov_tests\n";
    EXPECT_DOUBLE_EQ(QVAppDaemonUtil::memoryFromProcessList(output, kOwnPid, kRam), 0.025 * static_cast<double>(kRam));
}

TEST(QVAppDaemonUtilMemoryFallback, NoOwnLineGivesZero) {
    const std::string output = "root       812  0.0  0.3 123456  9876 ?        Ss   10:00   0:01 /opt/tov\n";
    EXPECT_EQ(QVAppDaemonUtil::memoryFromProcessList(output, kOwnPid, kRam), 0);
    EXPECT_EQ(QVAppDaemonUtil::memoryFromProcessList("", kOwnPid, kRam), 0);
}

TEST(QVAppDaemonUtilMemoryFallback, FirstMatchingLineWins) {
    const std::string output =
        "root\t4242\t0.0\t1.0\t1 1 ? S 10:00 0:00 tov\n"
        "root  4242  0.0  7.0  1 1 ? S 10:00 0:00 tov\n";
    EXPECT_DOUBLE_EQ(QVAppDaemonUtil::memoryFromProcessList(output, kOwnPid, 1000), 10);
}

TEST(QVAppDaemonUtilMemoryFallback, ShortOrZeroLinesAreSkipped) {
    const std::string output =
        "root 4242 0.0\n"
        "root 0 0.0 9.0 tov\n"
        "root 4242 0.0 50 tov";
    EXPECT_EQ(QVAppDaemonUtil::memoryFromProcessList(output, 0, 1000), 0);
    EXPECT_DOUBLE_EQ(QVAppDaemonUtil::memoryFromProcessList(output, kOwnPid, 1000), 500);
}

TEST(QVAppDaemonUtilMemoryFallback, PercentageThatIsNoNumberGivesZero) {
    EXPECT_EQ(QVAppDaemonUtil::memoryFromProcessList("root 4242 0.0 lots tov\n", kOwnPid, 1000), 0);
}

TEST(QVAppDaemonUtilMemoryFallback, NegativeOrEndlessPercentageGivesZero) {
    EXPECT_EQ(QVAppDaemonUtil::memoryFromProcessList("root 4242 1.5 -021 tov\n", kOwnPid, 1000), 0);
    EXPECT_EQ(QVAppDaemonUtil::memoryFromProcessList("root 4242 1.5 inf tov\n", kOwnPid, 1000), 0);
    EXPECT_EQ(QVAppDaemonUtil::memoryFromProcessList("root 4242 1.5 nan tov\n", kOwnPid, 1000), 0);
    EXPECT_EQ(QVAppDaemonUtil::memoryFromProcessList("root 4242 1.5 1e999 tov\n", kOwnPid, 1000), 0);
}

TEST(QVAppDaemonUtilMemory, OwnMemoryAndRamAreMeasured) {
    const double own = QVAppDaemonUtil::memoryConsumptionOfCurrentProcess();
    EXPECT_GT(own, 0);
    EXPECT_LT(own, static_cast<double>(QVAppDaemonUtil::discoverRam()));
}

// The fallback on the real "ps aux" list agrees with the kernel's measure to the one
// decimal of a percentage that ps prints. Enough memory is touched that the percentage
// is not 0.0.
TEST(QVAppDaemonUtilMemory, FallbackOnTheRealProcessListAgreesWithTheKernel) {
    const std::uint64_t ram = QVAppDaemonUtil::discoverRam();
    ASSERT_GT(ram, 0u);
    const std::size_t touched = std::min<std::uint64_t>(ram / 50, 512ULL * 1024 * 1024);
    std::vector<char> block(touched, 1);
    const std::optional<std::string> list = QVSCommand::run("ps aux | grep -i tov");
    ASSERT_TRUE(list.has_value());
    const double fromList = QVAppDaemonUtil::memoryFromProcessList(*list, currentProcessId(), ram);
    const double fromKernel = QVAppDaemonUtil::memoryConsumptionOfCurrentProcess();
    EXPECT_GT(fromList, 0) << *list;
    EXPECT_NEAR(fromList, fromKernel, static_cast<double>(ram) * 0.001 + 16.0 * 1024 * 1024) << *list;
    EXPECT_EQ(block[touched - 1], 1);
}

TEST(QVAppDaemonUtilComponents, FirstAndLastNonEmpty) {
    const std::vector<std::string> pieces{"", "one", "", "two", "three", ""};
    EXPECT_EQ(QVAppDaemonUtil::firstNonEmptyComponentOfArray(pieces), "one");
    EXPECT_EQ(QVAppDaemonUtil::lastNonEmptyComponentOfArray(pieces), "three");
    EXPECT_EQ(QVAppDaemonUtil::firstNonEmptyComponentOfArray({}), std::nullopt);
    EXPECT_EQ(QVAppDaemonUtil::lastNonEmptyComponentOfArray({}), std::nullopt);
    EXPECT_EQ(QVAppDaemonUtil::firstNonEmptyComponentOfArray({"", ""}), std::nullopt);
    EXPECT_EQ(QVAppDaemonUtil::lastNonEmptyComponentOfArray({"", ""}), std::nullopt);
    EXPECT_EQ(QVAppDaemonUtil::firstNonEmptyComponentOfArray({" "}), " ");
}

constexpr const char* kLabel = "com.quorvel.keldservice.tov";

TEST(QVAppDaemonUtilListOutput, InstalledWhenTheLastFieldBeginsWithTheName) {
    EXPECT_TRUE(QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(
        kLabel, "812\t0\tcom.quorvel.keldservice.tov\n"));
    EXPECT_TRUE(QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(
        kLabel, "-\t0\tcom.quorvel.keldservice.tov\n"));
    EXPECT_TRUE(QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(
        kLabel, "-  0  com.quorvel.keldservice.tov.helper  "));
}

TEST(QVAppDaemonUtilListOutput, NotInstalledWithFewerThanThreePiecesOrAnotherName) {
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(kLabel, ""));
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(kLabel, kLabel));
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(
        kLabel, "0 com.quorvel.keldservice.tov\n"));
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(
        kLabel, "812\t0\tx.com.quorvel.keldservice.tov\n"));
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(
        kLabel, "812\t0\tcom.quorvel.keldservice\n"));
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput("", "812\t0\tanything\n"));
}

TEST(QVAppDaemonUtilListOutput, RunningNeedsAProcessIdInTheFirstField) {
    const std::string running = "812\t0\tcom.quorvel.keldservice.tov\n";
    EXPECT_TRUE(QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(kLabel, 812, running));
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(kLabel, 813, running));
    EXPECT_TRUE(QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(kLabel, 0, running));
    EXPECT_TRUE(QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(kLabel, -1, running));
    EXPECT_TRUE(QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(kLabel, 812, "  812 0 " + std::string(kLabel)));
}

TEST(QVAppDaemonUtilListOutput, NotRunningWhenListedWithADash) {
    const std::string stopped = "-\t0\tcom.quorvel.keldservice.tov\n";
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(kLabel, 0, stopped));
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(kLabel, 812, stopped));
}

TEST(QVAppDaemonUtilListOutput, NotRunningWhenNotListed) {
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(kLabel, 0, "812 0"));
    EXPECT_FALSE(QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(kLabel, 0, "812 0 com.other\n"));
}

}  // namespace
}  // namespace tov
