#pragma once

// A discoverer factory whose sections, disks and addresses the test sets, and a fixture
// that points every daemon path into a fresh folder, logs there, and runs the report
// manager with that factory and a clock the test moves.

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>

#include "discovery/QVDiscovererFactory.h"
#include "model/Value.h"
#include "support/TestFolder.h"

namespace tov::testing {

class FakeDiscovererFactory : public QVDiscovererFactory {
public:
    // The sections a scan finds; each scan gets a deep copy, as discoverers make new records.
    std::map<std::string, DictionaryRef> sections;
    std::string collection = "2024-01-31T09:15:00Z";
    std::string local;
    std::string publicAddress;
    int publicQueries = 0;
    int vendorListReleases = 0;

    FakeDiscovererFactory();

    std::unique_ptr<QVSystemInfoDiscoverer> inventoryDiscoverer() override;
    std::vector<std::unique_ptr<QVSystemInfoDiscoverer>> sectionDiscoverers() override;
    std::unique_ptr<QVSystemInfoDiscoverer> operatingSystemDiscoverer() override;
    std::vector<std::unique_ptr<QVDiskDiscoverer>> diskDiscoverers() override;
    std::string localIP() override { return local; }
    std::string publicIP() override {
        ++publicQueries;
        return publicAddress;
    }
    void releaseVendorList() override { ++vendorListReleases; }

    // The section's dictionary, made when missing.
    Dictionary& section(const std::string& name);
};

// An inventory of one display, one keyboard, two disks, a time zone and an address.
void fillTypicalInventory(FakeDiscovererFactory& factory);

class ReportTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Moves the manager's clock.
    void advance(double seconds);
    void setTime(double secondsSince1970);

    std::string logText() const;
    std::string outbox() const;
    std::string stagingFolder() const;
    // The names in the outbox, sorted.
    std::vector<std::string> outboxNames() const;
    std::string previousReport() const;

    TestFolder folder;
    std::shared_ptr<FakeDiscovererFactory> factory = std::make_shared<FakeDiscovererFactory>();
    std::shared_ptr<std::chrono::system_clock::time_point> time =
        std::make_shared<std::chrono::system_clock::time_point>(std::chrono::seconds(1706692500));
};

// The names of the members of a ZIP archive, and the text of its first member.
std::vector<std::string> zipMemberNames(const std::string& archive);
std::string zipFirstMemberText(const std::string& archive);

}  // namespace tov::testing
