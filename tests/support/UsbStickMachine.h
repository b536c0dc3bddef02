#pragma once

// A QEMU guest with a USB controller and a user at its console, running a scenario script
// that asks on the console for a USB stick ("tov-guest: plug the stick") and later for
// its removal ("tov-guest: unplug the stick"). The test answers through the machine's
// monitor: the stick, a raw image holding one labelled FAT file system, is plugged into
// the running machine and pulled out again, as a hand would.

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "support/QemuMachine.h"

namespace tov::testing {

struct UsbStick {
    std::string label;
    std::string serial;
    std::uint64_t sizeBytes = 0;
    // Where the guest mounts it.
    std::string mountPath;
};

struct ConsoleUser {
    std::string name;
    unsigned uid = 0;
};

class UsbStickMachine {
public:
    // The guest's request lines.
    static constexpr const char* kPlugRequest = "tov-guest: plug the stick";
    static constexpr const char* kUnplugRequest = "tov-guest: unplug the stick";

    UsbStickMachine(const std::string& name, const std::string& folder, const std::string& scenario, UsbStick stick,
                    const ConsoleUser& user);

    // Makes the stick's image; false with the reason in failure when it cannot.
    bool prepare(std::string& failure);

    // Boots the guest, plugs the stick in and out when asked and waits until the guest
    // powers off. "" when all of it happened within the limit, else what went wrong.
    std::string run(const QemuGuestImage& image, std::chrono::seconds limit);

    QemuMachine& machine() { return machine_; }
    const UsbStick& stick() const { return stick_; }

private:
    std::string serveRequests(std::chrono::steady_clock::time_point deadline);

    QemuMachine machine_;
    UsbStick stick_;
    std::string image_;
};

}  // namespace tov::testing
