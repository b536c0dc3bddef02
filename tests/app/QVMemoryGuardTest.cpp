#include "app/QVMemoryGuard.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <string>
#include <vector>

#include "support/FileWait.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using testing::readFile;
using testing::waitForFile;

class QVMemoryGuardTest : public testing::TemporaryRootTest {
protected:
    QVMemoryGuard guardMeasuring(double bytes) {
        return QVMemoryGuard([bytes] { return bytes; }, [this](double seconds) { sleeps.push_back(seconds); });
    }

    // A program that writes its arguments, one per line, to the file "arguments" beside it.
    std::string writeArgumentRecorder() {
        const std::string script = folder.write("fake-tov",
                                                "#!/bin/sh\n"
                                                "folder=$(dirname \"$0\")\n"
                                                "printf '%s\\n' \"$@\" > \"$folder/arguments.tmp\"\n"
                                                "mv \"$folder/arguments.tmp\" \"$folder/arguments\"\n");
        EXPECT_EQ(::chmod(script.c_str(), 0755), 0);
        return script;
    }

    std::vector<double> sleeps;
};

TEST_F(QVMemoryGuardTest, DefaultThresholdIsOneHundredMebibytes) {
    EXPECT_EQ(guardMeasuring(0).memoryThreshold(), 104857600);
}

TEST_F(QVMemoryGuardTest, ThresholdAboveOneGibibyteIsCapped) {
    QVMemoryGuard guard = guardMeasuring(0);
    guard.setMemoryThreshold(2000000000);
    EXPECT_EQ(guard.memoryThreshold(), 1073741824);
    EXPECT_TRUE(logHas("      DEBUG - Applying memory threshold set to [1073741824]")) << log();
    EXPECT_FALSE(logHas("2000000000"));
}

TEST_F(QVMemoryGuardTest, ThresholdOfExactlyOneGibibyteIsKept) {
    QVMemoryGuard guard = guardMeasuring(0);
    guard.setMemoryThreshold(1073741824);
    EXPECT_EQ(guard.memoryThreshold(), 1073741824);
    guard.setMemoryThreshold(1073741825);
    EXPECT_EQ(guard.memoryThreshold(), 1073741824);
    guard.setMemoryThreshold(5000000);
    EXPECT_EQ(guard.memoryThreshold(), 5000000);
    EXPECT_TRUE(logHas("Applying memory threshold set to [5000000]"));
}

TEST_F(QVMemoryGuardTest, NegativeThresholdIsStoredAsItIsAndNeverExceeded) {
    QVMemoryGuard guard = guardMeasuring(1.8e19);
    guard.setMemoryThreshold(-5);
    EXPECT_EQ(guard.memoryThreshold(), -5);
    EXPECT_TRUE(logHas("Applying memory threshold set to [-5]"));
    EXPECT_FALSE(guard.isBeyondMemoryConsumptionThreshold());
    guard.setMemoryThreshold(-1);
    EXPECT_FALSE(guard.isBeyondMemoryConsumptionThreshold());
    EXPECT_FALSE(logHas("Beyond"));
}

TEST_F(QVMemoryGuardTest, ResidentSizeEqualToTheThresholdIsNotBeyond) {
    QVMemoryGuard guard = guardMeasuring(104857600);
    EXPECT_FALSE(guard.isBeyondMemoryConsumptionThreshold());
    EXPECT_FALSE(logHas("Beyond"));
}

TEST_F(QVMemoryGuardTest, OneByteMoreIsBeyondWithAWarning) {
    QVMemoryGuard guard = guardMeasuring(104857601);
    EXPECT_TRUE(guard.isBeyondMemoryConsumptionThreshold());
    EXPECT_TRUE(logHas("    WARNING - Memory Consumption[104857601] is Beyond Threshold[104857600].")) << log();
}

TEST_F(QVMemoryGuardTest, FractionOfAByteIsCutOff) {
    EXPECT_FALSE(guardMeasuring(104857600.9).isBeyondMemoryConsumptionThreshold());
}

TEST_F(QVMemoryGuardTest, NoMeasureNeverFires) {
    QVMemoryGuard guard = guardMeasuring(0);
    guard.setMemoryThreshold(0);
    EXPECT_FALSE(guard.isBeyondMemoryConsumptionThreshold());
    EXPECT_FALSE(guardMeasuring(std::nan("")).isBeyondMemoryConsumptionThreshold());
    EXPECT_FALSE(guardMeasuring(-3).isBeyondMemoryConsumptionThreshold());
}

TEST_F(QVMemoryGuardTest, TheRealMeasureIsBelowAHugeThreshold) {
    QVMemoryGuard guard;
    guard.setMemoryThreshold(1073741824);
    EXPECT_FALSE(guard.isBeyondMemoryConsumptionThreshold());
    guard.setMemoryThreshold(1);
    EXPECT_TRUE(guard.isBeyondMemoryConsumptionThreshold());
}

TEST_F(QVMemoryGuardTest, SpawnStartsTheExecutableWithReAndTheThresholdThenPauses) {
    const std::string script = writeArgumentRecorder();
    QVMemoryGuard guard = guardMeasuring(0);
    guard.setExecutablePath(script);
    guard.spawnNewAppInstanceWithMemoryThreshold(5000000);
    EXPECT_EQ(sleeps, std::vector<double>{2.0});
    ASSERT_TRUE(waitForFile(folder.file("arguments")));
    EXPECT_EQ(readFile(folder.file("arguments")), "-re\n-mm=5000000\n");
}

TEST_F(QVMemoryGuardTest, SpawnKeepsANegativeThreshold) {
    const std::string script = writeArgumentRecorder();
    QVMemoryGuard guard = guardMeasuring(0);
    guard.setExecutablePath(script);
    guard.spawnNewAppInstanceWithMemoryThreshold(-7);
    ASSERT_TRUE(waitForFile(folder.file("arguments")));
    EXPECT_EQ(readFile(folder.file("arguments")), "-re\n-mm=-7\n");
}

TEST_F(QVMemoryGuardTest, SpawnOfAMissingExecutableIsLoggedAndStillPauses) {
    QVMemoryGuard guard = guardMeasuring(0);
    guard.setExecutablePath(folder.file("no-such-tov"));
    guard.spawnNewAppInstanceWithMemoryThreshold(5000000);
    EXPECT_EQ(sleeps, std::vector<double>{2.0});
    EXPECT_TRUE(logHas("ERROR - Could not start [" + folder.file("no-such-tov") + "] detached")) << log();
}

}  // namespace
}  // namespace tov
