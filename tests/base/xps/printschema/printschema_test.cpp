#include "base/xps/printschema/printschema.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/xps/printschema/mediasizetable.h"
#include "thrown.h"

namespace {

using namespace base::xps::printschema;
using tests::Thrown;

using Names = std::vector<std::wstring>;
using Namespaces = std::set<SchemaNamespace>;

constexpr SchemaNamespace Keywords = SchemaNamespace::Keywords;
constexpr SchemaNamespace Private = SchemaNamespace::Private;

Names LocalNames(const SchemaBase& list) {
    Names names;
    for (const Qname& name : list.GetQnames()) names.push_back(name.localName);
    return names;
}

TEST(Scope, IsConvertedByItsMeaning) {
    EXPECT_EQ(ToPrintTicketScope(Scope::Page), kPTPageScope);
    EXPECT_EQ(ToPrintTicketScope(Scope::Document), kPTDocumentScope);
    EXPECT_EQ(ToPrintTicketScope(Scope::Job), kPTJobScope);
    EXPECT_EQ(static_cast<int>(ToPrintTicketScope(Scope::Page)), 0);
    EXPECT_EQ(static_cast<int>(ToPrintTicketScope(Scope::Document)), 1);
    EXPECT_EQ(static_cast<int>(ToPrintTicketScope(Scope::Job)), 2);
}

TEST(Scope, NoneCannotBeConverted) {
    const std::string text =
        "base/xps/printschema/printschema.cpp(LINE) : Scope::None cannot convert to EPrintTicketScope.\n";
    EXPECT_EQ(Thrown<std::logic_error>([] { static_cast<void>(ToPrintTicketScope(Scope::None)); }), text);
    EXPECT_EQ(Thrown<std::logic_error>([] { static_cast<void>(ToPrintTicketScope(Scope{4})); }), text);
    EXPECT_EQ(Thrown<std::logic_error>([] { static_cast<void>(ToPrintTicketScope(Scope{-1})); }), text);
}

TEST(KeywordLists, HoldTheirNamesInOrder) {
    EXPECT_EQ(LocalNames(PageMediaSizeFeatureNames::Instance()), Names({L"PageMediaSize"}));
    EXPECT_EQ(LocalNames(InputBinFeatureNames::Instance()),
              Names({L"JobInputBin", L"DocumentInputBin", L"PageInputBin"}));
    EXPECT_EQ(LocalNames(InputBinOptionNames::Instance()),
              Names({L"AutoSelect", L"Manual", L"Cassette", L"Tractor", L"AutoSheetFeeder", L"Tray1",
                     L"Tray2", L"Tray3", L"Tray4", L"Tray5"}));
    EXPECT_EQ(LocalNames(FeedDirectionOptionNames::Instance()), Names({L"LongEdgeFirst", L"ShortEdgeFirst"}));
    EXPECT_EQ(LocalNames(PageOrientationFeatureNames::Instance()), Names({L"PageOrientation"}));
    EXPECT_EQ(LocalNames(PageOrientationOptionNames::Instance()),
              Names({L"Landscape", L"Portrait", L"ReverseLandscape", L"ReversePortrait"}));
    EXPECT_EQ(LocalNames(PageScalingFeatureNames::Instance()), Names({L"PageScaling"}));
    EXPECT_EQ(LocalNames(PageScalingOptionNames::Instance()),
              Names({L"Custom", L"CustomSquare", L"FitApplicationBleedSizeToPageImageableSize",
                     L"FitApplicationContentSizeToPageImageableSize",
                     L"FitApplicationMediaSizeToPageImageableSize", L"FitApplicationMediaSizeToPageMediaSize",
                     L"None", L"FitApplicationImageableSizeToImageableSize"}));
    EXPECT_EQ(LocalNames(PrintableMediaSizeFeatureNames::Instance()),
              Names({L"JobPrintableMediaSize", L"DocumentPrintableMediaSize", L"PagePrintableMediaSize"}));
    EXPECT_EQ(LocalNames(PrintableMediaSizePropertyNames::Instance()), Names({L"PrintableMediaSize"}));
}

TEST(KeywordLists, AreOfTheKeywordsNamespaceButForTheMakersOwn) {
    EXPECT_EQ(PageMediaSizeFeatureNames::Instance().GetNamespaces(), Namespaces({Keywords}));
    EXPECT_EQ(MediaSizeOptionNames::Instance().GetNamespaces(), Namespaces({Keywords}));
    EXPECT_EQ(InputBinFeatureNames::Instance().GetNamespaces(), Namespaces({Keywords}));
    EXPECT_EQ(InputBinOptionNames::Instance().GetNamespaces(), Namespaces({Keywords}));
    EXPECT_EQ(FeedDirectionOptionNames::Instance().GetNamespaces(), Namespaces({Keywords}));
    EXPECT_EQ(PageOrientationFeatureNames::Instance().GetNamespaces(), Namespaces({Keywords}));
    EXPECT_EQ(PageOrientationOptionNames::Instance().GetNamespaces(), Namespaces({Keywords}));
    EXPECT_EQ(PageScalingFeatureNames::Instance().GetNamespaces(), Namespaces({Keywords}));
    EXPECT_EQ(PageScalingOptionNames::Instance().GetNamespaces(), Namespaces({Keywords, Private}));
    EXPECT_EQ(PrintableMediaSizeFeatureNames::Instance().GetNamespaces(), Namespaces({Private}));
    EXPECT_EQ(PrintableMediaSizePropertyNames::Instance().GetNamespaces(), Namespaces({Private}));
}

TEST(KeywordLists, OnlyTheLastScalingOptionIsPrivate) {
    const std::vector<Qname>& names = PageScalingOptionNames::Instance().GetQnames();
    for (std::size_t index = 0; index < names.size(); ++index)
        EXPECT_EQ(names[index].space, index == 7 ? Private : Keywords) << index;
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
    EXPECT_EQ(std::set<const void*>(here.begin(), here.end()).size(), 22U);
}

TEST(MediaSizeOptionNames, AMediaSizesIdIsItsIndex) {
    const MediaSizeOptionNames& names = MediaSizeOptionNames::Instance();
    ASSERT_EQ(names.GetQnames().size(), 172U);
    for (const auto& [id, record] : MediaSizeTable::Instance().Records()) {
        const std::uint32_t index =
            id == MediaSizeSchema::OptionUnknown ? SchemaBase::NotFound : static_cast<std::uint32_t>(id);
        EXPECT_EQ(names.IndexOf(Keywords, record->keyword), index);
    }
    EXPECT_EQ(names.GetQname(0), (Qname{Keywords, L"CustomMediaSize"}));
    EXPECT_EQ(names.GetQname(9), (Qname{Keywords, L"ISOA4"}));
    EXPECT_EQ(names.GetQname(171), (Qname{Keywords, L"CreditCard"}));
}

TEST(InputBinOptionNames, GetQnameWithIndex10ThrowsAndIndex9IsTray5) {
    const InputBinOptionNames& names = InputBinOptionNames::Instance();
    EXPECT_EQ(Thrown<std::invalid_argument>([&] { static_cast<void>(names.GetQname(10)); }),
              "base/xps/printschema/schemabase.cpp(LINE) : The index you specified is out of range.\n");
    EXPECT_EQ(names.GetQname(9), (Qname{Keywords, L"Tray5"}));
}

TEST(InputBinOptionNames, LetterCaseMatters) {
    EXPECT_EQ(InputBinOptionNames::Instance().IndexOf(Keywords, L"tray1"), 0xFFFFFFFFU);
    EXPECT_EQ(InputBinOptionNames::Instance().IndexOf(Keywords, L"Tray1"), 5U);
}

TEST(PageScalingOptionNames, ThePrivateOptionIsFoundInThePrivateNamespaceAlone) {
    const PageScalingOptionNames& names = PageScalingOptionNames::Instance();
    EXPECT_EQ(names.IndexOf(Keywords, L"FitApplicationImageableSizeToImageableSize"), 0xFFFFFFFFU);
    EXPECT_EQ(names.IndexOf(Private, L"FitApplicationImageableSizeToImageableSize"), 7U);
    EXPECT_EQ(names.IndexOf(Private, L"None"), 0xFFFFFFFFU);
    EXPECT_EQ(names.IndexOf(Keywords, L"None"), 6U);
}

}  // namespace
