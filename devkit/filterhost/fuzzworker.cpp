#include "devkit/filterhost/fuzzworker.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

#include "devkit/common/json.h"
#include "devkit/common/leave.h"
#include "devkit/filterhost/crashreport.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/orders.h"
#include "devkit/filterhost/runevent.h"
#include "platform/utf.h"

namespace devkit::filterhost {
namespace {

using Json = nlohmann::json;

// Runs the case on a thread of its own, so that a filter that ends its thread
// does not end the process with it. What is told of a failure of the kit's is a
// text.
struct Answered {
    std::optional<FuzzAnswer> answer;
    std::string failure;
    std::string refusal;
    bool isOver = true;
};
Answered RunOnThread(FuzzRunner& runner, const FuzzSeed& which) {
    Answered answered;
    std::thread([&] {
        const HRESULT entered = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        try {
            answered.answer = runner.Run(which, answered.isOver);
        } catch (const UsageError& error) {
            answered.refusal = error.what();
        } catch (const std::exception& error) {
            answered.failure = error.what();
        }
        if (SUCCEEDED(entered)) CoUninitialize();
    }).join();
    if (!answered.answer && answered.failure.empty() && answered.refusal.empty()) {
        answered.answer = FuzzAnswer{{FuzzEnd::Crash, "the filter ended its thread", "thread"}};
        answered.isOver = false;
    }
    return answered;
}

std::string LineOf(const Answered& answered) {
    if (answered.answer) return WriteAnswer(*answered.answer);
    const bool isRefused = !answered.refusal.empty();
    return common::JsonText(
        Json{{isRefused ? "refusal" : "failure", isRefused ? answered.refusal : answered.failure}});
}

void TellCrash(void* pParent, std::string_view line) noexcept {
    static_cast<ParentProcess*>(pParent)->TellLast(line);
}

}  // namespace

void FuzzWork(std::string_view readHandle, std::string_view writeHandle) {
    ParentProcess parent(readHandle, writeHandle, kFuzzWorkCommand);
    Orders orders(parent);
    FuzzRunner runner(ReadFuzzOrder(orders.Next()));
    const CrashReport crash(&TellCrash, &parent);
    for (bool goesOn = true; goesOn;) {
        const Answered answered = RunOnThread(runner, ReadSeed(orders.Next()));
        parent.Tell(LineOf(answered));
        goesOn = answered.isOver && answered.answer;
    }
    common::LeaveProcess(Done);
}

FuzzAnswer FuzzChild::Run(const FuzzSeed& which) {
    if (m_process == nullptr || m_cases == kMostCases) {
        m_process.reset();
        m_process = std::make_unique<ChildProcess>(platform::ToUtf16(kFuzzWorkCommand));
        m_process->Send(WriteFuzzOrder(m_settings));
        m_cases = 0;
    }
    ++m_cases;
    m_process->Send(WriteSeed(which));
    FuzzAnswer answer = Answer();
    // Whatever ended badly may have left something behind.
    if (answer.end.kind >= FuzzEnd::SystemCrash) m_process.reset();
    return answer;
}

FuzzAnswer FuzzChild::Answer() {
    const auto deadline = ChildProcess::Clock::now() + m_settings.timeout;
    for (std::string line;;) {
        switch (m_process->Read(line, deadline)) {
            case ChildProcess::Got::Nothing: {
                const std::string seconds = std::to_string(m_settings.timeout.count());
                return {{FuzzEnd::Hang, "the filter made no progress for " + seconds + " s", "no progress"}};
            }
            case ChildProcess::Got::End: {
                const std::string status = std::to_string(m_process->ExitCode());
                return {{FuzzEnd::Crash, "the filter ended the process with status " + status, "process"}};
            }
            case ChildProcess::Got::Line:
                break;
        }
        const Json answer = common::ParseJsonOrNull(line);
        if (answer.is_object() && answer.contains("failure"))
            throw std::runtime_error(answer["failure"].get<std::string>());
        if (answer.is_object() && answer.contains("refusal"))
            throw UsageError(answer["refusal"].get<std::string>());
        if (answer.is_object() && answer.contains("end")) return ReadAnswer(line);
        // The event of a crash; anything else was written to a handle that is not
        // the writer's.
        if (!answer.is_array()) continue;
        const Event event = ReadEvent(line);
        if (const auto* const pCrashed = std::get_if<events::Crashed>(&event))
            return {EndOf(pCrashed->crash, m_settings.host)};
    }
}

}  // namespace devkit::filterhost
