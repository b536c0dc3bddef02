#include "common/QVSSettings.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "common/KeyedArchive.h"
#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "support/ChildProcess.h"
#include "support/HandBuiltArchive.h"
#include "support/PrivateMemoryFolder.h"
#include "support/TemporaryRootTest.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::lstatOf;
using testing::readFile;
using testing::runningAsRoot;
using testing::TestFolder;
using testing::writeFile;

constexpr const char* kPolicyHash = "0cc175b9c0f1b6a831c399e269772661";
constexpr const char* kReportHash = "92eb5ffee6ae2fec3ad71c777531578f";
constexpr const char* kNoItemLine = "      ERROR - No item exists at path.";
constexpr const char* kNewFileLine = "      ERROR - Could not ensure proper permissions on setting file. Error code = [2]";

Dictionary decodedFile(const std::string& path) {
    const std::optional<DictionaryRef> decoded = decodeKeyedArchive(readFile(path));
    return decoded ? **decoded : Dictionary();
}

void writeArchive(const std::string& path, const Dictionary& dictionary) {
    const std::optional<std::string> bytes = encodeKeyedArchive(dictionary);
    ASSERT_TRUE(bytes);
    writeFile(path, *bytes);
}

Dictionary oneValue(const char* key, const Value& value) {
    Dictionary dictionary;
    dictionary.set(key, value);
    return dictionary;
}

void setModificationTime(const std::string& path, std::time_t seconds, long nanoseconds) {
    const struct timespec times[2] = {{seconds, nanoseconds}, {seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

FileModificationTime modificationTimeOf(const std::string& path) {
    return fileModificationTime(path).value_or(FileModificationTime{-1, -1});
}

class QVSSettingsTest : public testing::TemporaryRootTest {
protected:
    void SetUp() override {
        TemporaryRootTest::SetUp();
        std::filesystem::create_directories(Paths::componentFolder());
    }

    std::string settingsPath() const { return Paths::settingsFile(); }

    static void saveNewFile(QVSSettings& settings) {
        ASSERT_TRUE(settings.saveSettings());
        ASSERT_FALSE(settings.isDirty());
    }

};

TEST_F(QVSSettingsTest, FreshFileGivesZeroFullScanTimeAndNoValues) {
    QVSSettings settings(settingsPath());
    EXPECT_EQ(settings.previousFullScanDatetime(), 0.0);
    EXPECT_EQ(settings.previousPolicyHash(), std::nullopt);
    EXPECT_EQ(settings.previousReportHash(), std::nullopt);
    EXPECT_EQ(settings.localIP(), std::nullopt);
    EXPECT_EQ(settings.publicIP(), std::nullopt);
    EXPECT_FALSE(settings.isDirty());
    EXPECT_EQ(settings.path(), settingsPath());
}

TEST_F(QVSSettingsTest, SettingTheReportHashItAlreadyHoldsLeavesItCleanAndWritesNothing) {
    QVSSettings settings(settingsPath());
    settings.setPreviousReportHash(kReportHash);
    saveNewFile(settings);
    setModificationTime(settingsPath(), 1000000000, 0);
    const ino_t inode = lstatOf(settingsPath()).st_ino;

    settings.setPreviousReportHash(std::string(kReportHash));
    EXPECT_FALSE(settings.isDirty());
    EXPECT_TRUE(settings.synchronize());
    EXPECT_EQ(lstatOf(settingsPath()).st_ino, inode);
    EXPECT_EQ(modificationTimeOf(settingsPath()), (FileModificationTime{1000000000, 0}));
}

TEST_F(QVSSettingsTest, SynchronizeWithoutChangesWritesNothing) {
    QVSSettings settings(settingsPath());
    EXPECT_TRUE(settings.synchronize());
    EXPECT_FALSE(std::filesystem::exists(settingsPath()));
}

TEST_F(QVSSettingsTest, SynchronizeAfterAChangeWritesTheFile) {
    QVSSettings settings(settingsPath());
    settings.setPublicIP("203.0.113.7");
    EXPECT_TRUE(settings.isDirty());
    if (!settings.synchronize()) {
        EXPECT_TRUE(runningAsRoot());
        EXPECT_TRUE(settings.isDirty());
        EXPECT_TRUE(settings.synchronize());
    }
    EXPECT_FALSE(settings.isDirty());
    EXPECT_EQ(decodedFile(settingsPath()).get("publicIp"), Value("203.0.113.7"));
}

TEST_F(QVSSettingsTest, SettingLocalIPWithNothingRemovesTheKeyAndMarksDirty) {
    QVSSettings settings(settingsPath());
    settings.setLocalIP("10.0.0.5");
    saveNewFile(settings);

    settings.setLocalIP(std::nullopt);
    EXPECT_TRUE(settings.isDirty());
    EXPECT_EQ(settings.localIP(), std::nullopt);
    EXPECT_TRUE(settings.synchronize());
    EXPECT_FALSE(decodedFile(settingsPath()).contains("localIp"));
}

TEST_F(QVSSettingsTest, SettingLocalIPWithNothingWhenAbsentChangesNothing) {
    QVSSettings settings(settingsPath());
    settings.setLocalIP(std::nullopt);
    EXPECT_FALSE(settings.isDirty());
}

TEST_F(QVSSettingsTest, EachStringSetterStoresAChangedValueAndMarksDirty) {
    QVSSettings settings(settingsPath());
    using Setter = void (QVSSettings::*)(std::optional<std::string_view>);
    using Getter = std::optional<std::string> (QVSSettings::*)() const;
    const std::pair<Setter, Getter> accessors[] = {
        {&QVSSettings::setPreviousPolicyHash, &QVSSettings::previousPolicyHash},
        {&QVSSettings::setPreviousReportHash, &QVSSettings::previousReportHash},
        {&QVSSettings::setLocalIP, &QVSSettings::localIP},
        {&QVSSettings::setPublicIP, &QVSSettings::publicIP},
    };
    for (const auto& [set, get] : accessors) {
        saveNewFile(settings);
        (settings.*set)("first");
        EXPECT_TRUE(settings.isDirty());
        EXPECT_EQ((settings.*get)(), "first");
        saveNewFile(settings);
        (settings.*set)("second");
        EXPECT_TRUE(settings.isDirty());
        EXPECT_EQ((settings.*get)(), "second");
        saveNewFile(settings);
        (settings.*set)("second");
        EXPECT_FALSE(settings.isDirty());
        (settings.*set)(std::nullopt);
        EXPECT_TRUE(settings.isDirty());
        EXPECT_EQ((settings.*get)(), std::nullopt);
    }
}

TEST_F(QVSSettingsTest, FullScanTimeAlwaysMarksDirty) {
    QVSSettings settings(settingsPath());
    settings.setPreviousFullScanDatetime(1700000000.5);
    EXPECT_TRUE(settings.isDirty());
    EXPECT_EQ(settings.previousFullScanDatetime(), 1700000000.5);
    saveNewFile(settings);
    settings.setPreviousFullScanDatetime(1700000000.5);
    EXPECT_TRUE(settings.isDirty());
}

TEST_F(QVSSettingsTest, AllFiveValuesSurviveInANewInstance) {
    QVSSettings writer(settingsPath());
    writer.setPreviousPolicyHash(kPolicyHash);
    writer.setPreviousReportHash(kReportHash);
    writer.setPreviousFullScanDatetime(1700000000.25);
    writer.setLocalIP("192.168.1.20");
    writer.setPublicIP("203.0.113.7");
    saveNewFile(writer);

    const QVSSettings reader(settingsPath());
    EXPECT_EQ(reader.previousPolicyHash(), kPolicyHash);
    EXPECT_EQ(reader.previousReportHash(), kReportHash);
    EXPECT_EQ(reader.previousFullScanDatetime(), 1700000000.25);
    EXPECT_EQ(reader.localIP(), "192.168.1.20");
    EXPECT_EQ(reader.publicIP(), "203.0.113.7");
    EXPECT_FALSE(reader.isDirty());
}

TEST_F(QVSSettingsTest, BrandNewFileIsSavedAtOnceWithoutAMissingItemError) {
    QVSSettings settings(settingsPath());
    settings.setPreviousPolicyHash(kPolicyHash);
    EXPECT_TRUE(settings.saveSettings());
    EXPECT_FALSE(settings.isDirty());
    EXPECT_EQ(decodedFile(settingsPath()).get("previous-policy-hash"), Value(kPolicyHash));
    EXPECT_EQ(lstatOf(settingsPath()).st_mode & 07777, 0600u);
    EXPECT_EQ(log().find(kNoItemLine), std::string::npos) << log();
    EXPECT_EQ(log().find(kNewFileLine), std::string::npos) << log();
}

TEST_F(QVSSettingsTest, FileThatCannotBeRepairedFailsTheSaveWithItsCode) {
    if (!runningAsRoot()) GTEST_SKIP() << "needs root";
    const std::string target = folder.write("elsewhere", "x");
    ASSERT_EQ(::symlink(target.c_str(), settingsPath().c_str()), 0);
    QVSSettings settings(settingsPath());
    settings.setPreviousPolicyHash(kPolicyHash);
    EXPECT_FALSE(settings.saveSettings());
    EXPECT_NE(log().find("Could not ensure proper permissions on setting file. Error code = [5]"), std::string::npos)
        << log();
    EXPECT_TRUE(settings.isDirty());
}

TEST_F(QVSSettingsTest, ValuesThatCannotBeArchivedFailTheSave) {
    QVSSettings settings(settingsPath());
    settings.setLocalIP(std::string_view("10.0.0.1\0x", 10));
    EXPECT_FALSE(settings.saveSettings());
    EXPECT_NE(log().find("      ERROR - saveSettings. ex = [the settings cannot be written as a keyed archive]"),
              std::string::npos)
        << log();
    EXPECT_TRUE(settings.isDirty());
    EXPECT_FALSE(std::filesystem::exists(settingsPath()));
}

TEST_F(QVSSettingsTest, ReadingRepairsOwnerAndModeAndIsQuietAboutAMissingFile) {
    if (!runningAsRoot()) GTEST_SKIP() << "needs root";
    QVSSettings settings(settingsPath());
    EXPECT_EQ(log().find(kNoItemLine), std::string::npos) << log();
    writeArchive(settingsPath(), oneValue("localIp", Value("10.1.1.1")));
    ASSERT_EQ(::chown(settingsPath().c_str(), 65534, 65534), 0);
    ASSERT_EQ(::chmod(settingsPath().c_str(), 0644), 0);

    EXPECT_EQ(settings.readSettings().get("localIp"), Value("10.1.1.1"));
    const struct stat status = lstatOf(settingsPath());
    EXPECT_EQ(status.st_uid, ::getuid());
    EXPECT_EQ(status.st_gid, 0u);
    EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(QVSSettingsTest, ReadSettingsDoesNotReplaceTheValuesInMemory) {
    QVSSettings settings(settingsPath());
    settings.setLocalIP("10.0.0.1");
    writeArchive(settingsPath(), oneValue("localIp", Value("10.9.9.9")));
    EXPECT_EQ(settings.readSettings().get("localIp"), Value("10.9.9.9"));
    EXPECT_EQ(settings.localIP(), "10.0.0.1");
}

TEST_F(QVSSettingsTest, ReadsAnArchiveInTheFormMacOSWrites) {
    writeFile(settingsPath(), testing::macStyleSettingsArchive());
    const QVSSettings settings(settingsPath());
    EXPECT_EQ(settings.previousReportHash(), kReportHash);
    EXPECT_EQ(settings.localIP(), "10.0.0.5");
    EXPECT_EQ(settings.previousFullScanDatetime(), 1700000000.0);
    EXPECT_EQ(settings.previousPolicyHash(), std::nullopt);
}

TEST_F(QVSSettingsTest, ValueOfTheWrongKindReadsAsAbsent) {
    Dictionary swapped;
    swapped.set("localIp", Value(5));
    swapped.set("previous-full-scan-datetime", Value("1700000000"));
    writeArchive(settingsPath(), swapped);
    const QVSSettings settings(settingsPath());
    EXPECT_EQ(settings.localIP(), std::nullopt);
    EXPECT_EQ(settings.previousFullScanDatetime(), 0.0);
}

TEST_F(QVSSettingsTest, CorruptFileStartsEmpty) {
    writeFile(settingsPath(), "not an archive at all");
    const QVSSettings settings(settingsPath());
    EXPECT_EQ(settings.previousReportHash(), std::nullopt);
    EXPECT_EQ(settings.previousFullScanDatetime(), 0.0);
}

TEST_F(QVSSettingsTest, DeletedFileIsWrittenBackFromMemoryByTheNextCheck) {
    QVSSettings settings(settingsPath());
    settings.setPreviousReportHash(kReportHash);
    settings.setPreviousFullScanDatetime(1700000000.0);
    saveNewFile(settings);
    ASSERT_EQ(::unlink(settingsPath().c_str()), 0);

    settings.checkFileUpdate();
    const Dictionary written = decodedFile(settingsPath());
    EXPECT_EQ(written.get("previous-report-hash"), Value(kReportHash));
    EXPECT_EQ(written.get("previous-full-scan-datetime"), Value(1700000000.0));
    EXPECT_EQ(settings.previousReportHash(), kReportHash);
}

TEST_F(QVSSettingsTest, EmptyOrCorruptReplacementKeepsTheValuesInMemory) {
    QVSSettings settings(settingsPath());
    settings.setPreviousReportHash(kReportHash);
    saveNewFile(settings);

    long nanoseconds = 1;
    for (const std::string& replacement : {std::string(), std::string("bplist00 garbage"),
                                           *encodeKeyedArchive(Dictionary())}) {
        writeFile(settingsPath(), replacement);
        setModificationTime(settingsPath(), 1200000000, nanoseconds++);
        settings.checkFileUpdate();
        EXPECT_EQ(settings.previousReportHash(), kReportHash);
        EXPECT_FALSE(settings.isDirty());
        EXPECT_EQ(readFile(settingsPath()), replacement);
    }
    // The old time is kept, so a later valid file is still taken.
    writeArchive(settingsPath(), oneValue("previous-report-hash", Value("new")));
    setModificationTime(settingsPath(), 1200000000, nanoseconds);
    settings.checkFileUpdate();
    EXPECT_EQ(settings.previousReportHash(), "new");
}

TEST_F(QVSSettingsTest, OutsideChangeReplacesTheValuesAndKeepsTheDirtyMark) {
    QVSSettings settings(settingsPath());
    settings.setLocalIP("10.0.0.1");
    saveNewFile(settings);
    settings.setPublicIP("203.0.113.7");
    ASSERT_TRUE(settings.isDirty());

    writeArchive(settingsPath(), oneValue("localIp", Value("10.0.0.2")));
    setModificationTime(settingsPath(), 1300000000, 0);
    settings.checkFileUpdate();
    EXPECT_EQ(settings.localIP(), "10.0.0.2");
    EXPECT_EQ(settings.publicIP(), std::nullopt);
    EXPECT_TRUE(settings.isDirty());
}

TEST_F(QVSSettingsTest, SettingsWithFileReturnsOneInstanceAndReloadsAfterAnOutsideChange) {
    const std::string path = folder.file("other.bin");
    writeArchive(path, oneValue("localIp", Value("10.0.0.1")));
    setModificationTime(path, 1400000000, 100);
    QVSSettings& first = QVSSettings::settingsWithFile(path);
    EXPECT_EQ(first.localIP(), "10.0.0.1");
    EXPECT_EQ(&QVSSettings::settingsWithFile(path), &first);

    writeArchive(path, oneValue("localIp", Value("10.0.0.2")));
    setModificationTime(path, 1400000000, 100);  // the same time: not seen as a change
    EXPECT_EQ(QVSSettings::settingsWithFile(path).localIP(), "10.0.0.1");

    setModificationTime(path, 1400000000, 101);  // one nanosecond later
    QVSSettings& again = QVSSettings::settingsWithFile(path);
    EXPECT_EQ(&again, &first);
    EXPECT_EQ(again.localIP(), "10.0.0.2");
    EXPECT_EQ(again.path(), path);
}

TEST_F(QVSSettingsTest, DefaultSettingsIsTheInstanceOfTheCurrentSettingsPath) {
    QVSSettings& settings = QVSSettings::defaultSettings();
    EXPECT_EQ(settings.path(), settingsPath());
    EXPECT_EQ(&QVSSettings::defaultSettings(), &settings);
    EXPECT_EQ(&QVSSettings::settingsWithFile(settingsPath()), &settings);

    TestFolder otherRoot;
    Paths::setRootForTesting(otherRoot.path());
    QVSSettings& other = QVSSettings::defaultSettings();
    EXPECT_NE(&other, &settings);
    EXPECT_EQ(other.path(), otherRoot.path() + settingsPath().substr(folder.path().size()));
    Paths::setRootForTesting(folder.path());
    EXPECT_EQ(&QVSSettings::defaultSettings(), &settings);
}

TEST_F(QVSSettingsTest, RemoveSettingsFileDeletesTheDefaultFileNotItsOwn) {
    writeArchive(settingsPath(), oneValue("localIp", Value("10.0.0.1")));
    const std::string ownPath = folder.file("own.bin");
    writeArchive(ownPath, oneValue("publicIp", Value("203.0.113.7")));
    QVSSettings settings(ownPath);
    settings.setLocalIP("10.0.0.9");
    ASSERT_TRUE(settings.isDirty());

    settings.removeSettingsFile();
    EXPECT_FALSE(std::filesystem::exists(settingsPath()));
    EXPECT_TRUE(std::filesystem::exists(ownPath));
    EXPECT_EQ(settings.publicIP(), std::nullopt);
    EXPECT_EQ(settings.localIP(), std::nullopt);
    EXPECT_FALSE(settings.isDirty());
    // Its modification time is forgotten: the next check takes the file's values again.
    settings.checkFileUpdate();
    EXPECT_EQ(settings.publicIP(), "203.0.113.7");
}

TEST_F(QVSSettingsTest, RemoveSettingsFileWithNothingAtItsOwnPathKeepsEverything) {
    writeArchive(settingsPath(), oneValue("localIp", Value("10.0.0.1")));
    QVSSettings settings(folder.file("missing.bin"));
    settings.setPublicIP("203.0.113.7");

    settings.removeSettingsFile();
    EXPECT_TRUE(std::filesystem::exists(settingsPath()));
    EXPECT_EQ(settings.publicIP(), "203.0.113.7");
    EXPECT_TRUE(settings.isDirty());
}

TEST_F(QVSSettingsTest, RemoveSettingsFileOnAFolderPathDoesNothing) {
    writeArchive(settingsPath(), oneValue("localIp", Value("10.0.0.1")));
    QVSSettings settings(folder.makeFolder("a-folder"));
    settings.setPublicIP("203.0.113.7");

    settings.removeSettingsFile();
    EXPECT_TRUE(std::filesystem::exists(settingsPath()));
    EXPECT_EQ(settings.publicIP(), "203.0.113.7");
}

TEST_F(QVSSettingsTest, RemoveSettingsFileOfTheDefaultPathForgetsEverything) {
    QVSSettings settings(settingsPath());
    settings.setPreviousPolicyHash(kPolicyHash);
    saveNewFile(settings);

    settings.removeSettingsFile();
    EXPECT_FALSE(std::filesystem::exists(settingsPath()));
    EXPECT_EQ(settings.previousPolicyHash(), std::nullopt);
    EXPECT_FALSE(settings.isDirty());
}

TEST_F(QVSSettingsTest, SymbolicLinkAtThePathIsNeitherReadNorFollowedWhenWriting) {
    const std::string target = folder.file("target.bin");
    writeArchive(target, oneValue("localIp", Value("10.0.0.1")));
    const std::string before = readFile(target);
    ASSERT_EQ(::symlink(target.c_str(), settingsPath().c_str()), 0);

    QVSSettings settings(settingsPath());
    EXPECT_EQ(settings.localIP(), std::nullopt);
    settings.setLocalIP("10.0.0.2");
    settings.saveSettings();
    EXPECT_TRUE(S_ISREG(lstatOf(settingsPath()).st_mode));
    EXPECT_EQ(decodedFile(settingsPath()).get("localIp"), Value("10.0.0.2"));
    EXPECT_EQ(readFile(target), before);
}

TEST_F(QVSSettingsTest, TwoThreadsSettingAndSynchronizingAtOnce) {
    QVSSettings& settings = QVSSettings::settingsWithFile(settingsPath());
    constexpr int kRounds = 60;
    std::thread scanner([&settings] {
        for (int i = 0; i < kRounds; ++i) {
            settings.setPreviousReportHash("report-" + std::to_string(i));
            settings.setPreviousFullScanDatetime(i);
            settings.synchronize();
        }
    });
    std::thread policyHandler([&settings, this] {
        for (int i = 0; i < kRounds; ++i) {
            QVSSettings::settingsWithFile(folder.file("shared.bin")).setLocalIP("x");
            settings.setPreviousPolicyHash("policy-" + std::to_string(i));
            settings.synchronize();
            settings.checkFileUpdate();
        }
    });
    scanner.join();
    policyHandler.join();
    ASSERT_TRUE(settings.synchronize());

    const Dictionary written = decodedFile(settingsPath());
    EXPECT_EQ(written.get("previous-report-hash"), Value("report-59"));
    EXPECT_EQ(written.get("previous-policy-hash"), Value("policy-59"));
    EXPECT_EQ(written.get("previous-full-scan-datetime"), Value(59.0));
    EXPECT_FALSE(settings.isDirty());
}

}  // namespace
}  // namespace tov

namespace tov {
namespace {

constexpr const char* kOldAddress = "10.0.0.1";
constexpr const char* kNewAddress = "10.0.0.2";
constexpr int kSmallFolderKibibytes = 64;

// The names in a folder other than the settings file and the filler.
std::vector<std::string> leftovers(const std::string& folderPath) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folderPath)) {
        const std::string name = entry.path().filename().string();
        if (name != "settings.bin" && name != "filler") names.push_back(name);
    }
    return names;
}

// Runs body in a child whose component folder is a fresh 64 KiB memory file system of its
// own mount namespace; -1 when this machine cannot give one.
int runWithSmallComponentFolder(const std::function<int()>& body) {
    if (!runningAsRoot()) return -1;
    return testing::runInChild([&body] {
               if (!testing::mountPrivateMemoryFolder(Paths::componentFolder(), kSmallFolderKibibytes)) return 125;
               return body();
           })
        .exitCode;
}

// Fills the file system of folderPath until it has no room left.
void fillUp(const std::string& folderPath) {
    const int file = ::open((folderPath + "/filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const std::string block(4096, 'f');
    while (::write(file, block.data(), block.size()) > 0) {
    }
    ::close(file);
}

class QVSSettingsReplacementTest : public QVSSettingsTest {
protected:
    // A settings file holding the old address, and its instance.
    QVSSettings& savedOldSettings() {
        QVSSettings& settings = QVSSettings::settingsWithFile(settingsPath());
        settings.setLocalIP(kOldAddress);
        EXPECT_TRUE(settings.synchronize());
        return settings;
    }

    void expectSaveRefusedWith(const std::function<void()>& breakTheFolder, const std::string& cause) {
        const int code = runWithSmallComponentFolder([&] {
            QVSSettings& settings = savedOldSettings();
            breakTheFolder();
            settings.setLocalIP(kNewAddress);
            if (settings.synchronize()) return 1;
            if (!settings.isDirty()) return 2;
            if (decodedFile(settingsPath()).get("localIp") != Value(kOldAddress)) return 3;
            return leftovers(Paths::componentFolder()).empty() ? 0 : 4;
        });
        if (code == -1 || code == 125) GTEST_SKIP() << "needs root and mount namespaces";
        EXPECT_EQ(code, 0);
        EXPECT_TRUE(logHas("      ERROR - saveSettings. ex = [could not write " + settingsPath() + ": " + cause + "]"))
            << log();
    }
};

TEST_F(QVSSettingsReplacementTest, AFolderPlantedAtTheFileIsRemovedWithoutFollowingItsLinks) {
    const std::string outside = folder.write("outside", "keep me");
    std::filesystem::create_directories(settingsPath() + "/inner");
    writeFile(settingsPath() + "/inner/file", "x");
    ASSERT_EQ(::symlink(outside.c_str(), (settingsPath() + "/inner/link").c_str()), 0);
    ASSERT_EQ(::symlink(folder.path().c_str(), (settingsPath() + "/root-link").c_str()), 0);

    QVSSettings settings(settingsPath());
    settings.setLocalIP(kNewAddress);
    EXPECT_TRUE(settings.synchronize());
    EXPECT_TRUE(S_ISREG(lstatOf(settingsPath()).st_mode));
    EXPECT_EQ(decodedFile(settingsPath()).get("localIp"), Value(kNewAddress));
    EXPECT_EQ(readFile(outside), "keep me");
    EXPECT_TRUE(std::filesystem::exists(Paths::componentFolder()));
    EXPECT_FALSE(logHas("ERROR")) << log();
}

TEST_F(QVSSettingsReplacementTest, ALinkPlantedAtTheFileIsReplacedAndItsTargetKept) {
    const std::string targetFolder = folder.makeFolder("target-folder");
    ASSERT_EQ(::symlink(targetFolder.c_str(), settingsPath().c_str()), 0);

    QVSSettings settings(settingsPath());
    settings.setLocalIP(kNewAddress);
    settings.synchronize();
    EXPECT_TRUE(S_ISREG(lstatOf(settingsPath()).st_mode));
    EXPECT_EQ(decodedFile(settingsPath()).get("localIp"), Value(kNewAddress));
    EXPECT_TRUE(std::filesystem::is_empty(targetFolder));
    settings.setPublicIP("203.0.113.7");
    EXPECT_TRUE(settings.synchronize());
    EXPECT_FALSE(settings.isDirty());
}

TEST_F(QVSSettingsReplacementTest, RemovingTheSettingsRemovesAFolderAtTheDefaultPathToo) {
    std::filesystem::create_directories(settingsPath() + "/inner");
    const std::string ownPath = folder.file("own.bin");
    writeArchive(ownPath, oneValue("publicIp", Value("203.0.113.7")));
    QVSSettings settings(ownPath);

    settings.removeSettingsFile();
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(settingsPath())));
    EXPECT_EQ(settings.publicIP(), std::nullopt);
}

TEST_F(QVSSettingsReplacementTest, AReadOnlyFolderFailsTheSaveWithItsCauseAndKeepsTheOldFile) {
    expectSaveRefusedWith(
        [] {
            testing::remountMemoryFolderReadOnly(Paths::componentFolder(), kSmallFolderKibibytes);
        },
        "Read-only file system");
}

TEST_F(QVSSettingsReplacementTest, AFullDiskFailsTheSaveWithItsCauseAndKeepsTheOldFile) {
    expectSaveRefusedWith([] { fillUp(Paths::componentFolder()); }, "No space left on device");
}

// A save killed at any instant leaves a whole settings file: the old one or the new one.
TEST_F(QVSSettingsReplacementTest, ASaveInterruptedAtAnyInstantLeavesAWholeFile) {
    savedOldSettings();
    std::mt19937 random(20240611);
    for (int round = 0; round < 40; ++round) {
        std::fflush(nullptr);
        const pid_t child = ::fork();
        if (child == 0) {
            QVSSettings settings(settingsPath());
            for (long index = 0;; ++index) {
                settings.setLocalIP(index % 2 == 0 ? kNewAddress : kOldAddress);
                settings.setPublicIP(std::string(static_cast<std::size_t>(index % 4000), 'p'));
                settings.synchronize();
            }
        }
        ASSERT_GT(child, 0);
        std::this_thread::sleep_for(std::chrono::microseconds(std::uniform_int_distribution<int>(0, 20000)(random)));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        const Value address = decodedFile(settingsPath()).get("localIp");
        ASSERT_TRUE(address == Value(kOldAddress) || address == Value(kNewAddress)) << "round " << round;
    }
}

}  // namespace
}  // namespace tov
