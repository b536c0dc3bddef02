#include "discovery/macos/QVOSSystemInfoDiscoverer.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OSSectionMachine.h"
#include "discovery/SystemFacts.h"
#include "support/HandBuiltArchive.h"
#include "support/MemorySystemSource.h"
#include "support/TemporaryRootTest.h"

namespace tov {
namespace {

using testing::annasMacBook;
using testing::binaryTextDictionary;
using testing::dictionaryOf;
using testing::kAnnaPreferences;
using testing::MemorySystemSource;
using testing::systemVersionWith;

constexpr const char* kSystemVersionPath = "/System/Library/CoreServices/SystemVersion.plist";

const std::vector<std::string> kAllKeys{"osName",          "systemManufacturer", "osManufacturer", "domain",
                                        "osVersion",       "systemType",         "systemName",     "username",
                                        "bootDevice",      "systemDirectory",    "userLocale",     "systemModel",
                                        "systemIntegrityProtectionStatus", "serialNumber"};

std::vector<std::string> keysOf(const Dictionary& section) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : section) keys.push_back(key);
    return keys;
}

// The first count keys of the section's order.
std::vector<std::string> firstKeys(std::size_t count) {
    return std::vector<std::string>(kAllKeys.begin(), kAllKeys.begin() + static_cast<std::ptrdiff_t>(count));
}

DictionaryRef discover(const std::shared_ptr<MemorySystemSource>& source) {
    return QVOSSystemInfoDiscoverer(source).discoverInfo();
}

void setConsoleUser(MemorySystemSource& source, const Value& user, const char* processUser = "root") {
    DictionaryRef users = makeDictionary();
    if (!user.isAbsent()) users->set("user", user);
    users->set("processUser", Value(processUser));
    source.fact(facts::kMacConsoleUser, "", Value(users));
}

TEST(QVOSSystemInfoDiscoverer, FillsEveryKeyInTableOrder) {
    auto source = annasMacBook();
    QVOSSystemInfoDiscoverer discoverer(source);
    EXPECT_EQ(discoverer.sourceName(), "operatingSystems");
    const DictionaryRef section = discoverer.discoverInfo();
    EXPECT_EQ(keysOf(*section), kAllKeys);
    EXPECT_EQ(section->get("osName"), Value("macOS"));
    EXPECT_EQ(section->get("systemManufacturer"), Value("Apple Inc."));
    EXPECT_EQ(section->get("osManufacturer"), Value("Apple Inc."));
    EXPECT_EQ(section->get("domain"), Value("corp.example"));
    EXPECT_EQ(section->get("osVersion"), Value("14.7.4 (23H420)"));
    EXPECT_EQ(section->get("systemType"), Value("x86_64"));
    EXPECT_EQ(section->get("systemName"), Value("Anna's MacBook Pro"));
    EXPECT_EQ(section->get("username"), Value("anna"));
    EXPECT_EQ(section->get("bootDevice"), Value("/Volumes/Macintosh HD"));
    EXPECT_EQ(section->get("systemDirectory"), Value("/Volumes/Macintosh HD/System/Library/CoreServices"));
    EXPECT_EQ(section->get("userLocale"), Value("de_CH"));
    EXPECT_EQ(section->get("systemModel"), Value("MacBookPro16,1"));
    EXPECT_EQ(section->get("systemIntegrityProtectionStatus"), Value("enabled"));
    EXPECT_EQ(section->get("serialNumber"), Value("C02XG0FDH7JY"));
}

TEST(QVOSSystemInfoDiscoverer, DiscoverOSFillsTheGivenDictionaryAndTellsItIsComplete) {
    auto source = annasMacBook();
    Dictionary section;
    EXPECT_TRUE(QVOSSystemInfoDiscoverer::discoverOS(*source, section));
    EXPECT_EQ(section, *discover(source));
}

TEST(QVOSSystemInfoDiscoverer, LoginWindowGivesNoUserTheCurrentLocaleAndNoDomain) {
    auto source = annasMacBook();
    setConsoleUser(*source, Value("loginwindow"));
    source->fact(facts::kDirectoryUser, "loginwindow",
                 dictionaryOf({{"metaRecordName", Value(makeArray({Value("CN=x,DC=wrong,DC=example,DC=com")}))}}));
    source->file("/Users/loginwindow/Library/Preferences/.GlobalPreferences.plist",
                 binaryTextDictionary({"AppleLocale", "fr_FR"}));
    EXPECT_EQ(QVOSSystemInfoDiscoverer::currentHumanUsername(*source), "");
    const DictionaryRef section = discover(source);
    EXPECT_EQ(keysOf(*section), kAllKeys);
    EXPECT_EQ(section->get("username"), Value(""));
    EXPECT_EQ(section->get("userLocale"), Value("en_US"));
    EXPECT_EQ(section->get("domain"), Value(""));
}

TEST(QVOSSystemInfoDiscoverer, TheProcessUserStandsInWhenTheStoreNamesNoConsoleUser) {
    auto source = annasMacBook();
    setConsoleUser(*source, Value(), "anna");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::currentHumanUsername(*source), "anna");
    setConsoleUser(*source, Value(""), "root");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::currentHumanUsername(*source), "root");
    setConsoleUser(*source, Value("LoginWindow"));
    EXPECT_EQ(QVOSSystemInfoDiscoverer::currentHumanUsername(*source), "LoginWindow");
    source->fact(facts::kMacConsoleUser, "", Value());
    EXPECT_EQ(QVOSSystemInfoDiscoverer::currentHumanUsername(*source), "");
}

TEST(QVOSSystemInfoDiscoverer, TheConsoleUserIsAskedOnceAndServesDomainUsernameAndLocale) {
    auto source = annasMacBook();
    setConsoleUser(*source, Value("ben"));
    source->fact(facts::kDirectoryUser, "ben",
                 dictionaryOf({{"metaRecordName", Value(makeArray({Value("CN=ben,DC=lab,DC=example,DC=org")}))}}));
    source->file("/Users/ben/Library/Preferences/.GlobalPreferences.plist", binaryTextDictionary({"AppleLocale", "ja_JP"}));
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("username"), Value("ben"));
    EXPECT_EQ(section->get("domain"), Value("lab.example"));
    EXPECT_EQ(section->get("userLocale"), Value("ja_JP"));
}

TEST(QVOSSystemInfoDiscoverer, AOneWordCopyrightIsUsedWholeForBothManufacturers) {
    auto source = annasMacBook();
    source->file(kSystemVersionPath, systemVersionWith("<key>ProductName</key><string>macOS</string>"
                                                       "<key>ProductCopyright</key><string>Apple</string>"
                                                       "<key>ProductVersion</key><string>15.4</string>"
                                                       "<key>ProductBuildVersion</key><string>24E5238a</string>"));
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("systemManufacturer"), Value("Apple"));
    EXPECT_EQ(section->get("osManufacturer"), Value("Apple"));
    EXPECT_EQ(section->get("osVersion"), Value("15.4 (24E5238a)"));
}

TEST(QVOSSystemInfoDiscoverer, TheManufacturerStartsAfterTheFirstBlankOnly) {
    auto source = annasMacBook();
    for (const auto& [copyright, manufacturer] :
         std::vector<std::pair<std::string, std::string>>{{"1983-2020 Apple Inc.", "Apple Inc."},
                                                          {"Copyright  Apple Inc.", " Apple Inc."},
                                                          {"Apple ", ""},
                                                          {" Apple", "Apple"}}) {
        source->file(kSystemVersionPath, systemVersionWith("<key>ProductName</key><string>Mac OS X</string>"
                                                           "<key>ProductCopyright</key><string>" +
                                                           copyright +
                                                           "</string><key>ProductVersion</key><string>10.15.6</string>"
                                                           "<key>ProductBuildVersion</key><string>19G68</string>"));
        const DictionaryRef section = discover(source);
        EXPECT_EQ(section->get("systemManufacturer"), Value(manufacturer)) << copyright;
        EXPECT_EQ(section->get("osManufacturer"), Value(manufacturer)) << copyright;
    }
}

TEST(QVOSSystemInfoDiscoverer, ABinarySystemVersionFileIsReadAsWell) {
    auto source = annasMacBook();
    source->file(kSystemVersionPath, binaryTextDictionary({"ProductName", "macOS", "ProductCopyright", "1983-2024 Apple Inc.",
                                                           "ProductVersion", "14.4.1", "ProductBuildVersion", "23E224"}));
    const DictionaryRef section = discover(source);
    EXPECT_EQ(keysOf(*section), kAllKeys);
    EXPECT_EQ(section->get("osVersion"), Value("14.4.1 (23E224)"));
}

TEST(QVOSSystemInfoDiscoverer, AMachineNotBoundToADirectoryHasNoDomain) {
    auto source = annasMacBook();
    source->fact(facts::kDirectoryUser, "anna", Value());
    EXPECT_EQ(discover(source)->get("domain"), Value(""));
    source->fact(facts::kDirectoryUser, "anna", dictionaryOf({{"metaRecordName", Value(makeArray())}}));
    EXPECT_EQ(discover(source)->get("domain"), Value(""));
    source->fact(facts::kDirectoryUser, "anna", dictionaryOf({{"metaRecordName", Value(makeArray({Value(7)}))}}));
    EXPECT_EQ(discover(source)->get("domain"), Value(""));
}

TEST(QVOSSystemInfoDiscoverer, TheDomainComesFromTheFirstDistinguishedNameOnly) {
    auto source = annasMacBook();
    source->fact(facts::kDirectoryUser, "anna",
                 dictionaryOf({{"metaRecordName", Value(makeArray({Value("CN=anna,DC=corp"),
                                                                   Value("CN=anna,DC=other,DC=example,DC=com")}))}}));
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverDomainWithUsername(*source, "anna"), "");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverDomainWithUsername(*source, ""), "");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverDomainWithUsername(*source, "nobody"), "");
}

TEST(QVOSSystemInfoDiscoverer, ASystemWithoutCsrutilReportsNotApplicable) {
    auto without = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    without->tool({"/usr/bin/csrutil", "status"}, "System Integrity Protection status: enabled.\n");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::systemIntegrityProtectionStatus(*without), "N/A");
    EXPECT_TRUE(without->toolRuns().empty());
}

TEST(QVOSSystemInfoDiscoverer, ADanglingCsrutilLinkCountsAsNoCsrutil) {
    auto source = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    source->link("/usr/bin/csrutil", "/nowhere/csrutil")
        .tool({"/usr/bin/csrutil", "status"}, "System Integrity Protection status: enabled.\n");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::systemIntegrityProtectionStatus(*source), "N/A");
    source->file("/usr/libexec/csrutil", "binary").link("/usr/bin/csrutil", "/usr/libexec/csrutil");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::systemIntegrityProtectionStatus(*source), "enabled");
}

TEST(QVOSSystemInfoDiscoverer, ProtectionIsEnabledWheneverTheStatusHoldsColonEnabled) {
    const std::vector<std::pair<std::string, std::string>> outputs{
        {"System Integrity Protection status: enabled.\n", "enabled"},
        {"System Integrity Protection status: disabled.\n", "disabled"},
        {"System Integrity Protection status: disabled (Apple Internal).\n", "disabled"},
        // A custom configuration with some protections on counts as enabled, even when
        // the overall status reads "unknown".
        {"System Integrity Protection status: unknown (Custom Configuration).\n\nConfiguration:\n"
         "\tApple Internal: disabled\n\tKext Signing: enabled\n\tFilesystem Protections: disabled\n"
         "\tDebugging Restrictions: disabled\n\tDTrace Restrictions: enabled\n\tNVRAM Protections: disabled\n"
         "\tBaseSystem Verification: enabled\n\nThis is an unsupported configuration, likely to break in the future "
         "and leave your machine in an unknown state.\n",
         "enabled"},
        {"System Integrity Protection status: unknown (Custom Configuration).\n\nConfiguration:\n"
         "\tApple Internal: disabled\n\tKext Signing: disabled\n\tFilesystem Protections: disabled\n"
         "\tDebugging Restrictions: disabled\n\tDTrace Restrictions: disabled\n\tNVRAM Protections: disabled\n"
         "\tBaseSystem Verification: disabled\n\nThis is an unsupported configuration.\n",
         "disabled"},
        {"System Integrity Protection status: enabled (Custom Configuration).\n\nConfiguration:\n"
         "    Apple Internal: disabled\n    Kext Signing: disabled\n",
         "enabled"},
        {"System Integrity Protection status:enabled.\n", "disabled"},
        {"", "disabled"},
    };
    auto source = annasMacBook();
    for (const auto& [output, status] : outputs) {
        source->tool({"/usr/bin/csrutil", "status"}, output);
        EXPECT_EQ(QVOSSystemInfoDiscoverer::systemIntegrityProtectionStatus(*source), status) << output;
    }
}

TEST(QVOSSystemInfoDiscoverer, ACsrutilThatCannotStartGivesDisabled) {
    auto source = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    source->file("/usr/bin/csrutil", "binary");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::systemIntegrityProtectionStatus(*source), "disabled");
    EXPECT_EQ(source->toolRuns(), (std::vector<std::vector<std::string>>{{"/usr/bin/csrutil", "status"}}));
}

TEST(QVOSSystemInfoDiscoverer, BlessWithoutTheBlessedFolderLineGivesRootForBoth) {
    auto source = annasMacBook();
    source->tool({"/usr/sbin/bless", "--info"},
                 "finderinfo[0]:      0 => No Blessed System Folder\n"
                 "finderinfo[1]:    195 => Blessed System File is /System/Library/CoreServices/boot.efi\n");
    const DictionaryRef section = discover(source);
    EXPECT_EQ(section->get("bootDevice"), Value("/"));
    EXPECT_EQ(section->get("systemDirectory"), Value("/"));
    EXPECT_EQ(keysOf(*section), kAllKeys);
}

TEST(QVOSSystemInfoDiscoverer, BlessThatCannotStartGivesRootForBoth) {
    auto source = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    source->link("/Volumes/Macintosh HD", "/");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverBootDevice(*source), std::make_pair(std::string("/"), std::string("/")));
}

TEST(QVOSSystemInfoDiscoverer, TheVolumeWalkSkipsHiddenEntriesFilesAndDanglingLinks) {
    auto source = annasMacBook();
    // Each of these holds the blessed folder's volume too, and comes first in name order.
    source->folder("/Volumes/.timemachine")
        .file("/Volumes/A file", "not a folder")
        .link("/Volumes/A gone volume", "/Volumes/nowhere");
    for (const char* path : {"/Volumes/.timemachine", "/Volumes/A file", "/Volumes/A gone volume"}) {
        source->fact(facts::kVolumeIdentifier, path, dictionaryOf({{"identifier", Value("disk1s5")}}));
    }
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverBootDevice(*source),
              std::make_pair(std::string("/Volumes/Macintosh HD"),
                             std::string("/Volumes/Macintosh HD/System/Library/CoreServices")));
}

TEST(QVOSSystemInfoDiscoverer, TheFirstMatchingVolumeInListingOrderWins) {
    auto source = annasMacBook();
    source->folder("/Volumes/Data");
    source->fact(facts::kVolumeIdentifier, "/Volumes/Data", dictionaryOf({{"identifier", Value("disk1s5")}}));
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverBootDevice(*source).first, "/Volumes/Data");
}

TEST(QVOSSystemInfoDiscoverer, AnApfsBlessedFolderInsidePrebootIsAppendedToTheVolume) {
    auto source = annasMacBook();
    const std::string preboot = "/System/Volumes/Preboot/9084025E-DDD6-4435-89CE-7C73F5ED0212/System/Library/CoreServices";
    source->tool({"/usr/sbin/bless", "--info"},
                 "       21910 => Blessed System File is " + preboot + "/boot.efi\n"
                 "       19519 => Blessed System Folder is " + preboot + "\n"
                 "The blessed volume in this APFS container is \"/Volumes/Backup\".\n");
    source->fact(facts::kVolumeIdentifier, preboot, dictionaryOf({{"identifier", Value("disk2s1")}}));
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverBootDevice(*source),
              std::make_pair(std::string("/Volumes/Backup"), "/Volumes/Backup" + preboot));
}

TEST(QVOSSystemInfoDiscoverer, NoMatchingVolumeOrNoListingGivesRootForBoth) {
    const std::pair<std::string, std::string> root{"/", "/"};
    auto source = annasMacBook();
    source->fact(facts::kVolumeIdentifier, "/System/Library/CoreServices", dictionaryOf({{"identifier", Value("disk9")}}));
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverBootDevice(*source), root);
    // An identifier that cannot be read matches nothing, not even another unknown one.
    source->fact(facts::kVolumeIdentifier, "/System/Library/CoreServices", Value());
    source->fact(facts::kVolumeIdentifier, "/Volumes/Backup", Value());
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverBootDevice(*source), root);

    auto noVolumes = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    noVolumes->tool({"/usr/sbin/bless", "--info"}, testing::kBlessInfo)
        .fact(facts::kVolumeIdentifier, "/System/Library/CoreServices", dictionaryOf({{"identifier", Value("disk1s5")}}));
    EXPECT_EQ(QVOSSystemInfoDiscoverer::discoverBootDevice(*noVolumes), root);
}

TEST(QVOSSystemInfoDiscoverer, TheUserLocaleFallsBackToTheCurrentLocaleOnlyWithoutAFile) {
    auto source = annasMacBook();
    EXPECT_EQ(QVOSSystemInfoDiscoverer::localeOfUserWithUsername(*source, "anna"), "de_CH");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::localeOfUserWithUsername(*source, ""), "en_US");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::localeOfUserWithUsername(*source, "ben"), "en_US");
    // A preferences file reached through a link is read as well.
    source->file("/private/prefs/global.plist", binaryTextDictionary({"AppleLocale", "it_IT"}))
        .link("/Users/ben/Library/Preferences/.GlobalPreferences.plist", "/private/prefs/global.plist");
    EXPECT_EQ(QVOSSystemInfoDiscoverer::localeOfUserWithUsername(*source, "ben"), "it_IT");
}

TEST(QVOSSystemInfoDiscoverer, AnXmlPreferencesFileIsReadToo) {
    auto source = annasMacBook();
    source->file(kAnnaPreferences, systemVersionWith("<key>AppleLocale</key><string>sv_SE</string>"));
    EXPECT_EQ(discover(source)->get("userLocale"), Value("sv_SE"));
}

TEST(QVOSSystemInfoDiscoverer, WithoutARegistrySerialNumberTheSectionHasNoSerialNumberKey) {
    auto source = annasMacBook();
    source->fact(facts::kRegistry, "IOPlatformExpertDevice", Value());
    Dictionary section;
    EXPECT_TRUE(QVOSSystemInfoDiscoverer::discoverOS(*source, section));
    EXPECT_EQ(keysOf(section), firstKeys(13));
}

TEST(QVOSSystemInfoDiscoverer, EveryValueIsText) {
    const DictionaryRef section = discover(annasMacBook());
    for (const auto& [key, value] : *section) EXPECT_TRUE(value.isString()) << key;
}

// A value that cannot be found ends the section at its key, with a warning.
class QVOSSystemInfoMissingValue : public testing::TemporaryRootTest {
protected:
    void expectEndsAt(const std::shared_ptr<MemorySystemSource>& source, std::size_t storedKeys,
                      const std::string& warning) {
        Dictionary section;
        EXPECT_FALSE(QVOSSystemInfoDiscoverer::discoverOS(*source, section));
        EXPECT_EQ(keysOf(section), firstKeys(storedKeys));
        for (const auto& [key, value] : section) EXPECT_TRUE(value.isString()) << key;
        EXPECT_TRUE(logHas("    WARNING - The operatingSystems section ends before \"" + kAllKeys[storedKeys] +
                           "\": " + warning))
            << log();
    }
};

TEST_F(QVOSSystemInfoMissingValue, NoSystemVersionFileEndsTheSectionAtOsName) {
    auto without = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    expectEndsAt(without, 0, "/System/Library/CoreServices/SystemVersion.plist cannot be read as a dictionary.");
    EXPECT_TRUE(QVOSSystemInfoDiscoverer(without).discoverInfo()->empty());
}

TEST_F(QVOSSystemInfoMissingValue, ACorruptSystemVersionFileEndsTheSectionAtOsName) {
    const std::string whole = testing::kSystemVersionXml;
    for (const std::string& bytes : {whole.substr(0, whole.size() / 2), std::string("bplist00\x01\x02garbage"),
                                     std::string("<plist version=\"1.0\"><array><string>macOS</string></array></plist>"),
                                     std::string("<plist version=\"1.0\"><string>macOS</string></plist>"),
                                     std::string(300, '[')}) {
        auto source = annasMacBook();
        source->file(kSystemVersionPath, bytes);
        expectEndsAt(source, 0, "/System/Library/CoreServices/SystemVersion.plist cannot be read as a dictionary.");
    }
}

TEST_F(QVOSSystemInfoMissingValue, ADeeplyNestedOrHugeSystemVersionFileIsRefused) {
    std::string nested;
    for (int level = 0; level < 5000; ++level) nested += "<dict><key>k</key>";
    auto source = annasMacBook();
    source->file(kSystemVersionPath, "<plist version=\"1.0\">" + nested);
    expectEndsAt(source, 0, "/System/Library/CoreServices/SystemVersion.plist cannot be read as a dictionary.");
    source->file(kSystemVersionPath, systemVersionWith("<key>ProductName</key><string>" + std::string(2 << 20, 'x') +
                                                       "</string>"));
    expectEndsAt(source, 0, "/System/Library/CoreServices/SystemVersion.plist cannot be read as a dictionary.");
}

TEST_F(QVOSSystemInfoMissingValue, AMissingOrNonTextProductNameEndsTheSectionAtOsName) {
    auto source = annasMacBook();
    source->file(kSystemVersionPath, systemVersionWith("<key>ProductName</key><integer>14</integer>"
                                                       "<key>ProductCopyright</key><string>1983-2025 Apple Inc.</string>"));
    expectEndsAt(source, 0, "/System/Library/CoreServices/SystemVersion.plist has no text under \"ProductName\".");
}

TEST_F(QVOSSystemInfoMissingValue, AMissingCopyrightEndsTheSectionKeepingTheName) {
    auto source = annasMacBook();
    source->file(kSystemVersionPath, systemVersionWith("<key>ProductName</key><string>macOS</string>"
                                                       "<key>ProductVersion</key><string>14.7.4</string>"
                                                       "<key>ProductBuildVersion</key><string>23H420</string>"));
    expectEndsAt(source, 1, "/System/Library/CoreServices/SystemVersion.plist has no text under \"ProductCopyright\".");
}

TEST_F(QVOSSystemInfoMissingValue, AMissingVersionOrBuildEndsTheSectionAtOsVersion) {
    auto source = annasMacBook();
    source->file(kSystemVersionPath, systemVersionWith("<key>ProductName</key><string>macOS</string>"
                                                       "<key>ProductCopyright</key><string>1983-2025 Apple Inc.</string>"
                                                       "<key>ProductVersion</key><string>14.7.4</string>"));
    expectEndsAt(source, 4, "/System/Library/CoreServices/SystemVersion.plist has no text under \"ProductBuildVersion\".");
    source->file(kSystemVersionPath, systemVersionWith("<key>ProductName</key><string>macOS</string>"
                                                       "<key>ProductCopyright</key><string>1983-2025 Apple Inc.</string>"
                                                       "<key>ProductBuildVersion</key><string>23H420</string>"));
    expectEndsAt(source, 4, "/System/Library/CoreServices/SystemVersion.plist has no text under \"ProductVersion\".");
}

TEST_F(QVOSSystemInfoMissingValue, AnUnreadableMachineTypeEndsTheSectionAtSystemType) {
    auto source = annasMacBook();
    source->fact(facts::kSysctl, "hw.machine", Value());
    expectEndsAt(source, 5, "the kernel parameter hw.machine cannot be read.");
}

TEST_F(QVOSSystemInfoMissingValue, AHostWithoutALocalizedNameEndsTheSectionAtSystemName) {
    auto source = annasMacBook();
    source->fact(facts::kHostAndLocale, "", dictionaryOf({{"localeIdentifier", Value("en_US")}}));
    expectEndsAt(source, 6, "the host has no localized name.");
}

TEST_F(QVOSSystemInfoMissingValue, ABinaryPreferencesFileWithoutAppleLocaleEndsTheSectionAtUserLocale) {
    auto source = annasMacBook();
    source->file(kAnnaPreferences, binaryTextDictionary({"AppleLanguages0", "de-CH", "AppleMeasurementUnits", "Centimeters"}));
    expectEndsAt(source, 10,
                 "no locale for \"anna\" (/Users/anna/Library/Preferences/.GlobalPreferences.plist has no "
                 "\"AppleLocale\" text, or the current locale has no identifier).");
}

TEST_F(QVOSSystemInfoMissingValue, ACorruptPreferencesFileEndsTheSectionAtUserLocale) {
    const std::string whole = binaryTextDictionary({"AppleLocale", "de_CH"});
    for (const std::string& bytes :
         {whole.substr(0, whole.size() - 10), std::string(), std::string("<plist><array/></plist>"),
          systemVersionWith("<key>AppleLocale</key><array><string>de_CH</string></array>")}) {
        auto source = annasMacBook();
        source->file(kAnnaPreferences, bytes);
        expectEndsAt(source, 10,
                     "no locale for \"anna\" (/Users/anna/Library/Preferences/.GlobalPreferences.plist has no "
                     "\"AppleLocale\" text, or the current locale has no identifier).");
    }
}

TEST_F(QVOSSystemInfoMissingValue, APreferencesKeyHoldingTheZeroCharacterEndsTheSectionAtUserLocale) {
    // The user writes this file; a key of "AppleLocale" followed by U+0000 is refused whole.
    testing::RawBinaryPlist preferences;
    std::string key = "\x6c";
    for (char character : std::string("AppleLocale")) key += std::string(1, '\0') + character;
    key += std::string(2, '\0');
    preferences.objects = {preferences.container(0xD, {1, 2}), key, "\x55" "de_CH"};
    auto source = annasMacBook();
    source->file(kAnnaPreferences, preferences.bytes());
    expectEndsAt(source, 10,
                 "no locale for \"anna\" (/Users/anna/Library/Preferences/.GlobalPreferences.plist has no "
                 "\"AppleLocale\" text, or the current locale has no identifier).");
}

TEST_F(QVOSSystemInfoMissingValue, NoCurrentLocaleForNobodyAtTheConsoleEndsTheSectionAtUserLocale) {
    auto source = annasMacBook();
    setConsoleUser(*source, Value("loginwindow"));
    source->fact(facts::kHostAndLocale, "", dictionaryOf({{"localizedName", Value("Mac")}}));
    expectEndsAt(source, 10, "the current locale has no identifier.");
}

TEST_F(QVOSSystemInfoMissingValue, AnUnreadableModelEndsTheSectionAtSystemModel) {
    auto source = annasMacBook();
    source->fact(facts::kSysctl, "hw.model", Value(16));
    expectEndsAt(source, 11, "the kernel parameter hw.model cannot be read.");
}

}  // namespace
}  // namespace tov
