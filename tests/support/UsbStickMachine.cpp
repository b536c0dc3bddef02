#include "support/UsbStickMachine.h"

#include <utility>

#include "support/QemuMonitor.h"
#include "support/RawDiskImage.h"

namespace tov::testing {
namespace {

constexpr const char* kStickId = "stick";
constexpr const char* kUsbBus = "xhci.0";
constexpr const char* kMemoryMiB = "512";

}  // namespace

UsbStickMachine::UsbStickMachine(const std::string& name, const std::string& folder, const std::string& scenario,
                                 UsbStick stick, const ConsoleUser& user)
    : machine_(name, folder), stick_(std::move(stick)), image_(folder + "/" + name + "-stick.img") {
    machine_.addArguments({"-machine", "pc", "-m", kMemoryMiB, "-device", "qemu-xhci,id=xhci"});
    machine_.enableMonitor();
    machine_.runScenario(scenario);
    machine_.addGuestParameter("tov_stick_label", stick_.label);
    machine_.addGuestParameter("tov_mount_path", stick_.mountPath);
    machine_.addGuestParameter("tov_user", user.name);
    machine_.addGuestParameter("tov_uid", std::to_string(user.uid));
}

bool UsbStickMachine::prepare(std::string& failure) {
    return makeFatDiskImage(image_, stick_.sizeBytes, stick_.label, failure);
}

std::string UsbStickMachine::run(const QemuGuestImage& image, std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    if (!machine_.start(image)) return "QEMU could not be started";
    const std::string failure = serveRequests(deadline);
    if (!failure.empty()) {
        machine_.kill();
        return failure;
    }
    if (!machine_.waitForEnd(deadline)) return "the guest did not power off within " + std::to_string(limit.count()) + " s";
    return "";
}

std::string UsbStickMachine::serveRequests(std::chrono::steady_clock::time_point deadline) {
    QemuMonitor monitor;
    if (!monitor.connect(machine_.monitorPath(), deadline)) return "monitor: " + monitor.failure();
    if (!machine_.waitForConsoleLine(kPlugRequest, deadline)) return "the guest did not ask for the stick";
    if (!monitor.plugUsbStorage(kStickId, image_, kUsbBus, stick_.serial)) return "plug: " + monitor.failure();
    if (!machine_.waitForConsoleLine(kUnplugRequest, deadline)) return "the guest did not ask to pull the stick out";
    if (!monitor.unplug(kStickId)) return "unplug: " + monitor.failure();
    return "";
}

}  // namespace tov::testing
