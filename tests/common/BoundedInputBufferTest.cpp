#include "common/BoundedInputBuffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <istream>
#include <iterator>
#include <string>

namespace tov {
namespace {

// Hands out text at most chunkBytes at a time, then fails when failAfter chunks were given.
BoundedInputBuffer::ChunkReader textReader(const std::string& text, std::size_t chunkBytes, int failAfter = -1) {
    auto position = std::make_shared<std::size_t>(0);
    auto chunks = std::make_shared<int>(0);
    return [=](char* buffer, std::size_t size) -> std::int64_t {
        if (failAfter >= 0 && *chunks >= failAfter) return -1;
        ++*chunks;
        const std::size_t count = std::min({size, chunkBytes, text.size() - *position});
        std::memcpy(buffer, text.data() + *position, count);
        *position += count;
        return static_cast<std::int64_t>(count);
    };
}

std::string readAll(BoundedInputBuffer& buffer) {
    std::istream input(&buffer);
    return std::string(std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>());
}

TEST(BoundedInputBuffer, DeliversEveryChunkInOrder) {
    const std::string text = "0123456789abcdefghij";
    BoundedInputBuffer buffer(textReader(text, 3), 100);
    EXPECT_EQ(readAll(buffer), text);
    EXPECT_FALSE(buffer.exceededBound());
    EXPECT_FALSE(buffer.readFailed());
}

TEST(BoundedInputBuffer, InputOfExactlyTheBoundIsWhole) {
    BoundedInputBuffer buffer(textReader("abcdef", 4), 6);
    EXPECT_EQ(readAll(buffer), "abcdef");
    EXPECT_FALSE(buffer.exceededBound());
}

TEST(BoundedInputBuffer, InputBeyondTheBoundEndsTheStreamAndIsRemembered) {
    BoundedInputBuffer buffer(textReader("abcdefgh", 4), 6);
    EXPECT_EQ(readAll(buffer), "abcd");
    EXPECT_TRUE(buffer.exceededBound());
    EXPECT_FALSE(buffer.readFailed());
}

TEST(BoundedInputBuffer, AFailingReadEndsTheStreamAndIsRemembered) {
    BoundedInputBuffer buffer(textReader("abcdefgh", 2, 2), 100);
    EXPECT_EQ(readAll(buffer), "abcd");
    EXPECT_TRUE(buffer.readFailed());
    EXPECT_FALSE(buffer.exceededBound());
}

TEST(BoundedInputBuffer, EmptyInputIsWhole) {
    BoundedInputBuffer buffer(textReader("", 4), 0);
    EXPECT_EQ(readAll(buffer), "");
    EXPECT_FALSE(buffer.exceededBound());
    EXPECT_FALSE(buffer.readFailed());
}

}  // namespace
}  // namespace tov
