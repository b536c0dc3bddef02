#include "platform/DetachedProcess.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>
#include <string>
#include <vector>

#include "common/FileDescriptor.h"
#include "support/FileWait.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using testing::readFile;
using testing::waitForFile;

// Writes who it is, then waits for the file "release" beside it (at most about a minute)
// before it writes "finished".
constexpr const char* kDetachedScript = R"script(#!/bin/sh
folder=$(dirname "$0")
standard=$(readlink /proc/$$/fd/0 /proc/$$/fd/1 /proc/$$/fd/2)
{
  echo "$$ $PPID $(ps -o sid= -p $$)"
  echo "$standard"
  ls -l /proc/$$/fd/
} > "$folder/identity.tmp"
mv "$folder/identity.tmp" "$folder/identity"
i=0
while [ ! -e "$folder/release" ] && [ $i -lt 1200 ]; do sleep 0.05; i=$((i+1)); done
echo finished > "$folder/finished"
)script";

struct Identity {
    long pid = 0;
    long parent = 0;
    long session = 0;
    std::vector<std::string> standardDescriptors;
    std::string descriptorListing;
};

Identity readIdentity(const std::string& path) {
    std::istringstream text(readFile(path));
    Identity identity;
    text >> identity.pid >> identity.parent >> identity.session;
    std::string line;
    std::getline(text, line);
    for (int descriptor = 0; descriptor < 3 && std::getline(text, line); ++descriptor) {
        identity.standardDescriptors.push_back(line);
    }
    identity.descriptorListing.assign(std::istreambuf_iterator<char>(text), {});
    return identity;
}

// The children of this process that have ended but were not reaped.
std::vector<long> zombieChildren() {
    std::vector<long> zombies;
    DIR* proc = ::opendir("/proc");
    if (proc == nullptr) return zombies;
    while (const dirent* entry = ::readdir(proc)) {
        std::ifstream stat(std::string("/proc/") + entry->d_name + "/stat");
        std::string line;
        if (!std::getline(stat, line)) continue;
        // pid (name) state parent ...; the name may hold blanks and parentheses.
        std::istringstream rest(line.substr(line.rfind(')') + 1));
        char state = 0;
        long parent = 0;
        rest >> state >> parent;
        if (state == 'Z' && parent == ::getpid()) zombies.push_back(std::atol(entry->d_name));
    }
    ::closedir(proc);
    return zombies;
}

bool waitUntilGone(const std::string& path) {
    const auto end = std::chrono::steady_clock::now() + testing::kGenerousDeadline;
    while (::access(path.c_str(), F_OK) == 0) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

class DetachedProcessTest : public testing::TemporaryRootTest {};

TEST_F(DetachedProcessTest, ProgramRunsInASessionOfItsOwnAndIsNotWaitedFor) {
    const std::string script = folder.write("detached.sh", kDetachedScript);
    FileDescriptor closedAtExec(::open(folder.write("marker-closed", "").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(closedAtExec.isOpen());

    ASSERT_TRUE(startDetachedProcess("/bin/sh", {script}));
    // The program waits for the release that only comes now, so the call returned first.
    EXPECT_NE(::access(folder.file("finished").c_str(), F_OK), 0);
    ASSERT_TRUE(waitForFile(folder.file("identity")));
    const Identity identity = readIdentity(folder.file("identity"));
    folder.write("release", "");

    EXPECT_GT(identity.pid, 0);
    EXPECT_EQ(identity.session, identity.pid);
    EXPECT_NE(identity.session, static_cast<long>(::getsid(0)));
    EXPECT_NE(identity.parent, static_cast<long>(::getpid()));
    EXPECT_EQ(identity.standardDescriptors, (std::vector<std::string>{"/dev/null", "/dev/null", "/dev/null"}));
    EXPECT_EQ(identity.descriptorListing.find("marker-closed"), std::string::npos) << identity.descriptorListing;

    ASSERT_TRUE(waitForFile(folder.file("finished")));
    EXPECT_TRUE(waitUntilGone("/proc/" + std::to_string(identity.pid))) << "the program was left a zombie";
    EXPECT_EQ(zombieChildren(), std::vector<long>{});
}

TEST_F(DetachedProcessTest, ArgumentsArriveOneByOne) {
    const std::string script = folder.write("arguments.sh",
                                            "#!/bin/sh\n"
                                            "folder=$(dirname \"$0\")\n"
                                            "printf '[%s]\\n' \"$@\" > \"$folder/arguments.tmp\"\n"
                                            "mv \"$folder/arguments.tmp\" \"$folder/arguments\"\n");
    ASSERT_EQ(::chmod(script.c_str(), 0755), 0);
    ASSERT_TRUE(startDetachedProcess(script, {"-re", "two words", "'quoted'; $(false)", ""}));
    ASSERT_TRUE(waitForFile(folder.file("arguments")));
    EXPECT_EQ(readFile(folder.file("arguments")), "[-re]\n[two words]\n['quoted'; $(false)]\n[]\n");
}

TEST_F(DetachedProcessTest, MissingProgramGivesFalseAndALogLine) {
    const std::string missing = folder.file("no-such-program");
    EXPECT_FALSE(startDetachedProcess(missing, {"-re"}));
    EXPECT_TRUE(logHas("      ERROR - Could not start [" + missing + "] detached: No such file or directory")) << log();
    EXPECT_EQ(zombieChildren(), std::vector<long>{});
}

TEST_F(DetachedProcessTest, ProgramThatCannotBeExecutedGivesFalse) {
    const std::string notExecutable = folder.write("not-executable", "#!/bin/sh\n");
    ASSERT_EQ(::chmod(notExecutable.c_str(), 0644), 0);
    if (testing::runningAsRoot()) {
        // Root may execute a file only when some execute bit is set; none is.
        EXPECT_FALSE(startDetachedProcess(notExecutable, {}));
    }
    EXPECT_FALSE(startDetachedProcess(folder.path(), {}));
    EXPECT_FALSE(startDetachedProcess("", {}));
    EXPECT_TRUE(logHas("Could not start [" + folder.path() + "] detached")) << log();
}

}  // namespace
}  // namespace tov
