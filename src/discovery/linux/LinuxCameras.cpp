#include "discovery/linux/LinuxCameras.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/PrintableText.h"
#include "common/QVSLogger.h"
#include "common/TextUtils.h"
#include "discovery/EqualRecordsOnce.h"
#include "discovery/PathWalk.h"
#include "discovery/formats/UdevDatabase.h"
#include "model/QVIOKitCamera.h"

namespace tov {
namespace {

constexpr const char* kClassFolder = "/sys/class/video4linux";
constexpr const char* kDevicesRoot = "/sys/devices/";
constexpr std::uint64_t kAttributeLimit = 4096;
// A machine has a handful of video nodes (an image processor a few dozen).
constexpr std::size_t kMaximumNodes = 256;
constexpr std::size_t kMaximumNodeDigits = 6;

struct VideoNode {
    unsigned number;
    std::string folder;
};

std::optional<std::string> readAttribute(SystemSource& source, const std::string& path) {
    const std::optional<std::string> bytes = source.readFile(path, kAttributeLimit);
    if (!bytes) return std::nullopt;
    return printableText(*bytes);
}

// "video0", "video12": the number; nothing for the other nodes (vbi, radio, subdevices).
std::optional<unsigned> videoNodeNumber(std::string_view name) {
    if (!hasPrefix(name, "video")) return std::nullopt;
    const std::string_view digits = name.substr(5);
    if (digits.empty() || digits.size() > kMaximumNodeDigits) return std::nullopt;
    if (digits.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    return static_cast<unsigned>(leadingIntegerValue(digits));
}

// The video nodes in number order, so the first node of a device names it.
std::vector<VideoNode> videoNodes(SystemSource& source) {
    const std::optional<std::vector<std::string>> names = source.listFolder(kClassFolder);
    if (!names) {
        QVSLogger::debug("%s cannot be listed; no cameras.", kClassFolder);
        return {};
    }
    std::vector<VideoNode> nodes;
    for (const std::string& name : *names) {
        const std::optional<unsigned> number = videoNodeNumber(name);
        if (!number) continue;
        if (nodes.size() == kMaximumNodes) {
            QVSLogger::debug("%s holds more than %zu video nodes; the rest are left out.", kClassFolder, kMaximumNodes);
            break;
        }
        nodes.push_back({*number, childPath(kClassFolder, name)});
    }
    std::sort(nodes.begin(), nodes.end(), [](const VideoNode& left, const VideoNode& right) {
        return left.number < right.number;
    });
    return nodes;
}

// The udev database's word on the node's capabilities (":capture:" for a video capture
// node, ":" for a camera's metadata node); nothing when udev has no record of it.
std::optional<bool> udevSaysCapture(SystemSource& source, const VideoNode& node) {
    const std::optional<std::string> number = readAttribute(source, childPath(node.folder, "dev"));
    if (!number || number->empty() || number->find('/') != std::string::npos) return std::nullopt;
    const std::optional<std::string> text =
        source.readFile(childPath(UdevDatabase::kDataFolder, "c" + *number), UdevDatabase::kReadLimit);
    if (!text) return std::nullopt;
    const std::optional<std::string> capabilities = UdevDatabase::parse(*text).property("ID_V4L_CAPABILITIES");
    if (!capabilities) return std::nullopt;
    return capabilities->find(":capture:") != std::string::npos;
}

// Without udev's record: a camera's first node (index 0) captures, further ones carry
// metadata. A kernel without the index attribute makes no metadata nodes.
bool capturesVideo(SystemSource& source, const VideoNode& node) {
    if (const std::optional<bool> capture = udevSaysCapture(source, node)) return *capture;
    const std::optional<std::string> index = readAttribute(source, childPath(node.folder, "index"));
    return !index || *index == "0";
}

std::optional<std::string> resolvedDevice(SystemSource& source, const VideoNode& node) {
    const std::string link = childPath(node.folder, "device");
    if (!source.readLink(link)) {
        QVSLogger::debug("The video node %s has no device (a virtual node); it is no camera.", node.folder.c_str());
        return std::nullopt;
    }
    const std::optional<PathWalk> walk = walkPath(
        link, true, [&source](const std::string& path) { return source.pathKind(path); },
        [&source](const std::string& path) { return source.readLink(path); });
    if (!walk) {
        QVSLogger::debug("The device link %s cannot be followed (a loop or an unreadable link).", link.c_str());
        return std::nullopt;
    }
    return walk->resolved;
}

struct CameraIdentity {
    std::string model;
    std::string uuid;
};

std::optional<std::uint16_t> idInFile(SystemSource& source, const std::string& path) {
    const std::optional<std::string> text = readAttribute(source, path);
    return text ? parseHardwareId(*text) : std::nullopt;
}

// A USB camera: its model by its ids, its uuid the device's serial, else its place on
// the bus ("3-6", bus 3, port path 6) with the ids in hex.
std::optional<CameraIdentity> usbIdentity(SystemSource& source, const std::string& folder) {
    const std::optional<std::uint16_t> vendor = idInFile(source, childPath(folder, "idVendor"));
    const std::optional<std::uint16_t> product = idInFile(source, childPath(folder, "idProduct"));
    if (!vendor || !product) return std::nullopt;
    CameraIdentity identity;
    char model[64];
    std::snprintf(model, sizeof model, "UVC Camera VendorID_%u ProductID_%u", static_cast<unsigned>(*vendor),
                  static_cast<unsigned>(*product));
    identity.model = model;
    const std::optional<std::string> serial = readAttribute(source, childPath(folder, "serial"));
    if (serial && !serial->empty()) {
        identity.uuid = *serial;
    } else {
        identity.uuid = std::string(lastPathComponent(folder)) + "-" + hexIdText(*vendor).substr(2) + ":" +
                        hexIdText(*product).substr(2);
    }
    return identity;
}

bool isPciFunction(SystemSource& source, const std::string& folder) {
    const std::optional<std::string> subsystem = source.readLink(childPath(folder, "subsystem"));
    return subsystem && lastPathComponent(*subsystem) == "pci";
}

// The camera's model and uuid: a USB camera's as above; a camera on PCI (an image
// processor, a FaceTime camera) has no model and its PCI address ("0000:00:05.0") as
// uuid; any other its device's sysfs name.
CameraIdentity cameraIdentity(SystemSource& source, const std::string& device) {
    for (std::string folder = device; hasPrefix(folder, kDevicesRoot); folder = folder.substr(0, folder.rfind('/'))) {
        if (std::optional<CameraIdentity> usb = usbIdentity(source, folder)) return *usb;
        if (isPciFunction(source, folder)) return {"", std::string(lastPathComponent(folder))};
    }
    return {"", std::string(lastPathComponent(device))};
}

std::shared_ptr<QVIOKitCamera> cameraOfNode(SystemSource& source, const VideoNode& node) {
    const std::optional<std::string> device = resolvedDevice(source, node);
    if (!device) return nullptr;
    const CameraIdentity identity = cameraIdentity(source, *device);
    std::shared_ptr<QVIOKitCamera> camera = QVIOKitCamera::ioKitCamera();
    camera->setName(readAttribute(source, childPath(node.folder, "name")).value_or(""));
    camera->setModel(identity.model);
    camera->setUuid(identity.uuid);
    return camera;
}

}  // namespace

ArrayRef discoverLinuxCameras(SystemSource& source) {
    std::vector<std::shared_ptr<QVIOKitCamera>> cameras;
    for (const VideoNode& node : videoNodes(source)) {
        if (!capturesVideo(source, node)) continue;
        if (std::shared_ptr<QVIOKitCamera> camera = cameraOfNode(source, node)) cameras.push_back(std::move(camera));
    }
    // The capture nodes of one device (a colour and an infrared camera) share its uuid.
    return equalRecordsOnce(cameras);
}

}  // namespace tov
