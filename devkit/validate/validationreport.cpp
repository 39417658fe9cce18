#include "devkit/validate/validationreport.h"

#include "devkit/common/error.h"
#include "devkit/common/file.h"
#include "devkit/common/json.h"
#include "devkit/common/numbers.h"
#include "devkit/common/text.h"
#include "devkit/common/xmlwriter.h"
#include "devkit/filterhost/commandline.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/junitreport.h"
#include "devkit/validate/verdict.h"

namespace devkit::validate {
namespace {

using OrderedJson = nlohmann::ordered_json;

constexpr int kDecimals = 3;  // of a second

OrderedJson ToJson(const Failure& failure) {
    OrderedJson json{{"run", failure.run}, {"text", failure.text}};
    json["part"] = failure.part.empty() ? OrderedJson() : OrderedJson(failure.part);
    json["call"] = failure.call.empty() ? OrderedJson() : OrderedJson(failure.call);
    json["advice"] = failure.advice;
    return json;
}

OrderedJson ToJson(const TestResult& result) {
    OrderedJson json{{"name", result.pTest->name},
                     {"level", result.pTest->level},
                     {"claim", result.pTest->claim},
                     {"result", NameOf(result.verdict)}};
    json["reason"] = result.verdict == Verdict::Skipped ? OrderedJson(result.reason) : OrderedJson();
    json["seconds"] = result.seconds;
    json["runs"] = result.cases;
    json["failure_count"] = result.failureCount;
    json["failures"] = OrderedJson::array();
    for (const Failure& failure : result.failures) json["failures"].push_back(ToJson(failure));
    return json;
}

std::string ClassNameOf(const filterhost::ValidateSettings& settings) {
    std::string name;
    for (const filterhost::FilterSettings& filter : settings.host.filters)
        name += (name.empty() ? "" : "+") + common::PathText(filter.dll.stem());
    return name;
}

void WriteTestCase(common::XmlWriter& xml, const TestResult& result, const std::string& className) {
    xml.StartElement("testcase");
    xml.Attribute("classname", filterhost::Printable(className));
    xml.Attribute("name", std::string(result.pTest->name));
    xml.Attribute("time", common::NumberText(result.seconds, kDecimals));
    if (result.verdict == Verdict::Skipped) {
        xml.StartElement("skipped");
        xml.Attribute("message", filterhost::Printable(result.reason));
        xml.EndElement();
    }
    if (result.verdict == Verdict::Failed) {
        xml.StartElement("failure");
        xml.Attribute("type", "level " + std::to_string(result.pTest->level));
        xml.Attribute("message", filterhost::Printable(result.failures.front().text));
        xml.Text(filterhost::Printable(WriteFailures(result)));
        xml.EndElement();
    }
    xml.EndElement();
}

}  // namespace

std::string WriteJson(const filterhost::ValidateSettings& settings, const std::vector<TestResult>& results) {
    Tally tally;
    for (const TestResult& result : results) tally.Add(result);
    OrderedJson json{{"version", 1},
                     {"host", filterhost::VersionText()},
                     {"level", settings.level},
                     {"seed", settings.seed}};
    json["repeat"] = settings.repeat;
    json["cases"] = settings.cases == 0 ? OrderedJson() : OrderedJson(settings.cases);
    json["filters"] = OrderedJson::array();
    for (const filterhost::FilterSettings& filter : settings.host.filters) {
        json["filters"].push_back(
            {{"path", common::PathText(filter.dll)}, {"clsid", common::TextOf(filter.clsid)}});
    }
    json["documents"] = OrderedJson::array();
    for (const auto& document : settings.documents) json["documents"].push_back(common::PathText(document));
    json["passed"] = tally.passed;
    json["failed"] = tally.failed;
    json["skipped"] = tally.skipped;
    json["status"] = tally.Status();
    json["tests"] = OrderedJson::array();
    for (const TestResult& result : results) json["tests"].push_back(ToJson(result));
    return common::IndentedJsonText(json, 1);
}

std::string WriteJunit(const filterhost::ValidateSettings& settings, const std::vector<TestResult>& results) {
    Tally tally;
    double seconds = 0;
    for (const TestResult& result : results) {
        tally.Add(result);
        seconds += result.seconds;
    }
    common::XmlWriter xml;
    xml.StartElement("testsuite");
    xml.Attribute("name", "filterhost validate");
    xml.Attribute("tests", std::to_string(results.size()));
    xml.Attribute("failures", std::to_string(tally.failed));
    xml.Attribute("errors", "0");
    xml.Attribute("skipped", std::to_string(tally.skipped));
    xml.Attribute("time", common::NumberText(seconds, kDecimals));
    for (const TestResult& result : results) WriteTestCase(xml, result, ClassNameOf(settings));
    xml.EndElement();
    return xml.Take();
}

void WriteReport(const std::filesystem::path& path, const char* option, const std::string& text) {
    try {
        common::SaveFile(path, text);
    } catch (const common::Error& error) {
        throw filterhost::UsageError(std::string(option) + ": " + error.what());
    }
}

std::set<std::string, std::less<>> ReadFailed(const std::filesystem::path& json) {
    constexpr const char* kOption = "--only-failed";
    std::set<std::string, std::less<>> failed;
    try {
        const nlohmann::json report = common::ParseJson(filterhost::ReadFile(json, kOption));
        for (const nlohmann::json& test : report.at("tests"))
            if (test.at("result") == NameOf(Verdict::Failed))
                failed.insert(test.at("name").get<std::string>());
    } catch (const nlohmann::json::exception&) {
        throw filterhost::UsageError(std::string(kOption) + ": " + common::PathText(json) +
                                     " is no report of a validation");
    }
    if (failed.empty())
        throw filterhost::UsageError(std::string(kOption) + ": no test failed in " + common::PathText(json));
    return failed;
}

}  // namespace devkit::validate
