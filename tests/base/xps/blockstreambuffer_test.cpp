#include "base/xps/blockstreambuffer.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace base::xps {
namespace {

constexpr std::size_t kBlock = 64 * 1024;

class Target final : public std::streambuf {
  public:
    std::streamsize mostPerWrite = std::numeric_limits<std::streamsize>::max();
    bool throws = false;
    std::string content;
    std::vector<std::streamsize> writes;

  protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        writes.push_back(count);
        if (throws) throw std::runtime_error("refused");
        const std::streamsize taken = std::min(count, mostPerWrite);
        content.append(text, static_cast<std::size_t>(taken));
        return taken;
    }
};

std::string Text(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>('a' + i % 23);
    return text;
}

TEST(BlockStreamBufferTest, HandsOnOnlyFullBlocksUntilItIsFlushed) {
    Target target;
    BlockStreamBuffer blocks(target);
    std::ostream sink(&blocks);
    const std::string text = Text(2 * kBlock + 100);
    for (const char character : text) sink.put(character);
    EXPECT_EQ((std::vector<std::streamsize>{kBlock, kBlock}), target.writes);
    EXPECT_EQ(0, blocks.pubsync());
    EXPECT_EQ((std::vector<std::streamsize>{kBlock, kBlock, 100}), target.writes);
    EXPECT_EQ(text, target.content);
}

TEST(BlockStreamBufferTest, AFlushWithNothingWaitingWritesNothing) {
    Target target;
    BlockStreamBuffer blocks(target);
    EXPECT_EQ(0, blocks.pubsync());
    blocks.sputn("ab", 2);
    EXPECT_EQ(0, blocks.pubsync());
    EXPECT_EQ(0, blocks.pubsync());
    EXPECT_EQ(std::vector<std::streamsize>{2}, target.writes);
}

class OpenBuffer final : public BlockStreamBuffer {
  public:
    using BlockStreamBuffer::BlockStreamBuffer;
    using BlockStreamBuffer::overflow;
};

// A derived buffer may hand on what waits without a character of its own.
TEST(BlockStreamBufferTest, TheEndOfFileIsNoCharacter) {
    Target target;
    OpenBuffer blocks(target);
    blocks.sputn("ab", 2);
    EXPECT_NE(std::streambuf::traits_type::eof(), blocks.overflow(std::streambuf::traits_type::eof()));
    EXPECT_EQ("ab", target.content);
    EXPECT_EQ(0, blocks.pubsync());
    EXPECT_EQ("ab", target.content);
}

TEST(BlockStreamBufferTest, TextOfAnySizeComesThroughInOrder) {
    for (const std::size_t size : {std::size_t{1}, kBlock - 1, kBlock, kBlock + 1, 5 * kBlock + 7}) {
        Target target;
        BlockStreamBuffer blocks(target);
        std::ostream sink(&blocks);
        const std::string text = Text(size);
        sink << "x";
        sink.write(text.data(), static_cast<std::streamsize>(text.size()));
        sink.flush();
        EXPECT_TRUE(sink.good());
        EXPECT_EQ("x" + text, target.content);
    }
}

TEST(BlockStreamBufferTest, CompletesShortWrites) {
    Target target;
    target.mostPerWrite = 1000;
    BlockStreamBuffer blocks(target);
    std::ostream sink(&blocks);
    const std::string text = Text(kBlock + 10);
    sink.write(text.data(), static_cast<std::streamsize>(text.size()));
    sink.flush();
    EXPECT_EQ(text, target.content);
    EXPECT_EQ(kBlock / 1000 + 2, target.writes.size());
}

TEST(BlockStreamBufferTest, ATargetThatTakesNothingIsAFailure) {
    Target target;
    target.mostPerWrite = 0;
    BlockStreamBuffer blocks(target);
    blocks.sputn("ab", 2);
    EXPECT_THROW(blocks.pubsync(), std::overflow_error);
    EXPECT_EQ(1u, target.writes.size());
}

TEST(BlockStreamBufferTest, AFailingTargetShowsInTheStreamsState) {
    Target target;
    target.throws = true;
    BlockStreamBuffer blocks(target);
    std::ostream sink(&blocks);
    const std::string text = Text(kBlock + 1);
    sink.write(text.data(), static_cast<std::streamsize>(text.size()));
    EXPECT_TRUE(sink.bad());
    sink << "more";
    EXPECT_EQ(1u, target.writes.size());
}

TEST(BlockStreamBufferTest, WhatIsNotFlushedIsDropped) {
    Target target;
    {
        BlockStreamBuffer blocks(target);
        blocks.sputn("ab", 2);
    }
    EXPECT_EQ("", target.content);
}

}  // namespace
}  // namespace base::xps
