#include "common/CompactJsonInputBuffer.h"

namespace tov {
namespace {

constexpr std::size_t kChunkBytes = 64 * 1024;

bool isJsonBlank(char character) {
    return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

bool isOpener(char character) { return character == '{' || character == '['; }

char closerOf(char opener) { return opener == '{' ? '}' : ']'; }

}  // namespace

CompactJsonInputBuffer::CompactJsonInputBuffer(std::streambuf& source, int maximumDepth)
    : source_(source), maximumDepth_(maximumDepth > 0 ? static_cast<std::size_t>(maximumDepth) : 0) {
    output_.reserve(kChunkBytes + 8);
}

CompactJsonInputBuffer::int_type CompactJsonInputBuffer::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    output_.clear();
    while (output_.size() < kChunkBytes) {
        const int_type next = source_.sbumpc();
        if (traits_type::eq_int_type(next, traits_type::eof())) {
            finish();
            break;
        }
        pass(traits_type::to_char_type(next));
    }
    if (output_.empty()) return traits_type::eof();
    setg(output_.data(), output_.data(), output_.data() + output_.size());
    return traits_type::to_int_type(*gptr());
}

void CompactJsonInputBuffer::pass(char character) {
    if (inString_) {
        passInString(character);
    } else {
        passOutsideString(character);
    }
}

void CompactJsonInputBuffer::passInString(char character) {
    output_ += character;
    if (escaped_) {
        escaped_ = false;
    } else if (character == '\\') {
        escaped_ = true;
    } else if (character == '"') {
        inString_ = false;
    }
}

void CompactJsonInputBuffer::passOutsideString(char character) {
    if (isJsonBlank(character)) {
        pendingBlank_ = true;
        return;
    }
    if (pendingOpener_ != 0) {
        if (character == closerOf(pendingOpener_)) {
            replaceEmptyContainer();
            return;
        }
        openPendingContainer();
    }
    if (character == ',' && afterReplacementInArray_ && !heldComma_) {
        heldComma_ = true;
        pendingBlank_ = false;
        return;
    }
    if (isOpener(character) && isReplaceableHere()) {
        if (!heldComma_) emitPendingBlank();
        pendingOpener_ = character;
        pendingBlank_ = false;
        return;
    }
    emitHeldComma();
    emitPendingBlank();
    afterReplacementInArray_ = false;
    if (isOpener(character)) {
        openContainer(character);
    } else if (character == '}' || character == ']') {
        closeContainer(character);
    } else {
        output_ += character;
        inString_ = character == '"';
    }
}

// The 0 stands between blanks so that it can never join what stands before or after it
// into one number ("-{}" and "{}.5" must stay invalid).
void CompactJsonInputBuffer::replaceEmptyContainer() {
    pendingOpener_ = 0;
    pendingBlank_ = false;
    if (heldComma_) {
        heldComma_ = false;
        return;
    }
    output_ += " 0 ";
    afterReplacementInArray_ = isInArray();
}

void CompactJsonInputBuffer::openPendingContainer() {
    const char opener = pendingOpener_;
    pendingOpener_ = 0;
    const bool blankAfterOpener = pendingBlank_;
    pendingBlank_ = false;
    emitHeldComma();
    afterReplacementInArray_ = false;
    openContainer(opener);
    pendingBlank_ = blankAfterOpener;
}

void CompactJsonInputBuffer::openContainer(char opener) {
    output_ += opener;
    openers_.push_back(opener);
}

void CompactJsonInputBuffer::closeContainer(char closer) {
    output_ += closer;
    if (!openers_.empty()) openers_.pop_back();
}

void CompactJsonInputBuffer::emitHeldComma() {
    if (!heldComma_) return;
    output_ += ',';
    heldComma_ = false;
}

void CompactJsonInputBuffer::emitPendingBlank() {
    if (pendingBlank_) output_ += ' ';
    pendingBlank_ = false;
}

void CompactJsonInputBuffer::finish() {
    if (pendingOpener_ != 0) openPendingContainer();
    emitHeldComma();
}

bool CompactJsonInputBuffer::isReplaceableHere() const {
    if (openers_.size() >= maximumDepth_) return false;
    return openers_.size() >= 2 || (openers_.size() == 1 && openers_.front() == '[');
}

}  // namespace tov
