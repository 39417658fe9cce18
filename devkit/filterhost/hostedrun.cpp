#include "devkit/filterhost/hostedrun.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/file.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/runtrace.h"
#include "devkit/filterhost/sentpartcheck.h"
#include "devkit/pipeline/job.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using package::XpsDocument;
using pipeline::RunOutcome;
using Path = std::filesystem::path;
using Clock = std::chrono::steady_clock;

double SecondsOf(std::chrono::nanoseconds time) { return std::chrono::duration<double>(time).count(); }

// The provider's calls are made by the filter, and stand in its time until somebody says whose they are.
void Reassign(pipeline::FilterRun& run, const prntvpt::ProviderCall& call) {
    const auto now = std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch());
    run.Reassign(pipeline::Share::TicketProvider, call.own);
    run.Reassign(pipeline::Share::Observer, now - call.start - call.own - call.inStreams);
}

std::size_t CountPages(const package::XpsTree& tree) {
    std::size_t pages = 0;
    for (const package::FixedDocument& document : tree.sequence.documents) pages += document.pages.size();
    return pages;
}

// Tells what the pipeline sees of a filter. Of a chain what comes in is what the first filter gets, and what
// comes out what the last one sends; the rest is told with the filter's name. A part is looked at when it is
// sent, so that what a filter does later cannot undo it.
class Teller final : public pipeline::RunObserver {
  public:
    // `name` is the filter's in a chain of several, and empty without; `trace` is null without one.
    Teller(EventSink sink, const std::string& name, bool isFirst, bool isLast, bool recordsTickets,
           std::shared_ptr<RunTrace> trace)
        : m_sink(std::move(sink)),
          m_trace(std::move(trace)),
          m_of(name.empty() ? "" : " of " + name),
          m_by(name.empty() ? "" : name + ": "),
          m_isFirst(isFirst),
          m_isLast(isLast),
          m_recordsTickets(recordsTickets) {}

    void CallBegins(const char* call) override {
        m_sink(events::CallBegun{call + m_of});
        if (m_trace) m_trace->CallBegins(call);
    }
    void CallEnds(const char* call) override {
        if (m_trace) m_trace->CallEnds(call);
        m_sink(events::CallEnded{call + m_of});
    }
    void PartAsked(unsigned number) override {
        if (m_isFirst) m_sink(events::PartAsked{number});
    }
    void PartGiven(const std::string& part) override {
        if (m_isFirst) m_sink(events::PartGiven{part});
        if (m_trace) m_trace->PartGiven(part);
    }
    void PartSent(const pipeline::SentPart& part) override {
        try {
            for (const SentPartFinding& finding : m_check.Look(part)) Found(finding.check, finding.text);
            if (!m_isLast) return;
            m_sink(events::PartSent{LookAtPart(part), m_recordsTickets ? ReadTickets(part) : TicketTexts()});
        } catch (const common::Error& error) {
            m_sink(events::InputFailed{error.what()});
        }
    }
    void Breached(common::Check check, const std::string& text) override {
        m_sink(events::Breached{IdOf(check), m_by + text});
    }
    void Found(common::Check check, const std::string& text) override {
        m_sink(events::Found{IdOf(check), m_by + text});
    }
    [[nodiscard]] bool WantsCalls() const noexcept override { return m_trace != nullptr; }
    void CallMade(const pipeline::MadeCallSpan& call) override { m_trace->CallMade(call); }
    void InputFailed(const std::string& text) override { m_sink(events::InputFailed{m_by + text}); }
    void Called() override {
        // Once a second is often enough for whoever watches.
        const Clock::rep now = Clock::now().time_since_epoch().count();
        Clock::rep next = m_next;
        if (now < next) return;
        constexpr Clock::duration kInterval = std::chrono::seconds(1);
        if (m_next.compare_exchange_strong(next, now + kInterval.count())) m_sink(events::Alive{});
    }

  private:
    static std::string IdOf(common::Check check) { return std::string(common::FactsOf(check).id); }

    const EventSink m_sink;
    const std::shared_ptr<RunTrace> m_trace;
    SentPartCheck m_check;
    const std::string m_of;
    const std::string m_by;
    const bool m_isFirst;
    const bool m_isLast;
    const bool m_recordsTickets;
    std::atomic<Clock::rep> m_next = 0;
};

// Whether every heap of the process is whole, as far as the system can tell.
bool HeapsAreWhole() {
    std::array<HANDLE, 64> heaps{};
    const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    for (DWORD i = 0; i < std::min<DWORD>(count, static_cast<DWORD>(heaps.size())); ++i) {
        if (!HeapValidate(heaps[i], 0, nullptr)) return false;
    }
    return true;
}

events::Failed CannotWrite(const std::string& why) {
    return {"the output cannot be written: " + why, WrongUsage};
}

void WriteOutput(XpsDocument& document, RunOutcome& last, const Job& job, const EventSink& sink) try {
    if (last.bytes != nullptr) {
        common::OutputFile file(*job.output);
        file.WriteAt(0, last.bytes->data(), last.bytes->size());
        file.Commit();
    } else {
        pipeline::ApplySentParts(document, std::exchange(last.parts, {}));
        std::move(document).Save(*job.output);
    }
    sink(events::OutputWritten{job.outputName});
} catch (const common::Error& error) {
    sink(CannotWrite(error.what()));
}

bool HasFailed(const RunOutcome& outcome) {
    return FAILED(outcome.result) || outcome.IsAbandoned() ||
           std::ranges::any_of(outcome.shutdownCodes, [](HRESULT hr) { return FAILED(hr); });
}

// The one whose failure brought the others down, the first that failed where all were cancelled, or the last.
const RunOutcome& DecidingOne(const std::vector<RunOutcome>& outcomes) {
    const auto isCause = [](const RunOutcome& outcome) { return HasFailed(outcome) && !outcome.cancelled; };
    const auto cause = std::ranges::find_if(outcomes, isCause);
    if (cause != outcomes.end()) return *cause;
    const auto failed = std::ranges::find_if(outcomes, HasFailed);
    return failed != outcomes.end() ? *failed : outcomes.back();
}

RunEnd EndOf(const std::vector<RunOutcome>& outcomes) {
    const auto isAny = [&outcomes](auto flag) { return std::ranges::any_of(outcomes, flag); };
    const RunOutcome& deciding = DecidingOne(outcomes);
    RunEnd end;
    if (outcomes.size() > 1) end.filter = deciding.filter;
    end.initialized = deciding.initialized;
    end.result = deciding.result;
    end.shutdownCodes = deciding.shutdownCodes;
    end.hung = isAny(&RunOutcome::hung);
    end.threadEnded = isAny(&RunOutcome::threadEnded);
    end.cancelled = deciding.cancelled;
    end.whole = std::ranges::all_of(outcomes, &RunOutcome::IsWhole);
    if (outcomes.back().output == pipeline::DataKind::Stream && outcomes.back().bytes != nullptr)
        end.bytes = outcomes.back().bytes->size();
    for (const RunOutcome& outcome : outcomes) {
        const bool isCalled = outcome.initialized != E_PENDING;
        end.filters.push_back({outcome.filter, isCalled ? std::optional(outcome.initialized) : std::nullopt,
                               outcome.operation, outcome.shutdownOperation, outcome.shutdownCodes,
                               outcome.callCounts});
    }
    return end;
}

// What every filter of the chain leaves over.
std::vector<std::string> InEach(const std::vector<RunOutcome>& outcomes,
                                std::vector<std::string> RunOutcome::*list) {
    std::vector<std::string> common = outcomes.front().*list;
    std::erase_if(common, [&](const std::string& text) {
        return std::ranges::any_of(outcomes, [&](const RunOutcome& outcome) {
            return std::ranges::find(outcome.*list, text) == (outcome.*list).end();
        });
    });
    return common;
}

// The switches of the simulated provider that cannot have made a difference: of how it treats tickets when it
// merged none, of its handles when it opened none. The others show in the user's ticket as well.
std::vector<std::string> IdleSwitches(const HostSettings& settings, const prntvpt::ProviderReport& report) {
    static constexpr std::array<std::string_view, 8> kOfMerging{
        "private", "strict",   "duplicates",   "mixed-values",
        "orphans", "fallback", "option-props", "drop-is-conflict"};
    const bool merged = report.counts.contains("PTMergeAndValidatePrintTicket");
    std::vector<std::string> idle = settings.providerSwitches;
    std::erase_if(idle, [&](const std::string& text) {
        const std::string_view key = std::string_view(text).substr(0, text.find('='));
        if (key == "thread") return !report.counts.empty();
        return merged || std::ranges::find(kOfMerging, key) == kOfMerging.end();
    });
    return idle;
}

// What was asked for and did not come to pass makes the run worthless as a test.
void TellIdle(const HostSettings& settings, const std::vector<RunOutcome>& outcomes,
              const std::optional<prntvpt::ProviderReport>& report, const EventSink& sink) {
    const unsigned asked = outcomes.front().asked;
    if (settings.cancelAt > asked) {
        sink(events::Failed{"--cancel-at " + std::to_string(settings.cancelAt) +
                                " never struck: the filter asked for " + std::to_string(asked) + " parts",
                            WrongUsage});
    }
    for (const std::string& fault : InEach(outcomes, &RunOutcome::unstruckFaults)) {
        sink(events::Failed{"--pipeline fail=" + fault + " never struck", WrongUsage});
    }
    for (const std::string& text : InEach(outcomes, &RunOutcome::unusedSwitches)) {
        sink(events::Failed{"--pipeline " + text + " never struck", WrongUsage});
    }
    if (!report) return;
    for (const std::string& text : IdleSwitches(settings, *report)) {
        sink(events::Failed{"--provider " + text + " never struck", WrongUsage});
    }
    for (const std::string& fault : report->idleFaults) {
        sink(events::Failed{"--provider fault=" + fault + " never struck", WrongUsage});
    }
}

// The widest of the job's tickets: that of the document as it stands, else the user's. Null when it cannot be
// read, which whoever reads the document will tell.
pipeline::Bytes JobTicketOf(const pipeline::JobInput& job, const pipeline::Bytes& userTicket) try {
    return job.ticket ? job.ticket->read() : userTicket;
} catch (const common::Error&) {
    return nullptr;
}

pipeline::Bytes BytesOf(const Job& job) {
    return job.bytes ? job.bytes : std::make_shared<const std::string>(ReadFile(job.input, "INPUT"));
}

XpsDocument OpenDocument(const Job& job) {
    if (!job.bytes) return XpsDocument::Open(job.input);
    return XpsDocument::Open(
        package::Package::Open(std::make_unique<common::MemorySource>(job.bytes), job.inputName));
}

// Of several of one name the last one holds.
pipeline::PropertyValues ParseProperties(const std::vector<std::string>& texts) {
    pipeline::PropertyValues values;
    for (const std::string& text : texts) {
        auto [name, value] = pipeline::ParseProperty(text);
        values.insert_or_assign(name, std::move(value));
    }
    return values;
}

struct XmlClasses {
    msxml::DomRegistration dom;
    msxml::SaxRegistration sax;
};

// The kit's DOM document in the place of the system's, where a probe finds the system's wanting.
std::shared_ptr<void> FillDomGap(const EventSink& sink) {
    static const bool kConforms = msxml::SystemDomConforms();
    if (kConforms) return nullptr;
    auto registration = std::make_shared<XmlClasses>();
    sink(events::Noted{"the system's DOM document lacks what filters need; the kit's own takes its place"});
    return registration;
}

// The same in the single-threaded apartment of a thread, whose classes are its own; null in any other.
std::shared_ptr<void> FillDomGapOfThread() {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    const bool isEntered = SUCCEEDED(CoGetApartmentType(&type, &qualifier));
    if (!isEntered || (type != APTTYPE_STA && type != APTTYPE_MAINSTA)) return nullptr;
    return std::make_shared<XmlClasses>();
}

std::vector<std::shared_ptr<pipeline::FilterSource>> LoadFilters(const HostSettings& settings,
                                                                 const EventSink& sink) {
    std::vector<std::shared_ptr<pipeline::FilterSource>> filters;
    for (const FilterSettings& each : settings.filters) {
        const std::string call = "the loading of " + common::PathText(each.dll.filename());
        sink(events::CallBegun{call});
        filters.push_back(std::make_shared<pipeline::FilterModule>(each.dll, each.clsid));
        sink(events::CallEnded{call});
    }
    return filters;
}

}  // namespace

std::string ReadUserTicket(const Path& path) {
    constexpr const char* kOption = "--user-ticket";
    std::string bytes = ReadFile(path, kOption);
    try {
        static_cast<void>(printschema::ReadFramework(bytes, printschema::Tag::PrintTicket));
    } catch (const printschema::FormatError& error) {
        throw UsageError(std::string(kOption) + ": " + common::PathText(path) +
                         " is no print ticket: " + error.what());
    }
    return bytes;
}

std::string ReadDeviceCapabilities(const Path& path) { return ReadFile(path, "--device-capabilities"); }

void CheckHost(const HostSettings& settings, const char* filterOption) {
    std::error_code ignored;
    for (const FilterSettings& filter : settings.filters) {
        if (std::filesystem::is_regular_file(filter.dll, ignored)) continue;
        throw UsageError(std::string(settings.pipelineConfig ? "--pipeline-config" : filterOption) +
                         ": there is no " + common::PathText(filter.dll));
    }
    CheckProvider(settings);
    if (settings.userTicket) static_cast<void>(ReadUserTicket(*settings.userTicket));
    if (settings.deviceCapabilities) static_cast<void>(ReadDeviceCapabilities(*settings.deviceCapabilities));
}

HostedRun::HostedRun(const HostSettings& settings, const EventSink& sink)
    : HostedRun(settings, std::make_shared<TicketProvider>(settings), sink) {}

HostedRun::HostedRun(const HostSettings& settings, std::shared_ptr<TicketProvider> provider,
                     const EventSink& sink)
    : m_settings(settings),
      m_provider(std::move(provider)),
      m_filters(LoadFilters(settings, sink)),
      m_printer(platform::ToUtf16(m_provider->PrinterName())),
      m_userTicket(std::make_shared<const std::string>(
          settings.userTicket ? ReadUserTicket(*settings.userTicket) : m_provider->DefaultTicket())),
      m_deviceCapabilities(
          settings.deviceCapabilities
              ? std::make_shared<const std::string>(ReadDeviceCapabilities(*settings.deviceCapabilities))
              : nullptr),
      m_xmlClasses(FillDomGap(sink)) {}

HostedRun::~HostedRun() = default;

bool HostedRun::Run(const Job& job, const EventSink& sink) {
    const Clock::time_point start = Clock::now();
    bool isOver = true;
    std::optional<RunTimes> times;
    try {
        const auto document = std::make_shared<XpsDocument>(OpenDocument(job));
        // Beside the pages there are the document, the sequence and the fixed documents.
        const std::size_t pages = CountPages(*document);
        sink(events::Opened{2 + document->sequence.documents.size() + pages, pages, document->Findings(),
                            printschema::ReadFacts(*UserTicketOf(job)),
                            RecordsTickets(pages) ? std::optional(*UserTicketOf(job)) : std::nullopt});
        isOver = RunFilter(document, job, sink, times);
    } catch (const common::Error& error) {
        sink(events::Failed{ProblemOf(error, common::PathText(job.input)), UnreadableInput});
    } catch (const pipeline::FilterError& error) {
        const bool isUnknown = error.GetHresult() == CLASS_E_CLASSNOTAVAILABLE;
        sink(events::Failed{error.what() + std::string(isUnknown ? "; --clsid names another class" : ""),
                            FilterFailed});
    } catch (const std::bad_alloc&) {
        sink(events::Failed{"there is not enough memory", UnreadableInput});
    }
    if (times) {
        times->total = SecondsOf(Clock::now() - start);
        sink(events::Timed{*times});
    }
    const std::lock_guard guard(m_lock);
    m_run.reset();
    return isOver;
}

bool HostedRun::RunFilter(const std::shared_ptr<XpsDocument>& document, const Job& job, const EventSink& sink,
                          std::optional<RunTimes>& times) {
    pipeline::RunOptions options = MakeOptions();
    const HANDLE token = options.properties.userToken->Get();
    const bool isStream = m_settings.filters.front().input == pipeline::DataKind::Stream;
    pipeline::ChainInput input{pipeline::MakeJobInput(document), isStream ? BytesOf(job) : nullptr};
    pipeline::JobProperties& properties = options.properties;
    properties.contentType = document->GetFlavour() == package::Flavour::OpenXps ? L"OpenXPS" : L"XPS";
    properties.userTicket = UserTicketOf(job);
    properties.jobTicket = JobTicketOf(*input.job, properties.userTicket);
    if (job.output) properties.outputFile = job.output->wstring();
    const std::size_t pages = CountPages(*document);
    const auto run = std::make_shared<pipeline::FilterRun>(MakeChain(sink, RecordsTickets(pages)),
                                                           std::move(input), std::move(options));
    {
        const std::lock_guard guard(m_lock);
        m_run = run;
        if (m_cancelled) run->Cancel();
    }
    // In a chain it is not known which filter calls, nor what that one has in hand.
    const bool isAlone = m_filters.size() == 1;
    m_provider->BeginRun(token, RecordsTickets(pages),
                         [run = std::weak_ptr(run), sink, isAlone,
                          isTraced = m_settings.trace](const prntvpt::ProviderCall& call) {
                             const auto alive = run.lock();
                             const std::string part = alive && isAlone ? alive->LastPart() : std::string();
                             if (isTraced) TraceProviderCall(sink, call, part);
                             sink(events::ProviderCalled{{call, part}});
                             if (alive) Reassign(*alive, call);
                         });
    std::vector<RunOutcome> outcomes = run->RunChain();
    times = TimesOf(outcomes);
    const bool isAbandoned = std::ranges::any_of(outcomes, &RunOutcome::IsAbandoned);
    std::optional<prntvpt::ProviderReport> report = m_provider->EndRun(isAbandoned);
    if (report) sink(events::ProviderEnded{*report});
    const RunEnd end = EndOf(outcomes);
    sink(events::RunEnded{end});
    if (!HeapsAreWhole()) {
        sink(events::Crashed{{0, "the filter damaged the heap of the process"}});
        return false;
    }
    if (isAbandoned) return false;
    for (const RunOutcome& outcome : outcomes) {
        if (!outcome.storageFailure.empty()) sink(CannotWrite(outcome.storageFailure));
        for (const std::string& what : outcome.missing)
            sink(events::Missed{what + (isAlone ? "" : " (" + outcome.filter + ")")});
    }
    TellIdle(m_settings, outcomes, report, sink);
    if (end.whole && job.output) WriteOutput(*document, outcomes.back(), job, sink);
    return true;
}

const pipeline::Bytes& HostedRun::UserTicketOf(const Job& job) const {
    return job.userTicket ? job.userTicket : m_userTicket;
}

RunTimes HostedRun::TimesOf(const std::vector<RunOutcome>& outcomes) const {
    using Point = pipeline::OperationTimes::Point;
    RunTimes times;
    Point begin = Point::max();
    Point end;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const pipeline::OperationTimes& measured = outcomes[i].times;
        const auto seconds = [&](pipeline::Share share) { return SecondsOf(measured.Of(share)); };
        FilterTimes& filter = times.filters.emplace_back();
        filter.name = m_settings.filters[i].name;
        filter.filter = seconds(pipeline::Share::Filter);
        if (!m_settings.systemProvider) filter.ticketProvider = seconds(pipeline::Share::TicketProvider);
        filter.pipeline = seconds(pipeline::Share::Pipeline);
        filter.observer = seconds(pipeline::Share::Observer);
        // Of a chain in which one filter failed to initialise itself, none was started.
        if (measured.begin == Point()) continue;
        begin = std::min(begin, measured.begin);
        end = std::max(end, measured.end);
    }
    if (begin < end) times.operations = SecondsOf(end - begin);
    return times;
}

bool HostedRun::RecordsTickets(std::size_t pages) const {
    return m_settings.recordTickets && pages <= kMaxRecordedPages;
}

std::vector<pipeline::ChainedFilter> HostedRun::MakeChain(const EventSink& sink, bool recordsTickets) const {
    std::vector<pipeline::ChainedFilter> chain;
    for (std::size_t i = 0; i < m_filters.size(); ++i) {
        const FilterSettings& each = m_settings.filters[i];
        const std::string name = m_filters.size() > 1 ? each.name : std::string();
        chain.push_back(
            {each.name, m_filters[i], each.input, each.output,
             std::make_shared<Teller>(sink, name, i == 0, i + 1 == m_filters.size(), recordsTickets,
                                      m_settings.trace ? std::make_shared<RunTrace>(sink, name) : nullptr)});
    }
    return chain;
}

pipeline::RunOptions HostedRun::MakeOptions() const {
    pipeline::RunOptions options;
    pipeline::JobProperties& properties = options.properties;
    properties.printerName = platform::ToUtf16(m_provider->PrinterName());
    properties.printerHandle = m_printer.Get();
    properties.deviceCapabilities = m_deviceCapabilities;
    properties.driverValues.reset();
    if (m_settings.driverProperties) {
        properties.queueValues = ParseProperties(m_settings.queueValues);
        properties.driverValues.emplace();
        properties.driverValues->emplace(L"KoraNsPrefix", platform::ToUtf16(m_settings.nsPrefix));
        if (m_settings.teskType) properties.driverValues->emplace(L"KoraTeskType", *m_settings.teskType);
        for (auto& [name, value] : ParseProperties(m_settings.driverValues))
            properties.driverValues->insert_or_assign(name, std::move(value));
    }
    properties.more = ParseProperties(m_settings.properties);
    options.cancelAt = m_settings.cancelAt;
    if (m_xmlClasses) options.onPipelineThread = options.onApartmentEntered = &FillDomGapOfThread;
    for (const std::string& text : m_settings.pipelineSwitches) pipeline::ApplySwitch(options, text);
    return options;
}

void HostedRun::Cancel() {
    const std::lock_guard guard(m_lock);
    m_cancelled = true;
    if (m_run) m_run->Cancel();
}

}  // namespace devkit::filterhost
