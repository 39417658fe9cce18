#pragma once

#include "devkit/prntvpt/api/provider.h"

namespace devkit::prntvpt {

// The one provider of the process, made at its first use.
[[nodiscard]] Provider& Instance();

}  // namespace devkit::prntvpt
