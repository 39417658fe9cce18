#include "devkit/validate/trial.h"

#include <algorithm>
#include <numeric>
#include <span>
#include <utility>

#include "devkit/common/checks.h"
#include "devkit/common/file.h"

namespace devkit::validate {
namespace {

using filterhost::HostSettings;

// What is in the list behind what the user has in it.
std::string Added(const char* option, const std::vector<std::string>& all,
                  const std::vector<std::string>& users) {
    std::string text;
    for (const std::string& each : std::span(all).subspan(std::min(users.size(), all.size())))
        text.append(" ").append(option).append(" ").append(each);
    return text;
}

Order OrderOf(const filterhost::ValidateSettings& settings, const Document& document) {
    return {settings.host, {document.path, document.name, std::nullopt, {}}};
}

}  // namespace

std::string OptionsOf(const Order& order, const HostSettings& settings) {
    const HostSettings& host = order.host;
    // A probe that has something to go by says in the name of its input what it is.
    const bool isNamed = order.probe.empty() || !order.probeArgument.empty();
    std::string text = isNamed ? order.job.inputName : order.probe;
    if (host.device != settings.device) text += " --device " + host.device;
    if (host.userTicket && host.userTicket != settings.userTicket)
        text += " --user-ticket " + common::PathText(*host.userTicket);
    if (host.nsPrefix != settings.nsPrefix) text += " --ns-prefix " + host.nsPrefix;
    if (host.teskType && host.teskType != settings.teskType)
        text += " --tesk-type " + std::to_string(*host.teskType);
    if (host.driverProperties != settings.driverProperties) text += " --no-driver-properties";
    text += Added("--property", host.properties, settings.properties);
    text += Added("--driver-property", host.driverValues, settings.driverValues);
    text += Added("--provider", host.providerSwitches, settings.providerSwitches);
    text += Added("--pipeline", host.pipelineSwitches, settings.pipelineSwitches);
    if (host.cancelAt != 0) text += " --cancel-at " + std::to_string(host.cancelAt);
    return text;
}

Surroundings::Surroundings(const filterhost::ValidateSettings& settings, std::vector<Document> given)
    : m_settings(settings), m_given(std::move(given)) {}

const Document& Surroundings::Carried(const std::string& name) {
    const std::lock_guard guard(m_lock);
    const auto found = m_carried.find(name);
    if (found != m_carried.end()) return found->second;
    return m_carried.emplace(name, PutDocument(name, m_folder.Path())).first->second;
}

std::filesystem::path Surroundings::NewPath(const std::string& name) {
    const std::lock_guard guard(m_lock);
    return m_folder.Path() / (std::to_string(++m_paths) + "-" + name);
}

const PlainRun& Surroundings::Plain(const Document& document, Executor& executor) {
    std::packaged_task<std::shared_ptr<const PlainRun>()> task([&] { return RunPlain(document, executor); });
    std::unique_lock guard(m_lock);
    const auto [entry, isFirst] = m_plain.try_emplace(document.path);
    if (isFirst) entry->second = task.get_future().share();
    const auto run = entry->second;
    guard.unlock();
    if (isFirst) task();
    return *run.get();
}

std::shared_ptr<const PlainRun> Surroundings::RunPlain(const Document& document, Executor& executor) {
    Order order = OrderOf(m_settings, document);
    order.host.recordTickets = true;
    auto plain = std::make_shared<PlainRun>();
    plain->output = NewPath("plain.xps");
    order.job.output = plain->output;
    order.job.outputName = common::PathText(plain->output);
    plain->result = executor.Run(order);
    return plain;
}

Trial::Trial(const Test& test, Surroundings& surroundings, Executor& executor, std::uint64_t seed)
    : m_test(test), m_surroundings(surroundings), m_executor(executor), m_random(seed) {}

std::vector<Document> Trial::Documents(std::initializer_list<const char*> carried) {
    std::vector<Document> documents;
    for (const char* const name : carried) documents.push_back(Carried(name));
    const std::vector<Document>& given = m_surroundings.Given();
    documents.insert(documents.end(), given.begin(), given.end());
    return documents;
}

Order Trial::OrderFor(const Document& document) const { return OrderOf(Settings(), document); }

RunResult Trial::Run(const Order& order) {
    ++m_cases;
    return m_executor.Run(order);
}

const PlainRun& Trial::Plain(const Document& document) {
    ++m_cases;
    return m_surroundings.Plain(document, m_executor);
}

std::vector<unsigned> Trial::Choose(unsigned cases) {
    std::vector<unsigned> all(cases);
    std::iota(all.begin(), all.end(), 1U);
    const unsigned most = Settings().cases;
    if (most == 0 || most >= cases) return all;
    std::vector<unsigned> chosen;
    std::ranges::sample(all, std::back_inserter(chosen), most, m_random);
    return chosen;
}

void Trial::Fail(Failure failure) {
    ++m_failureCount;
    if (m_failures.size() == kMostFailures) return;
    if (failure.advice.empty()) failure.advice = m_test.advice;
    m_failures.push_back(std::move(failure));
}

void Trial::Fail(const Order& order, const RunResult& result, const std::string& text) {
    Failure failure{OptionsOf(order, Settings().host), text, {}, {}, {}};
    if (!result.given.empty()) failure.part = result.given.back();
    if (!result.underWay.empty()) failure.call = result.underWay.back();
    Fail(std::move(failure));
}

void Trial::Fail(const Order& order, const filterhost::Problem& problem) {
    const common::CheckFacts* const pCheck = common::FindCheck(problem.id);
    Fail({OptionsOf(order, Settings().host), problem.text, problem.part, problem.call,
          pCheck == nullptr ? std::string() : std::string(pCheck->advice)});
}

}  // namespace devkit::validate
