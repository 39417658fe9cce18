#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "devkit/filterhost/childprocess.h"
#include "devkit/filterhost/runevent.h"
#include "devkit/filterhost/runresult.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// A process that runs a filter for this one, order after order, and whatever the filter does to it. For one
// thread, but for Cancel.
class HostedChild {
  public:
    // Is told of each event before it is in the result.
    using Watcher = std::function<void(const Event& event, const RunResult& result)>;

    // A filter that makes no progress for `timeout` hangs. Throws std::system_error when the process cannot
    // be started.
    explicit HostedChild(std::chrono::seconds timeout, Watcher watcher = {});

    // Adds to the result what becomes of the order, without concluding it. False when the process has ended,
    // or is no good any longer: the next order is for another one.
    bool Run(const Order& order, RunResult& result);
    // Cancels the job that goes on; any thread may call.
    void Cancel();

  private:
    enum class State { GoesOn, Finished, Ended };
    State TakeNext(RunResult& result);
    State Take(const std::string& line, RunResult& result);

    const std::chrono::seconds m_timeout;
    const Watcher m_watcher;
    ChildProcess m_process;
};

}  // namespace devkit::filterhost
