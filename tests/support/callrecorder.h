#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace tests {

// The calls that mock objects got, as text in the order of their arrival, and the one call that is to fail.
// Any thread may use it; it outlives the mocks that share it.
class CallRecorder {
  public:
    // Notes a call. A failure is what the mock must return without doing anything else.
    [[nodiscard]] HRESULT Enter(std::string call);

    // The nth call from now on fails, counted from 1 over all mocks.
    void FailNth(std::size_t nth, HRESULT code);
    // The nth call with exactly this text fails, counted from now on.
    void Fail(std::string call, HRESULT code, std::size_t nth = 1);
    // Whether the call that was to fail was made.
    [[nodiscard]] bool HasFailed() const;
    // The text of the call that failed; empty when none did.
    [[nodiscard]] std::string FailedCall() const;

    [[nodiscard]] std::vector<std::string> Calls() const;
    [[nodiscard]] std::size_t Count(const std::string& call) const;
    // Forgets the calls and the failure.
    void Clear();

  private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_calls;
    // Empty for any call.
    std::string m_failing;
    std::size_t m_remaining = 0;
    HRESULT m_code = S_OK;
    std::string m_failed;
};

// "0x" and eight digits.
[[nodiscard]] std::string HresultText(HRESULT hr);

// UTF-8.
[[nodiscard]] std::string Narrow(const wchar_t* text);

}  // namespace tests
