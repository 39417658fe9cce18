#include <algorithm>
#include <optional>
#include <set>

#include "devkit/common/hresult.h"
#include "devkit/common/text.h"
#include "faultedjob.h"
#include "platform/printerpropertybag.h"

namespace systemtest {
namespace {

using devkit::common::HexOf;
using devkit::pipeline::Fault;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;

class FaultsTest : public FilterTest {};

RunOptions With(RunOptions options, Fault fault) {
    options.behaviour.faults.push_back(std::move(fault));
    return options;
}

TEST_F(FaultsTest, WithoutAFaultTheJobComesThroughWhole) {
    Configure();
    const RunOutcome outcome = Run(Options());
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_TRUE(outcome.IsWhole());
    EXPECT_TRUE(outcome.shutdownCodes.empty());
    ExpectNothingLeft(outcome);
}

TEST_F(FaultsTest, AMissingPropertyFailsTheJobWithThePropertyBagsCodeBeforeAnyPartIsRead) {
    for (const char* name : {"PerUserPrintTicket", "PrinterName", "UserSecurityToken"}) {
        SCOPED_TRACE(name);
        Configure();
        const RunOutcome outcome = Run(With(Options(), {"IPrintPipelinePropertyBag::GetProperty", name, 1,
                                                        HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), false}));
        ExpectFailure(outcome, HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
        EXPECT_TRUE(outcome.parts.empty());
        EXPECT_TRUE(outcome.lastPart.empty());
    }
}

TEST_F(FaultsTest, AMissingDriverPropertyBagIsNoFailure) {
    Configure();
    RunOptions options = Options();
    options.properties.driverValues.reset();
    const RunOutcome outcome = Run(std::move(options));
    EXPECT_EQ(S_OK, outcome.result);
    ExpectNothingLeft(outcome);
}

TEST_F(FaultsTest, AProviderThatCannotBeOpenedFailsTheJobWithItsCode) {
    const std::pair<const char*, HRESULT> faults[] = {
        {"fault=open-denied", E_ACCESSDENIED},
        {"fault=open-gone", HRESULT_FROM_WIN32(ERROR_INVALID_PRINTER_NAME)},
        {"fault=open-rpc", HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)}};
    for (const auto& [fault, hr] : faults) {
        SCOPED_TRACE(fault);
        Configure({fault});
        ExpectFailure(Run(Options()), hr);
    }
}

TEST_F(FaultsTest, AMergeThatFailsFailsTheJobWithItsCodeAtEveryScope) {
    const std::pair<const char*, HRESULT> faults[] = {
        {"merge-refuse-base", static_cast<HRESULT>(0x80040003)},
        {"merge-refuse-delta", static_cast<HRESULT>(0x80040005)},
        {"merge-fail", E_FAIL},
        {"merge-oom", E_OUTOFMEMORY}};
    for (const auto& [fault, hr] : faults) {
        for (const char* scope : {"job", "document", "page"}) {
            SCOPED_TRACE(std::string(fault) + " at " + scope);
            Configure({"fault=" + std::string(fault) + "@1:" + scope});
            ExpectFailure(Run(Options()), hr);
        }
    }
}

TEST_F(FaultsTest, AResultThatIsNoTicketFailsTheJobAndLeavesNothing) {
    for (const char* fault : {"out-empty", "out-truncated", "out-notxml"}) {
        SCOPED_TRACE(fault);
        Configure({"fault=" + std::string(fault)});
        const RunOutcome outcome = Run(Options());
        EXPECT_TRUE(FAILED(outcome.result));
        ExpectFailure(outcome, outcome.result);
    }
}

TEST_F(FaultsTest, SuccessCodesOfTheMergeAreAllSuccesses) {
    for (const char* fault : {"s-ok", "conflict", "conflict-silent", "out-rewound", "bstr-on-success"}) {
        SCOPED_TRACE(fault);
        Configure({"fault=" + std::string(fault)});
        const RunOutcome outcome = Run(Options());
        EXPECT_EQ(S_OK, outcome.result);
        ExpectNothingLeft(outcome);
    }
}

TEST_F(FaultsTest, EachSendThatFailsFailsTheJobWithItsCode) {
    for (const char* method :
         {"SendXpsDocument", "SendFixedDocumentSequence", "SendFixedDocument", "SendFixedPage"}) {
        SCOPED_TRACE(method);
        Configure();
        ExpectFailure(
            Run(With(Options(), {std::string("IXpsDocumentConsumer::") + method, "", 1, E_ABORT, false})),
            E_ABORT);
    }
}

TEST_F(FaultsTest, GetXpsPartFailingAtPartNFailsTheJobAndSendsWhatCameBefore) {
    for (unsigned nth = 1; nth <= kQuestions; ++nth) {
        SCOPED_TRACE(nth);
        Configure();
        const RunOutcome outcome =
            Run(With(Options(), {"IXpsDocumentProvider::GetXpsPart", "", nth, E_ACCESSDENIED, false}));
        ExpectFailure(outcome, E_ACCESSDENIED);
        EXPECT_EQ(nth - 1, outcome.parts.size());
    }
}

// What becomes of a job when one call of the pipeline fails.
enum class Effect {
    Ends,            // it ends with the call's own code, which is reported once
    EndsWithEFail,   // it ends with E_FAIL, because the stream between loses the code
    EndsUntold,      // it has ended: the code takes the place of its result, and nobody is told
    CannotTell,      // it has failed: its own code was reported, the call's is what StartOperation returns
    ComesThrough,    // it gives what it gives without the failure
    CancelFails,     // the same, but ShutdownOperation answers E_FAIL
    LosesPrefix,     // it gives what it gives for a driver that names no prefix
    LosesTicket,     // it comes through with a new ticket that is empty
    StartsNewTicket  // it comes through with a new ticket that owes nothing to the page's own
};

struct Rule {
    const char* call;
    Effect effect;
};

// Every call that the jobs make. "again" is a call that was made before with the same argument, where it
// makes a difference.
constexpr Rule kRules[] = {
    {"IPrintPipelinePropertyBag::GetProperty DriverPropertyBag", Effect::LosesPrefix},
    {"IPrintPipelinePropertyBag::GetProperty DriverPropertyBag again", Effect::ComesThrough},
    {"IPrinterPropertyBag::GetString KoraNsPrefix", Effect::LosesPrefix},
    {"IPrinterPropertyBag::GetInt32 KoraTeskType", Effect::ComesThrough},
    {"IInterFilterCommunicator::RequestWriter", Effect::Ends},
    {"IPrintPipelinePropertyBag::GetProperty PerUserPrintTicket", Effect::Ends},
    {"IPrintPipelinePropertyBag::GetProperty PrinterName", Effect::Ends},
    {"IPrintPipelinePropertyBag::GetProperty UserSecurityToken", Effect::Ends},
    {"IPrintReadStreamFactory::GetStream PerUserPrintTicket", Effect::Ends},
    {"IPrintReadStream::Seek PerUserPrintTicket", Effect::Ends},
    {"IPrintReadStream::ReadBytes PerUserPrintTicket", Effect::Ends},
    {"IInterFilterCommunicator::RequestReader", Effect::Ends},
    {"IXpsDocumentProvider::GetXpsPart", Effect::Ends},
    {"IXpsDocumentConsumer::SendXpsDocument", Effect::Ends},
    {"IXpsDocumentConsumer::SendXpsUnknown", Effect::Ends},
    {"IXpsDocumentConsumer::SendFixedDocumentSequence", Effect::Ends},
    {"IXpsDocumentConsumer::SendFixedDocument", Effect::Ends},
    {"IXpsDocumentConsumer::SendFixedPage", Effect::Ends},
    {"IFixedDocumentSequence::GetPrintTicket", Effect::Ends},
    {"IFixedDocument::GetPrintTicket", Effect::Ends},
    {"IFixedPage::GetPrintTicket", Effect::Ends},
    {"IFixedPage::GetPrintTicket again", Effect::StartsNewTicket},
    {"IPartBase::GetStream of a ticket", Effect::Ends},
    {"IPrintReadStream::Seek of a ticket", Effect::Ends},
    {"IPrintReadStream::ReadBytes of a ticket", Effect::Ends},
    {"IPartBase::GetUri of a ticket", Effect::Ends},
    {"IFixedPage::DeleteResource", Effect::Ends},
    {"IXpsDocumentConsumer::GetNewEmptyPart of a new ticket", Effect::Ends},
    {"IPrintWriteStream::WriteBytes of a new ticket", Effect::LosesTicket},
    {"IFixedPage::SetPrintTicket", Effect::Ends},
    {"IFixedPage::GetWriteStream", Effect::Ends},
    {"IPartBase::GetStream", Effect::Ends},
    {"IPrintReadStream::ReadBytes", Effect::Ends},
    {"IPrintWriteStream::WriteBytes", Effect::EndsWithEFail},
    {"IPrintReadStream::Seek", Effect::ComesThrough},
    {"IXpsDocumentConsumer::CloseSender", Effect::EndsUntold},
    {"IXpsDocumentConsumer::CloseSender by the cancellation", Effect::CancelFails},
    {"IPrintPipelineManagerControl::FilterFinished", Effect::CancelFails},
    {"IPrintPipelineManagerControl::RequestShutdown", Effect::CannotTell},
};

// No call of the pipeline fails with it by itself.
constexpr HRESULT kCode = static_cast<HRESULT>(0x80070017);

// A call that a fault struck, with what came before it.
struct StruckCall {
    std::string text;       // "IPrintReadStream::Seek /page_PT.xml"
    std::size_t place = 0;  // in the calls of the run
    std::size_t sent = 0;   // parts that had been sent
    bool isRepeated = false;
};

bool IsSend(const std::string& call) { return call.starts_with("IXpsDocumentConsumer::Send"); }

// A method without a result is no call that can fail.
bool CanFail(const std::string& call) { return !call.starts_with("IPrintWriteStream::Close "); }

std::optional<StruckCall> StruckCallOf(const RunOutcome& outcome, unsigned nth) {
    StruckCall struck;
    for (const std::string& call : outcome.calls) {
        if (CanFail(call) && --nth == 0) {
            struck.text = call;
            const auto before = outcome.calls.begin() + static_cast<std::ptrdiff_t>(struck.place);
            struck.isRepeated = std::find(outcome.calls.begin(), before, call) != before;
            return struck;
        }
        ++struck.place;
        struck.sent += IsSend(call) ? 1 : 0;
    }
    return std::nullopt;
}

// The call as the rules name it.
std::string NameOf(const StruckCall& struck, bool isCancelled) {
    const std::size_t blank = struck.text.find(' ');
    std::string method = struck.text.substr(0, blank);
    const std::string argument = blank == std::string::npos ? "" : struck.text.substr(blank + 1);
    const bool isOfParts = argument.starts_with("/") || argument.starts_with("0x");
    if (argument.find("pagevalidator_") != std::string::npos) {
        method += " of a new ticket";
    } else if (argument.ends_with("_PT.xml")) {
        method += " of a ticket";
    } else if (!argument.empty() && !isOfParts) {
        method += " " + argument;
    }
    if (isCancelled && !struck.isRepeated && method.ends_with("::CloseSender")) {
        return method + " by the cancellation";
    }
    const auto isNamed = [](const std::string& name) {
        return std::ranges::any_of(kRules, [&](const Rule& rule) { return name == rule.call; });
    };
    return struck.isRepeated && isNamed(method + " again") ? method + " again" : method;
}

// The ticket of the page that the call was made for, changed as the rule says. A sent part is its title, its
// bytes, and behind "ticket " the same of its ticket.
JobResult WithOtherTicket(JobResult good, const StruckCall& struck, Effect effect) {
    std::string& page = good.sent.at(struck.sent);
    const std::size_t ticket = page.find("\nticket ");
    const std::size_t bytes = page.find(": ", ticket) + 2;
    if (effect == Effect::LosesTicket) {
        page.resize(bytes);
        return good;
    }
    const std::string settings = page.substr(page.find("<psf:Feature name=\"psk:PageMediaSize\">", bytes));
    page.resize(ticket);
    page +=
        "\nticket PrintTicket .xml\\pagevalidator_N_.xml: <?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n"
        "<psf:PrintTicket version=\"1\" xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
        "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xmlns:psf=\"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework\" "
        "xmlns:psk=\"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords\">" +
        settings;
    return good;
}

class PipelineFaultsTest : public FaultedJobTest {
  protected:
    [[nodiscard]] static RunOutcome RunFaulted(const Job& job, unsigned nth, bool onwards) {
        RunOptions options = With(OptionsOf(job), {"", "", nth, kCode, onwards});
        options.behaviour.keepCalls = true;
        return RunJob(job, std::move(options));
    }

    [[nodiscard]] static JobResult ExpectedResult(const Job& job, const StruckCall& struck, Effect effect) {
        const JobResult& good = GoodResult(job);
        switch (effect) {
            case Effect::Ends:
                return EndedEarly(good, struck.sent, kCode, {kCode});
            case Effect::EndsWithEFail:
                return EndedEarly(good, struck.sent, E_FAIL, {E_FAIL});
            case Effect::EndsUntold:
                return EndedEarly(good, good.sent.size(), kCode, {});
            case Effect::CannotTell:
                return EndedEarly(good, good.sent.size(), kCode, good.shutdownCodes);
            case Effect::ComesThrough:
            case Effect::CancelFails:
                return good;
            case Effect::LosesPrefix:
                return ResultWithoutPrefix(job);
            case Effect::LosesTicket:
            case Effect::StartsNewTicket:
                break;
        }
        return WithOtherTicket(good, struck, effect);
    }

    // Behind a call that ends the job the filter closes the writer, if it has one, and tells; nothing else.
    static void ExpectNothingButTheEnd(const RunOutcome& outcome, const StruckCall& struck) {
        const bool hasWriter = struck.text != "IInterFilterCommunicator::RequestWriter";
        std::vector<std::string> end;
        if (hasWriter) end.emplace_back("IXpsDocumentConsumer::CloseSender");
        end.push_back("IPrintPipelineManagerControl::RequestShutdown " +
                      devkit::common::HexOf(outcome.result));
        EXPECT_EQ(end, std::vector<std::string>(
                           outcome.calls.begin() + static_cast<std::ptrdiff_t>(struck.place) + 1,
                           outcome.calls.end()));
    }
};

// Fails each call of each job, one by one.
TEST_F(PipelineFaultsTest, EachCallThatFailsOnceDoesWhatIsSaidOfIt) {
    std::set<std::string> struckRules;
    for (const Job& job : Jobs()) {
        unsigned nth = 1;
        for (;; ++nth) {
            ASSERT_LT(nth, kMostCalls);
            const RunOutcome outcome = RunFaulted(job, nth, false);
            if (!outcome.unstruckFaults.empty()) break;
            const std::optional<StruckCall> struck = StruckCallOf(outcome, nth);
            ASSERT_TRUE(struck);
            SCOPED_TRACE(job.name + ", call " + std::to_string(nth) + ": " + struck->text);
            const std::string name = NameOf(*struck, job.cancelAt != 0 && outcome.cancelled);
            const Rule* const pRule =
                std::ranges::find_if(kRules, [&](const Rule& rule) { return name == rule.call; });
            ASSERT_NE(std::end(kRules), pRule)
                << "no rule says what becomes of a job when this fails: " << name;
            struckRules.insert(name);

            const JobResult result = ResultOf(outcome);
            EXPECT_EQ(ExpectedResult(job, *struck, pRule->effect), result)
                << HexOf(result.result) << ", " << result.sent.size() << " parts sent";
            if (outcome.cancelled) {
                EXPECT_EQ(pRule->effect == Effect::CancelFails ? E_FAIL : S_OK, outcome.shutdownOperation);
            }
            if (pRule->effect == Effect::Ends || pRule->effect == Effect::EndsWithEFail) {
                ExpectNothingButTheEnd(outcome, *struck);
            }
            ExpectNothingChanged(outcome);
            ExpectGoodResult(job);
        }
        ExpectTried("pipeline calls failing once", job, nth - 1);
    }
    for (const Rule& rule : kRules)
        EXPECT_TRUE(struckRules.contains(rule.call)) << rule.call << " never failed";
}

// From the nth call on the pipeline is gone: it fails whatever it is asked. So the writer cannot be closed
// either, and that is what the job ends with.
TEST_F(PipelineFaultsTest, APipelineThatIsGoneFromACallOnEndsTheJobWithItsCode) {
    for (const Job& job : Jobs()) {
        unsigned nth = 1;
        for (;; ++nth) {
            ASSERT_LT(nth, kMostCalls);
            const RunOutcome outcome = RunFaulted(job, nth, true);
            if (!outcome.unstruckFaults.empty()) break;
            const std::optional<StruckCall> struck = StruckCallOf(outcome, nth);
            ASSERT_TRUE(struck);
            SCOPED_TRACE(job.name + ", from call " + std::to_string(nth) + ": " + struck->text);
            const bool hasWriter = outcome.senderClosed;
            std::vector<HRESULT> told;
            if (!hasWriter) told = {kCode};
            if (struck->text.starts_with("IPrintPipelineManagerControl::RequestShutdown")) {
                told = GoodResult(job).shutdownCodes;
            }
            EXPECT_EQ(EndedEarly(GoodResult(job), struck->sent, kCode, told), ResultOf(outcome));
            ExpectNothingChanged(outcome);
            ExpectGoodResult(job);
        }
        ExpectTried("pipeline calls failing for good", job, nth - 1);
    }
}

// What becomes of a job when an object refuses one of its interfaces.
enum class Refusal {
    Ends,              // it ends with the code
    ChangesNothing,    // the object has no such interface in any case, or can be done without
    LosesPrefix,       // as for a driver that names no prefix
    AsksForShutdown,   // the pipeline is asked to shut down with S_OK, and the job goes on
    MakesPartUnknown,  // the part is sent as one of no known kind, which the pipeline refuses
    FailsTheCall,      // the call that gives the object out fails with the code
};

struct Query {
    const char* object;  // what its description begins with
    IID iid;
    Refusal refusal;
};

const Query kQueries[] = {
    {"DocumentConsumer", __uuidof(IXpsDocumentConsumer), Refusal::AsksForShutdown},
    {"DocumentProvider", __uuidof(IXpsDocumentProvider), Refusal::AsksForShutdown},
    {"DriverPropertyBag", __uuidof(IPrinterPropertyBag), Refusal::LosesPrefix},
    {"ReadStreamFactory PerUserPrintTicket", __uuidof(IPrintReadStreamFactory), Refusal::Ends},
    {"XpsDocument", __uuidof(IXpsDocument), Refusal::MakesPartUnknown},
    {"FixedDocumentSequence", __uuidof(IFixedDocumentSequence), Refusal::MakesPartUnknown},
    {"FixedDocumentSequence", __uuidof(IXpsDocument), Refusal::ChangesNothing},
    {"FixedDocument", __uuidof(IFixedDocument), Refusal::MakesPartUnknown},
    {"FixedDocument", __uuidof(IXpsDocument), Refusal::ChangesNothing},
    {"FixedDocument", __uuidof(IFixedDocumentSequence), Refusal::ChangesNothing},
    {"FixedPage", __uuidof(IFixedPage), Refusal::MakesPartUnknown},
    {"FixedPage", __uuidof(IXpsDocument), Refusal::ChangesNothing},
    {"FixedPage", __uuidof(IFixedDocumentSequence), Refusal::ChangesNothing},
    {"FixedPage", __uuidof(IFixedDocument), Refusal::ChangesNothing},
    {"Image", __uuidof(IXpsDocument), Refusal::ChangesNothing},
    {"Image", __uuidof(IFixedDocumentSequence), Refusal::ChangesNothing},
    {"Image", __uuidof(IFixedDocument), Refusal::ChangesNothing},
    {"Image", __uuidof(IFixedPage), Refusal::ChangesNothing},
    // The pipeline's own query, for what it is about to give out.
    {"PrintTicket", __uuidof(IPartPrintTicket), Refusal::FailsTheCall},
};

constexpr std::string_view kQueryCall = "IUnknown::QueryInterface ";

// "FixedPage /1.fpage" of "IUnknown::QueryInterface FixedPage /1.fpage {...}".
std::string ObjectOf(const std::string& call) {
    const std::size_t end = call.rfind(' ');
    return call.substr(kQueryCall.size(), end - kQueryCall.size());
}

const Query* QueryOf(const std::string& call) {
    const std::string object = ObjectOf(call);
    const std::string kind =
        object.starts_with("ReadStreamFactory") ? object : object.substr(0, object.find(' '));
    const auto found = std::ranges::find_if(kQueries, [&](const Query& query) {
        return kind == query.object && call.ends_with(devkit::common::TextOf(query.iid));
    });
    return found == std::end(kQueries) ? nullptr : found;
}

class QueryFaultsTest : public FaultedJobTest {
  protected:
    static JobResult ExpectedResult(const Job& job, const StruckCall& struck, Refusal refusal) {
        JobResult good = GoodResult(job);
        switch (refusal) {
            case Refusal::FailsTheCall:
                // A page whose ticket is asked for again.
                if (struck.isRepeated) return WithOtherTicket(good, struck, Effect::StartsNewTicket);
                return EndedEarly(good, struck.sent, kCode, {kCode});
            case Refusal::Ends:
                return EndedEarly(good, struck.sent, kCode, {kCode});
            case Refusal::MakesPartUnknown:
                return EndedEarly(good, struck.sent, E_INVALIDARG, {E_INVALIDARG});
            case Refusal::LosesPrefix:
                // The second time it is asked for a number that changes no part.
                return struck.place < 2 ? ResultWithoutPrefix(job) : good;
            case Refusal::AsksForShutdown:
                good.shutdownCodes.insert(good.shutdownCodes.begin(), S_OK);
                break;
            case Refusal::ChangesNothing:
                break;
        }
        return good;
    }

    // The refused query; repeated when the call that it belongs to was.
    static std::optional<StruckCall> RefusedQuery(const RunOutcome& outcome) {
        StruckCall struck;
        for (const std::string& call : outcome.calls) {
            if (call.starts_with(kQueryCall)) {
                const auto before = outcome.calls.begin() + static_cast<std::ptrdiff_t>(struck.place) - 1;
                struck.text = call;
                struck.isRepeated = std::find(outcome.calls.begin(), before, *before) != before;
                return struck;
            }
            ++struck.place;
            struck.sent += IsSend(call) ? 1 : 0;
        }
        return std::nullopt;
    }
};

// Every query of the jobs but those for the identity of an object, which no object refuses.
TEST_F(QueryFaultsTest, EachInterfaceThatIsRefusedDoesWhatIsSaidOfIt) {
    std::set<const Query*> struckQueries;
    for (const Job& job : Jobs()) {
        unsigned nth = 1;
        for (;; ++nth) {
            ASSERT_LT(nth, kMostCalls);
            RunOptions options = With(OptionsOf(job), {"IUnknown::QueryInterface", "", nth, kCode, false});
            options.behaviour.keepCalls = true;
            RunOutcome outcome = RunJob(job, std::move(options));
            if (!outcome.unstruckFaults.empty()) break;
            const std::optional<StruckCall> struck = RefusedQuery(outcome);
            ASSERT_TRUE(struck);
            SCOPED_TRACE(job.name + ", query " + std::to_string(nth) + ": " + struck->text);
            const Query* const pQuery = QueryOf(struck->text);
            ASSERT_NE(nullptr, pQuery) << "nothing is said of what becomes of a job when this is refused";
            struckQueries.insert(pQuery);

            EXPECT_EQ(ExpectedResult(job, *struck, pQuery->refusal), ResultOf(outcome))
                << HexOf(outcome.result);
            if (pQuery->refusal == Refusal::MakesPartUnknown) {
                EXPECT_EQ(std::vector<std::string>{"SendXpsUnknown was given " + ObjectOf(struck->text)},
                          outcome.breaches);
                outcome.breaches.clear();
            }
            ExpectNothingChanged(outcome);
            ExpectGoodResult(job);
        }
        ExpectTried("interfaces refused once", job, nth - 1);
    }
    for (const Query& query : kQueries) {
        EXPECT_TRUE(struckQueries.contains(&query)) << query.object << " was never asked";
    }
}

// What the provider answers, or writes, that fails a merge.
constexpr std::pair<const char*, HRESULT> kMergeFaults[] = {
    {"merge-refuse-base", static_cast<HRESULT>(0x80040003)},
    {"merge-refuse-delta", static_cast<HRESULT>(0x80040005)},
    {"merge-fail", E_FAIL},
    {"merge-oom", E_OUTOFMEMORY},
    {"out-empty", E_FAIL},
    {"out-truncated", E_FAIL},
    {"out-notxml", E_FAIL},
    {"out-shortwrite", STG_E_MEDIUMFULL}};

class ProviderFaultsTest : public FaultedJobTest {
  protected:
    // From the nth merge on, or the nth alone.
    static std::vector<std::string> Faults(const char* mode, std::size_t nth, std::size_t last) {
        std::vector<std::string> faults;
        for (; nth <= last; ++nth) faults.push_back(std::string("fault=") + mode + "@" + std::to_string(nth));
        return faults;
    }

    static std::size_t MergeCount() {
        const auto counts = Provider().Report().counts;
        const auto found = counts.find("PTMergeAndValidatePrintTicket");
        return found == counts.end() ? 0 : found->second;
    }

    // After so many merges, the last of which failed if there were any.
    static void ExpectEnded(const Job& job, std::vector<std::string> faults, HRESULT code,
                            std::size_t merges) {
        RunOptions options = OptionsOf(job);
        Configure(std::move(faults), job.device);
        const RunOutcome outcome = RunJob(job, std::move(options));
        const std::size_t made = MergeCount();
        const JobResult result = ResultOf(outcome);
        // It fails over the part that it has asked for last, none when it cannot begin.
        const std::size_t sent = outcome.asked == 0 ? 0 : outcome.asked - 1;
        ASSERT_LE(sent, GoodResult(job).sent.size());
        EXPECT_EQ(EndedEarly(GoodResult(job), sent, code, {code}), result) << HexOf(result.result);
        EXPECT_EQ(merges, made);
        ExpectNothingChanged(outcome);
        ExpectGoodResult(job);
    }
};

TEST_F(ProviderFaultsTest, AProviderThatCannotBeOpenedEndsEachJobBeforeAnyPart) {
    constexpr std::pair<const char*, HRESULT> kOpenFaults[] = {
        {"open-denied", E_ACCESSDENIED},
        {"open-gone", HRESULT_FROM_WIN32(ERROR_INVALID_PRINTER_NAME)},
        {"open-rpc", HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)}};
    for (const Job& job : Jobs()) {
        for (const auto& [mode, code] : kOpenFaults) {
            SCOPED_TRACE(job.name + ", " + mode);
            ExpectEnded(job, {std::string("fault=") + mode}, code, 0);
        }
    }
}

TEST_F(ProviderFaultsTest, EachMergeThatFailsOnceOrForGoodEndsTheJobWithItsCode) {
    for (const bool isForGood : {false, true}) {
        for (const Job& job : Jobs()) {
            ExpectGoodResult(job);
            const std::size_t merges = MergeCount();
            std::size_t tried = 0;
            for (const auto& [mode, code] : kMergeFaults) {
                for (std::size_t nth = 1; nth <= merges; ++nth, ++tried) {
                    SCOPED_TRACE(job.name + ", " + mode + " at " + std::to_string(nth) +
                                 (isForGood ? "+" : ""));
                    ExpectEnded(job, Faults(mode, nth, isForGood ? merges : nth), code, nth);
                }
            }
            ExpectTried(isForGood ? "merges failing for good" : "merges failing once", job, tried);
        }
    }
}

}  // namespace
}  // namespace systemtest
