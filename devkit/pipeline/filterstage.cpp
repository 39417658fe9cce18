#include "devkit/pipeline/filterstage.h"

#include <algorithm>
#include <utility>

#include "devkit/common/hresult.h"
#include "devkit/common/text.h"
#include "devkit/pipeline/pipelinethread.h"
#include "platform/utf.h"
#include "platform/variant.h"

namespace devkit::pipeline {
namespace {

using common::UniqueHandle;

// How long the provider waits for ShutdownOperation to return before it answers all the same: a filter whose
// ShutdownOperation waits for its own loop to end must not be locked up by the kit.
constexpr std::chrono::seconds kShutdownFirst{1};

// The references to an object, the caller's own among them, as far as its Release tells.
ULONG ReferencesTo(IUnknown& object) {
    object.AddRef();
    return object.Release();
}

// The calling thread, to wait for from another one.
UniqueHandle ThisThread() {
    HANDLE handle = nullptr;
    const HANDLE process = GetCurrentProcess();
    DuplicateHandle(process, GetCurrentThread(), process, &handle, SYNCHRONIZE, FALSE, 0);
    return UniqueHandle(handle);
}

bool HasEnded(const UniqueHandle& thread) {
    return thread != nullptr && WaitForSingleObject(thread.get(), 0) == WAIT_OBJECT_0;
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
    return SUCCEEDED(result) && !IsAbandoned() && !cancelled && senderClosed && inputFailures.empty() &&
           storageFailure.empty() &&
           std::all_of(shutdownCodes.begin(), shutdownCodes.end(),
                       [](HRESULT hr) { return SUCCEEDED(hr); }) &&
           (output == DataKind::Stream ||
            (sent(PartKind::XpsDocument) && sent(PartKind::FixedDocumentSequence)));
}

FilterStage::FilterStage(std::string name, std::shared_ptr<FilterSource> source, RunOptions options,
                         StageEnds ends, std::shared_ptr<RunSignal> signal)
    : m_options(std::move(options)),
      m_source(std::move(source)),
      m_ends(std::move(ends)),
      m_signal(std::move(signal)),
      m_context(std::make_shared<RunContext>(m_options.behaviour, m_options.observer)) {
    m_outcome.filter = std::move(name);
    m_outcome.output = m_ends.output;
}

void FilterStage::MakeObjects() {
    m_context->Observer()->CallBegins("the making of the filter");
    m_filter = m_source->CreateFilter();
    m_context->Observer()->CallEnds("the making of the filter");
    StreamEnd reader = MakeReader();
    StreamEnd writer = MakeWriter();
    m_control = MakeObject<PipelineControl>(m_context);
    m_bag = MakeObject<PropertyBag>(m_context);
    m_communicator = MakeObject<Communicator>(m_context, std::move(reader), std::move(writer));
    m_progress = pipeline::FillBag(*m_bag.Get(), m_context, m_options.properties);
}

StreamEnd FilterStage::MakeReader() {
    if (m_ends.bytes != nullptr) {
        return StreamEnd::Of<IPrintReadStream>(MakeObject<ReadStream>(m_context, "the input", m_ends.bytes));
    }
    m_provider = MakeObject<DocumentProvider>(m_context, m_ends.parts, m_options.extraParts,
                                              [stage = weak_from_this()](unsigned number) {
                                                  if (const auto alive = stage.lock())
                                                      alive->PartAsked(number);
                                              });
    return StreamEnd::Of<IXpsDocumentProvider>(m_provider);
}

StreamEnd FilterStage::MakeWriter() {
    if (m_ends.output == DataKind::Stream) {
        return StreamEnd::Of<IPrintWriteStream>(
            MakeObject<WriteStream>(m_context, "the output", m_ends.written));
    }
    m_consumer = MakeObject<DocumentConsumer>(m_context, m_ends.nextParts);
    return StreamEnd::Of<IXpsDocumentConsumer>(m_consumer);
}

HRESULT FilterStage::Initialize() {
    m_context->SetInitializing(true);
    m_outcome.initialized = CallFilter(*m_context, "InitializeFilter", [this] {
        return m_filter->InitializeFilter(m_communicator.Get(), m_bag.Get(), m_control.Get());
    });
    m_context->SetInitializing(false);
    m_context->Used("start");
    if (FAILED(m_outcome.initialized) || !m_options.startsOperation) m_outcome.result = m_outcome.initialized;
    return m_outcome.initialized;
}

void FilterStage::Start() {
    m_started = true;
    m_context->Used("apartment");
    m_pipelineThread = std::thread([stage = shared_from_this()] {
        {
            const std::lock_guard guard(stage->m_signal->lock);
            stage->m_operationThread = ThisThread();
        }
        const HRESULT returned =
            RunPipelineThread(*stage->m_filter.Get(), *stage->m_context,
                              stage->m_options.apartment == Apartment::SingleThreaded,
                              stage->m_options.onPipelineThread, stage->m_options.onApartmentEntered);
        if (stage->onEnded) stage->onEnded(returned);
        {
            const std::lock_guard guard(stage->m_signal->lock);
            stage->m_result = returned;
        }
        stage->m_signal->changed.notify_all();
    });
}

void FilterStage::StartShutdown() {
    m_shutdownStarted = true;
    m_context->Used("cancel");
    m_context->Cancel();
    m_shutdownThread = std::thread([stage = shared_from_this()] {
        {
            const std::lock_guard guard(stage->m_signal->lock);
            stage->m_shutdownHandle = ThisThread();
        }
        const HRESULT returned = stage->CallShutdownOperation();
        {
            const std::lock_guard guard(stage->m_signal->lock);
            stage->m_shutdownOperation = returned;
        }
        stage->m_signal->changed.notify_all();
    });
}

HRESULT FilterStage::CallShutdownOperation() {
    const auto call = [stage = shared_from_this()] {
        return CallFilter(*stage->m_context, "ShutdownOperation",
                          [&] { return stage->m_filter->ShutdownOperation(); });
    };
    if (!m_options.cancelTwice) return call();
    // On the heap: the filter may end this thread, and the other one goes on.
    const auto second = std::make_shared<std::atomic<HRESULT>>(E_UNEXPECTED);
    std::thread other([call, second] { *second = call(); });
    const HRESULT first = call();
    other.join();
    return FAILED(first) ? first : second->load();
}

bool FilterStage::HasAskedForShutdown() const {
    return std::ranges::any_of(m_control->ShutdownCodes(), [](HRESULT hr) { return FAILED(hr); });
}

bool FilterStage::HasFailed() const {
    return m_threadEnded || (m_result && (FAILED(*m_result) || HasAskedForShutdown()));
}

void FilterStage::LookAtThreads() {
    if (IsRunning()) m_threadEnded = HasEnded(m_operationThread);
    if (m_shutdownStarted && !m_shutdownOperation) m_shutdownEnded = HasEnded(m_shutdownHandle);
}

void FilterStage::PartAsked(unsigned number) {
    m_context->Observer()->PartAsked(number);
    m_asked = number;
    if (onAsked) onAsked(number);
}

void FilterStage::WaitForShutdown(std::unique_lock<std::mutex>& guard, bool isStartEnough) {
    m_signal->changed.wait_for(guard, kShutdownFirst, [this, isStartEnough] {
        return isStartEnough ? m_shutdownStarted : m_shutdownOperation.has_value();
    });
}

void FilterStage::Join() {
    m_outcome.cancelled = m_shutdownStarted;
    m_outcome.shutdownOperation = m_shutdownOperation;
    m_outcome.hung = !IsOver();
    m_outcome.threadEnded = m_threadEnded || m_shutdownEnded;
    if (m_threadEnded) m_outcome.result = E_UNEXPECTED;
    m_outcome.operation = m_result;
    if (m_result) m_outcome.result = *m_result;
    LetGo(m_pipelineThread, m_result || m_threadEnded);
    LetGo(m_shutdownThread, m_shutdownOperation || m_shutdownEnded);
}

void FilterStage::Report() {
    m_outcome.shutdownCodes = m_control->ShutdownCodes();
    m_outcome.asked = m_asked;
    m_outcome.finishedCount = m_control->FinishedCount();
    m_outcome.senderClosed = m_consumer ? m_consumer->IsClosed() : m_ends.written->IsClosed();
    if (m_consumer) m_outcome.parts = m_consumer->TakeSent();
    if (m_provider) m_outcome.lastPart = m_provider->LastGiven();
    m_outcome.inputFailures = m_context->InputFailures();
    m_outcome.storageFailure = m_context->StorageFailure();
    m_outcome.calls = m_context->Calls().Text();
    m_outcome.callCounts = m_context->Calls().Counts();
    m_outcome.missing = m_context->MissingThings();
    if (m_progress) m_outcome.progress = m_progress->Counts();
    m_outcome.times = m_context->Clock().Times();
    m_outcome.unstruckFaults = m_context->Calls().UnstruckFaults();
    ReportBreaches();
    ReportFindings();
}

void FilterStage::ReportBreaches() {
    const std::string limit = std::to_string(m_options.stopTimeout.count()) + " ms";
    const bool isWithoutSequence =
        m_consumer && std::ranges::none_of(m_outcome.parts, [](const SentPart& part) {
            return part.kind == PartKind::FixedDocumentSequence;
        });
    if (m_outcome.hung && m_outcome.shutdownOperation) {
        m_context->Breach(Check::HangOperation,
                          "StartOperation did not return within " + limit + " of ShutdownOperation");
    } else if (m_outcome.hung) {
        m_context->Breach(Check::HangShutdown,
                          "ShutdownOperation did not return within " + limit + " of its call");
    } else if (m_started && !m_threadEnded && m_consumer && m_communicator->WriterGiven() &&
               !m_outcome.senderClosed) {
        m_context->Breach(Check::SenderOpen, "CloseSender was never called");
    } else if (m_started && SUCCEEDED(m_outcome.result) && !m_outcome.cancelled && isWithoutSequence) {
        m_context->Breach(Check::SequenceMissing,
                          "the filter succeeded without having sent the FixedDocumentSequence");
    }
}

void FilterStage::ReportFindings() {
    if (FAILED(m_outcome.result) || m_outcome.cancelled || !m_consumer) return;
    for (const std::string& part : m_consumer->Unattached())
        m_context->Found(Check::UnusedPart, "the filter made " + part + " and neither attached nor sent it");
}

std::vector<std::string> FilterStage::UnusedSwitches() const {
    std::vector<std::string> unused = m_options.switches;
    std::erase_if(unused, [this](const std::string& text) {
        return m_context->IsUsed(text.substr(0, text.find('=')));
    });
    return unused;
}

void FilterStage::Release() {
    if (m_outcome.IsAbandoned()) return;
    m_context->Observer()->CallBegins("the last release");
    if (m_consumer) m_consumer->ReleaseForeignParts();
    const ULONG references = ReferencesTo(*m_filter.Get());
    if (references != 1) {
        m_context->Breach(Check::FilterLeak, "the filter is still referenced " +
                                                 std::to_string(references - 1) +
                                                 " times beside the host's own reference");
    }
    m_context->Used("last-release");
    if (m_options.lastRelease == LastRelease::OtherThread) {
        std::thread([this] { m_filter.Reset(); }).join();
    }
    m_filter.Reset();
    m_communicator.Reset();
    m_progress.Reset();
    m_bag.Reset();
    m_control.Reset();
    m_consumer.Reset();
    m_provider.Reset();
    m_context->Observer()->CallEnds("the last release");
}

void FilterStage::LookForLeftovers() {
    if (m_outcome.IsAbandoned()) return;
    for (const std::string& object : m_context->LiveObjects())
        m_context->Breach(Check::Leak, "never released: " + object);
    const auto& userToken = m_options.properties.userToken;
    if (userToken != nullptr && !userToken->IsOpen())
        m_context->Breach(Check::Token, "the filter closed the handle of UserSecurityToken");
    if (const std::size_t threads = m_source->ThreadsLeft(); threads != 0) {
        m_context->Breach(Check::ThreadLeft, common::Counted(threads, "thread") +
                                                 " of the filter's own ran on after its last release");
    }
    const HRESULT canUnload = m_source->CanUnloadNow();
    if (canUnload != S_OK) {
        m_context->Breach(Check::ModuleLeak, "DllCanUnloadNow answers " + common::Describe(canUnload) +
                                                 " after the last release");
    }
    // Of a filter that is let go unused nobody has wanted an output.
    if (!m_started || FAILED(m_outcome.result) || m_outcome.cancelled) return;
    for (const std::string& stream : m_context->LeftOpen()) m_context->Breach(Check::StreamLeft, stream);
}

RunOutcome FilterStage::TakeOutcome() {
    m_outcome.breaches = m_context->Breaches().Lines();
    m_outcome.findings = m_context->Findings();
    m_outcome.unusedSwitches = UnusedSwitches();
    return std::move(m_outcome);
}

std::string FilterStage::LastPart() const { return m_provider ? m_provider->LastGiven() : std::string(); }

}  // namespace devkit::pipeline
