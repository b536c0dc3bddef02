#pragma once

// A test whose daemon paths all lie below a fresh temporary folder, with the log written
// there at TRACE level so that the test can read what was logged.

#include <gtest/gtest.h>

#include <string>

#include "support/TestFolder.h"

namespace tov::testing {

class TemporaryRootTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Everything logged so far.
    std::string log() const;
    bool logHas(const std::string& text) const { return log().find(text) != std::string::npos; }

    TestFolder folder;
};

}  // namespace tov::testing
