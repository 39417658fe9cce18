#include "textfaults.h"

#include "importseam.h"

namespace tests {
namespace {

bool g_isCounting = false;
std::size_t g_texts = 0;
std::size_t g_failing = 0;

BSTR WINAPI TestSysAllocStringLen(const OLECHAR* pText, UINT length) {
    static auto* const pOriginal =
        SystemFunction<decltype(SysAllocStringLen)>(L"oleaut32.dll", "SysAllocStringLen");
    if (g_isCounting && ++g_texts == g_failing) return nullptr;
    return pOriginal(pText, length);
}

}  // namespace

TextFaults::TextFaults(std::size_t nth) noexcept {
    g_texts = 0;
    g_failing = nth;
    g_isCounting = true;
}

TextFaults::~TextFaults() { g_isCounting = false; }

bool TextFaults::HasFailed() const noexcept { return g_failing != 0 && g_texts >= g_failing; }

}  // namespace tests

TEST_IMPORT(SysAllocStringLen, 8, tests::TestSysAllocStringLen)
