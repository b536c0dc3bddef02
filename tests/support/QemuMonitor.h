#pragma once

// A client of a running QEMU's machine protocol (QMP) over its Unix socket: enough to
// plug a USB drive into a running guest and pull it out again. Every wait is bounded by
// the deadline given to connect; a failure leaves its reason in failure().

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>

namespace tov::testing {

class QemuMonitor {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    QemuMonitor() = default;
    ~QemuMonitor();
    QemuMonitor(const QemuMonitor&) = delete;
    QemuMonitor& operator=(const QemuMonitor&) = delete;

    // Connects to the socket (QEMU creates it shortly after it starts, so a missing socket
    // is tried again until the deadline) and leaves the greeting's capabilities mode.
    bool connect(const std::string& socketPath, Deadline deadline);

    // A raw disk image as a USB mass-storage device with that id and serial number on a
    // USB bus of the machine ("xhci.0").
    bool plugUsbStorage(const std::string& id, const std::string& image, const std::string& bus,
                        const std::string& serial);
    // Removes the device and waits until QEMU says it is gone.
    bool unplug(const std::string& id);

    // One command; its "return" value, or nothing (null) when QEMU answered with an error.
    nlohmann::json execute(const std::string& command, const nlohmann::json& arguments = nlohmann::json::object());

    const std::string& failure() const { return failure_; }

private:
    // The next message QEMU sends; a discarded value on failure.
    nlohmann::json nextMessage();
    bool readMore();
    bool waitForEvent(const std::string& event, const std::string& deviceId);
    bool fail(const std::string& why);

    int socket_ = -1;
    Deadline deadline_{};
    std::string buffered_;
    nlohmann::json events_ = nlohmann::json::array();
    std::string failure_;
};

}  // namespace tov::testing
