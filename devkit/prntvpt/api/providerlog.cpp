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

LoggedCall CallLog::Begin(const char* function) {
    const ThreadToken token = QueryThreadToken();
    LoggedCall call;
    call.function = function;
    call.thread = GetCurrentThreadId();
    call.impersonating = token.impersonating;
    const std::lock_guard guard(m_lock);
    call.sequence = ++m_sequence;
    if (m_expected) call.expectedToken = token.id && IsSame(*token.id, *m_expected);
    return call;
}

void CallLog::Add(LoggedCall call) {
    const std::lock_guard guard(m_lock);
    m_calls.push_back(std::move(call));
}

void CallLog::Note(std::string text) {
    const std::lock_guard guard(m_lock);
    m_notes.push_back(std::move(text));
}

HRESULT CallLog::ExpectToken(HANDLE token) {
    std::optional<LUID> id;
    if (token != nullptr) {
        const HRESULT hr = GetTokenId(token, id.emplace());
        if (FAILED(hr)) return hr;
    }
    const std::lock_guard guard(m_lock);
    m_expected = id;
    return S_OK;
}

std::vector<LoggedCall> CallLog::Calls() const {
    std::vector<LoggedCall> calls;
    {
        const std::lock_guard guard(m_lock);
        calls = m_calls;
    }
    std::sort(calls.begin(), calls.end(),
              [](const LoggedCall& left, const LoggedCall& right) { return left.sequence < right.sequence; });
    return calls;
}

std::map<std::string, std::uint64_t> CallLog::Counts() const {
    const std::lock_guard guard(m_lock);
    std::map<std::string, std::uint64_t> counts;
    for (const LoggedCall& call : m_calls) ++counts[call.function];
    return counts;
}

std::vector<std::string> CallLog::Notes() const {
    const std::lock_guard guard(m_lock);
    return m_notes;
}

void CallLog::Reset() {
    const std::lock_guard guard(m_lock);
    m_calls.clear();
    m_notes.clear();
}

}  // namespace devkit::prntvpt
