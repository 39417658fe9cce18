#pragma once

#include "devkit/prntvpt/api/fault.h"

namespace devkit::prntvpt {

// Waits as long as the faults want it.
void Delay(const ActiveFaults& faults);

}  // namespace devkit::prntvpt
