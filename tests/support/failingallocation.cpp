#include "failingallocation.h"

#include <cstdlib>
#include <new>
#include <utility>

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

}  // namespace tests
