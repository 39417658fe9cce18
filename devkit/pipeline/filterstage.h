#pragma once

#include "platform/windows.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "devkit/common/uniquehandle.h"
#include "devkit/pipeline/communicator.h"
#include "devkit/pipeline/documentconsumer.h"
#include "devkit/pipeline/documentprovider.h"
#include "devkit/pipeline/filtermodule.h"
#include "devkit/pipeline/pipelinecontrol.h"
#include "devkit/pipeline/propertybags.h"
#include "devkit/pipeline/runoptions.h"
#include "devkit/pipeline/streams.h"

namespace devkit::pipeline {

// What goes between two filters.
enum class DataKind {
    Xps,     // parts: IXpsDocumentProvider, IXpsDocumentConsumer
    Stream,  // bytes: IPrintReadStream, IPrintWriteStream
};

// What became of one filter of a run.
struct RunOutcome {
    std::string filter;  // its name in the chain
    DataKind output = DataKind::Xps;
    HRESULT initialized = E_PENDING;     // InitializeFilter; StartOperation is not called when it failed
    HRESULT result = E_PENDING;          // StartOperation, or what stopped the run before it
    std::optional<HRESULT> operation;    // what StartOperation answered, when it came back
    std::vector<HRESULT> shutdownCodes;  // RequestShutdown, in order
    unsigned asked = 0;                  // how often the filter asked for a part
    unsigned finishedCount = 0;          // FilterFinished
    std::optional<HRESULT> shutdownOperation;  // what ShutdownOperation answered, when it was called
    bool hung = false;                         // StartOperation did not return in time
    bool threadEnded = false;                  // a thread ended in StartOperation or ShutdownOperation
    bool cancelled = false;             // ShutdownOperation came: a cancellation, or another filter's failure
    bool senderClosed = false;          // CloseSender, or Close of the writer, was called
    std::vector<std::string> breaches;  // one line each
    std::vector<std::string> inputFailures;  // parts of the input that could not be read, one line each
    std::string storageFailure;              // why what the filter wrote could not be kept; empty when it was
    SentParts parts;                         // in sending order
    Bytes bytes;  // what the last filter wrote as a stream; a package where its parts belong to no document
                  // of the caller
    std::string lastPart;               // what the filter was given last: "FixedPage /1.fpage"
    std::vector<std::string> calls;     // when the behaviour keeps them
    CallCounts callCounts;              // of the filter to the pipeline's objects
    std::vector<std::string> missing;   // what the filter asked for and the job does not have: "property X"
    ProgressCounts progress;            // what the filter reported
    std::vector<std::string> findings;  // what is odd, but breaks no rule
    OperationTimes times;               // of StartOperation
    std::vector<std::string> unstruckFaults;  // "GetXpsPart@9=0x80004005 E_FAIL"
    std::vector<std::string> unusedSwitches;  // "short-reads=7": those that made no difference

    // The filter's threads may still be at it, or have left what they held: nothing of it can be released.
    [[nodiscard]] bool IsAbandoned() const noexcept { return hung || threadEnded; }
    // All came through: the output may be written.
    [[nodiscard]] bool IsWhole() const;
};

// Tells the thread that waits for a run of what its stages do, and guards their states.
struct RunSignal {
    std::mutex lock;
    std::condition_variable changed;
};

// What a stage reads and writes. Of the input and of the output one is set, as its kind is; `nextParts` is
// null behind the last stage.
struct StageEnds {
    std::shared_ptr<PartSource> parts;
    std::shared_ptr<ReadableBytes> bytes;
    DataKind output = DataKind::Xps;
    std::shared_ptr<PartChannel> nextParts;
    std::shared_ptr<WritableBytes> written;
};

// One filter in its place in a run: makes the filter and all that it is given, runs it on a pipeline thread
// of its own and looks at what is left over. A thread that hangs keeps the stage alive.
class FilterStage : public std::enable_shared_from_this<FilterStage> {
  public:
    FilterStage(std::string name, std::shared_ptr<FilterSource> source, RunOptions options, StageEnds ends,
                std::shared_ptr<RunSignal> signal);

    // Called on the pipeline thread with the number of each part that is asked for, before it is given.
    std::function<void(unsigned)> onAsked;
    // Called on the pipeline thread when StartOperation has returned, with what it returned.
    std::function<void(HRESULT)> onEnded;

    // Throws FilterError.
    void MakeObjects();
    // S_OK, or what keeps the stage from being started.
    HRESULT Initialize();
    void Start();
    // Cancels the stage and calls ShutdownOperation on a thread of its own. With the signal's lock.
    void StartShutdown();

    // With the signal's lock.
    [[nodiscard]] bool IsRunning() const noexcept { return m_started && !m_result && !m_threadEnded; }
    [[nodiscard]] bool HasFailed() const;
    [[nodiscard]] bool IsOver() const noexcept {
        return !IsRunning() && (!m_shutdownStarted || m_shutdownOperation || m_shutdownEnded);
    }
    // With the signal's lock: notices when the filter has ended a thread, which then tells of nothing.
    void LookAtThreads();
    // With the signal's lock; waits, for a while, until ShutdownOperation has returned or, when that is
    // enough, is about to be called.
    void WaitForShutdown(std::unique_lock<std::mutex>& guard, bool isStartEnough);

    // Ends the stage's part in the run, without the lock: joins its threads, leaves those that hang to
    // themselves.
    void Join();
    // Writes down what the filter did, then releases all unless the filter hangs, then looks for what is
    // left.
    void Report();
    void Release();
    void LookForLeftovers();
    [[nodiscard]] RunOutcome TakeOutcome();

    [[nodiscard]] const ContextPtr& Context() const noexcept { return m_context; }
    [[nodiscard]] SentParts Sent() const { return m_consumer->Sent(); }
    [[nodiscard]] bool HasAskedForShutdown() const;
    [[nodiscard]] std::string LastPart() const;

  private:
    // Of two calls at the same time the first failure.
    [[nodiscard]] HRESULT CallShutdownOperation();
    void PartAsked(unsigned number);
    void ReportBreaches();
    void ReportFindings();
    [[nodiscard]] std::vector<std::string> UnusedSwitches() const;
    [[nodiscard]] StreamEnd MakeReader();
    [[nodiscard]] StreamEnd MakeWriter();

    const RunOptions m_options;
    const std::shared_ptr<FilterSource> m_source;
    const StageEnds m_ends;
    const std::shared_ptr<RunSignal> m_signal;
    const ContextPtr m_context;
    platform::ComPtr<DocumentProvider> m_provider;  // null for a stream
    platform::ComPtr<DocumentConsumer> m_consumer;  // null for a stream
    platform::ComPtr<PipelineControl> m_control;
    platform::ComPtr<PropertyBag> m_bag;
    platform::ComPtr<ProgressReport> m_progress;  // null without
    platform::ComPtr<Communicator> m_communicator;
    platform::ComPtr<IPrintPipelineFilter> m_filter;
    RunOutcome m_outcome;
    std::atomic<unsigned> m_asked = 0;
    std::thread m_pipelineThread;
    std::thread m_shutdownThread;

    bool m_started = false;
    common::UniqueHandle m_operationThread;  // the thread of StartOperation, once it runs
    bool m_threadEnded = false;              // the thread is gone, and StartOperation has not returned
    std::optional<HRESULT> m_result;         // StartOperation returned
    bool m_shutdownStarted = false;
    common::UniqueHandle m_shutdownHandle;       // the thread of ShutdownOperation, once it runs
    bool m_shutdownEnded = false;                // the thread is gone, and ShutdownOperation has not returned
    std::optional<HRESULT> m_shutdownOperation;  // ShutdownOperation returned
};

}  // namespace devkit::pipeline
