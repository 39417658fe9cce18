#include "devkit/pipeline/documentprovider.h"

#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/partobject.h"
#include "devkit/pipeline/pipelinecontrol.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class DocumentProviderTest : public PipelineTest {
  protected:
    ComPtr<DocumentProvider> Provider(std::shared_ptr<const JobInput> job,
                                      std::vector<ExtraPart> extra = {}) {
        return MakeObject<DocumentProvider>(Context(), std::move(job), std::move(extra), nullptr);
    }

    static std::string Next(DocumentProvider& provider) {
        ComPtr<IUnknown> part;
        const HRESULT hr = provider.GetXpsPart(part.Put());
        if (FAILED(hr)) return hr == JobCancelled ? "(cancelled)" : "(failed)";
        if (!part) return "(end)";
        const PartPtr known = PartOf(part.Get());
        return known == nullptr ? "(foreign)" : known->Title();
    }
    static Lines NextOnes(DocumentProvider& provider, unsigned count) {
        Lines titles;
        for (unsigned i = 0; i < count; ++i) titles.push_back(Next(provider));
        return titles;
    }
};

TEST_F(DocumentProviderTest, GivesTheDocumentTheSequenceThenEachDocumentWithItsPages) {
    const auto provider = Provider(SampleJob());
    EXPECT_EQ(NextOnes(*provider.Get(), 9),
              (Lines{"XpsDocument", "FixedDocumentSequence /seq.fdseq", "FixedDocument /1/1.fdoc",
                     "FixedPage /1/1.fpage", "FixedPage /1/2.fpage", "FixedDocument /2/2.fdoc",
                     "FixedPage /2/1.fpage", "(end)", "(end)"}));
}

TEST_F(DocumentProviderTest, ADocumentWithoutPagesIsFollowedByTheNext) {
    const auto job = SampleJob();
    job->documents[0].pages.clear();
    const auto provider = Provider(job);
    EXPECT_EQ(NextOnes(*provider.Get(), 6),
              (Lines{"XpsDocument", "FixedDocumentSequence /seq.fdseq", "FixedDocument /1/1.fdoc",
                     "FixedDocument /2/2.fdoc", "FixedPage /2/1.fpage", "(end)"}));
}

TEST_F(DocumentProviderTest, AJobWithoutDocumentsEndsAfterTheSequence) {
    const auto job = SampleJob();
    job->documents.clear();
    const auto provider = Provider(job);
    EXPECT_EQ(NextOnes(*provider.Get(), 3),
              (Lines{"XpsDocument", "FixedDocumentSequence /seq.fdseq", "(end)"}));
}

TEST_F(DocumentProviderTest, PartsAreReadOnlyWhenTheyAreAskedFor) {
    const auto job = SampleJob();
    unsigned reads = 0;
    const auto counting = [&reads]() -> Bytes {
        ++reads;
        return std::make_shared<const std::string>();
    };
    job->sequence.read = counting;
    job->documents[0].pages[0].markup.read = counting;
    const auto provider = Provider(job);
    NextOnes(*provider.Get(), 8);
    EXPECT_EQ(reads, 0U);
}

TEST_F(DocumentProviderTest, PutsExtraPartsWhereTheyAreDue) {
    const auto make = [](const ContextPtr& context) {
        return ComPtr<IUnknown>(MakeObject<PipelineControl>(context).Get());
    };
    const auto provider = Provider(SampleJob(), {{1, make}, {3, make}, {8, make}});
    EXPECT_EQ(NextOnes(*provider.Get(), 11),
              (Lines{"(foreign)", "XpsDocument", "FixedDocumentSequence /seq.fdseq", "(foreign)",
                     "FixedDocument /1/1.fdoc", "FixedPage /1/1.fpage", "FixedPage /1/2.fpage",
                     "FixedDocument /2/2.fdoc", "FixedPage /2/1.fpage", "(foreign)", "(end)"}));
}

TEST_F(DocumentProviderTest, FailsAtThePartThatIsPlanned) {
    Use(Failing("GetXpsPart", E_ABORT, {}, 3));
    const auto provider = Provider(SampleJob());
    EXPECT_EQ(NextOnes(*provider.Get(), 3),
              (Lines{"XpsDocument", "FixedDocumentSequence /seq.fdseq", "(failed)"}));
}

TEST_F(DocumentProviderTest, FailsAfterACancellation) {
    const auto provider = Provider(SampleJob());
    EXPECT_EQ(Next(*provider.Get()), "XpsDocument");
    Context()->Cancel();
    EXPECT_EQ(Next(*provider.Get()), "(cancelled)");
}

TEST_F(DocumentProviderTest, EndsOrGoesOnAfterACancellationWhenSwitched) {
    Switches switches;
    switches.afterCancel = AfterCancel::EndOfParts;
    Use(switches);
    Context()->Cancel();
    EXPECT_EQ(Next(*Provider(SampleJob()).Get()), "(end)");
    switches.afterCancel = AfterCancel::KeepGiving;
    Use(switches);
    Context()->Cancel();
    EXPECT_EQ(Next(*Provider(SampleJob()).Get()), "XpsDocument");
}

TEST_F(DocumentProviderTest, RefusesANullPointer) {
    EXPECT_EQ(Provider(SampleJob())->GetXpsPart(nullptr), E_POINTER);
}

TEST_F(DocumentProviderTest, NamesWhatItGaveLast) {
    const auto provider = Provider(SampleJob());
    EXPECT_EQ(provider->LastGiven(), "");
    Next(*provider.Get());
    EXPECT_EQ(provider->LastGiven(), "XpsDocument");
    NextOnes(*provider.Get(), 7);
    EXPECT_EQ(provider->LastGiven(), "the end of the parts");
}

}  // namespace
}  // namespace devkit::pipeline
