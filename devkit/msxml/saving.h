#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>

namespace devkit::msxml {

class Document;

// save: to a path, to an object with IStream or with IPersistStream, or into another DOM document, whose
// content it replaces. E_INVALIDARG for anything else. A failing write gives its own code.
[[nodiscard]] HRESULT Save(const Document& document, const VARIANT& destination) noexcept;

// The document in the encoding of its XML declaration, without one in UTF-8; none for an empty document.
// Throws ComError, see Serialise and Encode.
[[nodiscard]] std::string SavedBytes(const Document& document);

// Writes at the stream's position, in as many Writes as the stream takes. Calls nothing but Write. Throws
// ComError with the code of a Write that fails, STG_E_MEDIUMFULL for one that takes nothing.
void WriteWhole(ISequentialStream& stream, std::string_view bytes);

}  // namespace devkit::msxml
