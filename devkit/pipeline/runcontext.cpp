#include "devkit/pipeline/runcontext.h"

#include <algorithm>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/text.h"
#include "devkit/pipeline/runobserver.h"

namespace devkit::pipeline {

void BreachLog::Add(std::string text) {
    const std::lock_guard guard(m_lock);
    m_lines.push_back(std::move(text));
}

std::vector<std::string> BreachLog::Lines() const {
    const std::lock_guard guard(m_lock);
    return m_lines;
}

RunContext::RunContext(Behaviour behaviour, std::shared_ptr<RunObserver> observer)
    : m_behaviour(std::move(behaviour)),
      m_observer(observer ? std::move(observer) : std::make_shared<RunObserver>()),
      m_pCallObserver(m_observer->WantsCalls() ? m_observer.get() : nullptr),
      m_calls(m_behaviour.faults, m_behaviour.keepCalls) {}

FilterCalls& RunContext::Calls() {
    m_observer->Called();
    return m_calls;
}

HRESULT RunContext::Breach(Check check, std::string text, HRESULT code) {
    Observer()->Breached(check, text);
    m_breaches.Add(std::move(text));
    return code;
}

void RunContext::LeftOpen(std::string text) { m_leftOpen.Add(std::move(text)); }

std::vector<std::string> RunContext::LeftOpen() const { return m_leftOpen.Lines(); }

void RunContext::InputFailed(std::string text) {
    Observer()->InputFailed(text);
    m_inputFailures.Add(std::move(text));
}

std::vector<std::string> RunContext::InputFailures() const { return m_inputFailures.Lines(); }

void RunContext::StorageFailed(std::string text) {
    const std::lock_guard guard(m_storageLock);
    if (m_storageFailure.empty()) m_storageFailure = std::move(text);
}

std::string RunContext::StorageFailure() const {
    const std::lock_guard guard(m_storageLock);
    return m_storageFailure;
}

void RunContext::Missing(const std::string& what) {
    const std::lock_guard guard(m_missingLock);
    if (std::ranges::find(m_missing, what) == m_missing.end()) m_missing.push_back(what);
}

std::vector<std::string> RunContext::MissingThings() const {
    const std::lock_guard guard(m_missingLock);
    return m_missing;
}

void RunContext::Found(Check check, std::string text) {
    Observer()->Found(check, text);
    m_findings.Add(std::move(text));
}

std::vector<std::string> RunContext::Findings() const { return m_findings.Lines(); }

void RunContext::Used(std::string_view key) {
    const std::lock_guard guard(m_usedLock);
    if (!m_used.contains(key)) m_used.emplace(key);
}

bool RunContext::IsUsed(std::string_view key) const {
    const std::lock_guard guard(m_usedLock);
    return m_used.contains(key);
}

void RunContext::Cancel() {
    {
        const std::lock_guard guard(m_cancelLock);
        m_cancelled = true;
    }
    m_cancelSignal.notify_all();
}

void RunContext::WaitUnlessCancelled(std::chrono::milliseconds time) {
    std::unique_lock lock(m_cancelLock);
    m_cancelSignal.wait_for(lock, time, [this] { return m_cancelled.load(); });
}

std::vector<std::string> RunContext::LiveObjects() const {
    const std::lock_guard guard(m_liveLock);
    std::vector<std::string> lines;
    for (const auto& [serial, object] : m_live) {
        const ULONG references = object->References();
        lines.push_back(object->m_description + ", " + std::to_string(references) +
                        (references == 1 ? " reference" : " references"));
    }
    return lines;
}

LiveObject::LiveObject(ContextPtr context, std::string description)
    : m_context(std::move(context)), m_description(std::move(description)) {
    const std::lock_guard guard(m_context->m_liveLock);
    m_serial = m_context->m_made++;
    m_context->m_live.emplace(m_serial, this);
}

LiveObject::~LiveObject() {
    const std::lock_guard guard(m_context->m_liveLock);
    m_context->m_live.erase(m_serial);
    NameTheDead(this, std::move(m_description), [context = std::weak_ptr(m_context)](std::string text) {
        if (const auto alive = context.lock()) alive->Breach(Check::OverRelease, std::move(text));
    });
}

HRESULT LiveObject::PlannedRefusal(REFIID iid) const noexcept {
    if (!m_context->Calls().HasPlannedQuery() || iid == __uuidof(IUnknown)) return S_OK;
    return common::Guarded([&] { return m_context->Calls().EnterQuery(m_description, common::TextOf(iid)); });
}

}  // namespace devkit::pipeline
