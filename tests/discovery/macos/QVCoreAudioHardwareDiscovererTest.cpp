#include "discovery/macos/QVCoreAudioHardwareDiscoverer.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "discovery/SystemFacts.h"
#include "model/QVCoreAudioSound.h"
#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;
using Sounds = std::vector<std::pair<std::string, std::string>>;

Value device(const std::optional<std::string>& name, const std::optional<std::string>& manufacturer) {
    DictionaryRef entry = makeDictionary();
    if (name) entry->set("name", *name);
    if (manufacturer) entry->set("manufacturer", *manufacturer);
    return Value(entry);
}

ArrayRef soundsSection(const Value& devices) {
    auto source = std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform);
    if (!devices.isAbsent()) source->fact(facts::kAudioDevices, "", devices);
    return QVCoreAudioHardwareDiscoverer(source).discoverInfo()->get("sounds").array();
}

// name → manufacturer of each sound, in section order.
Sounds soundsOf(const Value& devices) {
    Sounds found;
    const ArrayRef sounds = soundsSection(devices);
    if (!sounds) return {{"<no array>", ""}};
    for (const Value& element : *sounds) {
        const auto sound = std::dynamic_pointer_cast<QVCoreAudioSound>(element.record());
        if (!sound) return {{"<not a sound>", ""}};
        found.emplace_back(sound->name().value_or("?"), sound->manufacturer().value_or("?"));
    }
    return found;
}

TEST(MacCoreAudioDiscoverer, NamesTheSectionCoreaudioWithItsSounds) {
    QVCoreAudioHardwareDiscoverer discoverer(std::make_shared<MemorySystemSource>(SystemSource::kMacOSPlatform));
    EXPECT_EQ(discoverer.sourceName(), "coreaudio");
    const DictionaryRef section = discoverer.discoverInfo();
    ASSERT_EQ(section->size(), 1U);
    EXPECT_EQ(section->entries()[0].first, "sounds");
}

TEST(MacCoreAudioDiscoverer, NoAudioDevicesGiveAnEmptyArray) {
    EXPECT_EQ(soundsOf(Value(makeArray())), Sounds{});
}

TEST(MacCoreAudioDiscoverer, AnUnreadableDeviceListGivesAnEmptyArray) {
    EXPECT_EQ(soundsOf(Value()), Sounds{});
    EXPECT_EQ(soundsOf(Value(makeDictionary())), Sounds{});
    EXPECT_EQ(soundsOf(Value("Built-in Output")), Sounds{});
}

TEST(MacCoreAudioDiscoverer, EachDeviceIsASoundInDeviceOrder) {
    const Value devices(makeArray({device("MacBook Pro Microphone", "Apple Inc."),
                                   device("External Headphones", "Apple Inc."),
                                   device("BlackHole 2ch", "Existential Audio Inc.")}));
    EXPECT_EQ(soundsOf(devices), (Sounds{{"MacBook Pro Microphone", "Apple Inc."},
                                         {"External Headphones", "Apple Inc."},
                                         {"BlackHole 2ch", "Existential Audio Inc."}}));
}

TEST(MacCoreAudioDiscoverer, TwoDevicesWithTheSameNameAndManufacturerGiveOneRecord) {
    const Value devices(makeArray({device("USB Audio Device", "C-Media"), device("Speakers", "Apple Inc."),
                                   device("USB Audio Device", "C-Media"), device("USB Audio Device", "Other")}));
    EXPECT_EQ(soundsOf(devices),
              (Sounds{{"USB Audio Device", "C-Media"}, {"Speakers", "Apple Inc."}, {"USB Audio Device", "Other"}}));
}

TEST(MacCoreAudioDiscoverer, ADeviceMissingItsNameOrManufacturerIsSkipped) {
    const Value devices(makeArray({device(std::nullopt, "Apple Inc."), device("Speakers", std::nullopt),
                                   device(std::nullopt, std::nullopt), device("Microphone", "Apple Inc.")}));
    EXPECT_EQ(soundsOf(devices), (Sounds{{"Microphone", "Apple Inc."}}));
}

TEST(MacCoreAudioDiscoverer, EntriesOfTheWrongTypeAreSkipped) {
    DictionaryRef numericName = makeDictionary();
    numericName->set("name", 5);
    numericName->set("manufacturer", "Apple Inc.");
    const Value devices(makeArray({Value("Speakers"), Value(numericName), Value(makeArray()),
                                   device("Microphone", "Apple Inc.")}));
    EXPECT_EQ(soundsOf(devices), (Sounds{{"Microphone", "Apple Inc."}}));
}

TEST(MacCoreAudioDiscoverer, EmptyNamesAreReadNotMissing) {
    EXPECT_EQ(soundsOf(Value(makeArray({device("", "")}))), (Sounds{{"", ""}}));
}

}  // namespace
}  // namespace tov
