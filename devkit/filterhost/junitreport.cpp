#include "devkit/filterhost/junitreport.h"

#include <algorithm>
#include <utility>

#include "devkit/common/file.h"
#include "devkit/common/numbers.h"
#include "devkit/common/xmlwriter.h"
#include "devkit/filterhost/summary.h"

namespace devkit::filterhost {
namespace {

constexpr std::string_view kSuiteEnd = "</testsuite>\n";

constexpr int kDecimals = 3;  // of a second

// Room for any number, so that the head of the file can be replaced in its place.
std::string Attribute(const char* name, const std::string& number) {
    constexpr std::size_t kWidth = 20;
    return " " + std::string(name) + "=\"" + number + "\"" + std::string(kWidth - number.size(), ' ');
}

std::string ClassNameOf(const HostSettings& settings) {
    std::string name;
    for (const FilterSettings& filter : settings.filters) {
        name += (name.empty() ? "" : "+") + common::PathText(filter.dll.stem());
    }
    return name;
}

enum class Verdict { Passed, Failure, Error };

Verdict VerdictOf(ExitStatus status) {
    if (status == Done) return Verdict::Passed;
    return status == FilterFailed || status == RuleBroken ? Verdict::Failure : Verdict::Error;
}

const char* TypeOf(ExitStatus status) {
    switch (status) {
        case FilterFailed:
            return "filter failed";
        case RuleBroken:
            return "rule broken";
        case UnreadableInput:
            return "unreadable input";
        default:
            return "wrong usage";
    }
}

}  // namespace

// A filter's exception may carry any control character.
std::string Printable(std::string text) {
    std::ranges::replace_if(
        text, [](char letter) { return letter >= 0 && letter < ' ' && letter != '\n' && letter != '\t'; },
        '?');
    return text;
}

std::string WriteTestCase(const RunResult& result, const std::string& className) {
    common::XmlWriter xml(common::XmlWriter::Declaration::None);
    xml.StartElement("testcase");
    xml.Attribute("classname", Printable(className));
    xml.Attribute("name", Printable(result.input));
    if (result.times) xml.Attribute("time", common::NumberText(result.times->total, kDecimals));
    if (const Verdict verdict = VerdictOf(result.status); verdict != Verdict::Passed) {
        std::vector<std::string> problems = WriteProblems(result);
        // With --strict these alone may have made the status.
        for (const Problem& finding : result.findings)
            problems.push_back(result.input + ": finding: " + finding.text);
        std::string text;
        for (const std::string& problem : problems) text += problem + "\n";
        xml.StartElement(verdict == Verdict::Failure ? "failure" : "error");
        xml.Attribute("type", TypeOf(result.status));
        xml.Attribute("message", Printable(problems.empty() ? TypeOf(result.status) : problems.front()));
        xml.Text(Printable(text));
        xml.EndElement();
    }
    xml.StartElement("system-out");
    xml.Text(Printable(WriteSummary(result)));
    xml.EndElement();
    return xml.Take();
}

std::string JunitReport::Head(const Counts& counts) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"filterhost\"" +
           Attribute("tests", std::to_string(counts.tests)) +
           Attribute("failures", std::to_string(counts.failures)) +
           Attribute("errors", std::to_string(counts.errors)) +
           Attribute("time", common::NumberText(counts.seconds, kDecimals)) + ">\n";
}

JunitReport::JunitReport(std::filesystem::path path, const RunSettings& settings)
    : m_className(ClassNameOf(settings.host)), m_file(std::move(path), "--junit", Head({}), kSuiteEnd) {}

void JunitReport::Add(const RunResult& result) {
    ++m_counts.tests;
    const Verdict verdict = VerdictOf(result.status);
    if (verdict == Verdict::Failure) ++m_counts.failures;
    if (verdict == Verdict::Error) ++m_counts.errors;
    if (result.times) m_counts.seconds += result.times->total;
    m_file.Add(WriteTestCase(result, m_className) + "\n");
    m_file.ReplaceHead(Head(m_counts));
}

}  // namespace devkit::filterhost
