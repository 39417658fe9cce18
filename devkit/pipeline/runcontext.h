#pragma once

#include "platform/windows.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "devkit/pipeline/breachlog.h"
#include "devkit/pipeline/calllog.h"
#include "devkit/pipeline/switches.h"

namespace devkit::pipeline {

class LiveObject;

// What a call answers that comes at a time when the rules forbid it.
inline constexpr HRESULT CallOutOfOrder = static_cast<HRESULT>(0x8000000EL);  // E_ILLEGAL_METHOD_CALL
// What every call answers that a cancellation cuts off.
inline constexpr HRESULT JobCancelled = static_cast<HRESULT>(0x800704C7L);  // ERROR_CANCELLED

// Shared by all objects of one run of a filter: the switches, what was found, what is alive. The objects
// hold it, so it outlives the run when a filter keeps one of them. Any thread may call.
class RunContext {
  public:
    explicit RunContext(Switches switches = {});
    RunContext(const RunContext&) = delete;
    RunContext& operator=(const RunContext&) = delete;

    [[nodiscard]] const Switches& GetSwitches() const noexcept { return m_switches; }
    [[nodiscard]] BreachLog& Breaches() noexcept { return m_breaches; }
    [[nodiscard]] CallLog& Calls() noexcept { return m_calls; }

    // Records a breach and gives the code that the offending call answers.
    HRESULT Breach(std::string text, HRESULT code = CallOutOfOrder);

    // A write stream that was let go without Close: a breach when the job succeeds, and what a failure leaves
    // behind when it does not.
    void LeftOpen(std::string text);
    [[nodiscard]] std::vector<std::string> LeftOpen() const;

    // A part of the input that could not be read. The filter cannot be blamed for what follows.
    void InputFailed(std::string text);
    [[nodiscard]] std::vector<std::string> InputFailures() const;

    void Cancel();
    [[nodiscard]] bool IsCancelled() const noexcept { return m_cancelled; }
    // Waits for the time given, or until the job is cancelled.
    void WaitUnlessCancelled(std::chrono::milliseconds time);

    // The kit's objects of this run that are not yet released, oldest first, each as "KIND NAME, N
    // references".
    [[nodiscard]] std::vector<std::string> LiveObjects() const;

  private:
    friend class LiveObject;

    const Switches m_switches;
    BreachLog m_breaches;
    BreachLog m_leftOpen;
    BreachLog m_inputFailures;
    CallLog m_calls;
    std::atomic<bool> m_cancelled = false;
    std::mutex m_cancelLock;
    std::condition_variable m_cancelSignal;
    mutable std::mutex m_liveLock;
    unsigned m_made = 0;
    std::map<unsigned, const LiveObject*> m_live;  // by the order of their making
};

using ContextPtr = std::shared_ptr<RunContext>;

// The base of every COM object of the kit: its reference count, and its entry among the living.
class LiveObject {
  public:
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;

  protected:
    // `description` is the kind and, where it has one, the part's name: "FixedPage /1.fpage".
    LiveObject(ContextPtr context, std::string description);
    ~LiveObject();

    ULONG AddReference() noexcept { return ++m_references; }
    [[nodiscard]] ULONG DropReference() noexcept { return --m_references; }
    [[nodiscard]] RunContext& Context() const noexcept { return *m_context; }
    [[nodiscard]] const ContextPtr& SharedContext() const noexcept { return m_context; }

  private:
    friend class RunContext;

    ContextPtr m_context;
    std::string m_description;
    unsigned m_serial = 0;
    std::atomic<ULONG> m_references = 1;
};

// The kit's COM objects that are alive in the process, of all runs.
[[nodiscard]] std::size_t LiveObjectCount() noexcept;

}  // namespace devkit::pipeline
