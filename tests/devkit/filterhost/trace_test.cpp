#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "devkit/filterhost/files.h"
#include "devkit/filterhost/program.h"

// --trace of the built program.

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;
using Path = std::filesystem::path;

struct Span {
    std::string name;
    std::string category;
    double begin = 0;
    double end = 0;
    double own = 0;
    std::size_t depth = 0;
};

// A thread of a trace: its name, and what is on it, what begins first before what it holds.
struct Row {
    std::string name;
    std::vector<Span> spans;

    [[nodiscard]] const Span& Of(const std::string& wanted) const {
        const auto span = std::ranges::find(spans, wanted, &Span::name);
        if (span == spans.end()) throw std::runtime_error("there is no " + wanted);
        return *span;
    }
};

// The rows of a process, by the names of their threads. Fails the test for spans that do not nest.
std::map<std::string, Row> RowsOf(const Json& trace, int process) {
    std::map<int, Row> byThread;
    std::map<int, std::vector<std::size_t>> open;
    for (const Json& each : trace) {
        if (each.at("pid") != process) continue;
        const std::string kind = each.at("ph");
        // The name of the process and its end are on no thread.
        if (each.at("tid") == 0) continue;
        Row& row = byThread[each.at("tid")];
        std::vector<std::size_t>& begun = open[each.at("tid")];
        if (kind == "M" && each.at("name") == "thread_name") row.name = each.at("args").at("name");
        if (kind == "B") {
            begun.push_back(row.spans.size());
            row.spans.push_back({each.at("name"), each.at("cat"), each.at("ts"), 0});
        }
        if (kind == "E") {
            EXPECT_FALSE(begun.empty());
            if (begun.empty()) continue;
            row.spans[begun.back()].end = each.at("ts");
            begun.pop_back();
        }
        if (kind == "X") {
            const double start = each.at("ts");
            row.spans.push_back({each.at("name"), each.at("cat"), start, start + each.at("dur").get<double>(),
                                 each.value("/args/own"_json_pointer, 0.0)});
        }
    }
    std::map<std::string, Row> rows;
    for (auto& [thread, row] : byThread) {
        EXPECT_TRUE(open[thread].empty()) << row.name;
        std::ranges::stable_sort(row.spans, [](const Span& one, const Span& other) {
            return one.begin != other.begin ? one.begin < other.begin : one.end > other.end;
        });
        std::vector<const Span*> around;
        for (Span& span : row.spans) {
            // The texts of the times are rounded.
            constexpr double kRounded = 0.01;
            while (!around.empty() && around.back()->end <= span.begin + kRounded) around.pop_back();
            if (!around.empty()) {
                EXPECT_LE(span.end, around.back()->end + kRounded) << span.name;
            }
            span.depth = around.size();
            around.push_back(&span);
        }
        rows.emplace(row.name, std::move(row));
    }
    return rows;
}

struct Traced {
    Ended ended;
    Json trace;
    Json report;
};

Traced RunTraced(const std::string& folder, std::vector<std::string> arguments, const char* mode = "") {
    const Path fresh = FreshFolder(folder);
    for (const std::string& each : {std::string("--no-output"), std::string("--trace"),
                                    Text(fresh / "t.json"), std::string("--json"), Text(fresh / "r.json")}) {
        arguments.push_back(each);
    }
    Ended ended = RunProgram(arguments, mode);
    return {ended, Json::parse(FileBytes(fresh / "t.json")), ReportedInputs(fresh / "r.json")};
}

TEST(Trace, ShowsAProcessForEachInputWithNamedThreads) {
    const auto [ended, trace, report] =
        RunTraced("trace-names", RunArguments({Text(Sample("minimal.xps")), Text(Sample("names.xps"))}));
    ASSERT_EQ(0U, ended.status) << ended.error;
    std::map<int, std::string> names;
    for (const Json& each : trace)
        if (each.value("name", "") == "process_name") names[each.at("pid")] = each.at("args").at("name");
    EXPECT_EQ((std::map<int, std::string>{{1, Text(Sample("minimal.xps"))}, {2, Text(Sample("names.xps"))}}),
              names);
    for (const int process : {1, 2}) {
        const auto rows = RowsOf(trace, process);
        EXPECT_TRUE(rows.contains("host"));
        EXPECT_TRUE(rows.contains("pipeline"));
        EXPECT_EQ(2U, rows.size());
    }
}

TEST(Trace, APartsSpanReachesFromItsGivingToItsSending) {
    const auto [ended, trace, report] = RunTraced("trace-parts", RunArguments({Text(Sample("minimal.xps"))}));
    ASSERT_EQ(0U, ended.status) << ended.error;
    const Row row = RowsOf(trace, 1).at("pipeline");
    const Span& page = row.Of("FixedPage /p.fpage");
    const Span& send = row.Of("IXpsDocumentConsumer::SendFixedPage");
    const Span& operation = row.Of("StartOperation");
    EXPECT_EQ(operation.depth + 1, page.depth);
    EXPECT_EQ(page.depth + 1, send.depth);
    EXPECT_NEAR(send.end, page.end, 0.01);
    EXPECT_LE(page.begin, send.begin);
    std::vector<std::string> parts;
    for (const Span& span : row.spans)
        if (span.category == "part") parts.push_back(span.name);
    EXPECT_EQ(
        (std::vector<std::string>{"XpsDocument", "FixedDocumentSequence /s.fdseq", "FixedDocument /d.fdoc",
                                  "FixedPage /p.fpage", "the end of the parts"}),
        parts);
}

// The sum of what passes in calls that no other call of the kind holds.
double OutermostOf(const Row& row, const std::string& category) {
    double sum = 0;
    double end = 0;
    for (const Span& span : row.spans) {
        if (span.category != category || span.begin < end) continue;
        sum += span.end - span.begin;
        end = span.end;
    }
    return sum / 1e6;
}

TEST(Trace, AddsUpToTheTimesOfTheReport) {
    const auto [ended, trace, report] =
        RunTraced("trace-sums", {"run", Text(Sample("sample.xps")), "--device", "longedge"});
    ASSERT_EQ(0U, ended.status) << ended.error;
    const Row row = RowsOf(trace, 1).at("pipeline");
    const Json& seconds = report.at(0).at("seconds").at("filters").at(0);
    const auto share = [&seconds](const char* name) { return seconds.at(name).get<double>(); };
    const double all = share("filter") + share("ticket_provider") + share("pipeline") + share("observer");
    const Span& operation = row.Of("StartOperation");
    // Each look at the clock may be held up.
    constexpr double kHeldUp = 0.02;
    EXPECT_NEAR(all, (operation.end - operation.begin) / 1e6, kHeldUp);
    double provider = 0;
    for (const Span& span : row.spans) provider += span.own / 1e6;
    EXPECT_NEAR(share("ticket_provider"), provider, 1e-4);
    EXPECT_LT(0, provider);
    // What the host looks at while a part is sent is in the span of the call, and in no time of the
    // pipeline's.
    const double pipeline = OutermostOf(row, "pipeline");
    EXPECT_LE(share("pipeline") - kHeldUp, pipeline);
    EXPECT_GE(share("pipeline") + share("observer") + kHeldUp, pipeline);
}

TEST(Trace, AFilterThatCrashesLeavesOneThatOpens) {
    const auto [ended, trace, report] =
        RunTraced("trace-crash", RunArguments({Text(Sample("minimal.xps"))}), "crash");
    ASSERT_EQ(1U, ended.status) << ended.error;
    // RowsOf sees to it that all is ended.
    const Row row = RowsOf(trace, 1).at("pipeline");
    EXPECT_LE(row.Of("FixedPage /p.fpage").end, row.Of("StartOperation").end);
    const auto told =
        std::ranges::find(trace, "i", [](const Json& each) { return each.at("ph").get<std::string>(); });
    ASSERT_NE(trace.end(), told);
    EXPECT_TRUE(told->at("name").get<std::string>().starts_with("the filter crashed with 0xC0000005"))
        << *told;
}

TEST(Trace, AFilterThatEndsItsProcessHasItToldOnce) {
    const auto [ended, trace, report] =
        RunTraced("trace-exit", RunArguments({Text(Sample("minimal.xps"))}), "exit-process");
    std::vector<std::string> told;
    for (const Json& each : trace)
        if (each.at("ph") == "i") told.push_back(each.at("name"));
    EXPECT_EQ(std::vector<std::string>{"the filter ended the process with status 0"}, told);
}

TEST(Trace, AChainHasAThreadForEachFilter) {
    const std::string filter = Text(ProgramFolder() / "testfilter.dll");
    const auto [ended, trace, report] =
        RunTraced("trace-chain", RunArguments({"--clsid", "{C1D7F0A2-35D4-4E0B-9C53-6B1C5A7E9D10}",
                                               "--filter", filter, Text(Sample("minimal.xps"))}));
    ASSERT_EQ(0U, ended.status) << ended.error;
    const auto rows = RowsOf(trace, 1);
    EXPECT_TRUE(rows.contains("pipeline of 1 (testfilter.dll)"));
    ASSERT_TRUE(rows.contains("pipeline of 2 (testfilter.dll)"));
    const Row& second = rows.at("pipeline of 2 (testfilter.dll)");
    EXPECT_LT(second.Of("StartOperation of 2 (testfilter.dll)").begin, second.Of("FixedPage /p.fpage").begin);
}

TEST(Trace, AFileThatCannotBeIsWrongUsage) {
    const Path folder = FreshFolder("trace-nowhere");
    for (const char* const where : {"-j1", "--in-process"}) {
        const Ended ended = RunProgram(RunArguments({Text(Sample("minimal.xps")), "--no-output", "--trace",
                                                     Text(folder / "none" / "t.json"), where}));
        EXPECT_EQ(2U, ended.status) << where;
        EXPECT_TRUE(ended.error.starts_with("filterhost: --trace: ")) << ended.error;
    }
}

TEST(Trace, InThisProcessItIsTheSame) {
    const auto [ended, trace, report] =
        RunTraced("trace-here", RunArguments({Text(Sample("minimal.xps")), "--in-process"}));
    ASSERT_EQ(0U, ended.status) << ended.error;
    EXPECT_EQ("part", RowsOf(trace, 1).at("pipeline").Of("FixedPage /p.fpage").category);
}

}  // namespace
}  // namespace devkit::filterhost
