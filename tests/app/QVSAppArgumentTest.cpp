#include "app/QVSAppArgument.h"

#include <gtest/gtest.h>

#include "app/TovMain.h"

namespace tov {
namespace {

QVSAppArgument parse(std::vector<std::string> arguments) { return QVSAppArgument(std::move(arguments)); }

TEST(QVSAppArgument, TakesEverythingAfterTheProgramPath) {
    const char* argv[] = {"/opt/tov", "-e", "re"};
    EXPECT_EQ(QVSAppArgument(3, argv).arguments(), (std::vector<std::string>{"-e", "re"}));
    EXPECT_TRUE(QVSAppArgument(1, argv).arguments().empty());
    EXPECT_TRUE(QVSAppArgument(0, nullptr).arguments().empty());
}

TEST(QVSAppArgument, NoArgumentsIsTheNormalRunWithDefaults) {
    const QVSAppArgument arguments = parse({});
    EXPECT_FALSE(arguments.isEnvironmentCall());
    EXPECT_FALSE(arguments.isInstallationCall());
    EXPECT_FALSE(arguments.isUninstallationCall());
    EXPECT_FALSE(arguments.containArgumentFlag("forcefullscan"));
    EXPECT_FALSE(arguments.logLevel());
    EXPECT_EQ(memoryThreshold(arguments), 104857600);
}

TEST(QVSAppArgument, ModeSwitchesIgnoreLetterCase) {
    EXPECT_TRUE(parse({"E"}).isEnvironmentCall());
    EXPECT_TRUE(parse({"-E"}).isEnvironmentCall());
    EXPECT_TRUE(parse({"e"}).isEnvironmentCall());
    EXPECT_TRUE(parse({"I"}).isInstallationCall());
    EXPECT_TRUE(parse({"-i"}).isInstallationCall());
    EXPECT_TRUE(parse({"-U"}).isUninstallationCall());
    EXPECT_TRUE(parse({"u"}).isUninstallationCall());
    EXPECT_TRUE(parse({"-ForceFullScan"}).containArgumentFlag("-forcefullscan"));
}

TEST(QVSAppArgument, LongerFormsOfTheSwitchesAreNotAccepted) {
    EXPECT_FALSE(parse({"--e"}).isEnvironmentCall());
    EXPECT_FALSE(parse({"-env"}).isEnvironmentCall());
    EXPECT_FALSE(parse({"--i"}).isInstallationCall());
    EXPECT_FALSE(parse({"-uninstall"}).isUninstallationCall());
}

TEST(QVSAppArgument, LogLevelFromTheSeparateForm) {
    EXPECT_EQ(parse({"-ll", "DEBUG"}).logLevel(), "DEBUG");
    EXPECT_EQ(parse({"LL", "trace"}).logLevel(), "trace");
    EXPECT_EQ(parse({"-e", "-LL", "WARNING"}).logLevel(), "WARNING");
}

TEST(QVSAppArgument, LogLevelFromTheEqualsFormIsCaseSensitive) {
    EXPECT_EQ(parse({"-ll=DEBUG"}).logLevel(), "DEBUG");
    EXPECT_EQ(parse({"ll=ERROR"}).logLevel(), "ERROR");
    EXPECT_EQ(parse({"-ll="}).logLevel(), "");
    EXPECT_FALSE(parse({"-LL=DEBUG"}).logLevel());
    EXPECT_FALSE(parse({"-LL=DEBUG", "TRACE"}).logLevel());
}

TEST(QVSAppArgument, EqualsFormWinsOverAPendingSeparateFlag) {
    EXPECT_EQ(parse({"-ll", "ll=DEBUG"}).logLevel(), "DEBUG");
    EXPECT_EQ(parse({"-ll", "-ll=TRACE"}).logLevel(), "TRACE");
}

TEST(QVSAppArgument, LogLevelFlagAtTheEndGivesNothing) {
    EXPECT_FALSE(parse({"-e", "-ll"}).logLevel());
}

TEST(QVSAppArgument, ValueAfterAnOptionFlag) {
    EXPECT_EQ(parse({"-mm", "5000000"}).findArgumentAfterOptionFlag("-mm"), "5000000");
    EXPECT_EQ(parse({"-MM", "7"}).findArgumentAfterOptionFlag("-mm"), "7");
    EXPECT_EQ(parse({"-mm=42"}).findArgumentAfterOptionFlag("-mm"), "42");
    EXPECT_FALSE(parse({"-e"}).findArgumentAfterOptionFlag("-mm"));
    EXPECT_FALSE(parse({"-mm"}).findArgumentAfterOptionFlag("-mm"));
}

TEST(QVSAppArgument, RepeatedFlagKeepsWaitingForItsValue) {
    EXPECT_EQ(parse({"-mm", "-mm", "5000000"}).findArgumentAfterOptionFlag("-mm"), "5000000");
    EXPECT_EQ(memoryThreshold(parse({"-mm", "-mm", "5000000"})), 5000000);
}

TEST(QVSAppArgument, EqualsFormJoinsEveryPieceAfterTheFirst) {
    EXPECT_EQ(parse({"-mm=100=5"}).findArgumentAfterOptionFlag("-mm"), "1005");
    EXPECT_EQ(parse({"-mm="}).findArgumentAfterOptionFlag("-mm"), "");
}

TEST(QVSAppArgument, PrefixedFormsThatAreNotTheFlagKeepThePendingState) {
    // "-mmx" begins with the flag but has no "=": the pending flag still waits.
    EXPECT_EQ(parse({"-mm", "-mmx", "9"}).findArgumentAfterOptionFlag("-mm"), "9");
    // "-mmx=3" splits, but its first piece is not the flag.
    EXPECT_FALSE(parse({"-mmx=3"}).findArgumentAfterOptionFlag("-mm"));
    EXPECT_EQ(parse({"-mm", "-mmx=3", "8"}).findArgumentAfterOptionFlag("-mm"), "8");
}

TEST(QVSAppArgument, MemoryThresholdDefaultsForZeroMissingOrText) {
    EXPECT_EQ(memoryThreshold(parse({"-mm=0"})), 104857600);
    EXPECT_EQ(memoryThreshold(parse({"-mm=lots"})), 104857600);
    EXPECT_EQ(memoryThreshold(parse({"-mm="})), 104857600);
    EXPECT_EQ(memoryThreshold(parse({"-mm"})), 104857600);
}

TEST(QVSAppArgument, MemoryThresholdIsPassedOnUncappedAndWithItsSign) {
    EXPECT_EQ(memoryThreshold(parse({"-mm=2000000000"})), 2000000000);
    EXPECT_EQ(memoryThreshold(parse({"-mm", "-5"})), -5);
}

TEST(QVSAppArgument, RespawnFlagIsNotTheSkipWaitFlag) {
    EXPECT_FALSE(parse({"-re", "-mm=5"}).containArgumentFlag("re"));
    EXPECT_TRUE(parse({"RE"}).containArgumentFlag("re"));
}

}  // namespace
}  // namespace tov
