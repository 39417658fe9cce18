#pragma once

#include "platform/windows.h"

#include <chrono>
#include <map>
#include <mutex>
#include <string>

#include "devkit/filterhost/runevent.h"
#include "devkit/pipeline/callspan.h"
#include "devkit/pipeline/runobserver.h"

namespace devkit::filterhost {

// Tells what one filter of a run does with its time, as moments of a trace: its calls, each part from its
// giving to its sending, the calls that it makes. Any thread may call.
class RunTrace {
  public:
    // `filter` is its name in a chain, and empty without.
    RunTrace(EventSink sink, std::string filter);

    // A call of the filter, on the calling thread.
    void CallBegins(const std::string& call);
    void CallEnds(const std::string& call);
    void PartGiven(const std::string& part);
    void CallMade(const pipeline::MadeCallSpan& call);

  private:
    using Time = std::chrono::nanoseconds;

    void Begin(std::string name, const char* category, Time at);
    void End(Time at);
    // The part that the filter has in hand goes out of it.
    void EndPart(Time at);
    void NameThread(const std::string& call);

    const EventSink m_sink;
    const std::string m_filter;
    std::mutex m_lock;
    std::map<DWORD, std::string> m_named;  // threads, by what they were named after
    std::string m_given;                   // what GetXpsPart, which has not come back, gives
    DWORD m_partThread = 0;                // that has a part in hand; 0 for none
};

// The same of a call of the print ticket provider, which has just come back on the calling thread, while the
// filter had `part` in hand.
void TraceProviderCall(const EventSink& sink, const prntvpt::ProviderCall& call, const std::string& part);

}  // namespace devkit::filterhost
