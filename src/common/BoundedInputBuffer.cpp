#include "common/BoundedInputBuffer.h"

#include <utility>

namespace tov {
namespace {

constexpr std::size_t kChunkBytes = 64 * 1024;

}  // namespace

BoundedInputBuffer::BoundedInputBuffer(ChunkReader reader, std::uint64_t maximumBytes)
    : reader_(std::move(reader)), maximumBytes_(maximumBytes), chunk_(kChunkBytes) {}

BoundedInputBuffer::int_type BoundedInputBuffer::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    if (exceededBound_ || readFailed_) return traits_type::eof();
    const std::int64_t count = reader_(chunk_.data(), chunk_.size());
    if (count < 0) {
        readFailed_ = true;
        return traits_type::eof();
    }
    if (count == 0) return traits_type::eof();
    if (static_cast<std::uint64_t>(count) > maximumBytes_ - deliveredBytes_) {
        exceededBound_ = true;
        return traits_type::eof();
    }
    deliveredBytes_ += static_cast<std::uint64_t>(count);
    setg(chunk_.data(), chunk_.data(), chunk_.data() + count);
    return traits_type::to_int_type(*gptr());
}

}  // namespace tov
