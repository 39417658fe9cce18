// Pages and tickets that ask too much, each by its name. Every page here is turned, so that its markup is
// read and written; every ticket is merged, and its sheet is asked for.

#include "platform/windows.h"

#include <psapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "devkit/common/hresult.h"
#include "filtertest.h"
#include "importfaults.h"
#include "memoryjob.h"
#include "platform/utf.h"
#include "ticketmarkup.h"

namespace systemtest {
namespace {

using devkit::common::HexOf;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;
using tests::ImportFaults;

bool IsLong() { return std::getenv("PAGEVALIDATE_LONG") != nullptr; }

std::string Times(std::string_view text, std::size_t count) {
    std::string all;
    all.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) all += text;
    return all;
}

// With which a page or a ticket may be refused, whatever it is.
bool IsDocumented(HRESULT code) {
    constexpr HRESULT kCodes[] = {E_FAIL,
                                  E_UNEXPECTED,
                                  static_cast<HRESULT>(0x80040003),
                                  static_cast<HRESULT>(0x80040005),
                                  static_cast<HRESULT>(0x8007000D),
                                  static_cast<HRESULT>(0xC00CE56E)};
    return std::ranges::find(kCodes, code) != std::end(kCodes);
}

std::size_t PeakBytes() {
    PROCESS_MEMORY_COUNTERS counters = {};
    EXPECT_TRUE(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)));
    return counters.PeakWorkingSetSize;
}

// What became of the job.
struct Fate {
    HRESULT result = E_PENDING;
    std::string markup;  // of the page that was sent; empty when none was

    [[nodiscard]] bool IsWhole() const { return result == S_OK; }
};

class HostileTest : public FilterTest {
  protected:
    // The filter ends in a documented way, in three minutes, with forty times the memory that the input takes
    // at most, and leaves nothing.
    static Fate Run(const std::string& name, std::string markup, const std::string& device,
                    std::string ticket = {}) {
        SCOPED_TRACE(name);
        const std::size_t size = markup.size() + ticket.size();
        std::optional<devkit::pipeline::InputPart> ticketPart;
        if (!ticket.empty()) ticketPart = TicketInMemory("/page_PT.xml", std::move(ticket));
        const auto input = JobInMemory({PageInMemory("/1.fpage", std::move(markup), std::move(ticketPart))});
        Configure({}, device);
        RunOptions options = Options();

        UnloadFilter();
        LoadFilter();
        Fate fate;
        {
            ImportFaults account(FilterHandle());
            const std::size_t before = PeakBytes();
            const auto start = std::chrono::steady_clock::now();
            const RunOutcome outcome = FilterTest::Run(std::move(options), input);
            const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
            fate = FateOf(outcome);
            std::printf("hostile: %s: %zu bytes, %.2f s, %zu MB more: %s\n", name.c_str(), size, time.count(),
                        (PeakBytes() - before) >> 20, fate.IsWhole() ? "whole" : HexOf(fate.result).c_str());
            EXPECT_GT(180.0, time.count());
            EXPECT_GE(before + 40 * size + (std::size_t{256} << 20), PeakBytes());
            ExpectDecent(outcome);
            UnloadFilter();
            EXPECT_EQ(std::vector<std::string>{}, account.LeftOver());
        }
        LoadFilter();
        return fate;
    }

    // A page with the content, turned.
    static Fate RunPage(const std::string& name, std::string_view content) {
        return Run(name, PageWith(content), "longedge");
    }
    static std::string PageWith(std::string_view content, std::string_view size = kSize) {
        std::string page = "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" xml:lang=\"en\" ";
        return page.append(size).append(">").append(content).append("</FixedPage>");
    }
    // The page was turned with all its content, or refused.
    static void ExpectWholeOrRefused(const std::string& name, std::string_view content,
                                     std::string_view rewritten) {
        const Fate fate = RunPage(name, content);
        if (fate.IsWhole()) ExpectContent(name, fate, rewritten);
    }
    static void ExpectWhole(const std::string& name, std::string_view content, std::string_view rewritten) {
        const Fate fate = RunPage(name, content);
        EXPECT_EQ(S_OK, fate.result) << name << ": " << HexOf(fate.result);
        ExpectContent(name, fate, rewritten);
    }
    static void ExpectRefused(const std::string& name, std::string_view content) {
        EXPECT_FALSE(RunPage(name, content).IsWhole()) << name;
    }

    static constexpr std::string_view kSize = "Width=\"793.76\" Height=\"1122.56\"";

  private:
    static Fate FateOf(const RunOutcome& outcome) {
        Fate fate{outcome.result, {}};
        for (const auto& sent : outcome.parts) {
            if (sent.part != nullptr && sent.part->Name() == "/1.fpage") fate.markup = *sent.part->Read();
        }
        return fate;
    }

    static void ExpectDecent(const RunOutcome& outcome) {
        ExpectNothingLeft(outcome);
        if (outcome.result == S_OK) {
            EXPECT_EQ(std::vector<HRESULT>{}, outcome.shutdownCodes);
            return;
        }
        EXPECT_TRUE(IsDocumented(outcome.result)) << HexOf(outcome.result);
        EXPECT_EQ(std::vector<HRESULT>{outcome.result}, outcome.shutdownCodes);
        // The sequence and the document came before the page.
        EXPECT_EQ(3u, outcome.parts.size());
    }

    // Messages without a million characters.
    static void ExpectContent(const std::string& name, const Fate& fate, std::string_view rewritten) {
        const std::string end = std::string(rewritten) + "</Canvas></FixedPage>";
        const std::size_t canvas = fate.markup.find("><Canvas RenderTransform=\"");
        ASSERT_NE(std::string::npos, canvas) << name;
        const std::size_t start = fate.markup.find('>', canvas + 1) + 1;
        EXPECT_TRUE(fate.markup.substr(start) == end)
            << name << ": " << fate.markup.substr(start, 200) << " and not " << end.substr(0, 200);
    }
};

TEST_F(HostileTest, PagesThatAskTooMuch) {
    constexpr std::size_t kHundredThousand = 100000;
    // The reader of Wine walks all elements that are open at each element.
    const std::size_t depth = IsLong() ? kHundredThousand : 20000;
    const std::string nested = Times("<Canvas>", depth) + Times("</Canvas>", depth);
    ExpectWholeOrRefused("nesting of " + std::to_string(depth), nested, nested);

    std::string attributes = "<Path";
    // The reader of Wine compares each attribute with each before it.
    const std::size_t attributeCount = IsLong() ? 200000 : 5000;
    for (std::size_t i = 0; i < attributeCount; ++i) attributes += " a" + std::to_string(i) + "=\"\"";
    attributes += "></Path>";
    ExpectWholeOrRefused(std::to_string(attributeCount) + " attributes", attributes, attributes);
    std::string hundred;
    for (std::size_t i = 0; i < 100; ++i) hundred += " a" + std::to_string(i) + "=\"\"";
    const std::string million = Times("<Path" + hundred + "></Path>", 10000);
    ExpectWhole("a million attributes, a hundred of each element", million, million);

    const std::string data =
        "<Path Data=\"" + Times("L 1,1 22", (IsLong() ? 64u << 20 : 4u << 20) / 8) + "\"></Path>";
    ExpectWholeOrRefused("an attribute of " + std::to_string(data.size() >> 20) + " MB", data, data);

    const std::string longName(kHundredThousand, 'A');
    const std::string element = "<" + longName + "></" + longName + ">";
    ExpectWholeOrRefused("an element's name of 100,000 characters", element, element);
    const std::string attribute = "<Path " + longName + "=\"\"></Path>";
    ExpectWholeOrRefused("an attribute's name of 100,000 characters", attribute, attribute);

    const std::string itself = "<Path Fill=\"{StaticResource a}\" FixedPage.NavigateUri=\"/1.fpage\"></Path>";
    ExpectWhole("a page that names itself", itself, itself);
}

TEST_F(HostileTest, EachControlCharacterIsRefusedOrWhiteSpace) {
    for (int character = 0; character < 32; ++character) {
        const bool isSpace = character == '\t' || character == '\n' || character == '\r';
        const std::string name = "the control character " + std::to_string(character);
        const std::string raw(1, static_cast<char>(character));
        const std::string content = "<Glyphs UnicodeString=\"a" + raw + "b\"></Glyphs>";
        if (isSpace) {
            ExpectWhole(name, content, "<Glyphs UnicodeString=\"a b\"></Glyphs>");
        } else {
            ExpectRefused(name, content);
            ExpectRefused(name + " by its number",
                          "<Glyphs UnicodeString=\"a&#" + std::to_string(character) + ";b\"></Glyphs>");
        }
    }
}

TEST_F(HostileTest, SurrogatesWithoutTheirPartnersAreRefused) {
    const std::pair<const char*, const char*> texts[] = {
        {"a high surrogate in UTF-8", "\xED\xA0\x80"},
        {"a low surrogate in UTF-8", "\xED\xB0\x80"},
        {"a pair of surrogates in UTF-8", "\xED\xA0\x80\xED\xB0\x80"},
        {"a high surrogate by its number", "&#xD800;"},
        {"a low surrogate by its number", "&#xDC00;"},
        {"a pair of surrogates by their numbers", "&#xD83D;&#xDE00;"},
        {"a character behind the last", "&#x110000;"},
    };
    for (const auto& [name, text] : texts) {
        ExpectRefused(name, "<Glyphs UnicodeString=\"" + std::string(text) + "\"></Glyphs>");
    }
    const std::string last = "<Glyphs UnicodeString=\"\xF4\x8F\xBF\xBD\"></Glyphs>";
    ExpectWhole("the last character", last, last);
}

// In UTF-16 what has no partner may count as the character that stands for what is none.
TEST_F(HostileTest, SurrogatesWithoutTheirPartnersInUtf16) {
    for (const std::wstring_view text : {L"\xD800", L"\xDC00", L"\xDC00\xD800", L"\xD800\xD800\xDC00"}) {
        const std::wstring wide =
            L"<?xml version=\"1.0\" encoding=\"UTF-16\"?><FixedPage "
            L"xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"9\" "
            L"Height=\"8\"><Glyphs UnicodeString=\"" +
            std::wstring(text) + L"\"/></FixedPage>";
        std::string bytes = "\xFF\xFE";
        bytes.append(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t));
        const Fate fate = Run("surrogates without partners in UTF-16", std::move(bytes), "longedge");
        if (fate.IsWhole()) {
            EXPECT_NE(std::string::npos, fate.markup.find("\xEF\xBF\xBD")) << fate.markup;
        }
    }
}

TEST_F(HostileTest, EntitiesAndDocumentTypes) {
    ExpectWhole("the five entities of XML",
                "<Glyphs UnicodeString=\"&amp;&lt;&gt;&quot;&apos;&#65;&#x42;\"></Glyphs>",
                "<Glyphs UnicodeString=\"&amp;&lt;&gt;&quot;&apos;AB\"></Glyphs>");
    ExpectRefused("an entity that is not declared", "<Glyphs UnicodeString=\"&nothing;\"></Glyphs>");
    ExpectRefused("a document type inside", "<!DOCTYPE a><Path></Path>");
    std::string bomb = "<!DOCTYPE FixedPage [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 12; ++i) {
        const std::string before = "&a" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY a" + std::to_string(i) + " \"" + Times(before, 10) + "\">";
    }
    static_cast<void>(Run("a bomb of entities",
                          bomb + "]>" + PageWith("<Glyphs UnicodeString=\"&a11;\"></Glyphs>"), "longedge"));
    const Fate outside =
        Run("an entity outside",
            "<!DOCTYPE FixedPage [<!ENTITY a SYSTEM \"file:///c:/windows/win.ini\">]>" + PageWith("&a;"),
            "longedge");
    EXPECT_EQ(std::string::npos, outside.markup.find("[mail]"));
    static_cast<void>(
        Run("a document type without anything in it", "<!DOCTYPE FixedPage []>" + PageWith(""), "longedge"));
}

// The new Height of a page with that Width.
TEST_F(HostileTest, NumbersAtEveryLimit) {
    const std::string nines(400, '9');
    const std::string small = "0." + std::string(400, '0') + "1";
    const std::pair<std::string, const char*> numbers[] = {
        {"1e999", "0.00"},
        {"-1e999", "0.00"},
        {"1e-999", "0.00"},
        {"NaN", "0.00"},
        {"INF", "0.00"},
        {"-0", "0.00"},
        {"\xD9\xA1\xD9\xA2", "0.00"},
        {nines, "0.00"},
        {small, "0.00"},
        {"1." + nines, "2.00"},
        {"", "0.00"},
        {" 12 ", "12.00"},
        {"+12", "12.00"},
        {"1,5", "1.00"},
        {"0x10", "0.00"},
        {"-12", "12.00"},
        {"16777217", "16777216.00"},
    };
    for (const auto& [number, height] : numbers) {
        const Fate fate = Run("the number " + number.substr(0, 20),
                              PageWith("", "Height=\"100\" Width=\"" + number + "\""), "longedge");
        EXPECT_EQ(S_OK, fate.result) << number;
        // The Width is what a turn in single precision makes of 100.
        const std::string start = "<FixedPage Height=\"" + std::string(height) + "\" Width=\"";
        EXPECT_NE(std::string::npos, fate.markup.find(start)) << number << ": " << fate.markup.substr(0, 300);
    }
    for (const char* number : {"1e38", "3.5e38", "-3.4e38", "1e-45", "2147483648"}) {
        const Fate fate =
            Run(std::string("the number ") + number,
                PageWith("", "Height=\"1e38\" Width=\"" + std::string(number) + "\""), "longedge");
        EXPECT_EQ(S_OK, fate.result) << number;
        EXPECT_TRUE(fate.markup.ends_with("</Canvas></FixedPage>")) << number;
    }
}

std::string TicketWith(std::wstring_view body) { return platform::ToUtf8(tests::Ticket(body)); }

std::wstring SheetWith(std::wstring_view width) {
    const auto number = [](std::wstring_view text) { return tests::Value(L"integer", text); };
    return tests::Feature(L"psk:PageMediaSize", L"psk:CustomMediaSize",
                          tests::ScoredProperty(L"psk:MediaSizeWidth", number(width)) +
                              tests::ScoredProperty(L"psk:MediaSizeHeight", number(L"297000")));
}

TEST_F(HostileTest, TicketsThatAskTooMuch) {
    const std::string page = PageWith("");
    const auto run = [&](const std::string& name, std::string ticket) {
        const Fate fate = Run(name, page, "simprinter", std::move(ticket));
        if (fate.IsWhole()) {
            EXPECT_TRUE(page == fate.markup) << name;
        }
        return fate;
    };
    const std::string whole = TicketWith(tests::Feature(L"psk:PageOrientation", L"psk:Portrait"));
    const std::size_t root = whole.rfind("</");
    const auto with = [&](const std::string& body) { return std::string(whole).insert(root, body); };
    EXPECT_EQ(S_OK, run("a ticket", whole).result);

    std::string features;
    for (int i = 0; i < 10000; ++i) {
        features += "<psf:Feature name=\"psk:PageX" + std::to_string(i) +
                    "\"><psf:Option name=\"psk:A\"/></psf:Feature>";
    }
    EXPECT_EQ(S_OK, run("10,000 features", with(features)).result);

    const std::size_t megabytes = IsLong() ? 50 : 5;
    static_cast<void>(run("a ticket of " + std::to_string(megabytes) + " MB",
                          with("<!--" + std::string(megabytes << 20, 'x') + "-->")));
    static_cast<void>(run("a value of " + std::to_string(megabytes) + " MB",
                          with("<psf:Property name=\"psk:X\"><psf:Value xsi:type=\"xsd:string\">" +
                               std::string(megabytes << 20, 'x') + "</psf:Value></psf:Property>")));

    const std::size_t depth = 100000;
    static_cast<void>(run("a ticket nested 100,000 deep", with(Times("<psf:Feature name=\"psk:X\">", depth) +
                                                               Times("</psf:Feature>", depth))));
    // The kit and its XML library compare each attribute with each before it.
    const std::size_t count = IsLong() ? 50000 : 10000;
    std::string attributes = "<psf:Feature name=\"psk:PageX\"";
    for (std::size_t i = 0; i < count; ++i) attributes += " a" + std::to_string(i) + "=\"\"";
    static_cast<void>(run(std::to_string(count) + " attributes in a ticket", with(attributes + "/>")));
    static_cast<void>(run("a name of 100,000 characters in a ticket",
                          with("<psf:Feature name=\"psk:" + std::string(100000, 'A') + "\"/>")));
    static_cast<void>(
        run("an element of 100,000 characters in a ticket", with("<psf:" + std::string(100000, 'A') + "/>")));
    EXPECT_NE(S_OK, run("a document type in a ticket", "<!DOCTYPE a [<!ENTITY b \"c\">]>" + whole).result);
    EXPECT_NE(S_OK, run("an entity in a ticket", with("&nothing;")).result);
    for (int character = 0; character < 32; ++character) {
        const bool isSpace = character == '\t' || character == '\n' || character == '\r';
        const std::string name = "the control character " + std::to_string(character) + " in a ticket";
        const Fate fate = run(name, with("<!--" + std::string(1, static_cast<char>(character)) + "-->"));
        EXPECT_EQ(isSpace, fate.IsWhole()) << name;
    }
    for (const char* text : {"\xED\xA0\x80", "\xED\xB0\x80", "\xFF", "&#xD800;"}) {
        EXPECT_NE(S_OK, run("a surrogate in a ticket",
                            with("<psf:Property name=\"psk:" + std::string(text) + "\"/>"))
                            .result);
    }
}

TEST_F(HostileTest, NumbersAtEveryLimitInATicket) {
    const std::wstring nines(400, L'9');
    for (const std::wstring& number :
         {std::wstring(L"1e999"), std::wstring(L"NaN"), std::wstring(L"-0"), std::wstring(L"\x0661\x0662"),
          nines, std::wstring(L"2147483647"), std::wstring(L"2147483648"), std::wstring(L"-2147483648"),
          std::wstring(L"-2147483649"), std::wstring(L""), std::wstring(L" 210000 "), std::wstring(L"0x10"),
          std::wstring(L"210000.0"), std::wstring(L"+210000")}) {
        for (const char* device : {"simprinter", "longedge"}) {
            const std::string name =
                "the width " + std::string(number.begin(),
                                           number.begin() + std::min<std::ptrdiff_t>(20, std::ssize(number)));
            static_cast<void>(
                Run(name + " on " + device, PageWith(""), device, TicketWith(SheetWith(number))));
        }
    }
}

}  // namespace
}  // namespace systemtest
