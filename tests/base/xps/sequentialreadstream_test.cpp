#include "base/xps/sequentialreadstream.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "base/xps/memorystreams.h"

namespace base::xps {
namespace {

using platform::ComPtr;

class SequentialReadStreamTest : public testing::Test {
  protected:
    explicit SequentialReadStreamTest() : m_source("0123456789") {
        m_stream = ComPtr<SequentialReadStream>::Adopt(
            new SequentialReadStream(ComPtr<IPrintReadStream>(&m_source)));
    }
    void TearDown() override {
        m_stream.Reset();
        EXPECT_EQ(1u, m_source.References());
    }

    HRESULT Read(ULONG count) {
        m_buffer.fill('.');
        m_count = 0xDEAD;
        return m_stream->Read(m_buffer.data(), count, &m_count);
    }
    [[nodiscard]] std::string Got() const { return std::string(m_buffer.data(), m_count); }

    MemoryReadStream m_source;
    ComPtr<SequentialReadStream> m_stream;
    std::array<char, 64> m_buffer{};
    ULONG m_count = 0;
};

TEST_F(SequentialReadStreamTest, AFullReadIsSOk) {
    EXPECT_EQ(S_OK, Read(4));
    EXPECT_EQ("0123", Got());
    EXPECT_EQ(S_OK, Read(6));
    EXPECT_EQ("456789", Got());
}

TEST_F(SequentialReadStreamTest, AReadPastTheEndIsSFalse) {
    EXPECT_EQ(S_FALSE, Read(11));
    EXPECT_EQ("0123456789", Got());
    EXPECT_EQ('.', m_buffer[10]);
}

TEST_F(SequentialReadStreamTest, AStreamThatGivesNothingForEverIsAFailure) {
    m_source.mostPerRead = 0;
    EXPECT_EQ(STG_E_READFAULT, Read(4));
    EXPECT_EQ("", Got());
    EXPECT_EQ(std::size_t{SequentialReadStream::kMostEmptyAnswers}, m_source.reads);
}

TEST_F(SequentialReadStreamTest, OnlyEmptyAnswersInARowCount) {
    m_source.emptyAnswersBetween = SequentialReadStream::kMostEmptyAnswers - 1;
    m_source.mostPerRead = 3;
    EXPECT_EQ(S_OK, Read(10));
    EXPECT_EQ("0123456789", Got());
}

TEST_F(SequentialReadStreamTest, AfterTheEndTheSourceIsNotAskedAgain) {
    EXPECT_EQ(S_OK, Read(10));
    const std::size_t reads = m_source.reads;
    EXPECT_EQ(S_FALSE, Read(5));
    EXPECT_EQ("", Got());
    EXPECT_EQ(reads, m_source.reads);
}

TEST_F(SequentialReadStreamTest, TheEndMayComeAloneAfterTheData) {
    m_source.endComesWithData = false;
    EXPECT_EQ(S_OK, Read(10));
    EXPECT_EQ("0123456789", Got());
    EXPECT_EQ(S_FALSE, Read(10));
    EXPECT_EQ("", Got());
    EXPECT_EQ(2u, m_source.reads);
    EXPECT_EQ(S_FALSE, Read(10));
    EXPECT_EQ(2u, m_source.reads);
}

TEST_F(SequentialReadStreamTest, ShortReadsAreCompleted) {
    m_source.mostPerRead = 3;
    EXPECT_EQ(S_OK, Read(8));
    EXPECT_EQ("01234567", Got());
    EXPECT_EQ(3u, m_source.reads);
    EXPECT_EQ(S_FALSE, Read(8));
    EXPECT_EQ("89", Got());
}

TEST_F(SequentialReadStreamTest, AReadOfNothingIsSOkAndAsksForNothing) {
    EXPECT_EQ(S_OK, Read(0));
    EXPECT_EQ(0u, m_count);
    EXPECT_EQ(S_OK, m_stream->Read(nullptr, 0, &m_count));
    EXPECT_EQ(0u, m_source.reads);
}

TEST_F(SequentialReadStreamTest, ANullCountPointerIsAnInvalidArgument) {
    EXPECT_EQ(E_INVALIDARG, m_stream->Read(m_buffer.data(), 4, nullptr));
    EXPECT_EQ(E_INVALIDARG, m_stream->Read(m_buffer.data(), 0, nullptr));
    EXPECT_EQ(0u, m_source.reads);
}

TEST_F(SequentialReadStreamTest, ANullBufferIsAnInvalidArgument) {
    m_count = 0xDEAD;
    EXPECT_EQ(E_INVALIDARG, m_stream->Read(nullptr, 4, &m_count));
    EXPECT_EQ(0u, m_count);
}

TEST_F(SequentialReadStreamTest, AFailureIsReturnedWithWhatWasReadBeforeIt) {
    m_source.mostPerRead = 3;
    m_source.failingRead = 3;
    EXPECT_EQ(STG_E_READFAULT, Read(10));
    EXPECT_EQ("012345", Got());
}

TEST_F(SequentialReadStreamTest, AFailureIsNotTheEnd) {
    m_source.failingRead = 1;
    EXPECT_EQ(STG_E_READFAULT, Read(4));
    EXPECT_EQ(S_OK, Read(4));
    EXPECT_EQ("0123", Got());
}

TEST_F(SequentialReadStreamTest, WriteIsNotImplemented) {
    ULONG written = 0;
    EXPECT_EQ(E_NOTIMPL, m_stream->Write("a", 1, &written));
}

TEST_F(SequentialReadStreamTest, AnswersIUnknownAndISequentialStreamOnly) {
    ComPtr<IUnknown> unknown;
    ComPtr<ISequentialStream> sequential;
    ComPtr<IStream> stream;
    EXPECT_EQ(S_OK, m_stream.QueryTo(unknown));
    EXPECT_EQ(S_OK, m_stream.QueryTo(sequential));
    EXPECT_EQ(static_cast<IUnknown*>(sequential.Get()), unknown.Get());
    void* none = this;
    EXPECT_EQ(E_NOINTERFACE, m_stream->QueryInterface(__uuidof(IStream), &none));
    EXPECT_EQ(nullptr, none);
    EXPECT_EQ(E_POINTER, m_stream->QueryInterface(__uuidof(IUnknown), nullptr));
}

TEST_F(SequentialReadStreamTest, CountsItsReferencesFromOne) {
    EXPECT_EQ(2u, m_stream->AddRef());
    EXPECT_EQ(3u, m_stream->AddRef());
    EXPECT_EQ(2u, m_stream->Release());
    EXPECT_EQ(1u, m_stream->Release());
    EXPECT_EQ(2u, m_source.References());
}

TEST_F(SequentialReadStreamTest, TheReferenceCountIsAtomic) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int round = 0; round < 20000; ++round) {
                m_stream->AddRef();
                m_stream->Release();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(2u, m_stream->AddRef());
    EXPECT_EQ(1u, m_stream->Release());
}

}  // namespace
}  // namespace base::xps
