#include "common/QVSPolicy.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <zip.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "common/Paths.h"
#include "common/QVSLogger.h"
#include "common/QVSMD5Utils.h"
#include "common/QVSPolicyDelegate.h"
#include "common/QVSSettings.h"
#include "support/ChildProcess.h"
#include "support/TemporaryRootTest.h"
#include "support/TestFolder.h"

namespace tov {
namespace {

using testing::readFile;
using testing::TestFolder;
using testing::writeFile;

void writeZip(const std::string& path, const std::string& memberName, const std::string& contents) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    int error = 0;
    zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    ASSERT_NE(archive, nullptr);
    zip_source_t* source = zip_source_buffer(archive, contents.data(), contents.size(), 0);
    ASSERT_GE(zip_file_add(archive, memberName.c_str(), source, ZIP_FL_OVERWRITE), 0);
    ASSERT_EQ(zip_close(archive), 0);
}

class QVSPolicyTest : public testing::TemporaryRootTest {
protected:
    void writePolicy(const std::string& text) { writeFile(Paths::policyFile(), text); }

    QVSPolicy& policy = QVSPolicy::sharedPolicy();
};

TEST_F(QVSPolicyTest, IntervalInHoursBecomesSecondsAndTheFlagsDefaultToFalse) {
    writePolicy(R"({"FullScanIntervalHours": 24})");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 86400.0);
    EXPECT_FALSE(policy.scanAfterRestart());
    EXPECT_FALSE(policy.eventDrivenScan());
    EXPECT_TRUE(policy.isPolicyFileExist());
}

TEST_F(QVSPolicyTest, IntervalGivenAsTextOrZero) {
    writePolicy(R"({"FullScanIntervalHours": "12"})");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 43200.0);
    writePolicy(R"({"FullScanIntervalHours": 0})");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 0.0);
}

TEST_F(QVSPolicyTest, IntervalIsNotBoundedAndFractionsAreCut) {
    writePolicy(R"({"FullScanIntervalHours": -2})");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), -7200.0);
    writePolicy(R"({"FullScanIntervalHours": 1.9})");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 3600.0);
    writePolicy(R"({"FullScanIntervalHours": "6 hours"})");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 21600.0);
}

TEST_F(QVSPolicyTest, NoPolicyFileGivesTheDefaults) {
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 2678400.0);
    EXPECT_FALSE(policy.scanAfterRestart());
    EXPECT_FALSE(policy.eventDrivenScan());
    EXPECT_FALSE(policy.isPolicyFileExist());
    EXPECT_EQ(policy.md5(), "");
}

TEST_F(QVSPolicyTest, AnEmptyObjectIsNoPolicy) {
    writePolicy("{}");
    EXPECT_FALSE(policy.isPolicyFileExist());
    EXPECT_EQ(policy.md5(), "");
}

TEST_F(QVSPolicyTest, AJsonArrayLogsTheWarningAndGivesTheDefaults) {
    writePolicy(R"([{"FullScanIntervalHours": 1}])");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 2678400.0);
    EXPECT_FALSE(policy.isPolicyFileExist());
    EXPECT_NE(log().find("    WARNING - read policy file failed with exception. "), std::string::npos);
}

TEST_F(QVSPolicyTest, AValueOfTheWrongTypeStopsReadingWithTheWarning) {
    writePolicy(R"({"FullScanIntervalHours": 2, "ScanAfterRestart": [true], "EventDrivenScan": true})");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 7200.0);
    EXPECT_FALSE(policy.scanAfterRestart());
    EXPECT_FALSE(policy.eventDrivenScan());
    EXPECT_NE(log().find("read policy file failed with exception. "), std::string::npos);
}

TEST_F(QVSPolicyTest, FlagsReadFromBooleansNumbersAndText) {
    writePolicy(R"({"ScanAfterRestart": true, "EventDrivenScan": 1})");
    EXPECT_TRUE(policy.scanAfterRestart());
    EXPECT_TRUE(policy.eventDrivenScan());
    writePolicy(R"({"ScanAfterRestart": "YES", "EventDrivenScan": "no"})");
    EXPECT_TRUE(policy.scanAfterRestart());
    EXPECT_FALSE(policy.eventDrivenScan());
    writePolicy(R"({"ScanAfterRestart": " 007", "EventDrivenScan": "true"})");
    EXPECT_TRUE(policy.scanAfterRestart());
    EXPECT_TRUE(policy.eventDrivenScan());
    writePolicy(R"({"ScanAfterRestart": false, "EventDrivenScan": "0"})");
    EXPECT_FALSE(policy.scanAfterRestart());
    EXPECT_FALSE(policy.eventDrivenScan());
    EXPECT_TRUE(policy.isPolicyFileExist());
}

TEST_F(QVSPolicyTest, CorruptJsonGivesTheDefaults) {
    writePolicy(R"({"FullScanIntervalHours": 24)");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 2678400.0);
    EXPECT_FALSE(policy.isPolicyFileExist());
    EXPECT_EQ(policy.md5(), "");
}

TEST_F(QVSPolicyTest, HashIsTheFilesMd5WhenAPolicyExists) {
    const std::string text = R"({"EventDrivenScan": true})";
    writePolicy(text);
    EXPECT_EQ(policy.md5(), QVSMD5Utils::md5OfData(text));
    EXPECT_EQ(policy.md5().size(), 32u);
}

TEST_F(QVSPolicyTest, AZippedPolicyIsRead) {
    writeZip(Paths::policyFile(), "policy.json", R"({"FullScanIntervalHours": 48, "EventDrivenScan": true})");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 172800.0);
    EXPECT_TRUE(policy.eventDrivenScan());
    EXPECT_TRUE(policy.isPolicyFileExist());
    EXPECT_EQ(policy.md5(), QVSMD5Utils::md5OfFile(Paths::policyFile()));
}

TEST_F(QVSPolicyTest, AZipThatIsNotAnArchiveGivesTheDefaults) {
    writePolicy(std::string("PK\x03\x04", 4) + "not really a zip");
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 2678400.0);
    EXPECT_FALSE(policy.isPolicyFileExist());
}

TEST_F(QVSPolicyTest, AFolderInPlaceOfThePolicyIsNoPolicy) {
    std::filesystem::create_directories(Paths::policyFile());
    EXPECT_FALSE(policy.isPolicyFileExist());
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 2678400.0);
}

TEST_F(QVSPolicyTest, ReaderOnlyAddsWhatItFinds) {
    writePolicy(R"({"ScanAfterRestart": true, "Other": 5})");
    Dictionary dictionary;
    dictionary.set("FullScanIntervalHours", Value(744));
    QVSPolicy::populateDictionary(dictionary, Paths::policyFile());
    EXPECT_EQ(dictionary.size(), 2u);
    EXPECT_EQ(dictionary.get("FullScanIntervalHours").toInt64(), 744);
    EXPECT_TRUE(dictionary.get("ScanAfterRestart").toBool());
    QVSPolicy::populateDictionary(dictionary, "");
    EXPECT_EQ(dictionary.size(), 2u);
}

TEST_F(QVSPolicyTest, EveryQuestionReadsTheFileAnew) {
    writePolicy(R"({"ScanAfterRestart": true})");
    EXPECT_TRUE(policy.scanAfterRestart());
    writePolicy(R"({"ScanAfterRestart": false})");
    EXPECT_FALSE(policy.scanAfterRestart());
}

}  // namespace
}  // namespace tov

namespace tov {
namespace {

TEST_F(QVSPolicyTest, AFileLargerThanOneHundredMebibytesIsNotRead) {
    writePolicy(R"({"ScanAfterRestart": true})");
    std::filesystem::resize_file(Paths::policyFile(), QVSPolicy::kMaximumPolicyFileBytes + 1);
    EXPECT_FALSE(policy.scanAfterRestart());
    EXPECT_FALSE(policy.isPolicyFileExist());
    EXPECT_EQ(log().find("read policy file failed"), std::string::npos);
}

}  // namespace
}  // namespace tov

namespace tov {
namespace {

// Peak resident size growth of this process while body runs, in bytes (from the kernel's
// high-water mark, which is reset first).
std::int64_t peakGrowthWhile(const std::function<void()>& body) {
    auto statusField = [](const std::string& field) {
        std::istringstream status(readFile("/proc/self/status"));
        std::string line;
        while (std::getline(status, line)) {
            if (line.rfind(field + ":", 0) == 0) return std::stoll(line.substr(field.size() + 1)) * 1024;
        }
        return -1LL;
    };
    writeFile("/proc/self/clear_refs", "5");
    const std::int64_t before = statusField("VmRSS");
    body();
    return statusField("VmHWM") - before;
}

TEST_F(QVSPolicyTest, KeysOfNestedObjectsAreNotPolicyKeys) {
    writePolicy(R"({"Other": {"ScanAfterRestart": true, "FullScanIntervalHours": 1}, "List": [{"EventDrivenScan": 1}]})");
    EXPECT_FALSE(policy.isPolicyFileExist());
    EXPECT_FALSE(policy.scanAfterRestart());
    EXPECT_FALSE(policy.eventDrivenScan());
    EXPECT_EQ(policy.fullScanIntervalSeconds(), 2678400.0);
}

TEST_F(QVSPolicyTest, APolicyNestedDeeperThanTheJsonLimitGivesTheDefaults) {
    const auto nestedPolicy = [](int levels) {
        return R"({"ScanAfterRestart": true, "Deep": )" + std::string(static_cast<std::size_t>(levels), '[') +
               std::string(static_cast<std::size_t>(levels), ']') + "}";
    };
    writePolicy(nestedPolicy(31));
    EXPECT_TRUE(policy.scanAfterRestart());
    writePolicy(nestedPolicy(32));
    EXPECT_FALSE(policy.scanAfterRestart());
    EXPECT_TRUE(logHas("is not JSON (nested too deeply"));
}

// The filler of a hostile policy is skipped, not built: memory stays far below the size
// of what the archive holds, and the key after the filler is still found.
TEST_F(QVSPolicyTest, AZippedPolicyFullOfFillerIsReadInLittleMemory) {
    if (::access("/proc/self/clear_refs", W_OK) != 0) {
        GTEST_SKIP() << "resets the peak resident size through Linux's /proc/self/clear_refs";
    }
    {
        std::string filler = R"({"Filler": [)";
        for (int index = 0; index < 16'000'000; ++index) filler += "{},";
        filler += R"({}], "FullScanIntervalHours": 5})";
        writeZip(Paths::policyFile(), "policy.json", filler);
    }
    const testing::ChildResult result = testing::runInChild([this] {
        double seconds = 0;
        const std::int64_t growth = peakGrowthWhile([&] { seconds = policy.fullScanIntervalSeconds(); });
        std::printf("%.0f %lld", seconds, static_cast<long long>(growth));
        return 0;
    });
    ASSERT_EQ(result.exitCode, 0);
    std::istringstream figures(result.output);
    double seconds = 0;
    long long growth = 0;
    figures >> seconds >> growth;
    EXPECT_EQ(seconds, 18000.0);
    EXPECT_GT(growth, 0);
    EXPECT_LT(growth, 16LL << 20) << "48 MB of filler";
}

TEST_F(QVSPolicyTest, AZippedPolicyHoldingMoreThanOneHundredMebibytesIsNotRead) {
    {
        std::string text = R"({"ScanAfterRestart": true})";
        text.resize(static_cast<std::size_t>(QVSPolicy::kMaximumPolicyFileBytes) + 1, ' ');
        writeZip(Paths::policyFile(), "policy.json", text);
    }
    EXPECT_FALSE(policy.scanAfterRestart());
    EXPECT_TRUE(logHas("read policy file failed: [" + Paths::policyFile() + "] could not be read."));
}

TEST_F(QVSPolicyTest, AZippedPolicyOfExactlyOneHundredMebibytesIsRead) {
    {
        std::string text = R"({"ScanAfterRestart": true})";
        text.resize(static_cast<std::size_t>(QVSPolicy::kMaximumPolicyFileBytes), ' ');
        writeZip(Paths::policyFile(), "policy.json", text);
    }
    EXPECT_TRUE(policy.scanAfterRestart());
}

// Remembers each call, and the policy hash the settings held when it came.
class RecordedPolicyDelegate : public QVSPolicyDelegate {
public:
    void didPolicyChanged(QVSPolicy& changed) override {
        ++calls;
        policy = &changed;
        storedHash = QVSSettings::defaultSettings().previousPolicyHash();
    }

    int calls = 0;
    QVSPolicy* policy = nullptr;
    std::optional<std::string> storedHash;
};

class QVSPolicyChangeTest : public QVSPolicyTest {
protected:
    void SetUp() override {
        QVSPolicyTest::SetUp();
        policy.setDelegate(&delegate);
    }
    void TearDown() override {
        policy.setDelegate(nullptr);
        QVSPolicyTest::TearDown();
    }

    // Settings as a previous run left them on disk.
    void storeSettings(const std::string& policyHash) {
        std::filesystem::create_directories(Paths::componentFolder());
        QVSSettings& settings = QVSSettings::defaultSettings();
        settings.setPreviousPolicyHash(policyHash);
        settings.setPreviousReportHash("report-hash");
        settings.setPreviousFullScanDatetime(1700000000);
        settings.setLocalIP("192.0.2.7");
        ASSERT_TRUE(settings.synchronize());
    }

    // The settings file as another process would read it.
    static Dictionary settingsOnDisk() { return QVSSettings(Paths::settingsFile()).readSettings(); }

    RecordedPolicyDelegate delegate;
};

TEST_F(QVSPolicyChangeTest, AChangedPolicyDiscardsTheSettingsStoresItsHashAndTellsTheDelegateOnce) {
    storeSettings("0123456789abcdef0123456789abcdef");
    const std::string text = R"({"EventDrivenScan": true})";
    writePolicy(text);
    const std::string hash = QVSMD5Utils::md5OfData(text);

    policy.policyObserveCallback();

    const Dictionary stored = settingsOnDisk();
    EXPECT_EQ(stored.size(), 1U);
    EXPECT_EQ(stored.get(QVSSettings::kPreviousPolicyHashKey), Value(hash));
    QVSSettings& settings = QVSSettings::defaultSettings();
    EXPECT_EQ(settings.previousPolicyHash(), hash);
    EXPECT_EQ(settings.previousReportHash(), std::nullopt);
    EXPECT_EQ(settings.previousFullScanDatetime(), 0.0);
    EXPECT_EQ(settings.localIP(), std::nullopt);

    EXPECT_EQ(delegate.calls, 1);
    EXPECT_EQ(delegate.policy, &policy);
    EXPECT_EQ(delegate.storedHash, hash);

    const std::string written = log();
    const std::vector<std::string> lines = {
        "POC: Policy hash is changed from [0123456789abcdef0123456789abcdef] to [" + hash + "].",
        "POC: Start apply the new policy...",
        "POC: Remove old settings...",
        "POC: Set new policy hash to [" + hash + "] in settings.",
        " POC:Applied new policy.",
    };
    std::size_t position = 0;
    for (const std::string& line : lines) {
        const std::size_t found = written.find(line, position);
        ASSERT_NE(found, std::string::npos) << line << "\n" << written;
        position = found + line.size();
    }
}

TEST_F(QVSPolicyChangeTest, RewritingThePolicyWithTheSameBytesChangesNothing) {
    const std::string text = R"({"FullScanIntervalHours": 48})";
    writePolicy(text);
    policy.policyObserveCallback();
    ASSERT_EQ(delegate.calls, 1);
    QVSSettings::defaultSettings().setPreviousReportHash("report-hash");
    ASSERT_TRUE(QVSSettings::defaultSettings().synchronize());
    const std::string settingsBytes = readFile(Paths::settingsFile());

    writePolicy(text);
    policy.policyObserveCallback();

    EXPECT_TRUE(logHas("POC: Policy file is not changed."));
    EXPECT_EQ(delegate.calls, 1);
    EXPECT_EQ(readFile(Paths::settingsFile()), settingsBytes);
    EXPECT_EQ(QVSSettings::defaultSettings().previousReportHash(), "report-hash");
}

TEST_F(QVSPolicyChangeTest, ADeletedPolicyIsInvalidAndChangesNothing) {
    storeSettings("0123456789abcdef0123456789abcdef");
    const std::string settingsBytes = readFile(Paths::settingsFile());

    policy.policyObserveCallback();

    EXPECT_TRUE(logHas("POC: Invalid Policy."));
    EXPECT_FALSE(logHas("POC: Policy hash is changed"));
    EXPECT_FALSE(logHas("POC: Start apply the new policy..."));
    EXPECT_FALSE(logHas("POC:Applied new policy."));
    EXPECT_EQ(delegate.calls, 0);
    EXPECT_EQ(readFile(Paths::settingsFile()), settingsBytes);
    EXPECT_EQ(QVSSettings::defaultSettings().previousReportHash(), "report-hash");
}

TEST_F(QVSPolicyChangeTest, AnEmptyPolicyObjectIsInvalid) {
    storeSettings("0123456789abcdef0123456789abcdef");
    const std::string settingsBytes = readFile(Paths::settingsFile());
    writePolicy("{}");

    policy.policyObserveCallback();

    EXPECT_TRUE(logHas("POC: Invalid Policy."));
    EXPECT_FALSE(logHas("POC: Policy hash is changed"));
    EXPECT_EQ(delegate.calls, 0);
    EXPECT_EQ(readFile(Paths::settingsFile()), settingsBytes);
}

TEST_F(QVSPolicyChangeTest, AnUnparseablePolicyIsInvalid) {
    writePolicy(R"({"EventDrivenScan": tr)");
    policy.policyObserveCallback();
    EXPECT_TRUE(logHas("POC: Invalid Policy."));
    EXPECT_EQ(delegate.calls, 0);
    EXPECT_EQ(QVSSettings::defaultSettings().previousPolicyHash(), std::nullopt);
}

TEST_F(QVSPolicyChangeTest, TheFirstPolicyEverIsAChangeFromNoHash) {
    const std::string text = R"({"ScanAfterRestart": true})";
    writePolicy(text);
    policy.policyObserveCallback();
    EXPECT_TRUE(logHas("POC: Policy hash is changed from [(null)] to [" + QVSMD5Utils::md5OfData(text) + "]."));
    EXPECT_EQ(delegate.calls, 1);
    EXPECT_EQ(settingsOnDisk().get(QVSSettings::kPreviousPolicyHashKey), Value(QVSMD5Utils::md5OfData(text)));
}

TEST_F(QVSPolicyChangeTest, AnEmptyStoredHashIsAChange) {
    QVSSettings::defaultSettings().setPreviousPolicyHash("");
    writePolicy(R"({"ScanAfterRestart": true})");
    policy.policyObserveCallback();
    EXPECT_TRUE(logHas("POC: Policy hash is changed from [] to ["));
    EXPECT_EQ(delegate.calls, 1);
}

TEST_F(QVSPolicyChangeTest, EachNewPolicyIsAppliedAgain) {
    writePolicy(R"({"EventDrivenScan": true})");
    policy.policyObserveCallback();
    writePolicy(R"({"EventDrivenScan": false})");
    policy.policyObserveCallback();
    EXPECT_EQ(delegate.calls, 2);
    EXPECT_EQ(QVSSettings::defaultSettings().previousPolicyHash(), QVSMD5Utils::md5OfData(R"({"EventDrivenScan": false})"));
}

TEST_F(QVSPolicyChangeTest, WithoutADelegateThePolicyIsStillApplied) {
    policy.setDelegate(nullptr);
    EXPECT_EQ(policy.delegate(), nullptr);
    writePolicy(R"({"EventDrivenScan": true})");
    policy.policyObserveCallback();
    EXPECT_TRUE(logHas(" POC:Applied new policy."));
    EXPECT_EQ(delegate.calls, 0);
    EXPECT_EQ(settingsOnDisk().get(QVSSettings::kPreviousPolicyHashKey),
              Value(QVSMD5Utils::md5OfData(R"({"EventDrivenScan": true})")));
}

TEST_F(QVSPolicyChangeTest, OnlyTheLatestDelegateIsTold) {
    RecordedPolicyDelegate latest;
    policy.setDelegate(&latest);
    EXPECT_EQ(policy.delegate(), &latest);
    writePolicy(R"({"EventDrivenScan": true})");
    policy.policyObserveCallback();
    EXPECT_EQ(latest.calls, 1);
    EXPECT_EQ(delegate.calls, 0);
}

TEST_F(QVSPolicyChangeTest, TheDelegateMayBeSetWhileAnotherThreadReadsIt) {
    RecordedPolicyDelegate other;
    std::thread setter([&] {
        for (int round = 0; round < 1000; ++round) policy.setDelegate(round % 2 ? &delegate : &other);
    });
    for (int round = 0; round < 1000; ++round) {
        QVSPolicyDelegate* seen = policy.delegate();
        EXPECT_TRUE(seen == &delegate || seen == &other);
    }
    setter.join();
}

}  // namespace
}  // namespace tov
