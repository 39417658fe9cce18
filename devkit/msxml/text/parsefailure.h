#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml {

// Why a document could not be read. A code of 0 stands for no failure.
struct ParseFailure {
    std::uint32_t code = 0;   // an XmlError, or the status of a source that could not be read
    std::wstring reason;      // one line
    std::wstring sourceText;  // the line that the failure is in
    long line = 0;            // from 1; 0 when there is no place
    long linePosition = 0;    // from 1, in characters
    long filePosition = 0;    // from 0, in characters
};

// A failure at a place in a document's text.
[[nodiscard]] ParseFailure FailureAt(XmlError code, std::wstring reason, std::wstring_view text,
                                     std::size_t position);

// The code that stands for an error code of the XML library.
[[nodiscard]] XmlError CodeOfLibraryError(int code) noexcept;

}  // namespace devkit::msxml
