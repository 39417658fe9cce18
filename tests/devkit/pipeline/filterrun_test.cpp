#include "devkit/pipeline/filterrun.h"

#include <atomic>
#include <map>
#include <stdexcept>
#include <thread>

#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/scriptedfilter.h"
#include "devkit/pipeline/testfilter/testfilter.h"
#include "livecount.h"
#include "platform/utf.h"
#include "platform/variant.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

constexpr HRESULT kCancelled = static_cast<HRESULT>(0x800704C7L);

// "KIND NAME" of each part that was sent.
Lines Titles(const RunOutcome& outcome) {
    Lines titles;
    for (const SentPart& part : outcome.parts) {
        titles.push_back(part.name.empty() ? NameOf(part.kind)
                                           : std::string(NameOf(part.kind)) + " " + part.name);
    }
    return titles;
}

const Lines kAllParts{"XpsDocument",
                      "FixedDocumentSequence /seq.fdseq",
                      "FixedDocument /1/1.fdoc",
                      "FixedPage /1/1.fpage",
                      "FixedPage /1/2.fpage",
                      "FixedDocument /2/2.fdoc",
                      "FixedPage /2/1.fpage"};

class FilterRunTest : public PipelineTest {
  protected:
    // Runs the test filter in the given mode over the sample.
    RunOutcome Run(const wchar_t* mode, RunOptions options = {}) {
        if (options.properties.driverValues) (*options.properties.driverValues)[L"TestFilterMode"] = mode;
        return FilterRun(Module(), SampleJob(), std::move(options)).Run();
    }
    static RunOptions CancelAt(unsigned part) {
        RunOptions options;
        options.cancelAt = part;
        options.stopTimeout = std::chrono::seconds(60);
        return options;
    }
    static std::shared_ptr<FilterSource> Module() {
        return std::make_shared<FilterModule>(TestFilterPath(), testfilter::kClassId);
    }
};

TEST_F(FilterRunTest, SendsEveryPartThroughInOrder) {
    const RunOutcome outcome = Run(L"");
    EXPECT_EQ(S_OK, outcome.initialized);
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_EQ(std::vector<HRESULT>{}, outcome.shutdownCodes);
    EXPECT_EQ(std::nullopt, outcome.shutdownOperation);
    EXPECT_EQ(Lines{}, outcome.breaches);
    EXPECT_EQ(kAllParts, Titles(outcome));
    EXPECT_EQ("the end of the parts", outcome.lastPart);
    EXPECT_TRUE(outcome.senderClosed);
    EXPECT_TRUE(outcome.IsWhole());
    for (const SentPart& part : outcome.parts) {
        EXPECT_FALSE(part.MarkupRewritten()) << part.name;
        EXPECT_FALSE(part.TicketReplaced()) << part.name;
    }
}

TEST_F(FilterRunTest, RecordsRewrittenMarkup) {
    const RunOutcome outcome = Run(L"rewrite");
    EXPECT_EQ(Lines{}, outcome.breaches);
    ASSERT_EQ(kAllParts, Titles(outcome));
    EXPECT_FALSE(outcome.parts[2].MarkupRewritten());
    EXPECT_TRUE(outcome.parts[3].MarkupRewritten());
    EXPECT_EQ(
        "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"1056\" Height=\"816\" "
        "xml:lang=\"en\"><!-- /1/1.fpage --></FixedPage>",
        *outcome.parts[3].part->Read());
    EXPECT_EQ(
        "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"816\" Height=\"1056\" "
        "xml:lang=\"en\"><!-- /1/1.fpage --></FixedPage>",
        *outcome.parts[3].part->ReadInput());
}

TEST_F(FilterRunTest, RecordsNewTicketsUnderTheNamesThatTheFilterGives) {
    const RunOutcome outcome = Run(L"ticket");
    EXPECT_EQ(Lines{}, outcome.breaches);
    ASSERT_EQ(kAllParts, Titles(outcome));
    EXPECT_TRUE(outcome.parts[3].TicketReplaced());
    // The ticket that it had is not kept.
    EXPECT_EQ(nullptr, outcome.parts[3].part->inputTicket);
    EXPECT_EQ("/Tickets\\made_1.xml", outcome.parts[3].part->ticket->Name());
    EXPECT_TRUE(outcome.parts[3].part->ticket->IsNew());
    EXPECT_TRUE(outcome.parts[4].TicketReplaced());
    EXPECT_EQ(nullptr, outcome.parts[4].part->inputTicket);
    EXPECT_FALSE(outcome.parts[2].TicketReplaced());
}

TEST_F(FilterRunTest, ADroppedPageIsNoBreach) {
    const RunOutcome outcome = Run(L"drop-first-page");
    EXPECT_EQ(Lines{}, outcome.breaches);
    Lines expected = kAllParts;
    expected.erase(expected.begin() + 3);
    EXPECT_EQ(expected, Titles(outcome));
    EXPECT_TRUE(outcome.IsWhole());
}

TEST_F(FilterRunTest, AnObjectOfTheFiltersOwnIsTakenAndReleased) {
    const RunOutcome outcome = Run(L"own-part");
    EXPECT_EQ(Lines{}, outcome.breaches);
    Lines expected = kAllParts;
    expected.insert(expected.begin() + 1, "Unknown");
    EXPECT_EQ(expected, Titles(outcome));
}

struct Misbehaviour {
    const wchar_t* mode;
    HRESULT result;
    Lines breaches;
};

void PrintTo(const Misbehaviour& misbehaviour, std::ostream* out) {
    *out << platform::ToUtf8(misbehaviour.mode);
}

class FilterRunBreachTest : public FilterRunTest, public testing::WithParamInterface<Misbehaviour> {};

TEST_P(FilterRunBreachTest, IsFound) {
    const Misbehaviour& expected = GetParam();
    const RunOutcome outcome = Run(expected.mode);
    EXPECT_EQ(expected.result, outcome.result);
    EXPECT_EQ(expected.breaches, outcome.breaches);
    EXPECT_FALSE(outcome.hung);
}

INSTANTIATE_TEST_SUITE_P(
    OneRuleEach, FilterRunBreachTest,
    testing::Values(
        Misbehaviour{L"no-close", S_OK, {"CloseSender was never called"}},
        Misbehaviour{L"close-twice", S_OK, {"CloseSender was called twice"}},
        Misbehaviour{L"close-without-parts",
                     S_OK,
                     {"the filter succeeded without having sent the FixedDocumentSequence"}},
        Misbehaviour{L"new-part-after-close", S_OK, {"GetNewEmptyPart of /late.xml came after CloseSender"}},
        Misbehaviour{
            L"send-after-close",
            kCallOutOfOrder,
            {"SendFixedPage of FixedPage /1/1.fpage came after CloseSender", "CloseSender was called twice"}},
        Misbehaviour{L"send-page-twice", kCallOutOfOrder, {"FixedPage /1/1.fpage was sent twice"}},
        Misbehaviour{
            L"send-sequence-twice", kCallOutOfOrder, {"FixedDocumentSequence /seq.fdseq was sent twice"}},
        Misbehaviour{L"no-document",
                     kCallOutOfOrder,
                     {"FixedDocumentSequence /seq.fdseq was sent before the XpsDocument"}},
        Misbehaviour{L"no-sequence",
                     kCallOutOfOrder,
                     {"FixedDocument /1/1.fdoc was sent before the FixedDocumentSequence"}},
        Misbehaviour{L"no-fixed-document",
                     kCallOutOfOrder,
                     {"FixedPage /1/1.fpage was sent before any FixedDocument"}},
        Misbehaviour{L"page-as-unknown", E_INVALIDARG, {"SendXpsUnknown was given FixedPage /1/1.fpage"}},
        Misbehaviour{L"null-page", E_POINTER, {"SendFixedPage was called with a null pointer"}},
        Misbehaviour{L"new-sequence",
                     E_NOINTERFACE,
                     {"GetNewEmptyPart of /new.fdseq asks for {8028D181-2C32-4249-8493-1BFB22045574}, which "
                      "is not the "
                      "interface of a part that it makes"}},
        Misbehaviour{
            L"delete-unknown",
            E_ELEMENT_NOT_FOUND,
            {"DeleteResource of FixedPage /1/1.fpage names /nowhere.png, which the page does not have"}},
        Misbehaviour{
            L"ticket-unclosed",
            kCallOutOfOrder,
            {"SetPrintTicket of FixedPage /1/1.fpage was given PrintTicket /Tickets\\made_1.xml while its "
             "write stream is open"}},
        Misbehaviour{L"rewrite-unclosed",
                     kCallOutOfOrder,
                     {"FixedPage /1/1.fpage was sent while its write stream is open"}},
        Misbehaviour{L"write-after-send",
                     S_OK,
                     {"GetWriteStream changes FixedPage /1/1.fpage, which was already sent",
                      "GetWriteStream changes FixedPage /1/2.fpage, which was already sent",
                      "GetWriteStream changes FixedPage /2/1.fpage, which was already sent"}},
        Misbehaviour{
            L"error-info",
            E_INVALIDARG,
            {"RequestShutdown was called with an error info object", "CloseSender was never called"}},
        Misbehaviour{L"impersonate", S_OK, {"StartOperation left its thread impersonating"}},
        Misbehaviour{L"enter-apartment", S_OK, {"StartOperation left its thread in another COM apartment"}},
        Misbehaviour{L"close-token", S_OK, {"the filter closed the handle of UserSecurityToken"}}),
    [](const auto& test) {
        std::string name;
        for (const wchar_t* letter = test.param.mode; *letter != 0; ++letter) {
            if (*letter != L'-') name += static_cast<char>(*letter);
        }
        return name;
    });

TEST_F(FilterRunTest, AStreamThatIsNeverClosedIsABreachOfAJobThatSucceeds) {
    const RunOutcome outcome = Run(L"unused-open-part");
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_EQ(Lines(3, "the write stream of /unused.xml was released without Close"), outcome.breaches);
    EXPECT_EQ(Lines{}, Run(L"unused-open-part", CancelAt(6)).breaches);
}

TEST_F(FilterRunTest, ALeakedPageIsFound) {
    tests::LiveCount::ExpectLeft("objects of the kit", 1);
    EXPECT_EQ(Lines{"never released: FixedPage /1/1.fpage, 1 reference"}, Run(L"leak-page").breaches);
}

TEST_F(FilterRunTest, AFilterThatKeepsItselfAliveIsFoundWithAllThatItHolds) {
    tests::LiveCount::ExpectLeft("objects of the kit", 8);
    EXPECT_EQ(
        (Lines{"the filter is still referenced 1 times beside the host's own reference",
               "never released: DocumentProvider, 2 references",
               "never released: DocumentConsumer, 2 references",
               "never released: PipelineControl, 1 reference", "never released: PropertyBag, 1 reference",
               "never released: Communicator, 1 reference", "never released: DriverPropertyBag, 1 reference",
               "never released: PrintClassFactory, 1 reference",
               "never released: ProgressReport, 1 reference",
               "DllCanUnloadNow answers 0x00000001 S_FALSE after the last release"}),
        Run(L"leak-self").breaches);
}

TEST_F(FilterRunTest, AnExceptionThatLeavesAMethodIsABreach) {
    EXPECT_EQ(Lines{"an exception left InitializeFilter"}, Run(L"throw-initialize").breaches);
    const RunOutcome started = Run(L"throw");
    EXPECT_EQ(E_UNEXPECTED, started.result);
    EXPECT_EQ((Lines{"an exception left StartOperation", "CloseSender was never called"}), started.breaches);
    const RunOutcome cancelledOne = Run(L"throw-shutdown", CancelAt(2));
    EXPECT_EQ(E_UNEXPECTED, cancelledOne.shutdownOperation);
    EXPECT_EQ(Lines{"an exception left ShutdownOperation"}, cancelledOne.breaches);
}

TEST_F(FilterRunTest, ADocumentThatAnswersEveryInterfaceIsSentAsADocument) {
    RunOptions options;
    options.behaviour.ambiguousDocument = true;
    const RunOutcome outcome = Run(L"", std::move(options));
    EXPECT_EQ(Lines{}, outcome.breaches);
    EXPECT_EQ(kAllParts, Titles(outcome));
}

// Lets the filters that hang go at the end of the test, and waits until all that they held is gone.
class HangingFilterTest : public FilterRunTest {
  protected:
    void TearDown() override {
        SetEvent(m_release);
        for (int i = 0; i < 60000 && common::LiveObjectCount() != m_before; ++i) Sleep(1);
        CloseHandle(m_release);
        FilterRunTest::TearDown();
    }

  private:
    const std::size_t m_before = common::LiveObjectCount();
    const HANDLE m_release = CreateEventW(
        nullptr, TRUE, FALSE, (L"testfilter-release-" + std::to_wstring(GetCurrentProcessId())).c_str());
};

TEST_F(HangingFilterTest, IsLeftBehindInStartOperation) {
    RunOptions options = CancelAt(2);
    // ShutdownOperation has to return within it, also on a busy machine.
    options.stopTimeout = std::chrono::milliseconds(500);
    const RunOutcome outcome = Run(L"hang-after-failure", std::move(options));
    EXPECT_TRUE(outcome.hung);
    EXPECT_EQ(E_PENDING, outcome.result);
    EXPECT_EQ(S_OK, outcome.shutdownOperation);
    EXPECT_EQ(Lines{"StartOperation did not return within 500 ms of ShutdownOperation"}, outcome.breaches);
    EXPECT_FALSE(outcome.IsWhole());
}

TEST_F(HangingFilterTest, IsLeftBehindInShutdownOperation) {
    RunOptions options = CancelAt(1);
    options.cancelConcurrently = true;
    options.behaviour.slowPart = std::chrono::seconds(60);
    options.stopTimeout = std::chrono::milliseconds(50);
    const RunOutcome outcome = Run(L"hang-in-shutdown", std::move(options));
    EXPECT_TRUE(outcome.hung);
    EXPECT_EQ(kCancelled, outcome.result);
    EXPECT_EQ(std::nullopt, outcome.shutdownOperation);
    EXPECT_EQ(Lines{"ShutdownOperation did not return within 50 ms of its call"}, outcome.breaches);
}

TEST_F(FilterRunTest, ShutdownOperationComesTwiceWhereThatIsWanted) {
    EXPECT_EQ(S_OK, Run(L"shutdown-once", CancelAt(2)).shutdownOperation);
    RunOptions options = CancelAt(2);
    options.cancelTwice = true;
    EXPECT_EQ(E_UNEXPECTED, Run(L"shutdown-once", std::move(options)).shutdownOperation);
}

TEST_F(FilterRunTest, AFailureIsReportedWithItsCode) {
    const RunOutcome outcome = Run(L"fail");
    EXPECT_EQ(E_ABORT, outcome.result);
    EXPECT_EQ(std::vector<HRESULT>{E_ABORT}, outcome.shutdownCodes);
    EXPECT_EQ("FixedPage /1/1.fpage", outcome.lastPart);
    EXPECT_EQ(Lines{}, outcome.breaches);
    EXPECT_FALSE(outcome.IsWhole());
}

TEST_F(FilterRunTest, AFailureOfInitializeFilterEndsTheRun) {
    const RunOutcome outcome = Run(L"fail-initialize");
    EXPECT_EQ(E_ABORT, outcome.initialized);
    EXPECT_EQ(E_ABORT, outcome.result);
    EXPECT_EQ(Lines{}, Titles(outcome));
    EXPECT_EQ(Lines{}, outcome.breaches);
}

TEST_F(FilterRunTest, AFilterThatIsNotToBeStartedIsInitialisedAndLetGo) {
    RunOptions options;
    options.startsOperation = false;
    const RunOutcome outcome = Run(L"throw", std::move(options));
    EXPECT_EQ(S_OK, outcome.initialized);
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_EQ(std::nullopt, outcome.operation);
    EXPECT_EQ(Lines{}, outcome.breaches);
    EXPECT_EQ(0u, outcome.asked);
    EXPECT_FALSE(outcome.IsWhole());
}

TEST_F(FilterRunTest, AMissingClassIsAFilterError) {
    const auto module = std::make_shared<FilterModule>(TestFilterPath(), __uuidof(IPrintPipelineFilter));
    FilterRun run(module, SampleJob(), {});
    EXPECT_THROW(static_cast<void>(run.Run()), FilterError);
}

TEST_F(FilterRunTest, ShortReadsAndShortWritesAndALateEndFlagCarryTheSameBytes) {
    RunOptions options;
    options.behaviour.maxBytesPerRead = 1;
    options.behaviour.maxBytesPerWrite = 3;
    options.behaviour.endFlag = EndFlag::AfterLastData;
    const RunOutcome outcome = Run(L"rewrite", std::move(options));
    EXPECT_EQ(Lines{}, outcome.breaches);
    ASSERT_EQ(kAllParts, Titles(outcome));
    EXPECT_EQ(*Run(L"rewrite").parts[3].part->Read(), *outcome.parts[3].part->Read());
}

TEST_F(FilterRunTest, EveryPlannedFaultComesOutAsItsCode) {
    const std::size_t before = common::LiveObjectCount();
    unsigned failed = 0;
    for (unsigned nth = 1;; ++nth) {
        ASSERT_LT(nth, 1000U);
        RunOptions options;
        options.behaviour.faults.push_back({"", "", nth, E_OUTOFMEMORY, false});
        const RunOutcome outcome = Run(L"rewrite", std::move(options));
        if (!outcome.unstruckFaults.empty()) break;
        ++failed;
        // The filter reads its mode with two calls whose failure it takes for "no mode".
        EXPECT_TRUE(outcome.result == E_OUTOFMEMORY || (outcome.result == S_OK && nth <= 2)) << nth;
        for (const std::string& breach : outcome.breaches) {
            EXPECT_EQ("CloseSender was never called", breach) << nth;
        }
        EXPECT_EQ(before, common::LiveObjectCount()) << nth;
    }
    EXPECT_GT(failed, 30U);
}

TEST_F(FilterRunTest, UnreadableInputIsToldApartFromAFailureOfTheFilter) {
    const auto job = SampleJob();
    job->documents[0].pages[1].markup.read = []() -> Bytes { throw std::runtime_error("damaged"); };
    RunOptions options;
    options.properties.driverValues = DriverValues{{L"TestFilterMode", L"rewrite"}};
    const RunOutcome outcome = FilterRun(Module(), job, std::move(options)).Run();
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), outcome.result);
    EXPECT_EQ(Lines{"/1/2.fpage: damaged"}, outcome.inputFailures);
    EXPECT_FALSE(outcome.IsWhole());
}

TEST_F(FilterRunTest, KeepsTheCallsWhenAsked) {
    RunOptions options;
    options.behaviour.keepCalls = true;
    const RunOutcome outcome = Run(L"fail", std::move(options));
    EXPECT_EQ(
        (Lines{"IPrintPipelinePropertyBag::GetProperty DriverPropertyBag",
               "IPrinterPropertyBag::GetString TestFilterMode", "IInterFilterCommunicator::RequestReader",
               "IInterFilterCommunicator::RequestWriter", "IXpsDocumentProvider::GetXpsPart",
               "IXpsDocumentConsumer::SendXpsDocument", "IXpsDocumentProvider::GetXpsPart",
               "IXpsDocumentConsumer::SendFixedDocumentSequence /seq.fdseq",
               "IXpsDocumentProvider::GetXpsPart", "IXpsDocumentConsumer::SendFixedDocument /1/1.fdoc",
               "IXpsDocumentProvider::GetXpsPart", "IPrintPipelineManagerControl::RequestShutdown 0x80004004",
               "IXpsDocumentConsumer::CloseSender"}),
        outcome.calls);
}

TEST_F(FilterRunTest, CancellingAtEachPartEndsTheRun) {
    const std::size_t before = common::LiveObjectCount();
    for (unsigned part = 1; part <= kAllParts.size() + 1; ++part) {
        const RunOutcome outcome = Run(L"close-on-shutdown", CancelAt(part));
        EXPECT_EQ(kCancelled, outcome.result) << part;
        EXPECT_TRUE(outcome.cancelled) << part;
        EXPECT_EQ(S_OK, outcome.shutdownOperation) << part;
        EXPECT_EQ(1U, outcome.finishedCount) << part;
        EXPECT_EQ(Lines{}, outcome.breaches) << part;
        EXPECT_EQ(Lines(kAllParts.begin(), kAllParts.begin() + part - 1), Titles(outcome)) << part;
        EXPECT_FALSE(outcome.IsWhole()) << part;
        EXPECT_EQ(before, common::LiveObjectCount()) << part;
    }
}

TEST_F(FilterRunTest, CancellingAlongsideTheFilterEndsTheRun) {
    for (unsigned part = 1; part <= kAllParts.size() + 1; ++part) {
        RunOptions options = CancelAt(part);
        options.cancelConcurrently = true;
        const RunOutcome outcome = Run(L"", std::move(options));
        EXPECT_FALSE(outcome.hung) << part;
        EXPECT_TRUE(outcome.result == kCancelled || outcome.result == S_OK) << part;
        EXPECT_EQ(Lines{}, outcome.breaches) << part;
    }
}

TEST_F(FilterRunTest, CancellingCanEndThePartsWithoutAFailure) {
    RunOptions options = CancelAt(3);
    options.behaviour.afterCancel = AfterCancel::EndOfParts;
    const RunOutcome outcome = Run(L"", std::move(options));
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_EQ(2U, Titles(outcome).size());
    EXPECT_FALSE(outcome.IsWhole());
    EXPECT_EQ(Lines{}, outcome.breaches);
}

TEST_F(FilterRunTest, CancellingCanKeepThePartsComingAndFailTheSending) {
    RunOptions options = CancelAt(3);
    options.behaviour.afterCancel = AfterCancel::KeepGiving;
    const RunOutcome outcome = Run(L"fail-silently", std::move(options));
    EXPECT_EQ(kCancelled, outcome.result);
    EXPECT_EQ(2U, Titles(outcome).size());
}

TEST_F(FilterRunTest, AFilterThatWaitsForShutdownIsEndedByIt) {
    const RunOutcome outcome = Run(L"hang-until-shutdown", CancelAt(1));
    EXPECT_EQ(kCancelled, outcome.result);
    EXPECT_FALSE(outcome.hung);
}

TEST_F(FilterRunTest, ATimeoutCancels) {
    RunOptions options;
    options.timeout = std::chrono::milliseconds(50);
    const RunOutcome outcome = Run(L"hang-until-shutdown", std::move(options));
    EXPECT_EQ(kCancelled, outcome.result);
    EXPECT_TRUE(outcome.cancelled);
}

TEST_F(FilterRunTest, AnotherThreadMayCancel) {
    RunOptions options;
    options.properties.driverValues = DriverValues{{L"TestFilterMode", L"hang-until-shutdown"}};
    FilterRun run(Module(), SampleJob(), std::move(options));
    std::thread user([&] { run.Cancel(); });
    const RunOutcome outcome = run.Run();
    user.join();
    EXPECT_EQ(kCancelled, outcome.result);
}

TEST_F(FilterRunTest, ASlowPartIsCutShortByACancellation) {
    RunOptions options = CancelAt(1);
    options.behaviour.slowPart = std::chrono::seconds(120);
    const auto start = std::chrono::steady_clock::now();
    const RunOutcome outcome = Run(L"", std::move(options));
    EXPECT_EQ(kCancelled, outcome.result);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST_F(FilterRunTest, ThePropertiesAreThoseThatWereAskedFor) {
    RunOptions options;
    options.behaviour.faults.push_back({"GetString", "TestFilterMode", 1, E_FAIL, false});
    options.properties.driverValues = std::nullopt;
    const RunOutcome outcome = Run(L"", std::move(options));
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_EQ(1U, outcome.unstruckFaults.size());
}

TEST_F(FilterRunTest, APipelineThreadInASingleThreadedApartmentIsSetUpAndTakenDownThere) {
    std::atomic<int> alive = 0;
    APTTYPE type = APTTYPE_NA;
    RunOptions options;
    options.apartment = Apartment::SingleThreaded;
    options.onPipelineThread = [&]() -> std::shared_ptr<void> {
        APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
        EXPECT_EQ(S_OK, CoGetApartmentType(&type, &qualifier));
        ++alive;
        return {nullptr, [&](void*) { --alive; }};
    };
    const RunOutcome outcome = Run(L"", std::move(options));
    EXPECT_EQ(Lines{}, outcome.breaches);
    EXPECT_TRUE(type == APTTYPE_STA || type == APTTYPE_MAINSTA) << type;
    EXPECT_EQ(0, alive);
}

// Writes down what it is told.
class Noting final : public RunObserver {
  public:
    void CallBegins(const char* call) override { Note(std::string("begins ") + call); }
    void CallEnds(const char* call) override { Note(std::string("ends ") + call); }
    void PartAsked(unsigned number) override { Note("asked " + std::to_string(number)); }
    void PartGiven(const std::string& part) override { Note("given " + part); }
    void PartSent(const SentPart& part) override { Note("sent " + part.name); }
    void Breached(Check check, const std::string& text) override {
        Note("breached: " + std::string(common::FactsOf(check).id) + ": " + text);
    }
    void Called() override {
        const std::lock_guard guard(m_lock);
        ++m_calls;
    }
    [[nodiscard]] const Lines& Told() const { return m_lines; }
    [[nodiscard]] unsigned Calls() const { return m_calls; }

  private:
    void Note(std::string line) {
        const std::lock_guard guard(m_lock);
        m_lines.push_back(std::move(line));
    }

    std::mutex m_lock;
    Lines m_lines;
    unsigned m_calls = 0;
};

TEST_F(FilterRunTest, AnObserverIsToldWhatHappens) {
    const auto observer = std::make_shared<Noting>();
    RunOptions options;
    options.observer = observer;
    const RunOutcome outcome = Run(L"close-twice", std::move(options));
    Lines told = observer->Told();
    ASSERT_GT(told.size(), 12U);
    EXPECT_EQ((Lines{"begins the making of the filter", "ends the making of the filter",
                     "begins InitializeFilter", "ends InitializeFilter", "begins StartOperation", "asked 1",
                     "given XpsDocument", "sent ", "asked 2"}),
              Lines(told.begin(), told.begin() + 9));
    EXPECT_EQ((Lines{"given the end of the parts", "breached: sender-once: CloseSender was called twice",
                     "ends StartOperation", "begins the last release", "ends the last release"}),
              Lines(told.end() - 5, told.end()));
    EXPECT_GT(observer->Calls(), 20U);
    EXPECT_EQ(8U, outcome.asked);
}

TEST_F(FilterRunTest, AnObjectThatIsReleasedTooOftenIsABreachAndNoCrash) {
    const RunOutcome outcome = Run(L"release-page-twice");
    EXPECT_EQ(S_OK, outcome.result);
    ASSERT_EQ(1U, outcome.breaches.size());
    EXPECT_TRUE(outcome.breaches[0].starts_with("Release of FixedPage /")) << outcome.breaches[0];
    EXPECT_TRUE(outcome.breaches[0].ends_with(" came after its last Release")) << outcome.breaches[0];
}

// Runs a filter of the test program that does this in StartOperation.
RunOutcome RunScript(FilterScript script, RunOptions options = {}) {
    return FilterRun(std::make_shared<ScriptedSource>(std::move(script)), SampleJob(), std::move(options))
        .Run();
}

// The type of a property, VT_EMPTY when there is none.
VARTYPE TypeOf(GivenToFilter& given, const wchar_t* name) {
    platform::Variant value;
    return SUCCEEDED(given.bag->GetProperty(name, value.Put())) ? value.Type()
                                                                : static_cast<VARTYPE>(VT_EMPTY);
}

TEST_F(FilterRunTest, TellsTheFiltersTimeFromThePipelines) {
    using std::chrono::milliseconds;
    RunOptions options;
    options.behaviour.slowPart = milliseconds(1000);
    const RunOutcome outcome = RunScript(
        {.start =
             [](GivenToFilter& given) {
                 Sleep(100);
                 ComPtr<IXpsDocumentProvider> reader;
                 static_cast<void>(given.communicator->RequestReader(reinterpret_cast<void**>(reader.Put())));
                 ComPtr<IUnknown> part;
                 return reader->GetXpsPart(part.Put());
             }},
        std::move(options));
    const OperationTimes& times = outcome.times;
    EXPECT_LE(milliseconds(100), times.Of(Share::Filter));
    EXPECT_GT(milliseconds(1000), times.Of(Share::Filter));
    EXPECT_LE(milliseconds(1000), times.Of(Share::Pipeline));
    EXPECT_EQ(times.end - times.begin,
              times.Of(Share::Filter) + times.Of(Share::Pipeline) + times.Of(Share::Observer));
}

TEST_F(FilterRunTest, TimeCanBeSaidToBeSomebodyElses) {
    constexpr std::chrono::milliseconds kTime{30};
    FilterRun* pRun = nullptr;
    FilterScript script;
    script.start = [&](GivenToFilter&) {
        Sleep(30);
        pRun->Reassign(Share::TicketProvider, kTime);
        return S_OK;
    };
    FilterRun run(std::make_shared<ScriptedSource>(std::move(script)), SampleJob(), RunOptions());
    pRun = &run;
    EXPECT_EQ(kTime, run.Run().times.Of(Share::TicketProvider));
}

TEST_F(FilterRunTest, AFilterThatFailsToInitialiseNeedNotCloseTheWriterThatItTook) {
    const RunOutcome outcome = RunScript({.initialize = [](GivenToFilter& given) {
        ComPtr<IXpsDocumentConsumer> writer;
        EXPECT_EQ(S_OK, given.communicator->RequestWriter(writer.PutVoid()));
        return E_FAIL;
    }});
    EXPECT_EQ(E_FAIL, outcome.result);
    EXPECT_EQ(Lines{}, outcome.breaches);
}

TEST_F(FilterRunTest, AThreadThatCannotBeSetUpIsNotTheFiltersDoing) {
    RunOptions options;
    options.onPipelineThread = []() -> std::shared_ptr<void> { throw std::runtime_error("no room"); };
    const RunOutcome outcome = RunScript({}, std::move(options));
    EXPECT_EQ(E_FAIL, outcome.result);
    EXPECT_EQ(Lines{"the pipeline thread could not be set up: no room"}, outcome.breaches);
}

TEST_F(FilterRunTest, TheBagHasTheDocumentedEntries) {
    RunOptions options;
    JobProperties& properties = options.properties;
    properties.userTicket = std::make_shared<const std::string>("user");
    properties.jobTicket = std::make_shared<const std::string>("job");
    properties.deviceCapabilities = std::make_shared<const std::string>("device");
    properties.outputFile = L"out.xps";
    properties.contentType = L"OpenXPS";
    properties.queueValues = DriverValues{{L"Queue", LONG{1}}};
    properties.more = {{L"Own", ULONG{5}}, {L"PrintJobId", ULONG{77}}};
    std::map<std::wstring, VARTYPE> types;
    const RunOutcome outcome = RunScript(
        {.start =
             [&](GivenToFilter& given) {
                 for (const wchar_t* name :
                      {L"PrinterName", L"PrinterHandle", L"UserSecurityToken", L"PerUserPrintTicket",
                       L"PrintJobId", L"ProgressReport", L"PrintClassFactory", L"DriverPropertyBag",
                       L"QueuePropertyBag", L"PrintOutputFileName", L"DriverMultiContentType",
                       L"JobPrintTicket", L"PrintDeviceCapabilities", L"Own"})
                     types[name] = TypeOf(given, name);
                 return S_OK;
             }},
        std::move(options));
    const std::map<std::wstring, VARTYPE> expected{{L"PrinterName", VT_BSTR},
                                                   {L"PrinterHandle", VT_BYREF},
                                                   {L"UserSecurityToken", VT_BYREF},
                                                   {L"PerUserPrintTicket", VT_UNKNOWN},
                                                   {L"PrintJobId", VT_UI4},
                                                   {L"ProgressReport", VT_UNKNOWN},
                                                   {L"PrintClassFactory", VT_UNKNOWN},
                                                   {L"DriverPropertyBag", VT_UNKNOWN},
                                                   {L"QueuePropertyBag", VT_UNKNOWN},
                                                   {L"PrintOutputFileName", VT_BSTR},
                                                   {L"DriverMultiContentType", VT_BSTR},
                                                   {L"JobPrintTicket", VT_UNKNOWN},
                                                   {L"PrintDeviceCapabilities", VT_UNKNOWN},
                                                   {L"Own", VT_UI4}};
    EXPECT_EQ(expected, types);
    EXPECT_EQ(Lines{}, outcome.missing);
}

TEST_F(FilterRunTest, TellsWhatTheFilterAskedForInVain) {
    const RunOutcome outcome = RunScript({.start = [](GivenToFilter& given) {
        TypeOf(given, L"PerUserPrintTicket");
        TypeOf(given, L"IPrintCoreHelper");
        return S_OK;
    }});
    EXPECT_EQ((Lines{"property PerUserPrintTicket", "property IPrintCoreHelper"}), outcome.missing);
}

TEST_F(FilterRunTest, CountsTheProgressThatTheFilterReports) {
    const RunOutcome outcome = RunScript({.start = [](GivenToFilter& given) {
        platform::Variant value;
        platform::ComPtr<IPrintPipelineProgressReport> report;
        EXPECT_EQ(S_OK, given.bag->GetProperty(L"ProgressReport", value.Put()));
        EXPECT_EQ(TRUE, given.bag->DeleteProperty(L"ProgressReport"));
        EXPECT_EQ(S_OK, platform::ComPtr<IUnknown>(value.Unknown()).QueryTo(report));
        EXPECT_EQ(S_OK, report->ReportProgress(XpsJob_FixedPageAdded));
        return report->ReportProgress(XpsJob_FixedPageAdded);
    }});
    EXPECT_EQ((ProgressCounts{0, 0, 2}), outcome.progress);
}

TEST_F(FilterRunTest, TheJobsTicketIsNotToBeHadInInitializeFilter) {
    RunOptions options;
    options.properties.jobTicket = std::make_shared<const std::string>("job");
    const auto getTicket = [](GivenToFilter& given) {
        platform::Variant value;
        platform::ComPtr<IPrintReadStreamFactory> factory;
        platform::ComPtr<IPrintReadStream> stream;
        EXPECT_EQ(S_OK, given.bag->GetProperty(L"JobPrintTicket", value.Put()));
        EXPECT_EQ(S_OK, platform::ComPtr<IUnknown>(value.Unknown()).QueryTo(factory));
        return factory->GetStream(stream.Put());
    };
    HRESULT early = S_OK;
    HRESULT late = E_FAIL;
    const RunOutcome outcome = RunScript({.initialize =
                                              [&](GivenToFilter& given) {
                                                  early = getTicket(given);
                                                  return S_OK;
                                              },
                                          .start =
                                              [&](GivenToFilter& given) {
                                                  late = getTicket(given);
                                                  return S_OK;
                                              }},
                                         std::move(options));
    EXPECT_EQ(kCallOutOfOrder, early);
    EXPECT_EQ(S_OK, late);
    ASSERT_FALSE(outcome.breaches.empty());
    EXPECT_EQ("GetStream of JobPrintTicket was called in InitializeFilter, where it never returns",
              outcome.breaches.front());
}

TEST_F(FilterRunTest, TheLastReleaseComesFromTheThreadThatIsAskedFor) {
    for (const LastRelease lastRelease : {LastRelease::Caller, LastRelease::OtherThread}) {
        RunOptions options;
        options.lastRelease = lastRelease;
        DWORD thread = 0;
        static_cast<void>(
            RunScript({.released = [&] { thread = GetCurrentThreadId(); }}, std::move(options)));
        EXPECT_NE(0U, thread);
        EXPECT_EQ(lastRelease == LastRelease::Caller, thread == GetCurrentThreadId());
    }
}

}  // namespace
}  // namespace devkit::pipeline
