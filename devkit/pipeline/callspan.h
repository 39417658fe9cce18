#pragma once

#include "platform/windows.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace devkit::pipeline {

class OperationClock;
class RunObserver;

// Measures a call of the filter from its making to its destruction, on one thread, and tells the observer, in
// the observer's time. Spans nest as the calls do.
class CallSpan {
  public:
    // Without an observer it does nothing.
    CallSpan(RunObserver* pObserver, OperationClock& clock, const char* method = nullptr) noexcept;
    CallSpan(const CallSpan&) = delete;
    CallSpan& operator=(const CallSpan&) = delete;
    ~CallSpan();

    // Names the innermost call of the thread, if that is measured.
    static void Name(std::string_view method, std::string_view argument);

  private:
    struct Measured;

    RunObserver* const m_pObserver;
    OperationClock& m_clock;
    std::unique_ptr<Measured> m_measured;  // null where nobody wants it
};

// The time of the clock by which spans are measured.
[[nodiscard]] std::chrono::nanoseconds SpanClockNow() noexcept;

}  // namespace devkit::pipeline
