#pragma once

#include <chrono>

#include "devkit/prntvpt/control/messages.h"

namespace devkit::prntvpt {

[[nodiscard]] inline std::chrono::nanoseconds Now() noexcept {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

// While it lives the call is in a stream of its caller.
class StreamTime {
  public:
    explicit StreamTime(ProviderCall& call) noexcept : m_call(call), m_start(Now()) {}
    StreamTime(const StreamTime&) = delete;
    StreamTime& operator=(const StreamTime&) = delete;
    ~StreamTime() { m_call.inStreams += Now() - m_start; }

  private:
    ProviderCall& m_call;
    const std::chrono::nanoseconds m_start;
};

}  // namespace devkit::prntvpt
