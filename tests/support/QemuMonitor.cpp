#include "support/QemuMonitor.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

namespace tov::testing {
namespace {

using nlohmann::json;

int connectedSocket(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) return -1;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0) return -1;
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return socket;
    ::close(socket);
    return -1;
}

int millisecondsUntil(QemuMonitor::Deadline deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

bool isEventFor(const json& message, const std::string& event, const std::string& deviceId) {
    if (!message.is_object() || message.value("event", "") != event) return false;
    const json data = message.value("data", json::object());
    return data.is_object() && data.value("device", "") == deviceId;
}

}  // namespace

QemuMonitor::~QemuMonitor() {
    if (socket_ >= 0) ::close(socket_);
}

bool QemuMonitor::connect(const std::string& socketPath, Deadline deadline) {
    deadline_ = deadline;
    while ((socket_ = connectedSocket(socketPath)) < 0) {
        if (std::chrono::steady_clock::now() >= deadline_) return fail("no monitor at " + socketPath);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    const json greeting = nextMessage();
    if (!greeting.is_object() || !greeting.contains("QMP")) return fail("the monitor sent no greeting");
    return !execute("qmp_capabilities").is_null();
}

bool QemuMonitor::plugUsbStorage(const std::string& id, const std::string& image, const std::string& bus,
                                 const std::string& serial) {
    const std::string node = id + "-drive";
    const json file{{"driver", "file"}, {"filename", image}};
    if (execute("blockdev-add", {{"driver", "raw"}, {"node-name", node}, {"file", file}}).is_null()) return false;
    const json device{{"driver", "usb-storage"}, {"id", id}, {"bus", bus}, {"drive", node}, {"serial", serial}};
    return !execute("device_add", device).is_null();
}

bool QemuMonitor::unplug(const std::string& id) {
    if (execute("device_del", {{"id", id}}).is_null()) return false;
    return waitForEvent("DEVICE_DELETED", id);
}

json QemuMonitor::execute(const std::string& command, const json& arguments) {
    json request{{"execute", command}};
    if (!arguments.empty()) request["arguments"] = arguments;
    const std::string line = request.dump() + "\n";
    if (::send(socket_, line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size())) {
        fail("cannot send " + command + ": " + std::strerror(errno));
        return nullptr;
    }
    for (;;) {
        json message = nextMessage();
        if (message.is_discarded()) return nullptr;
        if (message.contains("return")) return message["return"];
        if (message.contains("error")) {
            fail(command + " failed: " + message["error"].dump());
            return nullptr;
        }
        events_.push_back(std::move(message));
    }
}

bool QemuMonitor::waitForEvent(const std::string& event, const std::string& deviceId) {
    for (const json& seen : events_) {
        if (isEventFor(seen, event, deviceId)) return true;
    }
    for (;;) {
        json message = nextMessage();
        if (message.is_discarded()) return false;
        if (isEventFor(message, event, deviceId)) return true;
        events_.push_back(std::move(message));
    }
}

json QemuMonitor::nextMessage() {
    std::size_t end;
    while ((end = buffered_.find('\n')) == std::string::npos) {
        if (!readMore()) return json::value_t::discarded;
    }
    const std::string line = buffered_.substr(0, end);
    buffered_.erase(0, end + 1);
    json message = json::parse(line, nullptr, false);
    if (message.is_discarded()) fail("the monitor sent no JSON: " + line);
    return message;
}

bool QemuMonitor::readMore() {
    if (socket_ < 0) return fail("not connected");
    pollfd ready{socket_, POLLIN, 0};
    const int polled = ::poll(&ready, 1, millisecondsUntil(deadline_));
    if (polled == 0) return fail("the monitor did not answer in time");
    if (polled < 0) return fail(std::string("poll: ") + std::strerror(errno));
    char buffer[4096];
    const ssize_t count = ::recv(socket_, buffer, sizeof buffer, 0);
    if (count <= 0) return fail("the monitor closed the connection");
    buffered_.append(buffer, static_cast<std::size_t>(count));
    return true;
}

bool QemuMonitor::fail(const std::string& why) {
    failure_ = why;
    return false;
}

}  // namespace tov::testing
