#include "devkit/pipeline/operationclock.h"

namespace devkit::pipeline {
namespace {

constexpr auto kRelaxed = std::memory_order_relaxed;

OperationTimes::Duration::rep Now() noexcept {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<OperationTimes::Duration>(now).count();
}

OperationTimes::Point PointOf(OperationTimes::Duration::rep ticks) noexcept {
    return OperationTimes::Point(
        std::chrono::duration_cast<OperationTimes::Point::duration>(OperationTimes::Duration(ticks)));
}

}  // namespace

OperationClock::Operation::Operation(OperationClock& clock) noexcept : m_clock(clock) {
    const Ticks now = Now();
    m_clock.m_begin.store(now, kRelaxed);
    m_clock.m_last.store(now, kRelaxed);
    m_clock.m_thread = GetCurrentThreadId();
}

OperationClock::Operation::~Operation() {
    m_clock.Switch(Share::Filter);
    m_clock.m_thread = 0;
}

OperationClock::Timed::Timed(OperationClock& clock, Share share) noexcept {
    if (!clock.IsOperation() || clock.m_current == share) return;
    m_pClock = &clock;
    m_before = clock.m_current;
    clock.Switch(share);
}

void OperationClock::Switch(Share share) noexcept {
    const Ticks now = Now();
    Add(m_current, now - m_last.load(kRelaxed));
    m_last.store(now, kRelaxed);
    m_current = share;
}

void OperationClock::Add(Share share, Ticks ticks) noexcept {
    std::atomic<Ticks>& sum = m_shares[static_cast<std::size_t>(share)];
    sum.store(sum.load(kRelaxed) + ticks, kRelaxed);
}

void OperationClock::Reassign(Share share, Duration time) noexcept {
    if (!IsOperation()) return;
    Add(Share::Filter, -time.count());
    Add(share, time.count());
}

OperationTimes OperationClock::Times() const noexcept {
    OperationTimes times;
    times.begin = PointOf(m_begin.load(kRelaxed));
    times.end = PointOf(m_last.load(kRelaxed));
    for (std::size_t i = 0; i < times.shares.size(); ++i)
        times.shares[i] = Duration(m_shares[i].load(kRelaxed));
    return times;
}

}  // namespace devkit::pipeline
