// The kinds that describe facts of the system rather than a device: time zone, memory
// totals and network adapters.

#include <gtest/gtest.h>

#include "RecordSamples.h"
#include "model/QVHardware.h"
#include "model/QVIOKitNetwork.h"
#include "model/QVSysCtlMemory.h"
#include "model/QVSysCtlTimeZone.h"

namespace tov {
namespace {

using testing::compactJson;
using testing::recordFromJson;

// ---- time zone

TEST(QVSysCtlTimeZone, WritesItsKeyAndIsNamedAndComparedByIt) {
    auto first = QVSysCtlTimeZone::sysCtlTimeZone();
    EXPECT_FALSE(first->identifier());
    first->setTimeZone("(UTC+01:00) Central European Standard Time");
    EXPECT_EQ(compactJson(*first), R"({"userTimezone":"(UTC+01:00) Central European Standard Time"})");
    EXPECT_EQ(first->identifier(), "(UTC+01:00) Central European Standard Time");
    EXPECT_FALSE(first->isKindOf(typeid(QVHardware)));

    auto second = QVSysCtlTimeZone::sysCtlTimeZone();
    EXPECT_FALSE(first->isEqual(*second));
    second->setTimeZone("(UTC+01:00) Central European Standard Time");
    EXPECT_TRUE(first->isEqual(*second));
    second->setTimeZone("(UTC+00:00) Greenwich Mean Time");
    EXPECT_FALSE(first->isEqual(*second));
}

// ---- memory totals

std::shared_ptr<QVSysCtlMemory> memory(std::uint64_t totalPhysical, std::uint64_t totalVirtual) {
    auto record = QVSysCtlMemory::sysCtlMemory();
    record->setTotalPhysicalMemory(totalPhysical);
    record->setUsedPhysicalMemory(1000);
    record->setTotalVirtualMemory(totalVirtual);
    record->setUsedVirtualMemory(2000);
    return record;
}

TEST(QVSysCtlMemory, WritesItsKeysAsUnsignedNumbers) {
    const auto record = memory(17179869184u, 2147483648u);
    EXPECT_EQ(compactJson(*record),
              R"({"totalPhysicalRAMBytes":17179869184,"usedPhysicalRAMBytes":1000,)"
              R"("totalVirtualRAMBytes":2147483648,"usedVirtualRAMBytes":2000})");
    EXPECT_EQ(record->innerDictionary()->get("totalPhysicalRAMBytes").type(), Value::Type::UInt);
    EXPECT_EQ(record->totalPhysicalMemory(), 17179869184u);
    EXPECT_EQ(record->usedPhysicalMemory(), 1000u);
    EXPECT_EQ(record->totalVirtualMemory(), 2147483648u);
    EXPECT_EQ(record->usedVirtualMemory(), 2000u);
    EXPECT_FALSE(record->isKindOf(typeid(QVHardware)));
}

TEST(QVSysCtlMemory, IsNamedByTheTotalPhysicalMemoryInDecimal) {
    EXPECT_EQ(memory(8589934592u, 0)->identifier(), "8589934592");
    EXPECT_EQ(memory(18446744073709551615u, 0)->identifier(), "18446744073709551615");
    EXPECT_EQ(QVSysCtlMemory::sysCtlMemory()->identifier(), "0");
}

TEST(QVSysCtlMemory, TheSameTotalsWithOtherUsedAmountsAreEqual) {
    auto first = memory(8589934592u, 1073741824u);
    auto second = memory(8589934592u, 1073741824u);
    second->setUsedPhysicalMemory(5);
    second->setUsedVirtualMemory(6);
    EXPECT_TRUE(first->isEqual(*second));
    EXPECT_FALSE(first->isEqual(*memory(8589934592u, 1)));
    EXPECT_FALSE(first->isEqual(*memory(4294967296u, 1073741824u)));
    // Two empty records hold equal totals (zero).
    EXPECT_TRUE(QVSysCtlMemory::sysCtlMemory()->isEqual(*QVSysCtlMemory::sysCtlMemory()));
}

TEST(QVSysCtlMemory, ReadsNumbersOfAnyType) {
    const auto readBack = recordFromJson<QVSysCtlMemory>(R"({"totalPhysicalRAMBytes":8589934592})");
    EXPECT_EQ(readBack->totalPhysicalMemory(), 8589934592u);
    EXPECT_EQ(readBack->usedVirtualMemory(), 0u);
    readBack->innerDictionary()->set("totalVirtualRAMBytes", Value(std::int64_t{42}));
    EXPECT_EQ(readBack->totalVirtualMemory(), 42u);
}

// ---- network adapter

std::shared_ptr<QVIOKitNetwork> adapter(std::string_view name, std::string_view vendor, std::string_view mac,
                                        std::optional<std::string_view> ssid) {
    auto record = QVIOKitNetwork::ioKitNetwork();
    record->setAdapter(name);
    record->setVendor(vendor);
    record->setMacAddress(mac);
    record->setSpeed(1000000000u);
    if (ssid) record->setSsid(*ssid);
    return record;
}

TEST(QVIOKitNetwork, WritesItsKeysAndIsNotHardware) {
    const auto record = adapter("Wi-Fi", "Broadcom", "a4:83:e7:01:02:03", "Office");
    EXPECT_EQ(compactJson(*record),
              R"({"adapterName":"Wi-Fi","manufacturer":"Broadcom","macAddress":"a4:83:e7:01:02:03",)"
              R"("networkSpeed":1000000000,"ssid":"Office"})");
    EXPECT_EQ(record->adapter(), "Wi-Fi");
    EXPECT_EQ(record->vendor(), "Broadcom");
    EXPECT_EQ(record->macAddress(), "a4:83:e7:01:02:03");
    EXPECT_EQ(record->speed(), 1000000000u);
    EXPECT_EQ(record->ssid(), "Office");
    EXPECT_EQ(record->identifier(), "a4:83:e7:01:02:03");
    EXPECT_FALSE(record->isKindOf(typeid(QVHardware)));
    EXPECT_TRUE(record->isKindOf(typeid(QVSystemInfo)));
    EXPECT_FALSE(QVIOKitNetwork::ioKitNetwork()->identifier());
}

TEST(QVIOKitNetwork, EqualityComparesAdapterVendorMacAndNetworkNameButNotSpeed) {
    const auto wifi = adapter("Wi-Fi", "Broadcom", "a4:83:e7:01:02:03", "Office");
    auto faster = adapter("Wi-Fi", "Broadcom", "a4:83:e7:01:02:03", "Office");
    faster->setSpeed(5);
    EXPECT_TRUE(wifi->isEqual(*faster));
    EXPECT_FALSE(wifi->isEqual(*adapter("Ethernet", "Broadcom", "a4:83:e7:01:02:03", "Office")));
    EXPECT_FALSE(wifi->isEqual(*adapter("Wi-Fi", "Intel", "a4:83:e7:01:02:03", "Office")));
    EXPECT_FALSE(wifi->isEqual(*adapter("Wi-Fi", "Broadcom", "a4:83:e7:01:02:04", "Office")));
    EXPECT_FALSE(wifi->isEqual(*adapter("Wi-Fi", "Broadcom", "a4:83:e7:01:02:03", "Home")));
}

TEST(QVIOKitNetwork, AnAdapterWithoutNetworkNameEqualsNothing) {
    const auto wired = adapter("Ethernet", "Intel", "00:11:22:33:44:55", std::nullopt);
    EXPECT_FALSE(wired->isEqual(*wired));
    EXPECT_FALSE(wired->isEqual(*adapter("Ethernet", "Intel", "00:11:22:33:44:55", std::nullopt)));
}

}  // namespace
}  // namespace tov
