#pragma once

#include "platform/windows.h"

#include <objidl.h>

#include <string>
#include <string_view>

#include "devkit/msxml/com/domstate.h"

namespace devkit::msxml {

// load and loadXML: S_OK and VARIANT_TRUE, or S_FALSE and VARIANT_FALSE with parseError filled when the text
// is not a well-formed document. The old content goes in either case. pSuccess may be null. A source that
// fails to be read gives its own code, E_INVALIDARG stands for a value that is no source. Nothing is loaded
// from a path or an address: E_NOTIMPL.
[[nodiscard]] HRESULT Load(DomState& document, const VARIANT& source, VARIANT_BOOL* pSuccess) noexcept;
[[nodiscard]] HRESULT LoadText(DomState& document, std::wstring_view text, VARIANT_BOOL* pSuccess) noexcept;

// Replaces the content by a document in UTF-8 or UTF-16: S_OK or the code of the failure, which parseError
// then shows too. Throws std::bad_alloc.
[[nodiscard]] HRESULT LoadBytes(DomState& document, std::string_view bytes);

// The bytes from the current position to the end, which is where a Read gives none. Calls nothing but Read.
// Throws common::HresultError with the code of a Read that fails.
[[nodiscard]] std::string ReadToEnd(ISequentialStream& stream);

}  // namespace devkit::msxml
