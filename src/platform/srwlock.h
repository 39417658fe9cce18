#pragma once

#include "platform/windows.h"

namespace platform {

// A lock for std::scoped_lock. It holds no resource of the system, unlike std::mutex of some toolchains.
class SrwLock {
  public:
    SrwLock() noexcept = default;
    SrwLock(const SrwLock&) = delete;
    SrwLock& operator=(const SrwLock&) = delete;

    void lock() noexcept { AcquireSRWLockExclusive(&m_lock); }
    void unlock() noexcept { ReleaseSRWLockExclusive(&m_lock); }

  private:
    SRWLOCK m_lock = SRWLOCK_INIT;
};

}  // namespace platform
