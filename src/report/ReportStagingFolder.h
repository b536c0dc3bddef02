#pragma once

// The folder where the temporary report and the archive being made live (the component
// folder's ".staging"): only root may use it, it lies on the outbox's file system so that a
// rename hands a finished file over, and every file in it is created 0600. Opening it makes
// it when missing and replaces, without following links, whatever else stands at its path;
// afterwards every step works through the opened folder, so a path swapped later cannot
// redirect a write or a read.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "common/FileDescriptor.h"

namespace tov {

class ReportStagingFolder {
public:
    // The staging folder, made or repaired as needed; nothing (with an error line) when it
    // cannot be had.
    static std::optional<ReportStagingFolder> open();

    // Writes name afresh (mode 0600 from the start), flushed to disk. On failure, the errno
    // value is in error and no file of that name is left.
    bool write(const std::string& name, std::string_view bytes, int* error) const;
    // The bytes of the regular file name (a link is not followed); nothing when there is no
    // such file or it holds more than maximumBytes.
    std::optional<std::string> read(const std::string& name, std::uint64_t maximumBytes) const;
    bool exists(const std::string& name) const;
    void remove(const std::string& name) const;
    // Removes every entry but keep: what a hand-over that was cut short left behind.
    void removeLeftoversExcept(const std::string& keep) const;
    // Moves name into the folder open at destination under the same name; an entry already
    // there is never replaced.
    bool moveInto(const std::string& name, int destination, int* error) const;

private:
    explicit ReportStagingFolder(FileDescriptor folder) : folder_(std::move(folder)) {}

    FileDescriptor folder_;
};

}  // namespace tov
