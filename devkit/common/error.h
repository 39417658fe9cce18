#pragma once

#include "platform/windows.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "platform/guarded.h"

namespace devkit::common {

// What is wrong with something that is read or written, as one line: "WHAT, WHERE", WHERE being a file, a
// part or an entry of an archive; "WHAT" alone without a place.
class Error : public std::runtime_error {
  public:
    explicit Error(std::string_view what, std::string_view where = {});
};

// The storage fails, not what it holds: nothing that can be passed over.
class StorageError : public Error {
  public:
    using Error::Error;
};

// Markup that cannot be read.
class XmlError : public Error {
  public:
    // `line` counts from 1; 0 for what has no place in the markup.
    XmlError(std::string_view what, std::string_view where, int line = 0)
        : Error(what, where), m_line(line) {}

    [[nodiscard]] int Line() const noexcept { return m_line; }

  private:
    int m_line;
};

// A failing code on its way to the COM method that was called.
class HresultError : public std::runtime_error {
  public:
    explicit HresultError(HRESULT hr);
    HresultError(HRESULT hr, const std::string& message) : std::runtime_error(message), m_hr(hr) {}

    [[nodiscard]] HRESULT GetHresult() const noexcept { return m_hr; }

  private:
    HRESULT m_hr;
};

inline void ThrowIfFailed(HRESULT hr) {
    if (FAILED(hr)) throw HresultError(hr);
}

// Runs the body of a COM method of the kit: what it returns is the method's result. A thrown HresultError
// becomes its own code, std::bad_alloc E_OUTOFMEMORY, any other std::exception E_FAIL, anything else
// E_UNEXPECTED.
template <typename Body>
[[nodiscard]] HRESULT Guarded(Body&& body) noexcept {
    return platform::Guarded<HresultError>(std::forward<Body>(body));
}

}  // namespace devkit::common
