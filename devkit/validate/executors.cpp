#include "devkit/validate/executors.h"

#include <system_error>
#include <utility>

#include "devkit/common/leave.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/hostedrun.h"
#include "devkit/filterhost/summary.h"
#include "devkit/validate/probes.h"

namespace devkit::validate {

using filterhost::Event;
using filterhost::HostedChild;

namespace {

RunResult ResultOf(const Order& order) {
    RunResult result;
    result.input = order.probe.empty() ? order.job.inputName : order.probe;
    return result;
}

void PrintProblems(const RunResult& result) {
    for (const std::string& problem : filterhost::WriteProblems(result)) filterhost::PrintProblem(problem);
}

}  // namespace

void Cancellation::Cancel() {
    m_isCancelled = true;
    const std::lock_guard guard(m_lock);
    for (HostedChild* const pChild : m_children) pChild->Cancel();
}

void Cancellation::Add(HostedChild* pChild) {
    const std::lock_guard guard(m_lock);
    m_children.insert(pChild);
}

void Cancellation::Remove(HostedChild* pChild) {
    const std::lock_guard guard(m_lock);
    m_children.erase(pChild);
}

ChildExecutor::ChildExecutor(std::chrono::seconds timeout, Cancellation& cancellation,
                             HostedChild::Watcher watcher)
    : m_timeout(timeout), m_cancellation(cancellation), m_watcher(std::move(watcher)) {}

ChildExecutor::~ChildExecutor() { Drop(); }

RunResult ChildExecutor::Run(const Order& order) {
    RunResult result = ResultOf(order);
    try {
        if (!m_child) {
            m_child = std::make_unique<HostedChild>(m_timeout, m_watcher);
            m_cancellation.Add(m_child.get());
        }
        if (!m_child->Run(order, result)) Drop();
    } catch (const std::system_error& error) {
        throw std::runtime_error(std::string("a process cannot be started: ") + error.what());
    }
    filterhost::Conclude(result);
    return result;
}

void ChildExecutor::Drop() {
    if (!m_child) return;
    m_cancellation.Remove(m_child.get());
    m_child.reset();
}

HereExecutor::HereExecutor(HostedChild::Watcher watcher)
    : m_watcher(std::move(watcher)), m_crash(&TellLast, this) {}

void HereExecutor::TellLast(void* pExecutor, std::string_view line) noexcept {
    RunResult* const pResult = static_cast<HereExecutor*>(pExecutor)->m_pResult;
    if (pResult == nullptr) return;
    try {
        filterhost::Apply(filterhost::ReadEvent(line), *pResult);
        PrintProblems(*pResult);
    } catch (...) {
        // The process has nothing left to tell it with.
    }
}

RunResult HereExecutor::Run(const Order& order) {
    RunResult result = ResultOf(order);
    m_pResult = &result;
    const bool isOver = RunInto(order, result);
    m_pResult = nullptr;
    filterhost::Conclude(result);
    if (isOver) return result;
    // Threads of the filter are left behind, and its DLL cannot be unloaded under them.
    PrintProblems(result);
    common::LeaveProcess(filterhost::FilterFailed);
}

bool HereExecutor::RunInto(const Order& order, RunResult& result) {
    // Threads that are left behind may still tell: what this holds on to outlives the call.
    const filterhost::EventSink sink = [this, &result](const Event& event) {
        const std::lock_guard guard(m_lock);
        m_watcher(event, result);
        filterhost::Apply(event, result);
    };
    if (!order.probe.empty()) {
        AllProbes().find(order.probe)->second(order, sink);
        return true;
    }
    auto run = std::make_unique<filterhost::HostedRun>(order.host, sink);
    const bool isOver = run->Run(order.job, sink);
    if (!isOver) static_cast<void>(run.release());
    return isOver;
}

}  // namespace devkit::validate
