#include "discovery/linux/LinuxCameras.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "model/QVIOKitCamera.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;
using Camera = std::tuple<std::string, std::string, std::string>;  // name, model, uuid

// A machine with video nodes below their devices, linked from /sys/class/video4linux as
// the kernel links them.
class CameraMachine {
public:
    // A USB device folder (".../usb1/1-6") with its ids and, when given, its serial.
    CameraMachine& usbDevice(const std::string& folder, const std::string& vendor, const std::string& product,
                             const std::string& serial = "") {
        source.file(folder + "/idVendor", vendor + "\n");
        source.file(folder + "/idProduct", product + "\n");
        if (!serial.empty()) source.file(folder + "/serial", serial + "\n");
        return *this;
    }

    CameraMachine& pciFunction(const std::string& folder) {
        source.link(folder + "/subsystem", "../../../bus/pci");
        return *this;
    }

    // Node videoN below deviceFolder, with its name, index and device numbers.
    CameraMachine& node(int number, const std::string& deviceFolder, const std::string& name, int index) {
        const std::string node = "video" + std::to_string(number);
        const std::string folder = deviceFolder + "/video4linux/" + node;
        source.link("/sys/class/video4linux/" + node, "../../" + folder.substr(5));
        source.link(folder + "/device", "../../../" + deviceFolder.substr(deviceFolder.rfind('/') + 1));
        source.file(folder + "/name", name + "\n");
        source.file(folder + "/index", std::to_string(index) + "\n");
        source.file(folder + "/dev", "81:" + std::to_string(number) + "\n");
        return *this;
    }

    CameraMachine& udevCapabilities(int number, const std::string& capabilities) {
        source.file("/run/udev/data/c81:" + std::to_string(number),
                    "I:1234\nE:ID_V4L_VERSION=2\nE:ID_V4L_CAPABILITIES=" + capabilities + "\nG:uaccess\n");
        return *this;
    }

    std::vector<Camera> cameras() {
        std::vector<Camera> found;
        const ArrayRef cameras = discoverLinuxCameras(source);
        for (const Value& element : *cameras) {
            const auto camera = std::dynamic_pointer_cast<QVIOKitCamera>(element.record());
            found.emplace_back(camera->name().value_or("?"), camera->model().value_or("?"),
                               camera->uuid().value_or("?"));
        }
        return found;
    }

    MemorySystemSource source;
};

constexpr const char* kWebcamDevice = "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-6";
constexpr const char* kWebcamInterface = "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-6/1-6:1.0";

TEST(LinuxCamerasTest, AUsbCameraIsNamedByItsNodeAndKnownByItsSerial) {
    CameraMachine machine;
    machine.usbDevice(kWebcamDevice, "30c9", "00ad", "0001")
        .node(0, kWebcamInterface, "HP 5MP Camera: HP 5MP Camera", 0)
        .node(1, kWebcamInterface, "HP 5MP Camera: HP 5MP Camera", 1);
    EXPECT_EQ(machine.cameras(),
              (std::vector<Camera>{{"HP 5MP Camera: HP 5MP Camera", "UVC Camera VendorID_12489 ProductID_173", "0001"}}));
}

TEST(LinuxCamerasTest, WithoutASerialTheUuidIsThePlaceOnTheBusAndTheIds) {
    CameraMachine machine;
    machine.usbDevice("/sys/devices/pci0000:00/0000:00:14.0/usb3/3-6", "0C45", "6366")
        .node(0, "/sys/devices/pci0000:00/0000:00:14.0/usb3/3-6/3-6:1.0", "USB 2.0 Camera: USB Camera", 0);
    EXPECT_EQ(machine.cameras(), (std::vector<Camera>{{"USB 2.0 Camera: USB Camera",
                                                       "UVC Camera VendorID_3141 ProductID_25446", "3-6-0c45:6366"}}));
}

TEST(LinuxCamerasTest, AHubsPortPathIsKept) {
    CameraMachine machine;
    machine.usbDevice("/sys/devices/pci0000:00/0000:00:14.0/usb1/1-1/1-1.4", "046d", "0825")
        .node(2, "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-1/1-1.4/1-1.4:1.0", "C270 HD WEBCAM", 0);
    EXPECT_EQ(std::get<2>(machine.cameras().at(0)), "1-1.4-046d:0825");
}

TEST(LinuxCamerasTest, TheMetadataNodeIsSkippedByUdevsWord) {
    CameraMachine machine;
    // udev's record outranks the index: here the capture node is the second one.
    machine.usbDevice(kWebcamDevice, "30c9", "00ad")
        .node(0, kWebcamInterface, "Metadata", 0)
        .node(1, kWebcamInterface, "Capture", 1)
        .udevCapabilities(0, ":")
        .udevCapabilities(1, ":capture:");
    EXPECT_EQ(machine.cameras(),
              (std::vector<Camera>{{"Capture", "UVC Camera VendorID_12489 ProductID_173", "1-6-30c9:00ad"}}));
}

TEST(LinuxCamerasTest, WithoutUdevOnlyTheFirstNodeCaptures) {
    CameraMachine machine;
    machine.usbDevice(kWebcamDevice, "30c9", "00ad")
        .node(1, kWebcamInterface, "Metadata", 1)
        .node(0, kWebcamInterface, "Capture", 0);
    EXPECT_EQ(machine.cameras().size(), 1U);
    EXPECT_EQ(std::get<0>(machine.cameras().at(0)), "Capture");
}

TEST(LinuxCamerasTest, TwoCaptureInterfacesOfOneDeviceAreOneCameraNamedByTheFirstNode) {
    CameraMachine machine;
    machine.usbDevice(kWebcamDevice, "30c9", "00ad", "0001")
        .node(10, kWebcamInterface, "Later", 0)
        .node(2, std::string(kWebcamDevice) + "/1-6:1.2", "HP 5MP Camera: HP IR Camera", 0)
        .node(0, kWebcamInterface, "HP 5MP Camera: HP 5MP Camera", 0);
    EXPECT_EQ(machine.cameras(),
              (std::vector<Camera>{{"HP 5MP Camera: HP 5MP Camera", "UVC Camera VendorID_12489 ProductID_173", "0001"}}));
}

TEST(LinuxCamerasTest, TwoCamerasOfOneModelAreTwoRecords) {
    CameraMachine machine;
    machine.usbDevice("/sys/devices/pci0000:00/0000:00:14.0/usb1/1-1", "046d", "0825")
        .usbDevice("/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2", "046d", "0825")
        .node(0, "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-1/1-1:1.0", "C270 HD WEBCAM", 0)
        .node(2, "/sys/devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0", "C270 HD WEBCAM", 0);
    EXPECT_EQ(machine.cameras().size(), 2U);
}

TEST(LinuxCamerasTest, ACameraOnPciIsKnownByItsAddressAndHasNoModel) {
    CameraMachine machine;
    machine.pciFunction("/sys/devices/pci0000:00/0000:00:1c.1/0000:02:00.0")
        .node(0, "/sys/devices/pci0000:00/0000:00:1c.1/0000:02:00.0", "Apple Facetime HD", 0);
    EXPECT_EQ(machine.cameras(), (std::vector<Camera>{{"Apple Facetime HD", "", "0000:02:00.0"}}));
}

TEST(LinuxCamerasTest, AnImageProcessorsNodesAreOneCamera) {
    CameraMachine machine;
    machine.pciFunction("/sys/devices/pci0000:00/0000:00:05.0");
    for (int number = 1; number <= 4; ++number) {
        machine.node(number, "/sys/devices/pci0000:00/0000:00:05.0/intel_ipu7.isys.40",
                     "Intel IPU7 ISYS Capture " + std::to_string(number - 1), number - 1);
        machine.udevCapabilities(number, ":capture:");
    }
    EXPECT_EQ(machine.cameras(), (std::vector<Camera>{{"Intel IPU7 ISYS Capture 0", "", "0000:00:05.0"}}));
}

TEST(LinuxCamerasTest, AVirtualNodeIsNoCamera) {
    CameraMachine machine;
    machine.source.link("/sys/class/video4linux/video0", "../../devices/virtual/video4linux/video0");
    machine.source.file("/sys/devices/virtual/video4linux/video0/name", "Dummy video device\n");
    machine.source.file("/sys/devices/virtual/video4linux/video0/index", "0\n");
    EXPECT_TRUE(machine.cameras().empty());
}

TEST(LinuxCamerasTest, OtherNodesAndALoopingDeviceLinkGiveNoCamera) {
    CameraMachine machine;
    machine.usbDevice(kWebcamDevice, "30c9", "00ad", "0001").node(0, kWebcamInterface, "Camera", 0);
    machine.source.link("/sys/class/video4linux/v4l-subdev0", "../../devices/platform/sensor/v4l-subdev0");
    machine.source.link("/sys/class/video4linux/video9", "../../devices/platform/loop/video9");
    machine.source.link("/sys/devices/platform/loop/video9/device", "../video9/device");
    machine.source.link("/sys/class/video4linux/videoX", "../../devices/platform/odd/videoX");
    EXPECT_EQ(machine.cameras().size(), 1U);
}

TEST(LinuxCamerasTest, NoVideoClassNoCameras) {
    CameraMachine machine;
    EXPECT_TRUE(machine.cameras().empty());
}

}  // namespace
}  // namespace tov
