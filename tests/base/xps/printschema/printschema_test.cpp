#include "base/xps/printschema/printschema.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/xps/printschema/mediasizetable.h"
#include "handlertest.h"
#include "thrown.h"

namespace {

using namespace base::xps::printschema;
using tests::kKeywords;
using tests::kPrivate;
using tests::Thrown;

using Names = std::vector<std::wstring>;
using Namespaces = std::set<SchemaNamespace>;

Names LocalNames(const SchemaBase& list) {
    Names names;
    for (const Qname& name : list.GetQnames()) names.push_back(name.localName);
    return names;
}

TEST(Scope, IsConvertedByItsMeaning) {
    EXPECT_EQ(kPTPageScope, ToPrintTicketScope(Scope::Page));
    EXPECT_EQ(kPTDocumentScope, ToPrintTicketScope(Scope::Document));
    EXPECT_EQ(kPTJobScope, ToPrintTicketScope(Scope::Job));
    EXPECT_EQ(0, static_cast<int>(ToPrintTicketScope(Scope::Page)));
    EXPECT_EQ(1, static_cast<int>(ToPrintTicketScope(Scope::Document)));
    EXPECT_EQ(2, static_cast<int>(ToPrintTicketScope(Scope::Job)));
}

TEST(Scope, NoneCannotBeConverted) {
    const std::string text =
        "base/xps/printschema/printschema.cpp(LINE) : Scope::None cannot convert to EPrintTicketScope.\n";
    EXPECT_EQ(text, Thrown<std::logic_error>([] { static_cast<void>(ToPrintTicketScope(Scope::None)); }));
    EXPECT_EQ(text, Thrown<std::logic_error>([] { static_cast<void>(ToPrintTicketScope(Scope{4})); }));
    EXPECT_EQ(text, Thrown<std::logic_error>([] { static_cast<void>(ToPrintTicketScope(Scope{-1})); }));
}

TEST(KeywordLists, HoldTheirNamesInOrder) {
    EXPECT_EQ(Names({L"PageMediaSize"}), LocalNames(PageMediaSizeFeatureNames::Instance()));
    EXPECT_EQ(Names({L"JobInputBin", L"DocumentInputBin", L"PageInputBin"}),
              LocalNames(InputBinFeatureNames::Instance()));
    EXPECT_EQ(Names({L"AutoSelect", L"Manual", L"Cassette", L"Tractor", L"AutoSheetFeeder", L"Tray1",
                     L"Tray2", L"Tray3", L"Tray4", L"Tray5"}),
              LocalNames(InputBinOptionNames::Instance()));
    EXPECT_EQ(Names({L"LongEdgeFirst", L"ShortEdgeFirst"}), LocalNames(FeedDirectionOptionNames::Instance()));
    EXPECT_EQ(Names({L"PageOrientation"}), LocalNames(PageOrientationFeatureNames::Instance()));
    EXPECT_EQ(Names({L"Landscape", L"Portrait", L"ReverseLandscape", L"ReversePortrait"}),
              LocalNames(PageOrientationOptionNames::Instance()));
    EXPECT_EQ(Names({L"PageScaling"}), LocalNames(PageScalingFeatureNames::Instance()));
    EXPECT_EQ(Names({L"Custom", L"CustomSquare", L"FitApplicationBleedSizeToPageImageableSize",
                     L"FitApplicationContentSizeToPageImageableSize",
                     L"FitApplicationMediaSizeToPageImageableSize", L"FitApplicationMediaSizeToPageMediaSize",
                     L"None", L"FitApplicationImageableSizeToImageableSize"}),
              LocalNames(PageScalingOptionNames::Instance()));
    EXPECT_EQ(Names({L"JobPrintableMediaSize", L"DocumentPrintableMediaSize", L"PagePrintableMediaSize"}),
              LocalNames(PrintableMediaSizeFeatureNames::Instance()));
    EXPECT_EQ(Names({L"PrintableMediaSize"}), LocalNames(PrintableMediaSizePropertyNames::Instance()));
}

TEST(KeywordLists, AreOfTheKeywordsNamespaceButForTheMakersOwn) {
    EXPECT_EQ(Namespaces({kKeywords}), PageMediaSizeFeatureNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kKeywords}), MediaSizeOptionNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kKeywords}), InputBinFeatureNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kKeywords}), InputBinOptionNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kKeywords}), FeedDirectionOptionNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kKeywords}), PageOrientationFeatureNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kKeywords}), PageOrientationOptionNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kKeywords}), PageScalingFeatureNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kKeywords, kPrivate}), PageScalingOptionNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kPrivate}), PrintableMediaSizeFeatureNames::Instance().GetNamespaces());
    EXPECT_EQ(Namespaces({kPrivate}), PrintableMediaSizePropertyNames::Instance().GetNamespaces());
}

TEST(KeywordLists, OnlyTheLastScalingOptionIsPrivate) {
    const std::vector<Qname>& names = PageScalingOptionNames::Instance().GetQnames();
    for (std::size_t index = 0; index < names.size(); ++index)
        EXPECT_EQ(index == 7 ? kPrivate : kKeywords, names[index].space) << index;
}

// Where each list is, and where it keeps its first name.
std::vector<const void*> AddressesOfTheLists() {
    std::vector<const void*> addresses;
    for (const SchemaBase* pList : std::initializer_list<const SchemaBase*>{
             &PageMediaSizeFeatureNames::Instance(), &MediaSizeOptionNames::Instance(),
             &InputBinFeatureNames::Instance(), &InputBinOptionNames::Instance(),
             &FeedDirectionOptionNames::Instance(), &PageOrientationFeatureNames::Instance(),
             &PageOrientationOptionNames::Instance(), &PageScalingFeatureNames::Instance(),
             &PageScalingOptionNames::Instance(), &PrintableMediaSizeFeatureNames::Instance(),
             &PrintableMediaSizePropertyNames::Instance()}) {
        addresses.push_back(pList);
        addresses.push_back(pList->GetQnames().data());
    }
    return addresses;
}

TEST(KeywordLists, AreBuiltOnceForEveryThread) {
    const std::vector<const void*> here = AddressesOfTheLists();
    std::vector<const void*> there;
    std::thread([&] { there = AddressesOfTheLists(); }).join();
    EXPECT_EQ(here, there);
    EXPECT_EQ(here, AddressesOfTheLists());
    EXPECT_EQ(22U, std::set<const void*>(here.begin(), here.end()).size());
}

TEST(MediaSizeOptionNames, AMediaSizesIdIsItsIndex) {
    const MediaSizeOptionNames& names = MediaSizeOptionNames::Instance();
    ASSERT_EQ(172U, names.GetQnames().size());
    for (const auto& [id, record] : MediaSizeTable::Instance().Records()) {
        const std::uint32_t index =
            id == MediaSizeSchema::OptionUnknown ? SchemaBase::kNotFound : static_cast<std::uint32_t>(id);
        EXPECT_EQ(index, names.IndexOf(kKeywords, record->keyword));
    }
    EXPECT_EQ((Qname{kKeywords, L"CustomMediaSize"}), names.GetQname(0));
    EXPECT_EQ((Qname{kKeywords, L"ISOA4"}), names.GetQname(9));
    EXPECT_EQ((Qname{kKeywords, L"CreditCard"}), names.GetQname(171));
}

TEST(InputBinOptionNames, GetQnameWithIndex10ThrowsAndIndex9IsTray5) {
    const InputBinOptionNames& names = InputBinOptionNames::Instance();
    EXPECT_EQ("base/xps/printschema/schemabase.cpp(LINE) : The index you specified is out of range.\n",
              Thrown<std::invalid_argument>([&] { static_cast<void>(names.GetQname(10)); }));
    EXPECT_EQ((Qname{kKeywords, L"Tray5"}), names.GetQname(9));
}

TEST(InputBinOptionNames, LetterCaseMatters) {
    EXPECT_EQ(0xFFFFFFFFU, InputBinOptionNames::Instance().IndexOf(kKeywords, L"tray1"));
    EXPECT_EQ(5U, InputBinOptionNames::Instance().IndexOf(kKeywords, L"Tray1"));
}

TEST(PageScalingOptionNames, ThePrivateOptionIsFoundInThePrivateNamespaceAlone) {
    const PageScalingOptionNames& names = PageScalingOptionNames::Instance();
    EXPECT_EQ(0xFFFFFFFFU, names.IndexOf(kKeywords, L"FitApplicationImageableSizeToImageableSize"));
    EXPECT_EQ(7U, names.IndexOf(kPrivate, L"FitApplicationImageableSizeToImageableSize"));
    EXPECT_EQ(0xFFFFFFFFU, names.IndexOf(kPrivate, L"None"));
    EXPECT_EQ(6U, names.IndexOf(kKeywords, L"None"));
}

}  // namespace
