#include "platform/linux/PrivateBus.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>

#include "support/TestFolder.h"

namespace tov::testing {
namespace {

constexpr const char* kDaemon = "/usr/bin/dbus-daemon";
// Bounds only a failure to start: a daemon that works prints its address at once.
constexpr auto kStartDeadline = std::chrono::seconds(60);

std::string configuration(const std::string& socketPath) {
    return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig>\n"
           "  <type>session</type>\n"
           "  <listen>unix:path=" +
           socketPath +
           "</listen>\n"
           "  <auth>EXTERNAL</auth>\n"
           "  <policy context=\"default\">\n"
           "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
           "    <allow eavesdrop=\"true\"/>\n"
           "    <allow own=\"*\"/>\n"
           "  </policy>\n"
           "</busconfig>\n";
}

// The first line the daemon prints, read until the deadline.
std::string firstLine(int descriptor) {
    const auto deadline = std::chrono::steady_clock::now() + kStartDeadline;
    std::string text;
    while (text.find('\n') == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline -
                                                                                std::chrono::steady_clock::now());
        if (left.count() <= 0) return "";
        pollfd entry{descriptor, POLLIN, 0};
        if (::poll(&entry, 1, static_cast<int>(left.count())) <= 0) return "";
        char chunk[256];
        const ssize_t count = ::read(descriptor, chunk, sizeof chunk);
        if (count <= 0) return "";
        text.append(chunk, static_cast<std::size_t>(count));
    }
    return text.substr(0, text.find('\n'));
}

}  // namespace

bool PrivateBus::available() { return ::access(kDaemon, X_OK) == 0; }

PrivateBus::PrivateBus(const std::string& folder) {
    const std::string configPath = folder + "/bus.conf";
    writeFile(configPath, configuration(folder + "/bus"));
    int output[2];
    if (::pipe2(output, O_CLOEXEC) != 0) return;
    const std::string configArgument = "--config-file=" + configPath;
    // The daemon's complaints (it cannot raise its file limit in a container) go to a file.
    const int errors = ::open((folder + "/bus.log").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    pid_ = ::fork();
    if (pid_ == 0) {
        ::dup2(output[1], STDOUT_FILENO);
        if (errors >= 0) ::dup2(errors, STDERR_FILENO);
        ::execl(kDaemon, kDaemon, configArgument.c_str(), "--nofork", "--print-address", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(output[1]);
    if (errors >= 0) ::close(errors);
    if (pid_ > 0) address_ = firstLine(output[0]);
    ::close(output[0]);
}

PrivateBus::~PrivateBus() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGTERM);
    int status = 0;
    ::waitpid(pid_, &status, 0);
}

}  // namespace tov::testing
