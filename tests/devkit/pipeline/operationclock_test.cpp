#include "devkit/pipeline/operationclock.h"

#include <functional>
#include <numeric>
#include <thread>

#include "devkit/pipeline/communicator.h"
#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/pageobjects.h"
#include "devkit/pipeline/pipelinecontrol.h"
#include "devkit/pipeline/propertybags.h"
#include "platform/bstr.h"
#include "platform/variant.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;
using std::chrono::milliseconds;
using Timed = OperationClock::Timed;

void Nap(milliseconds time = kNap) { std::this_thread::sleep_for(time); }

OperationTimes::Duration SumOf(const OperationTimes& times) {
    return std::accumulate(times.shares.begin(), times.shares.end(), OperationTimes::Duration());
}

TEST(OperationClock, GivesEachMomentToTheInnermostShare) {
    OperationClock clock;
    {
        const OperationClock::Operation operation(clock);
        Nap();
        {
            const Timed pipeline(clock, Share::Pipeline);
            Nap(2 * kNap);
            {
                const Timed observer(clock, Share::Observer);
                Nap(4 * kNap);
            }
            Nap(4 * kNap);
            const Timed again(clock, Share::Pipeline);
            Nap(2 * kNap);
        }
        Nap();
    }
    const OperationTimes times = clock.Times();
    EXPECT_LE(2 * kNap, times.Of(Share::Filter));
    EXPECT_LE(8 * kNap, times.Of(Share::Pipeline));
    EXPECT_LE(4 * kNap, times.Of(Share::Observer));
    EXPECT_EQ(OperationTimes::Duration(), times.Of(Share::TicketProvider));
    // Nothing is counted twice, and nothing is left out.
    EXPECT_EQ(times.end - times.begin, SumOf(times));
}

TEST(OperationClock, LooksAtTheThreadOfTheOperationAlone) {
    OperationClock clock;
    {
        const OperationClock::Operation operation(clock);
        std::thread([&] {
            const Timed pipeline(clock, Share::Pipeline);
            clock.Reassign(Share::TicketProvider, kNap);
            Nap();
        }).join();
    }
    EXPECT_LE(kNap, clock.Times().Of(Share::Filter));
    EXPECT_EQ(clock.Times().Of(Share::Filter), SumOf(clock.Times()));
}

TEST(OperationClock, CountsNothingOutsideOfAnOperation) {
    OperationClock clock;
    { const OperationClock::Operation operation(clock); }
    const OperationTimes before = clock.Times();
    {
        const Timed pipeline(clock, Share::Pipeline);
        clock.Reassign(Share::TicketProvider, kNap);
        Nap();
    }
    EXPECT_EQ(before.shares, clock.Times().shares);
}

TEST(OperationClock, CanBeToldThatTimeWasSomebodyElses) {
    OperationClock clock;
    {
        const OperationClock::Operation operation(clock);
        Nap();
        clock.Reassign(Share::TicketProvider, kNap);
    }
    const OperationTimes times = clock.Times();
    EXPECT_EQ(kNap, times.Of(Share::TicketProvider));
    EXPECT_EQ(times.end - times.begin, times.Of(Share::Filter) + kNap);
}

// Every call to an object of the pipeline takes its time, by being told of; what is told takes longer.
class SlowObserver final : public RunObserver {
  public:
    void Called() override { Nap(kCall); }
    void PartSent(const SentPart&) override { Nap(kTelling); }

    static constexpr milliseconds kCall{3};
    static constexpr milliseconds kTelling{50};
};

class PipelineTimeTest : public PartsTest {
  protected:
    PipelineTimeTest() { Watch(std::make_shared<SlowObserver>()); }

    [[nodiscard]] OperationTimes TimesOf(const std::function<void()>& call) {
        const OperationTimes before = Context()->Clock().Times();
        call();
        OperationTimes times = Context()->Clock().Times();
        for (std::size_t i = 0; i < times.shares.size(); ++i) times.shares[i] -= before.shares[i];
        return times;
    }
    void ExpectPipelineTime(const char* method, const std::function<void()>& call) {
        EXPECT_LE(SlowObserver::kCall, TimesOf(call).Of(Share::Pipeline)) << method;
    }
};

TEST_F(PipelineTimeTest, IsThatOfEveryMethodOfTheParts) {
    const ComPtr<IFixedPage> page = FirstPage();
    const auto provider = MakeObject<DocumentProvider>(Context(), std::make_shared<JobParts>(SampleJob()),
                                                       std::vector<ExtraPart>(), nullptr);
    const auto consumer = MakeObject<DocumentConsumer>(Context());
    const OperationClock::Operation operation(Context()->Clock());
    ComPtr<IUnknown> part;
    ExpectPipelineTime("GetXpsPart", [&] { static_cast<void>(provider->GetXpsPart(part.Put())); });
    ComPtr<IXpsDocument> document;
    ExpectPipelineTime("QueryInterface", [&] { static_cast<void>(part.QueryTo(document)); });
    ExpectPipelineTime("Send", [&] { static_cast<void>(consumer->SendXpsDocument(document.Get())); });
    ExpectPipelineTime("CloseSender", [&] { static_cast<void>(consumer->CloseSender()); });
    ComPtr<IPartPrintTicket> ticket;
    ComPtr<IPrintWriteStream> written;
    ExpectPipelineTime("GetNewEmptyPart", [&] {
        static_cast<void>(consumer->GetNewEmptyPart(L"/t.xml", __uuidof(IPartPrintTicket), ticket.PutVoid(),
                                                    written.Put()));
    });
    platform::Bstr uri;
    ExpectPipelineTime("GetUri", [&] { static_cast<void>(page->GetUri(uri.Put())); });
    ComPtr<IXpsPartIterator> iterator;
    EXPECT_EQ(S_OK, page->GetXpsPartIterator(iterator.Put()));
    ExpectPipelineTime("Reset", [&] { iterator->Reset(); });
    ExpectPipelineTime("Current", [&] { static_cast<void>(iterator->Current(uri.Put(), part.Put())); });
    ExpectPipelineTime("Next", [&] { iterator->Next(); });
}

TEST_F(PipelineTimeTest, IsThatOfEveryMethodOfTheStreams) {
    const auto bytes = std::make_shared<const std::string>("bytes");
    const auto factory = MakeObject<ReadStreamFactory>(Context(), "f", bytes);
    const auto writer = MakeObject<WriteStream>(Context(), "w", std::make_shared<Writing>());
    const OperationClock::Operation operation(Context()->Clock());
    ComPtr<IPrintReadStream> reader;
    ExpectPipelineTime("GetStream", [&] { static_cast<void>(factory->GetStream(reader.Put())); });
    ASSERT_TRUE(reader);
    ExpectPipelineTime("Seek", [&] { static_cast<void>(reader->Seek(0, STREAM_SEEK_END, nullptr)); });
    char block[8];
    ULONG count = 0;
    BOOL end = FALSE;
    ExpectPipelineTime("ReadBytes", [&] { static_cast<void>(reader->ReadBytes(block, 8, &count, &end)); });
    ExpectPipelineTime("WriteBytes", [&] { static_cast<void>(writer->WriteBytes("x", 1, &count)); });
    ExpectPipelineTime("FlushData", [&] { static_cast<void>(writer->FlushData()); });
    ExpectPipelineTime("Close", [&] { writer->Close(); });
}

TEST_F(PipelineTimeTest, IsThatOfEveryMethodOfTheObjectsOfTheJob) {
    const auto bag = MakeObject<PropertyBag>(Context());
    const auto driver = MakeObject<DriverBag>(Context(), "bag", DriverValues());
    const auto control = MakeObject<PipelineControl>(Context());
    const auto progress = MakeObject<ProgressReport>(Context());
    const auto factory = MakeObject<PrintClassFactory>(Context());
    const auto communicator = MakeObject<Communicator>(Context(), StreamEnd(), StreamEnd::Of<IUnknown>(bag));
    const OperationClock::Operation operation(Context()->Clock());
    platform::Variant value;
    ExpectPipelineTime("AddProperty", [&] { static_cast<void>(bag->AddProperty(L"a", &value.Get())); });
    ExpectPipelineTime("GetProperty", [&] { static_cast<void>(bag->GetProperty(L"a", value.Put())); });
    ExpectPipelineTime("DeleteProperty", [&] { static_cast<void>(bag->DeleteProperty(L"a")); });
    const platform::Bstr name(L"b");
    BOOL flag = FALSE;
    ExpectPipelineTime("GetBool", [&] { static_cast<void>(driver->GetBool(name.Get(), &flag)); });
    LONG number = 0;
    ExpectPipelineTime("GetInt32", [&] { static_cast<void>(driver->GetInt32(name.Get(), &number)); });
    platform::Bstr text;
    ExpectPipelineTime("GetString", [&] { static_cast<void>(driver->GetString(name.Get(), text.Put())); });
    ExpectPipelineTime("RequestShutdown",
                       [&] { static_cast<void>(control->RequestShutdown(S_OK, nullptr)); });
    ExpectPipelineTime("FilterFinished", [&] { static_cast<void>(control->FilterFinished()); });
    ExpectPipelineTime("ReportProgress",
                       [&] { static_cast<void>(progress->ReportProgress(XpsJob_FixedPageAdded)); });
    ComPtr<IUnknown> object;
    ExpectPipelineTime("GetPrintClassObject", [&] {
        static_cast<void>(factory->GetPrintClassObject(L"p", __uuidof(IUnknown), object.PutVoid()));
    });
    ExpectPipelineTime("RequestWriter",
                       [&] { static_cast<void>(communicator->RequestWriter(object.PutVoid())); });
}

TEST_F(PipelineTimeTest, IsNotThatOfTellingWhatHappens) {
    const ComPtr<IXpsDocument> document = XpsDocument();
    const auto consumer = MakeObject<DocumentConsumer>(Context());
    const OperationClock::Operation operation(Context()->Clock());
    const OperationTimes times = TimesOf([&] { EXPECT_EQ(S_OK, consumer->SendXpsDocument(document.Get())); });
    EXPECT_LE(SlowObserver::kTelling, times.Of(Share::Observer));
    EXPECT_GT(SlowObserver::kTelling, times.Of(Share::Pipeline));
}

class SlowToGo final : public ComObject<IPrintWriteStreamFlush> {
  public:
    explicit SlowToGo(ContextPtr context) : ComObject(std::move(context), "SlowToGo") {}
    HRESULT STDMETHODCALLTYPE FlushData() override { return S_OK; }

  private:
    ~SlowToGo() override { Nap(); }
};

TEST_F(PipelineTimeTest, IsThatOfTheLastRelease) {
    ComPtr<SlowToGo> object = MakeObject<SlowToGo>(Context());
    const OperationClock::Operation operation(Context()->Clock());
    EXPECT_LE(kNap, TimesOf([&] { object.Reset(); }).Of(Share::Pipeline));
}

}  // namespace
}  // namespace devkit::pipeline
