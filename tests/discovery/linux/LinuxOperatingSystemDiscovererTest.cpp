#include "discovery/linux/LinuxOperatingSystemDiscoverer.h"

#include <gtest/gtest.h>

#include "common/QVSLogger.h"
#include "discovery/QVDiscovererFactory.h"
#include "support/TemporaryRootTest.h"
#include "support/MemorySystemSource.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

constexpr const char* kUbuntuRelease =
    "PRETTY_NAME=\"Ubuntu 22.04.4 LTS\"\n"
    "NAME=\"Ubuntu\"\n"
    "VERSION_ID=\"22.04\"\n"
    "VERSION=\"22.04.4 LTS (Jammy Jellyfish)\"\n"
    "ID=ubuntu\n";

constexpr const char* kMountTable =
    "22 1 259:2 / / rw,relatime shared:1 - ext4 /dev/nvme0n1p2 rw\n"
    "25 22 259:1 / /boot/efi rw,relatime shared:2 - vfat /dev/nvme0n1p1 rw\n";

Value unameOf(const char* nodename, const char* release, const char* machine) {
    DictionaryRef names = makeDictionary();
    names->set("sysname", Value("Linux"));
    names->set("nodename", Value(nodename));
    names->set("release", Value(release));
    names->set("version", Value("#1 SMP PREEMPT_DYNAMIC"));
    names->set("machine", Value(machine));
    return Value(names);
}

Value seatOf(bool exists, const char* user) {
    DictionaryRef seat = makeDictionary();
    seat->set("seat", Value(exists));
    seat->set("user", Value(user));
    return Value(seat);
}

// A laptop with a console user, DMI, a serial number and every file in place.
std::shared_ptr<MemorySystemSource> laptop() {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/etc/os-release", kUbuntuRelease)
        .file("/sys/class/dmi/id/sys_vendor", "HP\n")
        .file("/sys/class/dmi/id/product_name", "HP EliteBook 840 14 inch G10 Notebook PC\n")
        .file("/sys/class/dmi/id/product_serial", "5CG3301ABC\n")
        .file("/proc/self/mountinfo", kMountTable)
        .file("/etc/passwd", "root:x:0:0:root:/root:/bin/bash\nmaria:x:1000:1000:Maria:/home/maria:/bin/bash\n")
        .file("/home/maria/.config/locale.conf", "LANG=de_DE.UTF-8\n")
        .file("/etc/default/locale", "LANG=en_US.UTF-8\n")
        .fact("uname", "", unameOf("elitebook", "6.5.0-35-generic", "x86_64"))
        .fact("consoleUser", "seat0", seatOf(true, "maria"));
    return source;
}

DictionaryRef discover(const std::shared_ptr<MemorySystemSource>& source) {
    return LinuxOperatingSystemDiscoverer(source).discoverInfo();
}

std::vector<std::string> keysOf(const Dictionary& section) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : section) keys.push_back(key);
    return keys;
}

const std::vector<std::string> kAllKeys{"osName",       "systemManufacturer", "osManufacturer",
                                        "domain",       "osVersion",          "systemType",
                                        "systemName",   "username",           "bootDevice",
                                        "systemDirectory", "userLocale",      "systemModel",
                                        "systemIntegrityProtectionStatus", "serialNumber"};

TEST(LinuxOperatingSystemDiscoverer, FillsEveryKeyInTableOrderFromItsLinuxSource) {
    const DictionaryRef section = discover(laptop());
    EXPECT_EQ(keysOf(*section), kAllKeys);
    EXPECT_EQ(section->get("osName"), Value("Ubuntu"));
    EXPECT_EQ(section->get("systemManufacturer"), Value("HP"));
    EXPECT_EQ(section->get("osManufacturer"), Value("Ubuntu"));
    EXPECT_EQ(section->get("domain"), Value(""));
    EXPECT_EQ(section->get("osVersion"), Value("22.04 (6.5.0-35-generic)"));
    EXPECT_EQ(section->get("systemType"), Value("x86_64"));
    EXPECT_EQ(section->get("systemName"), Value("elitebook"));
    EXPECT_EQ(section->get("username"), Value("maria"));
    EXPECT_EQ(section->get("bootDevice"), Value("/dev/nvme0n1p2"));
    EXPECT_EQ(section->get("systemDirectory"), Value("/boot"));
    EXPECT_EQ(section->get("userLocale"), Value("de_DE"));
    EXPECT_EQ(section->get("systemModel"), Value("HP EliteBook 840 14 inch G10 Notebook PC"));
    EXPECT_EQ(section->get("systemIntegrityProtectionStatus"), Value("N/A"));
    EXPECT_EQ(section->get("serialNumber"), Value("5CG3301ABC"));
}

TEST(LinuxOperatingSystemDiscoverer, SourceNameAndAFreshSectionEachTime) {
    LinuxOperatingSystemDiscoverer discoverer(laptop());
    EXPECT_EQ(discoverer.sourceName(), "operatingSystems");
    EXPECT_NE(discoverer.discoverInfo(), discoverer.discoverInfo());
}

TEST(LinuxOperatingSystemDiscoverer, VendorNameIsTheOsManufacturer) {
    auto source = laptop();
    source->file("/etc/os-release", "NAME=\"Fedora Linux\"\nVENDOR_NAME=\"Fedora Project\"\nVERSION_ID=40\n");
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("osName"), Value("Fedora Linux"));
    EXPECT_EQ(section->get("osManufacturer"), Value("Fedora Project"));
}

TEST(LinuxOperatingSystemDiscoverer, AOneWordNameIsUsedWholeForTheOsManufacturer) {
    auto source = laptop();
    source->file("/etc/os-release", "NAME=Gentoo\nVERSION_ID=2.15\n");
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("osName"), Value("Gentoo"));
    EXPECT_EQ(section->get("osManufacturer"), Value("Gentoo"));
}

TEST(LinuxOperatingSystemDiscoverer, BuildIdIsTheBuildOfTheVersion) {
    auto source = laptop();
    source->file("/etc/os-release", "NAME=\"Fedora Linux\"\nVERSION_ID=40\nBUILD_ID=20240423.0\n");
    EXPECT_EQ(discover(source)->get("osVersion"), Value("40 (20240423.0)"));
}

TEST(LinuxOperatingSystemDiscoverer, ARollingDistributionWithoutVersionIdGivesItsBuild) {
    auto source = laptop();
    source->file("/etc/os-release", "NAME=\"Arch Linux\"\nPRETTY_NAME=\"Arch Linux\"\nID=arch\nBUILD_ID=rolling\n");
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("osVersion"), Value("rolling"));
    EXPECT_EQ(keysOf(*section), kAllKeys);
}

TEST(LinuxOperatingSystemDiscoverer, ATestingReleaseWithoutVersionIdGivesTheKernelRelease) {
    auto source = laptop();
    source->file("/etc/os-release", "PRETTY_NAME=\"Debian GNU/Linux trixie/sid\"\nNAME=\"Debian GNU/Linux\"\n");
    EXPECT_EQ(discover(source)->get("osVersion"), Value("6.5.0-35-generic"));
}

TEST(LinuxOperatingSystemDiscoverer, UsrLibOsReleaseServesWhenEtcHasNone) {
    auto plain = std::make_shared<MemorySystemSource>();
    plain->file("/usr/lib/os-release", "NAME=openSUSE\nVERSION_ID=\"15.5\"\n")
        .fact("uname", "", unameOf("tumble", "6.4.0", "x86_64"));
    const DictionaryRef section = discover(plain);
    EXPECT_EQ(section->get("osName"), Value("openSUSE"));
    EXPECT_EQ(section->get("osVersion"), Value("15.5 (6.4.0)"));
}

TEST(LinuxOperatingSystemDiscoverer, OsReleaseOdditiesAreRead) {
    auto source = laptop();
    source->file("/etc/os-release",
                 "# generated\r\n\r\nNAME='Rocky Linux'\r\nVENDOR_NAME=\"\"\r\nVERSION_ID=\"9.3\" # comment\r\n"
                 "BUILD_ID=\"b\\\"1\"");
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("osName"), Value("Rocky Linux"));
    EXPECT_EQ(section->get("osManufacturer"), Value("Rocky Linux"));
    EXPECT_EQ(section->get("osVersion"), Value("9.3 (b\"1)"));
}

TEST(LinuxOperatingSystemDiscoverer, InvalidUtf8AndControlCharactersBecomePrintableText) {
    auto source = laptop();
    source->file("/etc/os-release", "NAME=\"Bad\xff Linux\x1b\"\nVERSION_ID=1\n");
    source->file("/etc/machine-info", "PRETTY_HOSTNAME=\"Büro\\\\PC\x07\"\n");
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("osName"), Value("Bad\xEF\xBF\xBD Linux"));
    EXPECT_EQ(section->get("systemName"), Value("Büro\\PC"));
}

TEST(LinuxOperatingSystemDiscoverer, PrettyHostnameIsTheSystemName) {
    auto source = laptop();
    source->file("/etc/machine-info", "PRETTY_HOSTNAME=\"Maria's EliteBook\"\nICON_NAME=computer-laptop\n");
    EXPECT_EQ(discover(source)->get("systemName"), Value("Maria's EliteBook"));
    source->file("/etc/machine-info", "PRETTY_HOSTNAME=\nCHASSIS=laptop\n");
    EXPECT_EQ(discover(source)->get("systemName"), Value("elitebook"));
}

TEST(LinuxOperatingSystemDiscoverer, NoConsoleUserGivesNoUserTheSystemLocaleAndNoDomain) {
    auto source = laptop();
    source->fact("consoleUser", "seat0", seatOf(true, ""));
    source->file("/etc/sssd/sssd.conf", "[sssd]\ndomains = corp.example.com\n");
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("username"), Value(""));
    EXPECT_EQ(section->get("userLocale"), Value("en_US"));
    EXPECT_EQ(section->get("domain"), Value(""));
    EXPECT_EQ(keysOf(*section), kAllKeys);
}

TEST(LinuxOperatingSystemDiscoverer, AMachineWithoutSeat0HasNoConsoleUser) {
    auto source = laptop();
    source->fact("consoleUser", "seat0", seatOf(false, ""));
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("username"), Value(""));
    EXPECT_EQ(section->get("userLocale"), Value("en_US"));
    auto unknown = laptop();
    unknown->fact("consoleUser", "seat0", Value());
    EXPECT_EQ(discover(unknown)->get("username"), Value(""));
}

TEST(LinuxOperatingSystemDiscoverer, ANotJoinedMachineHasNoDomain) {
    EXPECT_EQ(discover(laptop())->get("domain"), Value(""));
}

TEST(LinuxOperatingSystemDiscoverer, TheDomainOfAJoinedMachineComesFromSssd) {
    auto source = laptop();
    source->file("/etc/sssd/sssd.conf", "[sssd]\nservices = nss, pam\ndomains = corp.example.com\n");
    EXPECT_EQ(discover(source)->get("domain"), Value("corp.example"));
}

TEST(LinuxOperatingSystemDiscoverer, TheDomainOfAJoinedMachineComesFromWinbind) {
    auto source = laptop();
    source->file("/etc/samba/smb.conf", "[global]\n\tsecurity = ADS\n\trealm = AD.EXAMPLE.COM\n");
    EXPECT_EQ(discover(source)->get("domain"), Value("ad.example"));
}

TEST(LinuxOperatingSystemDiscoverer, AMachineWithoutDmiHasNoManufacturerAndTheDeviceTreeModel) {
    auto source = std::make_shared<MemorySystemSource>();
    source->file("/etc/os-release", "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\n")
        .file("/proc/device-tree/model", std::string("Raspberry Pi 4 Model B Rev 1.5") + '\0')
        .fact("uname", "", unameOf("raspberrypi", "6.6.20+rpt-rpi-v8", "aarch64"))
        .fact("consoleUser", "seat0", seatOf(true, "pi"));
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("systemManufacturer"), Value(""));
    EXPECT_EQ(section->get("systemModel"), Value("Raspberry Pi 4 Model B Rev 1.5"));
    EXPECT_EQ(section->get("systemType"), Value("aarch64"));
    EXPECT_FALSE(section->contains("serialNumber"));
}

TEST(LinuxOperatingSystemDiscoverer, TheFirmwareDeviceTreeServesWithoutProcDeviceTree) {
    auto source = laptop();
    source->file("/sys/class/dmi/id/product_name", "\n");
    source->file("/sys/firmware/devicetree/base/model", std::string("Globalscale Marvell ESPRESSOBin Board") + '\0');
    EXPECT_EQ(discover(source)->get("systemModel"), Value("Globalscale Marvell ESPRESSOBin Board"));
}

TEST(LinuxOperatingSystemDiscoverer, APlaceholderSerialIsLeftOut) {
    auto source = laptop();
    source->file("/sys/class/dmi/id/product_serial", "To Be Filled By O.E.M.\n");
    const DictionaryRef section = discover(source);
    EXPECT_FALSE(section->contains("serialNumber"));
    EXPECT_EQ(section->size(), kAllKeys.size() - 1);
}

TEST(LinuxOperatingSystemDiscoverer, WithoutAMountTableTheBootDeviceIsTheRoot) {
    auto noMounts = std::make_shared<MemorySystemSource>();
    noMounts->file("/etc/os-release", kUbuntuRelease).fact("uname", "", unameOf("vm", "6.1.0", "x86_64"));
    const DictionaryRef section = discover(noMounts);
    EXPECT_EQ(section->get("bootDevice"), Value("/"));
    EXPECT_EQ(section->get("systemDirectory"), Value("/boot"));
}

TEST(LinuxOperatingSystemDiscoverer, TheBootDeviceIsTheLastMountVisibleAtRoot) {
    auto source = laptop();
    source->file("/proc/self/mountinfo",
                 "1 0 8:1 / / ro - ext4 /dev/sda1 ro\n2 1 0:5 / /run rw - tmpfs tmpfs rw\n"
                 "3 0 0:30 / / rw - overlay overlay rw\n");
    EXPECT_EQ(discover(source)->get("bootDevice"), Value("overlay"));
}

TEST(LinuxOperatingSystemDiscoverer, TheFactoryGivesItForALinuxMachineAloneAndInTheFullScan) {
    QVDiscovererFactory factory(laptop(), QVDiscovererFactory::Options{});
    EXPECT_EQ(factory.operatingSystemDiscoverer()->discoverInfo()->get("username"), Value("maria"));
    for (const auto& discoverer : factory.sectionDiscoverers()) {
        if (discoverer->sourceName() == "operatingSystems") {
            EXPECT_EQ(keysOf(*discoverer->discoverInfo()), kAllKeys);
        }
        if (discoverer->sourceName() == "corefoundation") {
            EXPECT_TRUE(discoverer->discoverInfo()->get("operatingSystems").array());
        }
    }
}

class LinuxOperatingSystemMissingValue : public testing::TemporaryRootTest {
protected:

};

TEST_F(LinuxOperatingSystemMissingValue, NoOsReleaseEndsTheSectionAtOsNameWithAWarning) {
    auto empty = std::make_shared<MemorySystemSource>();
    LinuxOperatingSystemDiscoverer discoverer(empty);
    Dictionary section;
    EXPECT_FALSE(discoverer.discoverOS(section));
    EXPECT_TRUE(section.empty());
    EXPECT_NE(log().find("    WARNING - The operatingSystems section ends before \"osName\": neither "
                             "/etc/os-release nor /usr/lib/os-release can be read."),
              std::string::npos)
        << log();
}

TEST_F(LinuxOperatingSystemMissingValue, ATruncatedOsReleaseWithoutNameEndsTheSection) {
    auto source = laptop();
    source->file("/etc/os-release", "NAME=\"Ubu");
    source->file("/usr/lib/os-release", "NAME=\"Not read\"\n");
    EXPECT_TRUE(discover(source)->empty());
    EXPECT_NE(log().find("ends before \"osName\": /etc/os-release has no NAME."), std::string::npos) << log();
}

TEST_F(LinuxOperatingSystemMissingValue, NoHostNameEndsTheSectionAtSystemNameKeepingTheKeysBefore) {
    auto source = laptop();
    source->fact("uname", "", Value());
    const DictionaryRef section = discover(source);
    EXPECT_EQ(keysOf(*section), (std::vector<std::string>{"osName", "systemManufacturer", "osManufacturer", "domain",
                                                          "osVersion", "systemType"}));
    EXPECT_EQ(section->get("osVersion"), Value("22.04"));
    EXPECT_EQ(section->get("systemType"), Value(""));
    EXPECT_NE(log().find("ends before \"systemName\""), std::string::npos) << log();
}

TEST_F(LinuxOperatingSystemMissingValue, AUserLocaleFileWithoutLangEndsTheSectionAtUserLocale) {
    auto source = laptop();
    source->file("/home/maria/.config/locale.conf", "LC_TIME=de_DE.UTF-8\n");
    const DictionaryRef section = discover(source);
    EXPECT_EQ(keysOf(*section), std::vector<std::string>(kAllKeys.begin(), kAllKeys.begin() + 10));
    EXPECT_NE(log().find("ends before \"userLocale\": the locale file of maria sets no LANG."), std::string::npos)
        << log();
}

TEST_F(LinuxOperatingSystemMissingValue, AHugeOsReleaseIsNotReadWhole) {
    auto source = laptop();
    source->file("/etc/os-release", std::string("NAME=Big\n") + std::string(200 * 1024, '#'));
    EXPECT_TRUE(discover(source)->empty());
    EXPECT_NE(log().find("/etc/os-release cannot be read"), std::string::npos) << log();
}

}  // namespace
}  // namespace tov
