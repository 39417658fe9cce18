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
        return MakeObject<DocumentProvider>(Context(), std::make_shared<JobParts>(std::move(job)),
                                            std::move(extra), nullptr);
    }

    static std::string Next(DocumentProvider& provider) {
        ComPtr<IUnknown> part;
        const HRESULT hr = provider.GetXpsPart(part.Put());
        if (FAILED(hr)) return hr == kJobCancelled ? "(cancelled)" : "(failed)";
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
    EXPECT_EQ((Lines{"XpsDocument", "FixedDocumentSequence /seq.fdseq", "FixedDocument /1/1.fdoc",
                     "FixedPage /1/1.fpage", "FixedPage /1/2.fpage", "FixedDocument /2/2.fdoc",
                     "FixedPage /2/1.fpage", "(end)", "(end)"}),
              NextOnes(*provider.Get(), 9));
}

TEST_F(DocumentProviderTest, ADocumentWithoutPagesIsFollowedByTheNext) {
    const auto job = SampleJob();
    job->documents[0].pages.clear();
    const auto provider = Provider(job);
    EXPECT_EQ((Lines{"XpsDocument", "FixedDocumentSequence /seq.fdseq", "FixedDocument /1/1.fdoc",
                     "FixedDocument /2/2.fdoc", "FixedPage /2/1.fpage", "(end)"}),
              NextOnes(*provider.Get(), 6));
}

TEST_F(DocumentProviderTest, AJobWithoutDocumentsEndsAfterTheSequence) {
    const auto job = SampleJob();
    job->documents.clear();
    const auto provider = Provider(job);
    EXPECT_EQ((Lines{"XpsDocument", "FixedDocumentSequence /seq.fdseq", "(end)"}),
              NextOnes(*provider.Get(), 3));
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
    EXPECT_EQ(0U, reads);
}

TEST_F(DocumentProviderTest, PutsExtraPartsWhereTheyAreDue) {
    const auto make = [](const ContextPtr& context) {
        return ComPtr<IUnknown>(MakeObject<PipelineControl>(context).Get());
    };
    const auto provider = Provider(SampleJob(), {{1, make}, {3, make}, {8, make}});
    EXPECT_EQ((Lines{"(foreign)", "XpsDocument", "FixedDocumentSequence /seq.fdseq", "(foreign)",
                     "FixedDocument /1/1.fdoc", "FixedPage /1/1.fpage", "FixedPage /1/2.fpage",
                     "FixedDocument /2/2.fdoc", "FixedPage /2/1.fpage", "(foreign)", "(end)"}),
              NextOnes(*provider.Get(), 11));
}

TEST_F(DocumentProviderTest, FailsAtThePartThatIsPlanned) {
    Use(Failing("GetXpsPart", E_ABORT, {}, 3));
    const auto provider = Provider(SampleJob());
    EXPECT_EQ((Lines{"XpsDocument", "FixedDocumentSequence /seq.fdseq", "(failed)"}),
              NextOnes(*provider.Get(), 3));
}

TEST_F(DocumentProviderTest, FailsAfterACancellation) {
    const auto provider = Provider(SampleJob());
    EXPECT_EQ("XpsDocument", Next(*provider.Get()));
    Context()->Cancel();
    EXPECT_EQ("(cancelled)", Next(*provider.Get()));
}

TEST_F(DocumentProviderTest, EndsOrGoesOnAfterACancellationWhenSwitched) {
    Behaviour behaviour;
    behaviour.afterCancel = AfterCancel::EndOfParts;
    Use(behaviour);
    Context()->Cancel();
    EXPECT_EQ("(end)", Next(*Provider(SampleJob()).Get()));
    behaviour.afterCancel = AfterCancel::KeepGiving;
    Use(behaviour);
    Context()->Cancel();
    EXPECT_EQ("XpsDocument", Next(*Provider(SampleJob()).Get()));
}

TEST_F(DocumentProviderTest, RefusesANullPointer) {
    EXPECT_EQ(E_POINTER, Provider(SampleJob())->GetXpsPart(nullptr));
}

TEST_F(DocumentProviderTest, NamesWhatItGaveLast) {
    const auto provider = Provider(SampleJob());
    EXPECT_EQ("", provider->LastGiven());
    Next(*provider.Get());
    EXPECT_EQ("XpsDocument", provider->LastGiven());
    NextOnes(*provider.Get(), 7);
    EXPECT_EQ("the end of the parts", provider->LastGiven());
}

}  // namespace
}  // namespace devkit::pipeline
