#include "platform/linux/FakeSystemd.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>

namespace tov::testing {
namespace {

constexpr const char* kManagerPath = "/org/freedesktop/systemd1";
constexpr const char* kJobPath = "/org/freedesktop/systemd1/job/1";
// How long the serving thread waits for a message before it looks at its stop flag; it
// bounds only how long the test's end waits.
constexpr std::uint64_t kWaitMicroseconds = 100'000;
constexpr auto kReadyDeadline = std::chrono::seconds(60);

FakeSystemd& fake(void* self) { return *static_cast<FakeSystemd*>(self); }

// The string array argument, its names joined by commas in brackets.
std::string readNames(sd_bus_message* message) {
    char** names = nullptr;
    if (sd_bus_message_read_strv(message, &names) < 0 || names == nullptr) return "[?]";
    std::string text = "[";
    for (char** name = names; *name != nullptr; ++name) {
        if (name != names) text += ",";
        text += *name;
        std::free(*name);
    }
    std::free(static_cast<void*>(names));
    return text + "]";
}

std::string readString(sd_bus_message* message) {
    const char* text = nullptr;
    return sd_bus_message_read(message, "s", &text) >= 0 && text != nullptr ? text : "?";
}

std::string readBoolean(sd_bus_message* message) {
    int value = -1;
    return sd_bus_message_read(message, "b", &value) >= 0 ? std::to_string(value) : "?";
}

}  // namespace

FakeSystemd::FakeSystemd(const std::string& address) : thread_(&FakeSystemd::serve, this, address) {
    std::unique_lock<std::mutex> guard(lock_);
    readyChanged_.wait_for(guard, kReadyDeadline, [this] { return started_; });
}

FakeSystemd::~FakeSystemd() {
    stop_ = true;
    thread_.join();
}

std::vector<std::string> FakeSystemd::calls() const {
    std::lock_guard<std::mutex> guard(lock_);
    return calls_;
}

void FakeSystemd::clearCalls() {
    std::lock_guard<std::mutex> guard(lock_);
    calls_.clear();
}

void FakeSystemd::failMethod(const std::string& method, const std::string& errorName, const std::string& message) {
    std::lock_guard<std::mutex> guard(lock_);
    failures_[method] = {errorName, message};
}

void FakeSystemd::serve(std::string address) {
    sd_bus* bus = nullptr;
    bool good = sd_bus_new(&bus) >= 0 && sd_bus_set_address(bus, address.c_str()) >= 0 &&
                sd_bus_set_bus_client(bus, 1) >= 0 && sd_bus_start(bus) >= 0 && setUp(bus);
    {
        std::lock_guard<std::mutex> guard(lock_);
        ready_ = good;
        started_ = true;
    }
    readyChanged_.notify_all();
    while (good && !stop_) {
        const int result = sd_bus_process(bus, nullptr);
        if (result < 0) break;
        if (result == 0) sd_bus_wait(bus, kWaitMicroseconds);
    }
    if (bus != nullptr) sd_bus_flush_close_unref(bus);
}

bool FakeSystemd::setUp(sd_bus* bus) {
    static const sd_bus_vtable manager[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("GetUnit", "s", "o", getUnit, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("Reload", "", "", reload, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("EnableUnitFiles", "asbb", "ba(sss)", enableUnitFiles, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("StartUnit", "ss", "o", startUnit, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("StopUnit", "ss", "o", stopUnit, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("DisableUnitFiles", "asb", "a(sss)", disableUnitFiles, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    static const sd_bus_vtable service[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_PROPERTY("MainPID", "u", mainPid, 0, 0),
        SD_BUS_VTABLE_END,
    };
    return sd_bus_add_object_vtable(bus, nullptr, kManagerPath, "org.freedesktop.systemd1.Manager", manager, this) >=
               0 &&
           sd_bus_add_object_vtable(bus, nullptr, kUnitPath, "org.freedesktop.systemd1.Service", service, this) >= 0 &&
           sd_bus_request_name(bus, "org.freedesktop.systemd1", 0) >= 0;
}

void FakeSystemd::record(const std::string& call) {
    std::lock_guard<std::mutex> guard(lock_);
    calls_.push_back(call);
}

int FakeSystemd::failure(const std::string& method, sd_bus_error* error) {
    std::lock_guard<std::mutex> guard(lock_);
    const auto found = failures_.find(method);
    if (found == failures_.end()) return 0;
    return sd_bus_error_set(error, found->second.first.c_str(), found->second.second.c_str());
}

int FakeSystemd::getUnit(sd_bus_message* message, void* self, sd_bus_error* error) {
    const std::string name = readString(message);
    fake(self).record("GetUnit " + name);
    if (const int failed = fake(self).failure("GetUnit", error)) return failed;
    if (!fake(self).unitStarted_) {
        return sd_bus_error_setf(error, "org.freedesktop.systemd1.NoSuchUnit", "Unit %s not loaded.", name.c_str());
    }
    return sd_bus_reply_method_return(message, "o", kUnitPath);
}

int FakeSystemd::reload(sd_bus_message* message, void* self, sd_bus_error* error) {
    fake(self).record("Reload");
    if (const int failed = fake(self).failure("Reload", error)) return failed;
    return sd_bus_reply_method_return(message, "");
}

int FakeSystemd::enableUnitFiles(sd_bus_message* message, void* self, sd_bus_error* error) {
    const std::string names = readNames(message);
    const std::string runtime = readBoolean(message);
    const std::string force = readBoolean(message);
    fake(self).record("EnableUnitFiles " + names + " " + runtime + " " + force);
    if (const int failed = fake(self).failure("EnableUnitFiles", error)) return failed;
    return sd_bus_reply_method_return(message, "ba(sss)", 1, 0);
}

int FakeSystemd::startUnit(sd_bus_message* message, void* self, sd_bus_error* error) {
    const std::string name = readString(message);
    const std::string mode = readString(message);
    fake(self).record("StartUnit " + name + " " + mode);
    if (const int failed = fake(self).failure("StartUnit", error)) return failed;
    fake(self).unitStarted_ = true;
    return sd_bus_reply_method_return(message, "o", kJobPath);
}

int FakeSystemd::stopUnit(sd_bus_message* message, void* self, sd_bus_error* error) {
    const std::string name = readString(message);
    const std::string mode = readString(message);
    fake(self).record("StopUnit " + name + " " + mode);
    if (const int failed = fake(self).failure("StopUnit", error)) return failed;
    fake(self).unitStarted_ = false;
    return sd_bus_reply_method_return(message, "o", kJobPath);
}

int FakeSystemd::disableUnitFiles(sd_bus_message* message, void* self, sd_bus_error* error) {
    const std::string names = readNames(message);
    const std::string runtime = readBoolean(message);
    fake(self).record("DisableUnitFiles " + names + " " + runtime);
    if (const int failed = fake(self).failure("DisableUnitFiles", error)) return failed;
    return sd_bus_reply_method_return(message, "a(sss)", 0);
}

int FakeSystemd::mainPid(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* self,
                         sd_bus_error*) {
    fake(self).record("Get MainPID");
    return sd_bus_message_append(reply, "u", fake(self).mainPid_.load());
}

}  // namespace tov::testing
