#pragma once

#include "platform/windows.h"

#include <string>
#include <typeinfo>

#include "base/logging/exceptions.h"

namespace tests {

// The text of the exception of exactly this type that the body throws, with LINE in the place of the line's
// number; what else happens is told in words.
template <typename Exception, typename Body>
[[nodiscard]] std::string Thrown(Body&& body) {
    try {
        body();
    } catch (const Exception& failure) {
        if (typeid(failure) != typeid(Exception)) return std::string("a ") + typeid(failure).name();
        std::string text = failure.what();
        const std::size_t open = text.find('(');
        const std::size_t close = text.find(')');
        if (close != std::string::npos && open < close) text.replace(open + 1, close - open - 1, "LINE");
        return text;
    }
    return "nothing was thrown";
}

// The code of the HresultError that the body throws; S_OK when it throws nothing.
template <typename Body>
[[nodiscard]] HRESULT ThrownCode(Body&& body) {
    try {
        body();
    } catch (const base::exception::HresultError& failure) {
        return failure.GetHresult();
    }
    return S_OK;
}

}  // namespace tests
