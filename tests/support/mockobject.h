#pragma once

#include "platform/windows.h"

#include <gtest/gtest.h>

#include <atomic>
#include <utility>

#include "platform/comobject.h"
#include "platform/comptr.h"

namespace tests {

// How many mock objects live in the process; the leak check of the test program compares it before and after
// each test.
inline std::atomic<int> g_liveMocks = 0;

class LiveMock : public platform::ReferenceCount {
  protected:
    LiveMock() { ++g_liveMocks; }
    ~LiveMock() { --g_liveMocks; }
};

// The identity of a mock COM object. A test checks its References() to be back at the test's own count.
template <typename First, typename... Others>
using MockObject = platform::ComIdentity<LiveMock, First, Others...>;

// An object without any interface of its own.
class MockUnknown : public MockObject<IUnknown> {};

// The count of a fake that lives on the stack or in a fixture, which has the first reference and keeps it.
class OwnersReference : public platform::ReferenceCount {
  protected:
    [[nodiscard]] ULONG DropReference() noexcept {
        const ULONG left = platform::ReferenceCount::DropReference();
        if (left != 0) return left;
        ADD_FAILURE() << "the owner's reference to a fake was released";
        return AddReference();
    }
};

// The identity of such a fake. A test checks its References() to be back at 1.
template <typename Interface>
using OwnedFake = platform::ComIdentity<OwnersReference, Interface>;

template <typename Mock, typename... Arguments>
[[nodiscard]] platform::ComPtr<Mock> MakeMock(Arguments&&... arguments) {
    return platform::MakeObject<Mock>(std::forward<Arguments>(arguments)...);
}

}  // namespace tests
