#include "devkit/filterhost/hostedrun.h"

#include <algorithm>
#include <new>
#include <utility>

#include "devkit/common/file.h"
#include "devkit/common/hresult.h"
#include "devkit/filterhost/crashreport.h"
#include "devkit/filterhost/effectivetickets.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/interrupt.h"
#include "devkit/filterhost/progress.h"
#include "devkit/package/xpsdocument.h"
#include "devkit/pipeline/job.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using common::PathText;
using package::XpsDocument;
using pipeline::RunOutcome;
using printschema::TicketFacts;
using Path = std::filesystem::path;

std::size_t CountPages(const package::XpsTree& tree) {
    std::size_t pages = 0;
    for (const package::FixedDocument& document : tree.sequence.documents) pages += document.pages.size();
    return pages;
}

ExitStatus StatusOf(const RunResult& result) {
    if (!result.breaches.empty()) return RuleBroken;
    const RunOutcome& outcome = *result.outcome;
    if (!outcome.inputFailures.empty()) return UnreadableInput;
    const bool shutdown = std::any_of(outcome.shutdownCodes.begin(), outcome.shutdownCodes.end(),
                                      [](HRESULT hr) { return FAILED(hr); });
    return FAILED(outcome.result) || shutdown ? FilterFailed : Done;
}

// "PTMergeAndValidatePrintTicket (page) answered 0x80040003 E_PRINTTICKET_FORMAT: Base ticket: ...".
std::string FailedCallText(const prntvpt::ProviderCall& call) {
    std::string text = call.function;
    if (call.scope) text += " (" + *call.scope + ")";
    text += " answered " + common::Describe(call.result);
    return call.error ? text + ": " + *call.error : text;
}

void AddProviderFindings(RunResult& result) {
    if (!result.provider) return;
    for (const prntvpt::ProviderCall& call : result.provider->calls) {
        if (FAILED(call.result)) result.findings.push_back("print ticket provider: " + FailedCallText(call));
    }
    for (const prntvpt::ProviderBreach& breach : result.provider->breaches) {
        result.breaches.push_back("print ticket provider: " + breach.stop + " " + breach.text);
    }
    for (const std::string& note : result.provider->notes) {
        result.findings.push_back("print ticket provider: " + note);
    }
}

// Writes what the filter sent. A failure is in the result.
void WriteOutput(XpsDocument& document, const Path& output, RunResult& result) try {
    pipeline::ApplySentParts(document, result.outcome->parts);
    document.Save(output);
    result.output = common::PathText(output);
} catch (const common::Error& error) {
    result.error = std::string("the output cannot be written: ") + error.what();
    result.status = std::max(result.status, WrongUsage);
}

}  // namespace

HostedRun::HostedRun(const RunSettings& settings, TicketProvider& provider,
                     std::shared_ptr<pipeline::FilterSource> filter)
    : m_settings(settings),
      m_provider(provider),
      m_filter(std::move(filter)),
      m_printer(platform::ToUtf16(provider.PrinterName())),
      m_userTicket(std::make_shared<const std::string>(
          settings.userTicket ? ReadFile(*settings.userTicket, "--user-ticket") : provider.DefaultTicket())) {
}

RunResult HostedRun::Run(const Path& input, const Path& output) {
    RunResult result;
    result.input = common::PathText(input);
    try {
        const auto document = std::make_shared<XpsDocument>(XpsDocument::Open(input));
        result.findings = document->Findings();
        RunFilter(document, result);
        LookAtPages(result);
        result.status = StatusOf(result);
        if (result.outcome->IsWhole()) WriteOutput(*document, output, result);
    } catch (const common::Error& error) {
        result.error = ProblemOf(error, result.input);
        result.status = UnreadableInput;
    } catch (const pipeline::FilterError& error) {
        result.error = error.what();
        result.status = FilterFailed;
    } catch (const std::bad_alloc&) {
        result.error = "there is not enough memory";
        result.status = UnreadableInput;
    }
    return result;
}

void HostedRun::RunFilter(const std::shared_ptr<XpsDocument>& document, RunResult& result) {
    pipeline::RunOptions options = MakeOptions();
    const HANDLE token = options.properties.userToken->Get();
    const std::size_t pages = CountPages(*document);
    // Beside the pages there are the document, the sequence and the fixed documents.
    const std::size_t parts = 2 + document->sequence.documents.size() + pages;
    Progress progress(result.input, parts, !m_settings.quiet);
    options.onPart = [&progress](unsigned number) { progress.Asked(number); };
    const std::shared_ptr<const pipeline::JobInput> job = pipeline::MakeJobInput(document);
    // Shared with the provider: a filter that hangs may call it when this is over.
    const auto run = std::make_shared<pipeline::FilterRun>(m_filter, job, std::move(options));
    const auto tickets = std::make_shared<MadeTickets>();
    m_provider.BeginRun(token, pages, [run = std::weak_ptr(run), tickets](const prntvpt::ProviderCall& call) {
        if (const auto alive = run.lock()) tickets->Add(call, alive->LastPart());
    });
    const CancelOnInterrupt interrupt(*run);
    const CrashReport crash(result.input, [&run] { return run->LastPart(); });
    result.outcome = run->Run();
    result.breaches = result.outcome->breaches;
    result.provider = m_provider.EndRun(result.outcome->hung);
    result.tickets = tickets->Take();
    AddProviderFindings(result);
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
    return options;
}

void HostedRun::LookAtPages(RunResult& result) const {
    const std::vector<pipeline::SentPart>& parts = result.outcome->parts;
    std::vector<TicketFacts> tickets;
    if (result.provider)
        tickets = EffectiveTickets(parts, result.tickets, printschema::ReadFacts(*m_userTicket));
    for (const pipeline::SentPart& part : parts) {
        if (part.kind != pipeline::PartKind::FixedPage) continue;
        const std::size_t number = result.pages.size();
        result.pages.push_back(LookAtPage(part, number < tickets.size() ? tickets[number] : TicketFacts()));
        if (result.pages.back().malformed) {
            result.findings.push_back("page markup " + *result.pages.back().malformed);
        }
    }
}

}  // namespace devkit::filterhost
