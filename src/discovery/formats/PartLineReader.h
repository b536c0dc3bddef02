#pragma once

// The lines of a file read forward from a line start through SystemSource::readFilePart, a
// part at a time, so that a large file is read without being held: at most two parts are
// in memory. A line longer than a part is cut to a part's bytes (the rest of it is
// skipped); the last line may lack its line break.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "discovery/SystemSource.h"

namespace tov {

class PartLineReader {
public:
    struct Line {
        std::uint64_t start = 0;  // where the line starts in the file
        std::string_view text;    // without its line break; valid until the next call
    };

    // Lines from start on, read no further than end, partBytes at a time.
    PartLineReader(SystemSource& source, std::string path, std::uint64_t start, std::uint64_t end,
                   std::size_t partBytes);

    // The next line; nothing once the file or the bound ends.
    std::optional<Line> next();

private:
    // Drops the lines already given and appends the next part; false when nothing is left.
    bool readMore();
    // Skips the rest of a cut line; false when the file ends first.
    bool skipRestOfCutLine();
    std::uint64_t cursorOffset() const { return bufferStart_ + cursor_; }

    SystemSource& source_;
    const std::string path_;
    const std::uint64_t end_;
    const std::size_t partBytes_;
    std::string buffer_;
    std::uint64_t bufferStart_;
    std::size_t cursor_ = 0;
    bool fileEnded_ = false;
    bool insideCutLine_ = false;
};

}  // namespace tov
