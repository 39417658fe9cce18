// What is written into a ticket is what is read back from it, for every option of every feature at every
// scope.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "answers.h"
#include "base/logging/exceptions.h"
#include "base/xps/printschema/inputbindata.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/mediasizetable.h"
#include "base/xps/printschema/pageorientationdata.h"
#include "base/xps/printschema/printablemediasizedata.h"
#include "base/xps/printschema/scalingdata.h"
#include "domtext.h"
#include "handlertest.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace {

using namespace base::xps::printschema;
using base::xml::LoadDomFromString;
using tests::Dom;
using tests::DomText;
using tests::Feature;
using tests::HandlerTest;
using tests::kNotFound;
using tests::ThrownCode;
using tests::Ticket;

constexpr Scope kScopes[] = {Scope::Job, Scope::Document, Scope::Page};
constexpr std::int32_t kPrivateScaling = 7;

class RoundTripTest : public HandlerTest {
  protected:
    // The object that a ticket reads as into which this one was written at the scope.
    template <typename Data>
    Data ReadBack(const Data& written, Scope scope) {
        m_pTicket = LoadDomFromString(Ticket(L""));
        written.Write(m_pTicket.Get(), scope);
        return Reread<Data>();
    }

    template <typename Data>
    Data Reread() {
        Data read;
        read.SetFeatureId(-1);
        read.SetOptionId(-1);
        read.Read(m_pTicket.Get());
        return read;
    }

    // Writing once more changes nothing but the place of the feature.
    template <typename Data>
    void ExpectOneFeatureAfterWritingTwice(const Data& written, Scope scope) {
        const std::wstring once = DomText(m_pTicket.Get());
        written.Write(m_pTicket.Get(), scope);
        EXPECT_EQ(once, DomText(m_pTicket.Get()));
    }

    // The ids that a ticket reads as in which an option is selected without values.
    template <typename Data>
    Data WithoutValues(const Data& selected, Scope scope) {
        const Qname feature = selected.GetFeatureName(scope);
        const Qname option = selected.GetOptionName();
        const auto qualified = [](const Qname& name) {
            return (name.space == SchemaNamespace::Private ? L"krk:" : L"psk:") + name.localName;
        };
        m_pTicket = LoadDomFromString(Ticket(Feature(qualified(feature), qualified(option))));
        return Reread<Data>();
    }

    Dom m_pTicket;
};

std::int32_t OptionCount(const PrintTicketFunctionOption& data) {
    return static_cast<std::int32_t>(data.GetOptionNames().GetQnames().size());
}

TEST_P(RoundTripTest, EveryBinWithEveryFeedDirectionAtEveryScope) {
    for (const Scope scope : kScopes) {
        for (std::int32_t option = 0; option < OptionCount(InputBinData()); ++option) {
            for (const std::int32_t direction : {InputBinData::FeedDirectionUnknown,
                                                 InputBinData::LongEdgeFirst, InputBinData::ShortEdgeFirst}) {
                InputBinData written;
                written.SetOptionId(option);
                written.SetFeedDirection(direction);
                const InputBinData read = ReadBack(written, scope);
                EXPECT_EQ(scope, read.GetScope());
                EXPECT_EQ(option, read.GetOptionId());
                const bool isKnown = direction != InputBinData::FeedDirectionUnknown;
                EXPECT_EQ(isKnown ? direction : InputBinData::ShortEdgeFirst, read.GetFeedDirection());
                ExpectOneFeatureAfterWritingTwice(written, scope);
            }
        }
    }
}

TEST_P(RoundTripTest, EveryBinWithoutAFeedDirection) {
    for (const Scope scope : kScopes) {
        for (std::int32_t option = 0; option < OptionCount(InputBinData()); ++option) {
            InputBinData selected;
            selected.SetOptionId(option);
            const InputBinData read = WithoutValues(selected, scope);
            EXPECT_EQ(scope, read.GetScope());
            EXPECT_EQ(option, read.GetOptionId());
            EXPECT_EQ(InputBinData::ShortEdgeFirst, read.GetFeedDirection());
        }
    }
}

TEST_P(RoundTripTest, EveryOrientationAtEveryScope) {
    for (const Scope scope : kScopes) {
        for (std::int32_t option = 0; option < OptionCount(PageOrientationData()); ++option) {
            PageOrientationData written;
            written.SetOptionId(option);
            const PageOrientationData read = ReadBack(written, scope);
            EXPECT_EQ(0, read.GetFeatureId());
            EXPECT_EQ(option, read.GetOptionId());
            ExpectOneFeatureAfterWritingTwice(written, scope);
            EXPECT_EQ(option, WithoutValues(written, scope).GetOptionId());
        }
    }
}

TEST_P(RoundTripTest, EveryKeywordScalingWithItsValuesAtEveryScope) {
    for (const Scope scope : kScopes) {
        for (std::int32_t option = 0; option < kPrivateScaling; ++option) {
            ScalingData written;
            written.SetOptionId(option);
            written.SetOffset({-100, 200});
            written.SetScale({50, option == ScalingData::CustomSquare ? 50 : 60});
            const ScalingData read = ReadBack(written, scope);
            EXPECT_EQ(0, read.GetFeatureId());
            EXPECT_EQ(option, read.GetOptionId());
            const bool isCustom = option == ScalingData::Custom || option == ScalingData::CustomSquare;
            EXPECT_EQ(isCustom ? written.GetOffset() : ScalingData::Pair(), read.GetOffset());
            EXPECT_EQ(isCustom ? written.GetScale() : ScalingData::Pair(), read.GetScale());
            ExpectOneFeatureAfterWritingTwice(written, scope);
        }
    }
}

TEST_P(RoundTripTest, EveryKeywordScalingWithoutValues) {
    for (const Scope scope : kScopes) {
        for (std::int32_t option = 0; option < kPrivateScaling; ++option) {
            ScalingData selected;
            selected.SetOptionId(option);
            if (option == ScalingData::Custom || option == ScalingData::CustomSquare) {
                EXPECT_EQ(kNotFound, ThrownCode([&] { static_cast<void>(WithoutValues(selected, scope)); }));
            } else {
                EXPECT_EQ(option, WithoutValues(selected, scope).GetOptionId());
            }
        }
    }
}

TEST_P(RoundTripTest, ThePrivateScalingIsWrittenOnceAndReadAsNoKeyword) {
    for (const Scope scope : kScopes) {
        ScalingData written;
        written.SetOptionId(kPrivateScaling);
        EXPECT_FALSE(ReadBack(written, scope).IsSet());
        EXPECT_TRUE(written.IsSpecified(m_pTicket.Get()));
        ExpectOneFeatureAfterWritingTwice(written, scope);
    }
}

TEST_P(RoundTripTest, EveryMediaSizeWithItsSizeAtEveryScope) {
    for (const Scope scope : kScopes) {
        for (std::int32_t option = 0; option < OptionCount(MediaSizeData()); ++option) {
            MediaSizeData written;
            written.SetOptionId(option);
            if (!MediaSizeTable::IsStandardSize(option)) written.SetSize({123456, 234567});
            const MediaSizeData read = ReadBack(written, scope);
            EXPECT_EQ(0, read.GetFeatureId());
            EXPECT_EQ(written.GetOptionId(), read.GetOptionId());
            EXPECT_EQ(written.GetSize(), read.GetSize());
            ExpectOneFeatureAfterWritingTwice(written, scope);
        }
    }
}

TEST_P(RoundTripTest, EveryMediaSizeWithoutItsSizeIsItsNominalOne) {
    for (const auto& [id, record] : MediaSizeTable::Instance().Records()) {
        if (!MediaSizeTable::IsStandardSize(id)) continue;
        m_pTicket = LoadDomFromString(Ticket(Feature(L"psk:PageMediaSize", L"psk:" + record->keyword)));
        const MediaSizeData read = Reread<MediaSizeData>();
        EXPECT_EQ(record->size, read.GetSize()) << id;
        EXPECT_EQ(MediaSizeTable::Instance().BySize(record->size)->id, read.GetOptionId()) << id;
    }
}

TEST_P(RoundTripTest, ThePrintableMediaSizeAtEveryScope) {
    const PrintableMediaRange range = {{76200, 127000}, {215900, 355600}};
    for (const Scope scope : kScopes) {
        PrintableMediaSizeData written;
        written.SetRange(range);
        const PrintableMediaSizeData read = ReadBack(written, scope);
        EXPECT_EQ(scope, read.GetScope());
        EXPECT_EQ(0, read.GetOptionId());
        EXPECT_EQ(range.minimum, read.GetRange().minimum);
        EXPECT_EQ(range.maximum, read.GetRange().maximum);
        EXPECT_EQ(MediaDimensions(), WithoutValues(written, scope).GetRange().maximum);
    }
}

TEST_P(RoundTripTest, AnEarlierPrintableMediaSizeStaysWhenItIsWrittenAgain) {
    PrintableMediaSizeData written;
    written.SetRange({{1, 2}, {3, 4}});
    static_cast<void>(ReadBack(written, Scope::Page));
    written.SetRange({{5, 6}, {7, 8}});
    written.Write(m_pTicket.Get(), Scope::Page);
    const auto feature = [](int first) {
        std::wstring content;
        for (const wchar_t* name : {L"krk:MinWidth", L"krk:MinHeight", L"krk:MaxWidth", L"krk:MaxHeight"})
            content += tests::Named(L"Property", name, tests::Integer(first++));
        return Feature(L"krk:PagePrintableMediaSize", L"krk:PrintableMediaSize", content);
    };
    EXPECT_EQ(Ticket(feature(1) + feature(5)), DomText(m_pTicket.Get()));
    EXPECT_EQ((MediaDimensions{1, 2}), Reread<PrintableMediaSizeData>().GetRange().minimum);
}

TEST_ON_EACH_DOM(RoundTripTest);

}  // namespace
