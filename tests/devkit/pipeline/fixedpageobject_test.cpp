#include "devkit/pipeline/fixedpageobject.h"

#include "devkit/pipeline/pageobjects.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class FixedPageObjectTest : public PartsTest {
  protected:
    static std::string MarkupOf(IFixedPage& page) {
        ComPtr<IPrintReadStream> stream;
        return FAILED(page.GetStream(stream.Put())) ? "(failed)" : ReadAll(stream.Get());
    }
    static void Write(IPrintWriteStream& stream, const std::string& text) {
        ULONG count = 0;
        EXPECT_EQ(stream.WriteBytes(text.data(), static_cast<ULONG>(text.size()), &count), S_OK);
    }
};

const std::string oldMarkup =
    "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"816\" Height=\"1056\" "
    "xml:lang=\"en\"><!-- /1/1.fpage --></FixedPage>";

TEST_F(FixedPageObjectTest, GivesItsNameMarkupAndTicket) {
    const auto page = FirstPage();
    EXPECT_EQ(UriOf(page.Get()), L"/1/1.fpage");
    EXPECT_EQ(MarkupOf(*page.Get()), oldMarkup);
    EXPECT_EQ(TicketNameOf(*page.Get()), L"/1/1_PT.xml");
    EXPECT_EQ(TicketNameOf(*SecondPage().Get()), L"(none)");
}

TEST_F(FixedPageObjectTest, TheOldMarkupStaysReadableWhileTheNewIsWritten) {
    const auto page = FirstPage();
    ComPtr<IPrintReadStream> reader;
    ComPtr<IPrintWriteStream> writer;
    ASSERT_EQ(page->GetStream(reader.Put()), S_OK);
    ASSERT_EQ(page->GetWriteStream(writer.Put()), S_OK);
    Write(*writer.Get(), "<new/>");
    EXPECT_EQ(ReadAll(reader.Get()), oldMarkup);
    EXPECT_EQ(MarkupOf(*page.Get()), oldMarkup);
    writer->Close();
    EXPECT_EQ(MarkupOf(*page.Get()), "<new/>");
    EXPECT_EQ(Breaches(), Lines{});
}

TEST_F(FixedPageObjectTest, TheReadStreamCanBeSoughtAfterTheWriteStreamWasClosed) {
    const auto page = FirstPage();
    ComPtr<IPrintReadStream> reader;
    ComPtr<IPrintWriteStream> writer;
    ASSERT_EQ(page->GetStream(reader.Put()), S_OK);
    ASSERT_EQ(page->GetWriteStream(writer.Put()), S_OK);
    EXPECT_EQ(ReadAll(reader.Get()), oldMarkup);
    writer->Close();
    writer.Reset();
    EXPECT_EQ(reader->Seek(0, STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(ReadAll(reader.Get()), oldMarkup);
}

TEST_F(FixedPageObjectTest, ASecondOpenWriteStreamIsABreach) {
    const auto page = FirstPage();
    ComPtr<IPrintWriteStream> first;
    ComPtr<IPrintWriteStream> second;
    ASSERT_EQ(page->GetWriteStream(first.Put()), S_OK);
    EXPECT_EQ(page->GetWriteStream(second.Put()), CallOutOfOrder);
    EXPECT_FALSE(second);
    EXPECT_EQ(Breaches(),
              Lines{"GetWriteStream of FixedPage /1/1.fpage came while another write stream is open"});
    first->Close();
    ASSERT_EQ(page->GetWriteStream(second.Put()), S_OK);
    second->Close();
}

TEST_F(FixedPageObjectTest, FindsItsPartsByNameWhateverTheLetterCase) {
    const auto page = FirstPage();
    ComPtr<IUnknown> part;
    ComPtr<IPartFont2> font;
    ComPtr<IPartImage> image;
    ComPtr<IPartColorProfile> profile;
    ComPtr<IPartResourceDictionary> dictionary;
    ComPtr<IPartPrintTicket> ticket;
    ComPtr<IPartBase> base;
    ASSERT_EQ(page->GetPagePart(L"/1/FONT.odttf", part.Put()), S_OK);
    EXPECT_EQ(part.QueryTo(font), S_OK);
    EXPECT_EQ(UriOf(font.Get()), L"/1/font.odttf");
    ASSERT_EQ(page->GetPagePart(L"/1/image.png", part.Put()), S_OK);
    EXPECT_EQ(part.QueryTo(image), S_OK);
    ASSERT_EQ(page->GetPagePart(L"/1/profile.icc", part.Put()), S_OK);
    EXPECT_EQ(part.QueryTo(profile), S_OK);
    ASSERT_EQ(page->GetPagePart(L"/1/styles.dict", part.Put()), S_OK);
    EXPECT_EQ(part.QueryTo(dictionary), S_OK);
    ASSERT_EQ(page->GetPagePart(L"/1/1_PT.xml", part.Put()), S_OK);
    EXPECT_EQ(part.QueryTo(ticket), S_OK);
    ASSERT_EQ(page->GetPagePart(L"/1/other.bin", part.Put()), S_OK);
    EXPECT_EQ(part.QueryTo(base), S_OK);
    EXPECT_EQ(part.QueryTo(image), E_NOINTERFACE);
}

TEST_F(FixedPageObjectTest, APartThatItDoesNotHaveAnswersElementNotFound) {
    const auto page = FirstPage();
    ComPtr<IUnknown> part;
    EXPECT_EQ(page->GetPagePart(L"/nowhere.png", part.Put()), E_ELEMENT_NOT_FOUND);
    EXPECT_FALSE(part);
    EXPECT_EQ(Breaches(), Lines{});
}

TEST_F(FixedPageObjectTest, DeletingItsTicketLeavesItWithoutOne) {
    const auto page = FirstPage();
    EXPECT_EQ(page->DeleteResource(L"/1/1_PT.xml"), S_OK);
    EXPECT_EQ(TicketNameOf(*page.Get()), L"(none)");
    const auto made = NewPart<IPartPrintTicket>(L"/made.xml", "made");
    EXPECT_EQ(page->SetPrintTicket(made.Get()), S_OK);
    EXPECT_EQ(TicketNameOf(*page.Get()), L"/made.xml");
}

TEST_F(FixedPageObjectTest, DeletingAResourceDissociatesIt) {
    const auto page = FirstPage();
    ComPtr<IUnknown> part;
    EXPECT_EQ(page->DeleteResource(L"/1/image.png"), S_OK);
    EXPECT_EQ(page->GetPagePart(L"/1/image.png", part.Put()), E_ELEMENT_NOT_FOUND);
}

TEST_F(FixedPageObjectTest, DeletingWhatItDoesNotHaveIsABreach) {
    EXPECT_EQ(FirstPage()->DeleteResource(L"/nowhere.png"), E_ELEMENT_NOT_FOUND);
    EXPECT_EQ(
        Breaches(),
        Lines{"DeleteResource of FixedPage /1/1.fpage names /nowhere.png, which the page does not have"});
}

TEST_F(FixedPageObjectTest, TakesANewResourceInThePlaceOfOneOfTheSameName) {
    const auto page = FirstPage();
    EXPECT_EQ(page->SetPagePart(NewPart<IPartImage>(L"/1/Image.png", "new").Get()), S_OK);
    ComPtr<IUnknown> part;
    ComPtr<IPartImage> image;
    ComPtr<IPrintReadStream> stream;
    ASSERT_EQ(page->GetPagePart(L"/1/image.png", part.Put()), S_OK);
    ASSERT_EQ(part.QueryTo(image), S_OK);
    ASSERT_EQ(image->GetStream(stream.Put()), S_OK);
    EXPECT_EQ(ReadAll(stream.Get()), "new");
}

TEST_F(FixedPageObjectTest, RefusesAResourceThatIsNone) {
    const auto page = FirstPage();
    EXPECT_EQ(page->SetPagePart(SecondPage().Get()), E_INVALIDARG);
    EXPECT_EQ(Breaches(),
              Lines{"SetPagePart was given an object that is not one of the pipeline's resources"});
}

TEST_F(FixedPageObjectTest, RefusesNullPointers) {
    const auto page = FirstPage();
    EXPECT_EQ(page->GetUri(nullptr), E_POINTER);
    EXPECT_EQ(page->GetStream(nullptr), E_POINTER);
    EXPECT_EQ(page->GetPartCompression(nullptr), E_POINTER);
    EXPECT_EQ(page->GetPrintTicket(nullptr), E_POINTER);
    EXPECT_EQ(page->GetPagePart(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(page->GetWriteStream(nullptr), E_POINTER);
    EXPECT_EQ(page->SetPrintTicket(nullptr), E_POINTER);
    EXPECT_EQ(page->SetPagePart(nullptr), E_POINTER);
    EXPECT_EQ(page->DeleteResource(nullptr), E_POINTER);
    EXPECT_EQ(page->GetXpsPartIterator(nullptr), E_POINTER);
}

TEST_F(FixedPageObjectTest, KeepsItsCompression) {
    const auto page = FirstPage();
    EXpsCompressionOptions compression = Compression_Fast;
    EXPECT_EQ(page->GetPartCompression(&compression), S_OK);
    EXPECT_EQ(compression, Compression_Normal);
    EXPECT_EQ(page->SetPartCompression(Compression_Small), S_OK);
    EXPECT_EQ(page->GetPartCompression(&compression), S_OK);
    EXPECT_EQ(compression, Compression_Small);
    EXPECT_EQ(page->SetPartCompression(static_cast<EXpsCompressionOptions>(4)), E_INVALIDARG);
}

TEST_F(FixedPageObjectTest, UnreadableInputFailsTheStreamAndIsNoted) {
    const auto job = SampleJob();
    job->documents[0].pages[0].markup.read = []() -> Bytes { throw std::runtime_error("damaged"); };
    ComPtr<IFixedPage> page;
    ASSERT_EQ(PartNumber(4, job).QueryTo(page), S_OK);
    ComPtr<IPrintReadStream> stream;
    EXPECT_EQ(page->GetStream(stream.Put()), HRESULT_FROM_WIN32(ERROR_INVALID_DATA));
    EXPECT_EQ(Context()->InputFailures(), Lines{"/1/1.fpage: damaged"});
}

TEST_F(FixedPageObjectTest, EveryMethodFailsAsPlanned) {
    Switches switches;
    switches.faults.push_back({"", "/1/1.fpage", 1, E_ABORT, true});
    Use(switches);
    const auto page = FirstPage();
    EXpsCompressionOptions compression = Compression_Fast;
    ComPtr<IPrintReadStream> reader;
    ComPtr<IPrintWriteStream> writer;
    ComPtr<IPartPrintTicket> ticket;
    ComPtr<IUnknown> part;
    ComPtr<IXpsPartIterator> iterator;
    BSTR uri = nullptr;
    EXPECT_EQ(page->GetUri(&uri), E_ABORT);
    EXPECT_EQ(page->GetStream(reader.Put()), E_ABORT);
    EXPECT_EQ(page->GetPartCompression(&compression), E_ABORT);
    EXPECT_EQ(page->SetPartCompression(compression), E_ABORT);
    EXPECT_EQ(page->GetPrintTicket(ticket.Put()), E_ABORT);
    EXPECT_EQ(page->GetPagePart(L"/1/image.png", part.Put()), E_ABORT);
    EXPECT_EQ(page->GetWriteStream(writer.Put()), E_ABORT);
    EXPECT_EQ(page->SetPrintTicket(nullptr), E_ABORT);
    EXPECT_EQ(page->SetPagePart(nullptr), E_ABORT);
    EXPECT_EQ(page->DeleteResource(L"/1/image.png"), E_ABORT);
    EXPECT_EQ(page->GetXpsPartIterator(iterator.Put()), E_ABORT);
}

}  // namespace
}  // namespace devkit::pipeline
