#include "platform/ProcessInfo.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(ProcessInfo, NameIsTheShortNameTheTestsRunUnder) {
    EXPECT_EQ(currentProcessName(), "tov_tests");
}

}  // namespace
}  // namespace tov
