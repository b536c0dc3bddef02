#include "model/QVRecordFactory.h"

#include "model/QVAppKitPrinter.h"
#include "model/QVCoreAudioSound.h"
#include "model/QVCoreFoundationOperatingSystem.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVHardware.h"
#include "model/QVIOKitBattery.h"
#include "model/QVIOKitCamera.h"
#include "model/QVIOKitDisk.h"
#include "model/QVIOKitDisplay.h"
#include "model/QVIOKitKeyboard.h"
#include "model/QVIOKitMemory.h"
#include "model/QVIOKitNetwork.h"
#include "model/QVIOKitPointingDevice.h"
#include "model/QVIPInfo.h"
#include "model/QVSysCtlCpu.h"
#include "model/QVSysCtlMemory.h"
#include "model/QVSysCtlTimeZone.h"

namespace tov {
namespace {

struct RecordMaker {
    std::string_view className;
    RecordRef (*make)();
};

const RecordMaker kRecordMakers[] = {
    {QVSystemInfo::kClassName, []() -> RecordRef { return QVSystemInfo::systemInfo(); }},
    {QVHardware::kClassName, []() -> RecordRef { return std::make_shared<QVHardware>(); }},
    {QVIOKitCamera::kClassName, []() -> RecordRef { return QVIOKitCamera::ioKitCamera(); }},
    {QVIOKitKeyboard::kClassName, []() -> RecordRef { return QVIOKitKeyboard::ioKitKeyboard(); }},
    {QVIPInfo::kClassName, []() -> RecordRef { return QVIPInfo::ipInfo(); }},
    {QVIOKitDisplay::kClassName, []() -> RecordRef { return QVIOKitDisplay::iokitDisplay(); }},
    {QVAppKitPrinter::kClassName, []() -> RecordRef { return QVAppKitPrinter::appKitPrinter(); }},
    {QVCoreFoundationOperatingSystem::kClassName,
     []() -> RecordRef { return QVCoreFoundationOperatingSystem::coreFoundationOperatingSystem(); }},
    {QVSysCtlTimeZone::kClassName, []() -> RecordRef { return QVSysCtlTimeZone::sysCtlTimeZone(); }},
    {QVSysCtlCpu::kClassName, []() -> RecordRef { return QVSysCtlCpu::sysCtlCpu(); }},
    {QVDiskUtilDisk::kClassName, []() -> RecordRef { return QVDiskUtilDisk::diskUtilDisk(); }},
    {QVIOKitBattery::kClassName, []() -> RecordRef { return QVIOKitBattery::ioKitBattery(); }},
    {QVIOKitNetwork::kClassName, []() -> RecordRef { return QVIOKitNetwork::ioKitNetwork(); }},
    {QVCoreAudioSound::kClassName, []() -> RecordRef { return QVCoreAudioSound::coreAudioSound(); }},
    {QVIOKitMemory::kClassName, []() -> RecordRef { return QVIOKitMemory::ioKitMemory(); }},
    {QVIOKitPointingDevice::kClassName, []() -> RecordRef { return QVIOKitPointingDevice::ioKitPointingDevice(); }},
    {QVSysCtlMemory::kClassName, []() -> RecordRef { return QVSysCtlMemory::sysCtlMemory(); }},
    {QVIOKitDisk::kClassName, []() -> RecordRef { return QVIOKitDisk::ioKitDisk(); }},
};

}  // namespace

RecordRef QVRecordFactory::recordOfClass(std::string_view className) {
    for (const RecordMaker& maker : kRecordMakers) {
        if (maker.className == className) return maker.make();
    }
    return nullptr;
}

void QVRecordFactory::encodeRecord(const QVSystemInfo& record, Dictionary& archive) {
    archive.set(kClassKey, Value(record.className()));
    record.encodeWithCoder(archive);
}

RecordRef QVRecordFactory::decodeRecord(const Dictionary& archive) {
    const Value classValue = archive.get(kClassKey);
    const std::string* className = classValue.string();
    if (!className || !archive.get(QVSystemInfo::kValueDictionaryCoderKey).dictionary()) return nullptr;
    RecordRef record = recordOfClass(*className);
    if (record) record->initWithCoder(archive);
    return record;
}

}  // namespace tov
