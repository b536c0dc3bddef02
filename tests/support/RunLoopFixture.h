#pragma once

// A test with the platform's run loop, made on the test's thread, and a deadline timer
// that stops the loop (and marks the test as timed out) should a failing test never stop it.

#include <chrono>
#include <memory>

#include "platform/RunLoop.h"
#include "support/TemporaryRootTest.h"

namespace tov::testing {

// Bounds a test that fails by never stopping; a passing test stops long before.
inline constexpr std::chrono::milliseconds kRunLoopFailureDeadline{60000};

class RunLoopFixture : public TemporaryRootTest {
protected:
    void SetUp() override;

    std::unique_ptr<RunLoop> loop;
    bool timedOut = false;
};

}  // namespace tov::testing
