#pragma once

#include "platform/windows.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "devkit/common/bytestore.h"
#include "devkit/common/checks.h"
#include "devkit/common/countedobject.h"
#include "devkit/common/error.h"
#include "devkit/pipeline/behaviour.h"
#include "devkit/pipeline/callspan.h"
#include "devkit/pipeline/filtercalls.h"
#include "devkit/pipeline/graveyard.h"
#include "devkit/pipeline/operationclock.h"
#include "platform/comobject.h"

namespace devkit::pipeline {

using common::Check;

// The rules of the pipeline that a filter broke, one line of text each, in the order of their finding.
// Any thread may add.
class BreachLog {
  public:
    void Add(std::string text);
    [[nodiscard]] std::vector<std::string> Lines() const;

  private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_lines;
};

class LiveObject;
class RunObserver;

// What a call answers that comes at a time when the rules forbid it.
inline constexpr HRESULT kCallOutOfOrder = static_cast<HRESULT>(0x8000000EL);  // E_ILLEGAL_METHOD_CALL
// What every call answers that a cancellation cuts off.
inline constexpr HRESULT kJobCancelled = static_cast<HRESULT>(0x800704C7L);  // ERROR_CANCELLED

// Shared by all objects of one run of a filter: the behaviour, what was found, what is alive. The objects
// hold it, so it outlives the run when a filter keeps one of them. Any thread may call.
class RunContext {
  public:
    explicit RunContext(Behaviour behaviour = {}, std::shared_ptr<RunObserver> observer = nullptr);
    RunContext(const RunContext&) = delete;
    RunContext& operator=(const RunContext&) = delete;

    [[nodiscard]] const Behaviour& GetBehaviour() const noexcept { return m_behaviour; }
    [[nodiscard]] BreachLog& Breaches() noexcept { return m_breaches; }
    // Asked for by every call of the filter to an object of the kit.
    [[nodiscard]] FilterCalls& Calls();
    // What the observer is told by it takes time of the observer's own.
    class Told {
      public:
        Told(RunObserver& observer, OperationClock& clock) noexcept
            : m_time(clock, Share::Observer), m_observer(observer) {}
        RunObserver* operator->() const noexcept { return &m_observer; }

      private:
        OperationClock::Timed m_time;
        RunObserver& m_observer;
    };
    [[nodiscard]] Told Observer() noexcept { return {*m_observer, m_clock}; }
    // Who is told of each call with its time; null for nobody.
    [[nodiscard]] RunObserver* CallObserver() const noexcept { return m_pCallObserver; }
    // Of the filter's StartOperation.
    [[nodiscard]] OperationClock& Clock() noexcept { return m_clock; }

    // Records a breach and gives the code that the offending call answers.
    HRESULT Breach(Check check, std::string text, HRESULT code = kCallOutOfOrder);

    // A write stream that was let go without Close: a breach when the job succeeds, and what a failure leaves
    // behind when it does not.
    void LeftOpen(std::string text);
    [[nodiscard]] std::vector<std::string> LeftOpen() const;

    // A part of the input that could not be read. The filter cannot be blamed for what follows.
    void InputFailed(std::string text);
    [[nodiscard]] std::vector<std::string> InputFailures() const;

    // Where the bytes go that nobody needs before the end of the job. A failure of it is told, once, and
    // nothing of the job may be written then.
    [[nodiscard]] common::ByteStore& Store() noexcept { return m_store; }
    void StorageFailed(std::string text);
    [[nodiscard]] std::string StorageFailure() const;

    // Something that the filter asked for and that the job does not have, told once.
    void Missing(const std::string& what);
    [[nodiscard]] std::vector<std::string> MissingThings() const;

    // What is odd about what the filter did, but breaks no rule.
    void Found(Check check, std::string text);
    [[nodiscard]] std::vector<std::string> Findings() const;

    // A switch of the run ("short-reads") made a difference, or came to the place where it could.
    void Used(std::string_view key);
    [[nodiscard]] bool IsUsed(std::string_view key) const;

    // Whether InitializeFilter has not returned yet.
    void SetInitializing(bool isInitializing) noexcept { m_isInitializing = isInitializing; }
    [[nodiscard]] bool IsInitializing() const noexcept { return m_isInitializing; }

    void Cancel();
    [[nodiscard]] bool IsCancelled() const noexcept { return m_cancelled; }
    // Waits for the time given, or until the job is cancelled.
    void WaitUnlessCancelled(std::chrono::milliseconds time);

    // The kit's objects of this run that are not yet released, oldest first, each as "KIND NAME, N
    // references".
    [[nodiscard]] std::vector<std::string> LiveObjects() const;

  private:
    friend class LiveObject;

    const Behaviour m_behaviour;
    const std::shared_ptr<RunObserver> m_observer;
    RunObserver* const m_pCallObserver;
    OperationClock m_clock;
    BreachLog m_breaches;
    BreachLog m_leftOpen;
    BreachLog m_inputFailures;
    BreachLog m_findings;
    common::ByteStore m_store;
    mutable std::mutex m_storageLock;
    std::string m_storageFailure;
    mutable std::mutex m_usedLock;
    std::set<std::string, std::less<>> m_used;
    mutable std::mutex m_missingLock;
    std::vector<std::string> m_missing;
    std::atomic<bool> m_isInitializing = false;
    FilterCalls m_calls;
    std::atomic<bool> m_cancelled = false;
    std::mutex m_cancelLock;
    std::condition_variable m_cancelSignal;
    mutable std::mutex m_liveLock;
    unsigned m_made = 0;
    std::map<unsigned, const LiveObject*> m_live;  // by the order of their making
};

using ContextPtr = std::shared_ptr<RunContext>;

// A call of the filter to an object of the pipeline: while it lives, time is the pipeline's.
class CallTime {
  public:
    explicit CallTime(RunContext& context, const char* method = nullptr) noexcept
        : m_time(context.Clock(), Share::Pipeline), m_span(context.CallObserver(), context.Clock(), method) {}

  private:
    // What the observer is told by the span belongs into the call's time, and is then the observer's.
    OperationClock::Timed m_time;
    CallSpan m_span;
};

// The reference count of a COM object of the pipeline, and its entry among the living of its run.
// After its last release its memory is watched over.
class LiveObject : public common::CountedObject {
  public:
    static void* operator new(std::size_t size) { return TakeObjectMemory(size); }
    static void operator delete(void* pMemory, std::size_t size) noexcept { BuryObjectMemory(pMemory, size); }

  protected:
    // `description` is the kind and, where it has one, the part's name: "FixedPage /1.fpage".
    LiveObject(ContextPtr context, std::string description);
    ~LiveObject();

    [[nodiscard]] RunContext& Context() const noexcept { return *m_context; }
    [[nodiscard]] const ContextPtr& SharedContext() const noexcept { return m_context; }
    [[nodiscard]] CallTime PipelineTime(const char* method = nullptr) const noexcept {
        return CallTime(*m_context, method);
    }
    // Runs the body of a method of the object in the pipeline's time; what it throws becomes a code.
    template <typename Body>
    HRESULT Answer(Body&& body) const noexcept {
        const CallTime time = PipelineTime();
        return common::Guarded(std::forward<Body>(body));
    }
    // The failure that a test has planned for this query, S_OK when there is none. That an object is itself
    // is never refused.
    [[nodiscard]] HRESULT PlannedRefusal(REFIID iid) const noexcept;

  private:
    friend class RunContext;

    ContextPtr m_context;
    std::string m_description;
    unsigned m_serial = 0;
};

// The identity of a COM object of the pipeline. A test may have planned that it refuses one of its
// interfaces.
template <typename First, typename... Others>
class ComObject : public platform::ComIdentity<LiveObject, First, Others...> {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        const CallTime time = this->PipelineTime("QueryInterface");
        const HRESULT planned = this->PlannedRefusal(iid);
        if (SUCCEEDED(planned)) return Identity::QueryInterface(iid, ppObject);
        if (ppObject != nullptr) *ppObject = nullptr;
        return planned;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        // Only what takes the object apart is worth a look at the clock.
        if (this->References() != 1) return Identity::Release();
        const ContextPtr context = this->SharedContext();
        const CallTime time(*context, "Release");
        return Identity::Release();
    }

  protected:
    using Identity = platform::ComIdentity<LiveObject, First, Others...>;
    using Identity::Identity;
};

using platform::MakeObject;

}  // namespace devkit::pipeline
