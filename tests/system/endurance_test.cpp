#include "endurance.h"

#include <functional>
#include <optional>
#include <utility>

#include "devkit/pipeline/communicator.h"
#include "devkit/pipeline/documentprovider.h"
#include "devkit/pipeline/jobproperties.h"
#include "devkit/pipeline/partfactory.h"
#include "devkit/pipeline/partsource.h"
#include "devkit/pipeline/pipelinecontrol.h"
#include "devkit/pipeline/propertybags.h"
#include "devkit/pipeline/streams.h"
#include "faultedjob.h"
#include "platform/utf.h"

// What is kept of a page or of a job shows when there are thousands of them.

namespace systemtest {
namespace {

using devkit::pipeline::Communicator;
using devkit::pipeline::ContextPtr;
using devkit::pipeline::DocumentProvider;
using devkit::pipeline::ExtraPart;
using devkit::pipeline::JobInput;
using devkit::pipeline::JobParts;
using devkit::pipeline::MakeObject;
using devkit::pipeline::Part;
using devkit::pipeline::PartKind;
using devkit::pipeline::PartPtr;
using devkit::pipeline::PipelineControl;
using devkit::pipeline::PropertyBag;
using devkit::pipeline::RunContext;
using devkit::pipeline::StreamEnd;
using devkit::pipeline::WriteStream;
using platform::ComPtr;

// Takes what is sent and keeps nothing of it, so that what grows is the filter's.
class ForgetfulConsumer final : public devkit::pipeline::ComObject<IXpsDocumentConsumer> {
  public:
    explicit ForgetfulConsumer(ContextPtr context) : ComObject(std::move(context), "DocumentConsumer") {}

    std::size_t pages = 0;
    std::size_t newTickets = 0;
    bool isClosed = false;

    HRESULT STDMETHODCALLTYPE SendXpsUnknown(IUnknown*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SendXpsDocument(IXpsDocument*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SendFixedDocumentSequence(IFixedDocumentSequence*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SendFixedDocument(IFixedDocument*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SendFixedPage(IFixedPage*) override {
        ++pages;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE CloseSender() override {
        isClosed = true;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetNewEmptyPart(const wchar_t* uri, REFIID iid, void** ppNewPart,
                                              IPrintWriteStream** ppWriteStream) override {
        if (!IsEqualIID(iid, __uuidof(IPartPrintTicket))) return E_NOINTERFACE;
        ++newTickets;
        const std::string name = platform::ToUtf8(uri);
        const PartPtr part = std::make_shared<Part>(PartKind::PrintTicket, name);
        *ppWriteStream = MakeObject<WriteStream>(SharedContext(), name, part->BeginWriting()).Detach();
        return devkit::pipeline::MakePartObject(SharedContext(), part)->QueryInterface(iid, ppNewPart);
    }
};

using EnduranceTest = FaultedJobTest;

TEST_F(EnduranceTest, OfAPageNothingIsKept) {
    const std::size_t pages = IsLong() ? 10000 : 2000;
    constexpr std::size_t kFirst = 1000;
    const Job& turning = JobNamed("turning");
    ConfigureWithoutLog(turning.device);
    std::optional<Holdings> before;
    std::optional<Holdings> after;
    const auto input =
        std::make_shared<const JobInput>(Repeated(*turning.input, pages, [&](std::size_t number) {
            if (number == kFirst) before = Holdings::Now();
            // The same page of the job's as that one.
            if (number == pages - 2) after = Holdings::Now();
        }));

    // The bag only borrows the user's token.
    const devkit::pipeline::RunOptions options = Options();
    const auto context = std::make_shared<RunContext>();
    {
        const auto provider = MakeObject<DocumentProvider>(context, std::make_shared<JobParts>(input),
                                                           std::vector<ExtraPart>(), nullptr);
        const auto consumer = MakeObject<ForgetfulConsumer>(context);
        const auto communicator =
            MakeObject<Communicator>(context, StreamEnd::Of<IXpsDocumentProvider>(provider),
                                     StreamEnd::Of<IXpsDocumentConsumer>(consumer));
        const auto control = MakeObject<PipelineControl>(context);
        const auto bag = MakeObject<PropertyBag>(context);
        const auto progress = FillBag(*bag.Get(), context, options.properties);
        const ComPtr<IPrintPipelineFilter> filter = Filter()->CreateFilter();
        ASSERT_EQ(S_OK, filter->InitializeFilter(communicator.Get(), bag.Get(), control.Get()));
        EXPECT_EQ(S_OK, filter->StartOperation());
        EXPECT_TRUE(consumer->isClosed);
        EXPECT_EQ(pages, consumer->pages);
        EXPECT_EQ(pages, consumer->newTickets);
    }
    EXPECT_EQ(std::vector<std::string>{}, context->LiveObjects());
    EXPECT_EQ(std::vector<std::string>{}, context->Breaches().Lines());
    EXPECT_EQ(S_OK, Filter()->CanUnloadNow());
    ASSERT_TRUE(before && after);
    ExpectSteady(std::to_string(pages - 2 - kFirst) + " pages", *before, *after, pages - 2 - kFirst);
}

TEST_F(EnduranceTest, OfAJobNothingIsKept) {
    const std::size_t rounds = IsLong() ? 334 : 24;
    const std::size_t first = IsLong() ? 34 : 4;
    constexpr std::size_t kPagesRead = 8;  // by all of them
    std::optional<Holdings> before;
    for (std::size_t round = 0; round < rounds; ++round) {
        if (round == first) before = Holdings::Now();
        for (const Job& job : Jobs()) ExpectGoodResult(job);
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
    ASSERT_TRUE(before);
    ExpectSteady(std::to_string((rounds - first) * Jobs().size()) + " jobs", *before, Holdings::Now(),
                 (rounds - first) * kPagesRead);
}

}  // namespace
}  // namespace systemtest
