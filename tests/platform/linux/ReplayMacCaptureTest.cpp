// The built tov, run as a user would with -p -replay on a recorded Mac, prints that Mac's
// report: the macOS discoverers run here, on Linux, over the capture, and what they read
// from it (printers, interface addresses) reaches the printed document.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>

#include "model/Json.h"
#include "support/TovInNamespace.h"

namespace tov {
namespace {

const std::string kMiniCaptureFolder =
    (std::filesystem::path(TOV_TEST_FIXTURES) / "macos" / "mac-mini-peripherals").string();

// The capture folder held open across the private namespace, whose empty /tmp would hide
// a checkout under /tmp: tov inherits the descriptor and reads the folder through it.
class OpenCapture {
public:
    OpenCapture() : descriptor_(::open(kMiniCaptureFolder.c_str(), O_RDONLY | O_DIRECTORY)) {}
    ~OpenCapture() {
        if (descriptor_ != -1) ::close(descriptor_);
    }
    OpenCapture(const OpenCapture&) = delete;
    OpenCapture& operator=(const OpenCapture&) = delete;
    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_) + "/."; }

private:
    int descriptor_;
};

const OpenCapture& miniCapture() {
    static const OpenCapture capture;
    return capture;
}

class ReplayMacCapture : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::privateOptAndTmpAvailable()) GTEST_SKIP() << "needs root, /opt and mount namespaces";
    }

    static testing::ChildResult replay(const std::vector<std::string>& arguments) {
        return testing::runWithTovInNamespace(
            [&](int program) { return testing::executeOpenedProgram(program, arguments); });
    }

    static DictionaryRef inventoryOf(const std::string& document) {
        const std::optional<Value> parsed = parseJson(document);
        if (!parsed || !parsed->dictionary()) return nullptr;
        return parsed->dictionary()->get("HWInventory").dictionary();
    }
};

TEST_F(ReplayMacCapture, PrintsTheRecordedMacsReport) {
    const std::string capture = miniCapture().path();
    const testing::ChildResult result = replay({"-p", "-replay", capture});
    ASSERT_EQ(result.exitCode, 0) << result.output;
    const DictionaryRef inventory = inventoryOf(result.output);
    ASSERT_TRUE(inventory) << result.output;
    for (const char* section : {"collection", "iokit", "appkit", "diskutil", "operatingSystems", "coreaudio", "sysctl",
                                "corefoundation", "events"}) {
        EXPECT_TRUE(inventory->contains(section)) << section;
    }
    const DictionaryRef appkit = inventory->get("appkit").dictionary();
    ASSERT_TRUE(appkit);
    const ArrayRef printers = appkit->get("printers").array();
    ASSERT_TRUE(printers);
    EXPECT_EQ(printers->size(), 2u);
    const DictionaryRef events = inventory->get("events").dictionary();
    ASSERT_TRUE(events && events->get("Network").dictionary());
    EXPECT_EQ(events->get("Network").dictionary()->get("localIp"), Value("10.1.2.30"));
}

TEST_F(ReplayMacCapture, JoinedFolderArgumentIsTheSameReplay) {
    const std::string capture = miniCapture().path();
    const testing::ChildResult separate = replay({"-p", "-replay", capture});
    const testing::ChildResult joined = replay({"-p", "-replay=" + capture});
    ASSERT_EQ(separate.exitCode, 0);
    ASSERT_EQ(joined.exitCode, 0);
    const DictionaryRef first = inventoryOf(separate.output);
    const DictionaryRef second = inventoryOf(joined.output);
    ASSERT_TRUE(first && second);
    first->remove("collection");
    second->remove("collection");
    EXPECT_EQ(*first, *second);
}

}  // namespace
}  // namespace tov
