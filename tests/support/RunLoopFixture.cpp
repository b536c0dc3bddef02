#include "support/RunLoopFixture.h"

#include <gtest/gtest.h>

namespace tov::testing {

void RunLoopFixture::SetUp() {
    TemporaryRootTest::SetUp();
    loop = RunLoop::create();
    ASSERT_NE(loop, nullptr);
    loop->startTimer(kRunLoopFailureDeadline, [this] {
        timedOut = true;
        loop->stop();
    });
}

}  // namespace tov::testing
