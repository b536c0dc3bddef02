#include "discovery/linux/LinuxSmbiosEntries.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

TEST(LinuxSmbiosEntries, GivesTheEntriesOfOneTypeInInstanceOrder) {
    MemorySystemSource source;
    source.file("/sys/firmware/dmi/entries/17-10/raw", "ten");
    source.file("/sys/firmware/dmi/entries/17-2/raw", "two");
    source.file("/sys/firmware/dmi/entries/17-0/raw", "zero");
    source.file("/sys/firmware/dmi/entries/4-0/raw", "cpu");
    source.file("/sys/firmware/dmi/entries/170-0/raw", "other type");
    source.folder("/sys/firmware/dmi/entries/17-x");
    EXPECT_EQ(smbiosEntriesOfType(source, 17), (std::vector<std::string>{"zero", "two", "ten"}));
    EXPECT_EQ(smbiosEntriesOfType(source, 4), (std::vector<std::string>{"cpu"}));
}

TEST(LinuxSmbiosEntries, NoDmiOrUnreadableEntriesGiveNone) {
    MemorySystemSource none;
    EXPECT_TRUE(smbiosEntriesOfType(none, 17).empty());
    MemorySystemSource oversize;
    oversize.file("/sys/firmware/dmi/entries/17-0/raw", std::string(kSmbiosEntryReadLimit + 1, '\x11'));
    EXPECT_TRUE(smbiosEntriesOfType(oversize, 17).empty());
}

}  // namespace
}  // namespace tov
