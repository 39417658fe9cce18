#include "devkit/pipeline/fixedpageobject.h"

#include "devkit/pipeline/pageobjects.h"
#include "platform/bstr.h"
#include "platform/utf.h"

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
        EXPECT_EQ(S_OK, stream.WriteBytes(text.data(), static_cast<ULONG>(text.size()), &count));
    }
};

const std::string kOldMarkup =
    "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"816\" Height=\"1056\" "
    "xml:lang=\"en\"><!-- /1/1.fpage --></FixedPage>";

TEST_F(FixedPageObjectTest, GivesItsNameMarkupAndTicket) {
    const auto page = FirstPage();
    EXPECT_EQ(L"/1/1.fpage", UriOf(page.Get()));
    EXPECT_EQ(kOldMarkup, MarkupOf(*page.Get()));
    EXPECT_EQ(L"/1/1_PT.xml", TicketNameOf(*page.Get()));
    EXPECT_EQ(L"(none)", TicketNameOf(*SecondPage().Get()));
}

TEST_F(FixedPageObjectTest, TheOldMarkupStaysReadableWhileTheNewIsWritten) {
    const auto page = FirstPage();
    ComPtr<IPrintReadStream> reader;
    ComPtr<IPrintWriteStream> writer;
    ASSERT_EQ(S_OK, page->GetStream(reader.Put()));
    ASSERT_EQ(S_OK, page->GetWriteStream(writer.Put()));
    Write(*writer.Get(), "<new/>");
    EXPECT_EQ(kOldMarkup, ReadAll(reader.Get()));
    EXPECT_EQ(kOldMarkup, MarkupOf(*page.Get()));
    writer->Close();
    EXPECT_EQ("<new/>", MarkupOf(*page.Get()));
    EXPECT_EQ(Lines{}, Breaches());
}

TEST_F(FixedPageObjectTest, TheReadStreamCanBeSoughtAfterTheWriteStreamWasClosed) {
    const auto page = FirstPage();
    ComPtr<IPrintReadStream> reader;
    ComPtr<IPrintWriteStream> writer;
    ASSERT_EQ(S_OK, page->GetStream(reader.Put()));
    ASSERT_EQ(S_OK, page->GetWriteStream(writer.Put()));
    EXPECT_EQ(kOldMarkup, ReadAll(reader.Get()));
    writer->Close();
    writer.Reset();
    EXPECT_EQ(S_OK, reader->Seek(0, STREAM_SEEK_SET, nullptr));
    EXPECT_EQ(kOldMarkup, ReadAll(reader.Get()));
}

TEST_F(FixedPageObjectTest, ASecondOpenWriteStreamIsABreach) {
    const auto page = FirstPage();
    ComPtr<IPrintWriteStream> first;
    ComPtr<IPrintWriteStream> second;
    ASSERT_EQ(S_OK, page->GetWriteStream(first.Put()));
    EXPECT_EQ(kCallOutOfOrder, page->GetWriteStream(second.Put()));
    EXPECT_FALSE(second);
    EXPECT_EQ(Lines{"GetWriteStream of FixedPage /1/1.fpage came while another write stream is open"},
              Breaches());
    first->Close();
    ASSERT_EQ(S_OK, page->GetWriteStream(second.Put()));
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
    ASSERT_EQ(S_OK, page->GetPagePart(L"/1/FONT.odttf", part.Put()));
    EXPECT_EQ(S_OK, part.QueryTo(font));
    EXPECT_EQ(L"/1/font.odttf", UriOf(font.Get()));
    ASSERT_EQ(S_OK, page->GetPagePart(L"/1/image.png", part.Put()));
    EXPECT_EQ(S_OK, part.QueryTo(image));
    ASSERT_EQ(S_OK, page->GetPagePart(L"/1/profile.icc", part.Put()));
    EXPECT_EQ(S_OK, part.QueryTo(profile));
    ASSERT_EQ(S_OK, page->GetPagePart(L"/1/styles.dict", part.Put()));
    EXPECT_EQ(S_OK, part.QueryTo(dictionary));
    ASSERT_EQ(S_OK, page->GetPagePart(L"/1/1_PT.xml", part.Put()));
    EXPECT_EQ(S_OK, part.QueryTo(ticket));
    ASSERT_EQ(S_OK, page->GetPagePart(L"/1/other.bin", part.Put()));
    EXPECT_EQ(S_OK, part.QueryTo(base));
    EXPECT_EQ(E_NOINTERFACE, part.QueryTo(image));
}

TEST_F(FixedPageObjectTest, APartThatItDoesNotHaveAnswersElementNotFound) {
    const auto page = FirstPage();
    ComPtr<IUnknown> part;
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, page->GetPagePart(L"/nowhere.png", part.Put()));
    EXPECT_FALSE(part);
    EXPECT_EQ(Lines{}, Breaches());
}

TEST_F(FixedPageObjectTest, DeletingItsTicketLeavesItWithoutOne) {
    const auto page = FirstPage();
    EXPECT_EQ(S_OK, page->DeleteResource(L"/1/1_PT.xml"));
    EXPECT_EQ(L"(none)", TicketNameOf(*page.Get()));
    const auto made = NewPart<IPartPrintTicket>(L"/made.xml", "made");
    EXPECT_EQ(S_OK, page->SetPrintTicket(made.Get()));
    EXPECT_EQ(L"/made.xml", TicketNameOf(*page.Get()));
}

TEST_F(FixedPageObjectTest, DeletingAResourceDissociatesIt) {
    const auto page = FirstPage();
    ComPtr<IUnknown> part;
    EXPECT_EQ(S_OK, page->DeleteResource(L"/1/image.png"));
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, page->GetPagePart(L"/1/image.png", part.Put()));
}

TEST_F(FixedPageObjectTest, DeletingWhatItDoesNotHaveIsABreach) {
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, FirstPage()->DeleteResource(L"/nowhere.png"));
    EXPECT_EQ(
        Lines{"DeleteResource of FixedPage /1/1.fpage names /nowhere.png, which the page does not have"},
        Breaches());
}

TEST_F(FixedPageObjectTest, TakesANewResourceInThePlaceOfOneOfTheSameName) {
    const auto page = FirstPage();
    EXPECT_EQ(S_OK, page->SetPagePart(NewPart<IPartImage>(L"/1/Image.png", "new").Get()));
    ComPtr<IUnknown> part;
    ComPtr<IPartImage> image;
    ComPtr<IPrintReadStream> stream;
    ASSERT_EQ(S_OK, page->GetPagePart(L"/1/image.png", part.Put()));
    ASSERT_EQ(S_OK, part.QueryTo(image));
    ASSERT_EQ(S_OK, image->GetStream(stream.Put()));
    EXPECT_EQ("new", ReadAll(stream.Get()));
}

TEST_F(FixedPageObjectTest, RefusesAResourceThatIsNone) {
    const auto page = FirstPage();
    EXPECT_EQ(E_INVALIDARG, page->SetPagePart(SecondPage().Get()));
    EXPECT_EQ(Lines{"SetPagePart was given an object that is not one of the pipeline's parts of a page"},
              Breaches());
}

TEST_F(FixedPageObjectTest, RefusesNullPointers) {
    const auto page = FirstPage();
    EXPECT_EQ(E_POINTER, page->GetUri(nullptr));
    EXPECT_EQ(E_POINTER, page->GetStream(nullptr));
    EXPECT_EQ(E_POINTER, page->GetPartCompression(nullptr));
    EXPECT_EQ(E_POINTER, page->GetPrintTicket(nullptr));
    EXPECT_EQ(E_POINTER, page->GetPagePart(nullptr, nullptr));
    EXPECT_EQ(E_POINTER, page->GetWriteStream(nullptr));
    EXPECT_EQ(E_POINTER, page->SetPrintTicket(nullptr));
    EXPECT_EQ(E_POINTER, page->SetPagePart(nullptr));
    EXPECT_EQ(E_POINTER, page->DeleteResource(nullptr));
    EXPECT_EQ(E_POINTER, page->GetXpsPartIterator(nullptr));
}

TEST_F(FixedPageObjectTest, KeepsItsCompression) {
    const auto page = FirstPage();
    EXpsCompressionOptions compression = Compression_Fast;
    EXPECT_EQ(S_OK, page->GetPartCompression(&compression));
    EXPECT_EQ(Compression_Normal, compression);
    EXPECT_EQ(S_OK, page->SetPartCompression(Compression_Small));
    EXPECT_EQ(S_OK, page->GetPartCompression(&compression));
    EXPECT_EQ(Compression_Small, compression);
    EXPECT_EQ(E_INVALIDARG, page->SetPartCompression(static_cast<EXpsCompressionOptions>(4)));
}

TEST_F(FixedPageObjectTest, UnreadableInputFailsTheStreamAndIsNoted) {
    const auto job = SampleJob();
    job->documents[0].pages[0].markup.read = []() -> Bytes { throw std::runtime_error("damaged"); };
    ComPtr<IFixedPage> page;
    ASSERT_EQ(S_OK, PartNumber(4, job).QueryTo(page));
    ComPtr<IPrintReadStream> stream;
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), page->GetStream(stream.Put()));
    EXPECT_EQ(Lines{"/1/1.fpage: damaged"}, Context()->InputFailures());
}

TEST_F(FixedPageObjectTest, EveryMethodFailsAsPlanned) {
    Behaviour behaviour;
    behaviour.faults.push_back({"", "/1/1.fpage", 1, E_ABORT, true});
    Use(behaviour);
    const auto page = FirstPage();
    EXpsCompressionOptions compression = Compression_Fast;
    ComPtr<IPrintReadStream> reader;
    ComPtr<IPrintWriteStream> writer;
    ComPtr<IPartPrintTicket> ticket;
    ComPtr<IUnknown> part;
    ComPtr<IXpsPartIterator> iterator;
    BSTR uri = nullptr;
    EXPECT_EQ(E_ABORT, page->GetUri(&uri));
    EXPECT_EQ(E_ABORT, page->GetStream(reader.Put()));
    EXPECT_EQ(E_ABORT, page->GetPartCompression(&compression));
    EXPECT_EQ(E_ABORT, page->SetPartCompression(compression));
    EXPECT_EQ(E_ABORT, page->GetPrintTicket(ticket.Put()));
    EXPECT_EQ(E_ABORT, page->GetPagePart(L"/1/image.png", part.Put()));
    EXPECT_EQ(E_ABORT, page->GetWriteStream(writer.Put()));
    EXPECT_EQ(E_ABORT, page->SetPrintTicket(nullptr));
    EXPECT_EQ(E_ABORT, page->SetPagePart(nullptr));
    EXPECT_EQ(E_ABORT, page->DeleteResource(L"/1/image.png"));
    EXPECT_EQ(E_ABORT, page->GetXpsPartIterator(iterator.Put()));
}

class PartIteratorTest : public PartsTest {
  protected:
    ComPtr<IXpsPartIterator> IteratorOf(IFixedPage& page) {
        ComPtr<IXpsPartIterator> iterator;
        EXPECT_EQ(S_OK, page.GetXpsPartIterator(iterator.Put()));
        return iterator;
    }
    static std::vector<std::wstring> Rest(IXpsPartIterator& iterator) {
        std::vector<std::wstring> names;
        for (; !iterator.IsDone(); iterator.Next()) {
            platform::Bstr uri;
            ComPtr<IUnknown> part;
            EXPECT_EQ(S_OK, iterator.Current(uri.Put(), part.Put()));
            EXPECT_TRUE(part);
            names.emplace_back(uri.View());
        }
        return names;
    }
};

const std::vector<std::wstring> kPartsOfTheFirstPage{L"/1/1_PT.xml",    L"/1/font.odttf",  L"/1/image.png",
                                                     L"/1/profile.icc", L"/1/styles.dict", L"/1/other.bin"};

TEST_F(PartIteratorTest, GoesOverTheTicketAndTheResources) {
    const auto page = FirstPage();
    EXPECT_EQ(kPartsOfTheFirstPage, Rest(*IteratorOf(*page.Get()).Get()));
}

TEST_F(PartIteratorTest, IsDoneAtOnceForAPageWithoutParts) {
    const auto iterator = IteratorOf(*SecondPage().Get());
    EXPECT_EQ(TRUE, iterator->IsDone());
    platform::Bstr uri;
    ComPtr<IUnknown> part;
    EXPECT_EQ(E_ELEMENT_NOT_FOUND, iterator->Current(uri.Put(), part.Put()));
    EXPECT_FALSE(part);
}

TEST_F(PartIteratorTest, StartsAgainAfterReset) {
    const auto iterator = IteratorOf(*FirstPage().Get());
    Rest(*iterator.Get());
    iterator->Next();
    EXPECT_EQ(TRUE, iterator->IsDone());
    iterator->Reset();
    EXPECT_EQ(kPartsOfTheFirstPage, Rest(*iterator.Get()));
}

TEST_F(PartIteratorTest, ShowsThePartsAsTheyWereWhenItWasMade) {
    const auto page = FirstPage();
    const auto iterator = IteratorOf(*page.Get());
    EXPECT_EQ(S_OK, page->DeleteResource(L"/1/image.png"));
    EXPECT_EQ(kPartsOfTheFirstPage, Rest(*iterator.Get()));
}

TEST_F(PartIteratorTest, RefusesNullPointers) {
    const auto iterator = IteratorOf(*FirstPage().Get());
    platform::Bstr uri;
    ComPtr<IUnknown> part;
    EXPECT_EQ(E_POINTER, iterator->Current(nullptr, part.Put()));
    EXPECT_EQ(E_POINTER, iterator->Current(uri.Put(), nullptr));
}

TEST_F(PartIteratorTest, EveryPartThatItGivesCanBePutIntoAnotherPage) {
    const auto from = FirstPage();
    const auto to = SecondPage();
    const auto iterator = IteratorOf(*from.Get());
    for (; !iterator->IsDone(); iterator->Next()) {
        platform::Bstr uri;
        ComPtr<IUnknown> part;
        ASSERT_EQ(S_OK, iterator->Current(uri.Put(), part.Put()));
        EXPECT_EQ(S_OK, to->SetPagePart(part.Get())) << platform::ToUtf8(uri.View());
    }
    EXPECT_EQ(kPartsOfTheFirstPage, Rest(*IteratorOf(*to.Get()).Get()));
    EXPECT_EQ(L"/1/1_PT.xml", TicketNameOf(*to.Get()));
    EXPECT_EQ(Lines{}, Breaches());
}

}  // namespace
}  // namespace devkit::pipeline
