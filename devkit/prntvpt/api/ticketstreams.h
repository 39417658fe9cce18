#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace devkit::prntvpt {

// Reads from the current position to the end; only Read is called. Fails with what the stream fails with. Of
// a stream with more than `limit` bytes it reads a little more than those and stops.
[[nodiscard]] HRESULT ReadToEnd(IStream* pStream, std::size_t limit, std::string& bytes);

// Writes all of it at the current position; only Write is called. STG_E_MEDIUMFULL when the stream takes no
// more.
[[nodiscard]] HRESULT WriteAll(IStream* pStream, std::string_view bytes);

// The bytes of a document as UTF-8 without a byte order mark: UTF-16 of either byte order is told by its mark
// or by the zero in its first character.
[[nodiscard]] std::string DocumentText(std::string_view bytes);

}  // namespace devkit::prntvpt
