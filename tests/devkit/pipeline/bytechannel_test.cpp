#include "devkit/pipeline/bytechannel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace devkit::pipeline {
namespace {

std::string Take(ByteChannel& channel, std::uint64_t offset, std::size_t size, bool& isEnd) {
    std::string text(size, '?');
    text.resize(channel.ReadAt(offset, text.data(), size, isEnd));
    return text;
}

TEST(ByteChannel, GivesWhatIsThereAndTheEndBehindIt) {
    ByteChannel channel;
    channel.Append("abcdef", 6);
    bool isEnd = true;
    EXPECT_EQ("abcd", Take(channel, 0, 4, isEnd));
    EXPECT_FALSE(isEnd);
    EXPECT_EQ("ef", Take(channel, 4, 4, isEnd));
    EXPECT_FALSE(isEnd);
    channel.Close();
    EXPECT_EQ("", Take(channel, 6, 4, isEnd));
    EXPECT_TRUE(isEnd);
    EXPECT_EQ("cdef", Take(channel, 2, 10, isEnd));
    EXPECT_TRUE(isEnd);
    EXPECT_EQ("", Take(channel, 100, 4, isEnd));
    EXPECT_TRUE(isEnd);
    EXPECT_EQ(6U, channel.Size());
    ASSERT_TRUE(channel.Written());
    EXPECT_EQ("abcdef", *channel.Written());
}

TEST(ByteChannel, AReaderWaitsForTheFirstByteAndForTheEnd) {
    ByteChannel channel;
    std::thread writer([&] {
        Sleep(20);
        channel.Append("ab", 2);
        Sleep(20);
        channel.Append("c", 1);
        channel.Close();
    });
    bool isEnd = true;
    EXPECT_EQ("ab", Take(channel, 0, 10, isEnd).substr(0, 2));
    EXPECT_EQ(3U, channel.Size());
    writer.join();
}

TEST(ByteChannel, AWriterFarAheadWaitsUnlessTheReaderWaitsForTheEnd) {
    ByteChannel channel(4);
    std::atomic<int> written = 0;
    std::thread writer([&] {
        for (int i = 0; i < 10; ++i) {
            channel.Append("xx", 2);
            ++written;
        }
        channel.Close();
    });
    while (written < 2) Sleep(1);
    Sleep(50);
    EXPECT_EQ(2, written);
    bool isEnd = false;
    EXPECT_EQ("xxx", Take(channel, 0, 3, isEnd));
    for (int i = 0; i < 10000 && written < 4; ++i) Sleep(1);
    Sleep(50);
    EXPECT_EQ(4, written);
    EXPECT_EQ(20U, channel.Size());
    writer.join();
}

TEST(ByteChannel, AnAbandonedChannelLetsBothEndsGo) {
    ByteChannel channel(1);
    channel.Append("x", 1);
    std::thread writer([&] { channel.Append("y", 1); });
    Sleep(20);
    channel.Abandon();
    writer.join();
    bool isEnd = false;
    EXPECT_EQ("x", Take(channel, 0, 10, isEnd));
    EXPECT_TRUE(isEnd);
    EXPECT_EQ(1U, channel.Size());
    EXPECT_FALSE(channel.IsClosed());
    EXPECT_EQ(nullptr, channel.Written());
}

}  // namespace
}  // namespace devkit::pipeline
