#pragma once

// A small stand-in for systemd's manager on a test bus: it owns the name
// org.freedesktop.systemd1, answers the Manager calls the service manager makes and the
// MainPID of its one service unit, and records every call.

#include <systemd/sd-bus.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tov::testing {

class FakeSystemd {
public:
    static constexpr const char* kUnitPath = "/org/freedesktop/systemd1/unit/fake_2eservice";

    // Serves on the bus at address from a thread of its own; ready() says whether it got there.
    explicit FakeSystemd(const std::string& address);
    ~FakeSystemd();
    FakeSystemd(const FakeSystemd&) = delete;
    FakeSystemd& operator=(const FakeSystemd&) = delete;

    bool ready() const { return ready_; }

    // "GetUnit <name>", "Reload", "EnableUnitFiles <names> <runtime> <force>",
    // "StartUnit <name> <mode>", "StopUnit <name> <mode>", "DisableUnitFiles <names> <runtime>",
    // "Get MainPID", in the order they came.
    std::vector<std::string> calls() const;
    void clearCalls();

    void setMainPid(std::uint32_t pid) { mainPid_ = pid; }
    // The method answers with this D-Bus error from now on.
    void failMethod(const std::string& method, const std::string& errorName, const std::string& message);

private:
    void serve(std::string address);
    bool setUp(sd_bus* bus);
    void record(const std::string& call);
    // The error set for method, if any, put into error; its negative result or 0.
    int failure(const std::string& method, sd_bus_error* error);

    static int getUnit(sd_bus_message* message, void* self, sd_bus_error* error);
    static int reload(sd_bus_message* message, void* self, sd_bus_error* error);
    static int enableUnitFiles(sd_bus_message* message, void* self, sd_bus_error* error);
    static int startUnit(sd_bus_message* message, void* self, sd_bus_error* error);
    static int stopUnit(sd_bus_message* message, void* self, sd_bus_error* error);
    static int disableUnitFiles(sd_bus_message* message, void* self, sd_bus_error* error);
    static int mainPid(sd_bus* bus, const char* path, const char* interface, const char* property,
                       sd_bus_message* reply, void* self, sd_bus_error* error);

    mutable std::mutex lock_;
    std::condition_variable readyChanged_;
    bool started_ = false;  // the serving thread has finished setting up (well or not)
    std::atomic<bool> ready_{false};
    std::atomic<bool> stop_{false};
    std::atomic<bool> unitStarted_{false};
    std::atomic<std::uint32_t> mainPid_{0};
    std::vector<std::string> calls_;
    std::map<std::string, std::pair<std::string, std::string>> failures_;
    std::thread thread_;
};

}  // namespace tov::testing
