#pragma once

#include "devkit/pipeline/filterrun.h"

namespace devkit::filterhost {

// While it lives, the first Ctrl+C cancels the run as a user cancels a print job; the second ends the
// program.
class CancelOnInterrupt {
  public:
    explicit CancelOnInterrupt(pipeline::FilterRun& run);
    CancelOnInterrupt(const CancelOnInterrupt&) = delete;
    CancelOnInterrupt& operator=(const CancelOnInterrupt&) = delete;
    ~CancelOnInterrupt();
};

}  // namespace devkit::filterhost
