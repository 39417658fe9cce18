#include "devkit/filterhost/worker.h"

#include "platform/windows.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "devkit/common/leave.h"
#include "devkit/filterhost/childprocess.h"
#include "devkit/filterhost/crashreport.h"
#include "devkit/filterhost/hostedrun.h"
#include "devkit/filterhost/orders.h"

namespace devkit::filterhost {
namespace {

class Worker {
  public:
    Worker(std::string_view readHandle, std::string_view writeHandle, const Probes& probes)
        : m_probes(probes),
          m_parent(readHandle, writeHandle, kWorkCommand),
          m_orders(m_parent, [this](std::string_view command) { return Cancels(command); }) {}

    [[noreturn]] void Run() {
        Order order = ReadOrder(m_orders.Next());
        const CrashReport crash(&TellLast, this);
        while (Obey(order)) order = ReadOrder(m_orders.Next());
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

    bool Cancels(std::string_view command) {
        if (command != kCancelCommand) return false;
        const std::lock_guard guard(m_lock);
        m_cancelled = true;
        if (m_pRun != nullptr) m_pRun->Cancel();
        return true;
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
    HostedRun* m_pRun = nullptr;
    bool m_cancelled = false;
    Orders m_orders;  // last: its thread cancels
};

}  // namespace

void Work(std::string_view readHandle, std::string_view writeHandle, const Probes& probes) {
    Worker(readHandle, writeHandle, probes).Run();
}

}  // namespace devkit::filterhost
