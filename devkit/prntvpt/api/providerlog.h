#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "devkit/prntvpt/control/messages.h"

namespace devkit::prntvpt {

// The calls of the provider's functions, with what their threads impersonated. Any thread may use it.
class ProviderLog {
  public:
    // A record of a call that starts now on this thread.
    [[nodiscard]] ProviderCall Begin(const char* function);
    // Tells the listener, too. Only counts the call where calls are not kept.
    void Add(ProviderCall call);
    void Note(std::string text);
    void KeepCalls(bool areKept);

    // Null: no token is expected. Fails when the token cannot be queried, and leaves what was expected.
    [[nodiscard]] HRESULT ExpectToken(HANDLE token);

    // Called with each call when it ends, on its thread; what is empty is not called.
    void Listen(std::function<void(const ProviderCall&)> listener);

    // In the order of their start; calls that have not returned are missing.
    [[nodiscard]] std::vector<ProviderCall> Calls() const;
    [[nodiscard]] std::map<std::string, std::uint64_t> Counts() const;
    [[nodiscard]] std::vector<std::string> Notes() const;
    void Reset();

  private:
    mutable std::mutex m_lock;
    std::uint64_t m_sequence = 0;
    std::optional<LUID> m_expected;
    std::function<void(const ProviderCall&)> m_listener;
    bool m_keepsCalls = true;
    std::vector<ProviderCall> m_calls;
    std::map<std::string, std::uint64_t> m_counts;
    std::vector<std::string> m_notes;
};

}  // namespace devkit::prntvpt
