#pragma once

#include "platform/windows.h"

#include <cstddef>

namespace tests {

// Whether saving a document is among the calls that can fail. A test that looks at a document's text while
// the faults are in force exempts it.
enum class Saves { Counted, Exempt };

// A call that a test wants to fail among all others of a DOM.
enum class DomCall {
    Other,
    GetNodeName,
    GetText,
    GetNodeTypedValue,
    GetParentNode,
    GetAttributes,
    GetItem,
    NextNode,
    Reset,
    SetNamedItem,
    CreateAttribute,
    PutValue,
    Select,
    SetProperty,
};

// Asked before each call, on the thread that makes it: the call's name, "get_nodeName", and where it was
// made.
using DomStrike = bool (*)(const char* name, const void* pCaller);

// While it lives, every call that is made through the interfaces of a DOM's documents, elements, attributes,
// texts, lists and streams is counted, and one of them fails without doing anything. For the kit's DOM or the
// system's, whichever CreateDom gives when it is made. One at a time.
class DomFaults {
  public:
    // The nth call, counted from 1, answers the code; 0: none does. With a success code it claims to have
    // done what it has not, and yields nothing.
    DomFaults(std::size_t nth, HRESULT code, Saves saves = Saves::Exempt);
    // Only calls of this kind are counted.
    DomFaults(DomCall only, std::size_t nth, HRESULT code);
    // Every call for which the function says so answers the code, queries for interfaces among them.
    DomFaults(DomStrike strikes, HRESULT code);
    DomFaults(const DomFaults&) = delete;
    DomFaults& operator=(const DomFaults&) = delete;
    ~DomFaults();

    // Whether the call that was to fail was made.
    [[nodiscard]] bool HasFailed() const noexcept;
    // The calls that were counted.
    [[nodiscard]] std::size_t Calls() const noexcept;
};

}  // namespace tests
