#include "devkit/filterhost/junitreport.h"

#include <gtest/gtest.h>

#include "devkit/common/limits.h"
#include "devkit/common/xmlreader.h"

namespace devkit::filterhost {
namespace {

RunResult WithStatus(ExitStatus status) {
    RunResult result;
    result.input = "a & b.xps";
    result.status = status;
    return result;
}

TEST(JunitReport, ATestCaseThatPassedHasTheSummaryAlone) {
    EXPECT_EQ(
        "<testcase classname=\"filter\" name=\"a &amp; b.xps\"><system-out>a &amp; b.xps -&gt; nothing "
        "written: not run\n</system-out></testcase>",
        WriteTestCase(WithStatus(Done), "filter"));
}

TEST(JunitReport, TellsTheSecondsThatWereMeasured) {
    RunResult result = WithStatus(Done);
    result.times.emplace().total = 1.23456;
    const std::string text = WriteTestCase(result, "filter");
    EXPECT_TRUE(text.starts_with("<testcase classname=\"filter\" name=\"a &amp; b.xps\" time=\"1.235\">"))
        << text;
}

TEST(JunitReport, AFilterFailsAndAnInputIsAnError) {
    RunResult result = WithStatus(RuleBroken);
    result.breaches = {{"leak", "never released: one"}, {"kind", "two"}};
    const std::string failed = WriteTestCase(result, "filter");
    EXPECT_NE(std::string::npos,
              failed.find("<failure type=\"rule broken\" message=\"a &amp; b.xps: breach: never released: "
                          "one\">a &amp; b.xps: breach: never released: one\na &amp; b.xps: breach: "
                          "two\n</failure>"))
        << failed;
    result = WithStatus(UnreadableInput);
    result.errors = {"is not a zip archive"};
    const std::string unreadable = WriteTestCase(result, "filter");
    EXPECT_NE(std::string::npos,
              unreadable.find("<error type=\"unreadable input\" message=\"a &amp; b.xps: is not a zip "
                              "archive\">"))
        << unreadable;
    EXPECT_EQ(std::string::npos, unreadable.find("<failure"));
}

TEST(JunitReport, AFindingThatMadeTheStatusIsTheMessage) {
    RunResult result = WithStatus(RuleBroken);
    result.findings = {{"document", "odd"}};
    const std::string text = WriteTestCase(result, "filter");
    EXPECT_NE(std::string::npos, text.find("message=\"a &amp; b.xps: finding: odd\"")) << text;
}

TEST(JunitReport, WhatXmlCannotCarryIsReplaced) {
    RunResult result = WithStatus(FilterFailed);
    result.crash = Crash{3, std::string("no \x01\x1F paper\tat\nall"), "", ""};
    const std::string text = WriteTestCase(result, "filter");
    EXPECT_NE(std::string::npos, text.find("no ?? paper\tat\nall")) << text;
    common::XmlReader reader(text, "the test case", common::Limits().page);
    while (reader.NextElement()) {
    }
}

}  // namespace
}  // namespace devkit::filterhost
