#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <set>

#include "devkit/package/xpsdocument.h"
#include "devkit/pipeline/filterrun.h"
#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/scriptedfilter.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

// What a filter of parts does with a page before it sends it; a failure ends the filter.
using OnPage = std::function<HRESULT(IFixedPage& page, IXpsDocumentConsumer& writer)>;

template <typename Interface>
bool SendAs(IUnknown* pPart, IXpsDocumentConsumer& writer,
            HRESULT (STDMETHODCALLTYPE IXpsDocumentConsumer::*send)(Interface*), HRESULT& hr) {
    ComPtr<Interface> part;
    if (FAILED(pPart->QueryInterface(__uuidof(Interface), part.PutVoid()))) return false;
    hr = (writer.*send)(part.Get());
    return true;
}

HRESULT PassPart(IUnknown* pPart, IXpsDocumentConsumer& writer, const OnPage& onPage) {
    HRESULT hr = S_OK;
    ComPtr<IFixedPage> page;
    if (SUCCEEDED(pPart->QueryInterface(__uuidof(IFixedPage), page.PutVoid()))) {
        if (onPage) hr = onPage(*page.Get(), writer);
        return FAILED(hr) ? hr : writer.SendFixedPage(page.Get());
    }
    if (SendAs<IXpsDocument>(pPart, writer, &IXpsDocumentConsumer::SendXpsDocument, hr) ||
        SendAs<IFixedDocumentSequence>(pPart, writer, &IXpsDocumentConsumer::SendFixedDocumentSequence, hr) ||
        SendAs<IFixedDocument>(pPart, writer, &IXpsDocumentConsumer::SendFixedDocument, hr)) {
        return hr;
    }
    return writer.SendXpsUnknown(pPart);
}

HRESULT PassParts(GivenToFilter& given, const OnPage& onPage) {
    ComPtr<IXpsDocumentProvider> reader;
    ComPtr<IXpsDocumentConsumer> writer;
    HRESULT hr = given.communicator->RequestReader(reader.PutVoid());
    if (SUCCEEDED(hr)) hr = given.communicator->RequestWriter(writer.PutVoid());
    while (SUCCEEDED(hr)) {
        ComPtr<IUnknown> part;
        hr = reader->GetXpsPart(part.Put());
        if (FAILED(hr) || !part) break;
        hr = PassPart(part.Get(), *writer.Get(), onPage);
    }
    const HRESULT closed = writer->CloseSender();
    return FAILED(hr) ? hr : closed;
}

// A filter that passes all on.
FilterScript Passing(OnPage onPage = {}) {
    return {.start = [onPage = std::move(onPage)](GivenToFilter& given) { return PassParts(given, onPage); }};
}

HRESULT Write(IPrintWriteStream& stream, const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        ULONG count = 0;
        const HRESULT hr =
            stream.WriteBytes(text.data() + done, static_cast<ULONG>(text.size() - done), &count);
        if (FAILED(hr)) return hr;
        done += count;
    }
    return S_OK;
}

HRESULT Rewrite(IFixedPage& page, const std::string& add) {
    ComPtr<IPrintReadStream> reader;
    ComPtr<IPrintWriteStream> writer;
    HRESULT hr = page.GetStream(reader.Put());
    if (SUCCEEDED(hr)) hr = page.GetWriteStream(writer.Put());
    if (FAILED(hr)) return hr;
    hr = Write(*writer.Get(), ReadAll(reader.Get()) + add);
    writer->Close();
    return hr;
}

// A filter of streams that gives what it reads through `change`.
FilterScript Streaming(std::function<std::string(std::string)> change) {
    return {.start = [change = std::move(change)](GivenToFilter& given) {
        ComPtr<IPrintReadStream> reader;
        ComPtr<IPrintWriteStream> writer;
        EXPECT_EQ(S_OK, given.communicator->RequestReader(reader.PutVoid()));
        EXPECT_EQ(S_OK, given.communicator->RequestWriter(writer.PutVoid()));
        const HRESULT hr = Write(*writer.Get(), change(ReadAll(reader.Get())));
        writer->Close();
        return hr;
    }};
}

ChainedFilter Named(std::string name, FilterScript script, DataKind input = DataKind::Xps,
                    DataKind output = DataKind::Xps) {
    return {std::move(name), std::make_shared<ScriptedSource>(std::move(script)), input, output};
}

std::string SampleBytes(const char* name) {
    std::ifstream file(std::filesystem::path(SAMPLES_FOLDER) / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Lines TitlesOf(const RunOutcome& outcome) {
    Lines titles;
    for (const SentPart& part : outcome.parts)
        titles.push_back(std::string(NameOf(part.kind)) + " " + part.name);
    return titles;
}

class ChainTest : public PipelineTest {
  protected:
    static std::vector<RunOutcome> Run(std::vector<ChainedFilter> filters, RunOptions options = {}) {
        return FilterRun(std::move(filters), {SampleJob(), nullptr}, std::move(options)).RunChain();
    }
    static RunOptions Stopping() {
        RunOptions options;
        options.stopTimeout = std::chrono::seconds(60);
        return options;
    }
};

TEST_F(ChainTest, EachFilterGetsWhatTheOneBeforeItSent) {
    const auto outcomes =
        Run({Named("first", Passing([](IFixedPage& page, auto&) { return Rewrite(page, "1"); })),
             Named("second", Passing([](IFixedPage& page, auto&) { return Rewrite(page, "2"); })),
             Named("third", Passing())});
    ASSERT_EQ(3U, outcomes.size());
    for (const RunOutcome& outcome : outcomes) {
        EXPECT_EQ(S_OK, outcome.result) << outcome.filter;
        EXPECT_EQ(Lines{}, outcome.breaches) << outcome.filter;
        EXPECT_TRUE(outcome.IsWhole()) << outcome.filter;
        EXPECT_EQ(TitlesOf(outcomes[0]), TitlesOf(outcome)) << outcome.filter;
        EXPECT_EQ(7U, outcome.parts.size());
    }
    EXPECT_EQ("second", outcomes[1].filter);
    const SentPart& page = outcomes[2].parts[3];
    EXPECT_TRUE(page.MarkupRewritten());
    EXPECT_TRUE(page.part->Read()->ends_with("</FixedPage>12"));
    EXPECT_FALSE(page.TicketReplaced());
    EXPECT_EQ("/1/1_PT.xml", page.part->ticket->Name());
    EXPECT_EQ(5U, page.part->resources.size());
}

TEST_F(ChainTest, TheFiltersRunAtTheSameTimeEachOnItsOwnThread) {
    std::mutex lock;
    std::set<DWORD> threads;
    std::atomic<unsigned> firstPages = 0;
    std::atomic<unsigned> seenBySecond = 0;
    const auto outcomes = Run({Named("first", Passing([&](IFixedPage&, auto&) {
                                         const std::lock_guard guard(lock);
                                         threads.insert(GetCurrentThreadId());
                                         ++firstPages;
                                         return S_OK;
                                     })),
                               Named("second", Passing([&](IFixedPage&, auto&) {
                                         const std::lock_guard guard(lock);
                                         threads.insert(GetCurrentThreadId());
                                         if (seenBySecond == 0) seenBySecond = firstPages.load();
                                         return S_OK;
                                     }))});
    EXPECT_EQ(S_OK, outcomes[1].result);
    EXPECT_EQ(2U, threads.size());
    EXPECT_FALSE(threads.contains(GetCurrentThreadId()));
    EXPECT_GE(seenBySecond, 1U);
}

TEST_F(ChainTest, AFasterFilterWaitsForASlowerOne) {
    std::atomic<unsigned> sent = 0;
    std::atomic<unsigned> most = 0;
    std::atomic<unsigned> taken = 0;
    auto job = SampleJob();
    for (int i = 0; i < 60; ++i) job->documents[0].pages.push_back(job->documents[0].pages[1]);
    const auto outcomes = FilterRun({Named("fast", Passing([&](IFixedPage&, auto&) {
                                               ++sent;
                                               return S_OK;
                                           })),
                                     Named("slow", Passing([&](IFixedPage&, auto&) {
                                               Sleep(1);
                                               ++taken;
                                               most = std::max<unsigned>(most, sent - taken);
                                               return S_OK;
                                           }))},
                                    {job, nullptr}, {})
                              .RunChain();
    EXPECT_EQ(S_OK, outcomes[1].result);
    EXPECT_EQ(63U, taken);
    EXPECT_LE(most, 8U);
}

TEST_F(ChainTest, WhatAFilterMakesReachesTheEnd) {
    const auto outcomes =
        Run({Named("first", Passing([](IFixedPage& page, IXpsDocumentConsumer& writer) {
                       ComPtr<IPartPrintTicket> ticket;
                       ComPtr<IPrintWriteStream> stream;
                       EXPECT_EQ(S_OK, writer.GetNewEmptyPart(L"/made.xml", __uuidof(IPartPrintTicket),
                                                              ticket.PutVoid(), stream.Put()));
                       EXPECT_EQ(S_OK, Write(*stream.Get(), "made"));
                       stream->Close();
                       return page.SetPrintTicket(ticket.Get());
                   })),
             Named("second", Passing([](IFixedPage& page, auto&) {
                       ComPtr<IPartPrintTicket> ticket;
                       ComPtr<IPrintReadStream> stream;
                       EXPECT_EQ(S_OK, page.GetPrintTicket(ticket.Put()));
                       EXPECT_EQ(S_OK, ticket->GetStream(stream.Put()));
                       EXPECT_EQ("made", ReadAll(stream.Get()));
                       return S_OK;
                   }))});
    EXPECT_EQ(Lines{}, outcomes[1].breaches);
    const SentPart& page = outcomes[1].parts[3];
    EXPECT_TRUE(page.TicketReplaced());
    EXPECT_TRUE(page.part->ticket->IsNew());
    EXPECT_EQ("made", page.part->ticket->Packaged().Read());
}

TEST_F(ChainTest, AnObjectOfAFiltersOwnGoesThroughAll) {
    class Own final : public platform::ComIdentity<common::CountedObject, IUnknown> {};
    FilterScript sender;
    sender.start = [](GivenToFilter& given) {
        ComPtr<IXpsDocumentConsumer> writer;
        EXPECT_EQ(S_OK, given.communicator->RequestWriter(writer.PutVoid()));
        EXPECT_EQ(S_OK, writer->SendXpsUnknown(platform::MakeObject<Own>().Get()));
        return PassParts(given, {});
    };
    const auto outcomes =
        Run({Named("first", std::move(sender)), Named("second", Passing()), Named("third", Passing())});
    for (const RunOutcome& outcome : outcomes) {
        ASSERT_EQ(8U, outcome.parts.size());
        EXPECT_EQ(nullptr, outcome.parts[0].part);
        EXPECT_EQ(Lines{}, outcome.breaches);
    }
}

TEST_F(ChainTest, AFailureStopsTheOthers) {
    std::atomic<int> shutdowns = 0;
    const auto stoppable = [&](OnPage onPage = {}) {
        FilterScript script = Passing(std::move(onPage));
        script.shutdown = [&] {
            ++shutdowns;
            return S_OK;
        };
        return script;
    };
    auto job = SampleJob();
    for (int i = 0; i < 60; ++i) job->documents[0].pages.push_back(job->documents[0].pages[1]);
    const auto outcomes =
        FilterRun({Named("first", stoppable()),
                   Named("second", stoppable([](IFixedPage&, auto&) { return E_ACCESSDENIED; })),
                   Named("third", stoppable())},
                  {job, nullptr}, Stopping())
            .RunChain();
    EXPECT_EQ(E_ACCESSDENIED, outcomes[1].result);
    EXPECT_FALSE(outcomes[1].cancelled);
    EXPECT_FALSE(outcomes[0].IsWhole() && outcomes[2].IsWhole());
    EXPECT_FALSE(outcomes[2].IsWhole());
    EXPECT_EQ(kJobCancelled, outcomes[2].result);
    for (const RunOutcome& outcome : outcomes) EXPECT_FALSE(outcome.hung) << outcome.filter;
    EXPECT_GE(shutdowns, 0);
}

TEST_F(ChainTest, ACancellationComesToEveryFilterThatRuns) {
    std::mutex lock;
    std::set<std::string> stopped;
    const auto waiting = [&](const std::string& name) {
        // Runs until it is stopped, whatever it is sent.
        FilterScript script;
        const auto isStopped = std::make_shared<std::atomic<bool>>(false);
        script.start = [isStopped](GivenToFilter& given) {
            ComPtr<IXpsDocumentConsumer> writer;
            EXPECT_EQ(S_OK, given.communicator->RequestWriter(writer.PutVoid()));
            while (!*isStopped) Sleep(1);
            return writer->CloseSender();
        };
        script.shutdown = [&, name, isStopped] {
            {
                const std::lock_guard guard(lock);
                stopped.insert(name);
            }
            *isStopped = true;
            return S_OK;
        };
        return Named(name, std::move(script));
    };
    RunOptions options = Stopping();
    options.timeout = std::chrono::milliseconds(50);
    const auto outcomes = Run({waiting("first"), waiting("second"), waiting("third")}, std::move(options));
    EXPECT_EQ((std::set<std::string>{"first", "second", "third"}), stopped);
    for (const RunOutcome& outcome : outcomes) {
        EXPECT_TRUE(outcome.cancelled);
        EXPECT_FALSE(outcome.hung);
        EXPECT_EQ(S_OK, outcome.shutdownOperation);
    }
}

TEST_F(ChainTest, AFilterThatEndsEarlyDoesNotHoldTheOneBeforeItUp) {
    auto job = SampleJob();
    for (int i = 0; i < 60; ++i) job->documents[0].pages.push_back(job->documents[0].pages[1]);
    FilterScript early;
    early.start = [](GivenToFilter& given) {
        ComPtr<IXpsDocumentConsumer> writer;
        EXPECT_EQ(S_OK, given.communicator->RequestWriter(writer.PutVoid()));
        return writer->CloseSender();
    };
    const auto outcomes =
        FilterRun({Named("first", Passing()), Named("early", std::move(early))}, {job, nullptr}, Stopping())
            .RunChain();
    EXPECT_EQ(S_OK, outcomes[0].result);
    EXPECT_EQ(67U, outcomes[0].parts.size());
    EXPECT_EQ(Lines{"the filter succeeded without having sent the FixedDocumentSequence"},
              outcomes[1].breaches);
}

TEST_F(ChainTest, AFilterThatCannotBeInitialisedKeepsAllFromStarting) {
    std::atomic<int> started = 0;
    FilterScript first;
    first.start = [&](GivenToFilter&) {
        ++started;
        return S_OK;
    };
    FilterScript second = first;
    second.initialize = [](GivenToFilter&) { return E_ABORT; };
    const auto outcomes = Run({Named("first", first), Named("second", second), Named("third", first)});
    EXPECT_EQ(0, started);
    EXPECT_EQ(S_OK, outcomes[0].initialized);
    EXPECT_EQ(E_ABORT, outcomes[1].initialized);
    EXPECT_EQ(E_ABORT, outcomes[1].result);
    EXPECT_EQ(E_PENDING, outcomes[2].initialized);
    EXPECT_FALSE(outcomes[2].IsWhole());
}

TEST_F(ChainTest, AStreamFilterReadsThePackageAndWritesBytes) {
    const auto package = std::make_shared<const std::string>(SampleBytes("minimal.xps"));
    std::string read;
    const auto outcome = FilterRun({Named("stream", Streaming([&](std::string bytes) {
                                              read = bytes;
                                              return bytes + "!";
                                          }),
                                          DataKind::Stream, DataKind::Stream)},
                                   {nullptr, package}, {})
                             .Run();
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_EQ(Lines{}, outcome.breaches);
    EXPECT_TRUE(outcome.IsWhole());
    EXPECT_TRUE(*package == read);
    ASSERT_TRUE(outcome.bytes);
    EXPECT_TRUE(*package + "!" == *outcome.bytes);
}

TEST_F(ChainTest, ShortReadsAndWritesConcernStreamFiltersToo) {
    RunOptions options;
    options.behaviour.maxBytesPerRead = 7;
    options.behaviour.maxBytesPerWrite = 5;
    options.behaviour.endFlag = EndFlag::AfterLastData;
    const auto package = std::make_shared<const std::string>(SampleBytes("minimal.xps"));
    const auto pass = [] {
        return Named("stream", Streaming([](std::string bytes) { return bytes; }), DataKind::Stream,
                     DataKind::Stream);
    };
    const auto outcomes = FilterRun({pass(), pass()}, {nullptr, package}, std::move(options)).RunChain();
    ASSERT_TRUE(outcomes[1].bytes);
    EXPECT_TRUE(*package == *outcomes[1].bytes);
}

TEST_F(ChainTest, AStreamFilterThatDoesNotCloseIsToldSo) {
    FilterScript script;
    script.start = [](GivenToFilter& given) {
        ComPtr<IPrintWriteStream> writer;
        EXPECT_EQ(S_OK, given.communicator->RequestWriter(writer.PutVoid()));
        return Write(*writer.Get(), "half");
    };
    const auto outcome = FilterRun({Named("stream", std::move(script), DataKind::Stream, DataKind::Stream)},
                                   {nullptr, std::make_shared<const std::string>("bytes")}, {})
                             .Run();
    EXPECT_EQ(Lines{"the write stream of the output was released without Close"}, outcome.breaches);
    EXPECT_FALSE(outcome.IsWhole());
    EXPECT_EQ(nullptr, outcome.bytes);
}

TEST_F(ChainTest, AStreamFilterThatIsNotStartedHasNothingToClose) {
    RunOptions options;
    options.startsOperation = false;
    const auto outcome =
        FilterRun({Named("stream", FilterScript(), DataKind::Stream, DataKind::Stream)},
                  {nullptr, std::make_shared<const std::string>("bytes")}, std::move(options))
            .Run();
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_EQ(Lines{}, outcome.breaches);
}

TEST_F(ChainTest, AFilterOfPartsMayWriteAStream) {
    FilterScript render;
    render.start = [](GivenToFilter& given) {
        ComPtr<IXpsDocumentProvider> reader;
        ComPtr<IPrintWriteStream> writer;
        EXPECT_EQ(S_OK, given.communicator->RequestReader(reader.PutVoid()));
        EXPECT_EQ(S_OK, given.communicator->RequestWriter(writer.PutVoid()));
        for (;;) {
            ComPtr<IUnknown> part;
            if (FAILED(reader->GetXpsPart(part.Put())) || !part) break;
            EXPECT_EQ(S_OK, Write(*writer.Get(), "part\n"));
        }
        writer->Close();
        return S_OK;
    };
    const auto outcomes =
        Run({Named("first", Passing()), Named("render", std::move(render), DataKind::Xps, DataKind::Stream)});
    EXPECT_EQ(Lines{}, outcomes[1].breaches);
    EXPECT_TRUE(outcomes[1].IsWhole());
    ASSERT_TRUE(outcomes[1].bytes);
    EXPECT_EQ(7 * 5U, outcomes[1].bytes->size());
}

TEST_F(ChainTest, BetweenPartsAndAStreamGoesAPackage) {
    const auto package = std::make_shared<const std::string>(SampleBytes("sample.xps"));
    const auto outcomes =
        FilterRun(
            {Named("parts", Passing([](IFixedPage& page, auto&) { return Rewrite(page, "<!-- 1 -->"); })),
             Named("stream", Streaming([](std::string bytes) { return bytes; }), DataKind::Stream,
                   DataKind::Stream),
             Named("again", Passing([](IFixedPage& page, auto&) { return Rewrite(page, "<!-- 2 -->"); }))},
            {nullptr, package}, Stopping())
            .RunChain();
    for (const RunOutcome& outcome : outcomes) {
        EXPECT_EQ(S_OK, outcome.result) << outcome.filter;
        EXPECT_EQ(Lines{}, outcome.breaches) << outcome.filter;
        EXPECT_EQ(Lines{}, outcome.inputFailures) << outcome.filter;
    }
    ASSERT_TRUE(outcomes[2].bytes);
    const auto before = MakeJobInput(package, "before");
    const auto after = MakeJobInput(outcomes[2].bytes, "after");
    ASSERT_EQ(before->documents.size(), after->documents.size());
    EXPECT_TRUE(after->documents[0].PageAt(0).markup.read()->ends_with("<!-- 1 --><!-- 2 -->"));
    EXPECT_EQ(before->documents[0].PageAt(0).resources.size(),
              after->documents[0].PageAt(0).resources.size());
}

TEST_F(ChainTest, AStreamThatIsNoPackageCannotBecomeParts) {
    const auto outcomes =
        FilterRun({Named("stream", Streaming([](std::string) { return std::string("no package"); }),
                         DataKind::Stream, DataKind::Stream),
                   Named("parts", Passing())},
                  {nullptr, std::make_shared<const std::string>("bytes")}, Stopping())
            .RunChain();
    EXPECT_EQ(S_OK, outcomes[0].result);
    EXPECT_EQ(Lines{"what the filter sent cannot be handed on: is not a zip archive, the output of stream"},
              outcomes[0].inputFailures);
    EXPECT_EQ(kJobCancelled, outcomes[1].result);
}

}  // namespace
}  // namespace devkit::pipeline
