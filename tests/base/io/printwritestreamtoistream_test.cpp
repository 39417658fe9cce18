#include "base/io/printwritestreamtoistream.h"

#include <gtest/gtest.h>

#include "base/io/streamadaptertest.h"
#include "base/logging/exceptions.h"
#include "mockstreams.h"
#include "thrown.h"

namespace base::io {
namespace {

using platform::ComPtr;
using tests::MakeMock;
using tests::MockWriteStream;
using tests::ThrownCode;

class PrintWriteStreamToIStreamTest : public StreamAdapterTest {
  protected:
    ComPtr<MockWriteStream> m_pTarget = MakeMock<MockWriteStream>(m_calls);
};

HRESULT WriterFailure(IPrintWriteStream* pStream) {
    return ThrownCode([&] { const ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(pStream); });
}

TEST_F(PrintWriteStreamToIStreamTest, ANullStreamIsRefused) { EXPECT_EQ(E_POINTER, WriterFailure(nullptr)); }

TEST_F(PrintWriteStreamToIStreamTest, ASystemThatCannotTellTheTimeIsAFailureAtEachOfTheThreeTimes) {
    for (int failing = 1; failing <= 3; ++failing) {
        g_clock = {0, failing, E_ABORT};
        EXPECT_EQ(E_ABORT, WriterFailure(m_pTarget.Get())) << failing;
        EXPECT_EQ(1u, m_pTarget->References());
    }
}

TEST_F(PrintWriteStreamToIStreamTest, HoldsTheStreamAndLetsItGoWithoutClosingIt) {
    ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(m_pTarget.Get());
    EXPECT_EQ(2u, m_pTarget->References());
    ExpectIdentity(*pAdapter.Get());
    pAdapter.Reset();
    EXPECT_EQ(1u, m_pTarget->References());
    EXPECT_EQ(0, m_pTarget->Closes());
}

TEST_F(PrintWriteStreamToIStreamTest, CanNeitherReadNorSeekNorWhatNoAdapterCan) {
    const ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(m_pTarget.Get());
    char byte = 'x';
    ULONG read = 7;
    EXPECT_EQ(E_NOTIMPL, pAdapter->Read(&byte, 1, &read));
    EXPECT_EQ(7u, read);
    EXPECT_EQ(E_NOTIMPL, pAdapter->Seek({}, STREAM_SEEK_CUR, nullptr));
    ExpectNotImplementedInCommon(*pAdapter.Get());
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(PrintWriteStreamToIStreamTest, WriteIsOneWriteOfTheStreamAndCountsWhatItTook) {
    const ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(m_pTarget.Get());
    ULONG written = 0;
    EXPECT_EQ(S_OK, pAdapter->Write("abc", 3, &written));
    EXPECT_EQ(3u, written);
    m_pTarget->SetShortWrites(2);
    EXPECT_EQ(S_OK, pAdapter->Write("defg", 4, &written));
    EXPECT_EQ(2u, written);
    EXPECT_EQ("abcde", m_pTarget->Bytes());
    EXPECT_EQ((Calls{"WriteBytes 3", "WriteBytes 4"}), m_calls.Calls());
    std::wstring name;
    const STATSTG record = StatOf(*pAdapter.Get(), &name);
    EXPECT_EQ(L"PrintWriteStream", name);
    EXPECT_EQ(std::vector<std::size_t>{(name.size() + 1) * 8}, g_allocator.sizes);
    EXPECT_EQ(5u, record.cbSize.QuadPart);
    ExpectSameDescription(record);
    EXPECT_EQ(5u, Ticks(record.mtime));
    EXPECT_EQ(2u, Ticks(record.ctime));
    EXPECT_EQ(3u, Ticks(record.atime));
}

TEST_F(PrintWriteStreamToIStreamTest, WriteWithANullBufferOrCountReturnsEPointerEvenWhenCbIs0) {
    const ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(m_pTarget.Get());
    const std::uint64_t before = g_clock.now;
    ULONG written = 7;
    EXPECT_EQ(E_POINTER, pAdapter->Write(nullptr, 0, &written));
    EXPECT_EQ(E_POINTER, pAdapter->Write(nullptr, 1, &written));
    EXPECT_EQ(E_POINTER, pAdapter->Write("x", 0, nullptr));
    EXPECT_EQ(E_POINTER, pAdapter->Write("x", 1, nullptr));
    EXPECT_EQ(7u, written);
    EXPECT_EQ(before, g_clock.now);
    EXPECT_EQ(Calls{}, m_calls.Calls());
}

TEST_F(PrintWriteStreamToIStreamTest, WriteOfNothingLeavesTheCountAloneAndSetsTheModificationTime) {
    const ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(m_pTarget.Get());
    ULONG written = 7;
    EXPECT_EQ(S_OK, pAdapter->Write("x", 0, &written));
    EXPECT_EQ(7u, written);
    EXPECT_EQ(Calls{}, m_calls.Calls());
    EXPECT_EQ(4u, Ticks(StatOf(*pAdapter.Get()).mtime));
}

TEST_F(PrintWriteStreamToIStreamTest, AFailingWriteIsReturnedAndCountsNothing) {
    const ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(m_pTarget.Get());
    m_calls.Fail("WriteBytes 3", STG_E_MEDIUMFULL);
    ULONG written = 7;
    EXPECT_EQ(STG_E_MEDIUMFULL, pAdapter->Write("abc", 3, &written));
    EXPECT_EQ(0u, written);
    EXPECT_EQ(0u, StatOf(*pAdapter.Get()).cbSize.QuadPart);
}

TEST_F(PrintWriteStreamToIStreamTest, AFailingWriteCountsWhatWasWrittenBeforeItFailed) {
    const ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(m_pTarget.Get());
    m_pTarget->SetTakenByFailure(2);
    m_calls.Fail("WriteBytes 3", STG_E_MEDIUMFULL);
    ULONG written = 0;
    EXPECT_EQ(STG_E_MEDIUMFULL, pAdapter->Write("abc", 3, &written));
    EXPECT_EQ(2u, written);
    EXPECT_EQ(2u, StatOf(*pAdapter.Get()).cbSize.QuadPart);
}

TEST_F(PrintWriteStreamToIStreamTest, WriteReturnsTheFailureToTellTheTimeAndWritesNothing) {
    const ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(m_pTarget.Get());
    g_clock.callsUntilFailure = 1;
    g_clock.failure = E_ABORT;
    ULONG written = 7;
    EXPECT_EQ(E_ABORT, pAdapter->Write("abc", 3, &written));
    EXPECT_EQ("", m_pTarget->Bytes());
}

TEST_F(PrintWriteStreamToIStreamTest, StatWithAnyFlagReturnsNoNameAndAllocatesNothing) {
    const ComPtr<IStream> pAdapter = CreatePrintWriteStreamToIStream(m_pTarget.Get());
    ExpectNoName(*pAdapter.Get());
    EXPECT_EQ(E_POINTER, pAdapter->Stat(nullptr, STATFLAG_NONAME));
}

}  // namespace
}  // namespace base::io
