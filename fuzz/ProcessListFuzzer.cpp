// Hands arbitrary bytes to the readers of the process lists ("ps acx" and "ps aux" output
// filtered for tov) and of the service manager's job listing. The instance count never
// exceeds the number of line pieces, the memory is a number and not negative, and a job
// found running is also found installed.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "app/QVAppDaemonUtil.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    using tov::QVAppDaemonUtil;
    std::int64_t lines = 1;
    for (const char character : text) lines += character == '\n' ? 1 : 0;
    const std::int64_t count = QVAppDaemonUtil::instanceCountInProcessList(text, 4242);
    // A line longer than the line buffer is read in pieces, each of which may count.
    if (count < 0 || count > lines + static_cast<std::int64_t>(size / 1023)) std::abort();
    const std::uint64_t ram = 8ULL << 30;
    const double memory = QVAppDaemonUtil::memoryFromProcessList(text, 4242, ram);
    if (std::isnan(memory) || memory < 0) std::abort();
    const std::string name = "com.quorvel.keldservice.tov";
    const bool installed = QVAppDaemonUtil::isProcessNamedInstalledAsLaunchDaemonWithListOutput(name, text);
    const bool running = QVAppDaemonUtil::isProcessNamedRunningAsLaunchDaemonWithListOutput(name, 0, text);
    if (running && !installed) std::abort();
    return 0;
}
