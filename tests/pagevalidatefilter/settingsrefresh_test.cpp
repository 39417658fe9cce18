// Which settings a part's ticket brings up to date, and in which order. What the filter holds of a setting
// shows in what becomes of a page whose own ticket states all the others.

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include "pagevalidatefilter/filterjob.h"
#include "thrown.h"
#include "ticketmarkup.h"

namespace pagevalidatefilter {
namespace {

using tests::Feature;
using tests::MakeMock;

enum Setting : std::size_t { Scaling, FeedDirection, MediaSize, Orientation, PrintableSize, kSettings };

// A setting in a ticket: as it was, as it is now, and, for those that have such a state, so that reading it
// throws.
struct Texts {
    std::wstring before;
    std::wstring after;
    std::wstring broken;
};

const std::array<Texts, kSettings>& Settings() {
    static const std::array<Texts, kSettings> settings = {{
        {Feature(L"psk:PageScaling", L"psk:FitApplicationMediaSizeToPageMediaSize"),
         Feature(L"psk:PageScaling", L"psk:None"), Feature(L"psk:PageScaling", L"psk:Custom")},
        {BinText(L"LongEdgeFirst"), BinText(L"ShortEdgeFirst"), {}},
        {SheetText(L"psk:ISOA4", 210000, 297000), SheetText(L"psk:ISOA5", 148000, 210000),
         Feature(L"psk:PageMediaSize", L"psk:CustomMediaSize")},
        {Feature(L"psk:PageOrientation", L"psk:Portrait"),
         Feature(L"psk:PageOrientation", L"psk:ReversePortrait"),
         {}},
        {PrintableText(400000), PrintableText(250000), PrintableText(70000)},
    }};
    return settings;
}

// The ticket of what is chosen of each setting.
std::wstring TicketOf(const std::function<std::wstring(std::size_t)>& choose) {
    std::wstring features;
    for (std::size_t setting = 0; setting < kSettings; ++setting) features += choose(setting);
    return TicketWith(features);
}

std::wstring AllBefore() {
    return TicketOf([](std::size_t setting) { return Settings()[setting].before; });
}

std::wstring AllAfter() {
    return TicketOf([](std::size_t setting) { return Settings()[setting].after; });
}

class SettingsRefreshTest : public FilterJobTest {
  protected:
    // A filter that has its writer and holds every setting as it was.
    void Begin() {
        Prepare();
        ASSERT_EQ(S_OK, Run());
        m_tickets[kPTJobScope] = AllBefore();
        EnterSequence();
    }
    void EnterSequence() {
        m_pFilter->OnFixedDocumentSequence(
            MakeMock<tests::MockFixedDocumentSequence>(m_calls, L"/s.fdseq").Get());
    }
    void EnterDocument() {
        m_pFilter->OnFixedDocument(MakeMock<tests::MockFixedDocument>(m_calls, L"/d.fdoc").Get());
    }

    // What becomes of a page with this ticket. The wider tickets, in which the validator looks for a sheet to
    // fall back to, are always the same.
    std::string Page(std::wstring ticket) {
        m_tickets[kPTPageScope] = std::move(ticket);
        m_tickets[kPTDocumentScope] = m_tickets[kPTJobScope] = AllBefore();
        m_pWriter->Clear();
        m_pages.clear();
        AddDocument(1);
        m_pFilter->OnFixedPage(m_pages[0].Get());
        std::string outcome;
        if (const tests::MockWriteStream* pMarkup = m_pages[0]->Written()) outcome += pMarkup->Bytes();
        for (const auto& pTicket : m_pWriter->NewParts()) outcome += pTicket->Bytes();
        return outcome;
    }
    std::string PageWithout(std::size_t unstated) {
        return Page(TicketOf([&](std::size_t setting) {
            return setting == unstated ? std::wstring() : Settings()[setting].before;
        }));
    }
    std::string PageWith(std::size_t changed) {
        return Page(TicketOf([&](std::size_t setting) {
            return setting == changed ? Settings()[setting].after : Settings()[setting].before;
        }));
    }
};

TEST_F(SettingsRefreshTest, EachOfTheFiveIsReadFromTheTicketOfEachScope) {
    const std::map<EPrintTicketScope, std::function<void()>> entries = {
        {kPTJobScope, [this] { EnterSequence(); }}, {kPTDocumentScope, [this] { EnterDocument(); }}};
    for (std::size_t setting = 0; setting < kSettings; ++setting) {
        SCOPED_TRACE(setting);
        Begin();
        const std::string before = PageWithout(setting);
        const std::string after = PageWith(setting);
        EXPECT_NE(before, after);
        for (const auto& [scope, enter] : entries) {
            Begin();
            m_tickets[scope] = AllAfter();
            enter();
            EXPECT_EQ(after, PageWithout(setting)) << scope;
        }
    }
}

TEST_F(SettingsRefreshTest, ASettingThatTheTicketLacksStaysAsItWas) {
    for (std::size_t setting = 0; setting < kSettings; ++setting) {
        SCOPED_TRACE(setting);
        Begin();
        const std::string before = PageWithout(setting);
        Begin();
        m_tickets[kPTDocumentScope] = TicketOf(
            [&](std::size_t other) { return other == setting ? std::wstring() : Settings()[other].after; });
        EnterDocument();
        EXPECT_EQ(before, PageWithout(setting));
    }
}

// Scaling, feed direction, media size, orientation, printable size: where reading one throws, those before it
// are new and those behind it are old.
TEST_F(SettingsRefreshTest, TheOrderShowsWhenReadingOneOfThemThrows) {
    for (const std::size_t broken : {Scaling, MediaSize, PrintableSize}) {
        for (std::size_t setting = 0; setting < kSettings; ++setting) {
            if (setting == broken) continue;
            SCOPED_TRACE(std::to_string(setting) + " when " + std::to_string(broken) + " throws");
            Begin();
            const std::string expected = setting < broken ? PageWith(setting) : PageWithout(setting);
            Begin();
            m_tickets[kPTDocumentScope] = TicketOf([&](std::size_t other) {
                return other == broken ? Settings()[other].broken : Settings()[other].after;
            });
            EXPECT_NE(nullptr, tests::Catch([&] { EnterDocument(); }).pType);
            EXPECT_EQ(expected, PageWithout(setting));
        }
    }
}

}  // namespace
}  // namespace pagevalidatefilter
