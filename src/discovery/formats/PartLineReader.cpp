#include "discovery/formats/PartLineReader.h"

#include <algorithm>
#include <utility>

namespace tov {

PartLineReader::PartLineReader(SystemSource& source, std::string path, std::uint64_t start, std::uint64_t end,
                               std::size_t partBytes)
    : source_(source), path_(std::move(path)), end_(end), partBytes_(std::max<std::size_t>(partBytes, 1)),
      bufferStart_(start) {}

bool PartLineReader::readMore() {
    buffer_.erase(0, cursor_);
    bufferStart_ += cursor_;
    cursor_ = 0;
    const std::uint64_t offset = bufferStart_ + buffer_.size();
    if (fileEnded_ || offset >= end_) return false;
    const std::uint64_t wanted = std::min<std::uint64_t>(partBytes_, end_ - offset);
    const std::optional<std::string> part = source_.readFilePart(path_, offset, wanted);
    if (!part || part->size() < wanted) fileEnded_ = true;
    if (!part || part->empty()) return false;
    buffer_ += *part;
    return true;
}

bool PartLineReader::skipRestOfCutLine() {
    for (;;) {
        const std::size_t lineBreak = buffer_.find('\n', cursor_);
        if (lineBreak != std::string::npos) {
            cursor_ = lineBreak + 1;
            insideCutLine_ = false;
            return true;
        }
        cursor_ = buffer_.size();
        if (!readMore()) return false;
    }
}

std::optional<PartLineReader::Line> PartLineReader::next() {
    if (insideCutLine_ && !skipRestOfCutLine()) return std::nullopt;
    std::size_t searchedUpTo = cursor_;
    for (;;) {
        const std::size_t lineBreak = buffer_.find('\n', searchedUpTo);
        if (lineBreak != std::string::npos) {
            const Line line{cursorOffset(), std::string_view(buffer_).substr(cursor_, lineBreak - cursor_)};
            cursor_ = lineBreak + 1;
            return line;
        }
        if (buffer_.size() - cursor_ >= partBytes_) {
            const Line line{cursorOffset(), std::string_view(buffer_).substr(cursor_, partBytes_)};
            cursor_ += partBytes_;
            insideCutLine_ = true;
            return line;
        }
        const std::size_t pending = buffer_.size() - cursor_;
        if (!readMore()) {
            if (cursor_ == buffer_.size()) return std::nullopt;
            const Line line{cursorOffset(), std::string_view(buffer_).substr(cursor_)};
            cursor_ = buffer_.size();
            return line;
        }
        searchedUpTo = cursor_ + pending;
    }
}

}  // namespace tov
