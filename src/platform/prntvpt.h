#pragma once

// The print ticket provider. The header of either toolchain includes nothing of what it needs.

#include "platform/windows.h"

#include <prntvpt.h>
