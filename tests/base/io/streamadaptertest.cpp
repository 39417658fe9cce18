#include "base/io/streamadaptertest.h"

#include "importseam.h"
#include "mockobject.h"

namespace {

HRESULT WINAPI TestCoFileTimeNow(FILETIME* pTime) {
    base::io::TestClock& clock = base::io::g_clock;
    if (clock.callsUntilFailure != 0 && --clock.callsUntilFailure == 0) return clock.failure;
    ++clock.now;
    *pTime = {static_cast<DWORD>(clock.now), static_cast<DWORD>(clock.now >> 32)};
    return S_OK;
}

void* WINAPI TestCoTaskMemAlloc(SIZE_T size) {
    base::io::g_allocator.sizes.push_back(size);
    if (base::io::g_allocator.fails) return nullptr;
    static const auto pSystem = tests::SystemFunction<void * WINAPI(SIZE_T)>(L"ole32.dll", "CoTaskMemAlloc");
    return pSystem(size);
}

}  // namespace

TEST_IMPORT(CoFileTimeNow, 4, TestCoFileTimeNow)
TEST_IMPORT(CoTaskMemAlloc, 4, TestCoTaskMemAlloc)

namespace base::io {

TestClock g_clock;
TestAllocator g_allocator;

std::uint64_t Ticks(const FILETIME& time) {
    return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

void StreamAdapterTest::ExpectNotImplementedInCommon(IStream& stream) {
    const ULARGE_INTEGER zero = {};
    EXPECT_EQ(E_NOTIMPL, stream.SetSize(zero));
    EXPECT_EQ(E_NOTIMPL, stream.CopyTo(nullptr, zero, nullptr, nullptr));
    EXPECT_EQ(E_NOTIMPL, stream.Commit(STGC_DEFAULT));
    EXPECT_EQ(E_NOTIMPL, stream.Revert());
    EXPECT_EQ(E_NOTIMPL, stream.LockRegion(zero, zero, LOCK_WRITE));
    EXPECT_EQ(E_NOTIMPL, stream.UnlockRegion(zero, zero, LOCK_WRITE));
    IStream* pClone = &stream;
    EXPECT_EQ(E_NOTIMPL, stream.Clone(&pClone));
    EXPECT_EQ(nullptr, pClone);
    EXPECT_EQ(E_NOTIMPL, stream.Clone(nullptr));
}

void StreamAdapterTest::ExpectIdentity(IStream& stream) {
    platform::ComPtr<IUnknown> pUnknown;
    EXPECT_EQ(S_OK, stream.QueryInterface(IID_IUnknown, pUnknown.PutVoid()));
    EXPECT_EQ(&stream, pUnknown.Get());
    platform::ComPtr<IStream> pStream;
    EXPECT_EQ(S_OK, stream.QueryInterface(IID_IStream, pStream.PutVoid()));
    EXPECT_EQ(&stream, pStream.Get());
    EXPECT_EQ(4u, stream.AddRef());
    EXPECT_EQ(3u, stream.Release());
    void* pOther = &stream;
    EXPECT_EQ(E_NOINTERFACE, stream.QueryInterface(IID_ISequentialStream, &pOther));
    EXPECT_EQ(nullptr, pOther);
    EXPECT_EQ(E_POINTER, stream.QueryInterface(IID_IUnknown, nullptr));
}

STATSTG StreamAdapterTest::StatOf(IStream& stream, std::wstring* pName) {
    STATSTG record;
    FillMemory(&record, sizeof(record), 0xCC);
    EXPECT_EQ(S_OK, stream.Stat(&record, STATFLAG_DEFAULT));
    if (pName != nullptr) *pName = record.pwcsName;
    CoTaskMemFree(record.pwcsName);
    return record;
}

void StreamAdapterTest::ExpectSameDescription(const STATSTG& record) {
    EXPECT_EQ(static_cast<DWORD>(STGTY_STREAM), record.type);
    EXPECT_EQ(0x20u, record.grfMode);
    EXPECT_EQ(1u, record.grfLocksSupported);
    EXPECT_EQ(GUID{}, record.clsid);
    EXPECT_EQ(0u, record.grfStateBits);
}

void StreamAdapterTest::ExpectNoName(IStream& stream) {
    STATSTG record;
    for (const DWORD flag : {DWORD{STATFLAG_NONAME}, DWORD{STATFLAG_NOOPEN}, DWORD{3}, DWORD{0x80000000}}) {
        FillMemory(&record, sizeof(record), 0xCC);
        EXPECT_EQ(S_OK, stream.Stat(&record, flag)) << flag;
        EXPECT_EQ(nullptr, record.pwcsName) << flag;
        ExpectSameDescription(record);
        EXPECT_EQ(std::vector<std::size_t>{}, g_allocator.sizes) << flag;
    }

    g_allocator.fails = true;
    FillMemory(&record, sizeof(record), 0xCC);
    EXPECT_EQ(E_OUTOFMEMORY, stream.Stat(&record, STATFLAG_DEFAULT));
    EXPECT_EQ(nullptr, record.pwcsName);
    g_allocator.fails = false;
}

}  // namespace base::io
