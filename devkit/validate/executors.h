#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <set>
#include <string_view>

#include "devkit/filterhost/crashreport.h"
#include "devkit/filterhost/hostedchild.h"
#include "devkit/validate/trial.h"

namespace devkit::validate {

// Cancels what goes on when the user interrupts. Any thread may call.
class Cancellation {
  public:
    [[nodiscard]] bool IsCancelled() const noexcept { return m_isCancelled; }
    void Cancel();

    void Add(filterhost::HostedChild* pChild);
    void Remove(filterhost::HostedChild* pChild);

  private:
    std::atomic<bool> m_isCancelled = false;
    std::mutex m_lock;
    std::set<filterhost::HostedChild*> m_children;
};

// Runs orders in a child process, the next one in a new process where the filter has ended or spoilt the
// last.
class ChildExecutor final : public Executor {
  public:
    ChildExecutor(std::chrono::seconds timeout, Cancellation& cancellation,
                  filterhost::HostedChild::Watcher watcher);
    ~ChildExecutor() override;

    [[nodiscard]] RunResult Run(const Order& order) override;

  private:
    void Drop();

    const std::chrono::seconds m_timeout;
    Cancellation& m_cancellation;
    const filterhost::HostedChild::Watcher m_watcher;
    std::unique_ptr<filterhost::HostedChild> m_child;
};

// Runs orders in this process, where a debugger finds the filter. A filter that leaves threads behind, or
// crashes, ends the program, which says so. One at a time.
class HereExecutor final : public Executor {
  public:
    // The watcher is told of each event; it may come on a thread of the filter.
    explicit HereExecutor(filterhost::HostedChild::Watcher watcher);

    [[nodiscard]] RunResult Run(const Order& order) override;

  private:
    // False when the run was abandoned.
    bool RunInto(const Order& order, RunResult& result);
    static void TellLast(void* pExecutor, std::string_view line) noexcept;

    const filterhost::HostedChild::Watcher m_watcher;
    std::mutex m_lock;
    RunResult* m_pResult = nullptr;  // of the run that goes on
    const filterhost::CrashReport m_crash;
};

}  // namespace devkit::validate
