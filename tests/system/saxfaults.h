#pragma once

#include "platform/windows.h"

namespace systemtest {

// Asked before each call, on the thread that makes it: the call's name, and where it was made.
using SaxStrike = bool (*)(const char* name, const void* pCaller);

// While it lives, every call of the system's SAX reader, and of the attributes that it hands to a handler,
// answers the code when the function says so. The calling thread must have entered COM. One at a time.
class SaxFaults {
  public:
    // std::runtime_error when there is no reader, or it reads nothing.
    SaxFaults(SaxStrike strikes, HRESULT code);
    SaxFaults(const SaxFaults&) = delete;
    SaxFaults& operator=(const SaxFaults&) = delete;
    ~SaxFaults();
};

}  // namespace systemtest
