#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>

#include "platform/comptr.h"
#include "platform/msxml6.h"

// The few operations on DOM documents that tickets and pages share. The calling thread must be in an
// apartment.
namespace base::xml {

// An empty document that loads synchronously. A failure to create it throws HresultError.
[[nodiscard]] platform::ComPtr<IXMLDOMDocument2> CreateDom();

// A new document loaded from whatever the DOM's load takes; a stream is read from its current position. Text
// that is not well formed throws HresultError with E_FAIL, a failing call HresultError with its own code.
[[nodiscard]] platform::ComPtr<IXMLDOMDocument2> LoadDom(const VARIANT& source);

// The same from text that is in memory. An encoding that its declaration names has no effect.
[[nodiscard]] platform::ComPtr<IXMLDOMDocument2> LoadDomFromString(std::wstring_view text);

// The document as its save operation writes it, without a byte order mark. Bytes that are not valid in the
// saved encoding, which is read as UTF-8 or UTF-16, become U+FFFD. A null document throws
// std::invalid_argument, a failing call HresultError.
[[nodiscard]] std::wstring DomToString(IXMLDOMDocument2* pDom);

}  // namespace base::xml
