#pragma once

#include "platform/windows.h"

#include <oaidl.h>

// What a DOM may do and the kit's never does. Each is in force while the object lives, for the kit's DOM or
// the system's, whichever CreateDom gives when it is made. One at a time.
namespace tests {

// Every element has this typed value, whatever its text.
class TypedValue {
  public:
    explicit TypedValue(const VARIANT& value);
    TypedValue(const TypedValue&) = delete;
    TypedValue& operator=(const TypedValue&) = delete;
    ~TypedValue();
};

// An element's map of attributes stands behind its first attribute when it is handed out, as a map does that
// a DOM keeps for the element and that somebody has walked before.
class WalkedMaps {
  public:
    WalkedMaps();
    WalkedMaps(const WalkedMaps&) = delete;
    WalkedMaps& operator=(const WalkedMaps&) = delete;
    ~WalkedMaps();
};

}  // namespace tests
