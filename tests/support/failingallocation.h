#pragma once

#include <cstddef>
#include <functional>

namespace tests {

// Fails the nth allocation, counted from 1, that this thread makes with operator new while the object lives;
// those after it succeed again. One at a time on a thread. For programs that link test_failing_allocation,
// which replaces operator new.
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
// operator new while the object lives. One at a time on a thread. For the same programs.
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

}  // namespace tests
