#include "callrecorder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace tests {

HRESULT CallRecorder::Enter(std::string call) {
    const std::scoped_lock lock(m_lock);
    m_calls.push_back(std::move(call));
    if (m_remaining == 0 || (!m_failing.empty() && m_failing != m_calls.back())) return S_OK;
    if (--m_remaining != 0) return S_OK;
    m_failed = m_calls.back();
    return m_code;
}

void CallRecorder::FailNth(std::size_t nth, HRESULT code) { Fail({}, code, nth); }

void CallRecorder::Fail(std::string call, HRESULT code, std::size_t nth) {
    const std::scoped_lock lock(m_lock);
    m_failing = std::move(call);
    m_remaining = nth;
    m_code = code;
    m_failed.clear();
}

bool CallRecorder::HasFailed() const { return !FailedCall().empty(); }

std::string CallRecorder::FailedCall() const {
    const std::scoped_lock lock(m_lock);
    return m_failed;
}

std::vector<std::string> CallRecorder::Calls() const {
    const std::scoped_lock lock(m_lock);
    return m_calls;
}

std::size_t CallRecorder::Count(const std::string& call) const {
    const std::scoped_lock lock(m_lock);
    return static_cast<std::size_t>(std::ranges::count(m_calls, call));
}

void CallRecorder::Clear() {
    const std::scoped_lock lock(m_lock);
    m_calls.clear();
    m_failing.clear();
    m_remaining = 0;
    m_failed.clear();
}

std::string HresultText(HRESULT hr) {
    std::array<char, 11> text{};
    std::snprintf(text.data(), text.size(), "0x%08lX", static_cast<unsigned long>(hr));
    return text.data();
}

std::string Narrow(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr);
    narrow.pop_back();
    return narrow;
}

}  // namespace tests
