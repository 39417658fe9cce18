#include "devkit/pipeline/filterrun.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/pipeline/bytechannel.h"
#include "devkit/pipeline/partsource.h"

namespace devkit::pipeline {
namespace {

using Clock = std::chrono::steady_clock;

// How often the pipeline looks whether a filter has ended a thread of its.
constexpr std::chrono::milliseconds kThreadWatch{200};

void Append(WritableBytes& target, const std::string& bytes) {
    constexpr std::size_t kPiece = std::size_t{1} << 20;
    for (std::size_t at = 0; at < bytes.size(); at += kPiece)
        target.Append(bytes.data() + at, std::min(kPiece, bytes.size() - at));
}

}  // namespace

// What goes from one stage to the next.
struct FilterRun::Link {
    // Of what the next stage reads.
    std::shared_ptr<PartChannel> parts;
    std::shared_ptr<ByteChannel> bytes;
    // What a stage writes for one that reads parts.
    std::shared_ptr<Writing> written;

    void Close() const {
        if (parts != nullptr) parts->Close();
        if (bytes != nullptr) bytes->Close();
    }
    void Abandon() const {
        if (parts != nullptr) parts->Abandon();
        if (bytes != nullptr) bytes->Abandon();
    }
};

// What the calling thread and the pipeline threads share. A thread that hangs keeps it alive.
struct FilterRun::State : std::enable_shared_from_this<FilterRun::State> {
    State(std::vector<ChainedFilter> chained, ChainInput chainInput, RunOptions runOptions)
        : filters(std::move(chained)), input(std::move(chainInput)), options(std::move(runOptions)) {}

    void MakeStages();
    [[nodiscard]] StageEnds EndsOf(std::size_t index);
    [[nodiscard]] RunOptions OptionsOf(std::size_t index) const;
    void Start();
    void Wait();
    void Stop();
    [[nodiscard]] bool IsOver() const;
    [[nodiscard]] bool MustStop() const;
    void CancelAtPart(unsigned number);
    void StageEnded(std::size_t index, HRESULT result);
    void HandOver(std::size_t index);
    [[nodiscard]] const std::shared_ptr<const JobInput>& JobOf(std::size_t index) const;
    [[nodiscard]] std::string Package(std::size_t index) const;

    const std::vector<ChainedFilter> filters;
    const ChainInput input;
    const RunOptions options;
    const std::shared_ptr<RunSignal> signal = std::make_shared<RunSignal>();
    std::vector<Link> links;  // behind each stage but the last
    // The document whose parts a stage reads where no stage before it hands them on; set before it gets any.
    std::vector<std::shared_ptr<const JobInput>> jobs;
    std::shared_ptr<Writing> lastWritten;
    Bytes lastPackaged;
    std::vector<std::shared_ptr<FilterStage>> stages;
    bool cancelWanted = false;  // with the signal's lock
    bool isStopping = false;
};

FilterRun::FilterRun(std::shared_ptr<FilterSource> source, std::shared_ptr<const JobInput> input,
                     RunOptions options)
    : FilterRun({{{}, std::move(source)}}, {std::move(input), nullptr}, std::move(options)) {}

FilterRun::FilterRun(std::vector<ChainedFilter> filters, ChainInput input, RunOptions options)
    : m_state(std::make_shared<State>(std::move(filters), std::move(input), std::move(options))) {}

FilterRun::~FilterRun() = default;

RunOutcome FilterRun::Run() { return std::move(RunChain().back()); }

std::vector<RunOutcome> FilterRun::RunChain() {
    State& state = *m_state;
    state.MakeStages();
    state.Start();
    state.Wait();
    const auto each = [&state](auto action) {
        for (const auto& stage : state.stages) action(*stage);
    };
    each([](FilterStage& stage) { stage.Join(); });
    each([](FilterStage& stage) { stage.Report(); });
    for (const Link& link : state.links) link.Abandon();
    each([](FilterStage& stage) { stage.Release(); });
    each([](FilterStage& stage) { stage.LookForLeftovers(); });
    std::vector<RunOutcome> outcomes;
    each([&outcomes](FilterStage& stage) { outcomes.push_back(stage.TakeOutcome()); });
    outcomes.back().bytes = state.lastWritten != nullptr ? state.lastWritten->Written() : state.lastPackaged;
    return outcomes;
}

void FilterRun::Cancel() {
    {
        const std::lock_guard guard(m_state->signal->lock);
        m_state->cancelWanted = true;
    }
    m_state->signal->changed.notify_all();
}

void FilterRun::Reassign(Share share, OperationClock::Duration time) {
    for (const auto& stage : m_state->stages) stage->Context()->Clock().Reassign(share, time);
}

std::string FilterRun::LastPart() const {
    return m_state->stages.empty() ? std::string() : m_state->stages.front()->LastPart();
}

void FilterRun::State::MakeStages() {
    jobs.resize(filters.size());
    for (std::size_t i = 0; i + 1 < filters.size(); ++i) {
        Link& link = links.emplace_back();
        const bool readsParts = filters[i + 1].input == DataKind::Xps;
        if (readsParts) {
            link.parts = std::make_shared<PartChannel>();
        } else {
            link.bytes = std::make_shared<ByteChannel>();
        }
        if (readsParts && filters[i].output == DataKind::Stream) link.written = std::make_shared<Writing>();
    }
    for (std::size_t i = 0; i < filters.size(); ++i) {
        auto stage = std::make_shared<FilterStage>(filters[i].name, filters[i].source, OptionsOf(i),
                                                   EndsOf(i), signal);
        stage->MakeObjects();
        stage->onEnded = [state = weak_from_this(), i](HRESULT result) {
            if (const auto alive = state.lock()) alive->StageEnded(i, result);
        };
        stages.push_back(std::move(stage));
    }
    stages.front()->onAsked = [state = weak_from_this()](unsigned number) {
        if (const auto alive = state.lock()) alive->CancelAtPart(number);
    };
}

StageEnds FilterRun::State::EndsOf(std::size_t index) {
    StageEnds ends;
    ends.output = filters[index].output;
    const bool readsParts = filters[index].input == DataKind::Xps;
    if (index > 0) {
        const Link& before = links[index - 1];
        ends.parts = before.parts;
        ends.bytes = before.bytes;
    } else if (readsParts) {
        jobs[0] = input.job != nullptr ? input.job : MakeJobInput(input.bytes, "the input");
        ends.parts = std::make_shared<JobParts>(jobs[0]);
    } else {
        ends.bytes = MakeReadable(input.bytes);
    }
    if (index + 1 == filters.size()) {
        if (ends.output == DataKind::Stream) ends.written = lastWritten = std::make_shared<Writing>();
        return ends;
    }
    const Link& behind = links[index];
    if (ends.output == DataKind::Xps && filters[index + 1].input == DataKind::Xps)
        ends.nextParts = behind.parts;
    if (ends.output == DataKind::Stream) {
        if (behind.written != nullptr) {
            ends.written = behind.written;
        } else {
            ends.written = behind.bytes;
        }
    }
    return ends;
}

RunOptions FilterRun::State::OptionsOf(std::size_t index) const {
    RunOptions own = options;
    if (index > 0) {
        own.extraParts.clear();
    }
    if (filters[index].observer != nullptr) own.observer = filters[index].observer;
    return own;
}

void FilterRun::State::Start() {
    for (const auto& stage : stages) {
        if (FAILED(stage->Initialize())) return;
    }
    if (!options.startsOperation) return;
    for (const auto& stage : stages) stage->Start();
}

bool FilterRun::State::IsOver() const {
    return std::ranges::all_of(stages, [](const auto& stage) { return stage->IsOver(); });
}

bool FilterRun::State::MustStop() const {
    const bool isRunning = std::ranges::any_of(stages, [](const auto& stage) { return stage->IsRunning(); });
    const bool hasFailed = std::ranges::any_of(stages, [](const auto& stage) { return stage->HasFailed(); });
    return isRunning && !isStopping && (cancelWanted || hasFailed);
}

void FilterRun::State::Wait() {
    Clock::time_point deadline =
        options.timeout.count() > 0 ? Clock::now() + options.timeout : Clock::time_point::max();
    std::unique_lock guard(signal->lock);
    while (!IsOver()) {
        if (MustStop()) {
            deadline = Clock::now() + options.stopTimeout;
            Stop();
        }
        signal->changed.wait_until(guard, std::min(deadline, Clock::now() + kThreadWatch));
        for (const auto& stage : stages) stage->LookAtThreads();
        if (Clock::now() < deadline) continue;
        if (isStopping) break;
        cancelWanted = true;
    }
}

void FilterRun::State::Stop() {
    isStopping = true;
    for (const auto& stage : stages) {
        if (stage->IsRunning()) stage->StartShutdown();
    }
    for (const Link& link : links) link.Abandon();
    signal->changed.notify_all();
}

void FilterRun::State::CancelAtPart(unsigned number) {
    if (number != options.cancelAt) return;
    std::unique_lock guard(signal->lock);
    cancelWanted = true;
    signal->changed.notify_all();
    stages.front()->WaitForShutdown(guard, options.cancelConcurrently);
}

void FilterRun::State::StageEnded(std::size_t index, HRESULT result) {
    // What is sent to a filter that has ended is dropped.
    if (index > 0) links[index - 1].Abandon();
    const FilterStage& stage = *stages[index];
    bool isWhole = SUCCEEDED(result) && !stage.HasAskedForShutdown() && !stage.Context()->IsCancelled();
    try {
        if (isWhole) HandOver(index);
    } catch (const std::exception& error) {
        stage.Context()->InputFailed("what the filter sent cannot be handed on: " +
                                     std::string(error.what()));
        isWhole = false;
    }
    if (index == links.size()) return;
    if (isWhole) {
        links[index].Close();
    } else {
        links[index].Abandon();
    }
}

// Turns what a stage sent into what the next one reads, where these are of two kinds. The last one's parts
// are packaged where the caller does not have the document that they belong to.
void FilterRun::State::HandOver(std::size_t index) {
    if (index == links.size()) {
        const bool isCallers = filters[index].output == DataKind::Stream || JobOf(index) == input.job;
        if (!isCallers) lastPackaged = std::make_shared<const std::string>(Package(index));
        return;
    }
    const Link& link = links[index];
    if (filters[index].output == DataKind::Xps && link.bytes != nullptr) {
        Append(*link.bytes, Package(index));
    } else if (link.written != nullptr) {
        if (!link.written->IsClosed()) throw common::Error("the output was not closed");
        jobs[index + 1] = MakeJobInput(link.written->Written(), "the output of " + filters[index].name);
        JobParts parts(jobs[index + 1]);
        for (auto next = parts.Next(); next && !next->IsEnd(); next = parts.Next())
            link.parts->Put(next->part);
    }
}

// The document that the parts belong to that a stage sends.
const std::shared_ptr<const JobInput>& FilterRun::State::JobOf(std::size_t index) const {
    while (index > 0 && filters[index - 1].output == DataKind::Xps) --index;
    return jobs[index];
}

std::string FilterRun::State::Package(std::size_t index) const {
    const std::shared_ptr<const JobInput>& job = JobOf(index);
    if (job == nullptr || job->package == nullptr)
        throw common::Error("there is no document to package it with");
    return job->package(stages[index]->Sent());
}

}  // namespace devkit::pipeline
