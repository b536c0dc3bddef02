#include "support/QemuMachine.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <thread>
#include <utility>

#include "support/TestFolder.h"

namespace tov::testing {
namespace {

// The title of the report's marker lines, as the guest's init prints them.
constexpr const char* kReportTitle = "TOV REPORT";

std::string withoutCarriageReturns(std::string text) {
    std::erase(text, '\r');
    return text;
}

std::string joined(const std::vector<std::string>& items, char separator) {
    std::string text;
    for (const std::string& item : items) {
        if (!text.empty()) text += separator;
        text += item;
    }
    return text;
}

}  // namespace

QemuMachine::QemuMachine(std::string name, std::string folder) : name_(std::move(name)), folder_(std::move(folder)) {}

QemuMachine::~QemuMachine() { kill(); }

void QemuMachine::addArguments(const std::vector<std::string>& arguments) {
    arguments_.insert(arguments_.end(), arguments.begin(), arguments.end());
}

void QemuMachine::waitForPath(const std::string& pattern) { waitPatterns_.push_back(pattern); }

void QemuMachine::runScenario(const std::string& name) { scenario_ = name; }

void QemuMachine::addGuestParameter(const std::string& name, const std::string& value) {
    guestParameters_.push_back(name + "=" + value);
}

void QemuMachine::enableMonitor() { monitor_ = true; }

std::string QemuMachine::monitorPath() const { return folder_ + "/" + name_ + ".qmp"; }

std::vector<std::string> QemuMachine::commandLine(const QemuGuestImage& image) const {
    // The init reads tov_host, tov_wait and tov_scenario from its environment (the kernel
    // hands on parameters it does not know); panic=-1 with -no-reboot ends QEMU on a
    // kernel panic. no_timer_check: on a busy host the emulated timer can miss the
    // kernel's early check of the IO-APIC timer, which then panics.
    std::string kernelParameters = "console=ttyS0 quiet panic=-1 no_timer_check tov_host=" + name_;
    if (!waitPatterns_.empty()) kernelParameters += " tov_wait=" + joined(waitPatterns_, ',');
    if (!scenario_.empty()) kernelParameters += " tov_scenario=" + scenario_;
    for (const std::string& parameter : guestParameters_) kernelParameters += " " + parameter;
    std::vector<std::string> line{image.qemu,
                                  "-accel", "tcg",
                                  "-nodefaults",
                                  "-display", "none",
                                  "-monitor", "none",
                                  "-no-reboot",
                                  "-serial", "file:" + folder_ + "/" + name_ + ".console",
                                  "-kernel", image.kernel,
                                  "-initrd", image.initramfs,
                                  "-append", kernelParameters};
    if (monitor_) line.insert(line.end(), {"-qmp", "unix:" + monitorPath() + ",server=on,wait=off"});
    line.insert(line.end(), arguments_.begin(), arguments_.end());
    return line;
}

bool QemuMachine::start(const QemuGuestImage& image) {
    const std::vector<std::string> line = commandLine(image);
    std::vector<char*> argv;
    for (const std::string& argument : line) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const std::string messages = folder_ + "/" + name_ + ".qemu";
    const int output = ::open(messages.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (output < 0) return false;
    std::fflush(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
        // QEMU goes with the test process, whatever ends it.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int input = ::open("/dev/null", O_RDONLY);
        ::dup2(input, STDIN_FILENO);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(output, STDERR_FILENO);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ::close(output);
    return pid_ > 0;
}

bool QemuMachine::hasEnded() {
    if (pid_ <= 0) return true;
    int status = 0;
    if (::waitpid(pid_, &status, WNOHANG) == 0) return false;
    pid_ = -1;
    return true;
}

void QemuMachine::kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
}

void QemuMachine::stopForTimeout() {
    timedOut_ = pid_ > 0;
    kill();
}

std::string QemuMachine::console() const {
    return withoutCarriageReturns(readFile(folder_ + "/" + name_ + ".console"));
}

std::string QemuMachine::qemuMessages() const { return readFile(folder_ + "/" + name_ + ".qemu"); }

std::optional<std::string> QemuMachine::report() const { return section(kReportTitle); }

int QemuMachine::tovStatus() const { return sectionStatus(kReportTitle); }

std::optional<std::string> QemuMachine::section(const std::string& title) const {
    const std::string text = console();
    const std::string beginLine = "-----BEGIN " + title + "-----\n";
    const std::size_t begin = text.find(beginLine);
    if (begin == std::string::npos) return std::nullopt;
    const std::size_t start = begin + beginLine.size();
    const std::size_t end = text.find("-----END " + title + "-----", start);
    if (end == std::string::npos) return std::nullopt;
    return text.substr(start, end - start);
}

int QemuMachine::sectionStatus(const std::string& title) const {
    const std::string text = console();
    const std::string endLine = "-----END " + title + "----- status ";
    const std::size_t end = text.find(endLine);
    if (end == std::string::npos) return -1;
    int status = -1;
    std::sscanf(text.c_str() + end + endLine.size(), "%d", &status);
    return status;
}

bool QemuMachine::waitForEnd(std::chrono::steady_clock::time_point deadline) {
    while (!hasEnded()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            stopForTimeout();
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return true;
}

bool QemuMachine::waitForConsoleLine(const std::string& line, std::chrono::steady_clock::time_point deadline) {
    for (;;) {
        // Whether QEMU has ended is asked before the console is read, so that the last
        // lines of a guest that powered off are read too.
        const bool ended = hasEnded();
        const std::string text = "\n" + console();
        if (text.find("\n" + line + "\n") != std::string::npos) return true;
        if (ended || std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

void runMachines(const std::vector<QemuMachine*>& machines, const QemuGuestImage& image, std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    for (QemuMachine* machine : machines) machine->start(image);
    for (;;) {
        bool allEnded = true;
        for (QemuMachine* machine : machines) allEnded = machine->hasEnded() && allEnded;
        if (allEnded) return;
        if (std::chrono::steady_clock::now() >= deadline) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    for (QemuMachine* machine : machines) {
        if (machine->hasEnded()) continue;
        machine->stopForTimeout();
    }
}

}  // namespace tov::testing
