#include "devkit/filterhost/tracefile.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/runtrace.h"
#include "temporaryfolder.h"
#include "thrown.h"

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;
using Lines = std::vector<std::string>;

class TraceFileTest : public testing::Test {
  protected:
    [[nodiscard]] Json Written() const { return Json::parse(tests::ReadFileBytes(m_path)); }
    // "B StartOperation", "E", "X Release": in the order of the file.
    [[nodiscard]] Lines Moments() const {
        Lines lines;
        for (const Json& each : Written())
            lines.push_back(each.value("ph", "") + (each.contains("name") ? " " : "") +
                            each.value("name", ""));
        return lines;
    }
    static events::Traced Moment(TraceMoment::Kind kind, const char* name, std::uint32_t thread = 7) {
        TraceMoment moment;
        moment.kind = kind;
        moment.name = name;
        moment.thread = thread;
        moment.at = pipeline::SpanClockNow().count();
        return {moment};
    }

    const tests::TemporaryFolder m_folder;
    const std::filesystem::path m_path = m_folder / "trace.json";
    TraceFile m_trace{m_path};
};

TEST_F(TraceFileTest, IsWholeFromTheStart) { EXPECT_EQ(Json::array(), Written()); }

TEST_F(TraceFileTest, NamesRowsAndThreads) {
    m_trace.Name(2, "a \"b\".xps");
    m_trace.Take(2, Moment(TraceMoment::Thread, "pipeline"));
    m_trace.Take(2, Moment(TraceMoment::Begin, "StartOperation"));
    const Json written = Written();
    ASSERT_EQ(3U, written.size());
    EXPECT_EQ((Json{{"name", "process_name"},
                    {"ph", "M"},
                    {"pid", 2},
                    {"tid", 0},
                    {"args", {{"name", "a \"b\".xps"}}}}),
              written[0]);
    EXPECT_EQ(
        (Json{
            {"name", "thread_name"}, {"ph", "M"}, {"pid", 2}, {"tid", 7}, {"args", {{"name", "pipeline"}}}}),
        written[1]);
    EXPECT_EQ("B", written[2]["ph"]);
    EXPECT_LE(0.0, written[2]["ts"].get<double>());
}

TEST_F(TraceFileTest, AThreadThatNobodyNamedIsTheFilters) {
    m_trace.Take(1, Moment(TraceMoment::Whole, "QueryInterface", 9));
    EXPECT_EQ("a thread of the filter's own", Written()[0]["args"]["name"]);
}

TEST_F(TraceFileTest, TellsTimesInMicrosecondsAndEndsBeforeTheNextBegins) {
    events::Traced traced = Moment(TraceMoment::Whole, "PTMerge");
    traced.moment.duration = 2500;
    traced.moment.own = 1250;
    traced.moment.detail = "FixedPage /1.fpage";
    m_trace.Take(1, traced);
    const Json written = Written()[1];
    EXPECT_EQ(2.499, written["dur"]);
    EXPECT_EQ((Json{{"of", "FixedPage /1.fpage"}, {"own", 1.25}}), written["args"]);
}

TEST_F(TraceFileTest, EndsWhatIsOpenInTheRowThatEnds) {
    m_trace.Take(1, Moment(TraceMoment::Begin, "StartOperation"));
    m_trace.Take(1, Moment(TraceMoment::Begin, "FixedPage /1.fpage"));
    m_trace.Take(1, Moment(TraceMoment::End, ""));
    m_trace.Take(2, Moment(TraceMoment::Begin, "StartOperation"));
    m_trace.Take(1, events::Crashed{{0, "the filter crashed"}});
    m_trace.End(1);
    m_trace.End(1);
    EXPECT_EQ((Lines{"M thread_name", "B StartOperation", "B FixedPage /1.fpage", "E FixedPage /1.fpage",
                     "M thread_name", "B StartOperation", "i the filter crashed", "E StartOperation"}),
              Moments());
}

TEST_F(TraceFileTest, OtherEventsLeaveNothing) {
    m_trace.Take(1, events::PartAsked{3});
    EXPECT_EQ(Json::array(), Written());
}

TEST(TraceFile, AFileThatCannotBeIsWrongUsage) {
    const tests::TemporaryFolder folder;
    EXPECT_TRUE(tests::MessageOf<UsageError>([&] {
                    TraceFile trace(folder / "none" / "t.json");
                }).starts_with("--trace: "));
}

// What a filter's calls become.
class RunTraceTest : public testing::Test {
  protected:
    void Call(const char* method, int begin, int end) {
        m_trace.CallMade(
            {method, "", std::chrono::nanoseconds(begin), std::chrono::nanoseconds(end - begin)});
    }
    // "+FixedPage /1.fpage@20", "-@50", "IA::Call 5..9": what begins, ends, and was whole.
    [[nodiscard]] Lines Told() const {
        Lines lines;
        for (const TraceMoment& each : m_told) {
            const std::string at = std::to_string(each.at);
            if (each.kind == TraceMoment::Begin) lines.push_back("+" + each.name + "@" + at);
            if (each.kind == TraceMoment::End) lines.push_back("-@" + at);
            if (each.kind == TraceMoment::Whole)
                lines.push_back(each.name + " " + at + ".." + std::to_string(each.at + each.duration));
        }
        return lines;
    }

    std::vector<TraceMoment> m_told;
    RunTrace m_trace{[this](const Event& event) { m_told.push_back(std::get<events::Traced>(event).moment); },
                     "1 (a.dll)"};
};

constexpr const char* kGet = "IXpsDocumentProvider::GetXpsPart";

TEST_F(RunTraceTest, APartIsInHandFromItsGivingToItsSending) {
    m_trace.PartGiven("FixedPage /1.fpage");
    Call(kGet, 10, 20);
    Call("IFixedPage::GetPrintTicket", 25, 30);
    Call("IXpsDocumentConsumer::SendFixedPage", 40, 50);
    EXPECT_EQ(
        (Lines{"IXpsDocumentProvider::GetXpsPart 10..20", "+FixedPage /1.fpage@20",
               "IFixedPage::GetPrintTicket 25..30", "IXpsDocumentConsumer::SendFixedPage 40..50", "-@50"}),
        Told());
}

TEST_F(RunTraceTest, APartThatIsNotSentEndsWhenTheNextIsAskedFor) {
    m_trace.PartGiven("FixedPage /1.fpage");
    Call(kGet, 10, 20);
    m_trace.PartGiven("FixedPage /2.fpage");
    Call(kGet, 30, 40);
    EXPECT_EQ((Lines{"IXpsDocumentProvider::GetXpsPart 10..20", "+FixedPage /1.fpage@20", "-@30",
                     "IXpsDocumentProvider::GetXpsPart 30..40", "+FixedPage /2.fpage@40"}),
              Told());
}

TEST_F(RunTraceTest, AnAskingThatGaveNothingBeginsNoPart) {
    Call(kGet, 10, 20);
    Call("IXpsDocumentConsumer::CloseSender", 30, 40);
    EXPECT_EQ((Lines{"IXpsDocumentProvider::GetXpsPart 10..20", "IXpsDocumentConsumer::CloseSender 30..40"}),
              Told());
}

TEST_F(RunTraceTest, ThreadsAreNamedAfterWhatTheyDoForWhichFilter) {
    m_trace.CallBegins("InitializeFilter");
    m_trace.CallEnds("InitializeFilter");
    m_trace.CallBegins("the last release");
    std::thread([this] { m_trace.CallBegins("StartOperation"); }).join();
    std::thread([this] { m_trace.CallBegins("ShutdownOperation"); }).join();
    Lines names;
    for (const TraceMoment& each : m_told)
        if (each.kind == TraceMoment::Thread) names.push_back(each.name);
    EXPECT_EQ((Lines{"host", "pipeline of 1 (a.dll)", "shutdown of 1 (a.dll)"}), names);
    EXPECT_EQ("InitializeFilter of 1 (a.dll)", m_told[1].name);
}

}  // namespace
}  // namespace devkit::filterhost
