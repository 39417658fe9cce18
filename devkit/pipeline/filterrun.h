#pragma once

#include "platform/windows.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "devkit/pipeline/behaviour.h"
#include "devkit/pipeline/documentprovider.h"
#include "devkit/pipeline/filtermodule.h"
#include "devkit/pipeline/job.h"
#include "devkit/pipeline/part.h"
#include "devkit/pipeline/pipelinecontrol.h"
#include "devkit/pipeline/propertybags.h"
#include "devkit/pipeline/runoptions.h"
#include "devkit/pipeline/usertoken.h"

namespace devkit::pipeline {

// What became of a run.
struct RunOutcome {
    HRESULT initialized = E_PENDING;     // InitializeFilter; StartOperation is not called when it failed
    HRESULT result = E_PENDING;          // StartOperation, or what stopped the run before it
    std::vector<HRESULT> shutdownCodes;  // RequestShutdown, in order
    unsigned finishedCount = 0;          // FilterFinished
    std::optional<HRESULT> shutdownOperation;  // what ShutdownOperation answered, when it was called
    bool hung = false;                         // StartOperation did not return in time
    bool cancelled = false;
    bool senderClosed = false;               // CloseSender was called
    std::vector<std::string> breaches;       // one line each
    std::vector<std::string> inputFailures;  // parts of the input that could not be read, one line each
    std::vector<SentPart> parts;             // in sending order
    std::string lastPart;                    // what the filter was given last: "FixedPage /1.fpage"
    std::vector<std::string> calls;          // when the behaviour keeps them
    std::vector<std::string> missing;  // what the filter asked for and the job does not have: "property X"
    ProgressCounts progress;           // what the filter reported
    std::vector<std::string> unstruckFaults;  // "GetXpsPart@9=0x80004005 E_FAIL"

    // The whole document came through: the output may be written.
    [[nodiscard]] bool IsWhole() const;
};

// Sends a document through a filter as the print filter pipeline would: makes the filter, initialises it on
// the calling thread, runs StartOperation on a pipeline thread of its own, releases everything and looks at
// what is left over. A filter that hangs leaves its thread, and all that the thread uses, behind;
// outcome.hung says so, and the filter's module must then stay loaded.
class FilterRun {
  public:
    FilterRun(std::shared_ptr<FilterSource> source, std::shared_ptr<const JobInput> input,
              RunOptions options);
    ~FilterRun();

    // Throws FilterError when the filter cannot be made. Call it once. The calling thread must have entered
    // COM.
    [[nodiscard]] RunOutcome Run();

    // Cancels the job as a user would; any thread may call, at any time.
    void Cancel();
    // What the filter was given last ("FixedPage /1.fpage"), empty before the first part; any thread may ask.
    [[nodiscard]] std::string LastPart() const;

  private:
    struct State;
    std::shared_ptr<State> m_state;
};

}  // namespace devkit::pipeline
