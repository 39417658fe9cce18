#pragma once

#include "devkit/msxml/errorcodes.h"

namespace devkit::msxml {

// The code that stands for an error code of the XML library.
[[nodiscard]] XmlError CodeOfLibraryError(int code) noexcept;

}  // namespace devkit::msxml
