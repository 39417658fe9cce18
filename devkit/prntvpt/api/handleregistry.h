#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "devkit/prntvpt/api/configuration.h"
#include "devkit/prntvpt/control/messages.h"
#include "platform/prntvpt.h"

namespace devkit::prntvpt {

// The handles that were given out. A handle is a number and never an address, so that one that was closed, or
// never given out, is told apart safely; none comes twice. Any thread may use it.
class HandleRegistry {
  public:
    [[nodiscard]] HPTPROVIDER Open(std::string printer, std::shared_ptr<const Configuration> configuration);

    // The configuration that the handle was opened with; null when the calling thread may not use it, which
    // is a breach.
    [[nodiscard]] std::shared_ptr<const Configuration> Use(HPTPROVIDER handle, const char* function);
    // False when the calling thread may not close it, which is a breach.
    [[nodiscard]] bool Close(HPTPROVIDER handle);

    // What the thread leaves open is a breach.
    void ThreadEnded(DWORD thread);
    // What is open is a breach.
    void Finish();

    [[nodiscard]] std::vector<OpenHandle> OpenHandles() const;
    [[nodiscard]] std::vector<ProviderBreach> Breaches() const;
    // Forgets the breaches. Handles stay as they are.
    void Reset();

  private:
    struct State {
        std::string printer;
        DWORD thread = 0;
        bool open = true;
        bool leakNoted = false;
        std::shared_ptr<const Configuration> configuration;
    };

    [[nodiscard]] State* FindOpen(std::uint64_t number, const std::string& what);
    [[nodiscard]] bool CheckThread(const State& state, std::uint64_t number, const char* stop,
                                   const std::string& what);
    void NoteLeak(std::uint64_t number, State& state);

    mutable std::mutex m_lock;
    std::uint64_t m_last = 0;
    std::map<std::uint64_t, State> m_handles;
    std::vector<ProviderBreach> m_breaches;
};

// The handle as it is written in a report.
[[nodiscard]] std::uint64_t HandleNumber(HPTPROVIDER handle) noexcept;

}  // namespace devkit::prntvpt
