#include "streammemory.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include "importseam.h"

namespace tests {
namespace {

HRESULT g_failure = S_OK;

HRESULT WINAPI CreateCheckedStream(HGLOBAL memory, BOOL deleteOnRelease, IStream** ppStream) {
    if (FAILED(g_failure)) return g_failure;
    EXPECT_TRUE(memory != nullptr || deleteOnRelease) << "the stream's memory would stay behind";
    static auto* const pCreate =
        SystemFunction<decltype(CreateStreamOnHGlobal)>(L"ole32.dll", "CreateStreamOnHGlobal");
    return pCreate(memory, deleteOnRelease, ppStream);
}

}  // namespace

FailingStreamMemory::FailingStreamMemory(HRESULT code) noexcept { g_failure = code; }

FailingStreamMemory::~FailingStreamMemory() { g_failure = S_OK; }

}  // namespace tests

TEST_IMPORT(CreateStreamOnHGlobal, 12, tests::CreateCheckedStream)
