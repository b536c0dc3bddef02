#include "app/SystemdUnitText.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "app/WholeSeconds.h"

namespace tov {
namespace {

constexpr const char* kLabel = "com.quorvel.keldservice.tov";
constexpr const char* kProgram = "/opt/Quorvel/KELD/Components/TOV/tov";

TEST(SystemdUnitText, TheInstalledUnit) {
    EXPECT_EQ(systemdUnitText(kLabel, kProgram, 60, true),
              "[Unit]\n"
              "Description=com.quorvel.keldservice.tov\n"
              "\n"
              "[Service]\n"
              "ExecStart=\"/opt/Quorvel/KELD/Components/TOV/tov\"\n"
              "Nice=1\n"
              "Restart=always\n"
              "RestartSec=60\n"
              "\n"
              "[Install]\n"
              "WantedBy=multi-user.target\n");
}

TEST(SystemdUnitText, WithoutRunAtLoadThereIsNoInstallSection) {
    EXPECT_EQ(systemdUnitText(kLabel, kProgram, 59.9, false),
              "[Unit]\n"
              "Description=com.quorvel.keldservice.tov\n"
              "\n"
              "[Service]\n"
              "ExecStart=\"/opt/Quorvel/KELD/Components/TOV/tov\"\n"
              "Nice=1\n"
              "Restart=always\n"
              "RestartSec=59\n");
}

TEST(SystemdUnitText, BlanksStayInsideTheQuotes) {
    EXPECT_EQ(systemdExecutableWord("/Library/Application Support/tov"), "\"/Library/Application Support/tov\"");
}

TEST(SystemdUnitText, QuotesAndBackslashesAreEscaped) {
    EXPECT_EQ(systemdExecutableWord("/a\"b\\c"), "\"/a\\\"b\\\\c\"");
}

TEST(SystemdUnitText, PercentSignsAreNoSpecifiers) {
    EXPECT_EQ(systemdExecutableWord("/opt/%n/tov"), "\"/opt/%%n/tov\"");
    EXPECT_NE(systemdUnitText("a%b", kProgram, 60, true).find("Description=a%%b\n"), std::string::npos);
}

TEST(SystemdUnitText, ADollarSignTurnsOffVariableExpansion) {
    EXPECT_EQ(systemdExecutableWord("/opt/$HOME/tov"), ":\"/opt/$HOME/tov\"");
}

TEST(SystemdUnitText, ControlCharactersCannotEndTheLine) {
    EXPECT_EQ(systemdExecutableWord("/opt/a\nb\tc"), "\"/opt/a\\x0ab\\x09c\"");
    const std::string text = systemdUnitText("a\nRestart=no", "/opt/x\n[Install]", 60, false);
    EXPECT_EQ(text.find("\nRestart=no"), std::string::npos) << text;
    EXPECT_EQ(text.find("\n[Install]"), std::string::npos) << text;
}

TEST(WholeSeconds, TruncatesAndClamps) {
    EXPECT_EQ(wholeSeconds(59.9), 59u);
    EXPECT_EQ(wholeSeconds(60), 60u);
    EXPECT_EQ(wholeSeconds(-1), 0u);
    EXPECT_EQ(wholeSeconds(std::numeric_limits<double>::quiet_NaN()), 0u);
    EXPECT_EQ(wholeSeconds(1e300), std::numeric_limits<unsigned long>::max());
}

}  // namespace
}  // namespace tov
