#include "faultedjob.h"

#include <algorithm>
#include <atomic>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "devkit/pipeline/part.h"
#include "devkit/pipeline/partfactory.h"
#include "memoryjob.h"
#include "ticketmarkup.h"

namespace systemtest {

using devkit::pipeline::Bytes;
using devkit::pipeline::ContextPtr;
using devkit::pipeline::ExtraPart;
using devkit::pipeline::InputPart;
using devkit::pipeline::JobInput;
using devkit::pipeline::PageInput;
using devkit::pipeline::Part;
using devkit::pipeline::PartKind;
using devkit::pipeline::PartPtr;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;
using devkit::pipeline::SentPart;
using tests::Feature;

namespace {

constexpr std::wstring_view kPrivateDeclaration =
    L" xmlns:krk=\"http://schemas.pagevalidate.example/printing/ptpc/2008/11\"";

using TriedNumbers = std::map<std::pair<std::string, std::string>, std::size_t>;

// The cells of a row of a table, without the blanks round them.
std::vector<std::string> CellsOf(const std::string& row) {
    std::vector<std::string> cells;
    std::istringstream text(row.substr(1));
    for (std::string cell; std::getline(text, cell, '|');) {
        const std::size_t first = cell.find_first_not_of(' ');
        if (first == std::string::npos) continue;
        cells.push_back(cell.substr(first, cell.find_last_not_of(' ') - first + 1));
    }
    return cells;
}

// The table of docs/testing.md whose first column is headed "Fault": by kind of failure and job.
TriedNumbers ReadTriedNumbers() {
    TriedNumbers numbers;
    std::ifstream file(std::filesystem::path(SOURCE_FOLDER) / "docs" / "testing.md");
    std::vector<std::string> jobs;
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("| ")) continue;
        const std::vector<std::string> cells = CellsOf(line);
        if (cells.empty()) continue;
        if (cells.front() == "Fault") {
            jobs = cells;
            continue;
        }
        if (jobs.size() != cells.size()) continue;
        for (std::size_t i = 1; i < cells.size(); ++i) numbers[{cells[0], jobs[i]}] = std::stoul(cells[i]);
    }
    return numbers;
}

InputPart Ticket(const std::string& name, std::wstring_view body) {
    return TicketInMemory(name, tests::Bytes(tests::Ticket(body, kPrivateDeclaration)));
}

PageInput Page(const std::string& name, std::optional<InputPart> ticket = {}) {
    return PageInMemory(name,
                        "<FixedPage xmlns=\"http://schemas.microsoft.com/xps/2005/06\" Width=\"793.76\" "
                        "Height=\"1122.56\" BleedBox=\"0,0,793.76,1122.56\" ContentBox=\"0,0,700,700\" "
                        "xml:lang=\"en\"><Glyphs FontUri=\"/f.ttf\" UnicodeString=\"a &lt; b\"/>"
                        "<Path Data=\"M 0,0 L 9,9\" Fill=\"#FF000000\"/></FixedPage>",
                        std::move(ticket));
}

// Names and texts that the provider keeps, changes and drops, at each scope.
std::shared_ptr<const JobInput> InputWithTickets() {
    return JobInMemory(
        {Page("/1.fpage", Ticket("/page_PT.xml", Feature(L"psk:PageOrientation", L"psk:Portrait") +
                                                     Feature(L"krk:PageStamp", L"krk:Top"))),
         Page("/2.fpage")},
        Ticket("/job_PT.xml", tests::ParameterInit(L"psk:JobCopiesAllDocuments", 2) +
                                  Feature(L"krk:JobStamp", L"krk:Confidential")),
        Ticket("/document_PT.xml", Feature(L"psk:PageMediaSize", L"psk:ISOA5")));
}

std::wstring Sheet(const std::wstring& name, int width, int height) {
    return Feature(L"psk:PageMediaSize", L"psk:" + name,
                   tests::ScoredProperty(L"psk:MediaSizeWidth", tests::Integer(width)) +
                       tests::ScoredProperty(L"psk:MediaSizeHeight", tests::Integer(height)));
}

// Every tray of the device feeds the long edge first: the first page is turned, the second turned and put on
// another sheet.
std::shared_ptr<const JobInput> InputToTurn() {
    return JobInMemory(
        {Page("/1.fpage", Ticket("/page_PT.xml", Sheet(L"ISOA5", 148000, 210000))), Page("/2.fpage")});
}

// Its long edge comes first as it is, but the sheet is too large for the printer.
std::shared_ptr<const JobInput> InputToResize() {
    return JobInMemory(
        {Page("/1.fpage", Ticket("/page_PT.xml", Sheet(L"ISOA3", 297000, 420000) +
                                                     Feature(L"psk:PageOrientation", L"psk:Landscape")))});
}

std::shared_ptr<const JobInput> InputThatFails() {
    return JobInMemory(
        {Page("/1.fpage"), Page("/2.fpage", InMemory("/page_PT.xml", "text/xml", "<psf:Print"))});
}

std::string WithoutNumbers(const std::string& text) {
    static const std::regex number("pagevalidator_[0-9]+_");
    return std::regex_replace(text, number, "pagevalidator_N_");
}

std::string TextOf(const PartPtr& part) {
    if (part == nullptr) return "nothing";
    const Bytes bytes = part->Read();
    return WithoutNumbers(part->Title()) + ": " + (bytes == nullptr ? std::string() : *bytes);
}

// Looks at the locale of the pipeline's thread when StartOperation begins and when it has returned.
class LocaleWitness {
  public:
    LocaleWitness() = default;
    LocaleWitness(const LocaleWitness&) = delete;
    LocaleWitness& operator=(const LocaleWitness&) = delete;
    ~LocaleWitness() { s_isKept = Current() == m_before; }

    // Whether the last thread kept its locale.
    static inline std::atomic<bool> s_isKept = true;

  private:
    [[nodiscard]] static std::string Current() {
        return std::to_string(GetThreadLocale()) + " " + std::setlocale(LC_ALL, nullptr);
    }

    const std::string m_before = Current();
};

ExtraPart UnknownPart() {
    return {2, [](const ContextPtr& context) {
                return devkit::pipeline::MakePartObject(
                    context,
                    std::make_shared<Part>(PartKind::Image, InMemory("/1.png", "image/png", "image")));
            }};
}

}  // namespace

const std::vector<Job>& Jobs() {
    static const std::vector<Job> jobs = {
        {"passing", "simprinter", JobInMemory({Page("/1.fpage"), Page("/2.fpage")})},
        {"merging", "simprinter", InputWithTickets()},
        {"turning", "longedge", InputToTurn()},
        {"resizing", "longedge", InputToResize()},
        {"failing", "simprinter", InputThatFails()},
        {"cancelled", "simprinter", JobInMemory({Page("/1.fpage"), Page("/2.fpage")}), 6},
    };
    return jobs;
}

const Job& JobNamed(std::string_view name) {
    const auto job = std::ranges::find(Jobs(), name, &Job::name);
    if (job == Jobs().end()) throw std::invalid_argument("there is no job " + std::string(name));
    return *job;
}

JobResult ResultOf(const RunOutcome& outcome) {
    JobResult result{outcome.result, outcome.shutdownCodes, {}};
    for (const SentPart& sent : outcome.parts) {
        result.sent.push_back(TextOf(sent.part) + "\nticket " +
                              TextOf(sent.part == nullptr ? nullptr : sent.part->ticket));
    }
    return result;
}

JobResult EndedEarly(const JobResult& good, std::size_t sent, HRESULT code, std::vector<HRESULT> told) {
    JobResult result{code, std::move(told), good.sent};
    result.sent.resize(sent);
    return result;
}

RunOptions FaultedJobTest::OptionsOf(const Job& job) {
    Configure({}, job.device);
    RunOptions options = Options();
    options.properties.driverValues = {{L"KoraNsPrefix", std::wstring(L"krk")}, {L"KoraTeskType", LONG{1}}};
    options.cancelAt = job.cancelAt;
    options.extraParts = {UnknownPart()};
    options.onPipelineThread = [] { return std::make_shared<LocaleWitness>(); };
    return options;
}

RunOptions FaultedJobTest::OptionsWithoutPrefix(const Job& job) {
    RunOptions options = OptionsOf(job);
    options.properties.driverValues->erase(L"KoraNsPrefix");
    return options;
}

const JobResult& FaultedJobTest::GoodResult(const Job& job) {
    static std::map<std::string, JobResult> results;
    const auto found = results.find(job.name);
    if (found != results.end()) return found->second;
    return results.emplace(job.name, ResultOf(RunJob(job, OptionsOf(job)))).first->second;
}

const JobResult& FaultedJobTest::ResultWithoutPrefix(const Job& job) {
    static std::map<std::string, JobResult> results;
    const auto found = results.find(job.name);
    if (found != results.end()) return found->second;
    return results.emplace(job.name, ResultOf(RunJob(job, OptionsWithoutPrefix(job)))).first->second;
}

void FaultedJobTest::ExpectNothingChanged(const RunOutcome& outcome) {
    ExpectNothingLeft(outcome);
    EXPECT_EQ(std::vector<std::string>{}, outcome.inputFailures);
    EXPECT_TRUE(LocaleWitness::s_isKept);
}

void FaultedJobTest::ExpectTried(const std::string& kind, const Job& job, std::size_t tried) {
    std::printf("tried: %s, %s: %zu\n", kind.c_str(), job.name.c_str(), tried);
    if (!kTellsWaysApart) return;
    static const TriedNumbers numbers = ReadTriedNumbers();
    const auto least = numbers.find({kind, job.name});
    if (least != numbers.end()) {
        EXPECT_LE(least->second, tried) << kind << ", " << job.name;
    } else {
        EXPECT_EQ(0u, tried) << "docs/testing.md gives no number for " << kind << ", " << job.name;
    }
}

void FaultedJobTest::ExpectGoodResult(const Job& job) {
    const JobResult& good = GoodResult(job);
    const RunOutcome outcome = RunJob(job, OptionsOf(job));
    EXPECT_EQ(good, ResultOf(outcome));
    ExpectNothingChanged(outcome);
}

}  // namespace systemtest
