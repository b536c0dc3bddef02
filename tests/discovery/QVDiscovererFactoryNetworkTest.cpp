// The factory's address facts and its events, printer and sound discoverers.

#include <gtest/gtest.h>

#include "discovery/QVDiscovererFactory.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

Value interfaces(std::initializer_list<std::pair<const char*, const char*>> namesAndAddresses) {
    ArrayRef entries = makeArray();
    for (const auto& [name, address] : namesAndAddresses) {
        DictionaryRef entry = makeDictionary();
        entry->set("name", name);
        entry->set("family", "inet");
        entry->set("address", address);
        entries->push_back(Value(entry));
    }
    return Value(entries);
}

QVDiscovererFactory factoryOf(std::shared_ptr<MemorySystemSource> source, std::string url = "") {
    QVDiscovererFactory::Options options;
    options.persistAddresses = false;
    options.publicIpUrl = std::move(url);
    return QVDiscovererFactory(std::move(source), options);
}

DictionaryRef sectionOf(QVDiscovererFactory& factory, const std::string& name) {
    for (const auto& discoverer : factory.sectionDiscoverers()) {
        if (discoverer->sourceName() == name) return discoverer->discoverInfo();
    }
    return nullptr;
}

TEST(QVDiscovererFactoryNetwork, LinuxInterfacesOfEthernetAndWirelessNamesCarryTheLocalAddress) {
    auto source = std::make_shared<MemorySystemSource>(SystemSource::kLinuxPlatform);
    source->fact("interfaces", "", interfaces({{"lo", "127.0.0.1"}, {"docker0", "172.17.0.1"},
                                               {"wlp2s0", "192.168.1.30"}, {"eth0", "10.0.0.7"}}));
    EXPECT_EQ(factoryOf(source).localIP(), "10.0.0.7");
}

TEST(QVDiscovererFactoryNetwork, MacInterfacesMustStartWithEn) {
    auto source = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    source->fact("interfaces", "", interfaces({{"eth0", "10.0.0.7"}, {"wlan0", "10.0.0.8"}}));
    EXPECT_EQ(factoryOf(source).localIP(), "");
    source->fact("interfaces", "", interfaces({{"eth0", "10.0.0.7"}, {"en1", "192.168.1.2"}}));
    EXPECT_EQ(factoryOf(source).localIP(), "192.168.1.2");
}

TEST(QVDiscovererFactoryNetwork, ThePublicAddressComesFromTheLookupPageOfTheOptions) {
    auto source = std::make_shared<MemorySystemSource>();
    DictionaryRef page = makeDictionary();
    page->set("body", "<!--16820416-->");
    source->fact("publicIpPage", "http://ip.example.test/", Value(page));
    EXPECT_EQ(factoryOf(source, "http://ip.example.test/").publicIP(), "192.168.0.1");
    EXPECT_EQ(factoryOf(source).publicIP(), "");
}

TEST(QVDiscovererFactoryNetwork, EventsAndPrintersAreDiscoveredOnBothPlatforms) {
    for (const char* platform : {SystemSource::kLinuxPlatform, SystemSource::kMacOSPlatform}) {
        auto source = std::make_shared<MemorySystemSource>(platform);
        source->fact("interfaces", "", interfaces({{"en0", "10.0.0.5"}}));
        DictionaryRef printer = makeDictionary();
        printer->set("name", "Office");
        printer->set("makeAndModel", "Generic PostScript Printer");
        source->fact("printers", "", Value(makeArray({Value(printer)})));
        QVDiscovererFactory factory = factoryOf(source);
        const DictionaryRef events = sectionOf(factory, "events");
        ASSERT_TRUE(events) << platform;
        ASSERT_TRUE(events->get("Network").isRecord()) << platform;
        const DictionaryRef appkit = sectionOf(factory, "appkit");
        ASSERT_TRUE(appkit) << platform;
        EXPECT_EQ(appkit->get("printers").array()->size(), 1u) << platform;
    }
}

TEST(QVDiscovererFactoryNetwork, LinuxSoundCardsFillCoreAudio) {
    auto source = std::make_shared<MemorySystemSource>(SystemSource::kLinuxPlatform);
    source->file("/proc/asound/cards", " 0 [Dummy          ]: Dummy - Dummy\n");
    QVDiscovererFactory factory = factoryOf(source);
    const DictionaryRef coreaudio = sectionOf(factory, "coreaudio");
    ASSERT_TRUE(coreaudio);
    ASSERT_TRUE(coreaudio->get("sounds").isArray());
    EXPECT_EQ(coreaudio->get("sounds").array()->size(), 1u);
}

// Counts the parts of pci.ids read.
class CountingSource : public MemorySystemSource {
public:
    std::optional<std::string> readFilePart(const std::string& path, std::uint64_t offset,
                                            std::uint64_t length) override {
        if (path == "/usr/share/misc/pci.ids") ++idsParts;
        return MemorySystemSource::readFilePart(path, offset, length);
    }
    int idsParts = 0;
};

TEST(QVDiscovererFactoryNetwork, TheIdDatabasesAreSearchedOncePerScan) {
    auto source = std::make_shared<CountingSource>();
    source->file("/usr/share/misc/pci.ids", "8086  Intel Corporation\n");
    source->file("/proc/asound/cards", " 0 [PCH ]: HDA-Intel - HDA Intel PCH\n 1 [HDMI ]: HDA-Intel - HDA Intel HDMI\n");
    for (const char* card : {"card0", "card1"}) {
        const std::string folder = std::string("/sys/devices/pci0000:00/0000:00:1f.") + (card[4] == '0' ? "3" : "4");
        source->link(std::string("/sys/class/sound/") + card, folder);
        source->file(folder + "/vendor", "0x8086\n");
        source->link(folder + "/subsystem", "/sys/bus/pci");
        source->link(folder + "/device", folder);
    }
    QVDiscovererFactory factory = factoryOf(source);
    const DictionaryRef first = sectionOf(factory, "coreaudio");
    ASSERT_TRUE(first);
    EXPECT_EQ(first->get("sounds").array()->size(), 2u);
    const int partsOfOneScan = source->idsParts;
    EXPECT_GT(partsOfOneScan, 0);
    // The next scan looks the names up afresh, no more than the first did for both cards.
    sectionOf(factory, "coreaudio");
    EXPECT_EQ(source->idsParts, 2 * partsOfOneScan);
}

}  // namespace
}  // namespace tov
