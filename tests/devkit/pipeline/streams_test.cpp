#include "devkit/pipeline/streams.h"

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
    EXPECT_EQ((Read{S_OK, "abcd", false}), ReadSome(*stream.Get(), 4));
    EXPECT_EQ((Read{S_OK, "ef", true}), ReadSome(*stream.Get(), 4));
    EXPECT_EQ((Read{S_OK, "", true}), ReadSome(*stream.Get(), 4));
}

TEST_F(ReadStreamTest, SetsTheEndFlagWhenTheBufferTakesExactlyTheRest) {
    const auto stream = Stream("abcd");
    EXPECT_EQ((Read{S_OK, "abcd", true}), ReadSome(*stream.Get(), 4));
}

TEST_F(ReadStreamTest, SetsTheEndFlagAfterTheLastDataWhenSwitched) {
    Behaviour behaviour;
    behaviour.endFlag = EndFlag::AfterLastData;
    Use(behaviour);
    const auto stream = Stream("abcd");
    EXPECT_EQ((Read{S_OK, "abcd", false}), ReadSome(*stream.Get(), 8));
    EXPECT_EQ((Read{S_OK, "", true}), ReadSome(*stream.Get(), 8));
}

TEST_F(ReadStreamTest, ReadsShortWhenSwitchedAndAShortReadIsNotTheEnd) {
    Behaviour behaviour;
    behaviour.maxBytesPerRead = 2;
    Use(behaviour);
    const auto stream = Stream("abcde");
    EXPECT_EQ((Read{S_OK, "ab", false}), ReadSome(*stream.Get(), 100));
    EXPECT_EQ((Read{S_OK, "c", false}), ReadSome(*stream.Get(), 1));
    EXPECT_EQ((Read{S_OK, "de", true}), ReadSome(*stream.Get(), 100));
}

TEST_F(ReadStreamTest, AnEmptyStreamIsAtItsEndAtOnce) {
    const auto stream = Stream("");
    EXPECT_EQ((Read{S_OK, "", true}), ReadSome(*stream.Get(), 4));
}

TEST_F(ReadStreamTest, SeeksFromStartCurrentAndEnd) {
    const auto stream = Stream("abcdef");
    ULONGLONG position = 99;
    EXPECT_EQ(S_OK, stream->Seek(2, STREAM_SEEK_SET, &position));
    EXPECT_EQ(2U, position);
    EXPECT_EQ((Read{S_OK, "c", false}), ReadSome(*stream.Get(), 1));
    EXPECT_EQ(S_OK, stream->Seek(1, STREAM_SEEK_CUR, &position));
    EXPECT_EQ(4U, position);
    EXPECT_EQ(S_OK, stream->Seek(-5, STREAM_SEEK_END, &position));
    EXPECT_EQ(1U, position);
    EXPECT_EQ(S_OK, stream->Seek(0, STREAM_SEEK_SET, nullptr));
    EXPECT_EQ((Read{S_OK, "abcdef", true}), ReadSome(*stream.Get(), 6));
}

TEST_F(ReadStreamTest, ReadsNothingBehindTheEnd) {
    const auto stream = Stream("abc");
    ULONGLONG position = 0;
    EXPECT_EQ(S_OK, stream->Seek(7, STREAM_SEEK_END, &position));
    EXPECT_EQ(10U, position);
    EXPECT_EQ((Read{S_OK, "", true}), ReadSome(*stream.Get(), 4));
}

TEST_F(ReadStreamTest, RefusesASeekBeforeTheStartAndStaysWhereItIs) {
    const auto stream = Stream("abc");
    ASSERT_EQ(S_OK, stream->Seek(1, STREAM_SEEK_SET, nullptr));
    EXPECT_EQ(STG_E_SEEKERROR, stream->Seek(-2, STREAM_SEEK_CUR, nullptr));
    EXPECT_EQ(STG_E_SEEKERROR, stream->Seek(-4, STREAM_SEEK_END, nullptr));
    EXPECT_EQ(STG_E_SEEKERROR, stream->Seek(-1, STREAM_SEEK_SET, nullptr));
    EXPECT_EQ(STG_E_SEEKERROR, stream->Seek(std::numeric_limits<LONGLONG>::max(), STREAM_SEEK_CUR, nullptr));
    EXPECT_EQ((Read{S_OK, "b", false}), ReadSome(*stream.Get(), 1));
}

TEST_F(ReadStreamTest, RefusesAnUnknownOrigin) {
    EXPECT_EQ(STG_E_INVALIDFUNCTION, Stream("abc")->Seek(0, 3, nullptr));
}

TEST_F(ReadStreamTest, ANullPointerIsABreach) {
    const auto stream = Stream("abc");
    char byte = 0;
    ULONG count = 99;
    BOOL end = TRUE;
    EXPECT_EQ(E_POINTER, stream->ReadBytes(nullptr, 1, &count, &end));
    EXPECT_EQ(0U, count);
    EXPECT_EQ(FALSE, end);
    EXPECT_EQ(E_POINTER, stream->ReadBytes(&byte, 1, nullptr, &end));
    EXPECT_EQ(E_POINTER, stream->ReadBytes(&byte, 1, &count, nullptr));
    EXPECT_EQ(Lines(3, "ReadBytes of /part was called with a null pointer"), Breaches());
}

TEST_F(ReadStreamTest, FailsAsPlannedWithoutReading) {
    Use(Failing("ReadBytes", STG_E_READFAULT));
    const auto stream = Stream("abc");
    EXPECT_EQ((Read{STG_E_READFAULT, "", false}), ReadSome(*stream.Get(), 3));
    EXPECT_EQ((Read{S_OK, "abc", true}), ReadSome(*stream.Get(), 3));
}

TEST_F(ReadStreamTest, AnswersWithoutAByteAsPlannedAndIsNotAtItsEnd) {
    Use(Failing("ReadBytes", S_FALSE));
    const auto stream = Stream("abc");
    EXPECT_EQ((Read{S_OK, "", false}), ReadSome(*stream.Get(), 3));
    EXPECT_EQ((Read{S_OK, "abc", true}), ReadSome(*stream.Get(), 3));
}

class ReadStreamFactoryTest : public PipelineTest {
  protected:
    ComPtr<ReadStreamFactory> Factory() {
        return MakeObject<ReadStreamFactory>(Context(), "ticket",
                                             std::make_shared<const std::string>("<t/>"));
    }
};

TEST_F(ReadStreamFactoryTest, GivesANewStreamAtItsStartEachTime) {
    const auto factory = Factory();
    ComPtr<IPrintReadStream> first;
    ComPtr<IPrintReadStream> second;
    ASSERT_EQ(S_OK, factory->GetStream(first.Put()));
    EXPECT_EQ("<t/>", ReadAll(first.Get()));
    ASSERT_EQ(S_OK, factory->GetStream(second.Put()));
    EXPECT_EQ("<t/>", ReadAll(second.Get()));
}

TEST_F(ReadStreamFactoryTest, RefusesNullAndFailsAsPlanned) {
    Use(Failing("IPrintReadStreamFactory::GetStream", E_OUTOFMEMORY));
    const auto factory = Factory();
    ComPtr<IPrintReadStream> stream;
    EXPECT_EQ(E_POINTER, factory->GetStream(nullptr));
    EXPECT_EQ(E_OUTOFMEMORY, factory->GetStream(stream.Put()));
    EXPECT_FALSE(stream);
}

class WriteStreamTest : public PipelineTest {
  protected:
    ComPtr<WriteStream> Stream() { return MakeObject<WriteStream>(Context(), "/part", m_writing); }

    const std::shared_ptr<Writing> m_writing = std::make_shared<Writing>();
};

TEST_F(WriteStreamTest, KeepsTheBytesWhenClosed) {
    const auto stream = Stream();
    ULONG count = 0;
    EXPECT_EQ(S_OK, stream->WriteBytes("abc", 3, &count));
    EXPECT_EQ(3U, count);
    EXPECT_EQ(S_OK, stream->WriteBytes("de", 2, &count));
    EXPECT_EQ(nullptr, m_writing->Written());
    EXPECT_FALSE(m_writing->IsClosed());
    stream->Close();
    ASSERT_TRUE(m_writing->IsClosed());
    EXPECT_EQ("abcde", *m_writing->Written());
    EXPECT_EQ(Lines{}, Breaches());
}

TEST_F(WriteStreamTest, ClosedAtOnceItIsEmptyNotAbsent) {
    Stream()->Close();
    ASSERT_TRUE(m_writing->IsClosed());
    EXPECT_EQ("", *m_writing->Written());
}

TEST_F(WriteStreamTest, TakesFewerBytesWhenSwitched) {
    Behaviour behaviour;
    behaviour.maxBytesPerWrite = 2;
    Use(behaviour);
    const auto stream = Stream();
    ULONG count = 0;
    EXPECT_EQ(S_OK, stream->WriteBytes("abc", 3, &count));
    EXPECT_EQ(2U, count);
    stream->Close();
    EXPECT_EQ("ab", *m_writing->Written());
}

TEST_F(WriteStreamTest, ReleasingWithoutCloseIsABreachOfAJobThatSucceeds) {
    Stream();
    EXPECT_EQ(Lines{}, Breaches());
    EXPECT_EQ(Lines{"the write stream of /part was released without Close"}, Context()->LeftOpen());
}

TEST_F(WriteStreamTest, ClosingTwiceIsABreach) {
    const auto stream = Stream();
    stream->Close();
    stream->Close();
    EXPECT_EQ(Lines{"the write stream of /part was closed twice"}, Breaches());
}

TEST_F(WriteStreamTest, WritingAfterCloseIsABreach) {
    const auto stream = Stream();
    stream->Close();
    ULONG count = 99;
    EXPECT_EQ(kCallOutOfOrder, stream->WriteBytes("abc", 3, &count));
    EXPECT_EQ(0U, count);
    EXPECT_EQ(Lines{"WriteBytes of /part came after Close"}, Breaches());
    EXPECT_EQ("", *m_writing->Written());
}

TEST_F(WriteStreamTest, ANullPointerIsABreach) {
    const auto stream = Stream();
    ULONG count = 99;
    EXPECT_EQ(E_POINTER, stream->WriteBytes(nullptr, 1, &count));
    EXPECT_EQ(0U, count);
    EXPECT_EQ(E_POINTER, stream->WriteBytes("a", 1, nullptr));
    stream->Close();
    EXPECT_EQ(Lines(2, "WriteBytes of /part was called with a null pointer"), Breaches());
    EXPECT_EQ("", *m_writing->Written());
}

TEST_F(WriteStreamTest, FailsAsPlannedWithoutWriting) {
    Use(Failing("WriteBytes", STG_E_MEDIUMFULL, "/part"));
    const auto stream = Stream();
    ULONG count = 99;
    EXPECT_EQ(STG_E_MEDIUMFULL, stream->WriteBytes("abc", 3, &count));
    EXPECT_EQ(0U, count);
    stream->Close();
    EXPECT_EQ("", *m_writing->Written());
}

TEST_F(WriteStreamTest, TakesNothingAsPlannedAndTheRestAsEver) {
    Use(Failing("WriteBytes", S_FALSE));
    const auto stream = Stream();
    ULONG count = 99;
    EXPECT_EQ(S_OK, stream->WriteBytes("abc", 3, &count));
    EXPECT_EQ(0U, count);
    EXPECT_EQ(S_OK, stream->WriteBytes("def", 3, &count));
    EXPECT_EQ(3U, count);
    stream->Close();
    EXPECT_EQ("def", *m_writing->Written());
}

TEST_F(WriteStreamTest, CanBeFlushed) {
    const auto stream = Stream();
    ComPtr<IPrintWriteStreamFlush> flush;
    ASSERT_EQ(S_OK, stream.QueryTo(flush));
    EXPECT_EQ(S_OK, flush->FlushData());
    stream->Close();
}

TEST_F(ReadStreamFactoryTest, OneThatWaitsForTheJobRefusesInInitializeFilter) {
    const auto factory = MakeObject<ReadStreamFactory>(Context(), "JobPrintTicket",
                                                       std::make_shared<const std::string>("ticket"),
                                                       Available::AfterInitialize);
    Context()->SetInitializing(true);
    ComPtr<IPrintReadStream> stream;
    EXPECT_EQ(kCallOutOfOrder, factory->GetStream(stream.Put()));
    EXPECT_FALSE(stream);
    Context()->SetInitializing(false);
    EXPECT_EQ(S_OK, factory->GetStream(stream.Put()));
    EXPECT_EQ("ticket", ReadAll(stream.Get()));
    EXPECT_EQ(Lines{"GetStream of JobPrintTicket was called in InitializeFilter, where it never returns"},
              Breaches());
}

}  // namespace
}  // namespace devkit::pipeline
