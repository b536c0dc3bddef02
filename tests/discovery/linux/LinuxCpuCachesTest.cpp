#include "discovery/linux/LinuxCpuCaches.h"

#include <gtest/gtest.h>

#include "support/MemorySystemSource.h"

namespace tov {
namespace {

using testing::MemorySystemSource;

void addCache(MemorySystemSource& source, int index, const std::string& level, const std::string& size) {
    const std::string folder = "/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(index) + "/";
    source.file(folder + "level", level + "\n");
    source.file(folder + "size", size + "\n");
}

TEST(LinuxCpuCaches, GivesLevelTwoAndThreeInKilobytes) {
    MemorySystemSource source;
    addCache(source, 0, "1", "48K");
    addCache(source, 1, "1", "32K");
    addCache(source, 2, "2", "1280K");
    addCache(source, 3, "3", "24576K");
    const LinuxCpuCaches caches = linuxCpuCaches(source, 0);
    EXPECT_EQ(caches.level2, "1280");
    EXPECT_EQ(caches.level3, "24576");
}

TEST(LinuxCpuCaches, ABoardWithoutLevelThreeHasNone) {
    MemorySystemSource source;
    addCache(source, 0, "1", "32K");
    addCache(source, 2, "2", "1024K");
    const LinuxCpuCaches caches = linuxCpuCaches(source, 0);
    EXPECT_EQ(caches.level2, "1024");
    EXPECT_FALSE(caches.level3);
}

TEST(LinuxCpuCaches, MissingFolderOrGarbageSizesGiveNothing) {
    MemorySystemSource empty;
    EXPECT_FALSE(linuxCpuCaches(empty, 0).level2);
    MemorySystemSource source;
    addCache(source, 2, "2", "big");
    source.file("/sys/devices/system/cpu/cpu0/cache/index3/level", "3\n");
    const LinuxCpuCaches caches = linuxCpuCaches(source, 0);
    EXPECT_FALSE(caches.level2);
    EXPECT_FALSE(caches.level3);
}

TEST(LinuxCpuCaches, SizeTexts) {
    EXPECT_EQ(kilobytesOfCacheSize("1024K"), "1024");
    EXPECT_EQ(kilobytesOfCacheSize("32M\n"), "32768");
    EXPECT_FALSE(kilobytesOfCacheSize("1024"));
    EXPECT_FALSE(kilobytesOfCacheSize("K"));
    EXPECT_FALSE(kilobytesOfCacheSize("12 KB"));
}

}  // namespace
}  // namespace tov
