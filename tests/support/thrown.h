#pragma once

#include "platform/windows.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <string>
#include <typeinfo>
#include <utility>

namespace base::exception {
class HresultError;
}

namespace tests {

// What a body threw.
struct ThrownException {
    const std::type_info* pType = nullptr;  // exact; null for nothing and for what is no std::exception
    std::string text;                       // with LINE in the place of the number of the throwing line
};

// "a/b.cpp(LINE) : text" for "a/b.cpp(12) : text", as the product's messages begin; any other text as it is.
// A file is named as the compiler was told it, with either separator, and a test's from wherever its root is.
[[nodiscard]] inline std::string WithoutLineNumber(std::string text) {
    const std::size_t open = text.find('(');
    const std::size_t close = text.find(") : ");
    const bool isNumber = close != std::string::npos && open + 1 < close &&
                          text.find_first_not_of("0123456789", open + 1) == close;
    if (!isNumber) return text;
    text.replace(open + 1, close - open - 1, "LINE");
    std::replace(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(open), '\\', '/');
    const std::size_t root = text.rfind("/tests/", open);
    return root == std::string::npos ? text : text.substr(root + 1);
}

template <typename Body>
[[nodiscard]] ThrownException Catch(Body&& body) {
    try {
        body();
    } catch (const std::exception& failure) {
        return {&typeid(failure), WithoutLineNumber(failure.what())};
    } catch (...) {
        return {nullptr, "what was thrown is no std::exception"};
    }
    return {nullptr, "nothing was thrown"};
}

// The message of the exception of exactly this type that the body throws; what else happens is told in words.
template <typename Exception, typename Body>
[[nodiscard]] std::string Thrown(Body&& body) {
    const ThrownException thrown = Catch(std::forward<Body>(body));
    const bool isOther = thrown.pType != nullptr && *thrown.pType != typeid(Exception);
    return isOther ? std::string("a ") + thrown.pType->name() + ": " + thrown.text : thrown.text;
}

// The message, to the letter, of the Exception that the body throws, or of one derived from it; empty when it
// throws nothing. Any other exception passes through.
template <typename Exception, typename Body>
[[nodiscard]] std::string MessageOf(Body&& body) {
    try {
        body();
    } catch (const Exception& failure) {
        return failure.what();
    }
    return {};
}

// The code of the Exception that the body throws; S_OK when it throws nothing. Any other exception passes
// through. Without a type it is the product's, which the test then includes.
template <typename Exception = base::exception::HresultError, typename Body>
[[nodiscard]] HRESULT ThrownCode(Body&& body) {
    try {
        body();
    } catch (const Exception& failure) {
        return failure.GetHresult();
    }
    return S_OK;
}

}  // namespace tests
