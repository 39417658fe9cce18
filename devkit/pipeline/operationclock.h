#pragma once

#include "platform/windows.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>

namespace devkit::pipeline {

// Whose time a moment of StartOperation is.
enum class Share {
    Filter,          // code of the filter, and what of the system it uses
    TicketProvider,  // the simulated print ticket provider
    Pipeline,        // an object of the pipeline, the reading of parts included
    Observer,        // who watches the run: the look at what is sent, and the telling of it
};

// Where the time of a StartOperation went, by a clock that never goes back.
struct OperationTimes {
    using Point = std::chrono::steady_clock::time_point;
    using Duration = std::chrono::nanoseconds;

    Point begin;  // both zero before StartOperation
    Point end;    // of one that has not returned, the last time that it was looked at the clock
    std::array<Duration, 4> shares{};

    [[nodiscard]] Duration Of(Share share) const noexcept { return shares[static_cast<std::size_t>(share)]; }
};

// Divides the time of a StartOperation. It looks at the thread of the operation alone: what other threads of
// the filter do is the filter's while its operation waits for them, and else nobody's. Each moment has one
// share, the innermost, so that the shares make up the whole. The thread of the operation calls; any thread
// may ask for the times.
class OperationClock {
  public:
    using Duration = OperationTimes::Duration;

    // Measures for as long as it lives, on the thread that makes it.
    class Operation {
      public:
        explicit Operation(OperationClock& clock) noexcept;
        Operation(const Operation&) = delete;
        Operation& operator=(const Operation&) = delete;
        ~Operation();

      private:
        OperationClock& m_clock;
    };

    // What passes while it lives has this share. On any other thread than the operation's it does nothing.
    class Timed {
      public:
        Timed(OperationClock& clock, Share share) noexcept;
        Timed(const Timed&) = delete;
        Timed& operator=(const Timed&) = delete;
        ~Timed() {
            if (m_pClock != nullptr) m_pClock->Switch(m_before);
        }

      private:
        OperationClock* m_pClock = nullptr;
        Share m_before = Share::Filter;
    };

    // Time that has been counted as the filter's was somebody else's. On any other thread than the
    // operation's it does nothing.
    void Reassign(Share share, Duration time) noexcept;

    [[nodiscard]] OperationTimes Times() const noexcept;

  private:
    using Ticks = Duration::rep;

    [[nodiscard]] bool IsOperation() const noexcept { return m_thread == GetCurrentThreadId(); }
    // Gives what passed since the last change to the share that it belongs to.
    void Switch(Share share) noexcept;
    void Add(Share share, Ticks ticks) noexcept;

    std::atomic<DWORD> m_thread = 0;  // of the operation, while it goes on
    Share m_current = Share::Filter;
    // Written by that thread alone; atomic for those who ask meanwhile.
    std::atomic<Ticks> m_begin = 0;
    std::atomic<Ticks> m_last = 0;
    std::array<std::atomic<Ticks>, 4> m_shares{};
};

}  // namespace devkit::pipeline
