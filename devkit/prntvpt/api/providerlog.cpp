#include "devkit/prntvpt/api/providerlog.h"

#include <algorithm>
#include <utility>

#include "devkit/prntvpt/api/threadtoken.h"

namespace devkit::prntvpt {
namespace {

[[nodiscard]] bool IsSame(const LUID& left, const LUID& right) {
    return left.LowPart == right.LowPart && left.HighPart == right.HighPart;
}

}  // namespace

ProviderCall ProviderLog::Begin(const char* function) {
    const ThreadToken token = QueryThreadToken();
    ProviderCall call;
    call.function = function;
    call.thread = GetCurrentThreadId();
    call.impersonating = token.impersonating;
    const std::lock_guard guard(m_lock);
    call.sequence = ++m_sequence;
    if (m_expected) call.expectedToken = token.id && IsSame(*token.id, *m_expected);
    return call;
}

void ProviderLog::Add(ProviderCall call) {
    std::function<void(const ProviderCall&)> listener;
    {
        const std::lock_guard guard(m_lock);
        listener = m_listener;
    }
    // Unlocked, because a listener may ask for the report.
    if (listener) listener(call);
    const std::lock_guard guard(m_lock);
    ++m_counts[call.function];
    if (m_keepsCalls) m_calls.push_back(std::move(call));
}

void ProviderLog::KeepCalls(bool areKept) {
    const std::lock_guard guard(m_lock);
    m_keepsCalls = areKept;
}

void ProviderLog::Note(std::string text) {
    const std::lock_guard guard(m_lock);
    m_notes.push_back(std::move(text));
}

HRESULT ProviderLog::ExpectToken(HANDLE token) {
    std::optional<LUID> id;
    if (token != nullptr) {
        const HRESULT hr = GetTokenId(token, id.emplace());
        if (FAILED(hr)) return hr;
    }
    const std::lock_guard guard(m_lock);
    m_expected = id;
    return S_OK;
}

void ProviderLog::Listen(std::function<void(const ProviderCall&)> listener) {
    const std::lock_guard guard(m_lock);
    m_listener = std::move(listener);
}

std::vector<ProviderCall> ProviderLog::Calls() const {
    std::vector<ProviderCall> calls;
    {
        const std::lock_guard guard(m_lock);
        calls = m_calls;
    }
    std::sort(calls.begin(), calls.end(), [](const ProviderCall& left, const ProviderCall& right) {
        return left.sequence < right.sequence;
    });
    return calls;
}

std::map<std::string, std::uint64_t> ProviderLog::Counts() const {
    const std::lock_guard guard(m_lock);
    return m_counts;
}

std::vector<std::string> ProviderLog::Notes() const {
    const std::lock_guard guard(m_lock);
    return m_notes;
}

void ProviderLog::Reset() {
    const std::lock_guard guard(m_lock);
    m_sequence = 0;
    m_calls.clear();
    m_counts.clear();
    m_notes.clear();
}

}  // namespace devkit::prntvpt
