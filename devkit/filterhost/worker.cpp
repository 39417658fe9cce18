#include "devkit/filterhost/worker.h"

#include "platform/windows.h"

#include <atomic>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>

#include "devkit/filterhost/childprocess.h"
#include "devkit/filterhost/crashreport.h"
#include "devkit/filterhost/hostedrun.h"

namespace devkit::filterhost {
namespace {

HANDLE HandleOf(std::string_view text) {
    std::uintptr_t number = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || pEnd != text.data() + text.size()) {
        throw UsageError("work is a command of the program's own");
    }
    return reinterpret_cast<HANDLE>(number);
}

// Leaves at once, whatever threads of a filter are still running.
[[noreturn]] void Leave(ExitStatus status) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(status));
    std::abort();
}

class Worker {
  public:
    Worker(HANDLE read, HANDLE write) : m_parent(read, write) {}

    [[noreturn]] void Run() {
        const std::optional<std::string> order = m_parent.Read();
        if (!order) Leave(WrongUsage);
        const Order work = ReadOrder(*order);
        std::thread([this] { Listen(); }).detach();
        const CrashReport crash(&TellLast, this);
        // On a thread of its own, so that a filter that ends its thread does not end the process with it.
        std::thread job([&] { Do(work); });
        job.join();
        // A thread that was ended in the middle has not come here.
        if (!m_finished) Tell(events::Crashed{{0, "the filter ended its thread"}});
        Tell(events::Finished{});
        Leave(Done);
    }

  private:
    static void TellLast(void* pWorker, std::string_view line) noexcept {
        static_cast<Worker*>(pWorker)->m_parent.TellLast(line);
    }

    void Tell(const Event& event) { m_parent.Tell(WriteEvent(event)); }

    // Until the parent is gone.
    void Listen() {
        while (const std::optional<std::string> command = m_parent.Read()) {
            if (*command != kCancelCommand) continue;
            const std::lock_guard guard(m_lock);
            m_cancelled = true;
            if (m_pRun != nullptr) m_pRun->Cancel();
        }
        Leave(FilterFailed);
    }

    void Do(const Order& order) {
        const EventSink sink = [this](const Event& event) { Tell(event); };
        const HRESULT entered = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        try {
            auto pRun = std::make_unique<HostedRun>(order.host, sink);
            Hold(pRun.get());
            const bool isOver = pRun->Run(order.job, sink);
            Hold(nullptr);
            // Under threads that are still at it nothing can be unloaded.
            if (isOver) {
                sink(events::CallBegun{"the unloading of the filter"});
                pRun.reset();
            } else {
                static_cast<void>(pRun.release());
            }
        } catch (const UsageError& error) {
            sink(events::Refused{error.what(), WrongUsage});
        } catch (const pipeline::FilterError& error) {
            sink(events::Refused{error.what(), FilterFailed});
        } catch (const std::exception& error) {
            sink(events::Failed{error.what(), FilterFailed});
        }
        if (SUCCEEDED(entered)) CoUninitialize();
        m_finished = true;
    }

    void Hold(HostedRun* pRun) {
        const std::lock_guard guard(m_lock);
        m_pRun = pRun;
        if (pRun != nullptr && m_cancelled) pRun->Cancel();
    }

    ParentProcess m_parent;
    std::atomic<bool> m_finished = false;
    std::mutex m_lock;
    HostedRun* m_pRun = nullptr;
    bool m_cancelled = false;
};

}  // namespace

void Work(std::string_view readHandle, std::string_view writeHandle) {
    // Ctrl+C is the parent's to hear.
    SetConsoleCtrlHandler(nullptr, TRUE);
    // What a crash would show is told to the parent, and nobody sits in front of a box.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    Worker(HandleOf(readHandle), HandleOf(writeHandle)).Run();
}

}  // namespace devkit::filterhost
