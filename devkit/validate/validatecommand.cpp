#include "devkit/validate/validatecommand.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "devkit/common/error.h"
#include "devkit/common/file.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/filecheck.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/hostedrun.h"
#include "devkit/filterhost/interrupt.h"
#include "devkit/package/xpsdocument.h"
#include "devkit/validate/configuration.h"
#include "devkit/validate/testtrace.h"
#include "devkit/validate/validation.h"
#include "devkit/validate/validationpage.h"
#include "devkit/validate/validationreport.h"
#include "devkit/validate/verdict.h"

namespace devkit::validate {
namespace {

using filterhost::ValidateSettings;

std::string NameOf(const ValidateSettings& settings) {
    std::string name;
    for (const filterhost::FilterSettings& filter : settings.host.filters)
        name += (name.empty() ? "" : " and ") + common::PathText(filter.dll.filename());
    return settings.host.filters.size() > 1 ? "the chain of " + name : name;
}

// The user's documents, found to be some. False when one is none.
bool TakeDocuments(const ValidateSettings& settings, std::vector<Document>& documents) {
    for (const std::filesystem::path& path : settings.documents) {
        const std::string name = common::PathText(path);
        try {
            static_cast<void>(package::XpsDocument::Open(path));
        } catch (const common::Error& error) {
            filterhost::PrintProblem(name + ": " + filterhost::ProblemOf(error, name));
            return false;
        }
        documents.push_back({name, path});
    }
    return true;
}

// Prints the results as they come, and what failed behind them.
class Teller {
  public:
    explicit Teller(bool isQuiet) : m_isQuiet(isQuiet) {
        if (!isQuiet) filterhost::PrintOut(TableHead());
    }

    void Tell(const TestResult& result) {
        m_tally.Add(result);
        m_results.push_back(result);
        m_failures += WriteFailures(result);
        if (!m_isQuiet) filterhost::PrintOut(TableLine(result));
    }
    void TellFailures() const {
        filterhost::PrintOut(m_failures + (m_isQuiet && m_failures.empty() ? "" : "\n"));
    }
    void TellVerdict(const ValidateSettings& settings) const {
        filterhost::PrintOut(WriteVerdict(NameOf(settings), m_tally, settings.level) + "\n");
    }
    void WriteReports(const ValidateSettings& settings) const {
        if (settings.json) WriteReport(*settings.json, "--json", WriteJson(settings, m_results));
        if (settings.junit) WriteReport(*settings.junit, "--junit", WriteJunit(settings, m_results));
        if (settings.report)
            WriteReport(*settings.report, "--report", WritePage(settings, NameOf(settings), m_results));
    }
    [[nodiscard]] filterhost::ExitStatus Status() const { return m_tally.Status(); }

  private:
    std::vector<TestResult> m_results;
    const bool m_isQuiet;
    Tally m_tally;
    std::string m_failures;
};

}  // namespace

int Validate(ValidateSettings settings) {
    const std::optional<std::filesystem::path> file = FindConfiguration(settings.host.filters.front().dll);
    if (file) {
        ApplyConfiguration(*file, settings);
        if (!settings.quiet) filterhost::PrintOut("with " + common::PathText(*file) + "\n");
    }
    filterhost::CheckHost(settings.host, "FILTER");
    filterhost::CheckFiles(settings, file);
    const std::vector<const Test*> tests = Selected(settings);
    if (tests.empty()) throw filterhost::UsageError("no test of the battery is left to be run");
    std::vector<Document> documents;
    if (!TakeDocuments(settings, documents)) return filterhost::UnreadableInput;
    std::optional<TestTrace> trace;
    if (settings.trace) trace.emplace(*settings.trace);
    Teller teller(settings.quiet);
    bool isWhole = true;
    for (unsigned repetition = 0; isWhole && repetition < settings.repeat; ++repetition) {
        isWhole = RunTests(
            settings, tests, documents, settings.seed + repetition,
            [&](const TestResult& result) { teller.Tell(result); }, trace ? &*trace : nullptr);
    }
    if (trace) trace->Check();
    teller.TellFailures();
    if (isWhole) teller.TellVerdict(settings);
    // Of an interrupted validation they have what there is.
    teller.WriteReports(settings);
    return isWhole ? static_cast<int>(teller.Status()) : filterhost::kInterrupted;
}

int List(const filterhost::ListSettings& settings) {
    filterhost::PrintOut(ListTests(settings.level));
    return filterhost::Done;
}

}  // namespace devkit::validate
