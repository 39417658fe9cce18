#pragma once

#include "devkit/prntvpt/device/device.h"
#include "devkit/prntvpt/merge/behaviour.h"

namespace devkit::prntvpt {

// Changes the model as the switches want it, capabilities, default ticket and constraints alike, and indexes
// it anew. DeviceError when the model lacks what a variant needs.
void ApplyVariants(const Variants& variants, Device& device);

}  // namespace devkit::prntvpt
