#pragma once

#include <string>

#include "devkit/common/checks.h"

namespace devkit::pipeline {

struct SentPart;

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
};

}  // namespace devkit::pipeline
