#pragma once

#include "devkit/filterhost/settings.h"

namespace devkit::validate {

// `filterhost validate`: runs the battery over a filter, with what filterhost.json near it says, and prints
// the verdict. An ExitStatus, or kInterrupted. The calling thread must stand in the multithreaded apartment.
// Throws UsageError.
[[nodiscard]] int Validate(filterhost::ValidateSettings settings);

// `filterhost list tests`.
[[nodiscard]] int List(const filterhost::ListSettings& settings);

}  // namespace devkit::validate
