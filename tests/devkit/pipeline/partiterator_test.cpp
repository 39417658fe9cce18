#include "devkit/pipeline/partiterator.h"

#include "devkit/pipeline/pageobjects.h"
#include "platform/bstr.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

class PartIteratorTest : public PartsTest {
  protected:
    ComPtr<IXpsPartIterator> IteratorOf(IFixedPage& page) {
        ComPtr<IXpsPartIterator> iterator;
        EXPECT_EQ(page.GetXpsPartIterator(iterator.Put()), S_OK);
        return iterator;
    }
    static std::vector<std::wstring> Rest(IXpsPartIterator& iterator) {
        std::vector<std::wstring> names;
        for (; !iterator.IsDone(); iterator.Next()) {
            platform::Bstr uri;
            ComPtr<IUnknown> part;
            EXPECT_EQ(iterator.Current(uri.Put(), part.Put()), S_OK);
            EXPECT_TRUE(part);
            names.emplace_back(uri.View());
        }
        return names;
    }
};

const std::vector<std::wstring> partsOfTheFirstPage{L"/1/1_PT.xml",    L"/1/font.odttf",  L"/1/image.png",
                                                    L"/1/profile.icc", L"/1/styles.dict", L"/1/other.bin"};

TEST_F(PartIteratorTest, GoesOverTheTicketAndTheResources) {
    const auto page = FirstPage();
    EXPECT_EQ(Rest(*IteratorOf(*page.Get()).Get()), partsOfTheFirstPage);
}

TEST_F(PartIteratorTest, IsDoneAtOnceForAPageWithoutParts) {
    const auto iterator = IteratorOf(*SecondPage().Get());
    EXPECT_EQ(iterator->IsDone(), TRUE);
    platform::Bstr uri;
    ComPtr<IUnknown> part;
    EXPECT_EQ(iterator->Current(uri.Put(), part.Put()), E_ELEMENT_NOT_FOUND);
    EXPECT_FALSE(part);
}

TEST_F(PartIteratorTest, StartsAgainAfterReset) {
    const auto iterator = IteratorOf(*FirstPage().Get());
    Rest(*iterator.Get());
    iterator->Next();
    EXPECT_EQ(iterator->IsDone(), TRUE);
    iterator->Reset();
    EXPECT_EQ(Rest(*iterator.Get()), partsOfTheFirstPage);
}

TEST_F(PartIteratorTest, ShowsThePartsAsTheyWereWhenItWasMade) {
    const auto page = FirstPage();
    const auto iterator = IteratorOf(*page.Get());
    EXPECT_EQ(page->DeleteResource(L"/1/image.png"), S_OK);
    EXPECT_EQ(Rest(*iterator.Get()), partsOfTheFirstPage);
}

TEST_F(PartIteratorTest, RefusesNullPointers) {
    const auto iterator = IteratorOf(*FirstPage().Get());
    platform::Bstr uri;
    ComPtr<IUnknown> part;
    EXPECT_EQ(iterator->Current(nullptr, part.Put()), E_POINTER);
    EXPECT_EQ(iterator->Current(uri.Put(), nullptr), E_POINTER);
}

}  // namespace
}  // namespace devkit::pipeline
