#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "devkit/common/checks.h"

namespace devkit::pipeline {

struct SentPart;

// A call of the filter to an object of the pipeline, by a clock that never goes back. `method` is
// "Interface::Method"; a query and a last release are told by their method alone.
struct MadeCallSpan {
    std::string_view method;
    std::string_view argument;  // the part's or the property's name; empty without
    std::chrono::nanoseconds begin{0};
    std::chrono::nanoseconds duration{0};
};

// Is told of a run while it goes on, each time on the thread on which it happens, several at a time. What is
// told of must not be held up for long, and nothing may be thrown.
class RunObserver {
  public:
    virtual ~RunObserver() = default;

    // A call of the filter begins ("StartOperation"), and has come back. One whose thread ends in it never
    // does.
    virtual void CallBegins(const char*) {}
    virtual void CallEnds(const char*) {}
    // The filter asked for part `number`, counted from 1, and is being given one ("FixedPage /1.fpage").
    virtual void PartAsked(unsigned) {}
    virtual void PartGiven(const std::string&) {}
    // A part that was accepted, as it stands.
    virtual void PartSent(const SentPart&) {}
    virtual void Breached(common::Check, const std::string&) {}
    // What is odd, but breaks no rule.
    virtual void Found(common::Check, const std::string&) {}
    // A part of the input cannot be read.
    virtual void InputFailed(const std::string&) {}
    // Any call of the filter to the pipeline's objects.
    virtual void Called() {}
    // Whether CallMade is to be told of each call with its time, which takes some.
    [[nodiscard]] virtual bool WantsCalls() const noexcept { return false; }
    // Such a call has come back; the texts are gone afterwards.
    virtual void CallMade(const MadeCallSpan&) {}
};

}  // namespace devkit::pipeline
