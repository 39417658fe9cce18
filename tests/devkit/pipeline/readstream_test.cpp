#include "devkit/pipeline/readstream.h"

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class ReadStreamTest : public PipelineTest {
  protected:
    ComPtr<ReadStream> Stream(const char* text) {
        return MakeObject<ReadStream>(Context(), "/part", std::make_shared<const std::string>(text));
    }

    struct Read {
        HRESULT hr;
        std::string text;
        bool end;
        bool operator==(const Read&) const = default;
    };
    static Read ReadSome(IPrintReadStream& stream, ULONG wanted) {
        std::string text(wanted, '?');
        ULONG count = 99;
        BOOL end = 99;
        const HRESULT hr = stream.ReadBytes(text.data(), wanted, &count, &end);
        text.resize(count);
        return {hr, text, end == TRUE};
    }
};

TEST_F(ReadStreamTest, DeliversTheBytesWithTheEndFlagOnTheLast) {
    const auto stream = Stream("abcdef");
    EXPECT_EQ(ReadSome(*stream.Get(), 4), (Read{S_OK, "abcd", false}));
    EXPECT_EQ(ReadSome(*stream.Get(), 4), (Read{S_OK, "ef", true}));
    EXPECT_EQ(ReadSome(*stream.Get(), 4), (Read{S_OK, "", true}));
}

TEST_F(ReadStreamTest, SetsTheEndFlagWhenTheBufferTakesExactlyTheRest) {
    const auto stream = Stream("abcd");
    EXPECT_EQ(ReadSome(*stream.Get(), 4), (Read{S_OK, "abcd", true}));
}

TEST_F(ReadStreamTest, SetsTheEndFlagAfterTheLastDataWhenSwitched) {
    Switches switches;
    switches.endFlag = EndFlag::AfterLastData;
    Use(switches);
    const auto stream = Stream("abcd");
    EXPECT_EQ(ReadSome(*stream.Get(), 8), (Read{S_OK, "abcd", false}));
    EXPECT_EQ(ReadSome(*stream.Get(), 8), (Read{S_OK, "", true}));
}

TEST_F(ReadStreamTest, ReadsShortWhenSwitchedAndAShortReadIsNotTheEnd) {
    Switches switches;
    switches.maxBytesPerRead = 2;
    Use(switches);
    const auto stream = Stream("abcde");
    EXPECT_EQ(ReadSome(*stream.Get(), 100), (Read{S_OK, "ab", false}));
    EXPECT_EQ(ReadSome(*stream.Get(), 1), (Read{S_OK, "c", false}));
    EXPECT_EQ(ReadSome(*stream.Get(), 100), (Read{S_OK, "de", true}));
}

TEST_F(ReadStreamTest, AnEmptyStreamIsAtItsEndAtOnce) {
    const auto stream = Stream("");
    EXPECT_EQ(ReadSome(*stream.Get(), 4), (Read{S_OK, "", true}));
}

TEST_F(ReadStreamTest, SeeksFromStartCurrentAndEnd) {
    const auto stream = Stream("abcdef");
    ULONGLONG position = 99;
    EXPECT_EQ(stream->Seek(2, STREAM_SEEK_SET, &position), S_OK);
    EXPECT_EQ(position, 2U);
    EXPECT_EQ(ReadSome(*stream.Get(), 1), (Read{S_OK, "c", false}));
    EXPECT_EQ(stream->Seek(1, STREAM_SEEK_CUR, &position), S_OK);
    EXPECT_EQ(position, 4U);
    EXPECT_EQ(stream->Seek(-5, STREAM_SEEK_END, &position), S_OK);
    EXPECT_EQ(position, 1U);
    EXPECT_EQ(stream->Seek(0, STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(ReadSome(*stream.Get(), 6), (Read{S_OK, "abcdef", true}));
}

TEST_F(ReadStreamTest, ReadsNothingBehindTheEnd) {
    const auto stream = Stream("abc");
    ULONGLONG position = 0;
    EXPECT_EQ(stream->Seek(7, STREAM_SEEK_END, &position), S_OK);
    EXPECT_EQ(position, 10U);
    EXPECT_EQ(ReadSome(*stream.Get(), 4), (Read{S_OK, "", true}));
}

TEST_F(ReadStreamTest, RefusesASeekBeforeTheStartAndStaysWhereItIs) {
    const auto stream = Stream("abc");
    ASSERT_EQ(stream->Seek(1, STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(stream->Seek(-2, STREAM_SEEK_CUR, nullptr), STG_E_SEEKERROR);
    EXPECT_EQ(stream->Seek(-4, STREAM_SEEK_END, nullptr), STG_E_SEEKERROR);
    EXPECT_EQ(stream->Seek(-1, STREAM_SEEK_SET, nullptr), STG_E_SEEKERROR);
    EXPECT_EQ(stream->Seek(std::numeric_limits<LONGLONG>::max(), STREAM_SEEK_CUR, nullptr), STG_E_SEEKERROR);
    EXPECT_EQ(ReadSome(*stream.Get(), 1), (Read{S_OK, "b", false}));
}

TEST_F(ReadStreamTest, RefusesAnUnknownOrigin) {
    EXPECT_EQ(Stream("abc")->Seek(0, 3, nullptr), STG_E_INVALIDFUNCTION);
}

TEST_F(ReadStreamTest, ANullPointerIsABreach) {
    const auto stream = Stream("abc");
    char byte = 0;
    ULONG count = 99;
    BOOL end = TRUE;
    EXPECT_EQ(stream->ReadBytes(nullptr, 1, &count, &end), E_POINTER);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(end, FALSE);
    EXPECT_EQ(stream->ReadBytes(&byte, 1, nullptr, &end), E_POINTER);
    EXPECT_EQ(stream->ReadBytes(&byte, 1, &count, nullptr), E_POINTER);
    EXPECT_EQ(Breaches(), Lines(3, "ReadBytes of /part was called with a null pointer"));
}

TEST_F(ReadStreamTest, FailsAsPlannedWithoutReading) {
    Use(Failing("ReadBytes", STG_E_READFAULT));
    const auto stream = Stream("abc");
    EXPECT_EQ(ReadSome(*stream.Get(), 3), (Read{STG_E_READFAULT, "", false}));
    EXPECT_EQ(ReadSome(*stream.Get(), 3), (Read{S_OK, "abc", true}));
}

}  // namespace
}  // namespace devkit::pipeline
