#pragma once

#include "platform/windows.h"

#include <atomic>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml {

[[nodiscard]] constexpr HRESULT Hresult(XmlError code) noexcept {
    switch (code) {
        case XmlNotAllowed:
            return E_FAIL;
        case XmlPrefixConflict:
            return E_INVALIDARG;
        default:
            return static_cast<HRESULT>(code);
    }
}

// Runs the body of a COM method as common::Guarded does, with a code for what the tree or its markup refuses.
template <typename Body>
[[nodiscard]] HRESULT Guarded(Body&& body) noexcept {
    return common::Guarded([&] {
        try {
            return std::forward<Body>(body)();
        } catch (const Refused& refusal) {
            return Hresult(refusal.code);
        }
    });
}

// Whether failing calls leave what the caller's out-pointer held, as Windows' document does, see
// LeaveOutPointersOfFailures.
inline std::atomic<bool> g_leavesOutPointers = false;

// Runs the body of a COM method that gives something out: an object, a text or a VARIANT. The place is null
// when the body starts, and again when it has failed. E_INVALIDARG for no place.
template <typename Out, typename Body>
[[nodiscard]] HRESULT Answer(Out* pOut, Body&& body) noexcept {
    if (pOut == nullptr) return E_INVALIDARG;
    const Out before = *pOut;
    *pOut = Out();
    const HRESULT result = Guarded(std::forward<Body>(body));
    if (FAILED(result)) *pOut = g_leavesOutPointers ? before : Out();
    return result;
}

// The same where the caller need not want it: the body is given the place or null.
template <typename Out, typename Body>
[[nodiscard]] HRESULT AnswerIfWanted(Out* pOut, Body&& body) noexcept {
    if (pOut == nullptr) return Guarded(std::forward<Body>(body));
    return Answer(pOut, std::forward<Body>(body));
}

// For what the DOM has and this library does not.
template <typename Interface>
[[nodiscard]] HRESULT NotOffered(Interface** ppOut) noexcept {
    return Answer(ppOut, [] { return E_NOTIMPL; });
}

}  // namespace devkit::msxml
