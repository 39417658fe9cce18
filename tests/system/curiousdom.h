#pragma once

#include "platform/windows.h"

#include <set>
#include <string>

namespace systemtest {

// While it lives, every document of the DOM asks a stream that it is loaded from or saved to for its name, as
// a reader may that wants to say where an error stands. Without an answer it is neither loaded nor saved, and
// answers the stream's code. For the kit's DOM or the system's, whichever CreateDom gives. One at a time.
class CuriousDom {
  public:
    CuriousDom();
    CuriousDom(const CuriousDom&) = delete;
    CuriousDom& operator=(const CuriousDom&) = delete;
    ~CuriousDom();

    // Those that streams have told.
    [[nodiscard]] std::set<std::wstring> Names() const;
};

}  // namespace systemtest
