#include "devkit/filterhost/hostedchild.h"

#include <array>
#include <cstdio>
#include <exception>
#include <utility>
#include <variant>

#include "devkit/filterhost/worker.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

std::string StatusText(DWORD status) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), status < 0x10000 ? "%lu" : "0x%08lX", status);
    return text.data();
}

// Whether the process that told of the run can run nothing more.
bool IsSpoilt(const RunResult& result) {
    return result.crash || (result.end && (result.end->hung || result.end->threadEnded));
}

}  // namespace

HostedChild::HostedChild(std::chrono::seconds timeout, Watcher watcher)
    : m_timeout(timeout), m_watcher(std::move(watcher)), m_process(platform::ToUtf16(kWorkCommand)) {}

bool HostedChild::Run(const Order& order, RunResult& result) {
    m_process.Send(WriteOrder(order));
    State state = State::GoesOn;
    while (state == State::GoesOn) state = TakeNext(result);
    return state == State::Finished && !IsSpoilt(result);
}

HostedChild::State HostedChild::TakeNext(RunResult& result) {
    std::string line;
    switch (m_process.Read(line, ChildProcess::Clock::now() + m_timeout)) {
        case ChildProcess::Got::Line:
            return Take(line, result);
        case ChildProcess::Got::Nothing:
            Apply(events::Crashed{{0, "the filter made no progress for " + std::to_string(m_timeout.count()) +
                                          " s"}},
                  result);
            return State::Ended;
        case ChildProcess::Got::End:
            break;
    }
    const DWORD status = m_process.ExitCode();
    Apply(events::Crashed{{status, "the filter ended the process with status " + StatusText(status)}},
          result);
    return State::Ended;
}

HostedChild::State HostedChild::Take(const std::string& line, RunResult& result) {
    try {
        const Event event = ReadEvent(line);
        if (std::holds_alternative<events::Finished>(event)) return State::Finished;
        if (m_watcher) m_watcher(event, result);
        Apply(event, result);
    } catch (const std::exception&) {
        // A filter that writes to a handle that is not its own.
        Apply(events::Found{std::string(common::FactsOf(common::Check::ForeignOutput).id),
                            "something else than the host wrote to the host's pipe"},
              result);
    }
    return State::GoesOn;
}

void HostedChild::Cancel() { m_process.Send(kCancelCommand); }

}  // namespace devkit::filterhost
