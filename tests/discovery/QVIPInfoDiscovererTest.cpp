#include "discovery/QVIPInfoDiscoverer.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "common/QVSSettings.h"
#include "support/MemorySystemSource.h"
#include "support/TemporaryRootTest.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::MemorySystemSource;
using testing::readFile;
using testing::TestFolder;

constexpr const char* kUrl = "http://ip.example.test/";
const std::vector<std::string> kMacPrefixes{"en"};
const std::vector<std::string> kLinuxPrefixes{"en", "eth", "wl"};

Value interfaceEntry(const std::string& name, const std::string& family, const std::string& address) {
    DictionaryRef entry = makeDictionary();
    entry->set("name", name);
    entry->set("family", family);
    entry->set("address", address);
    return Value(entry);
}

Value pageWithBody(const std::string& body) {
    DictionaryRef page = makeDictionary();
    page->set("body", body);
    return Value(page);
}

Value pageWithError(std::int64_t code) {
    DictionaryRef page = makeDictionary();
    page->set("errorCode", code);
    return Value(page);
}

// 16820416 is 0x01_00_A8_C0: 192.168.0.1 with the lowest byte first.
const std::string kPageOf192_168_0_1 = "<html><body><!--16820416--></body></html>";

class Machine {
public:
    Machine& interface(const std::string& name, const std::string& family, const std::string& address) {
        interfaces_->push_back(interfaceEntry(name, family, address));
        source->fact("interfaces", "", Value(interfaces_));
        return *this;
    }

    std::shared_ptr<MemorySystemSource> source = std::make_shared<MemorySystemSource>();

private:
    ArrayRef interfaces_ = makeArray();
};

std::string localIPOf(Machine& machine, const std::vector<std::string>& prefixes = kMacPrefixes) {
    return QVIPInfoDiscoverer::localIP(*machine.source, prefixes);
}

TEST(QVIPInfoDiscovererLocalIP, TheFirstInterfaceInNameOrderWins) {
    Machine machine;
    machine.interface("en1", "inet", "192.168.1.2").interface("en0", "inet", "10.0.0.5");
    EXPECT_EQ(localIPOf(machine), "10.0.0.5");
}

TEST(QVIPInfoDiscovererLocalIP, NamesCompareAsTextNotAsNumbers) {
    Machine machine;
    machine.interface("en2", "inet", "192.168.2.2").interface("en10", "inet", "10.0.10.1");
    EXPECT_EQ(localIPOf(machine), "10.0.10.1");
}

TEST(QVIPInfoDiscovererLocalIP, LoopbackBridgeAndIPv6OnlyInterfacesAreNeverChosen) {
    Machine machine;
    machine.interface("lo0", "inet", "127.0.0.1")
        .interface("bridge0", "inet", "192.168.64.1")
        .interface("en0", "inet6", "fe80::1")
        .interface("en0", "other", "aa:bb:cc:dd:ee:ff");
    EXPECT_EQ(localIPOf(machine), "");
    machine.interface("en5", "inet", "172.16.0.9");
    EXPECT_EQ(localIPOf(machine), "172.16.0.9");
}

TEST(QVIPInfoDiscovererLocalIP, ALaterEntryOfTheSameNameReplacesTheEarlierOne) {
    Machine machine;
    machine.interface("en0", "inet", "10.0.0.5").interface("en0", "inet", "10.0.0.6");
    EXPECT_EQ(localIPOf(machine), "10.0.0.6");
}

TEST(QVIPInfoDiscovererLocalIP, LinuxNamesOfEthernetAndWirelessInterfacesCount) {
    Machine machine;
    machine.interface("wlp2s0", "inet", "192.168.1.30");
    EXPECT_EQ(localIPOf(machine, kLinuxPrefixes), "192.168.1.30");
    machine.interface("eth0", "inet", "10.1.1.1");
    EXPECT_EQ(localIPOf(machine, kLinuxPrefixes), "10.1.1.1");
    machine.interface("enp0s31f6", "inet", "10.2.2.2");
    EXPECT_EQ(localIPOf(machine, kLinuxPrefixes), "10.2.2.2");
    EXPECT_EQ(localIPOf(machine, kMacPrefixes), "10.2.2.2");
}

TEST(QVIPInfoDiscovererLocalIP, ContainerTunnelAndLoopbackInterfacesOfLinuxNeverCount) {
    Machine machine;
    machine.interface("docker0", "inet", "172.17.0.1")
        .interface("virbr0", "inet", "192.168.122.1")
        .interface("tun0", "inet", "10.8.0.2")
        .interface("lo", "inet", "127.0.0.1");
    EXPECT_EQ(localIPOf(machine, kLinuxPrefixes), "");
}

TEST(QVIPInfoDiscovererLocalIP, MalformedOrMissingInterfaceFactsGiveNoAddress) {
    Machine empty;
    EXPECT_EQ(localIPOf(empty), "");
    auto source = std::make_shared<MemorySystemSource>();
    ArrayRef odd = makeArray({Value("en0"), Value(42), Value(makeDictionary())});
    DictionaryRef withoutAddress = makeDictionary();
    withoutAddress->set("name", "en0");
    withoutAddress->set("family", "inet");
    odd->push_back(Value(withoutAddress));
    source->fact("interfaces", "", Value(odd));
    EXPECT_EQ(QVIPInfoDiscoverer::localIP(*source, kMacPrefixes), "");
    source->fact("interfaces", "", Value("en0"));
    EXPECT_EQ(QVIPInfoDiscoverer::localIP(*source, kMacPrefixes), "");
}

TEST(QVIPInfoDiscovererHtml, TheNumberInTheCommentIsTheAddressLowestByteFirst) {
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents(kPageOf192_168_0_1), "192.168.0.1");
}

TEST(QVIPInfoDiscovererHtml, ZeroGivesTheZeroAddress) {
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!--0-->"), "0.0.0.0");
}

TEST(QVIPInfoDiscovererHtml, ANumberAboveThirtyTwoBitsKeepsItsLowThirtyTwoBits) {
    // 0x1_0100_A8C0: the bit above 32 is dropped.
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!--4311787712-->"), "192.168.0.1");
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!--4294967295-->"), "255.255.255.255");
}

TEST(QVIPInfoDiscovererHtml, TextWithoutTheCommentGivesNothing) {
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents(""), std::nullopt);
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<html>no comment</html>"), std::nullopt);
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!--"), std::nullopt);
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!--123"), std::nullopt);
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!---->"), std::nullopt);
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!--!--5-->"), std::nullopt);
}

TEST(QVIPInfoDiscovererHtml, LeadingDigitsAreReadAndTextWithoutDigitsReadsAsZero) {
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!--258abc-->"), "2.1.0.0");
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!-- ip -->"), "0.0.0.0");
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!--16820416--> <!--1-->"), "192.168.0.1");
}

TEST(QVIPInfoDiscovererHtml, APlusSignIsReadAndAMinusSignEndsTheNumber) {
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!---1-->"), std::nullopt);  // "" before the dash
    EXPECT_EQ(QVIPInfoDiscoverer::ipAddressFromHtmlContents("<!--+1-->"), "1.0.0.0");
}

class QVIPInfoDiscovererTest : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        std::filesystem::create_directories(Paths::componentFolder());
    }


    static QVSSettings& settings() { return QVSSettings::defaultSettings(); }

    static void save(const std::optional<std::string>& local, const std::optional<std::string>& publicAddress) {
        settings().setLocalIP(local);
        settings().setPublicIP(publicAddress);
        ASSERT_TRUE(settings().synchronize());
    }

    QVIPInfoDiscoverer discoverer(bool persistAddresses = true, std::string url = kUrl) {
        return QVIPInfoDiscoverer(machine.source, {kMacPrefixes, std::move(url), persistAddresses});
    }

    Machine machine;
};

TEST_F(QVIPInfoDiscovererTest, TheSectionIsOneRecordUnderNetwork) {
    machine.interface("en0", "inet", "10.0.0.5");
    machine.source->fact("publicIpPage", kUrl, pageWithBody(kPageOf192_168_0_1));
    QVIPInfoDiscoverer events = discoverer();
    EXPECT_EQ(events.sourceName(), "events");
    const DictionaryRef section = events.discoverInfo();
    ASSERT_EQ(section->size(), 1u);
    const auto record = std::dynamic_pointer_cast<QVIPInfo>(section->get("Network").record());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->localIp(), "10.0.0.5");
    EXPECT_EQ(record->publicIp(), "192.168.0.1");
}

TEST_F(QVIPInfoDiscovererTest, ANewLocalAddressLooksThePublicOneUpAndSavesBoth) {
    save("10.0.0.4", "203.0.113.1");
    machine.interface("en0", "inet", "10.0.0.5");
    machine.source->fact("publicIpPage", kUrl, pageWithBody(kPageOf192_168_0_1));
    const auto record = discoverer().discoverIP();
    EXPECT_EQ(record->localIp(), "10.0.0.5");
    EXPECT_EQ(record->publicIp(), "192.168.0.1");
    EXPECT_TRUE(logHas("INFORMATION - Will determine public IP address..."));
    EXPECT_TRUE(logHas("INFORMATION - New Public IP address = [192.168.0.1]"));
    EXPECT_FALSE(settings().isDirty());
    QVSSettings reader(Paths::settingsFile());
    EXPECT_EQ(reader.localIP(), "10.0.0.5");
    EXPECT_EQ(reader.publicIP(), "192.168.0.1");
}

TEST_F(QVIPInfoDiscovererTest, AnUnchangedLocalAddressMakesNoLookupAndReportsTheSavedPublicOne) {
    save("10.0.0.5", "203.0.113.1");
    machine.interface("en0", "inet", "10.0.0.5");
    machine.source->fact("publicIpPage", kUrl, pageWithBody(kPageOf192_168_0_1));
    const auto record = discoverer().discoverIP();
    EXPECT_EQ(record->localIp(), "10.0.0.5");
    EXPECT_EQ(record->publicIp(), "203.0.113.1");
    EXPECT_FALSE(logHas("Will determine public IP address"));
}

// A write would store the record's "" in place of the absent saved public address.
TEST_F(QVIPInfoDiscovererTest, AFailedLookupWithoutALocalAddressLeavesTheSettingsUntouched) {
    save("10.0.0.5", std::nullopt);
    machine.interface("lo0", "inet", "127.0.0.1");
    machine.source->fact("publicIpPage", kUrl, pageWithError(-1009));
    const auto record = discoverer().discoverIP();
    EXPECT_EQ(record->localIp(), "10.0.0.5");
    EXPECT_EQ(record->publicIp(), "");
    EXPECT_TRUE(logHas("DEBUG - Could not get Public IP, error code = [-1009]"));
    EXPECT_TRUE(logHas("INFORMATION - New Public IP address is empty, use the saved Public IP address = []"));
    EXPECT_FALSE(settings().isDirty());
    EXPECT_EQ(settings().localIP(), "10.0.0.5");
    EXPECT_EQ(settings().publicIP(), std::nullopt);
}

// A write would store the record's "" in place of the absent saved local address.
TEST_F(QVIPInfoDiscovererTest, AnUnreachablePageWithoutALocalAddressLeavesTheSettingsUntouched) {
    save(std::nullopt, "203.0.113.1");
    const auto record = discoverer().discoverIP();
    EXPECT_EQ(record->localIp(), "");
    EXPECT_EQ(record->publicIp(), "203.0.113.1");
    EXPECT_TRUE(logHas("use the saved Public IP address = [203.0.113.1]"));
    EXPECT_EQ(settings().localIP(), std::nullopt);
    EXPECT_FALSE(settings().isDirty());
}

TEST_F(QVIPInfoDiscovererTest, ANewPublicAddressWithoutALocalOneWritesTheSavedLocalBack) {
    save("10.0.0.5", "203.0.113.1");
    machine.source->fact("publicIpPage", kUrl, pageWithBody("<!--16820416-->"));
    const auto record = discoverer().discoverIP();
    EXPECT_EQ(record->localIp(), "10.0.0.5");
    EXPECT_EQ(record->publicIp(), "192.168.0.1");
    QVSSettings reader(Paths::settingsFile());
    EXPECT_EQ(reader.localIP(), "10.0.0.5");
    EXPECT_EQ(reader.publicIP(), "192.168.0.1");
}

TEST_F(QVIPInfoDiscovererTest, ALocalAddressWithAFailedLookupSavesTheSavedPublicAgain) {
    save("10.0.0.4", "203.0.113.1");
    machine.interface("en0", "inet", "10.0.0.5");
    const auto record = discoverer().discoverIP();
    EXPECT_EQ(record->publicIp(), "203.0.113.1");
    QVSSettings reader(Paths::settingsFile());
    EXPECT_EQ(reader.localIP(), "10.0.0.5");
    EXPECT_EQ(reader.publicIP(), "203.0.113.1");
}

TEST_F(QVIPInfoDiscovererTest, WithoutPersistenceNothingSavedIsReadOrWritten) {
    save("10.0.0.4", "203.0.113.1");
    machine.interface("en0", "inet", "10.0.0.5");
    machine.source->fact("publicIpPage", kUrl, pageWithBody(kPageOf192_168_0_1));
    const auto record = discoverer(false).discoverIP();
    EXPECT_EQ(record->localIp(), "10.0.0.5");
    EXPECT_EQ(record->publicIp(), "192.168.0.1");
    EXPECT_EQ(settings().localIP(), "10.0.0.4");
    EXPECT_EQ(settings().publicIP(), "203.0.113.1");

    Machine bare;
    const auto nothing = QVIPInfoDiscoverer(bare.source, {kMacPrefixes, kUrl, false}).discoverIP();
    EXPECT_EQ(nothing->localIp(), "");
    EXPECT_EQ(nothing->publicIp(), "");
}

TEST_F(QVIPInfoDiscovererTest, WithoutALookupPageNoLookupIsMade) {
    machine.source->fact("publicIpPage", "", pageWithBody(kPageOf192_168_0_1));
    EXPECT_EQ(QVIPInfoDiscoverer::publicIP(*machine.source, ""), "");
    machine.interface("en0", "inet", "10.0.0.5");
    EXPECT_EQ(discoverer(true, "").discoverIP()->publicIp(), "");
}

TEST_F(QVIPInfoDiscovererTest, PublicIPOfThePageAnswers) {
    EXPECT_EQ(QVIPInfoDiscoverer::publicIP(*machine.source, kUrl), "");  // not reachable
    machine.source->fact("publicIpPage", kUrl, pageWithBody("<p>no address</p>"));
    EXPECT_EQ(QVIPInfoDiscoverer::publicIP(*machine.source, kUrl), "");
    machine.source->fact("publicIpPage", kUrl, pageWithBody(kPageOf192_168_0_1));
    EXPECT_EQ(QVIPInfoDiscoverer::publicIP(*machine.source, kUrl), "192.168.0.1");
    machine.source->fact("publicIpPage", kUrl, pageWithError(28));
    EXPECT_EQ(QVIPInfoDiscoverer::publicIP(*machine.source, kUrl), "");
    EXPECT_TRUE(logHas("Could not get Public IP, error code = [28]"));
    machine.source->fact("publicIpPage", kUrl, Value("not a page"));
    EXPECT_EQ(QVIPInfoDiscoverer::publicIP(*machine.source, kUrl), "");
}

}  // namespace
}  // namespace tov
