#include "app/SchedulerTest.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "common/Paths.h"
#include "common/QVSSettings.h"
#include "model/QVIOKitDisplay.h"

namespace tov::testing {
namespace {

std::string scanTypeOfHeader(const std::string& header) {
    const std::string marker = "\"scanType\":\"";
    const std::size_t start = header.find(marker);
    if (start == std::string::npos) return "";
    const std::size_t end = header.find('"', start + marker.size());
    return header.substr(start + marker.size(), end - start - marker.size());
}

}  // namespace

void SchedulerTest::SetUp() {
    TemporaryRootTest::SetUp();
    folder.makeFolder("tmp");
    std::filesystem::create_directories(Paths::componentFolder());
    const std::shared_ptr<std::atomic<double>> clock = time;
    QVSReport::setClockForTesting([clock] {
        return std::chrono::system_clock::time_point(std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::duration<double>(clock->load())));
    });
    QVSReport::setDiscovererFactoryForTesting(factory);
    QVSReport::resetForTesting();
    fillTypicalInventory(*factory);
}

void SchedulerTest::TearDown() {
    // What the daemon said helps to read a failure.
    if (HasFailure()) {
        const std::string all = log();
        std::cerr << all.substr(all.size() > 6000 ? all.size() - 6000 : 0);
    }
    QVSReport::setDiscovererFactoryForTesting(nullptr);
    QVSReport::setClockForTesting(nullptr);
    TemporaryRootTest::TearDown();
    QVSReport::resetForTesting();
}

void SchedulerTest::writePolicy(const std::string& json) { writeFile(Paths::policyFile(), json); }

void SchedulerTest::removePolicy() { std::filesystem::remove(Paths::policyFile()); }

void SchedulerTest::advance(double seconds) { *time = time->load() + seconds; }

double SchedulerTest::now() const { return time->load(); }

void SchedulerTest::tick() {
    advance(5);
    stepAt(scheduler.timerSecondsCount() + 5);
}

void SchedulerTest::stepAt(std::uint64_t count) {
    scheduler.setTimerSecondsCount(count);
    scheduler.performScanTimerLogic();
    collect();
}

void SchedulerTest::collect() {
    std::vector<std::string> headers;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(Paths::outboxFolder(), error)) {
        if (entry.path().extension() == ".hdr") headers.push_back(entry.path().string());
    }
    std::sort(headers.begin(), headers.end());
    for (const std::string& header : headers) {
        const std::string archive = header.substr(0, header.size() - 4) + ".zip";
        reports.push_back({now(), scanTypeOfHeader(readFile(header)), zipFirstMemberText(archive)});
        std::filesystem::remove(header);
        std::filesystem::remove(archive);
    }
}

void SchedulerTest::seedHandedOverFullReport() {
    // A new installation's first scan is only stored; the next forced one is handed over.
    manager().reportHardwareForced();
    manager().reportHardwareForced();
    collect();
    ASSERT_EQ(reports.size(), 1u);
    ASSERT_EQ(reports[0].scanType, "full");
    ASSERT_EQ(QVSSettings::defaultSettings().previousFullScanDatetime(), now());
    reports.clear();
}

void SchedulerTest::changeDisplay(const std::string& manufacturer) {
    const auto display = QVIOKitDisplay::iokitDisplay();
    display->setDescription("Color LCD");
    display->setManufacturer(manufacturer);
    factory->section("iokit").set("displays", Value(makeArray({Value(display)})));
}

int SchedulerTest::logCount(const std::string& text) const {
    const std::string all = log();
    int count = 0;
    for (std::size_t at = all.find(text); at != std::string::npos; at = all.find(text, at + text.size())) ++count;
    return count;
}

std::string SchedulerTest::logLineWith(const std::string& text) const {
    const std::string all = log();
    const std::size_t at = all.find(text);
    if (at == std::string::npos) return "";
    const std::size_t start = all.rfind('\n', at);
    const std::size_t first = start == std::string::npos ? 0 : start + 1;
    return all.substr(first, all.find('\n', at) - first);
}

}  // namespace tov::testing
