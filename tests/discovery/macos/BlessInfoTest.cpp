#include "discovery/macos/BlessInfo.h"

#include <gtest/gtest.h>

namespace tov {
namespace {

TEST(BlessInfo, TheBlessedFolderIsTheRestOfTheFirstLineAfterThePhraseAndOneCharacter) {
    EXPECT_EQ(blessedSystemFolder("finderinfo[0]:     64 => Blessed System Folder is /System/Library/CoreServices\n"
                                  "finderinfo[1]:    195 => Blessed System File is /System/Library/CoreServices/boot.efi\n"),
              "/System/Library/CoreServices");
    EXPECT_EQ(blessedSystemFolder("       21910 => Blessed System File is /a/boot.efi\n"
                                  "       19519 => Blessed System Folder is /System/Volumes/Preboot/U/System\n"
                                  "       19520 => Blessed System Folder is /second\n"),
              "/System/Volumes/Preboot/U/System");
    EXPECT_EQ(blessedSystemFolder("Blessed System Folder is /Volumes/With Blank/Folder"), "/Volumes/With Blank/Folder");
    // Whatever character follows the phrase is skipped, and the rest kept as it is.
    EXPECT_EQ(blessedSystemFolder("Blessed System Folder is\t/x \r\n"), "/x \r");
}

TEST(BlessInfo, APhraseAtTheEndOfItsLineGivesAnEmptyPath) {
    EXPECT_EQ(blessedSystemFolder("Blessed System Folder is\nnext line"), "");
    EXPECT_EQ(blessedSystemFolder("Blessed System Folder is "), "");
    EXPECT_EQ(blessedSystemFolder("Blessed System Folder is"), "");
}

TEST(BlessInfo, OutputWithoutThePhraseNamesNoFolder) {
    EXPECT_EQ(blessedSystemFolder(""), std::nullopt);
    EXPECT_EQ(blessedSystemFolder("finderinfo[0]:      0 => No Blessed System Folder\n"), std::nullopt);
    EXPECT_EQ(blessedSystemFolder("Blessed System File is /System/Library/CoreServices/boot.efi\n"), std::nullopt);
    EXPECT_EQ(blessedSystemFolder("blessed system folder is /lower/case\n"), std::nullopt);
    EXPECT_EQ(blessedSystemFolder("Blessed System\nFolder is /split\n"), std::nullopt);
}

}  // namespace
}  // namespace tov
