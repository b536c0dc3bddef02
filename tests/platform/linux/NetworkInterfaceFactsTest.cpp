#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "common/TextUtils.h"
#include "discovery/SystemFacts.h"
#include "platform/NativeFacts.h"
#include "platform/linux/LinuxFacts.h"
#include "support/ChildProcess.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

constexpr int kNoNamespace = 77;
constexpr const char* kIpTool = "/usr/sbin/ip";

std::string trimmedFile(const std::string& path) {
    return access(path.c_str(), R_OK) == 0 ? trimWhitespaceAndNewlines(testing::readFile(path)) : "";
}

TEST(InterfaceName, FollowsTheKernelsRule) {
    for (const char* name : {"eth0", "wlp0s20f3", "eth0.100", "a..b", "br-1a2b3c4d5e6f", "123456789012345"}) {
        EXPECT_TRUE(isValidInterfaceName(name)) << name;
    }
    for (const char* name : {"", ".", "..", "../lo", "a/b", "/", "eth 0", "eth\t0", "eth:0", "1234567890123456"}) {
        EXPECT_FALSE(isValidInterfaceName(name)) << name;
    }
    EXPECT_FALSE(isValidInterfaceName(std::string("lo\0x", 4)));
}

TEST(NetworkInterfaceFacts, NamesWithSlashesOrDotsAreRefused) {
    for (const char* fact : {facts::kPermanentAddress, facts::kWifiNetwork}) {
        for (const char* name : {"..", ".", "../lo", "lo/..", "/sys/class/net/lo", ""}) {
            EXPECT_TRUE(nativeFact(fact, name).isAbsent()) << fact << " " << name;
        }
    }
}

TEST(NetworkInterfaceFacts, AnUnknownInterfaceHasNeither) {
    EXPECT_TRUE(nativeFact(facts::kPermanentAddress, "tovnosuch0").isAbsent());
    EXPECT_TRUE(nativeFact(facts::kWifiNetwork, "tovnosuch0").isAbsent());
}

// The network adapters of this machine (interfaces with a device), by name.
std::vector<std::string> adapterNames() {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/sys/class/net", error)) {
        if (access((entry.path() / "device").c_str(), F_OK) == 0) names.push_back(entry.path().filename());
    }
    return names;
}

// Every adapter of this machine whose address the driver set from the hardware (the
// kernel's address type 0) and that nobody changed since answers that address.
TEST(NetworkInterfaceFacts, APermanentAddressIsTheAddressTheHardwareGave) {
    int compared = 0;
    for (const std::string& name : adapterNames()) {
        const std::string folder = "/sys/class/net/" + name;
        if (trimmedFile(folder + "/addr_assign_type") != "0") continue;
        const std::string address = trimmedFile(folder + "/address");
        if (address.empty() || address == "00:00:00:00:00:00") continue;
        const Value fact = nativeFact(facts::kPermanentAddress, name);
        ASSERT_TRUE(fact.isDictionary()) << name;
        EXPECT_EQ(fact.dictionary()->get("address"), Value(address)) << name;
        ++compared;
    }
    if (compared == 0) GTEST_SKIP() << "no network adapter with a hardware-given address here";
}

TEST(NetworkInterfaceFacts, AWiredAdapterHasNoWifiNetwork) {
    int asked = 0;
    for (const std::string& name : adapterNames()) {
        if (access(("/sys/class/net/" + name + "/wireless").c_str(), F_OK) == 0) continue;
        EXPECT_TRUE(nativeFact(facts::kWifiNetwork, name).isAbsent()) << name;
        ++asked;
    }
    if (asked == 0) GTEST_SKIP() << "no wired network adapter here";
}

TEST(NetworkInterfaceFacts, LoopbackHasNoPermanentAddressAndNoWifiNetwork) {
    EXPECT_TRUE(nativeFact(facts::kPermanentAddress, "lo").isAbsent());
    EXPECT_TRUE(nativeFact(facts::kWifiNetwork, "lo").isAbsent());
}

int runIp(const std::vector<std::string>& arguments) {
    return testing::runInChild([&arguments] { return testing::executeProgram(kIpTool, arguments); }).exitCode;
}

// A veth pair in a private network namespace: the address given to one end and the random
// address of the other are set by software, so neither is a permanent address; neither
// end is a Wi-Fi interface.
TEST(NetworkInterfaceFacts, AVethPairHasNoPermanentAddressAndNoWifiNetwork) {
    if (!testing::runningAsRoot()) GTEST_SKIP() << "needs root";
    if (access(kIpTool, X_OK) != 0) GTEST_SKIP() << "needs " << kIpTool;
    const int verdict = testing::runInChild([] {
        if (unshare(CLONE_NEWNET) != 0) return kNoNamespace;
        if (runIp({"link", "add", "tovv0", "address", "02:00:5e:10:20:30", "type", "veth", "peer", "name", "tovv1"}) != 0) {
            return kNoNamespace;
        }
        if (!nativeFact(facts::kPermanentAddress, "tovv0").isAbsent()) return 1;
        if (!nativeFact(facts::kPermanentAddress, "tovv1").isAbsent()) return 2;
        if (!nativeFact(facts::kWifiNetwork, "tovv0").isAbsent()) return 3;
        if (!nativeFact(facts::kWifiNetwork, "tovv1").isAbsent()) return 4;
        // The pair is gone with the namespace; the host's interfaces are not visible here.
        if (!nativeFact(facts::kPermanentAddress, "eth0").isAbsent()) return 5;
        return 0;
    }).exitCode;
    if (verdict == kNoNamespace) GTEST_SKIP() << "cannot make a network namespace with a veth pair here";
    EXPECT_EQ(verdict, 0);
}

}  // namespace
}  // namespace tov
