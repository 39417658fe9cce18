#include "devkit/filterhost/hostedrun.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <new>
#include <system_error>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/file.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/files.h"
#include "devkit/pipeline/job.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using package::XpsDocument;
using pipeline::RunOutcome;
using Path = std::filesystem::path;

std::size_t CountPages(const package::XpsTree& tree) {
    std::size_t pages = 0;
    for (const package::FixedDocument& document : tree.sequence.documents) pages += document.pages.size();
    return pages;
}

// Tells what the pipeline sees. A part is looked at when it is sent, so that what a filter does later cannot
// undo it.
class Teller final : public pipeline::RunObserver {
  public:
    explicit Teller(EventSink sink) : m_sink(std::move(sink)) {}

    void CallBegins(const char* call) override { m_sink(events::CallBegun{call}); }
    void CallEnds(const char* call) override { m_sink(events::CallEnded{call}); }
    void PartAsked(unsigned number) override { m_sink(events::PartAsked{number}); }
    void PartGiven(const std::string& part) override { m_sink(events::PartGiven{part}); }
    void PartSent(const pipeline::SentPart& part) override {
        try {
            m_sink(events::PartSent{LookAtPart(part)});
        } catch (const common::Error& error) {
            m_sink(events::InputFailed{error.what()});
        }
    }
    void Breached(const std::string& text) override { m_sink(events::Breached{text}); }
    void Found(const std::string& text) override { m_sink(events::Found{text}); }
    void InputFailed(const std::string& text) override { m_sink(events::InputFailed{text}); }
    void Called() override {
        // Once a second is often enough for whoever watches.
        const Clock::rep now = Clock::now().time_since_epoch().count();
        Clock::rep next = m_next;
        if (now < next) return;
        constexpr Clock::duration kInterval = std::chrono::seconds(1);
        if (m_next.compare_exchange_strong(next, now + kInterval.count())) m_sink(events::Alive{});
    }

  private:
    using Clock = std::chrono::steady_clock;

    const EventSink m_sink;
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

void WriteOutput(XpsDocument& document, const RunOutcome& outcome, const Job& job,
                 const EventSink& sink) try {
    pipeline::ApplySentParts(document, outcome.parts);
    document.Save(*job.output);
    sink(events::OutputWritten{job.outputName});
} catch (const common::Error& error) {
    sink(events::Failed{std::string("the output cannot be written: ") + error.what(), WrongUsage});
}

// What was asked for and did not come to pass makes the run worthless as a test.
void TellIdle(const HostSettings& settings, const RunOutcome& outcome,
              const std::optional<prntvpt::ProviderReport>& report, const EventSink& sink) {
    if (settings.cancelAt > outcome.asked) {
        sink(events::Failed{"--cancel-at " + std::to_string(settings.cancelAt) +
                                " never struck: the filter asked for " + std::to_string(outcome.asked) +
                                " parts",
                            WrongUsage});
    }
    for (const std::string& fault : outcome.unstruckFaults) {
        sink(events::Failed{"--pipeline fail=" + fault + " never struck", WrongUsage});
    }
    for (const std::string& text : outcome.unusedSwitches) {
        sink(events::Failed{"--pipeline " + text + " never struck", WrongUsage});
    }
    if (!report) return;
    for (const std::string& fault : report->idleFaults) {
        sink(events::Failed{"--provider fault=" + fault + " never struck", WrongUsage});
    }
}

// The kit's DOM document in the place of the system's, where a probe finds the system's wanting.
std::unique_ptr<msxml::DomRegistration> FillDomGap(const EventSink& sink) {
    if (msxml::SystemDomConforms()) return nullptr;
    auto registration = std::make_unique<msxml::DomRegistration>();
    sink(events::Noted{"the system's DOM document lacks what filters need; the kit's own takes its place"});
    return registration;
}

std::shared_ptr<pipeline::FilterSource> LoadFilter(const HostSettings& settings, const EventSink& sink) {
    sink(events::CallBegun{"the loading of " + common::PathText(settings.filter.filename())});
    auto filter = std::make_shared<pipeline::FilterModule>(settings.filter, settings.filterClass);
    sink(events::CallEnded{"the loading of " + common::PathText(settings.filter.filename())});
    return filter;
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

HostedRun::HostedRun(const HostSettings& settings, const EventSink& sink)
    : m_settings(settings),
      m_provider(settings),
      m_filter(LoadFilter(settings, sink)),
      m_printer(platform::ToUtf16(m_provider.PrinterName())),
      m_userTicket(std::make_shared<const std::string>(
          settings.userTicket ? ReadUserTicket(*settings.userTicket) : m_provider.DefaultTicket())),
      m_dom(FillDomGap(sink)) {}

HostedRun::~HostedRun() = default;

bool HostedRun::Run(const Job& job, const EventSink& sink) {
    bool isOver = true;
    try {
        const auto document = std::make_shared<XpsDocument>(XpsDocument::Open(job.input));
        // Beside the pages there are the document, the sequence and the fixed documents.
        const std::size_t parts = 2 + document->sequence.documents.size() + CountPages(*document);
        sink(events::Opened{parts, document->Findings(), printschema::ReadFacts(*m_userTicket)});
        isOver = RunFilter(document, job, sink);
    } catch (const common::Error& error) {
        sink(events::Failed{ProblemOf(error, common::PathText(job.input)), UnreadableInput});
    } catch (const pipeline::FilterError& error) {
        const bool isUnknown = error.GetHresult() == CLASS_E_CLASSNOTAVAILABLE;
        sink(events::Failed{error.what() + std::string(isUnknown ? "; --clsid names another class" : ""),
                            FilterFailed});
    } catch (const std::bad_alloc&) {
        sink(events::Failed{"there is not enough memory", UnreadableInput});
    }
    const std::lock_guard guard(m_lock);
    m_run.reset();
    return isOver;
}

bool HostedRun::RunFilter(const std::shared_ptr<XpsDocument>& document, const Job& job,
                          const EventSink& sink) {
    pipeline::RunOptions options = MakeOptions();
    options.observer = std::make_shared<Teller>(sink);
    const HANDLE token = options.properties.userToken->Get();
    const auto run =
        std::make_shared<pipeline::FilterRun>(m_filter, pipeline::MakeJobInput(document), std::move(options));
    {
        const std::lock_guard guard(m_lock);
        m_run = run;
        if (m_cancelled) run->Cancel();
    }
    m_provider.BeginRun(token, CountPages(*document),
                        [run = std::weak_ptr(run), sink](const prntvpt::ProviderCall& call) {
                            const auto alive = run.lock();
                            sink(events::ProviderCalled{{call, alive ? alive->LastPart() : std::string()}});
                        });
    const RunOutcome outcome = run->Run();
    std::optional<prntvpt::ProviderReport> report = m_provider.EndRun(outcome.IsAbandoned());
    if (report) {
        report->calls.clear();
        sink(events::ProviderEnded{*report});
    }
    sink(events::RunEnded{{outcome.initialized, outcome.result, outcome.shutdownCodes, outcome.hung,
                           outcome.threadEnded, outcome.cancelled, outcome.IsWhole()}});
    if (!HeapsAreWhole()) {
        sink(events::Crashed{{0, "the filter damaged the heap of the process"}});
        return false;
    }
    if (outcome.IsAbandoned()) return false;
    TellIdle(m_settings, outcome, report, sink);
    if (outcome.IsWhole() && job.output) WriteOutput(*document, outcome, job, sink);
    return true;
}

pipeline::RunOptions HostedRun::MakeOptions() const {
    pipeline::RunOptions options;
    pipeline::JobProperties& properties = options.properties;
    properties.printerName = platform::ToUtf16(m_provider.PrinterName());
    properties.userTicket = m_userTicket;
    properties.printerHandle = m_printer.Get();
    properties.driverValues.reset();
    if (m_settings.driverProperties) {
        properties.driverValues.emplace();
        properties.driverValues->emplace(L"KoraNsPrefix", platform::ToUtf16(m_settings.nsPrefix));
        if (m_settings.teskType) properties.driverValues->emplace(L"KoraTeskType", *m_settings.teskType);
    }
    options.cancelAt = m_settings.cancelAt;
    for (const std::string& text : m_settings.pipelineSwitches) pipeline::ApplySwitch(options, text);
    return options;
}

void HostedRun::Cancel() {
    const std::lock_guard guard(m_lock);
    m_cancelled = true;
    if (m_run) m_run->Cancel();
}

}  // namespace devkit::filterhost
