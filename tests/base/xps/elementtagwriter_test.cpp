#include "base/xps/elementtagwriter.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace base::xps {
namespace {

std::string Element(std::wstring_view text, std::span<const TagAttribute> attributes = {}) {
    std::ostringstream sink;
    { ElementTagWriter(sink).WriteStartTag(text, attributes); }
    return sink.str();
}

TEST(ElementTagWriterTest, WritesTheEndTagWhenItIsDestroyed) {
    std::ostringstream sink;
    std::optional<ElementTagWriter> writer(sink);
    writer->WriteStartTag(L"Path");
    EXPECT_EQ("<Path>", sink.str());
    writer.reset();
    EXPECT_EQ("<Path></Path>", sink.str());
}

TEST(ElementTagWriterTest, WritesNothingWhenItWroteNoStartTag) {
    std::ostringstream sink;
    { const ElementTagWriter writer(sink); }
    EXPECT_EQ("", sink.str());
}

TEST(ElementTagWriterTest, WritesTheLastEndTagFirst) {
    std::ostringstream sink;
    {
        ElementTagWriter writer(sink);
        writer.WriteStartTag(L"FixedPage Width=\"1\"");
        writer.WriteStartTag(L"Canvas a=\"b\"");
        writer.WriteStartTag(L"c");
    }
    EXPECT_EQ("<FixedPage Width=\"1\"><Canvas a=\"b\"><c></c></Canvas></FixedPage>", sink.str());
}

TEST(ElementTagWriterTest, TheEndTagsNameIsTheTextUpToItsFirstBlank) {
    EXPECT_EQ("<a b=\"c d\"></a>", Element(L"a b=\"c d\""));
    EXPECT_EQ("<a\tb></a\tb>", Element(L"a\tb"));
    EXPECT_EQ("<></>", Element(L""));
}

TEST(ElementTagWriterTest, StripsBlanksAndThenAngleBracketsFromBothEnds) {
    std::ostringstream sink;
    const ElementTagWriter writer(sink);
    const std::vector<std::pair<const wchar_t*, const wchar_t*>> cases = {
        {L"", L""},         {L"a", L"a"},         {L"  a  ", L"a"},
        {L"<a>", L"a"},     {L" <a> ", L"a"},     {L"<<a>>", L"a"},
        {L"><a><", L"a"},   {L"< a >", L" a "},   {L"a b", L"a b"},
        {L"a<>b", L"a<>b"}, {L"   ", L""},        {L"<>", L""},
        {L" < > ", L" "},   {L"\ta\t", L"\ta\t"}, {L"<a b=\">\">", L"a b=\">\""},
    };
    for (const auto& [text, normalized] : cases) {
        EXPECT_EQ(normalized, writer.Normalize(text)) << text;
    }
}

TEST(ElementTagWriterTest, WritesTheNormalizedText) { EXPECT_EQ("<a></a>", Element(L" <a> ")); }

TEST(ElementTagWriterTest, WritesAttributesBehindTheTextAndEscapesOnlyThoseMarked) {
    const TagAttribute attributes[] = {
        {L"x", L"1"}, {L"p:y", L"<&\"'>"}, {L"z", L"<&\"'>", true}, {L"e", L""}};
    EXPECT_EQ("<a b=\"0\" x=\"1\" p:y=\"<&\"'>\" z=\"&lt;&amp;&quot;&apos;&gt;\" e=\"\"></a>",
              Element(L"a b=\"0\"", attributes));
}

TEST(ElementTagWriterTest, AnElementThatIsMovedIsEndedOnce) {
    std::ostringstream sink;
    {
        std::vector<ElementTagWriter> open;
        for (const wchar_t* name : {L"a", L"a.name.that.is.longer.than.short", L"c"}) {
            ElementTagWriter writer(sink);
            writer.WriteStartTag(name);
            open.push_back(std::move(writer));
        }
        EXPECT_EQ("<a><a.name.that.is.longer.than.short><c>", sink.str());
        while (!open.empty()) open.pop_back();
    }
    EXPECT_EQ("<a><a.name.that.is.longer.than.short><c></c></a.name.that.is.longer.than.short></a>",
              sink.str());
}

TEST(ElementTagWriterTest, AssignmentTakesTheOtherElementOver) {
    std::ostringstream sink;
    {
        ElementTagWriter first(sink);
        first.WriteStartTag(L"a");
        ElementTagWriter second(sink);
        second = std::move(first);
        EXPECT_EQ("<a>", sink.str());
    }
    EXPECT_EQ("<a></a>", sink.str());
}

TEST(ElementTagWriterTest, ANameWithoutStorageIsRejectedBeforeAnythingIsWritten) {
    std::ostringstream sink;
    {
        ElementTagWriter writer(sink);
        EXPECT_THROW(writer.WriteStartTag(std::wstring_view()), std::invalid_argument);
    }
    EXPECT_EQ("", sink.str());
}

TEST(ElementTagWriterTest, AFailedSinkIsLeftAlone) {
    std::ostringstream sink;
    {
        ElementTagWriter writer(sink);
        writer.WriteStartTag(L"a");
        sink.setstate(std::ios::badbit);
    }
    EXPECT_EQ("<a>", sink.str());
}

}  // namespace
}  // namespace base::xps
