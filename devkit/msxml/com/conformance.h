#pragma once

#include "platform/windows.h"

namespace devkit::msxml {

// Whether the DOM documents of a class object do what SystemDomConforms asks for. Makes a few small
// documents.
[[nodiscard]] bool DomConforms(IClassFactory& factory) noexcept;

}  // namespace devkit::msxml
