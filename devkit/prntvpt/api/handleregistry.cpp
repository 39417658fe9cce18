#include "devkit/prntvpt/api/handleregistry.h"

#include <utility>

namespace devkit::prntvpt {
namespace {

// Far from zero and from what a program has at hand, and a multiple of four as handles are.
constexpr std::uint64_t kFirstHandle = 0x50540000;
constexpr std::uint64_t kHandleStep = 4;

[[nodiscard]] std::string Number(std::uint64_t number) { return std::to_string(number); }

}  // namespace

std::uint64_t HandleNumber(HPTPROVIDER handle) noexcept { return reinterpret_cast<std::uintptr_t>(handle); }

HPTPROVIDER HandleRegistry::Open(std::string printer, std::shared_ptr<const Configuration> configuration) {
    const std::lock_guard guard(m_lock);
    const std::uint64_t number = kFirstHandle + kHandleStep * ++m_last;
    m_handles[number] = {std::move(printer), GetCurrentThreadId(), true, false, std::move(configuration)};
    return reinterpret_cast<HPTPROVIDER>(static_cast<std::uintptr_t>(number));
}

HandleRegistry::State* HandleRegistry::FindOpen(std::uint64_t number, const std::string& what) {
    const auto found = m_handles.find(number);
    if (found == m_handles.end()) {
        m_breaches.push_back({"A00F", what + ": the handle " + Number(number) + " was never given out"});
        return nullptr;
    }
    if (!found->second.open) {
        m_breaches.push_back({"A00E", what + ": the handle " + Number(number) + " is closed"});
        return nullptr;
    }
    return &found->second;
}

bool HandleRegistry::CheckThread(const State& state, std::uint64_t number, const char* stop,
                                 const std::string& what) {
    const ThreadRule rule = state.configuration->behaviour.threadRule;
    const DWORD thread = GetCurrentThreadId();
    if (state.thread == thread || rule == ThreadRule::Off) return true;
    m_breaches.push_back({stop, what + ": the handle " + Number(number) + " belongs to thread " +
                                    Number(state.thread) + ", not to thread " + Number(thread)});
    return rule == ThreadRule::Warn;
}

std::shared_ptr<const Configuration> HandleRegistry::Use(HPTPROVIDER handle, const char* function) {
    const std::lock_guard guard(m_lock);
    const std::uint64_t number = HandleNumber(handle);
    const State* const pState = FindOpen(number, function);
    if (pState == nullptr || !CheckThread(*pState, number, "A010", function)) return nullptr;
    return pState->configuration;
}

bool HandleRegistry::Close(HPTPROVIDER handle) {
    constexpr const char* kFunction = "PTCloseProvider";
    const std::lock_guard guard(m_lock);
    const std::uint64_t number = HandleNumber(handle);
    State* const pState = FindOpen(number, kFunction);
    if (pState == nullptr) return false;
    if (!CheckThread(*pState, number, "A011", kFunction)) {
        // It stays open for this one reason, which has been told.
        pState->leakNoted = true;
        return false;
    }
    pState->open = false;
    pState->configuration.reset();
    return true;
}

void HandleRegistry::NoteLeak(std::uint64_t number, State& state) {
    if (!state.open || std::exchange(state.leakNoted, true)) return;
    m_breaches.push_back(
        {"A012", "the handle " + Number(number) + " of the printer " + state.printer + " was never closed"});
}

void HandleRegistry::ThreadEnded(DWORD thread) {
    const std::lock_guard guard(m_lock);
    for (auto& [number, state] : m_handles) {
        // Where any thread may close it, the end of this one says nothing.
        if (!state.open || state.configuration->behaviour.threadRule == ThreadRule::Off) continue;
        if (state.thread == thread) NoteLeak(number, state);
    }
}

void HandleRegistry::Finish() {
    const std::lock_guard guard(m_lock);
    for (auto& [number, state] : m_handles) NoteLeak(number, state);
}

std::vector<OpenHandle> HandleRegistry::OpenHandles() const {
    const std::lock_guard guard(m_lock);
    std::vector<OpenHandle> entries;
    for (const auto& [number, state] : m_handles) {
        if (state.open) entries.push_back({number, state.printer, state.thread});
    }
    return entries;
}

std::vector<ProviderBreach> HandleRegistry::Breaches() const {
    const std::lock_guard guard(m_lock);
    return m_breaches;
}

void HandleRegistry::Reset() {
    const std::lock_guard guard(m_lock);
    m_breaches.clear();
}

}  // namespace devkit::prntvpt
