#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "callrecorder.h"
#include "platform/comptr.h"

namespace base::io {

// CoFileTimeNow as the tests of this folder see it: it counts up from 1, and the nth call can be made to
// fail.
struct TestClock {
    std::uint64_t now = 0;
    int callsUntilFailure = 0;
    HRESULT failure = E_FAIL;
};
extern TestClock g_clock;

// CoTaskMemAlloc as the tests of this folder see it.
struct TestAllocator {
    std::vector<std::size_t> sizes;
    bool fails = false;
};
extern TestAllocator g_allocator;

[[nodiscard]] std::uint64_t Ticks(const FILETIME& time);

class StreamAdapterTest : public testing::Test {
  protected:
    StreamAdapterTest() {
        g_clock = {};
        g_allocator = {};
    }
    ~StreamAdapterTest() override { g_allocator = {}; }

    // What the adapters refuse alike, and their identity.
    static void ExpectNotImplementedInCommon(IStream& stream);
    static void ExpectIdentity(IStream& stream);
    // A Stat with no flag, its name moved to pName.
    static STATSTG StatOf(IStream& stream, std::wstring* pName = nullptr);
    static void ExpectSameDescription(const STATSTG& record);
    // Any flag but 0, and an allocation that fails.
    static void ExpectNoName(IStream& stream);

    tests::CallRecorder m_calls;
};

using Calls = std::vector<std::string>;

}  // namespace base::io
