#include "discovery/CapturingSystemSource.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "discovery/RecordedSystemSource.h"
#include "support/MemorySystemSource.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

namespace fs = std::filesystem;
using testing::MemorySystemSource;
using testing::TestFolder;

std::shared_ptr<MemorySystemSource> sysfsLikeMachine() {
    auto machine = std::make_shared<MemorySystemSource>();
    machine->link("/sys/block/sda", "../devices/pci0000:00/ata1/block/sda")
        .link("/sys/block/loop0", "../devices/virtual/block/loop0")
        .file("/sys/devices/pci0000:00/ata1/block/sda/size", "976773168\n")
        .file("/sys/devices/pci0000:00/ata1/block/sda/removable", "0\n")
        .folder("/sys/devices/pci0000:00/ata1/block/sda/sda1")
        .link("/etc/os-release", "../usr/lib/os-release")
        .file("/usr/lib/os-release", "NAME=Debian\n")
        .tool({"/bin/tool", "a b"}, "output\n")
        .fact("uname", "", Value("x86_64"));
    return machine;
}

TEST(CapturingSystemSource, ReplayingACaptureAnswersWhatTheScanRead) {
    TestFolder folder;
    const std::string dir = folder.file("capture");
    auto machine = sysfsLikeMachine();
    {
        auto capturing = CapturingSystemSource::create(machine, dir);
        ASSERT_TRUE(capturing);
        EXPECT_EQ(capturing->listFolder("/sys/block"), (std::vector<std::string>{"loop0", "sda"}));
        EXPECT_EQ(capturing->readFile("/sys/block/sda/size", 100), "976773168\n");
        EXPECT_EQ(capturing->listFolder("/sys/block/sda"), (std::vector<std::string>{"removable", "sda1", "size"}));
        EXPECT_EQ(capturing->readFile("/etc/os-release", 100), "NAME=Debian\n");
        EXPECT_EQ(capturing->runTool({"/bin/tool", "a b"}), "output\n");
        EXPECT_FALSE(capturing->runTool({"/bin/missing"}));
        EXPECT_EQ(capturing->fact("uname", ""), Value("x86_64"));
        EXPECT_TRUE(capturing->complete());
    }
    const auto replay = RecordedSystemSource::open(dir);
    ASSERT_TRUE(replay);
    EXPECT_EQ(replay->platform(), "linux");
    EXPECT_EQ(replay->listFolder("/sys/block"), (std::vector<std::string>{"loop0", "sda"}));
    EXPECT_EQ(replay->readLink("/sys/block/sda"), "../devices/pci0000:00/ata1/block/sda");
    EXPECT_EQ(replay->readFile("/sys/block/sda/size", 100), "976773168\n");
    // A plain file that was listed but never read is not recorded.
    EXPECT_EQ(replay->listFolder("/sys/block/sda"), (std::vector<std::string>{"sda1", "size"}));
    EXPECT_EQ(replay->readLink("/etc/os-release"), "../usr/lib/os-release");
    EXPECT_EQ(replay->readFile("/etc/os-release", 100), "NAME=Debian\n");
    EXPECT_EQ(replay->runTool({"/bin/tool", "a b"}), "output\n");
    EXPECT_FALSE(replay->runTool({"/bin/missing"}));
    EXPECT_EQ(replay->fact("uname", ""), Value("x86_64"));
}

// Counts the whole-file reads asked of the machine (not those it makes to answer a part).
class WholeReadCountingMachine : public MemorySystemSource {
public:
    std::optional<std::string> readFile(const std::string& path, std::uint64_t maximumBytes) override {
        if (!answeringPart_) ++wholeReads;
        return MemorySystemSource::readFile(path, maximumBytes);
    }
    std::optional<std::string> readFilePart(const std::string& path, std::uint64_t offset,
                                            std::uint64_t length) override {
        answeringPart_ = true;
        std::optional<std::string> part = MemorySystemSource::readFilePart(path, offset, length);
        answeringPart_ = false;
        return part;
    }
    int wholeReads = 0;

private:
    bool answeringPart_ = false;
};

TEST(CapturingSystemSource, AFileReadInPartsIsRecordedWholeOnce) {
    TestFolder folder;
    const std::string dir = folder.file("capture");
    auto machine = std::make_shared<WholeReadCountingMachine>();
    machine->file("/var/lib/usbutils/usb.ids", "046d  Logitech, Inc.\n\tc52b  Unifying Receiver\n")
        .link("/usr/share/misc/usb.ids", "/var/lib/usbutils/usb.ids");
    {
        auto capturing = CapturingSystemSource::create(machine, dir);
        ASSERT_TRUE(capturing);
        EXPECT_EQ(capturing->readFilePart("/usr/share/misc/usb.ids", 0, 4), "046d");
        EXPECT_EQ(capturing->readFilePart("/usr/share/misc/usb.ids", 21, 5), "\tc52b");
        EXPECT_EQ(capturing->readFilePart("/usr/share/misc/usb.ids", 100, 5), "");
        EXPECT_FALSE(capturing->readFilePart("/usr/share/misc/pci.ids", 0, 5));
        EXPECT_EQ(machine->wholeReads, 1);
        EXPECT_TRUE(capturing->complete());
    }
    const auto replay = RecordedSystemSource::open(dir);
    ASSERT_TRUE(replay);
    EXPECT_EQ(replay->readLink("/usr/share/misc/usb.ids"), "/var/lib/usbutils/usb.ids");
    EXPECT_EQ(replay->readFilePart("/usr/share/misc/usb.ids", 21, 5), "\tc52b");
    EXPECT_EQ(replay->readFile("/usr/share/misc/usb.ids", 100), "046d  Logitech, Inc.\n\tc52b  Unifying Receiver\n");
}

TEST(CapturingSystemSource, TheCaptureIsForRootAlone) {
    TestFolder folder;
    const std::string dir = folder.file("capture");
    auto capturing = CapturingSystemSource::create(sysfsLikeMachine(), dir);
    ASSERT_TRUE(capturing);
    capturing->readFile("/sys/block/sda/size", 100);
    EXPECT_EQ(testing::lstatOf(dir).st_mode & 07777, 0700u);
    EXPECT_EQ(testing::lstatOf(dir + "/files/sys").st_mode & 07777, 0700u);
    EXPECT_EQ(testing::lstatOf(dir + "/files/sys/devices/pci0000:00/ata1/block/sda/size").st_mode & 07777, 0600u);
    EXPECT_EQ(testing::lstatOf(dir + "/platform").st_mode & 07777, 0600u);
}

TEST(CapturingSystemSource, RefusesAFolderThatAlreadyHoldsSomething) {
    TestFolder folder;
    folder.write("something", "x");
    EXPECT_FALSE(CapturingSystemSource::create(sysfsLikeMachine(), folder.path()));
    EXPECT_TRUE(CapturingSystemSource::create(sysfsLikeMachine(), folder.makeFolder("empty")));
}

}  // namespace
}  // namespace tov
