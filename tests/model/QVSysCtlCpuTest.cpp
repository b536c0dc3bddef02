#include "model/QVSysCtlCpu.h"

#include <gtest/gtest.h>

#include "RecordSamples.h"

namespace tov {
namespace {

using testing::compactJson;
using testing::recordFromJson;

std::shared_ptr<QVSysCtlCpu> cpu() {
    auto record = QVSysCtlCpu::sysCtlCpu();
    record->setPhysicalCores(4);
    record->setLogicalCores(8);
    record->setInstructionSet(2);
    record->setArchitecture(1);
    record->setProcessorSpeed(2400);
    record->setL2CacheSize(Value("256 KB"));
    record->setL3CacheSize(Value("6 MB"));
    record->setDescription("Intel(R) Core(TM) i5-8259U CPU @ 2.30GHz");
    return record;
}

TEST(QVSysCtlCpu, WritesItsKeysWithTheSpeedUnderBusSpeed) {
    const auto record = cpu();
    EXPECT_EQ(compactJson(*record),
              R"({"physicalCores":4,"logicalCores":8,"instructionSet":2,"architecture":1,"busSpeed":2400,)"
              R"("l2CacheSize":"256 KB","l3CacheSize":"6 MB",)"
              R"("description":"Intel(R) Core(TM) i5-8259U CPU @ 2.30GHz"})");
    EXPECT_EQ(record->innerDictionary()->get("physicalCores").type(), Value::Type::UInt);
    EXPECT_EQ(record->innerDictionary()->get("busSpeed").type(), Value::Type::Int);
    EXPECT_EQ(record->physicalCores(), 4u);
    EXPECT_EQ(record->logicalCores(), 8u);
    EXPECT_EQ(record->instructionSet(), 2u);
    EXPECT_EQ(record->architecture(), 1u);
    EXPECT_EQ(record->processorSpeed(), 2400);
    EXPECT_EQ(record->l2CacheSize(), Value("256 KB"));
    EXPECT_EQ(record->l3CacheSize(), Value("6 MB"));
    EXPECT_EQ(record->identifier(), "Intel(R) Core(TM) i5-8259U CPU @ 2.30GHz");
}

TEST(QVSysCtlCpu, ACacheSizeThatIsANumberOrNothingStoresZeroText) {
    auto record = QVSysCtlCpu::sysCtlCpu();
    record->setL2CacheSize(Value(4194304));
    EXPECT_EQ(record->l2CacheSize(), Value("0"));
    record->setL2CacheSize(Value("4 MB"));
    EXPECT_EQ(record->l2CacheSize(), Value("4 MB"));
    record->setL2CacheSize(Value());
    EXPECT_EQ(record->l2CacheSize(), Value("0"));
    record->setL3CacheSize(Value(2.5));
    EXPECT_EQ(record->l3CacheSize(), Value("0"));
    record->setL3CacheSize(Value(true));
    EXPECT_EQ(record->l3CacheSize(), Value("0"));
}

TEST(QVSysCtlCpu, ACacheSizeTextIsStoredUntouched) {
    auto record = QVSysCtlCpu::sysCtlCpu();
    record->setL2CacheSize(Value("  4 MB\n"));
    EXPECT_EQ(record->l2CacheSize(), Value("  4 MB\n"));
    record->setL3CacheSize(Value("Caf\\u00e9"));
    EXPECT_EQ(record->l3CacheSize(), Value("Caf\\u00e9"));
}

TEST(QVSysCtlCpu, UnsetValuesReadAsZeroOrAbsent) {
    const auto record = QVSysCtlCpu::sysCtlCpu();
    EXPECT_EQ(record->physicalCores(), 0u);
    EXPECT_EQ(record->processorSpeed(), 0);
    EXPECT_TRUE(record->l2CacheSize().isAbsent());
    EXPECT_FALSE(record->identifier());
}

TEST(QVSysCtlCpu, EqualityIgnoresLogicalCoresAndCacheSizes) {
    const auto first = cpu();
    auto second = cpu();
    second->setLogicalCores(16);
    second->setL2CacheSize(Value("1 MB"));
    second->setL3CacheSize(Value());
    EXPECT_TRUE(first->isEqual(*second));
}

TEST(QVSysCtlCpu, EqualityComparesCoresCodesSpeedAndDescription) {
    const auto first = cpu();
    auto other = cpu();
    other->setPhysicalCores(6);
    EXPECT_FALSE(first->isEqual(*other));
    other = cpu();
    other->setInstructionSet(3);
    EXPECT_FALSE(first->isEqual(*other));
    other = cpu();
    other->setArchitecture(2);
    EXPECT_FALSE(first->isEqual(*other));
    other = cpu();
    other->setProcessorSpeed(2401);
    EXPECT_FALSE(first->isEqual(*other));
    other = cpu();
    other->setDescription("Apple M1");
    EXPECT_FALSE(first->isEqual(*other));
}

TEST(QVSysCtlCpu, ARecordReadBackFromJsonEqualsItsSource) {
    const auto first = cpu();
    const auto readBack = recordFromJson<QVSysCtlCpu>(compactJson(*first));
    EXPECT_EQ(readBack->innerDictionary()->get("busSpeed").type(), Value::Type::UInt);
    EXPECT_EQ(readBack->processorSpeed(), 2400);
    EXPECT_TRUE(first->isEqual(*readBack));
}

}  // namespace
}  // namespace tov
