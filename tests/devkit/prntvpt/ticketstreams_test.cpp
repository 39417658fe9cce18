#include "devkit/prntvpt/api/ticketstreams.h"

#include <gtest/gtest.h>

#include "memorystream.h"

namespace devkit::prntvpt {
namespace {

using namespace std::string_view_literals;

TEST(Streams, ReadFromTheCurrentPositionToTheEnd) {
    const auto stream = MemoryStream::Make("0123456789", 4);
    std::string bytes;
    EXPECT_EQ(S_OK, ReadToEnd(stream.Get(), 100, bytes));
    EXPECT_EQ("456789", bytes);
    EXPECT_EQ(10U, stream->Position());
    EXPECT_EQ(0, stream->Seeks());
}

TEST(Streams, ReadInBlocksOfAnySize) {
    const std::string content(50'000, 'x');
    for (const ULONG most : {ULONG{1}, ULONG{7}, ULONG{16384}, ULONG{50000}}) {
        const auto stream = MemoryStream::Make(content);
        stream->LimitBlocks(most);
        std::string bytes;
        EXPECT_EQ(S_OK, ReadToEnd(stream.Get(), 100'000, bytes));
        EXPECT_EQ(content, bytes);
    }
}

TEST(Streams, ReadAsksNoMoreOnceTheEndIsTold) {
    const auto stream = MemoryStream::Make("0123456789");
    stream->TellTheEnd();
    std::string bytes;
    EXPECT_EQ(S_OK, ReadToEnd(stream.Get(), 100, bytes));
    EXPECT_EQ("0123456789", bytes);
    EXPECT_EQ(1, stream->Reads());
}

TEST(Streams, ReadStopsBeyondTheLimit) {
    const auto stream = MemoryStream::Make(std::string(1'000'000, 'x'));
    std::string bytes;
    EXPECT_EQ(S_OK, ReadToEnd(stream.Get(), 1000, bytes));
    EXPECT_GT(bytes.size(), 1000U);
    EXPECT_LT(bytes.size(), 20'000U);
}

TEST(Streams, ReadFailsWithTheStream) {
    const auto stream = MemoryStream::Make("x");
    stream->FailReads(STG_E_READFAULT);
    std::string bytes;
    EXPECT_EQ(STG_E_READFAULT, ReadToEnd(stream.Get(), 100, bytes));
}

TEST(Streams, WriteAtTheCurrentPositionInBlocksOfAnySize) {
    const auto stream = MemoryStream::Make("abcdef", 2);
    stream->LimitBlocks(1);
    EXPECT_EQ(S_OK, WriteAll(stream.Get(), "XYZ"));
    EXPECT_EQ("abXYZf", stream->Bytes());
    EXPECT_EQ(5U, stream->Position());
    EXPECT_EQ(0, stream->Seeks());
}

TEST(Streams, WriteFailsWithTheStream) {
    const auto stream = MemoryStream::Make();
    stream->FailWrites(STG_E_ACCESSDENIED);
    EXPECT_EQ(STG_E_ACCESSDENIED, WriteAll(stream.Get(), "x"));
}

TEST(Streams, WriteFailsWhenTheStreamTakesNothing) {
    const auto stream = MemoryStream::Make();
    stream->LimitBlocks(0);
    EXPECT_EQ(STG_E_MEDIUMFULL, WriteAll(stream.Get(), "x"));
}

TEST(DocumentText, HasNoMark) {
    EXPECT_EQ("<a/>", DocumentText("\xEF\xBB\xBF<a/>"));
    EXPECT_EQ("<a/>", DocumentText("\xFF\xFE<\0a\0/\0>\0"sv));
    EXPECT_EQ("<a/>", DocumentText("\xFE\xFF\0<\0a\0/\0>"sv));
    EXPECT_EQ("<a/>", DocumentText("<\0a\0/\0>\0"sv));
    EXPECT_EQ("<a/>", DocumentText("<a/>"));
    EXPECT_EQ("", DocumentText(""));
    EXPECT_EQ("<", DocumentText("\xFF\xFE<\0a"sv));
}

}  // namespace
}  // namespace devkit::prntvpt
