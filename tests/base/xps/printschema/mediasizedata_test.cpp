#include "base/xps/printschema/mediasizedata.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/logging/exceptions.h"
#include "base/xml/xmlutility.h"
#include "domtext.h"
#include "eachdom.h"
#include "measurementsetting.h"
#include "platform/comptr.h"
#include "stubticketprovider.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace {

using base::exception::HresultError;
using base::exception::InvalidOptionIdError;
using base::exception::NotSupportedException;
using base::xml::LoadDomFromString;
using base::xps::printschema::MediaDimensions;
using base::xps::printschema::MediaSizeData;
using base::xps::printschema::MediaSizeOption;
using base::xps::printschema::MediaSizeOptionNames;
using base::xps::printschema::MediaSizeSchema;
using base::xps::printschema::MediaSizeTable;
using base::xps::printschema::PageMediaSizeFeatureNames;
using base::xps::printschema::PrintableMediaRange;
using base::xps::printschema::Scope;
using platform::ComPtr;
using testing::ElementsAre;
using testing::IsEmpty;
using tests::DomText;
using tests::Feature;
using tests::Integer;
using tests::MeasurementSetting;
using tests::ScoredProperty;
using tests::Ticket;
using tests::Value;

using Dom = ComPtr<IXMLDOMDocument2>;

constexpr MediaDimensions kA4 = {210000, 297000};
constexpr MediaDimensions kA4Rotated = {297000, 210000};
constexpr MediaDimensions kLetter = {215900, 279400};
constexpr MediaDimensions kNothing = {0, 0};
constexpr std::int32_t kISOA4Rotated = 10;
constexpr std::int32_t kISOB4 = 25;
constexpr std::int32_t kISOB4Envelope = 26;
constexpr std::int32_t kNorthAmericaNote = 99;

std::wstring Length(std::wstring_view name, std::int32_t value) {
    return ScoredProperty(L"psk:" + std::wstring(name), Integer(value));
}

// The feature as the program writes it.
std::wstring MediaSize(std::wstring_view option, const std::optional<MediaDimensions>& size = std::nullopt) {
    return Feature(L"psk:PageMediaSize", L"psk:" + std::wstring(option),
                   size ? Length(L"MediaSizeHeight", size->height) + Length(L"MediaSizeWidth", size->width)
                        : std::wstring());
}

MediaSizeData WithOption(std::int32_t id) {
    MediaSizeData data;
    data.SetOptionId(id);
    return data;
}

void ExpectState(const MediaSizeData& data, std::int32_t id, const MediaDimensions& size) {
    EXPECT_EQ(id, data.OptionIdOrUnknown());
    EXPECT_EQ(size, data.GetSize());
    EXPECT_EQ(size.width, data.GetWidth());
    EXPECT_EQ(size.height, data.GetHeight());
}

// Option, size and the consistency of the two.

TEST(MediaSizeDataTest, StartsAsA4) {
    const MediaSizeData data;
    ExpectState(data, MediaSizeSchema::ISOA4, kA4);
    EXPECT_EQ(0, data.GetFeatureId());
    EXPECT_EQ(L"PageMediaSize", data.GetFeatureName().localName);
    EXPECT_EQ(L"ISOA4", data.GetOptionName().localName);
}

TEST(MediaSizeDataTest, IsMadeFromARecord) {
    ExpectState(MediaSizeData({L"ISOA5", 12, {148000, 210000}}), 12, {148000, 210000});
    ExpectState(MediaSizeData({L"CustomMediaSize", 0, {5, 6}}), 0, {5, 6});
    ExpectState(MediaSizeData({L"PSCustomMediaSize", 1, {5, 6}}), 1, {5, 6});
    ExpectState(MediaSizeData({L"OptionUnknown", -1, {-1, -1}}), 0, {-1, -1});
    // The size wins over the option of a record that is not of the table.
    ExpectState(MediaSizeData({L"ISOA5", 12, kA4}), MediaSizeSchema::ISOA4, kA4);
    EXPECT_EQ(0, MediaSizeData({L"ISOA5", 12, kA4}).GetFeatureId());
}

TEST(MediaSizeDataTest, ARecordSetsItsOptionBeforeItsSizeWhenAnObjectIsMadeFromIt) {
    // As setting the option does: of two options with one size the lower, and 172 becomes custom. A size of
    // nothing then leaves that.
    ExpectState(MediaSizeData({L"ISOB4Envelope", kISOB4Envelope, kNothing}), kISOB4, kNothing);
    ExpectState(MediaSizeData({L"", 172, kNothing}), MediaSizeSchema::CustomMediaSize, kNothing);
    ExpectState(MediaSizeData({L"", 173, kNothing}), 173, kNothing);
}

TEST(MediaSizeDataTest, SettingA4sSizeOnAnyObjectYieldsA4AndSwappedA4Rotated) {
    for (const std::int32_t id : {-1, 0, 1, 9, 94, 143}) {
        MediaSizeData data = WithOption(id);
        data.SetSize(kA4);
        ExpectState(data, MediaSizeSchema::ISOA4, kA4);
        data.SetSize(kA4Rotated);
        ExpectState(data, kISOA4Rotated, kA4Rotated);
    }
}

TEST(MediaSizeDataTest, SettingNorthAmericaNoteStoresNorthAmericaLetter) {
    ExpectState(WithOption(kNorthAmericaNote), MediaSizeSchema::NorthAmericaLetter, kLetter);
}

TEST(MediaSizeDataTest, SettingAnOptionStoresTheLowestIdOfItsSize) {
    EXPECT_EQ(L"ISOB4", WithOption(26).GetOptionName().localName);
    EXPECT_EQ(L"PRC32K", WithOption(128).GetOptionName().localName);
    EXPECT_EQ(L"ISOC3", WithOption(120).GetOptionName().localName);
    for (std::int32_t id = 2; id <= 171; ++id) {
        const MediaDimensions size = MediaSizeTable::Instance().ById(id)->size;
        ExpectState(WithOption(id), MediaSizeTable::Instance().BySize(size)->id, size);
    }
}

TEST(MediaSizeDataTest, ASizeOfNoOptionMakesAStandardOrUnknownOptionCustomAndKeepsACustomOne) {
    MediaSizeData standard;
    standard.SetSize({100, 100});
    ExpectState(standard, MediaSizeSchema::CustomMediaSize, {100, 100});
    MediaSizeData unknown = WithOption(MediaSizeSchema::OptionUnknown);
    unknown.SetSize({100, 100});
    ExpectState(unknown, MediaSizeSchema::CustomMediaSize, {100, 100});
    MediaSizeData postScript = WithOption(MediaSizeSchema::PSCustomMediaSize);
    postScript.SetSize({100, 100});
    ExpectState(postScript, MediaSizeSchema::PSCustomMediaSize, {100, 100});
}

TEST(MediaSizeDataTest, ASizeOfNoOptionMakesAnObjectWithoutAFeatureCustom) {
    MediaSizeData data;
    data.SetFeatureId(-1);
    data.SetSize({100, 100});
    data.SetFeatureId(0);
    ExpectState(data, MediaSizeSchema::CustomMediaSize, {100, 100});
}

TEST(MediaSizeDataTest, TheSizeZeroKeepsTheOption) {
    for (const std::int32_t id : {0, 1, 9}) {
        MediaSizeData data = WithOption(id);
        data.SetSize(kNothing);
        ExpectState(data, id, kNothing);
    }
}

TEST(MediaSizeDataTest, SettingOption172GivesACustomOptionOfTheUnknownSize) {
    ExpectState(WithOption(172), MediaSizeSchema::CustomMediaSize, {-1, -1});
}

TEST(MediaSizeDataTest, SettingAnOptionThatIsNoStandardSizeLeavesTheSizeAlone) {
    for (const std::int32_t id : {-1, 0, 1, 173}) {
        MediaSizeData data = WithOption(id);
        EXPECT_EQ(kA4, data.GetSize());
        data.SetFeatureId(0);
        EXPECT_EQ(id, data.OptionIdOrUnknown());
    }
}

TEST(MediaSizeDataTest, ASquareSheetIsPortrait) {
    MediaSizeData data;
    data.SetSize({100, 100});
    EXPECT_TRUE(data.IsPortrait());
    EXPECT_FALSE(data.IsLandscape());
    data.SetSize({101, 100});
    EXPECT_FALSE(data.IsPortrait());
    EXPECT_TRUE(data.IsLandscape());
    data.SetSize({-2, -1});
    EXPECT_TRUE(data.IsPortrait());
}

TEST(MediaSizeDataTest, RotatingSwapsTheSizeAndTheOptionFollows) {
    MediaSizeData data;
    data.Rotate();
    ExpectState(data, kISOA4Rotated, kA4Rotated);
    data.Rotate();
    ExpectState(data, MediaSizeSchema::ISOA4, kA4);
    MediaSizeData executive = WithOption(89);  // has no rotated row
    executive.Rotate();
    ExpectState(executive, MediaSizeSchema::CustomMediaSize, {266700, 184150});
}

TEST(MediaSizeDataTest, IsSetFromARecordAlsoWithoutAFeature) {
    MediaSizeData data;
    data.SetFeatureId(-1);
    data.SetFromRecord({L"PSCustomMediaSize", 1, {7, 8}});
    EXPECT_EQ(0, data.GetFeatureId());
    ExpectState(data, MediaSizeSchema::PSCustomMediaSize, {7, 8});
}

TEST(MediaSizeDataTest, ARecordsOptionIsStoredAsItIsWhenAnObjectIsSetFromIt) {
    MediaSizeData data;
    data.SetFromRecord({L"ISOB4Envelope", kISOB4Envelope, kNothing});
    ExpectState(data, kISOB4Envelope, kNothing);
    data.SetFromRecord({L"", 172, kNothing});
    ExpectState(data, 172, kNothing);
    data.SetFromRecord({L"ISOB4Envelope", kISOB4Envelope, {250000, 353000}});
    ExpectState(data, kISOB4, {250000, 353000});
}

TEST(MediaSizeDataTest, AStandardOptionsRecordIsItsRow) {
    EXPECT_EQ((MediaSizeOption{L"ISOA4", 9, kA4}), MediaSizeData().ToRecord());
    MediaSizeData without;
    without.SetSize(kNothing);
    EXPECT_EQ((MediaSizeOption{L"ISOA4", 9, kA4}), without.ToRecord());
}

TEST(MediaSizeDataTest, ACustomOrUnknownOptionsRecordHasTheObjectsSize) {
    MediaSizeData data = WithOption(MediaSizeSchema::PSCustomMediaSize);
    data.SetSize({7, 8});
    EXPECT_EQ((MediaSizeOption{L"PSCustomMediaSize", 1, {7, 8}}), data.ToRecord());
    data.SetOptionId(MediaSizeSchema::CustomMediaSize);
    EXPECT_EQ((MediaSizeOption{L"CustomMediaSize", 0, {7, 8}}), data.ToRecord());
    data.SetOptionId(MediaSizeSchema::OptionUnknown);
    EXPECT_EQ((MediaSizeOption{L"CustomMediaSize", 0, {7, 8}}), data.ToRecord());
}

// Names and scopes.

TEST(MediaSizeDataTest, IsOneFeatureInEveryScope) {
    const MediaSizeData data;
    for (const Scope scope : {Scope::Job, Scope::Document, Scope::Page}) {
        EXPECT_EQ(0u, data.FeatureIndexOfScope(scope));
        EXPECT_EQ(L"PageMediaSize", data.GetFeatureName(scope).localName);
    }
    EXPECT_EQ(&PageMediaSizeFeatureNames::Instance(), &data.GetFeatureNames());
    EXPECT_EQ(&MediaSizeOptionNames::Instance(), &data.GetOptionNames());
}

TEST(MediaSizeDataTest, AnyOtherScopeIsNotSupported) {
    for (const Scope scope : {Scope::None, static_cast<Scope>(4), static_cast<Scope>(-1)}) {
        EXPECT_THAT(tests::Thrown<NotSupportedException>(
                        [&] { static_cast<void>(MediaSizeData().FeatureIndexOfScope(scope)); }),
                    testing::HasSubstr("this scope is not supported in this feature."));
    }
}

TEST(MediaSizeDataTest, BelongsToThePageUnlessItsFeatureIsNotSet) {
    MediaSizeData data;
    EXPECT_EQ(Scope::Page, data.GetScope());
    data.SetFeatureId(1);
    EXPECT_EQ(Scope::None, data.GetScope());
    data.SetFeatureId(-1);
    EXPECT_EQ(Scope::None, data.GetScope());
}

TEST(MediaSizeDataTest, IdsThatAreNotSetAreUnknown) {
    MediaSizeData data;
    EXPECT_EQ(0, data.FeatureIdOrUnknown());
    data.SetFeatureId(-1);
    EXPECT_EQ(-1, data.FeatureIdOrUnknown());
    EXPECT_EQ(-1, data.OptionIdOrUnknown());
    EXPECT_THROW(static_cast<void>(data.GetOptionId()), InvalidOptionIdError);
}

// Tickets.

class MediaSizeDataTicketTest : public tests::EachDomTest {
  protected:
    static MediaSizeData ReadFrom(std::wstring_view body) {
        MediaSizeData data = WithOption(12);
        data.Read(LoadDomFromString(Ticket(body)).Get());
        return data;
    }
    static std::wstring Written(const MediaSizeData& data, std::wstring_view body,
                                Scope scope = Scope::Page) {
        const Dom ticket = LoadDomFromString(Ticket(body));
        data.Write(ticket.Get(), scope);
        return DomText(ticket.Get());
    }
};

TEST_P(MediaSizeDataTicketTest, A4WithoutASizeReadsAsItsOwnSize) {
    ExpectState(ReadFrom(MediaSize(L"ISOA4")), MediaSizeSchema::ISOA4, kA4);
}

TEST_P(MediaSizeDataTicketTest, ACustomSizeWithoutASizeFails) {
    for (const wchar_t* option : {L"CustomMediaSize", L"PSCustomMediaSize"}) {
        EXPECT_EQ(
            "base/xps/printschema/mediasizedata.cpp(LINE) : "
            "Unexpected print ticket format. informations lack.\n",
            tests::Thrown<std::runtime_error>([&] { ReadFrom(MediaSize(option)); }));
    }
}

TEST_P(MediaSizeDataTicketTest, ASizeIsTakenAsItIsReadAndTheOptionStays) {
    ExpectState(ReadFrom(MediaSize(L"CustomMediaSize", MediaDimensions{1, 2})), 0, {1, 2});
    ExpectState(ReadFrom(MediaSize(L"CustomMediaSize", kA4)), 0, kA4);
    ExpectState(ReadFrom(MediaSize(L"ISOA4", MediaDimensions{1, 2})), 9, {1, 2});
}

TEST_P(MediaSizeDataTicketTest, OneLengthAloneIsNoSize) {
    const std::wstring height = Length(L"MediaSizeHeight", 5);
    const std::wstring width = Length(L"MediaSizeWidth", 5);
    for (const std::wstring& length : {height, width}) {
        ExpectState(ReadFrom(L"<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:ISOA4\">" +
                             length + L"</psf:Option></psf:Feature>"),
                    MediaSizeSchema::ISOA4, kA4);
    }
}

TEST_P(MediaSizeDataTicketTest, ALengthThatIsNoIntegerIsNoLength) {
    for (const wchar_t* text : {L"12.5", L"", L"abc", L"2147483648", L"0x10"}) {
        const std::wstring body =
            L"<psf:Feature name=\"psk:PageMediaSize\"><psf:Option name=\"psk:ISOA4\">" +
            Length(L"MediaSizeHeight", 5) + L"<psf:ScoredProperty name=\"psk:MediaSizeWidth\">" +
            Value(L"integer", text) + L"</psf:ScoredProperty></psf:Option></psf:Feature>";
        ExpectState(ReadFrom(body), MediaSizeSchema::ISOA4, kA4);
    }
}

TEST_P(MediaSizeDataTicketTest, ALengthMayBeAParameter) {
    const std::wstring body = L"<psf:ParameterInit name=\"psk:PageMediaSizeMediaSizeWidth\">" +
                              Value(L"integer", L"111") +
                              L"</psf:ParameterInit><psf:Feature name=\"psk:PageMediaSize\"><psf:Option "
                              L"name=\"psk:CustomMediaSize\">"
                              L"<psf:ScoredProperty name=\"psk:MediaSizeWidth\"><psf:ParameterRef "
                              L"name=\"psk:PageMediaSizeMediaSizeWidth\"/></psf:ScoredProperty>" +
                              Length(L"MediaSizeHeight", 222) + L"</psf:Option></psf:Feature>";
    ExpectState(ReadFrom(body), MediaSizeSchema::CustomMediaSize, {111, 222});
}

TEST_P(MediaSizeDataTicketTest, TheSizeOfAnotherFeatureIsNotReadForThisOne) {
    const std::wstring other = L"<psf:Feature name=\"psk:JobOther\"><psf:Option name=\"psk:X\">" +
                               Length(L"MediaSizeHeight", 5) + Length(L"MediaSizeWidth", 6) +
                               L"</psf:Option></psf:Feature>";
    ExpectState(ReadFrom(other + MediaSize(L"ISOA4")), MediaSizeSchema::ISOA4, kA4);
    ExpectState(ReadFrom(other + MediaSize(L"CustomMediaSize", MediaDimensions{7, 8})), 0, {7, 8});
}

TEST_P(MediaSizeDataTicketTest, ATicketWithoutTheFeatureOrWithAnUnknownOptionChangesNothing) {
    ExpectState(ReadFrom(L""), 12, {148000, 210000});
    ExpectState(ReadFrom(MediaSize(L"NoSuchSize", MediaDimensions{1, 2})), 12, {148000, 210000});
}

TEST_P(MediaSizeDataTicketTest, IsWrittenWithTheHeightBeforeTheWidth) {
    EXPECT_EQ(Ticket(MediaSize(L"ISOA4", kA4)), Written(MediaSizeData(), L""));
}

TEST_P(MediaSizeDataTicketTest, IsWrittenInThePlaceOfAnEarlierOneBehindEverythingElse) {
    EXPECT_EQ(Ticket(L"<psf:Feature name=\"psk:A\"/>" + MediaSize(L"ISOA4", kA4)),
              Written(MediaSizeData(),
                      MediaSize(L"ISOA5", MediaDimensions{1, 2}) + L"<psf:Feature name=\"psk:A\"/>"));
}

TEST_P(MediaSizeDataTicketTest, AStandardOptionOfAnotherSizeCannotBeWritten) {
    MediaSizeData data;
    data.SetSize(kNothing);
    const Dom ticket = LoadDomFromString(Ticket(L""));
    EXPECT_EQ("base/xps/printschema/mediasizedata.cpp(LINE) : unexpected paper size was specified.\n",
              tests::Thrown<std::runtime_error>([&] { data.Write(ticket.Get()); }));
}

TEST_P(MediaSizeDataTicketTest, AStandardOptionWithAnotherWidthOrHeightCannotBeWritten) {
    for (const MediaDimensions& size :
         {MediaDimensions{kA4.width, kA4.height + 1}, MediaDimensions{kA4.width, 0},
          MediaDimensions{kA4.width - 1, kA4.height}, kA4Rotated}) {
        const MediaSizeData data = ReadFrom(MediaSize(L"ISOA4", size));
        ExpectState(data, MediaSizeSchema::ISOA4, size);
        EXPECT_THROW(Written(data, L""), std::runtime_error) << size.width << " " << size.height;
    }
    EXPECT_EQ(Ticket(MediaSize(L"ISOA4", kA4)), Written(ReadFrom(MediaSize(L"ISOA4", kA4)), L""));
}

TEST_P(MediaSizeDataTicketTest, EveryOptionReadsBackAsItWasWrittenAtEveryScope) {
    for (const Scope scope : {Scope::Job, Scope::Document, Scope::Page}) {
        for (std::int32_t id = 0; id <= 171; ++id) {
            MediaSizeData data = WithOption(id);
            if (!MediaSizeTable::IsStandardSize(id)) data.SetSize({1000 + id, 2000 + id});
            const Dom ticket = LoadDomFromString(Ticket(L""));
            data.Write(ticket.Get(), scope);
            data.Write(ticket.Get(), scope);
            EXPECT_EQ(Ticket(MediaSize(data.GetOptionName().localName, data.GetSize())),
                      DomText(ticket.Get()));
            MediaSizeData readBack;
            EXPECT_TRUE(readBack.IsSpecified(ticket.Get()));
            readBack.Read(ticket.Get());
            ExpectState(readBack, data.OptionIdOrUnknown(), data.GetSize());
        }
    }
}

// Selection.

class MediaSizeSelectionTest : public tests::EachDomTest {
  protected:
    void Put(EPrintTicketScope scope, std::wstring_view option,
             const std::optional<MediaDimensions>& size = std::nullopt) {
        m_provider.tickets[scope] = LoadDomFromString(Ticket(MediaSize(option, size)));
    }
    MediaSizeOption Select(const MediaDimensions& minimum, const MediaDimensions& maximum, Scope start) {
        return MediaSizeData::SelectPrintableMediaSize(m_provider, {minimum, maximum}, start);
    }

    tests::StubTicketProvider m_provider;
};

TEST_P(MediaSizeSelectionTest, TheFirstTicketFromTheStartThatFitsIsTaken) {
    Put(kPTPageScope, L"ISOA5");
    Put(kPTDocumentScope, L"ISOA3");
    Put(kPTJobScope, L"ISOA6");
    const MediaDimensions most = {210000, 297000};
    EXPECT_EQ(L"ISOA5", Select({1, 1}, most, Scope::Page).keyword);
    EXPECT_EQ(L"ISOA6", Select({1, 1}, most, Scope::Document).keyword);
    EXPECT_THAT(m_provider.scopes, ElementsAre(kPTPageScope, kPTDocumentScope, kPTJobScope));
    m_provider.scopes.clear();
    EXPECT_EQ(L"ISOA6", Select({1, 1}, most, Scope::Job).keyword);
    EXPECT_THAT(m_provider.scopes, ElementsAre(kPTJobScope));
}

TEST_P(MediaSizeSelectionTest, TheLimitsAreInTheRange) {
    Put(kPTJobScope, L"CustomMediaSize", MediaDimensions{100, 200});
    const MediaSizeOption custom = {L"CustomMediaSize", 0, {100, 200}};
    EXPECT_EQ(custom, Select({100, 200}, {100, 200}, Scope::Job));
    EXPECT_NE(custom, Select({101, 200}, {101, 200}, Scope::Job));
    EXPECT_NE(custom, Select({100, 201}, {100, 201}, Scope::Job));
    EXPECT_NE(custom, Select({99, 200}, {99, 200}, Scope::Job));
    EXPECT_NE(custom, Select({100, 199}, {100, 199}, Scope::Job));
}

TEST_P(MediaSizeSelectionTest, WithoutATicketThatFitsTheLocalesSheetIsTaken) {
    Put(kPTJobScope, L"ISOA3");
    const MediaDimensions most = {215900, 297000};
    for (const wchar_t* setting : {L"0", L"2", L""}) {
        const MeasurementSetting metric(setting);
        EXPECT_EQ((MediaSizeOption{L"ISOA4", 9, kA4}), Select({1, 1}, most, Scope::Job)) << setting;
    }
    {
        const MeasurementSetting us(L"1");
        EXPECT_EQ((MediaSizeOption{L"NorthAmericaLetter", 94, kLetter}), Select({1, 1}, most, Scope::Job));
    }
    for (const auto& setting :
         {std::optional<std::wstring_view>(), std::optional<std::wstring_view>(L"11")}) {
        const MeasurementSetting unreadable(setting);
        EXPECT_EQ((MediaSizeOption{L"ISOA4", 9, kA4}), Select({1, 1}, most, Scope::Job));
    }
}

TEST_P(MediaSizeSelectionTest, WithoutAReplacementTheSystemsOwnLocaleDecides) {
    Put(kPTJobScope, L"ISOA3");
    wchar_t setting[2] = {};
    ASSERT_NE(0, GetLocaleInfoW(LOCALE_USER_DEFAULT, LOCALE_IMEASURE, setting, 2));
    EXPECT_EQ(setting[0] == L'1' ? L"NorthAmericaLetter" : L"ISOA4",
              Select({1, 1}, {215900, 297000}, Scope::Job).keyword);
}

TEST_P(MediaSizeSelectionTest, ARangeThatNothingFitsGivesItsSmallestSheet) {
    Put(kPTJobScope, L"ISOA4");
    EXPECT_EQ((MediaSizeOption{L"CustomMediaSize", 0, {500, 600}}),
              Select({500, 600}, {700, 800}, Scope::Job));
    EXPECT_EQ((MediaSizeOption{L"ISOA5", 12, {148000, 210000}}),
              Select({148000, 210000}, {150000, 220000}, Scope::Job));
    EXPECT_EQ((MediaSizeOption{L"CustomMediaSize", 0, {0, 0}}), Select({0, 0}, {10, 10}, Scope::Job));
}

TEST_P(MediaSizeSelectionTest, ATicketWithoutAMediaSizeCountsAsA4) {
    m_provider.tickets[kPTJobScope] = LoadDomFromString(Ticket(L""));
    const MeasurementSetting us(L"1");
    EXPECT_EQ(L"ISOA4", Select({1, 1}, {220000, 297000}, Scope::Job).keyword);
}

TEST_P(MediaSizeSelectionTest, ATicketThatCannotBeHadOrReadThrows) {
    EXPECT_EQ(E_PENDING, tests::ThrownCode([&] { Select({1, 1}, {1, 1}, Scope::Job); }));
    Put(kPTJobScope, L"CustomMediaSize");
    EXPECT_THROW(Select({1, 1}, {1, 1}, Scope::Job), std::runtime_error);
}

TEST_P(MediaSizeSelectionTest, NoScopeAtAllVisitsNone) {
    const MeasurementSetting metric(L"0");
    EXPECT_EQ(L"ISOA4", Select({1, 1}, kA4, Scope::None).keyword);
    EXPECT_THAT(m_provider.scopes, IsEmpty());
}

// A ticket whose feature holds two options of different sizes.
std::wstring TwoSizes(std::wstring_view first, std::wstring_view second) {
    std::wstring text = L"<psf:Feature name=\"psk:PageMediaSize\">";
    return Ticket(text.append(first).append(second).append(L"</psf:Feature>"));
}

std::wstring OptionOfSize(std::wstring_view option, const std::optional<MediaDimensions>& size) {
    constexpr std::wstring_view kHead = L"<psf:Feature name=\"psk:PageMediaSize\">";
    const std::wstring feature = MediaSize(option, size);
    return feature.substr(kHead.size(),
                          feature.size() - kHead.size() - std::wstring_view(L"</psf:Feature>").size());
}

TEST_P(MediaSizeDataTicketTest, TheSizeOfAnOptionThatIsNotSelectedIsNotRead) {
    MediaSizeData data;
    data.Read(LoadDomFromString(TwoSizes(OptionOfSize(L"NorthAmericaLetter", std::nullopt),
                                         OptionOfSize(L"ISOA4", MediaDimensions{210000, 297000})))
                  .Get());
    ExpectState(data, 94, kLetter);
    // And so it can be written.
    const Dom ticket = LoadDomFromString(Ticket(L""));
    data.Write(ticket.Get());
    EXPECT_EQ(Ticket(MediaSize(L"NorthAmericaLetter", kLetter)), DomText(ticket.Get()));
}

TEST_P(MediaSizeDataTicketTest, OneLengthOfEachOfTwoOptionsIsNoSize) {
    const std::wstring height = OptionOfSize(L"CustomMediaSize", std::nullopt);
    const std::wstring first =
        height.substr(0, height.size() - 2) + L">" + Length(L"MediaSizeHeight", 1) + L"</psf:Option>";
    const Dom ticket =
        LoadDomFromString(TwoSizes(first, OptionOfSize(L"CustomMediaSize", MediaDimensions{2, 3})));
    EXPECT_THROW(MediaSizeData().Read(ticket.Get()), std::runtime_error);
}

TEST_ON_EACH_DOM(MediaSizeDataTicketTest);
TEST_ON_EACH_DOM(MediaSizeSelectionTest);

}  // namespace
