#pragma once

#include "platform/windows.h"

namespace tests {

// While it lives, CreateStreamOnHGlobal fails with the code. In programs that link test_stream_memory, which
// also fails a test in which a stream over memory is made whose memory nobody would free: the leak check sees
// objects, and not the blocks behind them.
class FailingStreamMemory {
  public:
    explicit FailingStreamMemory(HRESULT code) noexcept;
    FailingStreamMemory(const FailingStreamMemory&) = delete;
    FailingStreamMemory& operator=(const FailingStreamMemory&) = delete;
    ~FailingStreamMemory();
};

}  // namespace tests
