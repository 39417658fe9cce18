#include "failingallocation.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include <cstdlib>
#include <new>
#include <utility>

#include "importseam.h"

namespace {

// How many more allocations of this thread succeed before one fails; none fails while it is negative.
thread_local long t_allocationsLeft = -1;
thread_local bool t_hasFailed = false;

// What to call before an allocation of so many bytes; null when that has been done.
thread_local std::size_t t_leastToCall = 0;
thread_local const std::function<void()>* t_pCall = nullptr;

void* Allocate(std::size_t size) noexcept {
    if (t_pCall != nullptr && size >= t_leastToCall) (*std::exchange(t_pCall, nullptr))();
    if (t_allocationsLeft == 0 && !t_hasFailed) {
        t_hasFailed = true;
        return nullptr;
    }
    if (t_allocationsLeft > 0) --t_allocationsLeft;
    return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* pBlock = Allocate(size)) return pBlock;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* pBlock) noexcept { std::free(pBlock); }
void operator delete(void* pBlock, std::size_t) noexcept { std::free(pBlock); }

namespace tests {
namespace {

bool g_areTextsCounted = false;
std::size_t g_texts = 0;
std::size_t g_failingText = 0;
HRESULT g_streamFailure = S_OK;

BSTR WINAPI AllocateText(const OLECHAR* pText, UINT length) {
    static auto* const pSystem =
        SystemFunction<decltype(SysAllocStringLen)>(L"oleaut32.dll", "SysAllocStringLen");
    if (g_areTextsCounted && ++g_texts == g_failingText) return nullptr;
    return pSystem(pText, length);
}

HRESULT WINAPI CreateCheckedStream(HGLOBAL memory, BOOL deleteOnRelease, IStream** ppStream) {
    static auto* const pSystem =
        SystemFunction<decltype(CreateStreamOnHGlobal)>(L"ole32.dll", "CreateStreamOnHGlobal");
    if (FAILED(g_streamFailure)) return g_streamFailure;
    EXPECT_TRUE(memory != nullptr || deleteOnRelease) << "the stream's memory would stay behind";
    return pSystem(memory, deleteOnRelease, ppStream);
}

}  // namespace

FailingAllocation::FailingAllocation(long nth) noexcept {
    t_hasFailed = false;
    t_allocationsLeft = nth - 1;
}

FailingAllocation::~FailingAllocation() { t_allocationsLeft = -1; }

bool FailingAllocation::HasFailed() const noexcept { return t_hasFailed; }

BeforeAllocation::BeforeAllocation(std::size_t least, std::function<void()> call) : m_call(std::move(call)) {
    t_leastToCall = least;
    t_pCall = &m_call;
}

BeforeAllocation::~BeforeAllocation() { t_pCall = nullptr; }

bool BeforeAllocation::WasCalled() const noexcept { return t_pCall == nullptr; }

FailingText::FailingText(std::size_t nth) noexcept {
    g_texts = 0;
    g_failingText = nth;
    g_areTextsCounted = true;
}

FailingText::~FailingText() { g_areTextsCounted = false; }

bool FailingText::HasFailed() const noexcept { return g_failingText != 0 && g_texts >= g_failingText; }

FailingStreamMemory::FailingStreamMemory(HRESULT code) noexcept { g_streamFailure = code; }

FailingStreamMemory::~FailingStreamMemory() { g_streamFailure = S_OK; }

}  // namespace tests

TEST_IMPORT(SysAllocStringLen, 8, tests::AllocateText)
TEST_IMPORT(CreateStreamOnHGlobal, 12, tests::CreateCheckedStream)
