#pragma once

#include "platform/windows.h"

// Binds an interface to its identifier for __uuidof. MSVC takes it from __declspec(uuid(...)) on the
// declaration, which MinGW does not know; MinGW wants a specialisation at global scope.
#ifdef __MINGW32__
#define PLATFORM_INTERFACE_UUID(Interface, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) \
    __CRT_UUID_DECL(Interface, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)
#define PLATFORM_UUID(text)
#else
#define PLATFORM_INTERFACE_UUID(Interface, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)
#define PLATFORM_UUID(text) __declspec(uuid(text))
#endif

namespace platform {

// The interface that an interface extends and whose identifier its objects answer too: IUnknown where
// PLATFORM_INTERFACE_EXTENDS says nothing else.
template <typename Interface>
struct Extended {
    using Type = IUnknown;
};

}  // namespace platform

// At global scope, before the first object with the interface is defined.
#define PLATFORM_INTERFACE_EXTENDS(Interface, Base) \
    template <>                                     \
    struct platform::Extended<Interface> {          \
        using Type = Base;                          \
    };
