#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "devkit/filterhost/runresult.h"
#include "devkit/filterhost/settings.h"
#include "devkit/validate/battery.h"
#include "devkit/validate/documents.h"

namespace devkit::validate {

using filterhost::Order;
using filterhost::RunResult;

// Does what an order says, and concludes the result. One job after the other.
class Executor {
  public:
    virtual ~Executor() = default;
    [[nodiscard]] virtual RunResult Run(const Order& order) = 0;
};

// The run of a document with nothing out of the ordinary, which several tests judge.
struct PlainRun {
    RunResult result;
    std::filesystem::path output;  // where the document is when one was written
};

// What all tests of a validation share. Any thread may use it.
class Surroundings {
  public:
    // `given` are the user's documents.
    Surroundings(const filterhost::ValidateSettings& settings, std::vector<Document> given);

    [[nodiscard]] const filterhost::ValidateSettings& Settings() const noexcept { return m_settings; }
    // A carried document, put into a file on first use.
    [[nodiscard]] const Document& Carried(const std::string& name);
    [[nodiscard]] const std::vector<Document>& Given() const noexcept { return m_given; }
    // The plain run of the document: the first who asks runs it with `executor`, the others wait.
    [[nodiscard]] const PlainRun& Plain(const Document& document, Executor& executor);
    // A path in the folder of the validation that nothing else has.
    [[nodiscard]] std::filesystem::path NewPath(const std::string& name);

  private:
    [[nodiscard]] std::shared_ptr<const PlainRun> RunPlain(const Document& document, Executor& executor);

    const filterhost::ValidateSettings& m_settings;
    const TemporaryFolder m_folder;
    const std::vector<Document> m_given;
    std::mutex m_lock;
    std::map<std::string, Document> m_carried;
    std::map<std::filesystem::path, std::shared_future<std::shared_ptr<const PlainRun>>> m_plain;
    std::size_t m_paths = 0;
};

struct Failure {
    std::string run;     // over what and how, as options of `filterhost run`
    std::string text;    // what is wrong
    std::string part;    // that the filter had in hand; empty for none
    std::string call;    // that was under way; empty for none
    std::string advice;  // what to do

    friend bool operator==(const Failure&, const Failure&) = default;
};

// Thrown by a test that says nothing of this filter: why not.
class Skipped : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A test at work.
class Trial {
  public:
    Trial(const Test& test, Surroundings& surroundings, Executor& executor, std::uint64_t seed);

    [[nodiscard]] const filterhost::ValidateSettings& Settings() const { return m_surroundings.Settings(); }
    [[nodiscard]] const Document& Carried(const std::string& name) { return m_surroundings.Carried(name); }
    // Those that the carried names name, and the user's.
    [[nodiscard]] std::vector<Document> Documents(std::initializer_list<const char*> carried);
    // A run of the filter over the document as the user's settings have it, for the test to change.
    [[nodiscard]] Order OrderFor(const Document& document) const;
    [[nodiscard]] RunResult Run(const Order& order);
    [[nodiscard]] const PlainRun& Plain(const Document& document);
    [[nodiscard]] std::filesystem::path NewPath(const std::string& name) {
        return m_surroundings.NewPath(name);
    }
    // Which of so many cases, counted from 1, are to be tried: all, or as many as the settings let, chosen by
    // the seed.
    [[nodiscard]] std::vector<unsigned> Choose(unsigned cases);

    // `advice` stands in for the test's own.
    void Fail(Failure failure);
    // What the text says of a run, with the part and the call that the run ended in.
    void Fail(const Order& order, const RunResult& result, const std::string& text);
    // A breach or a finding of a run.
    void Fail(const Order& order, const filterhost::Problem& problem);

    [[nodiscard]] const std::vector<Failure>& Failures() const noexcept { return m_failures; }
    [[nodiscard]] std::size_t FailureCount() const noexcept { return m_failureCount; }
    [[nodiscard]] std::size_t Cases() const noexcept { return m_cases; }

  private:
    // More of them say nothing new.
    static constexpr std::size_t kMostFailures = 5;

    const Test& m_test;
    Surroundings& m_surroundings;
    Executor& m_executor;
    std::mt19937_64 m_random;
    std::vector<Failure> m_failures;
    std::size_t m_failureCount = 0;
    std::size_t m_cases = 0;
};

// What sets the order apart from a run with the user's settings, as options: "short.xps --pipeline
// fail=GetXpsPart@3=0x80004005".
[[nodiscard]] std::string OptionsOf(const Order& order, const filterhost::HostSettings& settings);

}  // namespace devkit::validate
