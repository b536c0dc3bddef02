#include "platform/NativeFacts.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <thread>

#include "discovery/SystemFacts.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::TestFolder;

// A one-shot HTTP server on 127.0.0.1 that answers one request with a fixed page.
class LoopbackPage {
public:
    explicit LoopbackPage(std::string page) : page_(std::move(page)) {
        listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 || listen(listener_, 1) != 0 ||
            getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
            return;
        }
        port_ = ntohs(address.sin_port);
        server_ = std::thread([this] { answerOnce(); });
    }
    ~LoopbackPage() {
        shutdown(listener_, SHUT_RDWR);
        if (server_.joinable()) server_.join();
        close(listener_);
    }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/ip"; }

private:
    void answerOnce() {
        const int connection = accept(listener_, nullptr, nullptr);
        if (connection < 0) return;
        char request[4096];
        (void)!read(connection, request, sizeof request);
        const std::string response = "HTTP/1.0 200 OK\r\nContent-Type: text/html\r\nContent-Length: " +
                                     std::to_string(page_.size()) + "\r\n\r\n" + page_;
        (void)!write(connection, response.data(), response.size());
        close(connection);
    }

    std::string page_;
    int listener_ = -1;
    unsigned port_ = 0;
    std::thread server_;
};

TEST(LinuxNativeFacts, InterfacesIncludeTheLoopbackAddress) {
    const Value interfaces = nativeFact(facts::kInterfaces, "");
    ASSERT_TRUE(interfaces.isArray());
    bool loopback = false;
    for (const Value& entry : *interfaces.array()) {
        const DictionaryRef interface = entry.dictionary();
        ASSERT_TRUE(interface);
        loopback = loopback || (interface->get("name") == Value("lo") && interface->get("family") == Value("inet") &&
                                interface->get("address") == Value("127.0.0.1"));
    }
    EXPECT_TRUE(loopback);
}

TEST(LinuxNativeFacts, FileSystemStatisticsOfAMountPathAndNothingForAMissingOne) {
    struct statvfs expected {};
    ASSERT_EQ(statvfs("/", &expected), 0);
    const DictionaryRef statistics = nativeFact(facts::kFileSystemStatistics, "/").dictionary();
    ASSERT_TRUE(statistics);
    EXPECT_EQ(statistics->get("blockSize").toUInt64(), expected.f_frsize);
    EXPECT_EQ(statistics->get("totalBlocks").toUInt64(), expected.f_blocks);
    EXPECT_GT(statistics->get("totalBlocks").toUInt64(), 0u);
    EXPECT_TRUE(statistics->contains("freeBlocks"));
    EXPECT_TRUE(statistics->contains("availableBlocks"));
    EXPECT_TRUE(nativeFact(facts::kFileSystemStatistics, "/no/such/mount").isAbsent());
}

TEST(LinuxNativeFacts, BirthTimeOfAFreshFileIsNowWhenTheFileSystemKeepsIt) {
    TestFolder folder;
    const std::string file = folder.write("born", "x");
    const Value birth = nativeFact(facts::kBirthTime, file);
    if (birth.isAbsent()) GTEST_SKIP() << "the temporary folder's file system records no birth times";
    const auto now = std::chrono::duration_cast<std::chrono::seconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    EXPECT_NEAR(static_cast<double>(birth.dictionary()->get("seconds").toInt64()), static_cast<double>(now), 60.0);
    EXPECT_TRUE(nativeFact(facts::kBirthTime, folder.file("missing")).isAbsent());
}

TEST(LinuxNativeFacts, UnameNamesThisMachine) {
    struct utsname names {};
    ASSERT_EQ(uname(&names), 0);
    const DictionaryRef fact = nativeFact(facts::kUname, "").dictionary();
    ASSERT_TRUE(fact);
    EXPECT_EQ(fact->get("sysname"), Value("Linux"));
    EXPECT_EQ(fact->get("machine"), Value(names.machine));
    EXPECT_EQ(fact->get("release"), Value(names.release));
    EXPECT_EQ(fact->get("nodename"), Value(names.nodename));
}

TEST(LinuxNativeFacts, AnUnknownSeatHasNoConsoleUser) {
    const DictionaryRef fact = nativeFact(facts::kConsoleUser, "seat-that-is-not-there").dictionary();
    ASSERT_TRUE(fact);
    EXPECT_EQ(fact->get("seat"), Value(false));
    EXPECT_EQ(fact->get("user"), Value(""));
    const DictionaryRef seat0 = nativeFact(facts::kConsoleUser, "seat0").dictionary();
    ASSERT_TRUE(seat0);
    EXPECT_TRUE(seat0->get("seat").isBool());
    EXPECT_TRUE(seat0->get("user").isString());
}

TEST(LinuxNativeFacts, PrintersAreAnArrayEvenWithoutAPrintingSystem) {
    const Value printers = nativeFact(facts::kPrinters, "");
    ASSERT_TRUE(printers.isArray());
    for (const Value& printer : *printers.array()) {
        ASSERT_TRUE(printer.dictionary());
        EXPECT_TRUE(printer.dictionary()->get("name").isString());
        EXPECT_TRUE(printer.dictionary()->get("makeAndModel").isString());
    }
}

TEST(LinuxNativeFacts, PublicIpPageIsFetchedFromAReachableHost) {
    const LoopbackPage page("<html><body><!--16820416-->ok</body></html>");
    const DictionaryRef fact = nativeFact(facts::kPublicIpPage, page.url()).dictionary();
    ASSERT_TRUE(fact);
    EXPECT_EQ(fact->get("body"), Value("<html><body><!--16820416-->ok</body></html>"));
    EXPECT_FALSE(fact->contains("errorCode"));
}

TEST(LinuxNativeFacts, PublicIpPageOfAClosedPortIsAnErrorCode) {
    unsigned port = 0;
    {
        const LoopbackPage page("");
        port = static_cast<unsigned>(std::stoul(page.url().substr(std::string("http://127.0.0.1:").size())));
    }
    const DictionaryRef fact =
        nativeFact(facts::kPublicIpPage, "http://127.0.0.1:" + std::to_string(port) + "/").dictionary();
    ASSERT_TRUE(fact);
    EXPECT_NE(fact->get("errorCode").toInt64(), 0);
    EXPECT_FALSE(fact->contains("body"));
}

TEST(LinuxNativeFacts, PublicIpPageOfAHostThatDoesNotResolveIsAbsent) {
    EXPECT_TRUE(nativeFact(facts::kPublicIpPage, "http://host.invalid/").isAbsent());
    EXPECT_TRUE(nativeFact(facts::kPublicIpPage, "").isAbsent());
}

TEST(LinuxNativeFacts, UnknownFactsAreAbsent) { EXPECT_TRUE(nativeFact("no such fact", "").isAbsent()); }

}  // namespace
}  // namespace tov
