#include "devkit/filterhost/worker.h"

#include "platform/windows.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

#include "devkit/common/leave.h"
#include "devkit/filterhost/childprocess.h"
#include "devkit/filterhost/crashreport.h"
#include "devkit/filterhost/hostedrun.h"

namespace devkit::filterhost {
namespace {

class Worker {
  public:
    Worker(HANDLE read, HANDLE write, const Probes& probes) : m_probes(probes), m_parent(read, write) {}

    [[noreturn]] void Run() {
        const std::optional<std::string> first = m_parent.Read();
        if (!first) common::LeaveProcess(WrongUsage);
        Order order = ReadOrder(*first);
        std::thread([this] { Listen(); }).detach();
        const CrashReport crash(&TellLast, this);
        while (Obey(order)) order = ReadOrder(NextOrder());
        common::LeaveProcess(Done);
    }

  private:
    static void TellLast(void* pWorker, std::string_view line) noexcept {
        static_cast<Worker*>(pWorker)->m_parent.TellLast(line);
    }

    void Tell(const Event& event) { m_parent.Tell(WriteEvent(event)); }

    // False when what was left of a filter keeps this process from taking another order.
    bool Obey(const Order& order) {
        m_outcome = Outcome::ThreadEnded;
        // On a thread of its own, so that a filter that ends its thread does not end the process with it.
        std::thread job([&] { Do(order); });
        job.join();
        // A thread that was ended in the middle has not come to say how it went.
        if (m_outcome == Outcome::ThreadEnded) Tell(events::Crashed{{0, "the filter ended its thread"}});
        Tell(events::Finished{});
        return m_outcome == Outcome::Over;
    }

    std::string NextOrder() {
        std::unique_lock guard(m_lock);
        m_ordered.wait(guard, [this] { return !m_orders.empty(); });
        std::string order = std::move(m_orders.front());
        m_orders.pop_front();
        return order;
    }

    // Until the parent is gone.
    [[noreturn]] void Listen() {
        while (std::optional<std::string> command = m_parent.Read()) {
            const std::lock_guard guard(m_lock);
            if (*command != kCancelCommand) {
                m_orders.push_back(*std::move(command));
                m_ordered.notify_one();
                continue;
            }
            m_cancelled = true;
            if (m_pRun != nullptr) m_pRun->Cancel();
        }
        common::LeaveProcess(FilterFailed);
    }

    void Do(const Order& order) {
        const EventSink sink = [this](const Event& event) { Tell(event); };
        const HRESULT entered = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        bool isOver = true;
        try {
            if (order.probe.empty()) {
                isOver = RunJob(order, sink);
            } else {
                m_probes.at(order.probe)(order, sink);
            }
        } catch (const UsageError& error) {
            sink(events::Refused{error.what(), WrongUsage});
        } catch (const pipeline::FilterError& error) {
            sink(events::Refused{error.what(), FilterFailed});
        } catch (const std::exception& error) {
            sink(events::Failed{error.what(), FilterFailed});
        }
        if (SUCCEEDED(entered)) CoUninitialize();
        m_outcome = isOver ? Outcome::Over : Outcome::Abandoned;
    }

    bool RunJob(const Order& order, const EventSink& sink) {
        auto pRun = std::make_unique<HostedRun>(order.host, sink);
        Hold(pRun.get());
        const bool isOver = pRun->Run(order.job, sink);
        Hold(nullptr);
        // Under threads that are still at it nothing can be unloaded.
        if (isOver) {
            sink(events::CallBegun{"the unloading of the filter"});
            pRun.reset();
            sink(events::CallEnded{"the unloading of the filter"});
        } else {
            static_cast<void>(pRun.release());
        }
        return isOver;
    }

    void Hold(HostedRun* pRun) {
        const std::lock_guard guard(m_lock);
        m_pRun = pRun;
        if (pRun != nullptr && m_cancelled) pRun->Cancel();
    }

    enum class Outcome {
        Over,         // nothing of the filter is left
        Abandoned,    // threads of the filter are
        ThreadEnded,  // the filter ended the thread that worked for it
    };

    const Probes& m_probes;
    ParentProcess m_parent;
    std::atomic<Outcome> m_outcome = Outcome::Over;
    std::mutex m_lock;
    std::condition_variable m_ordered;
    std::deque<std::string> m_orders;
    HostedRun* m_pRun = nullptr;
    bool m_cancelled = false;
};

}  // namespace

void Work(std::string_view readHandle, std::string_view writeHandle, const Probes& probes) {
    // Ctrl+C is the parent's to hear.
    SetConsoleCtrlHandler(nullptr, TRUE);
    // What a crash would show is told to the parent, and nobody sits in front of a box.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    Worker(PassedHandle(readHandle, kWorkCommand), PassedHandle(writeHandle, kWorkCommand), probes).Run();
}

}  // namespace devkit::filterhost
