#include "support/TemporaryRootTest.h"

#include "common/Paths.h"
#include "common/QVSLogger.h"

namespace tov::testing {

void TemporaryRootTest::SetUp() {
    Paths::setRootForTesting(folder.path());
    QVSLogger::resetForTesting();
    QVSLogger::setFilename("tov", Paths::logsFolder());
    QVSLogger::setMinimumLogLevel("TRACE");
}

void TemporaryRootTest::TearDown() {
    QVSLogger::resetForTesting();
    Paths::setRootForTesting("");
}

std::string TemporaryRootTest::log() const { return readFile(Paths::logsFolder() + "/tov.log"); }

}  // namespace tov::testing
