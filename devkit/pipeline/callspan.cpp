#include "devkit/pipeline/callspan.h"

#include "devkit/pipeline/operationclock.h"
#include "devkit/pipeline/runobserver.h"

namespace devkit::pipeline {

struct CallSpan::Measured {
    std::string method;
    std::string argument;
    std::chrono::nanoseconds begin = SpanClockNow();
    Measured* pOuter = nullptr;

    // Of the thread. A pointer needs no destructor: g++'s runtime for Windows would run it too late.
    static thread_local Measured* s_pInnermost;
};

thread_local CallSpan::Measured* CallSpan::Measured::s_pInnermost = nullptr;

std::chrono::nanoseconds SpanClockNow() noexcept {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

CallSpan::CallSpan(RunObserver* pObserver, OperationClock& clock, const char* method) noexcept
    : m_pObserver(pObserver), m_clock(clock) {
    if (pObserver == nullptr) return;
    try {
        m_measured = std::make_unique<Measured>();
        if (method != nullptr) m_measured->method = method;
    } catch (const std::bad_alloc&) {
        m_measured.reset();
        return;
    }
    m_measured->pOuter = Measured::s_pInnermost;
    Measured::s_pInnermost = m_measured.get();
}

CallSpan::~CallSpan() {
    if (m_measured == nullptr) return;
    const std::chrono::nanoseconds duration = SpanClockNow() - m_measured->begin;
    Measured::s_pInnermost = m_measured->pOuter;
    if (m_measured->method.empty()) return;
    const OperationClock::Timed time(m_clock, Share::Observer);
    m_pObserver->CallMade({m_measured->method, m_measured->argument, m_measured->begin, duration});
}

void CallSpan::Name(std::string_view method, std::string_view argument) {
    Measured* const pCall = Measured::s_pInnermost;
    if (pCall == nullptr) return;
    pCall->method = method;
    pCall->argument = argument;
}

}  // namespace devkit::pipeline
