#include "platform/LiveSystemSource.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>

#include "common/PropertyList.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using namespace std::chrono_literals;
using testing::TestFolder;

TEST(LiveSystemSource, ReadsFilesThroughLinksWithinTheirBound) {
    TestFolder folder;
    folder.write("real", "content");
    std::filesystem::create_symlink("real", folder.file("link"));
    LiveSystemSource source;
    EXPECT_EQ(source.platform(), "linux");
    EXPECT_EQ(source.readFile(folder.file("link"), 100), "content");
    EXPECT_EQ(source.readFile(folder.file("real"), 7), "content");
    EXPECT_FALSE(source.readFile(folder.file("real"), 6));
    EXPECT_FALSE(source.readFile(folder.path(), 100));
    EXPECT_EQ(source.readLink(folder.file("link")), "real");
    EXPECT_EQ(source.pathKind(folder.file("link")), PathKind::Link);
    EXPECT_EQ(source.listFolder(folder.path()), (std::vector<std::string>{"link", "real"}));
}

TEST(LiveSystemSource, ProcFilesWithoutASizeAreReadWhole) {
    LiveSystemSource source;
    const auto meminfo = source.readFile("/proc/meminfo", 1 << 20);
    ASSERT_TRUE(meminfo);
    EXPECT_NE(meminfo->find("MemTotal:"), std::string::npos);
}

TEST(LiveSystemSource, AFifoOrALinkLoopGivesNothingAtOnce) {
    TestFolder folder;
    ASSERT_EQ(mkfifo(folder.file("fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink("loop", folder.file("loop"));
    LiveSystemSource source;
    EXPECT_FALSE(source.readFile(folder.file("fifo"), 100));
    EXPECT_FALSE(source.readFile(folder.file("loop"), 100));
    EXPECT_FALSE(source.listFolder(folder.file("loop")));
}

TEST(LiveSystemSource, ReadsAPartOfAFileWithoutReadingTheRest) {
    TestFolder folder;
    folder.write("real", "0123456789");
    std::filesystem::create_symlink("real", folder.file("link"));
    LiveSystemSource source;
    EXPECT_EQ(source.readFilePart(folder.file("real"), 2, 3), "234");
    EXPECT_EQ(source.readFilePart(folder.file("link"), 0, 4), "0123");
    EXPECT_EQ(source.readFilePart(folder.file("real"), 8, 100), "89");
    EXPECT_EQ(source.readFilePart(folder.file("real"), 10, 5), "");
    EXPECT_EQ(source.readFilePart(folder.file("real"), 1u << 30, 5), "");
    EXPECT_EQ(source.readFilePart(folder.file("real"), UINT64_MAX, 5), "");
    EXPECT_EQ(source.readFilePart(folder.file("real"), 3, 0), "");
    EXPECT_FALSE(source.readFilePart(folder.file("missing"), 0, 5));
    EXPECT_FALSE(source.readFilePart(folder.path(), 0, 5));
}

TEST(LiveSystemSource, APartOfAFifoOrALinkLoopGivesNothingAtOnce) {
    TestFolder folder;
    ASSERT_EQ(mkfifo(folder.file("fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink("loop", folder.file("loop"));
    LiveSystemSource source;
    EXPECT_FALSE(source.readFilePart(folder.file("fifo"), 0, 100));
    EXPECT_FALSE(source.readFilePart(folder.file("loop"), 0, 100));
}

TEST(LiveSystemSource, PartsOfProcFilesWithoutASizeAreRead) {
    LiveSystemSource source;
    const auto start = source.readFilePart("/proc/meminfo", 0, 9);
    EXPECT_EQ(start, "MemTotal:");
}

TEST(LiveSystemSource, AHungToolIsEndedAfterTheTimeLimit) {
    LiveSystemSource source(300ms);
    const auto started = std::chrono::steady_clock::now();
    EXPECT_FALSE(source.runTool({"/bin/sleep", "30"}));
    EXPECT_LT(std::chrono::steady_clock::now() - started, 10s);
    EXPECT_EQ(source.runTool({"/bin/echo", "a b"}), "a b\n");
    EXPECT_FALSE(source.runTool({"echo", "not a path"}));
    EXPECT_FALSE(source.runTool({}));
}

// A tool such as the system profiler prints warnings on standard error while its report
// goes to standard output: only the report reaches the parser.
TEST(LiveSystemSource, WarningsOnStandardErrorStayOutOfTheOutput) {
    TestFolder folder;
    const std::string tool = folder.write(
        "profiler",
        "#!/bin/sh\n"
        "echo '2026-01-15 12:00:00.000 system_profiler[4242:1] warning: no SPCameraDataType plug-in' >&2\n"
        "printf '<plist version=\"1.0\"><array><dict><key>_items</key><array/></dict></array></plist>'\n"
        "echo 'another warning' >&2\n");
    ASSERT_EQ(::chmod(tool.c_str(), 0700), 0);
    LiveSystemSource source;
    const std::optional<std::string> output = source.runTool({tool, "-xml", "SPCameraDataType"});
    ASSERT_TRUE(output);
    EXPECT_EQ(output->find("warning"), std::string::npos);
    const std::optional<Value> report = parsePropertyList(*output);
    ASSERT_TRUE(report && report->array());
    ASSERT_EQ(report->array()->size(), 1u);
}

}  // namespace
}  // namespace tov
