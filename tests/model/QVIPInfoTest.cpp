#include "model/QVIPInfo.h"

#include <gtest/gtest.h>

#include "RecordSamples.h"
#include "model/QVHardware.h"

namespace tov {
namespace {

using testing::compactJson;

std::shared_ptr<QVIPInfo> ipInfo(std::string_view local, std::string_view publicAddress) {
    auto record = QVIPInfo::ipInfo();
    record->setLocalIp(local);
    record->setPublicIp(publicAddress);
    return record;
}

// A kind derived from QVIPInfo, to see in which direction the kind test runs.
class DerivedIPInfo : public QVRecordKind<DerivedIPInfo, QVIPInfo> {
public:
    static constexpr const char* kClassName = "DerivedIPInfo";
};

TEST(QVIPInfo, AcceptsDottedQuadAddresses) {
    EXPECT_TRUE(QVIPInfo::isValidIpAddress("10.0.0.1"));
    EXPECT_TRUE(QVIPInfo::isValidIpAddress("0.0.0.0"));
    EXPECT_TRUE(QVIPInfo::isValidIpAddress("255.255.255.255"));
    EXPECT_TRUE(QVIPInfo::isValidIpAddress("192.168.100.249"));
}

TEST(QVIPInfo, RefusesLeadingZerosOutOfRangeAndSurroundingText) {
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("010.0.0.1"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("256.1.1.1"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("192.168.1.300"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress(" 10.0.0.1"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0.1 "));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0.1.5"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0.x"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10a0b0c1"));
}

TEST(QVIPInfo, RefusesIpv6AbsentAndEmpty) {
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("::1"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("fe80::1c2b:3aff:fe4d:5e6f"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("::ffff:10.0.0.1"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress(""));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress(std::nullopt));
}

TEST(QVIPInfo, WritesItsKeysAndIsNamedIP) {
    const auto record = ipInfo("192.168.1.20", "203.0.113.7");
    EXPECT_EQ(compactJson(*record), R"({"localIp":"192.168.1.20","publicIp":"203.0.113.7"})");
    EXPECT_EQ(record->localIp(), "192.168.1.20");
    EXPECT_EQ(record->publicIp(), "203.0.113.7");
    EXPECT_EQ(record->identifier(), "IP");
    EXPECT_EQ(QVIPInfo::ipInfo()->identifier(), "IP");
    EXPECT_FALSE(record->isKindOf(typeid(QVHardware)));
}

TEST(QVIPInfo, AnInvalidAddressIsStoredEmpty) {
    auto record = QVIPInfo::ipInfo();
    record->setLocalIp("192.168.1.300");
    EXPECT_EQ(record->innerDictionary()->get("localIp"), Value(""));
    record->setPublicIp("::1");
    EXPECT_EQ(record->publicIp(), "");
    record->setPublicIp(std::nullopt);
    EXPECT_EQ(record->publicIp(), "");
    EXPECT_EQ(compactJson(*record), R"({"localIp":"","publicIp":""})");
}

TEST(QVIPInfo, ValidationComesBeforeTrimming) {
    auto record = QVIPInfo::ipInfo();
    record->setLocalIp("  10.0.0.1");
    EXPECT_EQ(record->localIp(), "");
    record->setPublicIp("203.0.113.7\t");
    EXPECT_EQ(record->publicIp(), "");
}

TEST(QVIPInfo, EqualityComparesLocalThenPublicAddress) {
    const auto record = ipInfo("10.0.0.1", "203.0.113.7");
    EXPECT_TRUE(record->isEqual(*ipInfo("10.0.0.1", "203.0.113.7")));
    EXPECT_FALSE(record->isEqual(*ipInfo("10.0.0.2", "203.0.113.7")));
    EXPECT_FALSE(record->isEqual(*ipInfo("10.0.0.1", "203.0.113.8")));
    EXPECT_TRUE(ipInfo("bad", "")->isEqual(*ipInfo("", "also bad")));
}

TEST(QVIPInfo, TheSameObjectIsEqualEvenWithoutAddresses) {
    const auto empty = QVIPInfo::ipInfo();
    EXPECT_TRUE(empty->isEqual(*empty));
    EXPECT_FALSE(empty->isEqual(*QVIPInfo::ipInfo()));
}

TEST(QVIPInfo, TheKindTestAsksWhetherTheReceiverIsOfTheOthersKind) {
    const auto record = ipInfo("10.0.0.1", "203.0.113.7");
    auto derived = std::make_shared<DerivedIPInfo>();
    derived->setLocalIp("10.0.0.1");
    derived->setPublicIp("203.0.113.7");
    EXPECT_FALSE(record->isEqual(*derived));
    EXPECT_TRUE(derived->isEqual(*record));

    // So a plain record holding the same addresses counts as equal from this side.
    auto plain = QVSystemInfo::systemInfo();
    plain->setStringValue("10.0.0.1", "localIp");
    plain->setStringValue("203.0.113.7", "publicIp");
    EXPECT_TRUE(record->isEqual(*plain));
    EXPECT_FALSE(plain->isEqual(*record));
    EXPECT_FALSE(record->isEqual(*std::make_shared<QVHardware>()));
}

}  // namespace
}  // namespace tov

namespace tov {
namespace {

// The platform's expressions are ICU's, where "$" also matches before one line terminator
// that ends the text.
TEST(QVIPInfo, AFinalLineFeedPassesAndIsTrimmedWhenStored) {
    EXPECT_TRUE(QVIPInfo::isValidIpAddress("10.0.0.1\n"));
    auto record = QVIPInfo::ipInfo();
    record->setLocalIp("10.0.0.1\n");
    EXPECT_EQ(record->localIp(), "10.0.0.1");
    record->setPublicIp("203.0.113.7\n");
    EXPECT_EQ(record->publicIp(), "203.0.113.7");
}

TEST(QVIPInfo, TwoFinalLineFeedsDoNotPass) {
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0.1\n\n"));
    auto record = QVIPInfo::ipInfo();
    record->setLocalIp("10.0.0.1\n\n");
    EXPECT_EQ(record->localIp(), "");
}

TEST(QVIPInfo, AFinalCarriageReturnLineFeedPassesAsOneTerminator) {
    // ICU takes CR LF as one line terminator, so "$" matches before it.
    EXPECT_TRUE(QVIPInfo::isValidIpAddress("10.0.0.1\r\n"));
    auto record = QVIPInfo::ipInfo();
    record->setLocalIp("10.0.0.1\r\n");
    EXPECT_EQ(record->localIp(), "10.0.0.1");
}

TEST(QVIPInfo, OtherFinalLineTerminatorsPassAndOtherFinalWhiteSpaceDoesNot) {
    EXPECT_TRUE(QVIPInfo::isValidIpAddress("10.0.0.1\r"));
    EXPECT_TRUE(QVIPInfo::isValidIpAddress("10.0.0.1\u2028"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0.1\t"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0.1\n "));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("\n10.0.0.1"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0.1\n10.0.0.2"));
}

TEST(QVIPInfo, OnlyAsciiDigitsCount) {
    // Arabic-Indic digits are digits to Unicode, not to [0-9].
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("\u0661\u0660.0.0.1"));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0.1\xff"));
}

TEST(QVIPInfo, LongTextIsSearchedWithoutTrouble) {
    EXPECT_FALSE(QVIPInfo::isValidIpAddress(std::string(1 << 20, '1')));
    EXPECT_FALSE(QVIPInfo::isValidIpAddress("10.0.0.1" + std::string(1 << 16, '\n')));
}

}  // namespace
}  // namespace tov
