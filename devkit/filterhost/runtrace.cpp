#include "devkit/filterhost/runtrace.h"

#include <utility>

namespace devkit::filterhost {
namespace {

constexpr const char* kOfFilter = "filter";
constexpr const char* kOfPart = "part";
constexpr const char* kOfPipeline = "pipeline";
constexpr const char* kOfProvider = "ticket provider";

constexpr std::string_view kGetPart = "IXpsDocumentProvider::GetXpsPart";
constexpr std::string_view kSend = "IXpsDocumentConsumer::Send";

TraceMoment MomentAt(TraceMoment::Kind kind, std::chrono::nanoseconds at) {
    TraceMoment moment;
    moment.kind = kind;
    moment.thread = GetCurrentThreadId();
    moment.at = at.count();
    return moment;
}

}  // namespace

RunTrace::RunTrace(EventSink sink, std::string filter)
    : m_sink(std::move(sink)), m_filter(std::move(filter)) {}

void RunTrace::Begin(std::string name, const char* category, Time at) {
    TraceMoment moment = MomentAt(TraceMoment::Begin, at);
    moment.name = std::move(name);
    moment.category = category;
    m_sink(events::Traced{std::move(moment)});
}

void RunTrace::End(Time at) { m_sink(events::Traced{MomentAt(TraceMoment::End, at)}); }

void RunTrace::NameThread(const std::string& call) {
    const bool isOperation = call == "StartOperation";
    std::string name = isOperation ? "pipeline" : call == "ShutdownOperation" ? "shutdown" : "host";
    if (!m_filter.empty() && name != "host") name += " of " + m_filter;
    {
        const std::lock_guard guard(m_lock);
        std::string& named = m_named[GetCurrentThreadId()];
        if (named == name) return;
        named = name;
    }
    TraceMoment moment = MomentAt(TraceMoment::Thread, pipeline::SpanClockNow());
    moment.name = std::move(name);
    m_sink(events::Traced{std::move(moment)});
}

void RunTrace::CallBegins(const std::string& call) {
    NameThread(call);
    Begin(m_filter.empty() ? call : call + " of " + m_filter, kOfFilter, pipeline::SpanClockNow());
}

void RunTrace::CallEnds(const std::string& call) {
    const Time now = pipeline::SpanClockNow();
    if (call == "StartOperation") EndPart(now);
    End(now);
}

void RunTrace::PartGiven(const std::string& part) {
    const std::lock_guard guard(m_lock);
    m_given = part;
}

void RunTrace::EndPart(Time at) {
    {
        const std::lock_guard guard(m_lock);
        // A part that another thread took is ended there.
        if (m_partThread != GetCurrentThreadId()) return;
        m_partThread = 0;
    }
    End(at);
}

void RunTrace::CallMade(const pipeline::MadeCallSpan& call) {
    const bool isAsking = call.method == kGetPart;
    if (isAsking) EndPart(call.begin);
    TraceMoment moment = MomentAt(TraceMoment::Whole, call.begin);
    moment.name = call.method;
    moment.category = kOfPipeline;
    moment.detail = call.argument;
    moment.duration = call.duration.count();
    m_sink(events::Traced{std::move(moment)});
    const Time end = call.begin + call.duration;
    if (call.method.starts_with(kSend)) EndPart(end);
    if (!isAsking) return;
    std::string given;
    {
        const std::lock_guard guard(m_lock);
        given = std::exchange(m_given, {});
        if (given.empty() || m_partThread != 0) return;
        m_partThread = GetCurrentThreadId();
    }
    Begin(std::move(given), kOfPart, end);
}

void TraceProviderCall(const EventSink& sink, const prntvpt::ProviderCall& call, const std::string& part) {
    TraceMoment moment = MomentAt(TraceMoment::Whole, call.start);
    moment.name = call.function;
    moment.category = kOfProvider;
    moment.detail = part;
    moment.duration = (call.own + call.inStreams).count();
    moment.own = call.own.count();
    sink(events::Traced{std::move(moment)});
}

}  // namespace devkit::filterhost
