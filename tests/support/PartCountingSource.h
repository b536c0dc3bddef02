#pragma once

// A machine of files held in memory (no links) that answers a part of a file by slicing
// its bytes, without copying the whole file for each part (so that real id databases
// can be searched quickly), and counts what it was asked.

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "support/MemorySystemSource.h"

namespace tov::testing {

class PartCountingSource : public MemorySystemSource {
public:
    PartCountingSource& held(const std::string& path, std::string bytes);

    std::optional<std::string> readFile(const std::string& path, std::uint64_t maximumBytes) override;
    std::optional<std::string> readFilePart(const std::string& path, std::uint64_t offset,
                                            std::uint64_t length) override;

    void resetCounts();

    int wholeReads = 0;
    int partReads = 0;
    std::uint64_t largestPartAsked = 0;
    std::uint64_t bytesGiven = 0;

private:
    std::map<std::string, std::string> held_;
};

}  // namespace tov::testing
