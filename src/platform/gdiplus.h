#pragma once

// GDI+. Its headers use min and max without a namespace and rely on names that a lean windows.h leaves out.

#include "platform/windows.h"

#include <objidl.h>
#include <propidl.h>

#include <algorithm>

namespace Gdiplus {
using std::max;
using std::min;
}  // namespace Gdiplus

#include <gdiplus.h>
