#include "devkit/validate/validationpage.h"

#include <string_view>

#include "devkit/common/numbers.h"
#include "devkit/common/text.h"
#include "devkit/common/xmlwriter.h"
#include "devkit/filterhost/commandline.h"
#include "devkit/filterhost/junitreport.h"
#include "devkit/validate/verdict.h"

namespace devkit::validate {
namespace {

using common::XmlWriter;

constexpr std::string_view kStyle =
    "body{font:15px/1.45 system-ui,sans-serif;margin:2em auto;max-width:70em;padding:0 1em;color:#222;"
    "background:#fff}"
    "h1{font-size:1.4em}h2{font-size:1.1em;margin-top:2em}"
    "table{border-collapse:collapse;width:100%}"
    "th,td{text-align:left;vertical-align:top;padding:.3em .6em;border-bottom:1px solid #ddd}"
    "td.number,th.number{text-align:right;white-space:nowrap}"
    ".passed{color:#176f2c}.failed{color:#a11;font-weight:600}.skipped{color:#666}"
    "code{font-size:.93em;overflow-wrap:anywhere}"
    "section{border-left:3px solid #a11;padding:.1em 1em;margin:1em 0}"
    "@media(prefers-color-scheme:dark){body{color:#ddd;background:#181818}th,td{border-color:#444}"
    ".passed{color:#6c6}.failed{color:#f77}.skipped{color:#999}}";

// An element with a text and, where it is given, a class.
void Write(XmlWriter& xml, const char* element, std::string_view text, const char* pClass = nullptr) {
    xml.StartElement(element);
    if (pClass != nullptr) xml.Attribute("class", pClass);
    xml.Text(filterhost::Printable(std::string(text)));
    xml.EndElement();
}

void WriteFailure(XmlWriter& xml, const Failure& failure) {
    xml.StartElement("p");
    if (!failure.run.empty()) {
        Write(xml, "code", failure.run);
        xml.Text(": ");
    }
    xml.Text(filterhost::Printable(failure.text));
    std::string where;
    if (!failure.part.empty()) where += " at " + failure.part;
    if (!failure.call.empty()) where += (where.empty() ? " in " : ", in ") + failure.call;
    if (!where.empty()) Write(xml, "small", where);
    xml.StartElement("br");
    xml.EndElement();
    Write(xml, "b", "What to do: ");
    xml.Text(failure.advice);
    xml.EndElement();
}

void WriteFailedTest(XmlWriter& xml, const TestResult& result) {
    xml.StartElement("section");
    xml.Attribute("id", result.pTest->name);
    Write(xml, "h3", std::string(result.pTest->name) + ": " + std::string(result.pTest->claim));
    for (const Failure& failure : result.failures) WriteFailure(xml, failure);
    if (result.failureCount > result.failures.size()) {
        Write(xml, "p", "and " + std::to_string(result.failureCount - result.failures.size()) + " more");
    }
    xml.EndElement();
}

void WriteRow(XmlWriter& xml, const TestResult& result) {
    xml.StartElement("tr");
    Write(xml, "td", std::to_string(result.pTest->level), "number");
    xml.StartElement("td");
    if (result.verdict == Verdict::Failed) {
        xml.StartElement("a");
        xml.Attribute("href", "#" + std::string(result.pTest->name));
        xml.Text(result.pTest->name);
        xml.EndElement();
    } else {
        xml.Text(result.pTest->name);
    }
    xml.EndElement();
    const char* const name = NameOf(result.verdict);
    Write(xml, "td", name, name);
    Write(xml, "td", common::NumberText(result.seconds, 1), "number");
    Write(xml, "td", std::to_string(result.cases), "number");
    const std::string claim(result.pTest->claim);
    Write(xml, "td", result.reason.empty() ? claim : claim + " (" + result.reason + ")");
    xml.EndElement();
    xml.Raw("\n");
}

void WriteTable(XmlWriter& xml, const std::vector<TestResult>& results) {
    xml.StartElement("table");
    xml.StartElement("tr");
    for (const char* const head : {"Level", "Test", "Result", "Seconds", "Runs", "What it proves"})
        Write(xml, "th", head);
    xml.EndElement();
    for (const TestResult& result : results) WriteRow(xml, result);
    xml.EndElement();
}

}  // namespace

std::string WritePage(const filterhost::ValidateSettings& settings, const std::string& filter,
                      const std::vector<TestResult>& results) {
    Tally tally;
    for (const TestResult& result : results) tally.Add(result);
    XmlWriter xml(XmlWriter::Declaration::None);
    xml.Raw("<!DOCTYPE html>\n");
    xml.StartElement("html");
    xml.Attribute("lang", "en");
    xml.StartElement("head");
    xml.StartElement("meta");
    xml.Attribute("charset", "utf-8");
    xml.EndElement();
    Write(xml, "title", "Validation of " + filter);
    xml.StartElement("style");
    xml.Raw(kStyle);
    xml.EndElement();
    xml.EndElement();
    xml.StartElement("body");
    Write(xml, "h1", WriteVerdict(filter, tally, settings.level), tally.failed == 0 ? "passed" : "failed");
    Write(xml, "p",
          filterhost::VersionText() + ", device " + settings.host.device + ", seed " +
              std::to_string(settings.seed) +
              (settings.cases == 0 ? std::string(", all cases")
                                   : ", at most " + common::Counted(settings.cases, "case") + " of a test"));
    if (tally.failed != 0) Write(xml, "h2", "What failed");
    for (const TestResult& result : results)
        if (result.verdict == Verdict::Failed) WriteFailedTest(xml, result);
    Write(xml, "h2", "Tests");
    WriteTable(xml, results);
    return xml.Take() + "\n";
}

}  // namespace devkit::validate
