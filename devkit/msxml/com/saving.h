#pragma once

#include "platform/windows.h"

#include <objidl.h>

#include <string_view>

#include "devkit/msxml/tree/node.h"

namespace devkit::msxml {

// save: to an object with IStream, or into another DOM document, whose content it replaces. A failing write
// gives its own code. E_NOTIMPL for a path, E_INVALIDARG for anything else.
[[nodiscard]] HRESULT Save(const Document& document, const VARIANT& destination) noexcept;

// Writes at the stream's position, in as many Writes as the stream takes. Calls nothing but Write. Throws
// common::HresultError with the code of a Write that fails, STG_E_MEDIUMFULL for one that takes nothing.
void WriteWhole(ISequentialStream& stream, std::string_view bytes);

}  // namespace devkit::msxml
