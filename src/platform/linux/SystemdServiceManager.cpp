#include "platform/linux/SystemdServiceManager.h"

#include <systemd/sd-bus.h>

#include <cstdarg>
#include <cstdint>
#include <memory>
#include <system_error>
#include <utility>

#include "app/SystemdUnitText.h"
#include "common/QVSLogger.h"

namespace tov {
namespace {

constexpr const char* kSystemd = "org.freedesktop.systemd1";
constexpr const char* kManagerPath = "/org/freedesktop/systemd1";
constexpr const char* kManagerInterface = "org.freedesktop.systemd1.Manager";
constexpr const char* kServiceInterface = "org.freedesktop.systemd1.Service";
constexpr const char* kNoSuchUnit = "org.freedesktop.systemd1.NoSuchUnit";
// No call waits longer than this for systemd's answer (a tick must not stall on a bus).
constexpr std::uint64_t kCallTimeoutMicroseconds = 10'000'000;

struct BusUnref {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, BusUnref>;

struct MessageUnref {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageUnref>;

// An sd-bus error slot that frees itself.
class BusError {
public:
    BusError() = default;
    BusError(const BusError&) = delete;
    BusError& operator=(const BusError&) = delete;
    ~BusError() { sd_bus_error_free(&error_); }

    sd_bus_error* get() { return &error_; }
    bool hasName(const char* name) const { return sd_bus_error_has_name(&error_, name) != 0; }
    // The bus's words, or the system's for the result when the bus gave none.
    std::string text(int result) const {
        if (error_.message != nullptr && *error_.message != '\0') return error_.message;
        if (error_.name != nullptr) return error_.name;
        return std::system_category().message(-result);
    }

private:
    sd_bus_error error_ = SD_BUS_ERROR_NULL;
};

// A connection to the bus, or why there is none.
struct Connection {
    Bus bus;
    std::string failure;
};

int openBus(const std::string& address, sd_bus** bus) {
    if (address.empty()) return sd_bus_open_system(bus);
    int result = sd_bus_new(bus);
    if (result >= 0) result = sd_bus_set_address(*bus, address.c_str());
    if (result >= 0) result = sd_bus_set_bus_client(*bus, 1);
    if (result >= 0) result = sd_bus_start(*bus);
    return result;
}

Connection connect(const std::string& address) {
    sd_bus* bus = nullptr;
    const int result = openBus(address, &bus);
    Connection connection{Bus(bus), ""};
    if (result < 0) {
        connection.bus.reset();
        connection.failure = "Failed to connect to the system bus: " + std::system_category().message(-result);
        return connection;
    }
    sd_bus_set_method_call_timeout(bus, kCallTimeoutMicroseconds);
    return connection;
}

// Calls a method of systemd's manager object with the arguments of types; "" on success,
// else what failed ("<what>: <the bus's words>").
std::string callManager(sd_bus* bus, const std::string& what, const char* method, const char* types, ...) {
    BusError error;
    sd_bus_message* answer = nullptr;
    va_list arguments;
    va_start(arguments, types);
    const int result = sd_bus_call_methodv(bus, kSystemd, kManagerPath, kManagerInterface, method, error.get(),
                                           &answer, types, arguments);
    va_end(arguments);
    sd_bus_message_unref(answer);
    return result < 0 ? what + ": " + error.text(result) : "";
}

// The main process of the service unit at unitPath; 0 when it has none or it cannot be read.
std::uint32_t mainProcess(sd_bus* bus, const char* unitPath) {
    BusError error;
    std::uint32_t pid = 0;
    if (sd_bus_get_property_trivial(bus, kSystemd, unitPath, kServiceInterface, "MainPID", error.get(), 'u', &pid) <
        0) {
        return 0;
    }
    return pid;
}

// The failures of several steps, in order, one per line.
std::string joined(const std::string& first, const std::string& second) {
    if (first.empty()) return second;
    if (second.empty()) return first;
    return first + "\n" + second;
}

}  // namespace

SystemdServiceManager::SystemdServiceManager(std::string busAddress) : busAddress_(std::move(busAddress)) {}

std::string SystemdServiceManager::jobFileText(const std::string& label, const std::string& programPath,
                                               double interval, bool runAtLoad) const {
    return systemdUnitText(label, programPath, interval, runAtLoad);
}

std::optional<std::string> SystemdServiceManager::list(const std::string& label) {
    const Connection connection = connect(busAddress_);
    if (!connection.bus) {
        QVSLogger::debug("systemd could not be asked for [%s]: %s", label.c_str(), connection.failure.c_str());
        return std::nullopt;
    }
    const std::string name = label + ".service";
    BusError error;
    sd_bus_message* answer = nullptr;
    const int result = sd_bus_call_method(connection.bus.get(), kSystemd, kManagerPath, kManagerInterface, "GetUnit",
                                          error.get(), &answer, "s", name.c_str());
    const Message reply(answer);
    if (result < 0) {
        if (error.hasName(kNoSuchUnit)) return "";
        QVSLogger::debug("systemd could not be asked for [%s]: %s", name.c_str(), error.text(result).c_str());
        return std::nullopt;
    }
    const char* unitPath = nullptr;
    if (sd_bus_message_read(reply.get(), "o", &unitPath) < 0 || unitPath == nullptr) {
        QVSLogger::debug("systemd's answer for [%s] holds no unit.", name.c_str());
        return std::nullopt;
    }
    const std::uint32_t pid = mainProcess(connection.bus.get(), unitPath);
    return (pid == 0 ? std::string("-") : std::to_string(pid)) + "\t0\t" + label;
}

std::string SystemdServiceManager::load(const std::string& jobFilePath) {
    const Connection connection = connect(busAddress_);
    if (!connection.bus) return connection.failure;
    sd_bus* const bus = connection.bus.get();
    const std::string name = unitName(jobFilePath);
    std::string failure = callManager(bus, "Failed to reload the unit files", "Reload", "");
    if (failure.empty()) {
        failure = callManager(bus, "Failed to enable " + name, "EnableUnitFiles", "asbb", 1, name.c_str(),
                              0, 1);
    }
    if (failure.empty()) {
        failure = callManager(bus, "Failed to start " + name, "StartUnit", "ss", name.c_str(), "replace");
    }
    return failure;
}

std::string SystemdServiceManager::unload(const std::string& jobFilePath) {
    const Connection connection = connect(busAddress_);
    if (!connection.bus) return connection.failure;
    sd_bus* const bus = connection.bus.get();
    const std::string name = unitName(jobFilePath);
    const std::string stopped =
        callManager(bus, "Failed to stop " + name, "StopUnit", "ss", name.c_str(), "replace");
    const std::string disabled =
        callManager(bus, "Failed to disable " + name, "DisableUnitFiles", "asb", 1, name.c_str(), 0);
    return joined(stopped, disabled);
}

std::string SystemdServiceManager::unitName(const std::string& jobFilePath) {
    const std::size_t slash = jobFilePath.rfind('/');
    return slash == std::string::npos ? jobFilePath : jobFilePath.substr(slash + 1);
}

ServiceManager& platformServiceManager() {
    static SystemdServiceManager manager;
    return manager;
}

}  // namespace tov
