#include "devkit/pipeline/ticketedobjects.h"

#include "devkit/pipeline/pageobjects.h"
#include "platform/bstr.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class TicketedObjectsTest : public PartsTest {};

TEST_F(TicketedObjectsTest, GiveTheirNameAndTicket) {
    platform::Bstr uri;
    EXPECT_EQ(S_OK, Sequence()->GetUri(uri.Put()));
    EXPECT_EQ(L"/seq.fdseq", uri.View());
    EXPECT_EQ(S_OK, FirstDocument()->GetUri(uri.Put()));
    EXPECT_EQ(L"/1/1.fdoc", uri.View());
    EXPECT_EQ(L"/job_PT.xml", TicketNameOf(*Sequence().Get()));
    EXPECT_EQ(L"/1/PT.xml", TicketNameOf(*FirstDocument().Get()));
}

TEST_F(TicketedObjectsTest, AreNoPartBases) {
    ComPtr<IPartBase> base;
    EXPECT_EQ(E_NOINTERFACE, Sequence().QueryTo(base));
    EXPECT_EQ(E_NOINTERFACE, FirstDocument().QueryTo(base));
}

TEST_F(TicketedObjectsTest, EachAnswersItsOwnInterfaceAlone) {
    ComPtr<IFixedDocument> document;
    ComPtr<IFixedPage> page;
    EXPECT_EQ(E_NOINTERFACE, Sequence().QueryTo(document));
    EXPECT_EQ(E_NOINTERFACE, FirstDocument().QueryTo(page));
}

TEST_F(TicketedObjectsTest, TheTicketIsReadableAndReadableAgain) {
    const auto sequence = Sequence();
    ComPtr<IPartPrintTicket> ticket;
    ComPtr<IPrintReadStream> stream;
    ASSERT_EQ(S_OK, sequence->GetPrintTicket(ticket.Put()));
    ASSERT_EQ(S_OK, ticket->GetStream(stream.Put()));
    EXPECT_EQ("job ticket", ReadAll(stream.Get()));
    ASSERT_EQ(S_OK, ticket->GetStream(stream.Put()));
    EXPECT_EQ("job ticket", ReadAll(stream.Get()));
}

TEST_F(TicketedObjectsTest, WithoutATicketAnswersElementNotFound) {
    ComPtr<IFixedDocument> document;
    ASSERT_EQ(S_OK, PartNumber(6).QueryTo(document));
    ComPtr<IPartPrintTicket> ticket;
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, document->GetPrintTicket(ticket.Put()));
    EXPECT_FALSE(ticket);
}

TEST_F(TicketedObjectsTest, WithoutATicketAnswersSuccessAndNullWhenSwitched) {
    Behaviour behaviour;
    behaviour.missingPart = MissingPart::SuccessWithNull;
    Use(behaviour);
    ComPtr<IFixedDocument> document;
    ASSERT_EQ(S_OK, PartNumber(6).QueryTo(document));
    ComPtr<IPartPrintTicket> ticket;
    EXPECT_EQ(S_OK, document->GetPrintTicket(ticket.Put()));
    EXPECT_FALSE(ticket);
}

TEST_F(TicketedObjectsTest, TakeANewTicketAndOneOfAnotherPart) {
    const auto document = FirstDocument();
    const auto made = NewPart<IPartPrintTicket>(L"/made.xml", "made");
    EXPECT_EQ(S_OK, document->SetPrintTicket(made.Get()));
    EXPECT_EQ(L"/made.xml", TicketNameOf(*document.Get()));
    ComPtr<IPartPrintTicket> ofTheJob;
    ASSERT_EQ(S_OK, Sequence()->GetPrintTicket(ofTheJob.Put()));
    EXPECT_EQ(S_OK, document->SetPrintTicket(ofTheJob.Get()));
    EXPECT_EQ(L"/job_PT.xml", TicketNameOf(*document.Get()));
    EXPECT_EQ(Lines{}, Breaches());
}

// A ticket that the filter implements itself.
class ForeignTicket final : public ComObject<IPartPrintTicket> {
  public:
    explicit ForeignTicket(ContextPtr context) : ComObject(std::move(context), "ForeignTicket") {}
    HRESULT STDMETHODCALLTYPE GetUri(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPartCompression(EXpsCompressionOptions*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetPartCompression(EXpsCompressionOptions) override { return E_NOTIMPL; }
};

TEST_F(TicketedObjectsTest, RefuseATicketThatIsNotThePipelines) {
    const auto sequence = Sequence();
    EXPECT_EQ(E_INVALIDARG, sequence->SetPrintTicket(MakeObject<ForeignTicket>(Context()).Get()));
    EXPECT_EQ(Lines{"SetPrintTicket of FixedDocumentSequence /seq.fdseq was given an object that is not "
                    "one of the pipeline's print tickets"},
              Breaches());
    EXPECT_EQ(E_POINTER, sequence->SetPrintTicket(nullptr));
    EXPECT_EQ(L"/job_PT.xml", TicketNameOf(*sequence.Get()));
}

TEST_F(TicketedObjectsTest, TheDocumentGivesAndTakesTheThumbnail) {
    const auto document = XpsDocument();
    ComPtr<IPartThumbnail> thumbnail;
    ASSERT_EQ(S_OK, document->GetThumbnail(thumbnail.Put()));
    EXPECT_EQ(L"/thumbnail.png", UriOf(thumbnail.Get()));
    platform::Bstr type;
    EXPECT_EQ(S_OK, thumbnail->GetThumbnailProperties(type.Put()));
    EXPECT_EQ(L"image/png", type.View());
    EXPECT_EQ(S_OK, document->SetThumbnail(NewPart<IPartThumbnail>(L"/new.jpg", "x").Get()));
    ASSERT_EQ(S_OK, document->GetThumbnail(thumbnail.Put()));
    EXPECT_EQ(L"/new.jpg", UriOf(thumbnail.Get()));
    EXPECT_EQ(E_POINTER, document->SetThumbnail(nullptr));
}

TEST_F(TicketedObjectsTest, ADocumentWithoutThumbnailAnswersElementNotFound) {
    const auto job = SampleJob();
    job->thumbnail.reset();
    ComPtr<IXpsDocument> document;
    ASSERT_EQ(S_OK, PartNumber(1, job).QueryTo(document));
    ComPtr<IPartThumbnail> thumbnail;
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, document->GetThumbnail(thumbnail.Put()));
}

TEST_F(TicketedObjectsTest, FailAsPlanned) {
    Use(Failing("IFixedDocument::GetPrintTicket", E_ACCESSDENIED, "/1/1.fdoc"));
    ComPtr<IPartPrintTicket> ticket;
    EXPECT_EQ(E_ACCESSDENIED, FirstDocument()->GetPrintTicket(ticket.Put()));
    EXPECT_EQ(S_OK, Sequence()->GetPrintTicket(ticket.Put()));
}

}  // namespace
}  // namespace devkit::pipeline
