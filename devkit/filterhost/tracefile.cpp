#include "devkit/filterhost/tracefile.h"

#include "devkit/common/json.h"
#include "devkit/pipeline/callspan.h"

namespace devkit::filterhost {
namespace {

using OrderedJson = nlohmann::ordered_json;

// The event that gives a process or a thread its name.
OrderedJson NameOf(const char* what, std::size_t row, std::uint32_t thread, const std::string& name) {
    return {{"name", what}, {"ph", "M"}, {"pid", row}, {"tid", thread}, {"args", {{"name", name}}}};
}

}  // namespace

TraceFile::TraceFile(std::filesystem::path path)
    : m_file(std::move(path), "--trace", "[", "\n]\n"), m_start(pipeline::SpanClockNow().count()) {}

void TraceFile::Name(std::size_t row, const std::string& input) {
    const std::lock_guard guard(m_lock);
    Write(common::JsonText(NameOf("process_name", row, 0, input)));
}

void TraceFile::Take(std::size_t row, const Event& event) {
    if (const auto* const pTraced = std::get_if<events::Traced>(&event)) {
        const std::lock_guard guard(m_lock);
        TakeMoment(row, pTraced->moment);
    }
    const auto* const pCrashed = std::get_if<events::Crashed>(&event);
    if (pCrashed == nullptr) return;
    const std::lock_guard guard(m_lock);
    // Where the run stood is on the rows of its threads; which of them ended it is not known.
    const OrderedJson instant{{"name", TextOf(pCrashed->crash)},
                              {"ph", "i"},
                              {"s", "p"},
                              {"ts", MicrosecondsOf(pipeline::SpanClockNow().count())},
                              {"pid", row},
                              {"tid", 0}};
    Write(common::JsonText(instant));
}

void TraceFile::TakeMoment(std::size_t row, const TraceMoment& moment) {
    const Line line(row, moment.thread);
    if (moment.kind == TraceMoment::Thread) {
        m_named.insert(line);
        Write(common::JsonText(NameOf("thread_name", row, moment.thread, moment.name)));
        return;
    }
    if (m_named.insert(line).second) {
        Write(common::JsonText(NameOf("thread_name", row, moment.thread, "a thread of the filter's own")));
    }
    std::vector<std::string>& open = m_open[line];
    OrderedJson json{{"name", moment.name}};
    if (moment.kind == TraceMoment::Begin) open.push_back(moment.name);
    if (moment.kind == TraceMoment::End && !open.empty()) {
        // Some viewers go by the name.
        json["name"] = std::move(open.back());
        open.pop_back();
    }
    if (!moment.category.empty()) json["cat"] = moment.category;
    json["ph"] = moment.kind == TraceMoment::Begin ? "B" : moment.kind == TraceMoment::End ? "E" : "X";
    json["ts"] = MicrosecondsOf(moment.at);
    if (moment.kind == TraceMoment::Whole) {
        // A nanosecond less: viewers add it to the begin, and by a rounding what ends with the moment in
        // which the next begins would reach into that.
        json["dur"] = static_cast<double>(moment.duration > 0 ? moment.duration - 1 : 0) / 1000;
    }
    json["pid"] = row;
    json["tid"] = moment.thread;
    if (!moment.detail.empty()) json["args"]["of"] = moment.detail;
    if (moment.own != 0) json["args"]["own"] = static_cast<double>(moment.own) / 1000;
    Write(common::JsonText(json));
}

void TraceFile::End(std::size_t row) {
    const std::lock_guard guard(m_lock);
    const double now = MicrosecondsOf(pipeline::SpanClockNow().count());
    for (auto& [line, open] : m_open) {
        if (line.first != row) continue;
        for (; !open.empty(); open.pop_back()) {
            Write(common::JsonText(OrderedJson{
                {"name", open.back()}, {"ph", "E"}, {"ts", now}, {"pid", row}, {"tid", line.second}}));
        }
    }
}

void TraceFile::Write(std::string text) {
    m_file.Add((m_isFirst ? "\n" : ",\n") + std::move(text));
    m_isFirst = false;
}

double TraceFile::MicrosecondsOf(std::int64_t at) const { return static_cast<double>(at - m_start) / 1000; }

}  // namespace devkit::filterhost
