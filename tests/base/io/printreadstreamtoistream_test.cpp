#include "base/io/printreadstreamtoistream.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

#include "base/io/streamadaptertest.h"
#include "base/logging/exceptions.h"
#include "mockstreams.h"
#include "thrown.h"

namespace base::io {
namespace {

using platform::ComPtr;
using tests::MakeMock;
using tests::MockReadStream;
using tests::ThrownCode;

class PrintReadStreamToIStreamTest : public StreamAdapterTest {
  protected:
    ComPtr<IStream> Adapt(std::string bytes) {
        m_pSource = MakeMock<MockReadStream>(m_calls, std::move(bytes));
        return CreatePrintReadStreamToIStream(m_pSource.Get());
    }

    ComPtr<MockReadStream> m_pSource;
    std::array<char, 16> m_buffer{};
};

HRESULT ReaderFailure(IPrintReadStream* pStream) {
    return ThrownCode([&] { const ComPtr<IStream> pAdapter = CreatePrintReadStreamToIStream(pStream); });
}

TEST_F(PrintReadStreamToIStreamTest, ANullStreamIsRefused) { EXPECT_EQ(E_POINTER, ReaderFailure(nullptr)); }

TEST_F(PrintReadStreamToIStreamTest, ASystemThatCannotTellTheTimeIsAFailureAtEachOfTheThreeTimes) {
    const auto pSource = MakeMock<MockReadStream>(m_calls, "");
    for (int failing = 1; failing <= 3; ++failing) {
        g_clock = {0, failing, E_ABORT};
        EXPECT_EQ(E_ABORT, ReaderFailure(pSource.Get())) << failing;
        EXPECT_EQ(1u, pSource->References());
    }
    g_clock = {0, 4, E_ABORT};
    EXPECT_EQ(S_OK, ReaderFailure(pSource.Get()));
}

TEST_F(PrintReadStreamToIStreamTest, HoldsTheStreamAndLetsItGo) {
    ComPtr<IStream> pAdapter = Adapt("x");
    EXPECT_EQ(2u, m_pSource->References());
    ExpectIdentity(*pAdapter.Get());
    pAdapter.Reset();
    EXPECT_EQ(1u, m_pSource->References());
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(PrintReadStreamToIStreamTest, CanNeitherWriteNorWhatNoAdapterCan) {
    const ComPtr<IStream> pAdapter = Adapt("x");
    ULONG written = 7;
    EXPECT_EQ(E_NOTIMPL, pAdapter->Write("x", 1, &written));
    EXPECT_EQ(7u, written);
    ExpectNotImplementedInCommon(*pAdapter.Get());
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(PrintReadStreamToIStreamTest, ReadIsOneReadOfTheStream) {
    const ComPtr<IStream> pAdapter = Adapt("abcdef");
    m_pSource->SetShortReads(4);
    ULONG read = 0;
    EXPECT_EQ(S_OK, pAdapter->Read(m_buffer.data(), 10, &read));
    EXPECT_EQ("abcd", std::string_view(m_buffer.data(), read));
    EXPECT_EQ(S_OK, pAdapter->Read(m_buffer.data(), 10, &read));
    EXPECT_EQ("ef", std::string_view(m_buffer.data(), read));
    EXPECT_EQ(S_OK, pAdapter->Read(m_buffer.data(), 10, &read));
    EXPECT_EQ(0u, read);
    EXPECT_EQ((Calls{"ReadBytes 10", "ReadBytes 10", "ReadBytes 10"}), m_calls.Calls());
}

TEST_F(PrintReadStreamToIStreamTest, ReadWithANullCountPointerReturnsEPointerEvenWhenCbIs0) {
    const ComPtr<IStream> pAdapter = Adapt("abc");
    const std::uint64_t before = g_clock.now;
    EXPECT_EQ(E_POINTER, pAdapter->Read(m_buffer.data(), 0, nullptr));
    EXPECT_EQ(E_POINTER, pAdapter->Read(m_buffer.data(), 1, nullptr));
    EXPECT_EQ(before, g_clock.now);
}

TEST_F(PrintReadStreamToIStreamTest, ReadWithANullBufferReturnsEPointer) {
    const ComPtr<IStream> pAdapter = Adapt("abc");
    ULONG read = 7;
    EXPECT_EQ(E_POINTER, pAdapter->Read(nullptr, 0, &read));
    EXPECT_EQ(E_POINTER, pAdapter->Read(nullptr, 1, &read));
    EXPECT_EQ(7u, read);
}

TEST_F(PrintReadStreamToIStreamTest, ReadOfNothingLeavesTheCountAloneAndSetsTheAccessTime) {
    const ComPtr<IStream> pAdapter = Adapt("abc");
    ULONG read = 7;
    EXPECT_EQ(S_OK, pAdapter->Read(m_buffer.data(), 0, &read));
    EXPECT_EQ(7u, read);
    EXPECT_EQ(Calls{}, m_calls.Calls());
    const STATSTG record = StatOf(*pAdapter.Get());
    EXPECT_EQ(1u, Ticks(record.mtime));
    EXPECT_EQ(2u, Ticks(record.ctime));
    EXPECT_EQ(4u, Ticks(record.atime));
}

TEST_F(PrintReadStreamToIStreamTest, ReadReturnsWhatTheStreamReturns) {
    const ComPtr<IStream> pAdapter = Adapt("abc");
    m_calls.Fail("ReadBytes 2", STG_E_READFAULT);
    ULONG read = 7;
    EXPECT_EQ(STG_E_READFAULT, pAdapter->Read(m_buffer.data(), 2, &read));
    EXPECT_EQ(0u, read);
    m_pSource->SetGivenByFailure(1);
    m_calls.Fail("ReadBytes 2", STG_E_READFAULT);
    EXPECT_EQ(STG_E_READFAULT, pAdapter->Read(m_buffer.data(), 2, &read));
    EXPECT_EQ(1u, read);
}

TEST_F(PrintReadStreamToIStreamTest, ReadReturnsTheFailureToTellTheTimeAndReadsNothing) {
    const ComPtr<IStream> pAdapter = Adapt("abc");
    g_clock.callsUntilFailure = 1;
    g_clock.failure = E_ABORT;
    ULONG read = 7;
    EXPECT_EQ(E_ABORT, pAdapter->Read(m_buffer.data(), 2, &read));
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(PrintReadStreamToIStreamTest, SeekForwardsMoveAndOrigin) {
    const ComPtr<IStream> pAdapter = Adapt("abcdef");
    ULARGE_INTEGER position = {};
    LARGE_INTEGER move = {};
    move.QuadPart = -2;
    EXPECT_EQ(S_OK, pAdapter->Seek(move, STREAM_SEEK_END, &position));
    EXPECT_EQ(4u, position.QuadPart);
    move.QuadPart = 1;
    EXPECT_EQ(S_OK, pAdapter->Seek(move, STREAM_SEEK_CUR, nullptr));
    EXPECT_EQ((Calls{"Seek -2 2", "Seek 1 1"}), m_calls.Calls());
    ULONG read = 0;
    EXPECT_EQ(S_OK, pAdapter->Read(m_buffer.data(), 9, &read));
    EXPECT_EQ("f", std::string_view(m_buffer.data(), read));
}

TEST_F(PrintReadStreamToIStreamTest, AFailingSeekLeavesThePositionAlone) {
    const ComPtr<IStream> pAdapter = Adapt("abcdef");
    ULARGE_INTEGER position = {};
    position.QuadPart = 77;
    LARGE_INTEGER move = {};
    move.QuadPart = -1;
    EXPECT_EQ(STG_E_INVALIDFUNCTION, pAdapter->Seek(move, STREAM_SEEK_SET, &position));
    EXPECT_EQ(77u, position.QuadPart);
}

TEST_F(PrintReadStreamToIStreamTest, StatTellsTheSizeAndKeepsThePosition) {
    const ComPtr<IStream> pAdapter = Adapt("abcdef");
    ULONG read = 0;
    EXPECT_EQ(S_OK, pAdapter->Read(m_buffer.data(), 2, &read));
    m_calls.Clear();
    std::wstring name;
    const STATSTG record = StatOf(*pAdapter.Get(), &name);
    EXPECT_EQ(L"PrintReadStream", name);
    EXPECT_EQ(std::vector<std::size_t>{(name.size() + 1) * 8}, g_allocator.sizes);
    EXPECT_EQ(6u, record.cbSize.QuadPart);
    ExpectSameDescription(record);
    EXPECT_EQ((Calls{"Seek 0 1", "Seek 0 2", "Seek 2 0"}), m_calls.Calls());
    EXPECT_EQ(6u, StatOf(*pAdapter.Get()).cbSize.QuadPart);
    EXPECT_EQ(3u, m_calls.Calls().size());
}

TEST_F(PrintReadStreamToIStreamTest, StatOverAnEmptyStreamRecomputesTheSizeOnEveryCall) {
    const ComPtr<IStream> pAdapter = Adapt("");
    EXPECT_EQ(0u, StatOf(*pAdapter.Get()).cbSize.QuadPart);
    EXPECT_EQ(0u, StatOf(*pAdapter.Get()).cbSize.QuadPart);
    EXPECT_EQ((Calls{"Seek 0 1", "Seek 0 2", "Seek 0 0", "Seek 0 1", "Seek 0 2", "Seek 0 0"}),
              m_calls.Calls());
}

TEST_F(PrintReadStreamToIStreamTest, StatReturnsTheCodeOfEachFailingSeekAndKeepsNoSize) {
    const ComPtr<IStream> pAdapter = Adapt("abc");
    for (std::size_t failing = 1; failing <= 3; ++failing) {
        m_calls.FailNth(failing, STG_E_SEEKERROR);
        STATSTG record;
        FillMemory(&record, sizeof(record), 0xCC);
        EXPECT_EQ(STG_E_SEEKERROR, pAdapter->Stat(&record, STATFLAG_DEFAULT)) << failing;
        EXPECT_EQ(nullptr, record.pwcsName);
        EXPECT_TRUE(m_calls.HasFailed());
    }
    m_calls.Clear();
    EXPECT_EQ(3u, StatOf(*pAdapter.Get()).cbSize.QuadPart);
    EXPECT_EQ(3u, m_calls.Calls().size());
}

TEST_F(PrintReadStreamToIStreamTest, StatWithAnyFlagReturnsNoNameAndAllocatesNothing) {
    const ComPtr<IStream> pAdapter = Adapt("abc");
    ExpectNoName(*pAdapter.Get());
}

TEST_F(PrintReadStreamToIStreamTest, StatWithoutARecordReturnsEPointer) {
    EXPECT_EQ(E_POINTER, Adapt("abc")->Stat(nullptr, STATFLAG_DEFAULT));
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

}  // namespace
}  // namespace base::io
