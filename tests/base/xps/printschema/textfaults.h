#pragma once

#include "platform/windows.h"

#include <cstddef>

namespace tests {

// While it lives, the texts (BSTR) that the program allocates, the kit's DOM included, are counted, and one
// of them cannot be had. One at a time.
class TextFaults {
  public:
    // The nth text, counted from 1; 0: all can be had.
    explicit TextFaults(std::size_t nth) noexcept;
    TextFaults(const TextFaults&) = delete;
    TextFaults& operator=(const TextFaults&) = delete;
    ~TextFaults();

    // Whether the text was asked for that could not be had.
    [[nodiscard]] bool HasFailed() const noexcept;
};

}  // namespace tests
