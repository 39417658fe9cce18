#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/prntvpt.h"

namespace devkit::prntvpt {

struct LoggedCall {
    std::uint64_t sequence = 0;
    std::string function;
    std::optional<std::uint64_t> handle;
    std::optional<EPrintTicketScope> scope;
    DWORD thread = 0;
    bool impersonating = false;
    std::optional<bool> expectedToken;
    HRESULT result = S_OK;
    std::optional<std::string> base;
    std::optional<std::string> delta;
    std::optional<std::string> output;
    std::optional<std::string> error;
};

// The calls of the provider's functions, with what their threads impersonated. Any thread may use it.
class CallLog {
  public:
    // A record of a call that starts now on this thread.
    [[nodiscard]] LoggedCall Begin(const char* function);
    void Add(LoggedCall call);
    void Note(std::string text);

    // Null: no token is expected. Fails when the token cannot be queried, and leaves what was expected.
    [[nodiscard]] HRESULT ExpectToken(HANDLE token);

    // In the order of their start; calls that have not returned are missing.
    [[nodiscard]] std::vector<LoggedCall> Calls() const;
    [[nodiscard]] std::map<std::string, std::uint64_t> Counts() const;
    [[nodiscard]] std::vector<std::string> Notes() const;
    void Reset();

  private:
    mutable std::mutex m_lock;
    std::uint64_t m_sequence = 0;
    std::optional<LUID> m_expected;
    std::vector<LoggedCall> m_calls;
    std::vector<std::string> m_notes;
};

}  // namespace devkit::prntvpt
