#pragma once

// A D-Bus daemon of the test's own, listening on a socket in a test folder, so that
// sd-bus clients and servers can meet without the machine's buses.

#include <sys/types.h>

#include <string>

namespace tov::testing {

class PrivateBus {
public:
    // Starts dbus-daemon with a minimal configuration written into folder.
    explicit PrivateBus(const std::string& folder);
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    // The bus's address; empty when the daemon could not be started.
    const std::string& address() const { return address_; }

    static bool available();

private:
    pid_t pid_ = -1;
    std::string address_;
};

}  // namespace tov::testing
