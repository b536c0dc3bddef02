#pragma once

// The inventory as a short table for people (tov -s): one line per record, in the order
// of the report, with its category, its name and the one or two facts that tell it apart
// (sizes, speeds, addresses, resolution, file system and mount path ...). It reads the
// very tree a report is written from, so a Linux machine and a Mac summarise alike; keys
// that are missing or hold an unexpected type leave their fact out.

#include <string>

#include "model/Value.h"

namespace tov {

class InventorySummary {
public:
    static constexpr std::size_t kCategoryWidth = 16;
    static constexpr std::size_t kNameWidth = 48;
    static constexpr std::size_t kDetailsWidth = 72;

    // The report document ({"HWInventory": ...}) or the inventory dictionary itself; any
    // other value gives the table's heading alone.
    static std::string textOf(const Value& inventory);
};

}  // namespace tov
