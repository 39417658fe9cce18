#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <functional>

// Memory that cannot be had, for programs that link test_failing_allocation: it replaces operator new and
// stands between the program and SysAllocStringLen and CreateStreamOnHGlobal. It also fails a test in which a
// stream over memory is made whose memory nobody would free: the leak check sees objects, and not the blocks
// behind them.
namespace tests {

// Fails the nth allocation, counted from 1, that this thread makes with operator new while the object lives;
// those after it succeed again. One at a time on a thread.
class FailingAllocation {
  public:
    explicit FailingAllocation(long nth) noexcept;
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();

    // Whether the allocation was made.
    [[nodiscard]] bool HasFailed() const noexcept;
};

// Calls the function once, before the first allocation of at least so many bytes that this thread makes with
// operator new while the object lives. One at a time on a thread.
class BeforeAllocation {
  public:
    BeforeAllocation(std::size_t least, std::function<void()> call);
    BeforeAllocation(const BeforeAllocation&) = delete;
    BeforeAllocation& operator=(const BeforeAllocation&) = delete;
    ~BeforeAllocation();

    [[nodiscard]] bool WasCalled() const noexcept;

  private:
    std::function<void()> m_call;
};

// While it lives, the texts (BSTR) that the program allocates, the kit's DOM included, are counted, and one
// of them cannot be had. One at a time.
class FailingText {
  public:
    // The nth text, counted from 1; 0: all can be had.
    explicit FailingText(std::size_t nth) noexcept;
    FailingText(const FailingText&) = delete;
    FailingText& operator=(const FailingText&) = delete;
    ~FailingText();

    // Whether the text was asked for that could not be had.
    [[nodiscard]] bool HasFailed() const noexcept;
};

// While it lives, CreateStreamOnHGlobal fails with the code.
class FailingStreamMemory {
  public:
    explicit FailingStreamMemory(HRESULT code) noexcept;
    FailingStreamMemory(const FailingStreamMemory&) = delete;
    FailingStreamMemory& operator=(const FailingStreamMemory&) = delete;
    ~FailingStreamMemory();
};

}  // namespace tests
