#include "report/FakeDiscoverers.h"

#include <zip.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "common/ZipMembers.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIPInfo.h"
#include "model/QVSysCtlTimeZone.h"
#include "report/QVSReport.h"

namespace tov::testing {
namespace {

class FakeDiscoverer : public QVDiskDiscoverer {
public:
    FakeDiscoverer(std::string name, DictionaryRef section) : name_(std::move(name)), section_(std::move(section)) {}
    std::string sourceName() const override { return name_; }
    DictionaryRef discoverInfo() override { return section_ ? section_->deepCopy() : makeDictionary(); }
    ArrayRef discoverDisks() override {
        const ArrayRef disks = section_ ? section_->get("disks").array() : nullptr;
        return disks ? deepCopyArray(*disks) : makeArray();
    }

private:
    std::string name_;
    DictionaryRef section_;
};

constexpr const char* kSectionOrder[] = {"iokit",  "appkit",  "diskutil",       "operatingSystems",
                                         "coreaudio", "sysctl", "corefoundation", "events"};

Value arrayOf(std::initializer_list<Value> values) { return Value(makeArray(Array(values))); }

}  // namespace

FakeDiscovererFactory::FakeDiscovererFactory() {
    for (const char* name : kSectionOrder) sections[name] = makeDictionary();
}

Dictionary& FakeDiscovererFactory::section(const std::string& name) {
    DictionaryRef& section = sections[name];
    if (!section) section = makeDictionary();
    return *section;
}

std::unique_ptr<QVSystemInfoDiscoverer> FakeDiscovererFactory::inventoryDiscoverer() {
    DictionaryRef inventory = makeDictionary();
    inventory->set("collection", collection);
    return std::make_unique<FakeDiscoverer>("HWInventory", inventory);
}

std::vector<std::unique_ptr<QVSystemInfoDiscoverer>> FakeDiscovererFactory::sectionDiscoverers() {
    std::vector<std::unique_ptr<QVSystemInfoDiscoverer>> discoverers;
    for (const char* name : kSectionOrder) discoverers.push_back(std::make_unique<FakeDiscoverer>(name, sections[name]));
    return discoverers;
}

std::unique_ptr<QVSystemInfoDiscoverer> FakeDiscovererFactory::operatingSystemDiscoverer() {
    return std::make_unique<FakeDiscoverer>("operatingSystems", sections["operatingSystems"]);
}

std::vector<std::unique_ptr<QVDiskDiscoverer>> FakeDiscovererFactory::diskDiscoverers() {
    std::vector<std::unique_ptr<QVDiskDiscoverer>> discoverers;
    discoverers.push_back(std::make_unique<FakeDiscoverer>("diskutil", sections["diskutil"]));
    discoverers.push_back(std::make_unique<FakeDiscoverer>("iokit", sections["iokit"]));
    return discoverers;
}

void fillTypicalInventory(FakeDiscovererFactory& factory) {
    const auto display = QVIOKitDisplay::iokitDisplay();
    display->setDescription("Color LCD");
    display->setManufacturer("Apple");
    display->setWidth(2560);
    display->setHeight(1600);
    display->setDepth(32);
    const auto keyboard = QVIOKitKeyboard::ioKitKeyboard();
    keyboard->setName("Apple Internal Keyboard / Trackpad");
    const auto ioKitDisk = QVIOKitDisk::ioKitDisk();
    ioKitDisk->setName("APPLE SSD AP0512Q");
    ioKitDisk->setSerialNo("0ba0147e4a2c0b1d");
    factory.section("iokit").set("displays", arrayOf({Value(display)}));
    factory.section("iokit").set("keyboards", arrayOf({Value(keyboard)}));
    factory.section("iokit").set("disks", arrayOf({Value(ioKitDisk)}));
    const auto volume = QVDiskUtilDisk::diskUtilDisk();
    volume->setName("Macintosh HD");
    volume->setDeviceName("disk3s1");
    volume->setIdentifier("disk3s1");
    volume->setSize(494384795648);
    volume->setFreeSpace(201326592000);
    volume->setFileSystem("apfs");
    volume->setBootVolume(true);
    factory.section("diskutil").set("disks", arrayOf({Value(volume)}));
    const auto zone = QVSysCtlTimeZone::sysCtlTimeZone();
    zone->setTimeZone("UTC-01:00 Central European Standard Time");
    factory.section("sysctl").set("timezone", arrayOf({Value(zone)}));
    factory.section("operatingSystems").set("osName", "macOS");
    factory.section("operatingSystems").set("username", "alice");
    factory.section("operatingSystems").set("systemName", "alices-mac");
    factory.section("operatingSystems").set("serialNumber", "C02XK0AAJGH5");
    const auto address = QVIPInfo::ipInfo();
    address->setLocalIp("192.168.1.20");
    address->setPublicIp("203.0.113.7");
    factory.section("events").set("Network", Value(address));
}

void ReportTest::SetUp() {
    Paths::setRootForTesting(folder.path());
    folder.makeFolder("tmp");
    // An installed daemon's component folder exists (it holds the executable and settings).
    std::filesystem::create_directories(Paths::componentFolder());
    QVSLogger::resetForTesting();
    QVSLogger::setFilename("tov", Paths::logsFolder());
    QVSLogger::setMinimumLogLevel("TRACE");
    const std::shared_ptr<std::chrono::system_clock::time_point> now = time;
    QVSReport::setClockForTesting([now] { return *now; });
    QVSReport::setDiscovererFactoryForTesting(factory);
    QVSReport::resetForTesting();
}

void ReportTest::TearDown() {
    QVSReport::setDiscovererFactoryForTesting(nullptr);
    QVSReport::setClockForTesting(nullptr);
    Paths::setRootForTesting("");
    QVSReport::resetForTesting();
    QVSLogger::resetForTesting();
}

void ReportTest::advance(double seconds) {
    *time += std::chrono::duration_cast<std::chrono::system_clock::duration>(std::chrono::duration<double>(seconds));
}

void ReportTest::setTime(double secondsSince1970) {
    *time = std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(std::chrono::duration<double>(secondsSince1970)));
}

std::string ReportTest::logText() const {
    std::error_code error;
    if (!std::filesystem::exists(Paths::logsFolder() + "/tov.log", error)) return "";
    return readFile(Paths::logsFolder() + "/tov.log");
}

std::string ReportTest::outbox() const { return Paths::outboxFolder(); }

std::string ReportTest::stagingFolder() const { return Paths::stagingFolder(); }

std::string ReportTest::previousReport() const { return Paths::previousReport(); }

std::vector<std::string> ReportTest::outboxNames() const {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(outbox(), error)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> zipMemberNames(const std::string& archive) {
    std::vector<std::string> names;
    int error = 0;
    zip_t* zip = zip_open(archive.c_str(), ZIP_RDONLY, &error);
    if (!zip) return names;
    const zip_int64_t count = zip_get_num_entries(zip, 0);
    for (zip_int64_t index = 0; index < count; ++index) {
        const char* name = zip_get_name(zip, static_cast<zip_uint64_t>(index), 0);
        names.emplace_back(name ? name : "");
    }
    zip_discard(zip);
    return names;
}

std::string zipFirstMemberText(const std::string& archive) {
    return readZipMembers(archive, 1 << 26).value_or("");
}

}  // namespace tov::testing
