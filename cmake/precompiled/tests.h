// The tests' precompiled header: the standard headers of the program's files and
// GoogleTest, which takes another two seconds to parse in each test file.
#include "standard.h"

#include <gtest/gtest.h>
