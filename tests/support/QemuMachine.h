#pragma once

// One QEMU guest of a test: a real kernel booted under software emulation with the
// devices the test names. Its initramfs runs `tov -p` and prints the report between two
// marker lines on the serial console, which QEMU writes to a file, and then powers off;
// or it runs a scenario script of the initramfs, which asks the test on the console for
// what only the host can do (plug a device in through the machine's monitor).

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tov::testing {

// The emulator, and the kernel and initramfs every machine of a test run boots.
struct QemuGuestImage {
    std::string qemu;
    std::string kernel;
    std::string initramfs;
    std::string kernelRelease;
};

class QemuMachine {
public:
    // folder: where the console and QEMU's own messages are written.
    QemuMachine(std::string name, std::string folder);
    ~QemuMachine();
    QemuMachine(const QemuMachine&) = delete;
    QemuMachine& operator=(const QemuMachine&) = delete;

    const std::string& name() const { return name_; }

    // QEMU arguments of the machine type, memory and devices.
    void addArguments(const std::vector<std::string>& arguments);
    // A path pattern (shell glob) the guest waits for before it scans, so that devices
    // that are probed late (USB, sound codecs) are there.
    void waitForPath(const std::string& pattern);
    // The scenario script the guest runs instead of `tov -p` (tests/qemu/guest/NAME.sh).
    void runScenario(const std::string& name);
    // A parameter of the scenario: the guest's init and scripts see it as a variable of
    // their environment. Neither part may hold blanks.
    void addGuestParameter(const std::string& name, const std::string& value);
    // A QMP socket at monitorPath() that the test connects to while the guest runs.
    void enableMonitor();
    std::string monitorPath() const;

    bool start(const QemuGuestImage& image);
    // True once QEMU has ended (it is then reaped).
    bool hasEnded();
    // Waits until QEMU has ended; at the deadline ends it as timed out and answers false.
    bool waitForEnd(std::chrono::steady_clock::time_point deadline);
    // Ends QEMU at once if it still runs.
    void kill();
    // Ends QEMU at once and marks the machine as timed out.
    void stopForTimeout();
    bool timedOut() const { return timedOut_; }

    // Everything the guest wrote on its serial console, and QEMU's own messages.
    std::string console() const;
    std::string qemuMessages() const;
    // The text between the report markers; nothing when the guest did not get that far.
    std::optional<std::string> report() const;
    // The exit status of `tov -p` in the guest, -1 when unknown.
    int tovStatus() const;
    // The text between "-----BEGIN <title>-----" and "-----END <title>-----" lines of the
    // console; nothing when the guest did not print both.
    std::optional<std::string> section(const std::string& title) const;
    // The number after "-----END <title>----- status "; -1 when there is none.
    int sectionStatus(const std::string& title) const;
    // Waits until the console holds that whole line; false when QEMU ends or the deadline
    // passes first.
    bool waitForConsoleLine(const std::string& line, std::chrono::steady_clock::time_point deadline);

private:
    std::vector<std::string> commandLine(const QemuGuestImage& image) const;

    std::string name_;
    std::string folder_;
    std::vector<std::string> arguments_;
    std::vector<std::string> waitPatterns_;
    std::string scenario_;
    std::vector<std::string> guestParameters_;
    bool monitor_ = false;
    pid_t pid_ = -1;
    bool timedOut_ = false;
};

// Starts every machine, waits until all have ended or the limit has passed, and ends the
// ones still running (they count as timed out). The machines run in parallel.
void runMachines(const std::vector<QemuMachine*>& machines, const QemuGuestImage& image,
                 std::chrono::seconds limit);

}  // namespace tov::testing
