#include "devkit/pipeline/writestream.h"

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class WriteStreamTest : public PipelineTest {
  protected:
    ComPtr<WriteStream> Stream() { return MakeObject<WriteStream>(Context(), "/part", m_writing); }

    const std::shared_ptr<Writing> m_writing = std::make_shared<Writing>();
};

TEST_F(WriteStreamTest, KeepsTheBytesWhenClosed) {
    const auto stream = Stream();
    ULONG count = 0;
    EXPECT_EQ(stream->WriteBytes("abc", 3, &count), S_OK);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(stream->WriteBytes("de", 2, &count), S_OK);
    EXPECT_EQ(m_writing->Written(), nullptr);
    EXPECT_FALSE(m_writing->IsClosed());
    stream->Close();
    ASSERT_TRUE(m_writing->IsClosed());
    EXPECT_EQ(*m_writing->Written(), "abcde");
    EXPECT_EQ(Breaches(), Lines{});
}

TEST_F(WriteStreamTest, ClosedAtOnceItIsEmptyNotAbsent) {
    Stream()->Close();
    ASSERT_TRUE(m_writing->IsClosed());
    EXPECT_EQ(*m_writing->Written(), "");
}

TEST_F(WriteStreamTest, TakesFewerBytesWhenSwitched) {
    Switches switches;
    switches.maxBytesPerWrite = 2;
    Use(switches);
    const auto stream = Stream();
    ULONG count = 0;
    EXPECT_EQ(stream->WriteBytes("abc", 3, &count), S_OK);
    EXPECT_EQ(count, 2U);
    stream->Close();
    EXPECT_EQ(*m_writing->Written(), "ab");
}

TEST_F(WriteStreamTest, ReleasingWithoutCloseIsABreachOfAJobThatSucceeds) {
    Stream();
    EXPECT_EQ(Breaches(), Lines{});
    EXPECT_EQ(Context()->LeftOpen(), Lines{"the write stream of /part was released without Close"});
}

TEST_F(WriteStreamTest, ClosingTwiceIsABreach) {
    const auto stream = Stream();
    stream->Close();
    stream->Close();
    EXPECT_EQ(Breaches(), Lines{"the write stream of /part was closed twice"});
}

TEST_F(WriteStreamTest, WritingAfterCloseIsABreach) {
    const auto stream = Stream();
    stream->Close();
    ULONG count = 99;
    EXPECT_EQ(stream->WriteBytes("abc", 3, &count), CallOutOfOrder);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(Breaches(), Lines{"WriteBytes of /part came after Close"});
    EXPECT_EQ(*m_writing->Written(), "");
}

TEST_F(WriteStreamTest, ANullPointerIsABreach) {
    const auto stream = Stream();
    ULONG count = 99;
    EXPECT_EQ(stream->WriteBytes(nullptr, 1, &count), E_POINTER);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(stream->WriteBytes("a", 1, nullptr), E_POINTER);
    stream->Close();
    EXPECT_EQ(Breaches(), Lines(2, "WriteBytes of /part was called with a null pointer"));
    EXPECT_EQ(*m_writing->Written(), "");
}

TEST_F(WriteStreamTest, FailsAsPlannedWithoutWriting) {
    Use(Failing("WriteBytes", STG_E_MEDIUMFULL, "/part"));
    const auto stream = Stream();
    ULONG count = 99;
    EXPECT_EQ(stream->WriteBytes("abc", 3, &count), STG_E_MEDIUMFULL);
    EXPECT_EQ(count, 0U);
    stream->Close();
    EXPECT_EQ(*m_writing->Written(), "");
}

TEST_F(WriteStreamTest, CanBeFlushed) {
    const auto stream = Stream();
    ComPtr<IPrintWriteStreamFlush> flush;
    ASSERT_EQ(stream.QueryTo(flush), S_OK);
    EXPECT_EQ(flush->FlushData(), S_OK);
    stream->Close();
}

}  // namespace
}  // namespace devkit::pipeline
