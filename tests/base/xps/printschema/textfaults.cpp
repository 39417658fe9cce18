#include "textfaults.h"

#include "importseam.h"

namespace tests {
namespace {

bool s_isCounting = false;
std::size_t s_texts = 0;
std::size_t s_failing = 0;

BSTR WINAPI TestSysAllocStringLen(const OLECHAR* pText, UINT length) {
    static auto* const pOriginal =
        SystemFunction<decltype(SysAllocStringLen)>(L"oleaut32.dll", "SysAllocStringLen");
    if (s_isCounting && ++s_texts == s_failing) return nullptr;
    return pOriginal(pText, length);
}

}  // namespace

TextFaults::TextFaults(std::size_t nth) noexcept {
    s_texts = 0;
    s_failing = nth;
    s_isCounting = true;
}

TextFaults::~TextFaults() { s_isCounting = false; }

bool TextFaults::HasFailed() const noexcept { return s_failing != 0 && s_texts >= s_failing; }

}  // namespace tests

TEST_IMPORT(SysAllocStringLen, 8, tests::TestSysAllocStringLen)
