#pragma once

#include "platform/windows.h"

#include <memory>
#include <string>
#include <vector>

#include "devkit/pipeline/filtermodule.h"
#include "devkit/pipeline/filterstage.h"
#include "devkit/pipeline/job.h"
#include "devkit/pipeline/runoptions.h"

namespace devkit::pipeline {

// A filter in its place in a chain, with what it reads and writes.
struct ChainedFilter {
    std::string name;  // tells it from the others in what is told of the run
    std::shared_ptr<FilterSource> source;
    DataKind input = DataKind::Xps;
    DataKind output = DataKind::Xps;
    // Is told of this filter, instead of the options' observer.
    std::shared_ptr<RunObserver> observer{};
};

// What a chain begins with: a document for a filter that reads parts, the bytes of a package for one that
// reads a stream; with the bytes alone, a document is read from them.
struct ChainInput {
    std::shared_ptr<const JobInput> job;
    Bytes bytes;
};

// Sends a document through a filter, or a chain of them, as the print filter pipeline would: makes the
// filters, initialises them on the calling thread in their order, runs StartOperation of each on a pipeline
// thread of its own, releases everything and looks at what is left over. Between the filters parts and bytes
// are handed on as they are sent; between one that sends parts and one that reads a stream, or the other way
// round, a package of them. A cancellation comes to every filter, a filter's failure to all others. A filter
// that hangs leaves its thread, and all that the thread uses, behind; outcome.hung says so, and the filter's
// module must then stay loaded.
class FilterRun {
  public:
    FilterRun(std::shared_ptr<FilterSource> source, std::shared_ptr<const JobInput> input,
              RunOptions options);
    // The options hold for each filter; extra parts and the cancellation at a part concern the first.
    FilterRun(std::vector<ChainedFilter> filters, ChainInput input, RunOptions options);
    ~FilterRun();

    // Throws FilterError when a filter cannot be made, common::Error when the input is no document. Call one
    // of them once. The calling thread must have entered COM.
    //
    // What became of the last filter, which is the only one of a run of one filter.
    [[nodiscard]] RunOutcome Run();
    // What became of each, in their order.
    [[nodiscard]] std::vector<RunOutcome> RunChain();

    // Cancels the job as a user would; any thread may call, at any time.
    void Cancel();
    // The filter that runs on the calling thread has spent so much of its StartOperation on somebody else.
    void Reassign(Share share, OperationClock::Duration time);
    // What the first filter was given last ("FixedPage /1.fpage"), empty before the first part; any thread
    // may ask.
    [[nodiscard]] std::string LastPart() const;

  private:
    struct Link;
    struct State;
    std::shared_ptr<State> m_state;
};

}  // namespace devkit::pipeline
