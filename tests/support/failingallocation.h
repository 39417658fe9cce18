#pragma once

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

}  // namespace tests
