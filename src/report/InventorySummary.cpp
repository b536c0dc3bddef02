#include "report/InventorySummary.h"

#include <optional>
#include <string_view>
#include <vector>

#include "common/PrintableText.h"
#include "model/QVDiskUtilDisk.h"
#include "model/QVSystemInfo.h"
#include "report/SummaryTable.h"
#include "report/SummaryUnits.h"

namespace tov {
namespace {

constexpr const char* kInventoryKey = "HWInventory";
constexpr const char* kFactSeparator = ", ";

struct Row {
    std::string category;
    std::string name;
    std::vector<std::string> facts;
};

// One record's values, read leniently: a missing key or a value of another type than
// expected reads as empty text or zero; texts are made printable.
class Fields {
public:
    Fields(DictionaryRef values, std::optional<std::string> mountPoint)
        : values_(std::move(values)), mountPoint_(std::move(mountPoint)) {}

    std::string text(std::string_view key) const {
        const Value value = values_->get(key);
        if (const std::string* text = value.string()) return printableText(*text);
        if (value.type() == Value::Type::Int) return std::to_string(value.toInt64());
        if (value.type() == Value::Type::UInt) return std::to_string(value.toUInt64());
        return "";
    }
    // A count or size: negative numbers, booleans and anything not a number read as 0.
    std::uint64_t count(std::string_view key) const {
        const Value value = values_->get(key);
        if (!value.isNumber() || value.isBool()) return 0;
        if (value.type() == Value::Type::Int && value.toInt64() < 0) return 0;
        return value.toUInt64();
    }
    bool isNumber(std::string_view key) const {
        const Value value = values_->get(key);
        return value.isNumber() && !value.isBool();
    }
    bool flag(std::string_view key) const { return values_->get(key) == Value(true); }
    const std::optional<std::string>& mountPoint() const { return mountPoint_; }

private:
    DictionaryRef values_;
    std::optional<std::string> mountPoint_;
};

// The values of a record, or of a dictionary read back from a document; a volume's mount
// path lives beside its record's values.
std::optional<Fields> fieldsOf(const Value& item) {
    if (const RecordRef record = item.record()) {
        const auto volume = std::dynamic_pointer_cast<QVDiskUtilDisk>(record);
        if (!volume || !volume->mountPoint()) return Fields(record->innerDictionary(), std::nullopt);
        return Fields(record->innerDictionary(), printableText(*volume->mountPoint()));
    }
    if (const DictionaryRef dictionary = item.dictionary()) return Fields(dictionary, std::nullopt);
    return std::nullopt;
}

std::string labelled(const char* label, const std::string& value) {
    return value.empty() ? "" : std::string(label) + " " + value;
}

std::string counted(std::uint64_t count, const char* unit) {
    return count == 0 ? "" : std::to_string(count) + " " + unit;
}

std::string sizeOrEmpty(std::uint64_t bytes) { return bytes == 0 ? "" : binarySizeText(bytes); }

std::string resolution(const Fields& display) {
    const std::uint64_t width = display.count("width");
    const std::uint64_t height = display.count("height");
    if (width == 0 || height == 0) return "";
    const std::uint64_t refreshRate = display.count("refreshRate");
    const std::string size = std::to_string(width) + "x" + std::to_string(height);
    return refreshRate == 0 ? size : size + " @ " + std::to_string(refreshRate) + " Hz";
}

// ---- one rule per category, in the order of the report ----

Row serialNumberRow(const Fields& entry) { return {"serial", entry.text("serialNumber"), {}}; }

Row displayRow(const Fields& display) {
    return {"display", display.text("adapterDescription"), {resolution(display), display.text("manufacturer")}};
}

Row keyboardRow(const Fields& keyboard) { return {"keyboard", keyboard.text("name"), {}}; }

Row pointingRow(const Fields& device) {
    return {"pointing", device.text("description"), {device.text("manufacturer")}};
}

Row batteryRow(const Fields& battery) {
    const std::string charge = battery.isNumber("capacity") ? std::to_string(battery.count("capacity")) + "%" : "";
    return {"battery", battery.text("name"), {charge, labelled("serial", battery.text("serialNumber"))}};
}

Row diskRow(const Fields& disk) {
    return {"disk", disk.text("name"),
            {labelled("serial", disk.text("serialNumber")), disk.flag("removable") ? "removable" : ""}};
}

Row networkRow(const Fields& adapter) {
    const std::uint64_t speed = adapter.count("networkSpeed");
    return {"network", adapter.text("adapterName"),
            {adapter.text("macAddress"), speed == 0 ? "" : bitRateText(speed), labelled("SSID", adapter.text("ssid"))}};
}

Row cameraRow(const Fields& camera) { return {"camera", camera.text("name"), {camera.text("model")}}; }

Row memoryModuleRow(const Fields& module) {
    return {"memory-module", module.text("name"), {module.text("size"), module.text("type"), module.text("speed")}};
}

Row printerRow(const Fields& printer) { return {"printer", printer.text("name"), {printer.text("driver")}}; }

Row volumeRow(const Fields& volume) {
    const std::string label = volume.text("name");
    std::string name = volume.text("deviceId");
    if (!label.empty()) name += " (" + label + ")";
    return {"volume", name,
            {sizeOrEmpty(volume.count("sizeBytes")), volume.text("fileSystem"), volume.mountPoint().value_or("")}};
}

Row systemRow(const Fields& system) {
    return {"system", system.text("systemModel"), {system.text("systemManufacturer"), system.text("systemType")}};
}

Row osRow(const Fields& system) {
    return {"os", system.text("osName"), {system.text("osVersion"), labelled("host", system.text("systemName"))}};
}

Row soundRow(const Fields& sound) { return {"sound", sound.text("name"), {sound.text("manufacturer")}}; }

Row timeZoneRow(const Fields& zone) { return {"timezone", zone.text("userTimezone"), {}}; }

Row memoryRow(const Fields& memory) {
    return {"memory", sizeOrEmpty(memory.count("totalPhysicalRAMBytes")),
            {labelled("virtual", sizeOrEmpty(memory.count("totalVirtualRAMBytes")))}};
}

Row processorRow(const Fields& cpu) {
    const std::uint64_t speed = cpu.count("busSpeed");
    return {"processor", cpu.text("description"),
            {counted(cpu.count("physicalCores"), "cores"), counted(cpu.count("logicalCores"), "threads"),
             speed == 0 ? "" : std::to_string(speed) + " MHz"}};
}

Row installationRow(const Fields& system) {
    return {"installation", system.text("build"),
            {labelled("installed", system.text("installDate")), labelled("booted", system.text("lastBootTime"))}};
}

Row addressRow(const Fields& addresses) {
    return {"address", addresses.text("localIp"), {labelled("public", addresses.text("publicIp"))}};
}

// A category without a rule of its own still shows, under its key, by its name.
Row otherRow(const std::string& category, const Fields& item) {
    for (const char* key : {"name", "description", "adapterDescription"}) {
        const std::string name = item.text(key);
        if (!name.empty()) return {category, name, {}};
    }
    return {category, "", {}};
}

using Rule = Row (*)(const Fields&);

struct CategoryRule {
    std::string_view section;
    std::string_view category;
    Rule rule;
};

// The records of each category of each section.
constexpr CategoryRule kCategoryRules[] = {
    {"iokit", "serialNumbers", serialNumberRow},
    {"iokit", "displays", displayRow},
    {"iokit", "keyboards", keyboardRow},
    {"iokit", "pointingDevices", pointingRow},
    {"iokit", "batteries", batteryRow},
    {"iokit", "disks", diskRow},
    {"iokit", "networkAdapters", networkRow},
    {"iokit", "camera", cameraRow},
    {"iokit", "memory", memoryModuleRow},
    {"appkit", "printers", printerRow},
    {"diskutil", "disks", volumeRow},
    {"coreaudio", "sounds", soundRow},
    {"sysctl", "timezone", timeZoneRow},
    {"sysctl", "memory", memoryRow},
    {"sysctl", "cpu", processorRow},
    {"corefoundation", "operatingSystems", installationRow},
    {"events", "Network", addressRow},
};

// The one section that is a dictionary of machine facts rather than categories of
// records: it gives the system line and the os line.
constexpr std::string_view kMachineFactsSection = "operatingSystems";

Row rowFor(std::string_view section, const std::string& category, const Fields& item) {
    for (const CategoryRule& entry : kCategoryRules) {
        if (entry.section == section && entry.category == category) return entry.rule(item);
    }
    return otherRow(category, item);
}

// The facts worth showing, in order: empty ones, one that repeats the name or the fact
// before it (an empty memory slot says "Empty" three times) are left out.
std::string joinedFacts(const Row& row) {
    std::string joined;
    std::string previous = row.name;
    for (const std::string& fact : row.facts) {
        if (fact.empty() || fact == previous || fact == row.name) continue;
        if (!joined.empty()) joined += kFactSeparator;
        joined += fact;
        previous = fact;
    }
    return joined;
}

// A record that names nothing and tells nothing (an empty section, a machine without
// addresses) gives no line.
void addRow(SummaryTable& table, const Row& row) {
    const std::string facts = joinedFacts(row);
    if (row.name.empty() && facts.empty()) return;
    table.addRow({row.category, row.name, facts});
}

// A category holds an array of records, or one record (the addresses).
void addCategory(SummaryTable& table, std::string_view section, const std::string& category, const Value& items) {
    if (const ArrayRef array = items.array()) {
        for (const Value& item : *array) {
            if (const std::optional<Fields> fields = fieldsOf(item)) addRow(table, rowFor(section, category, *fields));
        }
    } else if (const std::optional<Fields> fields = fieldsOf(items)) {
        addRow(table, rowFor(section, category, *fields));
    }
}

void addSection(SummaryTable& table, const std::string& section, const DictionaryRef& content) {
    if (section == kMachineFactsSection) {
        const Fields facts(content, std::nullopt);
        addRow(table, systemRow(facts));
        addRow(table, osRow(facts));
        return;
    }
    for (const auto& [category, items] : *content) addCategory(table, section, category, items);
}

DictionaryRef inventoryDictionary(const Value& inventory) {
    const DictionaryRef document = inventory.dictionary();
    if (!document) return nullptr;
    const DictionaryRef wrapped = document->get(kInventoryKey).dictionary();
    return wrapped ? wrapped : document;
}

}  // namespace

std::string InventorySummary::textOf(const Value& inventory) {
    SummaryTable table({{"Category", kCategoryWidth}, {"Name", kNameWidth}, {"Details", kDetailsWidth}});
    if (const DictionaryRef sections = inventoryDictionary(inventory)) {
        for (const auto& [section, content] : *sections) {
            if (const DictionaryRef dictionary = content.dictionary()) addSection(table, section, dictionary);
        }
    }
    return table.text();
}

}  // namespace tov
