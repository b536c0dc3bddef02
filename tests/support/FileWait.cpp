#include "support/FileWait.h"

#include <filesystem>
#include <thread>

namespace tov::testing {

bool waitForFile(const std::string& path, std::chrono::seconds deadline) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    std::error_code ignored;
    while (!std::filesystem::exists(std::filesystem::symlink_status(path, ignored))) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

}  // namespace tov::testing
