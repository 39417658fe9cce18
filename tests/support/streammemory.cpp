#include "platform/windows.h"

#include <gtest/gtest.h>
#include <objbase.h>

#include "importseam.h"

// Fails the test in which a stream over memory is made whose memory nobody would free: the leak check sees
// objects, and not the blocks behind them.

namespace {

HRESULT WINAPI CreateCheckedStream(HGLOBAL memory, BOOL deleteOnRelease, IStream** ppStream) {
    EXPECT_TRUE(memory != nullptr || deleteOnRelease) << "the stream's memory would stay behind";
    static auto* const pCreate =
        tests::SystemFunction<decltype(CreateStreamOnHGlobal)>(L"ole32.dll", "CreateStreamOnHGlobal");
    return pCreate(memory, deleteOnRelease, ppStream);
}

}  // namespace

TEST_IMPORT(CreateStreamOnHGlobal, 12, CreateCheckedStream)
