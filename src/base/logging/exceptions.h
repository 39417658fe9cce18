#pragma once

#include "platform/windows.h"

#include <exception>
#include <string>

namespace base::exception {

// A failed platform or COM call. The boundary of a COM method returns GetHresult() as it stands, whatever it
// is.
class HresultError : public std::exception {
  public:
    // The message is "FILE(LINE) : TEXT\n", TEXT being the system's own for hr, or "Unknown error 0x..." for
    // a code that the system does not know; either ends in a line break of its own.
    HresultError(HRESULT hr, const char* file, int line);

    [[nodiscard]] const char* what() const noexcept override { return m_message.c_str(); }
    [[nodiscard]] virtual HRESULT GetHresult() const noexcept { return m_hr; }

  private:
    HRESULT m_hr;
    std::string m_message;
};

// Carries a message and nothing else: a failure of the page model or of a print schema identifier.
class Error : public std::exception {
  public:
    explicit Error(std::string message) : m_message(std::move(message)) {}
    [[nodiscard]] const char* what() const noexcept override { return m_message.c_str(); }

  private:
    std::string m_message;
};

class InvalidFeatureIdError : public Error {
  public:
    using Error::Error;
};

class InvalidOptionIdError : public Error {
  public:
    using Error::Error;
};

// A request that a feature does not support, such as a scope that it has no name for.
class NotSupportedException : public std::exception {
  public:
    explicit NotSupportedException(std::string message) : m_message(std::move(message)) {}
    [[nodiscard]] const char* what() const noexcept override { return m_message.c_str(); }

  private:
    std::string m_message;
};

// A platform failure met while a document is being wrapped; the wrapper turns it into an HresultError with
// its code.
class CXDException : public std::exception {
  public:
    explicit CXDException(HRESULT hr) noexcept : m_hr(hr) {}
    [[nodiscard]] const char* what() const noexcept override { return "CXDException"; }
    [[nodiscard]] HRESULT GetHresult() const noexcept { return m_hr; }

  private:
    HRESULT m_hr;
};

}  // namespace base::exception
