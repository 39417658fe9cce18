#include "devkit/prntvpt/api/streams.h"

#include <gtest/gtest.h>

#include "memorystream.h"

namespace devkit::prntvpt {
namespace {

TEST(Streams, ReadFromTheCurrentPositionToTheEnd) {
    const auto stream = MemoryStream::Make("0123456789", 4);
    std::string bytes;
    EXPECT_EQ(ReadToEnd(stream.Get(), 100, bytes), S_OK);
    EXPECT_EQ(bytes, "456789");
    EXPECT_EQ(stream->Position(), 10U);
    EXPECT_EQ(stream->Seeks(), 0);
}

TEST(Streams, ReadInBlocksOfAnySize) {
    const std::string content(50'000, 'x');
    for (const ULONG most : {ULONG{1}, ULONG{7}, ULONG{16384}, ULONG{50000}}) {
        const auto stream = MemoryStream::Make(content);
        stream->LimitBlocks(most);
        std::string bytes;
        EXPECT_EQ(ReadToEnd(stream.Get(), 100'000, bytes), S_OK);
        EXPECT_EQ(bytes, content);
    }
}

TEST(Streams, ReadAsksNoMoreOnceTheEndIsTold) {
    const auto stream = MemoryStream::Make("0123456789");
    stream->TellTheEnd();
    std::string bytes;
    EXPECT_EQ(ReadToEnd(stream.Get(), 100, bytes), S_OK);
    EXPECT_EQ(bytes, "0123456789");
    EXPECT_EQ(stream->Reads(), 1);
}

TEST(Streams, ReadStopsBeyondTheLimit) {
    const auto stream = MemoryStream::Make(std::string(1'000'000, 'x'));
    std::string bytes;
    EXPECT_EQ(ReadToEnd(stream.Get(), 1000, bytes), S_OK);
    EXPECT_GT(bytes.size(), 1000U);
    EXPECT_LT(bytes.size(), 20'000U);
}

TEST(Streams, ReadFailsWithTheStream) {
    const auto stream = MemoryStream::Make("x");
    stream->FailReads(STG_E_READFAULT);
    std::string bytes;
    EXPECT_EQ(ReadToEnd(stream.Get(), 100, bytes), STG_E_READFAULT);
}

TEST(Streams, WriteAtTheCurrentPositionInBlocksOfAnySize) {
    const auto stream = MemoryStream::Make("abcdef", 2);
    stream->LimitBlocks(1);
    EXPECT_EQ(WriteAll(stream.Get(), "XYZ"), S_OK);
    EXPECT_EQ(stream->Bytes(), "abXYZf");
    EXPECT_EQ(stream->Position(), 5U);
    EXPECT_EQ(stream->Seeks(), 0);
}

TEST(Streams, WriteFailsWithTheStream) {
    const auto stream = MemoryStream::Make();
    stream->FailWrites(STG_E_ACCESSDENIED);
    EXPECT_EQ(WriteAll(stream.Get(), "x"), STG_E_ACCESSDENIED);
}

TEST(Streams, WriteFailsWhenTheStreamTakesNothing) {
    const auto stream = MemoryStream::Make();
    stream->LimitBlocks(0);
    EXPECT_EQ(WriteAll(stream.Get(), "x"), STG_E_MEDIUMFULL);
}

}  // namespace
}  // namespace devkit::prntvpt
