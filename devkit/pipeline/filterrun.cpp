#include "devkit/pipeline/filterrun.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "devkit/common/hresult.h"
#include "devkit/pipeline/communicator.h"
#include "devkit/pipeline/documentconsumer.h"
#include "devkit/pipeline/pipelinecontrol.h"
#include "devkit/pipeline/pipelinethread.h"
#include "devkit/pipeline/propertybags.h"
#include "devkit/pipeline/streams.h"
#include "platform/utf.h"
#include "platform/variant.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;
using Clock = std::chrono::steady_clock;

// How long the provider waits for ShutdownOperation to return before it answers all the same: a filter whose
// ShutdownOperation waits for its own loop to end must not be locked up by the kit.
constexpr std::chrono::seconds kShutdownFirst{1};

// Puts an object that the bag alone then holds.
template <typename Object, typename... Arguments>
platform::ComPtr<Object> PutObject(PropertyBag& bag, const wchar_t* name, Arguments&&... arguments) {
    platform::ComPtr<Object> object = MakeObject<Object>(std::forward<Arguments>(arguments)...);
    bag.Put(name, platform::Variant(static_cast<IUnknown*>(object.Get())).Get());
    return object;
}

void PutTexts(PropertyBag& bag, const JobProperties& properties) {
    const std::pair<const wchar_t*, const std::optional<std::wstring>&> texts[] = {
        {L"PrinterName", properties.printerName},
        {L"PrintOutputFileName", properties.outputFile},
        {L"DriverMultiContentType", properties.contentType}};
    for (const auto& [name, text] : texts) {
        if (text) bag.PutValue(name, *text);
    }
}

void PutStreams(PropertyBag& bag, const ContextPtr& context, const JobProperties& properties) {
    const auto put = [&](const wchar_t* name, const Bytes& bytes, Available available) {
        if (bytes == nullptr) return;
        PutObject<ReadStreamFactory>(bag, name, context, platform::ToUtf8(name), bytes, available);
    };
    put(L"PerUserPrintTicket", properties.userTicket, Available::Always);
    put(L"JobPrintTicket", properties.jobTicket, Available::AfterInitialize);
    put(L"PrintDeviceCapabilities", properties.deviceCapabilities, Available::Always);
}

// Gives the report that counts, null when the job has none.
ComPtr<ProgressReport> FillBag(PropertyBag& bag, const ContextPtr& context, const JobProperties& properties) {
    PutTexts(bag, properties);
    PutStreams(bag, context, properties);
    if (properties.printerHandle) bag.PutHandle(L"PrinterHandle", *properties.printerHandle);
    if (properties.userToken != nullptr) bag.PutHandle(L"UserSecurityToken", properties.userToken->Get());
    if (properties.jobId) bag.PutValue(L"PrintJobId", *properties.jobId);
    if (properties.driverValues) {
        PutObject<DriverBag>(bag, L"DriverPropertyBag", context, "DriverPropertyBag",
                             *properties.driverValues);
    }
    if (properties.queueValues) {
        PutObject<DriverBag>(bag, L"QueuePropertyBag", context, "QueuePropertyBag", *properties.queueValues);
    }
    if (properties.hasPrintClassFactory) PutObject<PrintClassFactory>(bag, L"PrintClassFactory", context);
    ComPtr<ProgressReport> progress;
    if (properties.hasProgressReport) progress = PutObject<ProgressReport>(bag, L"ProgressReport", context);
    for (const auto& [name, value] : properties.more) bag.PutValue(name, value);
    return progress;
}

// The references to an object, the caller's own among them, as far as its Release tells.
ULONG ReferencesTo(IUnknown& object) {
    object.AddRef();
    return object.Release();
}

// Joins a thread that has ended its work, leaves one that hangs to itself.
void LetGo(std::thread& thread, bool ended) {
    if (!thread.joinable()) return;
    if (ended) {
        thread.join();
    } else {
        thread.detach();
    }
}

}  // namespace

bool RunOutcome::IsWhole() const {
    const auto sent = [this](PartKind kind) {
        return std::any_of(parts.begin(), parts.end(),
                           [kind](const SentPart& part) { return part.kind == kind; });
    };
    return SUCCEEDED(result) && !hung && !cancelled && senderClosed && inputFailures.empty() &&
           std::all_of(shutdownCodes.begin(), shutdownCodes.end(),
                       [](HRESULT hr) { return SUCCEEDED(hr); }) &&
           sent(PartKind::XpsDocument) && sent(PartKind::FixedDocumentSequence);
}

// What the calling thread, the pipeline thread and the thread of ShutdownOperation share. A thread that hangs
// keeps it alive.
struct FilterRun::State : std::enable_shared_from_this<FilterRun::State> {
    State(std::shared_ptr<FilterSource> filterSource, std::shared_ptr<const JobInput> jobInput,
          RunOptions runOptions)
        : options(std::move(runOptions)),
          source(std::move(filterSource)),
          input(std::move(jobInput)),
          context(std::make_shared<RunContext>(options.behaviour)) {}

    void MakeObjects();
    void Initialize();
    void StartThread();
    void StartShutdown();
    void WaitForEnd();
    void PartAsked(unsigned number);
    void CallOnPart(unsigned number);
    void CollectReports();
    void ReleaseAll();
    void LookForLeaks();
    void LookForOpenStreams();

    const RunOptions options;
    const std::shared_ptr<FilterSource> source;
    const std::shared_ptr<const JobInput> input;
    const ContextPtr context;
    ComPtr<DocumentProvider> provider;
    ComPtr<DocumentConsumer> consumer;
    ComPtr<PipelineControl> control;
    ComPtr<PropertyBag> bag;
    ComPtr<ProgressReport> progress;  // null without
    ComPtr<Communicator> communicator;
    ComPtr<IPrintPipelineFilter> filter;
    RunOutcome outcome;
    std::thread pipelineThread;
    std::thread shutdownThread;

    std::mutex hookLock;
    bool abandoned = false;  // the filter hangs: what the caller has given may be gone when it wakes up

    std::mutex lock;
    std::condition_variable changed;
    std::optional<HRESULT> result;             // StartOperation returned
    bool cancelWanted = false;                 // somebody asked for a cancellation
    bool shutdownStarted = false;              // ShutdownOperation was called
    std::optional<HRESULT> shutdownOperation;  // ShutdownOperation returned
};

FilterRun::FilterRun(std::shared_ptr<FilterSource> source, std::shared_ptr<const JobInput> input,
                     RunOptions options)
    : m_state(std::make_shared<State>(std::move(source), std::move(input), std::move(options))) {}

FilterRun::~FilterRun() = default;

RunOutcome FilterRun::Run() {
    State& state = *m_state;
    state.MakeObjects();
    state.Initialize();
    if (SUCCEEDED(state.outcome.initialized)) {
        state.StartThread();
        state.WaitForEnd();
    }
    state.CollectReports();
    if (!state.outcome.hung) {
        state.ReleaseAll();
        state.LookForLeaks();
        state.LookForOpenStreams();
    }
    state.outcome.breaches = state.context->Breaches().Lines();
    return std::move(state.outcome);
}

void FilterRun::Cancel() {
    {
        const std::lock_guard guard(m_state->lock);
        m_state->cancelWanted = true;
    }
    m_state->changed.notify_all();
}

std::string FilterRun::LastPart() const {
    return m_state->provider ? m_state->provider->LastGiven() : std::string();
}

void FilterRun::State::MakeObjects() {
    filter = source->CreateFilter();
    provider = MakeObject<DocumentProvider>(context, input, options.extraParts,
                                            [state = weak_from_this()](unsigned number) {
                                                if (const auto alive = state.lock()) alive->PartAsked(number);
                                            });
    consumer = MakeObject<DocumentConsumer>(context);
    control = MakeObject<PipelineControl>(context);
    bag = MakeObject<PropertyBag>(context);
    communicator = MakeObject<Communicator>(context, provider, consumer);
    progress = FillBag(*bag.Get(), context, options.properties);
}

void FilterRun::State::Initialize() {
    context->SetInitializing(true);
    outcome.initialized = CallFilter(*context, "InitializeFilter", [this] {
        return filter->InitializeFilter(communicator.Get(), bag.Get(), control.Get());
    });
    context->SetInitializing(false);
    if (FAILED(outcome.initialized)) outcome.result = outcome.initialized;
}

void FilterRun::State::StartThread() {
    pipelineThread = std::thread([state = shared_from_this()] {
        const HRESULT returned = RunPipelineThread(*state->filter.Get(), *state->context,
                                                   state->options.apartment == Apartment::SingleThreaded,
                                                   state->options.onPipelineThread);
        {
            const std::lock_guard guard(state->lock);
            state->result = returned;
        }
        state->changed.notify_all();
    });
}

void FilterRun::State::StartShutdown() {
    context->Cancel();
    shutdownThread = std::thread([state = shared_from_this()] {
        const HRESULT returned = CallFilter(*state->context, "ShutdownOperation",
                                            [&] { return state->filter->ShutdownOperation(); });
        {
            const std::lock_guard guard(state->lock);
            state->shutdownOperation = returned;
        }
        state->changed.notify_all();
    });
}

void FilterRun::State::WaitForEnd() {
    const bool limited = options.timeout.count() > 0;
    Clock::time_point deadline = limited ? Clock::now() + options.timeout : Clock::time_point::max();
    std::unique_lock guard(lock);
    while (!result || (shutdownStarted && !shutdownOperation)) {
        if (cancelWanted && !shutdownStarted && !result) {
            shutdownStarted = true;
            deadline = Clock::now() + options.stopTimeout;
            StartShutdown();
            changed.notify_all();
        }
        if (deadline == Clock::time_point::max()) {
            changed.wait(guard);
        } else if (changed.wait_until(guard, deadline) == std::cv_status::timeout &&
                   Clock::now() >= deadline) {
            if (shutdownStarted) break;
            cancelWanted = true;
        }
    }
    outcome.cancelled = shutdownStarted;
    outcome.shutdownOperation = shutdownOperation;
    outcome.hung = !result || (shutdownStarted && !shutdownOperation);
    if (result) outcome.result = *result;
    guard.unlock();
    if (outcome.hung) {
        const std::lock_guard hook(hookLock);
        abandoned = true;
    }
    LetGo(pipelineThread, result.has_value());
    LetGo(shutdownThread, shutdownOperation.has_value());
}

void FilterRun::State::PartAsked(unsigned number) {
    CallOnPart(number);
    if (number != options.cancelAt) return;
    std::unique_lock guard(lock);
    cancelWanted = true;
    changed.notify_all();
    changed.wait_for(guard, kShutdownFirst, [this] {
        return options.cancelConcurrently ? shutdownStarted : shutdownOperation.has_value();
    });
}

void FilterRun::State::CallOnPart(unsigned number) {
    const std::lock_guard guard(hookLock);
    if (options.onPart != nullptr && !abandoned) options.onPart(number);
}

void FilterRun::State::CollectReports() {
    outcome.shutdownCodes = control->ShutdownCodes();
    outcome.finishedCount = control->FinishedCount();
    outcome.senderClosed = consumer->IsClosed();
    outcome.parts = consumer->Sent();
    outcome.lastPart = provider->LastGiven();
    outcome.inputFailures = context->InputFailures();
    outcome.calls = context->Calls().Text();
    outcome.missing = context->MissingThings();
    if (progress) outcome.progress = progress->Counts();
    outcome.unstruckFaults = context->Calls().UnstruckFaults();
    const std::string limit = std::to_string(options.stopTimeout.count()) + " ms of ";
    if (outcome.hung && outcome.shutdownOperation) {
        context->Breach("StartOperation did not return within " + limit + "ShutdownOperation");
    } else if (outcome.hung) {
        context->Breach("ShutdownOperation did not return within " + limit + "its call");
    } else if (communicator->WriterGiven() && !outcome.senderClosed) {
        context->Breach("CloseSender was never called");
    } else if (SUCCEEDED(outcome.result) && !outcome.cancelled &&
               std::none_of(outcome.parts.begin(), outcome.parts.end(), [](const SentPart& part) {
                   return part.kind == PartKind::FixedDocumentSequence;
               })) {
        context->Breach("the filter succeeded without having sent the FixedDocumentSequence");
    }
}

void FilterRun::State::ReleaseAll() {
    consumer->ReleaseForeignParts();
    const ULONG references = ReferencesTo(*filter.Get());
    if (references != 1) {
        context->Breach("the filter is still referenced " + std::to_string(references - 1) +
                        " times beside the host's own reference");
    }
    if (options.lastRelease == LastRelease::OtherThread) {
        std::thread([this] { filter.Reset(); }).join();
    }
    filter.Reset();
    communicator.Reset();
    progress.Reset();
    bag.Reset();
    control.Reset();
    consumer.Reset();
    provider.Reset();
}

void FilterRun::State::LookForOpenStreams() {
    if (FAILED(outcome.result) || outcome.cancelled) return;
    for (const std::string& stream : context->LeftOpen()) context->Breach(stream);
}

void FilterRun::State::LookForLeaks() {
    for (const std::string& object : context->LiveObjects()) context->Breach("never released: " + object);
    const auto& userToken = options.properties.userToken;
    if (userToken != nullptr && !userToken->IsOpen())
        context->Breach("the filter closed the handle of UserSecurityToken");
    const HRESULT canUnload = source->CanUnloadNow();
    if (canUnload != S_OK) {
        context->Breach("DllCanUnloadNow answers " + common::Describe(canUnload) + " after the last release");
    }
}

}  // namespace devkit::pipeline
