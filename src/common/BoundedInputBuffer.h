#pragma once

// A stream buffer that pulls its bytes a chunk at a time from a reading function and stops
// at a byte bound, so a reader of the stream never holds more than one chunk of input and
// never reads past the bound. A failing read or input beyond the bound ends the stream
// early; both are remembered so the caller can tell a short stream from a whole one.

#include <cstdint>
#include <functional>
#include <streambuf>
#include <vector>

namespace tov {

class BoundedInputBuffer : public std::streambuf {
public:
    // Fills buffer with up to size bytes: the count, 0 at the end, negative on failure.
    using ChunkReader = std::function<std::int64_t(char* buffer, std::size_t size)>;

    BoundedInputBuffer(ChunkReader reader, std::uint64_t maximumBytes);

    // The input held more than the bound.
    bool exceededBound() const { return exceededBound_; }
    // The reading function reported a failure.
    bool readFailed() const { return readFailed_; }

protected:
    int_type underflow() override;

private:
    ChunkReader reader_;
    const std::uint64_t maximumBytes_;
    std::uint64_t deliveredBytes_ = 0;
    bool exceededBound_ = false;
    bool readFailed_ = false;
    std::vector<char> chunk_;
};

}  // namespace tov
