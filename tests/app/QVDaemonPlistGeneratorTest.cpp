#include "app/QVDaemonPlistGenerator.h"

#include <gtest/gtest.h>

#include <string>

namespace tov {
namespace {

const std::string kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n"
    "<dict>\n"
    "\t<key>Label</key>\n"
    "\t<string>com.quorvel.keldservice.tov</string>\n"
    "\t<key>ProgramArguments</key>\n"
    "\t<array>\n"
    "\t\t<string>/Library/Application Support/Quorvel/KELD/Components/TOV/tov</string>\n"
    "\t</array>\n"
    "\t<key>Nice</key>\n"
    "\t<integer>1</integer>\n";
const std::string kRunAtLoad =
    "\t<key>RunAtLoad</key>\n"
    "\t<true/>\n";

std::string tail(const std::string& seconds) {
    return "\t<key>StartInterval</key>\n"
           "\t<integer>" +
           seconds +
           "</integer>\n"
           "</dict>\n"
           "</plist>\n";
}

TEST(QVDaemonPlistGenerator, TheInstalledJobByteForByte) {
    EXPECT_EQ(QVDaemonPlistGenerator::generatePlistWithExecutionInterval(60, true), kHead + kRunAtLoad + tail("60"));
}

TEST(QVDaemonPlistGenerator, WithoutRunAtLoadTheKeyAndItsValueAreLeftOut) {
    EXPECT_EQ(QVDaemonPlistGenerator::generatePlistWithExecutionInterval(60, false), kHead + tail("60"));
}

TEST(QVDaemonPlistGenerator, TheIntervalIsTruncated) {
    EXPECT_EQ(QVDaemonPlistGenerator::generatePlistWithExecutionInterval(59.9, true), kHead + kRunAtLoad + tail("59"));
    EXPECT_EQ(QVDaemonPlistGenerator::generatePlistWithExecutionInterval(0.5, false), kHead + tail("0"));
}

TEST(QVDaemonPlistGenerator, ANegativeIntervalIsZero) {
    EXPECT_EQ(QVDaemonPlistGenerator::generatePlistWithExecutionInterval(-5, false), kHead + tail("0"));
}

TEST(QVDaemonPlistGenerator, AnotherProgramPathIsEscapedForXml) {
    const std::string text = QVDaemonPlistGenerator::generatePlist("label", "/a b/<x>&y", 60, true);
    EXPECT_NE(text.find("\t\t<string>/a b/&lt;x&gt;&amp;y</string>\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\t<string>label</string>\n"), std::string::npos) << text;
}

}  // namespace
}  // namespace tov
