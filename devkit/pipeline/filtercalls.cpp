#include "devkit/pipeline/filtercalls.h"

#include "devkit/common/hresult.h"
#include "devkit/pipeline/callspan.h"

namespace devkit::pipeline {
namespace {

bool IsMethod(std::string_view wanted, std::string_view method) {
    return wanted.empty() || wanted == method || method.ends_with("::" + std::string(wanted));
}

constexpr std::string_view kQuery = "IUnknown::QueryInterface";

bool IsQuery(const Fault& fault) { return !fault.method.empty() && IsMethod(fault.method, kQuery); }

std::string TextOf(const Fault& fault) {
    std::string text = fault.method;
    if (!fault.argument.empty()) text += "(" + fault.argument + ")";
    text += "@" + std::to_string(fault.nth) + (fault.onwards ? "+" : "");
    return text + "=" + common::Describe(fault.code);
}

}  // namespace

FilterCalls::FilterCalls(std::vector<Fault> faults, bool keepText) : m_keepText(keepText) {
    for (Fault& fault : faults) {
        m_hasPlannedQuery = m_hasPlannedQuery || IsQuery(fault);
        m_faults.push_back({std::move(fault), 0});
    }
}

HRESULT FilterCalls::Enter(std::string_view method, std::string_view argument) {
    CallSpan::Name(method, argument);
    const std::lock_guard guard(m_lock);
    Record(method, argument);
    return Strike(method, argument);
}

bool FilterCalls::HasPlannedQuery() const noexcept { return m_hasPlannedQuery; }

HRESULT FilterCalls::EnterQuery(std::string_view object, std::string_view interfaceName) {
    const std::string argument = std::string(object) + " " + std::string(interfaceName);
    const std::lock_guard guard(m_lock);
    HRESULT result = S_OK;
    for (Planned& planned : m_faults) {
        if (!IsQuery(planned.fault)) continue;
        const HRESULT struck = planned.Meet(argument);
        if (SUCCEEDED(result)) result = struck;
    }
    if (FAILED(result) && m_keepText) m_text.push_back(std::string(kQuery) + " " + argument);
    return result;
}

void FilterCalls::Note(std::string_view method, std::string_view argument) {
    CallSpan::Name(method, argument);
    const std::lock_guard guard(m_lock);
    Record(method, argument);
}

void FilterCalls::Record(std::string_view method, std::string_view argument) {
    ++m_total;
    auto count = m_counts.find(method);
    if (count == m_counts.end()) count = m_counts.emplace(method, 0).first;
    ++count->second;
    if (!m_keepText) return;
    std::string& line = m_text.emplace_back(method);
    if (!argument.empty()) line.append(" ").append(argument);
}

HRESULT FilterCalls::Strike(std::string_view method, std::string_view argument) {
    HRESULT result = S_OK;
    for (Planned& planned : m_faults) {
        if (!IsMethod(planned.fault.method, method)) continue;
        const HRESULT struck = planned.Meet(argument);
        if (SUCCEEDED(result)) result = struck;
    }
    return result;
}

HRESULT FilterCalls::Planned::Meet(std::string_view argument) {
    if (!fault.argument.empty() && fault.argument != argument) return S_OK;
    ++seen;
    const bool strikes = seen == fault.nth || (fault.onwards && seen > fault.nth);
    return strikes ? fault.code : S_OK;
}

unsigned FilterCalls::Count(std::string_view method) const {
    const std::lock_guard guard(m_lock);
    if (method.empty()) return m_total;
    const auto count = m_counts.find(method);
    return count == m_counts.end() ? 0 : count->second;
}

CallCounts FilterCalls::Counts() const {
    const std::lock_guard guard(m_lock);
    return m_counts;
}

std::vector<std::string> FilterCalls::UnstruckFaults() const {
    const std::lock_guard guard(m_lock);
    std::vector<std::string> texts;
    for (const Planned& planned : m_faults) {
        if (planned.seen < planned.fault.nth) texts.push_back(TextOf(planned.fault));
    }
    return texts;
}

std::vector<std::string> FilterCalls::Text() const {
    const std::lock_guard guard(m_lock);
    return m_text;
}

}  // namespace devkit::pipeline
